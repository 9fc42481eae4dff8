#pragma once
// The station view's page: it opens web pages only, and no windows of its own.
#include <QWebEnginePage>

class RefusingPage : public QWebEnginePage {
    Q_OBJECT

public:
    RefusingPage(QWebEngineProfile* profile, QObject* parent) : QWebEnginePage(profile, parent) {}

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) override;
    QWebEnginePage* createWindow(WebWindowType) override { return nullptr; }
};
