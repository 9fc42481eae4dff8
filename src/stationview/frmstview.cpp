#include "stationview/frmstview.h"

#include "pictures/stationviewrules.h"
#include "stationview/refusingpage.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QQuickWidget>
#include <QQuickWindow>
#include <QTimer>
#include <QVBoxLayout>
#include <QWebEngineCookieStore>
#include <QWebEngineDownloadRequest>
#include <QWebEngineLoadingInfo>
#include <QWebEngineProfile>
#include <QWebEngineView>

namespace {

// The longest a page may take before it counts as failed (milliseconds); PX_STATIONVIEW_TIMEOUT_MS
// shortens it for the tests.
int LoadTimeoutMs() {
    bool ok = false;
    const int fromEnv = qEnvironmentVariableIntValue("PX_STATIONVIEW_TIMEOUT_MS", &ok);
    return ok && fromEnv > 0 ? fromEnv : 30000;
}

constexpr int kMenuBarHeight = kStationViewMenuBarHeight;
// The longest wait for a loaded page's frames, and the quiet time after a frame that says the
// engine has drawn the page (its first frame after loading is often still empty).
constexpr int kFrameWaitMs = 3000;
constexpr int kAfterFirstFrameMs = 700;

QLabel* MenuLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setCursor(Qt::PointingHandCursor);
    label->setContentsMargins(8, 0, 8, 0);
    return label;
}

}  // namespace

