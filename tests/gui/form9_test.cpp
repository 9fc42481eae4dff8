// The map window and the drawing of the stations: exact pixels of the line and the circles, the
// picture reader's refusals, the window's menu, caption and fallbacks, and map plot on the
// command line.
#include "app/modulevalues.h"
#include "maps/form9.h"
#include "maps/mapdrawing.h"
#include "maps/mappicture.h"

#include <QApplication>
#include <QDataStream>
#include <QFile>
#include <QLabel>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

constexpr QRgb kWhite = 0xffffffff, kBlue = 0xff0000ff, kBlack = 0xff000000;

QImage blank(int w, int h) {
    QImage image(w, h, QImage::Format_RGB32);
    image.fill(Qt::white);
    return image;
}

// Columns of the black pixels on row y right of x0 (the circles crossing the row).
QList<int> blackColumns(const QImage& image, int y, int x0, int x1) {
    QList<int> columns;
    for (int x = x0; x <= x1; ++x)
        if (image.pixel(x, y) == kBlack) columns << x;
    return columns;
}

bool writeFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

// A BMP header that declares width x height pixels and holds none of them.
QByteArray bmpHeader(qint32 width, qint32 height) {
    QByteArray bytes;
    QDataStream s(&bytes, QIODevice::WriteOnly);
    s.setByteOrder(QDataStream::LittleEndian);
    s.writeRawData("BM", 2);
    s << quint32(54) << quint32(0) << quint32(54);
    s << quint32(40) << width << height << quint16(1) << quint16(24) << quint32(0) << quint32(0) << qint32(2835)
      << qint32(2835) << quint32(0) << quint32(0);
    return bytes;
}

}  // namespace

class Form9Test : public QObject {
    Q_OBJECT
private slots:
    void lineAndCirclesArePixelExact() {
        StationPlot plot;
        plot.ownPlaced = plot.calledPlaced = plot.line = true;
        plot.ownX = 20, plot.ownY = 40, plot.calledX = 200, plot.calledY = 40;
        plot.callCaption = QStringLiteral(" To K1ABC  Dx 100 km  Az 90\u00b0 ");
        const QImage image = PlotMapPicture(blank(600, 200), plot);
        // The blue line, two pixels wide, along y 40 between the labels and the circles.
        for (int x : {60, 100, 140}) {
            QCOMPARE(image.pixel(x, 39), kBlue);
            QCOMPARE(image.pixel(x, 40), kBlue);
            QCOMPARE(image.pixel(x, 38), kWhite);
            QCOMPARE(image.pixel(x, 41), kWhite);
        }
        // Straight down from the called station: the inner circle at 4 and the outer at 25, each
        // two pixels wide (the pixels either side of the radius), nothing else.
        QList<int> rows;
        for (int y = 40 + 3; y <= 40 + 30; ++y)
            if (image.pixel(200, y) == kBlack) rows << y;
        QCOMPARE(rows, (QList<int>{40 + 3, 40 + 4, 40 + 24, 40 + 25}));
        QCOMPARE(image.pixel(200, 40 - 25), kBlack);
        QCOMPARE(image.pixel(200 - 25, 40 + 1), kBlack);
        QCOMPARE(image.pixel(200, 40 + 15), kWhite);
        // The red marker on the called station.
        QCOMPARE(image.pixel(200, 40), qRgb(255, 0, 0));
    }

    void withoutTheOwnStationNoLine() {
        StationPlot plot;
        plot.calledPlaced = true;
        plot.calledX = 100, plot.calledY = 100;
        plot.callCaption = QStringLiteral("K1ABC\r\n  Dx 100 km  Az 90\u00b0 ");
        const QImage image = PlotMapPicture(blank(300, 200), plot);
        for (int y = 0; y < 200; ++y)
            for (int x = 0; x < 300; ++x) QVERIFY(image.pixel(x, y) != kBlue);
        // The pen, two pixels wide, covers the pixels just inside and just outside the radius.
        QCOMPARE(blackColumns(image, 100, 101, 127), (QList<int>{103, 104, 124, 125}));
    }

