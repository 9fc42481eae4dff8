// One running copy per user and data folder: which start owns it, which one is raised, and what a
// copy that crashed or a damaged lock file leaves behind.
#include "app/singleinstance.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QProcess>
#include <QSignalSpy>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

using Role = SingleInstance::Role;

namespace {

// Runs until the test closes this process's standard input, then ends as a copy normally ends.
int runUntilStdinCloses() {
    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&input] {
        char buffer[64];
        if (std::fread(buffer, 1, sizeof buffer, stdin) == 0) QCoreApplication::quit();
        input.setEnabled(!std::feof(stdin));
    });
    return QCoreApplication::exec();
}

// What this program does when a test starts it as another process (see main).
int holdFolder(const QString& folder) {
    SingleInstance instance(folder);
    std::printf("%s %s\n", instance.role() == Role::First ? "first" : "not-first", qPrintable(instance.lockFilePath()));
    std::fflush(stdout);
    QObject::connect(&instance, &SingleInstance::activationRequested, [] {
        std::puts("raised");
        std::fflush(stdout);
    });
    return runUntilStdinCloses();
}

// A live copy that holds the lock and does not listen (hung, or not yet listening).
int holdLockOnly(const QString& lockPath) {
    QLockFile lock(lockPath);
    lock.setStaleLockTime(0);
    std::puts(lock.tryLock(0) ? "locked" : "not-locked");
    std::fflush(stdout);
    return runUntilStdinCloses();
}

// This test program in another process; ended when the test ends, so that it leaves nothing.
struct OtherCopy {
    QProcess process;
    OtherCopy(const char* mode, const QString& argument) {
        process.start(QCoreApplication::applicationFilePath(), {mode, argument});
    }
    ~OtherCopy() {
        process.closeWriteChannel();
        if (!process.waitForFinished(10000)) process.kill(), process.waitForFinished();
    }
    QString nextLine() {
        while (!process.canReadLine() && process.waitForReadyRead(10000)) continue;
        return QString::fromLocal8Bit(process.readLine()).trimmed();
    }
};

QString lockPathOf(const QString& folder) {
    const SingleInstance probe(folder);
    return probe.lockFilePath();
}

}  // namespace

class SingleInstanceTest : public QObject {
    Q_OBJECT

private slots:
    void theFirstOwnsAndLaterStartsRaiseIt() {
        QTemporaryDir data;
        SingleInstance first(data.path());
        QCOMPARE(first.role(), Role::First);
        QVERIFY(QFile::exists(first.lockFilePath()));
        QSignalSpy raised(&first, &SingleInstance::activationRequested);
        for (const QString& spelling : {data.path(), data.path() + "/", data.path() + "/sub/.."}) {  // one folder
            const SingleInstance later(spelling);
            QCOMPARE(later.role(), Role::OtherRaised);
            QCOMPARE(later.serverName(), first.serverName());
        }
        QTRY_COMPARE(raised.count(), 3);
    }

    void eachFolderHasItsOwnCopy() {
        QTemporaryDir one, two;
        SingleInstance a(one.path()), b(two.path());
        QCOMPARE(a.role(), Role::First);
        QCOMPARE(b.role(), Role::First);
        QVERIFY(a.serverName() != b.serverName());
        QSignalSpy raisedA(&a, &SingleInstance::activationRequested), raisedB(&b, &SingleInstance::activationRequested);
        QCOMPARE(SingleInstance(two.path()).role(), Role::OtherRaised);
        QTRY_COMPARE(raisedB.count(), 1);
        QCOMPARE(raisedA.count(), 0);
    }

    void aCopyThatEndedLeavesTheFolderFree() {
        QTemporaryDir data;
        QString lockPath;
        {
            const SingleInstance gone(data.path());
            QCOMPARE(gone.role(), Role::First);
            lockPath = gone.lockFilePath();
        }
        QVERIFY(!QFile::exists(lockPath));
        SingleInstance next(data.path());
        QCOMPARE(next.role(), Role::First);
        QSignalSpy raised(&next, &SingleInstance::activationRequested);
        QCOMPARE(SingleInstance(data.path()).role(), Role::OtherRaised);
        QTRY_COMPARE(raised.count(), 1);
    }

    void aCopyInAnotherProcessIsRaised() {
        QTemporaryDir data;
        OtherCopy other("--hold", data.path());
        const QString line = other.nextLine();
        QVERIFY2(line.startsWith("first "), qPrintable(line));
        QCOMPARE(SingleInstance(data.path()).role(), Role::OtherRaised);
        QCOMPARE(other.nextLine(), "raised");
    }

    // A killed copy leaves its lock file and its socket; the next start takes both over.
    void aKilledCopyDoesNotBlock() {
        QTemporaryDir data;
        QString lockPath;
        {
            OtherCopy killed("--hold", data.path());
            const QString line = killed.nextLine();
            QVERIFY2(line.startsWith("first "), qPrintable(line));
            lockPath = line.mid(6);
            killed.process.kill();
            QVERIFY(killed.process.waitForFinished());
        }
        QVERIFY(QFile::exists(lockPath));
        SingleInstance next(data.path());
        QCOMPARE(next.role(), Role::First);
        QSignalSpy raised(&next, &SingleInstance::activationRequested);
        QCOMPARE(SingleInstance(data.path()).role(), Role::OtherRaised);
        QTRY_COMPARE(raised.count(), 1);
    }

    void aDamagedLockFileDoesNotBlock_data() {
        QTest::addColumn<QByteArray>("contents");
        QTest::newRow("empty (a crash while it was written)") << QByteArray();
        QTest::newRow("not a lock file") << QByteArray("garbage\n");
        QTest::newRow("a process that is gone") << QByteArray("2147483646\npxcallsigns\n") + QSysInfo::machineHostName().toUtf8() + '\n';
    }
    void aDamagedLockFileDoesNotBlock() {
        QFETCH(QByteArray, contents);
        QTemporaryDir data;
        QFile lock(lockPathOf(data.path()));
        QVERIFY(lock.open(QIODevice::WriteOnly));
        lock.write(contents);
        lock.close();
        const SingleInstance next(data.path());
        QCOMPARE(next.role(), Role::First);
    }

    // A live copy that holds the lock but does not answer keeps it: the later start gives up.
    void aSilentCopyKeepsItsLock() {
        QTemporaryDir data;
        const QString lockPath = lockPathOf(data.path());
        OtherCopy silent("--lock-only", lockPath);
        QCOMPARE(silent.nextLine(), "locked");
        QCOMPARE(SingleInstance(data.path()).role(), Role::OtherSilent);
        QVERIFY(QFile::exists(lockPath));
    }
};

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() == 3 && args[1] == "--hold") return holdFolder(args[2]);
    if (args.size() == 3 && args[1] == "--lock-only") return holdLockOnly(args[2]);
    SingleInstanceTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "singleinstance_test.moc"
