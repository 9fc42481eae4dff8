#pragma once
// The station view's rules, kept apart from its window: the request it is handed, the web-map
// links, the retry steps, where it opens and which part of its picture is the page.
#include <QRect>
#include <QString>

namespace stationview {

// The request string: page address, "*", call sign.
struct Request {
    QString address;
    QString call;
};

// Splits at the first "*". Without one the whole text is the address and the call is empty.
Request SplitRequest(const QString& request);

// "Norvane   " followed by the call sign.
QString Caption(const QString& call);

// The request string that hands a web-map link to the station view: the link, "*", the caption text.
QString MapRequest(const QString& link, const QString& captionText);

// A latitude or longitude as the links write it: plain decimal digits, a "." for the decimal mark
// whatever the locale, no exponent, at most 15 significant digits.
QString LinkNumber(double value);

// The web-map links of the maps menu (item 1: by address, item 2: by position), built on host
// ("https://www.google.com"). Empty when the position is unknown (both 89.0 or both 0).
QString WebMapByAddress(const QString& host, const QString& add1, const QString& add2, const QString& ctry, double lat,
                        double lon);
QString WebMapByPosition(const QString& host, double lat, double lon);

// What a failed load does on its nth attempt (counting from 1).
struct RetryStep {
    bool tellUser = false;      // the message box first
    bool freshBrowser = false;  // a new view and profile instead of the old ones
    bool reopen = false;        // open the page again; false: give up, the window stays as it is
};
RetryStep RetryStepFor(int attempt);

// The attempt-3 and attempt-4 message: the application's title, two line breaks, the text, a blank.
QString RetryMessage(const QString& appTitle, const QString& text);

// The page's part of a picture of the window: below the frame, the caption and the menu bar, the
// rest of the picture. Empty when nothing is left.
QRect PageCrop(QSize picture, int frameWidth, int captionHeight, int menuBarHeight);

// Where the window opens on the monitor under the pointer (its available area): the kept size,
// cut to the monitor, at the kept left edge when the window then lies on the monitor, else at its
// left; at the top of the monitor. A kept size below the smallest usable one (or none) gives the
// default size.
inline constexpr QSize kDefaultSize{900, 700};
inline constexpr QSize kSmallestSize{320, 200};
QRect Placement(const QRect& monitor, int keptLeft, int keptWidth, int keptHeight);

}  // namespace stationview

namespace stationview {

// Whether the station view may open an address: web pages only (http, https), never local files
// or other schemes.
bool AddressAllowed(const QString& address);

}  // namespace stationview
