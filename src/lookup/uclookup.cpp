#include "lookup/uclookup.h"

#include "common/callchars.h"
#include "common/vbtext.h"
#include "lookup/htmldecode.h"

#include <QNetworkAccessManager>
#include <QNetworkCookieJar>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>

#include <algorithm>

namespace {

constexpr int kMaxRedirects = 10;

QString withZeros(QString text) { return text.replace(QChar(kSlashedO), QChar(u'0')); }

}  // namespace

ucLookUp::ucLookUp(QByteArray& downloadBuffer, LookupHosts hosts, QObject* parent)
    : QObject(parent), downloadBuffer_(downloadBuffer), hosts_(std::move(hosts)),
      network_(new QNetworkAccessManager(this)) {
    network_->setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
    onEvent = [this](lookup::FieldEvent event, const QString& ca) {
        if (event == lookup::FieldEvent::CallNotFound) emit CallNotFound(ca);
        else emit LoginRequired(ca);
    };
}

ucLookUp::~ucLookUp() {
    for (auto& [name, reply] : running_) {
        reply->disconnect(this);
        reply->abort();
    }
}

QString ucLookUp::LoginUrl() const {
    const CallbookService* service = ServiceByNumber(Database);
    return service ? hosts_.services[Database - 1] + QLatin1String(service->loginPath) : QString();
}

QString ucLookUp::SignInUrl() const {
    const CallbookService* service = ServiceByNumber(Database);
    if (!service) return {};
    // QRZ logs in on a page of its own; the others on their home page.
    const bool ownPage = service->number == lookup::Service::Qrz;
    return hosts_.services[Database - 1] + (ownPage ? QStringLiteral("/login") : QStringLiteral("/"));
}

void ucLookUp::setCookieJar(QNetworkCookieJar* jar) {
    network_->setCookieJar(jar);
    jar->setParent(this);
}

QString ucLookUp::PageUrl(const QString& ca) const {
    const CallbookService* service = ServiceByNumber(Database);
    if (!service) return {};
    // The call goes into the path or the query: percent-encode whatever is not plain.
    const QByteArray call = QUrl::toPercentEncoding(withZeros(ca));
    return hosts_.services[Database - 1] + QLatin1String(service->lookupPath) + QString::fromLatin1(call);
}

QString ucLookUp::PictureUrl(const QString& cal) const {
    const QString last = cal.right(1).toLower();
    const QString call = withZeros(cal).toLower();
    const auto enc = [](const QString& s) { return QString::fromLatin1(QUrl::toPercentEncoding(s)); };
    return hosts_.pictures + u'/' + enc(last) + u'/' + enc(call) + u'/' + enc(call) + QStringLiteral(".jpg");
}

bool ucLookUp::LoginState() const {
    const CallbookService* service = ServiceByNumber(Database);
    if (!service || !service->loginMarker) return false;
    return vb::inStr(1, PageText, QString::fromLatin1(service->loginMarker)) > 0;
}

bool ucLookUp::registerName(const QString& name) {
    const QString framed = QChar(0) + name + QChar(0);
    if (PendingDownloads.contains(framed, Qt::CaseSensitive)) return false;
    PendingDownloads += name + QChar(0);
    return true;
}

void ucLookUp::CancelDownload(const QString& name) {
    for (auto it = running_.begin(); it != running_.end();) {
        if (it->first != name) {
            ++it;
            continue;
        }
        QNetworkReply* reply = it->second;
        it = running_.erase(it);
        std::erase(tooLarge_, reply);
        reply->disconnect(this);
        reply->abort();
        reply->deleteLater();
    }
}

void ucLookUp::start(const QString& name, const QString& url) {
    QNetworkRequest request{QUrl(url)};
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setMaximumRedirectsAllowed(kMaxRedirects);
    request.setTransferTimeout(hosts_.timeoutMs);
    QNetworkReply* reply = network_->get(request);
    running_.emplace_back(name, reply);
    connect(reply, &QNetworkReply::downloadProgress, this, [this, reply](qint64 received, qint64) {
        if (received <= hosts_.maxBytes) return;
        tooLarge_.push_back(reply);
        reply->abort();  // ends in the failure of its kind
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply, name] { finished(reply, name); });
}

