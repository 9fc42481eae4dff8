#pragma once
// What the program and the station-view plugin (pxstationview, which holds the browser engine)
// share. No browser-engine type appears here, so that the program links none and loads the
// engine only when the station view is first opened.
#include <QImage>
#include <QList>
#include <QNetworkCookie>
#include <QRect>
#include <QString>
#include <QtPlugin>
#include <functional>

class QWidget;

// The height of the station view's menu bar, above the page.
inline constexpr int kStationViewMenuBarHeight = 24;

// What the host hands a new station view.
struct StationViewSetup {
    QString request;       // page address, "*", call sign
    QString copyCaption;   // the copy label's text
    QString retryMessage;  // the whole text of the attempt-3 and attempt-4 message
    // The shared session's cookies, given to the browser first. The browser keeps none of its own on
    // disk: the host's cookie file (owner-only, in the settings folder) is their one store.
    QList<QNetworkCookie> cookies;
    QRect monitor;         // the available area of the monitor it opens on
    int keptLeft = 0, keptWidth = 0, keptHeight = 0;
    bool showWindow = true;  // false: laid out and loaded without being shown (capture command)

    // The three actions on the captured page picture.
    std::function<void(const QImage&)> paste;
    std::function<void(const QImage&)> save;
    std::function<void(const QImage&)> copy;
    // The message box of the attempt-3 and attempt-4 failures (text, title "Norvane", one "Ok").
    std::function<void(const QString&)> tell;
    // The window's new left edge and size, to keep in the settings.
    std::function<void(const QRect&)> placed;
    // A cookie the browser set (true) or dropped (false).
    std::function<void(const QNetworkCookie&, bool)> cookieChanged;
    // The page is shown (true), or it failed for good after the retries (false).
    std::function<void(bool)> pageDone;
    // Each retry, with its attempt number.
    std::function<void(int)> retried;
};

// One open station view.
class StationView {
public:
    virtual ~StationView() = default;
    virtual QWidget* window() = 0;
    // The page area as it is on the screen now (CaptureView), also put on the clipboard.
    virtual QImage CaptureView() = 0;
    // A cookie the lookups received, for the browser too.
    virtual void putCookie(const QNetworkCookie& cookie) = 0;
};

class StationViewFactory {
public:
    virtual ~StationViewFactory() = default;
    // The view, its window owned by the caller (deleted on close).
    virtual StationView* create(const StationViewSetup& setup) = 0;
};

#define PX_STATIONVIEW_IID "org.pxcallsigns.StationViewFactory/1"
Q_DECLARE_INTERFACE(StationViewFactory, PX_STATIONVIEW_IID)
