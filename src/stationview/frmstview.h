#pragma once
// The station view: a web page about the called station in a browser inside this window, under a
// menu bar of three labels that capture what the page shows and paste, save or copy it.
#include "pictures/stationviewapi.h"

#include <QImage>
#include <QWidget>

class QLabel;
class QTimer;
class QWebEngineLoadingInfo;
class QWebEngineProfile;
class QWebEngineView;

class frmStView : public QWidget, public StationView {
    Q_OBJECT

public:
    explicit frmStView(StationViewSetup setup);
    ~frmStView() override;

    QWidget* window() override { return this; }
    QImage CaptureView() override;
    void putCookie(const QNetworkCookie& cookie) override;

    int attempts() const { return attempts_; }
    QImage picCap;  // the last captured page picture

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void Timer1_Timer();
    void RetryView();
    void makeBrowser();
    void dropBrowser();
    void loadingChanged(const QWebEngineLoadingInfo& info);
    void watchFrames();
    void pageShown();
    void lblPaste_Click();
    void lblSave_Click();
    void lblCopy_Click();

    StationViewSetup setup_;
    QWidget* imgMenuBar;
    QWidget* pageArea_;  // the browser's place, below the menu bar
    QLabel* lblPaste;
    QLabel* lblSave;
    QLabel* lblCopy;
    QTimer* Timer1;
    QTimer* loadGuard_;
    QTimer* frameGuard_;      // waits for the loaded page's first frame
    bool awaitingFrame_ = false;
    int surfaces_ = 0;  // drawing surfaces watched for frames  // a page that never finishes counts as failed
    QWebEngineProfile* profile_ = nullptr;
    QWebEngineView* browser_ = nullptr;
    int16_t attempts_ = 0;
    bool done_ = false;  // the page was shown, or given up on
};
