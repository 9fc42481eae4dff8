#pragma once
// The lookup control: asks the call-book services for pages, the picture server for station
// pictures and the update site for news, all asynchronously on the UI thread, keeps the plain
// text of the last page, and reports every outcome through its signals. The station's fields
// (cName, Add1, ... WebAddress) are read from that text through the members it inherits.
#include "lookup/callbookfields.h"
#include "lookup/services.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <vector>

class QNetworkAccessManager;
class QNetworkCookieJar;
class QNetworkReply;

// Why the last failed download failed.
struct DownloadFailure {
    enum Kind { None, Unreachable, HttpError, TimedOut, TooLarge };
    Kind kind = None;
    int httpStatus = 0;  // HttpError: the status the server answered with
};

class ucLookUp : public QObject, public lookup::CallbookFields {
    Q_OBJECT

public:
    // downloadBuffer receives the bytes of every completed download before any signal.
    ucLookUp(QByteArray& downloadBuffer, LookupHosts hosts, QObject* parent = nullptr);
    ~ucLookUp() override;

    void CheckUpdates();
    void IsLoggedIn(const QString& cal);
    void GetPage(const QString& ca);
    void GetPicture(const QString& cal);
    // Stops the downloads of this name; they raise no event any more. The name stays listed in
    // PendingDownloads, as a failed one does.
    void CancelDownload(const QString& name);

    // The selected service, 1 to 5; any other value selects none.
    void setDatabase(int16_t data_base) { Database = data_base; }
    // PageText, Database and ParseCursor come with the field parsers.

    // The URLs the requests use (exposed so that their rules can be tested).
    QString LoginUrl() const;
    // The page where the user logs in to the selected service (in the station view).
    QString SignInUrl() const;
    QString PageUrl(const QString& ca) const;
    QString PictureUrl(const QString& cal) const;

    // The cookies the downloads send and keep; the control's own in-memory jar without one. The
    // jar passes to the control, which deletes it.
    void setCookieJar(QNetworkCookieJar* jar);

    // Whether the selected service's login marker is in PageText.
    bool LoginState() const;

    QString PendingDownloads = QString(QChar(0));
    QString RequestKind;
    // Set before a failure event is raised, for the window to say what happened.
    DownloadFailure LastFailure;

signals:
    // In this order; the numbering is the control's event numbering.
    void LoginChecked(const QString& ID, bool LoggedIn);  // 1
    void SiteNotFound(const QString& ID);                 // 2
    void GotPage(const QString& ID, bool LoggedIn);       // 3
    void PageNotFound(const QString& ID);                 // 4
    void CallNotFound(const QString& ca);                 // 5
    void PictureReady(const QString& ID);                 // 6
    void NoPic(const QString& ID);                        // 7
    void LoginRequired(const QString& ca);                // 8
    void UpdateFound(const QString& ID);                  // 9
    void UpdatesNotFound();                               // 10

private:
    // Registers name in PendingDownloads; true when it was not pending yet.
    bool registerName(const QString& name);
    void start(const QString& name, const QString& url);
    void finished(QNetworkReply* reply, const QString& name);
    void failed(const QString& name, DownloadFailure why);

    QByteArray& downloadBuffer_;
    LookupHosts hosts_;
    QNetworkAccessManager* network_;
    std::vector<std::pair<QString, QNetworkReply*>> running_;
    std::vector<QNetworkReply*> tooLarge_;  // stopped by us for their size
};
