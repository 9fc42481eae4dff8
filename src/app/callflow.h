#pragma once
// The rules of the main window's call flow that need no window: what F8 makes of the
// clipboard, how a distance is shown, which nickname belongs to a call, the web-map link and
// where the station picture goes.
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>
#include <optional>

// The call sign in clipboard text: upper case, zeros as slashed O's (character 216), a leading
// "DE " dropped, cut before the first character below "0" or above "z" that is not 216.
QString CallFromClipboardText(const QString& text);

// The distance line: "12,346 km 45° " (thousands separator, no decimals, one blank, the unit
// "mi" for unit 1 and "km" otherwise, a blank, the azimuth, "° "), with the separators of the
// default locale (the user's, unless QLocale::setDefault chose another).
QString FormatDxAz(double distance, double azimuth, int unit);

// The distance line from the own position (myLat, myLon) to the station's (lat, lon).
QString DxAzLine(double myLat, double myLon, double lat, double lon, int unit);

// "  (nickname)" for the first nickname entry that begins with call (compared without regard to
// case) when it splits at "*" into exactly two parts, else "".
QString NicknameSuffix(const QStringList& nicknames, const QString& call);

// The web-map place link of the station: item 1 by its address, item 2 by its position. None
// when the position is unknown (both 0, or both 89).
std::optional<QString> WebMapLink(int item, double lat, double lon, const QString& add1, const QString& add2,
                                  const QString& ctry);

// Where the station picture goes in a frame of innerWidth pixels: 57 wide when it is wider than
// high by more than 4:3, else 39 high, the aspect kept; margin pixels from the right, centred on
// the line 26 pixels from the top.
QRect PicturePlacement(QSize natural, int innerWidth, int margin);
