// Handing a picture to Pictaro: the order of the steps and pauses with a recorded desktop, then
// end to end on the X server against the stand-in Pictaro (tools/pictaro_standin), with and
// without a window manager (tools/with-wm.sh): the picture that arrives, and keys that go nowhere.
#include "app/pictaropaste.h"
#include "standin.h"
#include "wmcheck.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

const QString kStation = QStringLiteral(PX_SOURCE_DIR "/tests/fixtures/pictures/dl1abc.jpg");

// A desktop that writes down what is done to it.
struct RecordedDesktop {
    QStringList calls;
    platform::WindowId pictaro = 0;  // 0: no Pictaro window
    platform::WindowId focused = 0;
    bool keyboard = true;
    bool clipboardTakes = true;

    PictaroDesktop desktop() {
        PictaroDesktop d;
        d.putPicture = [this](const QImage& p) { calls << QStringLiteral("clipboard %1x%2").arg(p.width()).arg(p.height()); return clipboardTakes; };
        d.activate = [this](const QString& title, const std::function<void(int)>& wait) {
            calls << "activate " + title;
            if (!pictaro) return platform::WindowId(0);
            wait(200);
            wait(500);
            return pictaro;
        };
        d.focusedWindow = [this] { calls << QStringLiteral("focus?"); return focused; };
        d.sendF7 = [this] { calls << QStringLiteral("F7"); return keyboard; };
        d.wait = [this](int ms) { calls << QStringLiteral("wait %1").arg(ms); };
        return d;
    }
};

struct CliRun { int status; QString err; };

// What the program itself wrote to stderr (Qt may add warnings of its own about the session).
QString ownErrors(const QByteArray& err) {
    QStringList own;
    for (const QString& line : QString::fromUtf8(err).split(u'\n'))
        if (line.startsWith(QLatin1String("pxcallsigns:"))) own << line;
    return own.join(u'\n');
}

CliRun pasteWithCli(const QString& picture) {
    QProcess p;
    p.start(QStringLiteral(PX_CLI), {QStringLiteral("pictaro"), QStringLiteral("paste"), picture});
    p.waitForFinished(30000);
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, ownErrors(p.readAllStandardError())};
}

QImage stationPicture() { return QImage(kStation).convertToFormat(QImage::Format_RGB32); }

}  // namespace

class PictaroTest : public QObject {
    Q_OBJECT

private slots:
    void stepsAndPauses_data() {
        QTest::addColumn<quint64>("pictaro");
        QTest::addColumn<quint64>("focused");
        QTest::addColumn<bool>("keyboard");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QStringList>("calls");
        const QStringList found{"clipboard 4x3", "activate Pictaro", "wait 200", "wait 500", "wait 500", "focus?"};
        QTest::newRow("Pictaro has the focus") << quint64(7) << quint64(7) << true << int(PasteOutcome::KeySent)
                                               << found + QStringList{"F7", "wait 500"};
        QTest::newRow("no Pictaro") << quint64(0) << quint64(7) << true << int(PasteOutcome::NoPictaro)
                                    << QStringList{"clipboard 4x3", "activate Pictaro", "wait 500"};
        QTest::newRow("focus moved away") << quint64(7) << quint64(9) << true << int(PasteOutcome::FocusElsewhere)
                                          << found + QStringList{"wait 500"};
        QTest::newRow("no focus at all") << quint64(7) << quint64(0) << true << int(PasteOutcome::FocusElsewhere)
                                         << found + QStringList{"wait 500"};
        QTest::newRow("no keyboard") << quint64(7) << quint64(7) << false << int(PasteOutcome::NoKeyboard)
                                     << found + QStringList{"F7", "wait 500"};
    }

