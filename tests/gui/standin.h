#pragma once
// The stand-in Pictaro (tools/pictaro_standin) run by a test: what it was sent, what it received.
#include "platform/platform.h"

#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTest>

// A stand-in Pictaro (or another window) running as a process of its own.
class Standin {
public:
    Standin(const QString& dir, const QString& title, bool minimised = false)
        : log_(dir + "/" + title + ".log"), received_(dir + "/" + title + ".png") {
        QStringList args{QStringLiteral("--title"), title, QStringLiteral("--log"), log_, QStringLiteral("--received"), received_};
        if (minimised) args << QStringLiteral("--minimised");
        process_.start(QStringLiteral(PX_STANDIN), args);
        process_.waitForReadyRead(10000);
        ready_ = QTest::qWaitFor([&] { return platform::FindWindowByTitle(title) != 0; }, 5000);
        QTest::qWait(minimised ? 1000 : 300);
    }
    ~Standin() {
        process_.kill();
        process_.waitForFinished();
    }
    QString log() const {
        QFile f(log_);
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    }
    QImage received() const { return QImage(received_); }
    bool ready() const { return ready_; }

private:
    QString log_, received_;
    QProcess process_;
    bool ready_ = false;
};
