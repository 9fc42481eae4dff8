#pragma once
// Starts the local call-book stand-in (tools/callbook_server.py) for a test and stops it after.
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <memory>

class CallbookServer {
public:
    explicit CallbookServer(const QStringList& extraArgs = {}) {
        process_.setProgram(QStringLiteral("python3"));
        process_.setArguments(QStringList{QStringLiteral(PX_SOURCE_DIR "/tools/callbook_server.py"),
                                          QStringLiteral("--lifetime"), QStringLiteral("300")} +
                              extraArgs);
        process_.start();
        if (process_.waitForStarted(10000) && process_.waitForReadyRead(10000))
            port_ = process_.readLine().trimmed().toInt();
    }
    ~CallbookServer() {
        process_.kill();
        process_.waitForFinished(5000);
    }
    int port() const { return port_; }
    QString url(const QString& path = {}) const { return QStringLiteral("http://127.0.0.1:%1").arg(port_) + path; }

    // The paths asked for since the last call (the list is emptied), in order.
    QStringList takeRequests() const {
        QNetworkAccessManager nam;
        std::unique_ptr<QNetworkReply> reply(nam.get(QNetworkRequest(QUrl(url(QStringLiteral("/_control/requests?clear=1"))))));
        QEventLoop loop;
        QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
        QTimer::singleShot(10000, &loop, &QEventLoop::quit);
        if (!reply->isFinished()) loop.exec();
        return QString::fromUtf8(reply->readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

private:
    QProcess process_;
    int port_ = 0;
};
