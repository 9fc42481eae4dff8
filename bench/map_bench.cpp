// The map window against the bare minimum: the world map from the menu click to painted beside
// the same picture decoded and shown in a plain QLabel; a replot from the map window's menu.
#include "app/modulevalues.h"
#include "maps/form9.h"

#include <QApplication>
#include <QImageReader>
#include <QLabel>
#include <QTemporaryDir>
#include <QtTest>
#include <benchmark/benchmark.h>

namespace {

const QString kMaps = QStringLiteral(PX_DEFAULT_DATA "/Maps");

// Until the window has been shown and its paint events handled.
void painted(QWidget* w) {
    if (!QTest::qWaitForWindowExposed(w)) std::abort();
    QCoreApplication::processEvents();
}

void BM_WorldMapInPlainLabel(benchmark::State& state) {
    for (auto _ : state) {
        QLabel label;
        QImageReader reader(kMaps + "/World Map.jpg");
        label.setPixmap(QPixmap::fromImage(reader.read()));
        label.show();
        painted(&label);
    }
}
BENCHMARK(BM_WorldMapInPlainLabel)->Unit(benchmark::kMillisecond)->Iterations(5);

ModuleValues values() {
    ModuleValues g;
    g.DataPath = QStringLiteral(PX_DEFAULT_DATA);
    g.MyLat = 52.1, g.MyLon = 5.1, g.OtherLat = -33.87, g.OtherLon = 151.21, g.DistUnit = 0;
    return g;
}

void BM_WorldMapWindowFromMenu(benchmark::State& state) {
    ModuleValues g = values();
    g.OtherLat = -60, g.OtherLon = 0;  // the world map's
    const QStringList lstMap = QDir(kMaps).entryList(QDir::Files);
    for (auto _ : state) {
        Form9* window = nullptr;
        ShowMap(window, g, lstMap, "VK2ABC", nullptr, [](const QString&) {});
        painted(window);
        state.PauseTiming();
        delete window;
        state.ResumeTiming();
    }
}
BENCHMARK(BM_WorldMapWindowFromMenu)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_ReplotFromMapMenu(benchmark::State& state) {
    ModuleValues g = values();
    const QStringList lstMap = QDir(kMaps).entryList(QDir::Files);
    Form9* window = nullptr;
    ShowMap(window, g, lstMap, "VK2ABC", nullptr, [](const QString&) {});
    painted(window);
    const int europe = static_cast<int>(lstMap.indexOf("Europe Map.jpg"));
    const int australia = static_cast<int>(lstMap.indexOf("Australia Map.jpg"));
    bool flip = false;
    for (auto _ : state) {
        window->lblMaps_Click((flip = !flip) ? europe : australia);
        QCoreApplication::processEvents();
    }
    delete window;
}
BENCHMARK(BM_ReplotFromMapMenu)->Unit(benchmark::kMillisecond)->Iterations(6);

}  // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