frmStView::frmStView(StationViewSetup setup) : setup_(std::move(setup)) {
    setObjectName(QStringLiteral("frmStView"));
    setAttribute(Qt::WA_DeleteOnClose);
    imgMenuBar = new QWidget(this);
    imgMenuBar->setFixedHeight(kMenuBarHeight);
    imgMenuBar->setAutoFillBackground(true);
    lblPaste = MenuLabel(QStringLiteral("Paste to Pictaro TX"), imgMenuBar);
    lblSave = MenuLabel(QStringLiteral("Save image"), imgMenuBar);
    lblCopy = MenuLabel(setup_.copyCaption, imgMenuBar);
    auto* bar = new QHBoxLayout(imgMenuBar);
    bar->setContentsMargins(0, 0, 0, 0);
    bar->setSpacing(0);
    for (QLabel* label : {lblPaste, lblSave, lblCopy}) {
        bar->addWidget(label);
        label->installEventFilter(this);
    }
    bar->addStretch(1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(imgMenuBar);
    pageArea_ = new QWidget(this);
    // The browser draws through a Qt Quick surface, which the window must be made for. Made with
    // this hidden one in it, the window has that kind from the start; otherwise Qt makes it again
    // when the first page's surface joins, and the window flashes.
    auto* surfaceKind = new QQuickWidget(pageArea_);
    surfaceKind->hide();
    auto* page = new QVBoxLayout(pageArea_);
    page->setContentsMargins(0, 0, 0, 0);
    column->addWidget(pageArea_, 1);

    Timer1 = new QTimer(this);
    Timer1->setSingleShot(true);
    Timer1->setInterval(10);
    connect(Timer1, &QTimer::timeout, this, &frmStView::Timer1_Timer);
    frameGuard_ = new QTimer(this);
    frameGuard_->setSingleShot(true);
    frameGuard_->setInterval(kFrameWaitMs);
    connect(frameGuard_, &QTimer::timeout, this, &frmStView::pageShown);
    loadGuard_ = new QTimer(this);
    loadGuard_->setSingleShot(true);
    connect(loadGuard_, &QTimer::timeout, this, &frmStView::RetryView);

    setWindowTitle(stationview::Caption(stationview::SplitRequest(setup_.request).call));
    setMinimumSize(200, kMenuBarHeight + 40);
    // The frame's corner at the place, the inside at the kept size.
    const QRect place = stationview::Placement(setup_.monitor, setup_.keptLeft, setup_.keptWidth, setup_.keptHeight);
    resize(place.size());
    move(place.topLeft());
    if (!setup_.showWindow) setAttribute(Qt::WA_DontShowOnScreen);
    show();
    Timer1->start();
}

frmStView::~frmStView() { dropBrowser(); }

void frmStView::makeBrowser() {
    // Its own profile in memory; the shared cookies go in before the first page.
    profile_ = new QWebEngineProfile(this);
    profile_->setHttpCacheType(QWebEngineProfile::MemoryHttpCache);
    profile_->setPersistentCookiesPolicy(QWebEngineProfile::NoPersistentCookies);
    QWebEngineCookieStore* store = profile_->cookieStore();
    connect(store, &QWebEngineCookieStore::cookieAdded, this, [this](const QNetworkCookie& c) {
        if (setup_.cookieChanged) setup_.cookieChanged(c, true);
    });
    connect(store, &QWebEngineCookieStore::cookieRemoved, this, [this](const QNetworkCookie& c) {
        if (setup_.cookieChanged) setup_.cookieChanged(c, false);
    });
    for (const QNetworkCookie& cookie : std::as_const(setup_.cookies)) store->setCookie(cookie);
    // Downloads the page asks for are refused.
    connect(profile_, &QWebEngineProfile::downloadRequested, this, [](QWebEngineDownloadRequest* download) { download->cancel(); });

    surfaces_ = 0;
    browser_ = new QWebEngineView(pageArea_);
    browser_->setPage(new RefusingPage(profile_, browser_));
    browser_->setContextMenuPolicy(Qt::NoContextMenu);
    connect(browser_->page(), &QWebEnginePage::loadingChanged, this, &frmStView::loadingChanged);
    connect(browser_->page(), &QWebEnginePage::renderProcessTerminated, this,
            [this](QWebEnginePage::RenderProcessTerminationStatus status, int) {
                if (status == QWebEnginePage::NormalTerminationStatus) return;
                // A page that was shown has gone with its renderer: it is opened anew.
                done_ = false;
                awaitingFrame_ = false;
                RetryView();
            });
    pageArea_->layout()->addWidget(browser_);
    // The engine draws through a Qt Quick scene; its frames tell when the page is on the screen.
    watchFrames();
}

void frmStView::dropBrowser() {
    loadGuard_->stop();
    if (browser_) {
        browser_->stop();
        // The page before its profile.
        delete browser_;
        browser_ = nullptr;
    }
    delete profile_;
    profile_ = nullptr;
}

void frmStView::Timer1_Timer() {
    Timer1->stop();
    const stationview::Request request = stationview::SplitRequest(setup_.request);
    setWindowTitle(stationview::Caption(request.call));
    lblPaste->setText(QStringLiteral("Paste to Pictaro TX"));
    lblSave->setText(QStringLiteral("Save image"));
    if (!browser_) makeBrowser();
    if (!stationview::AddressAllowed(request.address)) {
        // Not a web page: nothing is opened, and nothing is retried.
        done_ = true;
        if (setup_.pageDone) setup_.pageDone(false);
        return;
    }
    loadGuard_->start(LoadTimeoutMs());
    browser_->setUrl(QUrl::fromUserInput(request.address.trimmed()));
}

void frmStView::loadingChanged(const QWebEngineLoadingInfo& info) {
    if (done_ || info.status() == QWebEngineLoadingInfo::LoadStartedStatus) return;
    if (info.status() == QWebEngineLoadingInfo::LoadStoppedStatus) return;
    const bool httpError = info.errorDomain() == QWebEngineLoadingInfo::HttpStatusCodeDomain && info.errorCode() >= 400;
    if (info.status() == QWebEngineLoadingInfo::LoadSucceededStatus && !httpError) {
        loadGuard_->stop();
        done_ = true;
        // Shown once the engine has stopped drawing it for a moment (or after a while in any case).
        awaitingFrame_ = true;
        frameGuard_->start(kFrameWaitMs);
        if (surfaces_ == 0) watchFrames();
        return;
    }
    RetryView();
}

void frmStView::RetryView() {
    if (done_) return;
    ++attempts_;
    if (setup_.retried) setup_.retried(attempts_);
    const stationview::RetryStep step = stationview::RetryStepFor(attempts_);
    if (!step.reopen) {
        loadGuard_->stop();
        if (browser_) browser_->stop();
        done_ = true;
        if (setup_.pageDone) setup_.pageDone(false);
        return;
    }
    if (step.tellUser && setup_.tell) setup_.tell(setup_.retryMessage);
    if (step.freshBrowser) {
        // Deleting the view from within its own signal is left to the event loop.
        loadGuard_->stop();
        QWebEngineView* old = browser_;
        QWebEngineProfile* oldProfile = profile_;
        browser_ = nullptr;
        profile_ = nullptr;
        if (old) {
            old->stop();
            old->hide();
            old->page()->disconnect(this);
            pageArea_->layout()->removeWidget(old);
            old->deleteLater();
        }
        if (oldProfile) {
            oldProfile->disconnect(this);
            // After the page, which the view deletes.
            if (old) connect(old, &QObject::destroyed, oldProfile, &QObject::deleteLater);
            else oldProfile->deleteLater();
        }
    } else if (browser_) {
        loadGuard_->stop();
        browser_->stop();
    }
    Timer1->start();
}

QImage frmStView::CaptureView() {
    // The window's inside without the menu bar: the page as it is on the screen now. The window
    // frame and caption are the window manager's and never part of the picture.
    const QImage whole = grab().toImage();
    const QRect page = stationview::PageCrop(whole.size(), 0, 0, imgMenuBar->height());
    if (page.isEmpty()) return picCap;
    picCap = whole.copy(page).convertToFormat(QImage::Format_RGB32);
    if (QClipboard* clipboard = QGuiApplication::clipboard()) {
        clipboard->clear();
        clipboard->setImage(picCap);
    }
    return picCap;
}

void frmStView::putCookie(const QNetworkCookie& cookie) {
    setup_.cookies.append(cookie);
    if (profile_) profile_->cookieStore()->setCookie(cookie);
}

void frmStView::lblPaste_Click() {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const QImage picture = CaptureView();
    if (setup_.paste && !picture.isNull()) setup_.paste(picture);
    QApplication::restoreOverrideCursor();
}

void frmStView::lblSave_Click() {
    const QImage picture = CaptureView();
    if (setup_.save && !picture.isNull()) setup_.save(picture);
}

void frmStView::lblCopy_Click() {
    const QImage picture = CaptureView();
    if (setup_.copy && !picture.isNull()) setup_.copy(picture);
}

void frmStView::watchFrames() {
    if (!browser_) return;
    for (QQuickWidget* surface : browser_->findChildren<QQuickWidget*>()) {
        if (!surface->quickWindow()) continue;
        ++surfaces_;
        connect(surface->quickWindow(), &QQuickWindow::afterRendering, this, [this] {
            if (awaitingFrame_) frameGuard_->start(kAfterFirstFrameMs);
        }, Qt::QueuedConnection);
    }
}

void frmStView::pageShown() {
    if (!awaitingFrame_) return;
    awaitingFrame_ = false;
    frameGuard_->stop();
    if (setup_.pageDone) setup_.pageDone(true);
}

bool frmStView::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonRelease && static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        if (watched == lblPaste) lblPaste_Click();
        else if (watched == lblSave) lblSave_Click();
        else if (watched == lblCopy) lblCopy_Click();
        else return QWidget::eventFilter(watched, event);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void frmStView::closeEvent(QCloseEvent* event) {
    if (setup_.placed && setup_.showWindow) setup_.placed(QRect(frameGeometry().topLeft(), size()));
    Timer1->stop();
    dropBrowser();
    event->accept();
}
