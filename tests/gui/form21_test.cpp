// The print window and the print command: where the picture goes on the page, the slider's
// width in the window and its preview, and PDF pages measured after rendering them.
#include "pictures/form21.h"
#include "pictures/niceslider.h"
#include "pictures/printpicture.h"
#include "ui/language.h"

#include <QFile>
#include <QLabel>
#include <QProcess>
#include <QApplication>
#include <QBuffer>
#include <QTemporaryDir>
#include <QtTest>

namespace {

LanguageTexts englishTexts() {
    LanguageTexts t;
    QFile file(PX_SOURCE_DIR "/data/Languages/Norvane_English.Language");
    if (file.open(QIODevice::ReadOnly)) LoadLanguageText(file.readAll(), t);
    return t;
}

// The columns and rows of an image that hold the picture's dark red.
QRect inkBox(const QImage& image) {
    QRect box;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QRgb p = image.pixel(x, y);
            if (qRed(p) > 100 && qGreen(p) < 60 && qBlue(p) < 60) box |= QRect(x, y, 1, 1);
        }
    return box;
}

struct Run {
    int status;
    QString err;
};
Run pxcallsigns(const QStringList& args) {
    QProcess p;
    p.start(QStringLiteral(PX_CLI), args);
    p.waitForFinished(30000);
    return {p.exitCode(), QString::fromUtf8(p.readAllStandardError())};
}

}  // namespace

class Form21Test : public QObject {
    Q_OBJECT

    QTemporaryDir dir;
    QString picture;  // 400 x 300, dark red

private slots:
    void initTestCase() {
        QImage image(400, 300, QImage::Format_RGB32);
        image.fill(QColor(150, 0, 0));
        picture = dir.path() + "/station.png";
        QVERIFY(image.save(picture));
    }

    void pictureOnThePage() {
        struct Case {
            const char* what;
            QSizeF area;
            QSize picture;
            int widthCm;
            QRectF expected;
        };
        const Case cases[] = {
            {"10 cm across an A4 area", {190, 277}, {400, 300}, 10, {45, 0, 100, 75}},
            {"as wide as the area", {190, 277}, {400, 300}, 19, {0, 0, 190, 142.5}},
            {"wider than the area", {190, 277}, {400, 300}, 25, {0, 0, 190, 142.5}},
            {"a tall picture kept within the area's height", {190, 277}, {100, 400}, 18, {(190 - 69.25) / 2, 0, 69.25, 277}},
            {"no picture", {190, 277}, {0, 0}, 10, {}},
            {"no width", {190, 277}, {400, 300}, 0, {}},
        };
        for (const Case& c : cases) QVERIFY2(PrintedPictureRect(c.area, c.picture, c.widthCm) == c.expected, c.what);
    }

