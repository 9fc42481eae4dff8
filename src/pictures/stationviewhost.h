#pragma once
// The program's side of the station view: opens it through the plugin with the settings, the
// language's texts and the shared session's cookies, and keeps what it reports.
#include <QImage>
#include <QRect>
#include <QString>
#include <functional>

class CookieFile;
class QWidget;
class StationView;
struct LanguageTexts;

// What the station view's paste and save do with the captured picture (the program's own picture
// procedures); copy leaves it on the clipboard unless given. pageDone, when given, hears that the
// page is shown (true) or failed for good after the retries (false).
struct StationViewActions {
    std::function<void(const QImage&)> paste;
    std::function<void(const QImage&)> save;
    std::function<void(const QImage&)> copy;
    std::function<void(bool)> pageDone;
};

// Opens the station view on request ("address*call"), on the monitor under the pointer, placed
// and sized as the settings keep it. cookies (may be null) is the session the lookups use: the
// browser starts with its cookies and hands back those it sets. Null, after a message box that
// says why, when the plugin cannot be loaded.
StationView* OpenStationView(QWidget* owner, const LanguageTexts& texts, const QString& request, CookieFile* cookies,
                             const StationViewActions& actions);

// The monitor area under the pointer (the primary screen's when there is none).
QRect MonitorUnderPointer();
