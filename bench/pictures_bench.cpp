// JPEG writing beside libjpeg-turbo's cjpeg on the same pictures at the same quality, and the cost
// of a paste to Pictaro beyond its fixed pauses.
//
// cjpeg runs as a process of its own, so its figure is its run on the picture less its run on a
// 1 x 1 picture (start-up, loading and writing a file): what is left is its encoding and writing.
// SaveJPG's figure covers the whole call (a temporary file, the encoding, the rename). The paste
// runs on the display in DISPLAY (with a window titled Pictaro to paste into: bench/pictures_bench.sh).
#include "app/pictaropaste.h"
#include "pictures/dibsection.h"
#include "pictures/savejpg.h"
#include "pictures/stationpicture.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QClipboard>
#include <QPainter>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <sys/resource.h>

namespace {

// A picture with the texture of a photograph: smooth shading, edges and grain.
QImage photoLike(int w, int h) {
    QImage image(w, h, QImage::Format_RGB32);
    QPainter p(&image);
    QLinearGradient sky(0, 0, w, h);
    sky.setColorAt(0, QColor(40, 90, 160));
    sky.setColorAt(1, QColor(230, 200, 120));
    p.fillRect(image.rect(), sky);
    QRandomGenerator random(7);
    for (int i = 0; i < 60; ++i) {
        p.setBrush(QColor::fromRgb(random.bounded(256), random.bounded(256), random.bounded(256)));
        p.drawEllipse(random.bounded(w), random.bounded(h), random.bounded(w / 4) + 10, random.bounded(h / 4) + 10);
    }
    p.end();
    for (int y = 0; y < h; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < w; ++x) {
            const int n = static_cast<int>(random.bounded(17)) - 8;
            const QRgb c = line[x];
            line[x] = qRgb(std::clamp(qRed(c) + n, 0, 255), std::clamp(qGreen(c) + n, 0, 255), std::clamp(qBlue(c) + n, 0, 255));
        }
    }
    return image;
}

QTemporaryDir& workDir() {
    static QTemporaryDir dir;
    return dir;
}

QString ppmOf(int w, int h) {
    const QString file = workDir().filePath(QStringLiteral("in-%1x%2.ppm").arg(w).arg(h));
    if (!QFile::exists(file)) photoLike(w, h).save(file, "PPM");
    return file;
}

void BM_SaveJPG(benchmark::State& state) {
    const int w = static_cast<int>(state.range(0)), h = static_cast<int>(state.range(1));
    cDIBSection bitmap;
    bitmap.CreateFromPicture(photoLike(w, h));
    const QString out = workDir().filePath(QStringLiteral("ours.jpg"));
    for (auto _ : state)
        if (!SaveJPG(bitmap, out, kStationJpegQuality)) state.SkipWithError("SaveJPG failed");
    state.counters["bytes"] = static_cast<double>(QFileInfo(out).size());
}

// The processor time of the finished child processes so far, in milliseconds.
double childrenCpuMs() {
    rusage r{};
    getrusage(RUSAGE_CHILDREN, &r);
    return (r.ru_utime.tv_sec + r.ru_stime.tv_sec) * 1e3 + (r.ru_utime.tv_usec + r.ru_stime.tv_usec) / 1e3;
}

// One run of cjpeg: its wall time (the result) and processor time (*cpu), in milliseconds.
double cjpegRunMs(const QString& input, const QString& output, double* cpu) {
    const double cpuBefore = childrenCpuMs();
    QElapsedTimer timer;
    timer.start();
    QProcess p;
    p.start(QStringLiteral("cjpeg"), {QStringLiteral("-quality"), QString::number(kStationJpegQuality), QStringLiteral("-outfile"), output, input});
    if (!p.waitForFinished(30000) || p.exitCode() != 0) return -1;
    const double wall = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    *cpu = childrenCpuMs() - cpuBefore;
    return wall;
}

// cjpeg's encoding and writing: its run on the picture less its run on a 1 x 1 picture.
void BM_Cjpeg(benchmark::State& state) {
    const int w = static_cast<int>(state.range(0)), h = static_cast<int>(state.range(1));
    const QString input = ppmOf(w, h), tiny = ppmOf(1, 1), out = workDir().filePath(QStringLiteral("cjpeg.jpg"));
    const QString tinyOut = workDir().filePath(QStringLiteral("cjpeg-tiny.jpg"));
    double cpu = 0;
    for (auto _ : state) {
        double cpuWhole = 0, cpuStartup = 0;
        const double whole = cjpegRunMs(input, out, &cpuWhole), startup = cjpegRunMs(tiny, tinyOut, &cpuStartup);
        if (whole < 0 || startup < 0) {
            state.SkipWithError("cjpeg did not run (package libjpeg-turbo-progs)");
            break;
        }
        state.SetIterationTime(std::max(0.0, whole - startup) / 1000.0);
        cpu += std::max(0.0, cpuWhole - cpuStartup);
    }
    state.counters["bytes"] = static_cast<double>(QFileInfo(out).size());
    state.counters["cpu_ms"] = cpu / static_cast<double>(state.iterations());
}

// A whole paste with its pauses; the figure is the time beyond the pauses' 1.7 seconds.
void BM_PasteBeyondPauses(benchmark::State& state) {
    const QImage picture = photoLike(320, 240);
    PictaroDesktop desktop = SessionDesktop(QGuiApplication::clipboard());
    int paused = 0;
    const auto wait = desktop.wait;
    desktop.wait = [&](int ms) { paused += ms; wait(ms); };
    const auto activate = desktop.activate;
    desktop.activate = [&](const QString& title, const std::function<void(int)>&) { return activate(title, desktop.wait); };
    PasteOutcome outcome = PasteOutcome::NoPicture;
    for (auto _ : state) {
        paused = 0;
        QElapsedTimer timer;
        timer.start();
        outcome = PasteToPictaro(picture, desktop);
        state.SetIterationTime(static_cast<double>(timer.nsecsElapsed() / 1e6 - paused) / 1000.0);
    }
    state.counters["key_sent"] = outcome == PasteOutcome::KeySent;
}

}  // namespace

BENCHMARK(BM_SaveJPG)->Args({640, 480})->Args({1920, 1080})->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Cjpeg)->Args({640, 480})->Args({1920, 1080})->UseManualTime()->Iterations(40)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PasteBeyondPauses)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