    void sliderSetsTheWidthAndThePreviewFollows() {
        const LanguageTexts texts = englishTexts();
        QImage image(picture);
        auto* form = new Form21(image, texts);
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form));
        QCOMPARE(form->windowTitle(), QString("Print the picture"));
        QCOMPARE(form->Slider1->Min(), int16_t(kPrintWidthMinCm));
        QCOMPARE(form->Slider1->Max(), int16_t(kPrintWidthMaxCm));
        QCOMPARE(form->printWidthCm(), kPrintWidthDefaultCm);
        QCOMPARE(form->lblWidth->text(), QString("Printed width: 10 cm"));
        // The preview draws 0.9 pixels a millimetre: 10 cm is 90 pixels of picture.
        QCOMPARE(inkBox(form->previewImage()).width(), 90);
        form->Slider1->setValue(20);  // beyond the slider's end
        QCOMPARE(form->lblWidth->text(), QString("Printed width: 18 cm"));
        QCOMPARE(inkBox(form->previewImage()).width(), 162);
        form->close();

        // The next window starts at the width chosen last.
        form = new Form21(image, texts);
        QCOMPARE(form->printWidthCm(), 18);
        QCOMPARE(form->lblWidth->text(), QString("Printed width: 18 cm"));
        form->Slider1->setValue(10);
        delete form;
    }

    void printedPdfHasThePictureAtItsWidth() {
        for (int widthCm : {4, 15}) {
            const QString pdf = dir.path() + QString("/print-%1.pdf").arg(widthCm);
            const Run run = pxcallsigns({"print", picture, "--size", QString::number(widthCm), "--pdf", pdf});
            QVERIFY2(run.status == 0, qPrintable(run.err));
            QProcess render;
            render.start("pdftoppm", {"-r", "100", "-png", "-singlefile", pdf, dir.path() + "/page"});
            QVERIFY(render.waitForFinished(30000) && render.exitCode() == 0);
            const QImage page(dir.path() + "/page.png");
            QCOMPARE(page.size(), QSize(827, 1170));  // A4 at 100 dots an inch, rounded up
            const QRect ink = inkBox(page);
            // The width within two pixels (1/50 inch: the rendered edges are smoothed), the height
            // by the picture's aspect, at the top margin of 10 mm, centred across.
            const double widthPx = widthCm / 2.54 * 100;
            const QString seen = QString("%1 cm: ink %2,%3 %4x%5").arg(widthCm).arg(ink.x()).arg(ink.y()).arg(ink.width()).arg(ink.height());
            QVERIFY2(qAbs(ink.width() - widthPx) <= 2.5, qPrintable(seen));
            QVERIFY2(qAbs(ink.height() - widthPx * 0.75) <= 2.5, qPrintable(seen));
            QVERIFY2(qAbs(ink.top() - 10 / 25.4 * 100) <= 2.5, qPrintable(seen));
            QVERIFY2(qAbs((ink.left() + ink.right() + 1) / 2.0 - 827 / 2.0) <= 2.5, qPrintable(seen));
        }
    }

    void printCommandRefusesBadInput() {
        QFile page(dir.path() + "/page.jpg");
        QVERIFY(page.open(QIODevice::WriteOnly));
        page.write("<html>not a picture</html>");
        page.close();
        // A JPEG whose frame header declares 40,000 x 40,000 pixels.
        QByteArray jpeg;
        {
            QBuffer buffer(&jpeg);
            QVERIFY(QImage(8, 8, QImage::Format_RGB32).save(&buffer, "JPG"));
        }
        const qsizetype sof = jpeg.indexOf("\xFF\xC0");
        QVERIFY(sof > 0);
        for (int at : {5, 7}) {
            jpeg[sof + at] = char(40000 >> 8);
            jpeg[sof + at + 1] = char(40000 & 0xFF);
        }
        QFile huge(dir.path() + "/huge.jpg");
        QVERIFY(huge.open(QIODevice::WriteOnly));
        huge.write(jpeg);
        huge.close();

        const QString pdf = dir.path() + "/out.pdf";
        struct Case {
            QStringList args;
            int status;
            QString errStart;
        };
        const Case cases[] = {
            {{"print", page.fileName(), "--pdf", pdf}, 1, "pxcallsigns: Cannot read the picture 'page.jpg': "},
            {{"print", huge.fileName(), "--pdf", pdf}, 1, "pxcallsigns: The picture 'huge.jpg' is too large: 40000 x 40000 pixels\n"},
            {{"print", dir.path() + "/none.png", "--pdf", pdf}, 1, "pxcallsigns: Cannot read the picture 'none.png': "},
            {{"print", picture, "--pdf", dir.path() + "/no/such/folder/out.pdf"}, 1, "pxcallsigns: Cannot print to "},
            {{"print", picture, "--size", "1", "--pdf", pdf}, 2, "pxcallsigns: --size takes 2 to 18 (centimetres)\n"},
            {{"print", picture, "--size", "ten", "--pdf", pdf}, 2, "pxcallsigns: --size takes 2 to 18 (centimetres)\n"},
            {{"print", picture}, 2, "pxcallsigns: print needs --pdf FILE\n"},
            {{"print", "--pdf", pdf}, 2, "pxcallsigns: print needs one picture\n"},
            {{"print", picture, "--pdf", pdf, "--json"}, 2, "pxcallsigns: print does not take --json\n"},
        };
        for (const Case& c : cases) {
            const Run run = pxcallsigns(c.args);
            QVERIFY2(run.status == c.status, qPrintable(c.args.join(' ') + ": " + run.err));
            QVERIFY2(run.err.startsWith(c.errStart), qPrintable(run.err));
            QVERIFY(!QFile::exists(pdf));
        }
    }
};

int main(int argc, char** argv) {
    // The settings the window keeps go to a folder of the test's own.
    QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toLocal8Bit());
    // A runtime folder as a desktop session has one, so that nothing but our messages reaches stderr.
    QDir(home.path()).mkdir("runtime");
    QFile::setPermissions(home.path() + "/runtime", QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    qputenv("XDG_RUNTIME_DIR", (home.path() + "/runtime").toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("DISPLAY")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    Form21Test test;
    return QTest::qExec(&test, argc, argv);
}

#include "form21_test.moc"