void ucLookUp::CheckUpdates() {
    RequestKind = QStringLiteral("CheckUpdates");
    // Registered as "Updates" but downloaded as "Updates3": the completion removes the longer
    // name, so "Updates" stays listed and a later probe cancels a download that no longer runs.
    if (!registerName(QStringLiteral("Updates"))) CancelDownload(QStringLiteral("Updates"));
    start(QStringLiteral("Updates3"), hosts_.updates.isEmpty() ? QString() : hosts_.updates + u'/');
}

void ucLookUp::IsLoggedIn(const QString& cal) {
    PageText.clear();
    RequestKind = QStringLiteral("IsLoggedIn");
    if (!registerName(cal)) CancelDownload(cal);
    start(cal, LoginUrl());
}

void ucLookUp::GetPage(const QString& ca) {
    PageText.clear();
    RequestKind = QStringLiteral("GetPage");
    if (!registerName(ca)) CancelDownload(ca);
    start(ca, PageUrl(ca));
}

void ucLookUp::GetPicture(const QString& cal) {
    RequestKind = QStringLiteral("GetPicture");
    if (!registerName(cal)) CancelDownload(cal);
    start(cal, PictureUrl(cal));
}

void ucLookUp::failed(const QString& name, DownloadFailure why) {
    LastFailure = why;
    // The name deliberately stays in PendingDownloads.
    if (RequestKind == QLatin1String("CheckUpdates")) emit UpdatesNotFound();
    else if (RequestKind == QLatin1String("IsLoggedIn")) emit SiteNotFound(name);
    else if (RequestKind == QLatin1String("GetPage")) emit PageNotFound(name);
    else if (RequestKind == QLatin1String("GetPicture")) emit NoPic(name);
}

void ucLookUp::finished(QNetworkReply* reply, const QString& name) {
    for (auto it = running_.begin(); it != running_.end(); ++it) {
        if (it->second == reply) {
            running_.erase(it);
            break;
        }
    }
    reply->deleteLater();
    const auto stoppedForSize = std::find(tooLarge_.begin(), tooLarge_.end(), reply);
    const bool tooLarge = stoppedForSize != tooLarge_.end();
    if (tooLarge) tooLarge_.erase(stoppedForSize);
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (tooLarge) return failed(name, {DownloadFailure::TooLarge});
    if (status >= 400) return failed(name, {DownloadFailure::HttpError, status});
    switch (reply->error()) {
    case QNetworkReply::NoError: break;
    // Nothing else stops a reply that is still ours: the transfer timeout did.
    case QNetworkReply::OperationCanceledError:
    case QNetworkReply::TimeoutError: return failed(name, {DownloadFailure::TimedOut});
    default: return failed(name, {DownloadFailure::Unreachable});
    }
    const QByteArray bytes = reply->readAll();
    if (bytes.size() > hosts_.maxBytes) return failed(name, {DownloadFailure::TooLarge});  // faster than the progress
    LastFailure = {};
    downloadBuffer_ = bytes;
    const QByteArray contentType = reply->header(QNetworkRequest::ContentTypeHeader).toByteArray();
    // Dispatch goes by the latest request's kind, not by which download finished.
    if (RequestKind == QLatin1String("CheckUpdates")) {
        PageText = lookup::pageToText(downloadBuffer_, contentType);
        QString text = PageText;
        emit UpdateFound(text);
    }
    if (RequestKind == QLatin1String("IsLoggedIn")) {
        PageText = lookup::pageToText(downloadBuffer_, contentType);
        emit LoginChecked(name, LoginState());
    }
    if (RequestKind == QLatin1String("GetPage")) {
        PageText = lookup::pageToText(downloadBuffer_, contentType);
        emit GotPage(name, LoginState());
    }
    if (RequestKind == QLatin1String("GetPicture")) emit PictureReady(name);
    PendingDownloads.replace(QChar(0) + name + QChar(0), QString(QChar(0)));
}
