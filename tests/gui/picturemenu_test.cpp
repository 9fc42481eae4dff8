// The picture menu's items with the desktop, the dialog and the messages passed in: what lands on
// the clipboard, on the desktop and in the chosen file, and what the user is told.
#include "app/picturemenu.h"
#include "pictures/savejpg.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString kStation = QStringLiteral(PX_SOURCE_DIR "/tests/fixtures/pictures/g4abc.jpg");

struct Shown {
    QStringList failures, statuses, asked;
};

PictureMenuActions actions(const LanguageTexts& texts, Shown& shown, const QString& desktop, const QString& chosen,
                           platform::WindowId pictaro = 0, platform::WindowId focused = 0) {
    PictureMenuActions a;
    a.picture = QImage(kStation);
    a.desktopFolder = desktop;
    a.currentCall = QStringLiteral("G4ABC");
    a.texts = &texts;
    a.clipboard = QApplication::clipboard();
    a.pictaro.putPicture = [](const QImage& p) { QApplication::clipboard()->setImage(p); return true; };
    a.pictaro.activate = [pictaro](const QString&, const std::function<void(int)>&) { return pictaro; };
    a.pictaro.focusedWindow = [focused] { return focused; };
    a.pictaro.sendF7 = [] { return true; };
    a.pictaro.wait = [](int) {};
    a.askJpegName = [&shown, chosen](const QString& proposed) { shown.asked << proposed; return chosen; };
    a.showFailure = [&shown](const QString& t) { shown.failures << t; };
    a.showStatus = [&shown](const QString& t) { shown.statuses << t; };
    return a;
}

LanguageTexts english() {
    LanguageTexts t;
    QFile f(QStringLiteral(PX_SOURCE_DIR "/data/Languages/Norvane_English.Language"));
    if (f.open(QIODevice::ReadOnly)) (void)LoadLanguageText(f.readAll(), t);
    return t;
}

}  // namespace

class PictureMenuTest : public QObject {
    Q_OBJECT
    LanguageTexts texts = english();

private slots:
    void captions() {
        const QList<MenuItem> items = PictureMenuItems(texts);
        QStringList captions;
        for (const MenuItem& i : items) captions << QString::number(i.number) + " " + i.caption;
        QCOMPARE(captions, (QStringList{"0 Copy picture", "1 Save as bitmap on the desktop", "2 Paste to Pictaro TX",
                                        "3 Save as JPEG...", "4 Print the picture"}));
    }

    void copyPutsTheBitmapOnTheClipboard() {
        Shown shown;
        QApplication::clipboard()->setText(QStringLiteral("before"));
        MnuPopupImageClick(picturemenu::kCopy, actions(texts, shown, QString(), QString()));
        QCOMPARE(QApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32), QImage(kStation).convertToFormat(QImage::Format_RGB32));
        QVERIFY(shown.failures.isEmpty());
    }

    void bitmapsOnTheDesktop() {
        QTemporaryDir home;
        const QString desktop = home.path() + "/Desktop/";
        QVERIFY(QDir().mkpath(desktop));
        QFile(desktop + "PX Callsigns_1.bmp").open(QIODevice::WriteOnly);
        Shown shown;
        MnuPopupImageClick(picturemenu::kSaveBitmap, actions(texts, shown, desktop, QString()));
        MnuPopupImageClick(picturemenu::kSaveBitmap, actions(texts, shown, desktop, QString()));
        QCOMPARE(shown.statuses, (QStringList{"Picture saved on the desktop as PX Callsigns_2.bmp",
                                              "Picture saved on the desktop as PX Callsigns_3.bmp"}));
        QCOMPARE(QImage(desktop + "PX Callsigns_3.bmp").convertToFormat(QImage::Format_RGB32), QImage(kStation).convertToFormat(QImage::Format_RGB32));
        // No desktop folder, or one that cannot be written: a clear message, nothing written.
        MnuPopupImageClick(picturemenu::kSaveBitmap, actions(texts, shown, home.path() + "/Schreibtisch/", QString()));
        MnuPopupImageClick(picturemenu::kSaveBitmap, actions(texts, shown, QStringLiteral("/proc/"), QString()));
        QCOMPARE(shown.failures.size(), 2);
        QCOMPARE(shown.failures[0], "The folder '" + home.path() + "/Schreibtisch/' does not exist");
        QVERIFY(shown.failures[1].startsWith("Cannot write the bitmap 'PX Callsigns_1.bmp': "));
        QCOMPARE(shown.statuses.size(), 2);
    }

    void pasteTellsWhereThePictureIs_data() {
        QTest::addColumn<quint64>("pictaro");
        QTest::addColumn<quint64>("focused");
        QTest::addColumn<QString>("status");
        QTest::newRow("pasted") << quint64(5) << quint64(5) << QString();
        QTest::newRow("not running") << quint64(0) << quint64(0) << texts.StatusPictaroAbsent;
        QTest::newRow("focus elsewhere") << quint64(5) << quint64(6) << texts.StatusPictaroFocus;
    }

    void pasteTellsWhereThePictureIs() {
        QFETCH(quint64, pictaro);
        QFETCH(quint64, focused);
        Shown shown;
        QApplication::clipboard()->clear();
        MnuPopupImageClick(picturemenu::kPasteToPictaro, actions(texts, shown, QString(), QString(), pictaro, focused));
        QFETCH(QString, status);
        QCOMPARE(shown.statuses, QStringList{status});
        QCOMPARE(QApplication::clipboard()->image().size(), QImage(kStation).size());
    }

    void jpegToTheChosenFile() {
        QTemporaryDir dir;
        const struct { QString chosen; QString written; } cases[] = {
            {dir.path() + "/G4ABC", dir.path() + "/G4ABC.jpg"},
            {dir.path() + "/other.jpg", dir.path() + "/other.jpg"},
            {QString(), QString()},           // cancelled
            {QStringLiteral("G4ABC"), QString()},  // no folder part
        };
        for (const auto& c : cases) {
            Shown shown;
            MnuPopupImageClick(picturemenu::kSaveJpeg, actions(texts, shown, QString(), c.chosen));
            QCOMPARE(shown.asked, QStringList{"G4ABC"});
            QVERIFY(shown.failures.isEmpty());
            if (!c.written.isEmpty()) QCOMPARE(QImage(c.written).size(), QImage(kStation).size());
        }
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files), (QStringList{"G4ABC.jpg", "other.jpg"}));
        Shown shown;
        MnuPopupImageClick(picturemenu::kSaveJpeg, actions(texts, shown, QString(), QStringLiteral("/proc/G4ABC")));
        QCOMPARE(shown.failures, QStringList{"Failed to save the picture to the file: '/proc/G4ABC.jpg'"});
    }

    void noPictureNoAction() {
        for (int item = 0; item < 4; ++item) {
            Shown shown;
            PictureMenuActions a = actions(texts, shown, QStringLiteral("/proc/"), QStringLiteral("/proc/x"), 5, 5);
            a.picture = QImage();
            MnuPopupImageClick(item, a);
            QVERIFY(shown.failures.isEmpty() && shown.statuses.isEmpty() && shown.asked.isEmpty());
        }
    }
};

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    PictureMenuTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "picturemenu_test.moc"