    void planKeepsTheOwnLatitudeWithin89AndSkipsZero() {
        struct Case {
            double myLat, myLon, keptLat;
            bool ownPlaced;
        };
        for (const Case& c : {Case{89.5, 10, 89, true}, Case{-95, 10, -89, true}, Case{0, 10, 0, false},
                              Case{50, 0, 50, false}, Case{50, 5, 50, true}}) {
            double myLat = c.myLat;
            const StationPlot plot = PlanStations(QStringLiteral("World Map"), myLat, c.myLon, 40, -75, "K1ABC", 0);
            QCOMPARE(myLat, c.keptLat);
            QCOMPARE(plot.ownPlaced, c.ownPlaced);
            QCOMPARE(plot.line, c.ownPlaced);
            QVERIFY(plot.calledPlaced);
        }
        double myLat = 50;
        const StationPlot other = PlanStations(QStringLiteral("My Map"), myLat, 5, 40, -75, "K1ABC", 0);
        QVERIFY(!other.ownPlaced && !other.calledPlaced && other.error.isEmpty());
        const StationPlot overflow = PlanStations(QStringLiteral("UK Map"), myLat, 5, -300, 0, "K1ABC", 0);
        QVERIFY(overflow.ownPlaced && !overflow.calledPlaced);
        QCOMPARE(overflow.error, QStringLiteral("Overflow: the position is off UK Map"));
    }

    void badPicturesAreRefused() {
        QTemporaryDir dir;
        const QString real = QStringLiteral(PX_DEFAULT_DATA "/Maps/N-Nederland Map.jpg");
        QFile jpeg(real);
        QVERIFY(jpeg.open(QIODevice::ReadOnly));
        const QByteArray jpegBytes = jpeg.readAll();
        struct Case {
            const char* file;
            QByteArray bytes;
            const char* message;  // "" : read (a truncated JPEG shows what it holds)
        };
        for (const Case& c : {
                 Case{"text Map.jpg", "no picture here", "text Map.jpg is not a picture"},
                 Case{"empty Map.jpg", "", "empty Map.jpg is not a picture"},
                 Case{"huge Map.bmp", bmpHeader(100000, 100000), "huge Map.bmp is too large a picture for a map"},
                 Case{"wide Map.bmp", bmpHeader(20000, 10), "wide Map.bmp is too large a picture for a map"},
                 Case{"cut Map.jpg", jpegBytes.left(jpegBytes.size() / 3), ""},
             }) {
            const QString path = dir.filePath(QString::fromLatin1(c.file));
            QVERIFY(writeFile(path, c.bytes));
            const Result<QImage> read = ReadMapPicture(path);
            QCOMPARE(read.message(), QString::fromLatin1(c.message));
            if (read) QCOMPARE(read->size(), QSize(1028, 626));
        }
    }

    void windowShowsTheChosenMapAndFallsBack() {
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir("Maps"));
        QVERIFY(QFile::copy(PX_DEFAULT_DATA "/Maps/N-Nederland Map.jpg", dir.path() + "/Maps/N-Nederland Map.jpg"));
        QVERIFY(QFile::copy(PX_DEFAULT_DATA "/Maps/World Map.jpg", dir.path() + "/Maps/World Map.jpg"));
        QVERIFY(blank(300, 200).save(dir.path() + "/Maps/My Map.png"));
        ModuleValues g;
        g.DataPath = dir.path();
        g.MyLat = 89.5, g.MyLon = 5.1, g.OtherLat = 53.0, g.OtherLon = 5.0, g.DistUnit = 0;
        const QStringList lstMap{"My Map.png", "N-Nederland Map.jpg", "World Map.jpg"};
        QStringList messages;
        auto collect = [&](const QString& m) { messages << m; };
        Form9* window = nullptr;
        ShowMap(window, g, lstMap, "PA3XYZ", nullptr, collect);
        QVERIFY(window);
        window->showMessage = collect;
        QCOMPARE(window->MapIndex(), 1);
        QCOMPARE(window->windowTitle(), QStringLiteral("Map   N-Nederland Map   (Hold down left button to move map)"));
        QCOMPARE(g.MyLat, 89.0);
        QVERIFY(window->plot().calledPlaced);
        QCOMPARE(QPoint(window->plot().calledX, window->plot().calledY), QPoint(267, 269));
        // The own station, held at 89 N, lies far above the picture.
        QCOMPARE(QPoint(window->plot().ownX, window->plot().ownY), QPoint(291, -13640));
        QCOMPARE(window->picInner->pixmap().size(), QSize(1028, 626));
        QCOMPARE(window->lblMaps.size(), 3);
        QCOMPARE(window->lblMaps[0]->text(), QStringLiteral("  My Map.png  "));
        QCOMPARE(window->lblMaps[1]->text(), QStringLiteral("  N-Nederland  "));
        QVERIFY(messages.isEmpty());
        // The window fits the monitor and the called station is in the frame's view.
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QVERIFY(window->screen()->availableGeometry().contains(window->geometry()));
        const QPoint called = window->picInner->pos() + QPoint(267, 269);
        QVERIFY(QRect(QPoint(0, 0), window->picOuter->size()).contains(called));
        if (!qEnvironmentVariableIsEmpty("PX_MAP_SHOT")) window->grab().save(qEnvironmentVariable("PX_MAP_SHOT"));

