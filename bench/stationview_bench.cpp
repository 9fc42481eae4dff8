// The station view as the maps menu opens it, in a program that, like ours, does not link the
// browser engine: from the menu's call to the page on the screen (the first opening loads the
// plugin and starts the engine; later ones reuse them), and CaptureView on an 800 x 600 page,
// beside grabbing a plain widget of that size. The page is the local stand-in's four coloured
// blocks; "on the screen" means the window's picture shows all four.
#include "app/settings.h"
#include "lookup/callbookserver.h"
#include "pictures/stationviewapi.h"
#include "pictures/stationviewhost.h"
#include "ui/language.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QTemporaryDir>
#include <QTimer>
#include <QWidget>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>

namespace {

constexpr QSize kPage(800, 600);

CallbookServer* g_server = nullptr;

// Whether the window's picture shows the four blocks under the menu bar.
bool BlocksShown(QWidget* window) {
    const QImage whole = window->grab().toImage();
    const int top = kStationViewMenuBarHeight;
    if (whole.width() < kPage.width() || whole.height() < top + kPage.height()) return false;
    const int r = kPage.width() - 2, b = top + kPage.height() - 2;
    return whole.pixel(1, top + 1) == qRgb(255, 0, 0) && whole.pixel(r, top + 1) == qRgb(0, 255, 0) &&
           whole.pixel(1, b) == qRgb(0, 0, 255) && whole.pixel(r, b) == qRgb(255, 255, 0);
}

// Opens the view as the menu does and returns once the blocks are on the screen (or the page
// failed: then the view is null).
StationView* OpenAndWaitForBlocks() {
    LanguageTexts texts;
    texts.StViewCopy = QStringLiteral("Copy image");
    bool failed = false;
    StationViewActions actions;
    actions.pageDone = [&failed](bool shown) { failed = !shown; };
    StationView* view =
        OpenStationView(nullptr, texts, g_server->url(QStringLiteral("/blocks")) + QStringLiteral("*G4ABC"), nullptr, actions);
    if (!view) return nullptr;
    QElapsedTimer limit;
    limit.start();
    while (!failed && limit.elapsed() < 30000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 2);
        if (view->window()->isVisible() && BlocksShown(view->window())) return view;
    }
    delete view->window();
    return nullptr;
}

void OpenToPageShown(benchmark::State& state) {
    for (auto _ : state) {
        StationView* view = OpenAndWaitForBlocks();
        if (!view) {
            state.SkipWithError("the page was not shown");
            return;
        }
        state.PauseTiming();
        delete view->window();
        QCoreApplication::processEvents();
        state.ResumeTiming();
    }
}

// The first opening: the plugin's loading and the engine's start-up are part of it.
void BM_OpenToPageShown_First(benchmark::State& state) { OpenToPageShown(state); }
BENCHMARK(BM_OpenToPageShown_First)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_OpenToPageShown_Again(benchmark::State& state) { OpenToPageShown(state); }
BENCHMARK(BM_OpenToPageShown_Again)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_CaptureView(benchmark::State& state) {
    StationView* view = OpenAndWaitForBlocks();
    if (!view) {
        state.SkipWithError("the page was not shown");
        return;
    }
    for (auto _ : state) {
        const QImage picture = view->CaptureView();
        if (picture.size() != kPage) state.SkipWithError("the capture is not the page's size");
    }
    delete view->window();
}
BENCHMARK(BM_CaptureView)->Unit(benchmark::kMillisecond)->Iterations(20);

// The floor: grabbing a plain widget of the page's size.
void BM_PlainWidgetGrab(benchmark::State& state) {
    QWidget plain;
    plain.resize(kPage);
    plain.show();
    QCoreApplication::processEvents();
    for (auto _ : state) benchmark::DoNotOptimize(plain.grab().toImage());
}
BENCHMARK(BM_PlainWidgetGrab)->Unit(benchmark::kMillisecond)->Iterations(20);

}  // namespace

int main(int argc, char** argv) {
    // The window's place and size are kept in the settings: a private settings folder.
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("PX_STATIONVIEW_PLUGIN")) qputenv("PX_STATIONVIEW_PLUGIN", PX_PLUGIN_FILE);
    QApplication app(argc, argv);
    CallbookServer server;
    if (server.port() == 0) {
        std::fprintf(stderr, "the call-book stand-in did not start\n");
        return 1;
    }
    g_server = &server;
    // The window opens at its kept size: the page under the menu bar.
    settings::SaveSetting(settings::kStViewLeft, QStringLiteral("0"));
    settings::SaveSetting(settings::kStViewWidth, QString::number(kPage.width()));
    settings::SaveSetting(settings::kStViewHeight, QString::number(kPage.height() + kStationViewMenuBarHeight));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
