#include "pictures/stationviewhost.h"

#include "app/settings.h"
#include "lookup/cookiefile.h"
#include "pictures/stationviewapi.h"
#include "pictures/stationviewloader.h"
#include "pictures/stationviewrules.h"
#include "ui/language.h"
#include "ui/unimsgbox.h"
#include "ui/windowhelpers.h"

#include <QClipboard>
#include <QCursor>
#include <QGuiApplication>
#include <QPointer>
#include <QWidget>

QRect MonitorUnderPointer() {
    const QRect area = AvailableAreaAt(QCursor::pos());
    return area.isEmpty() ? QRect(0, 0, 1024, 768) : area;
}

StationView* OpenStationView(QWidget* owner, const LanguageTexts& texts, const QString& request, CookieFile* cookies,
                             const StationViewActions& actions) {
    QString why;
    StationViewFactory* factory = LoadStationView(&why);
    if (!factory) {
        ShowUniMsgBox(owner, why, msgbox::kIconExclamation, QStringLiteral("Norvane"), QStringLiteral("Ok"));
        return nullptr;
    }
    StationViewSetup setup;
    setup.request = request;
    setup.copyCaption = texts.StViewCopy;
    setup.retryMessage = stationview::RetryMessage(QLatin1String(settings::kApplication), texts.StViewRetry);
    setup.monitor = MonitorUnderPointer();
    setup.keptLeft = settings::GetInt32Setting(settings::kStViewLeft, setup.monitor.left());
    setup.keptWidth = settings::GetInt32Setting(settings::kStViewWidth, 0);
    setup.keptHeight = settings::GetInt32Setting(settings::kStViewHeight, 0);
    setup.paste = actions.paste;
    setup.save = actions.save;
    setup.copy = actions.copy ? actions.copy : [](const QImage& picture) {
        if (QClipboard* clipboard = QGuiApplication::clipboard()) clipboard->setImage(picture);
    };
    setup.pageDone = actions.pageDone;
    QPointer<QWidget> guard(owner);
    setup.tell = [guard](const QString& text) {
        ShowUniMsgBox(guard, text, msgbox::kIconExclamation, QStringLiteral("Norvane"), QStringLiteral("Ok"));
    };
    setup.placed = [](const QRect& frame) {
        settings::SaveSetting(settings::kStViewLeft, QString::number(frame.left()));
        settings::SaveSetting(settings::kStViewHeight, QString::number(frame.height()));
        settings::SaveSetting(settings::kStViewWidth, QString::number(frame.width()));
    };
    if (cookies) {
        setup.cookies = cookies->cookies();
        QPointer<CookieFile> jar(cookies);
        setup.cookieChanged = [jar](const QNetworkCookie& cookie, bool added) {
            if (!jar) return;
            if (added) jar->put(cookie);
            else jar->drop(cookie);
        };
    }
    return factory->create(setup);
}