        // A map that is none of the nine: shown, neither station projected.
        window->lblMaps_Click(0);
        QCOMPARE(window->MapIndex(), 0);
        QVERIFY(!window->plot().calledPlaced && !window->plot().ownPlaced);
        QCOMPARE(window->shownPicture().size(), QSize(300, 200));
        QCOMPARE(window->lblMaps[0]->styleSheet(), QStringLiteral("color: rgb(255, 255, 255);"));

        // Tokyo has no Japan map here: the message, then the world map.
        g.OtherLat = 35.68, g.OtherLon = 139.69;
        ShowMap(window, g, lstMap, "JA1XYZ", nullptr, collect);
        QCOMPARE(messages, QStringList{"Japan Map not found\r\nPlease install Japan Map in Quillor]Maps folder"});
        QCOMPARE(window->MapIndex(), 2);
        QVERIFY(window->plot().calledPlaced && window->plot().ownPlaced);
        QCOMPARE(window->plot().callCaption.left(12), QStringLiteral(" To JA1XYZ  "));

        // Neither the map nor the world map: both messages, the window stays as it was.
        messages.clear();
        ShowMap(window, g, QStringList{"My Map.png"}, "JA1XYZ", nullptr, collect);
        QCOMPARE(messages.size(), 2);
        QCOMPARE(window->MapIndex(), 2);
        window->close();
        QTRY_VERIFY(window == nullptr);
    }

    void aThousandMapsStillFitTheMonitor() {
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir("Maps"));
        QVERIFY(QFile::copy(PX_DEFAULT_DATA "/Maps/World Map.jpg", dir.path() + "/Maps/World Map.jpg"));
        QStringList lstMap;
        for (int i = 0; i < 1000; ++i) lstMap << QStringLiteral("Region %1 Map.jpg").arg(i);
        lstMap << "World Map.jpg";
        ModuleValues g;
        g.DataPath = dir.path();
        g.MyLat = 52.1, g.MyLon = 5.1, g.OtherLat = -60, g.OtherLon = 0;
        Form9* window = nullptr;
        QStringList messages;
        ShowMap(window, g, lstMap, "CE9ABC", nullptr, [&](const QString& m) { messages << m; });
        QVERIFY(window && messages.isEmpty());
        window->showMessage = [&](const QString& m) { messages << m; };
        QCOMPARE(window->MapIndex(), 1000);
        QCOMPARE(window->lblMaps.size(), 1001);
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QVERIFY(window->screen()->availableGeometry().contains(window->geometry()));
        // Picking a listed map whose file is missing says so and keeps the window.
        window->lblMaps_Click(3);
        QCOMPARE(messages, QStringList{"Region 3 Map.jpg is not a picture"});
        delete window;
    }

    void mapPlotWritesTheWindowsDrawing() {
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir("Maps"));
        QVERIFY(QFile::copy(PX_DEFAULT_DATA "/Maps/Europe Map.jpg", dir.path() + "/Maps/Europe Map.jpg"));
        const QString out = dir.filePath("plot.png");
        QProcess p;
        p.start(PX_CLI, {"map", "plot", "--data", dir.path(), "--map", "Europe Map", "--own", "52.1", "5.1",
                         "--station", "41.9", "12.5", "--call", "I0ABC", "--km", out});
        QVERIFY(p.waitForFinished(30000));
        QCOMPARE(p.exitCode(), 0);
        const QImage image(out);
        QCOMPARE(image.size(), QSize(1827, 1505));
        double myLat = 52.1;
        const StationPlot plot = PlanStations("Europe Map", myLat, 5.1, 41.9, 12.5, "I0ABC", 0);
        QCOMPARE(QPoint(plot.calledX, plot.calledY), QPoint(613, 1028));
        QCOMPARE(image.pixel(plot.calledX, plot.calledY - 25), kBlack);
        const QImage same = PlotMapPicture(QImage(dir.path() + "/Maps/Europe Map.jpg"), plot);
        QCOMPARE(image.convertToFormat(QImage::Format_RGB32), same);
        p.start(PX_CLI, {"map", "plot", "--data", dir.path(), "--map", "Asia Map", "--own", "52.1", "5.1",
                         "--station", "41.9", "12.5", "--call", "I0ABC", out + "2"});
        QVERIFY(p.waitForFinished(30000));
        QCOMPARE(p.exitCode(), 1);
        QVERIFY(!QFile::exists(out + "2"));
    }
};

int main(int argc, char** argv) {
    QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("DISPLAY")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    Form9Test test;
    return QTest::qExec(&test, argc, argv);
}

#include "form9_test.moc"
