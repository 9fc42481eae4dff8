#include "app/form1.h"

#include "app/lookuphosts.h"
#include "app/nicknames.h"
#include "lookup/cookiefile.h"
#include "lookup/uclookup.h"
#include "pictures/stationviewapi.h"
#include "pictures/stationviewrules.h"
#include "db/form26.h"
#include "maps/form9.h"
#include "setup/form2.h"
#include "ui/popupmenu.h"
#include "ui/unimsgbox.h"
#include "ui/windowhelpers.h"

#include <QCursor>
#include <QLabel>
#include <QMouseEvent>
#include <QTimer>

// The main window's pop-up menus and what their items open.

bool Form1::eventFilter(QObject* watched, QEvent* event) {
    if (watched == Image1 && (event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent))
        setPictureRoom(event->type() == QEvent::ShowToParent);
    if (event->type() != QEvent::MouseButtonPress) return QWidget::eventFilter(watched, event);
    const auto* mouse = static_cast<QMouseEvent*>(event);
    if (watched == Image1 && mouse->button() == Qt::LeftButton) {
        enlargePicture();
        return true;
    }
    if (watched == Image1 && mouse->button() == Qt::RightButton) {
        ShowPictureMenu(mouse->globalPosition().toPoint());
        return true;
    }
    if (watched == lblMaps) {
        QList<MenuItem> items;
        for (int i = 0; i < static_cast<int>(MapsMenuCaptions.size()); ++i) items.append({i, MapsMenuCaptions[i]});
        items.append({kMenuLogIn, QString(g_.Texts.MenuLogIn).replace(QLatin1String("***"), g_.ServiceName)});
        showMenu(lblMaps, items, &Form1::MnuMapsClick);
        return true;
    }
    if (watched == lblSetup) {
        QList<MenuItem> items;
        for (int i = 0; i < static_cast<int>(SetupMenuCaptions.size()); ++i) items.append({i, SetupMenuCaptions[i]});
        showMenu(lblSetup, items, &Form1::MnuSetupClick);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void Form1::showMenu(QLabel* at, const QList<MenuItem>& items, void (Form1::*handler)(int)) {
    showMenuAt(at->mapToGlobal(QPoint(0, 0)), items, handler);
}

void Form1::showMenuAt(QPoint at, const QList<MenuItem>& items, void (Form1::*handler)(int)) {
    if (menu_) menu_->close();
    menu_ = MakeMenu(items, at, [this, handler](int item) { (this->*handler)(item); }, this);
    connect(menu_, &QObject::destroyed, this, [this] { menu_ = nullptr; });
    tmrMenus->start();
}

void Form1::tmrMenus_Timer() {
    if (menu_ && IsCursorOver(menu_)) return;
    tmrMenus->stop();
    if (menu_) menu_->close();
}

void Form1::MnuSetupClick(int item) {
    tmrMenus->stop();
    if (menu_) menu_->close();
    if (item == 0) {
        if (CountLoadedWindows(QStringLiteral("Form2")) >= 1) return;
        auto* form2 = new Form2(g_, this);
        connect(form2, &Form2::closed, this, &Form1::RefreshDistance);
        PlaceWindowBeside(form2, this);
        form2->show();
    }
    if (item == 1) {
        if (CountLoadedWindows(QStringLiteral("Form26")) >= 1) return;
        auto* form26 = new Form26(g_, lstNicknames, this);
        form26->setAttribute(Qt::WA_DeleteOnClose);
        connect(form26, &Form26::PictureMenuRequested, this, [this] { ShowPictureMenu(QCursor::pos()); });
        connect(form26, &Form26::Unloaded, this, [this](bool nicknamesChanged) {
            // The nickname list is the main window's: it goes back to its file when it changed.
            if (!nicknamesChanged) return;
            if (const Status saved = SaveNicknames(g_.nicknamesPath(), lstNicknames); !saved)
                ShowUniMsgBox(this, saved.message(), msgbox::kIconExclamation, QStringLiteral("PX Callsigns"), QStringLiteral("OK"));
        });
        form26->Form_Load();
        PlaceWindowBeside(form26, this);
        form26->show();
    }
    if (item == 2) ShowHelp();
    if (item == 3) Unload();
}

void Form1::MnuMapsClick(int item) {
    tmrMenus->stop();
    if (menu_) menu_->close();
    if (item == 0) MnuMapLocCallClick();
    if (item == 4) showRegionMaps();
    if (const QString request = mapsRequest(item); !request.isEmpty()) openStationView(request);
}

void Form1::showRegionMaps() {
    ShowRegionMaps(form9_, g_, lstMap, g_.CurrentCall, this, [this](const QString& text) {
        ShowUniMsgBox(this, text, msgbox::kNoIcon, QStringLiteral("PX Callsigns"), QStringLiteral("OK"));
    });
    watchMapWindow();
}

void Form1::watchMapWindow() {
    if (!form9_) return;
    // The map window closes this window's pop-up menu once a mouse button goes down.
    form9_->closePopupMenu = [this] {
        if (menu_) menu_->close();
    };
    // Once per map window (the same window is shown again for the next map).
    disconnect(form9_, &Form9::closed, this, nullptr);
    connect(form9_, &Form9::closed, this, [this] { activateWindow(); });
}

void Form1::MnuMapLocCallClick() {
    if (g_.OtherLat == 0 && g_.OtherLon == 0) return;  // nothing looked up yet
    ShowMap(form9_, g_, lstMap, g_.CurrentCall, this, [this](const QString& text) {
        ShowUniMsgBox(this, text, msgbox::kNoIcon, QStringLiteral("PX Callsigns"), QStringLiteral("OK"));
    });
    watchMapWindow();
}

QString Form1::mapsRequest(int item) const {
    const QString host = WebMapHost();
    if (item == 1 || item == 2) {
        const QString link = item == 1 ? stationview::WebMapByAddress(host, lblAdd1->text(), lblAdd2->text(),
                                                                      lblCtry->text(), g_.OtherLat, g_.OtherLon)
                                       : stationview::WebMapByPosition(host, g_.OtherLat, g_.OtherLon);
        return link.isEmpty() ? QString() : stationview::MapRequest(link, g_.CurrentCall);  // empty: no known position
    }
    if (item == 3 && !g_.CurrentCall.isEmpty()) return lookUp->PageUrl(g_.CurrentCall) + u'*' + g_.CurrentCall;
    if (item == kMenuLogIn) return lookUp->SignInUrl() + u'*' + g_.ServiceName;
    return {};
}

void Form1::openStationView(const QString& request) {
    if (stView_) stView_->close();
    const StationViewActions actions = stationViewActions.paste ? stationViewActions : stationViewPictureActions();
    stViewHandle_ = OpenStationView(this, g_.Texts, request, cookies_, actions);
    stView_ = stViewHandle_ ? stViewHandle_->window() : nullptr;
}
