#pragma once
// Starts the local call-book stand-in (tools/callbook_server.py) for a test and stops it after.
#include <QProcess>
#include <QString>
#include <QStringList>

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

private:
    QProcess process_;
    int port_ = 0;
};