    void stepsAndPauses() {
        QFETCH(quint64, pictaro);
        QFETCH(quint64, focused);
        QFETCH(bool, keyboard);
        RecordedDesktop recorded;
        recorded.pictaro = pictaro;
        recorded.focused = focused;
        recorded.keyboard = keyboard;
        QImage picture(4, 3, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QTEST(int(PasteToPictaro(picture, recorded.desktop())), "outcome");
        QTEST(recorded.calls, "calls");
    }

    void nothingToHandOver() {
        RecordedDesktop recorded;
        recorded.pictaro = 7;
        QCOMPARE(PasteToPictaro(QImage(), recorded.desktop()), PasteOutcome::NoPicture);
        QVERIFY(recorded.calls.isEmpty());
        recorded.clipboardTakes = false;
        QCOMPARE(PasteToPictaro(stationPicture(), recorded.desktop()), PasteOutcome::NoPicture);
        QCOMPARE(recorded.calls, QStringList{"clipboard 200x150"});
    }

    void cliPasteReachesAMinimisedPictaro() {
        QTemporaryDir dir;
        const bool managed = windowManagerRuns();
        Standin pictaro(dir.path(), QStringLiteral("Pictaro"), managed);
        QVERIFY(pictaro.ready());
        Standin other(dir.path(), QStringLiteral("Witness"));
        QVERIFY(other.ready());  // started last: it has the focus
        const CliRun run = pasteWithCli(kStation);
        QCOMPARE(run.status, 0);
        QCOMPARE(pictaro.log(), QStringLiteral("F7 200x150\n"));
        QCOMPARE(pictaro.received().convertToFormat(QImage::Format_RGB32), stationPicture());
        QCOMPARE(other.log(), QString());
    }

    void pasteFromTheProgramWhilePictaroRuns() {
        QTemporaryDir dir;
        Standin pictaro(dir.path(), QStringLiteral("Pictaro"), windowManagerRuns());
        QVERIFY(pictaro.ready());
        QCOMPARE(PasteToPictaro(stationPicture(), SessionDesktop(QApplication::clipboard())), PasteOutcome::KeySent);
        QVERIFY(QTest::qWaitFor([&] { return !pictaro.log().isEmpty(); }, 3000));
        QCOMPARE(pictaro.log(), QStringLiteral("F7 200x150\n"));
        QCOMPARE(pictaro.received().convertToFormat(QImage::Format_RGB32), stationPicture());
    }

    void noPictaroNoKey() {
        QTemporaryDir dir;
        Standin other(dir.path(), QStringLiteral("Witness"));
        QVERIFY(other.ready());
        QCOMPARE(PasteToPictaro(stationPicture(), SessionDesktop(QApplication::clipboard())), PasteOutcome::NoPictaro);
        QCOMPARE(QApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32), stationPicture());
        const CliRun run = pasteWithCli(kStation);
        QCOMPARE(run.status, 1);
        QCOMPARE(run.err, QStringLiteral("pxcallsigns: no window titled Pictaro; the picture was on the clipboard"));
        QTest::qWait(200);
        QCOMPARE(other.log(), QString());
    }

    void focusTakenDuringThePauses() {
        QTemporaryDir dir;
        Standin pictaro(dir.path(), QStringLiteral("Pictaro"));
        QVERIFY(pictaro.ready());
        Standin other(dir.path(), QStringLiteral("Witness"));
        QVERIFY(other.ready());
        PictaroDesktop desktop = SessionDesktop(QApplication::clipboard());
        const auto activate = desktop.activate;
        desktop.activate = [activate](const QString& title, const std::function<void(int)>& wait) {
            const platform::WindowId found = activate(title, wait);
            platform::ActivateWindowByTitle(QStringLiteral("Witness"), wait);  // the user clicks elsewhere
            return found;
        };
        QCOMPARE(PasteToPictaro(stationPicture(), desktop), PasteOutcome::FocusElsewhere);
        QTest::qWait(200);
        QCOMPARE(pictaro.log(), QString());
        QCOMPARE(other.log(), QString());
    }

    void twoPictaroWindowsGetOneKey() {
        QTemporaryDir first, second;
        Standin a(first.path(), QStringLiteral("Pictaro"));
        QVERIFY(a.ready());
        Standin b(second.path(), QStringLiteral("Pictaro"));
        QVERIFY(b.ready());
        QCOMPARE(pasteWithCli(kStation).status, 0);
        QTest::qWait(200);
        QCOMPARE(a.log() + b.log(), QStringLiteral("F7 200x150\n"));
    }

    void cliRefusesBadInput_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("err");
        QTest::newRow("no picture") << QStringList{"pictaro", "paste", PX_SOURCE_DIR "/README.md"} << 1
                                    << "pxcallsigns: Cannot read the picture 'README.md': ";
        QTest::newRow("no operand") << QStringList{"pictaro", "paste"} << 2 << "pxcallsigns: pictaro takes: paste IMAGE";
        QTest::newRow("other verb") << QStringList{"pictaro", "copy", "x"} << 2 << "pxcallsigns: pictaro takes: paste IMAGE";
    }

    void cliRefusesBadInput() {
        QFETCH(QStringList, args);
        QProcess p;
        p.start(QStringLiteral(PX_CLI), args);
        QVERIFY(p.waitForFinished(30000));
        QTEST(p.exitCode(), "status");
        QFETCH(QString, err);
        QVERIFY2(ownErrors(p.readAllStandardError()).startsWith(err), qPrintable(err));
    }
};

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    PictaroTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "pictaro_test.moc"
