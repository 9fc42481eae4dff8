// Timings of a long call-book page (tests/fixtures/pages/qrz/long.html, about 200 KB) made into
// text, three ways in the same run:
//   ours           pageToText (bytes decoded by their charset, then HTMLDecode) and every field of
//                  CallbookFields read for service 2, as the lookup control does with a page;
//   qtextdocument  decodePageBytes, then QTextDocument::setHtml and toPlainText (offscreen
//                  platform), no fields read;
//   webengine      Qt WebEngine loading the decoded page (as UTF-8) and reading
//                  document.body.innerText. Measured in a child process, the webengine_innertext
//                  tool with --repeat: one engine start, one warm-up load, then the mean of
//                  kWebEngineLoads loads; the engine start is not timed.
// ours and qtextdocument are run kRepetitions times (the table shows mean, median, spread); the
// summary after the table gives the three times per page (the medians, and WebEngine's mean) and
// how many times faster ours is than each of the others.
//
// The results of ours are checked against the page's known fields before timing, and the text of
// QTextDocument for the station's name, so that a broken path cannot pass for a fast one.
#include "lookup/callbookfields.h"
#include "lookup/htmldecode.h"
#include "lookup/pagecharset.h"

#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextDocument>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

#define PX_PAGE "tests/fixtures/pages/qrz/long.html"
constexpr const char* kPageName = PX_PAGE;
constexpr const char* kPage = PX_SOURCE_DIR "/" PX_PAGE;
constexpr int kWebEngineLoads = 20;
constexpr int kRepetitions = 5;

QByteArray pageBytes() {
    static const QByteArray bytes = [] {
        QFile f(QString::fromUtf8(kPage));
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }();
    return bytes;
}

struct Fields {
    QString name, add1, add2, country, licenceClass, previousCall, born, grid, web;
    double latitude = 0, longitude = 0;
};

Fields readFields(QByteArrayView bytes) {
    lookup::CallbookFields f;
    f.Database = 2;
    f.PageText = lookup::pageToText(bytes);
    Fields r;
    r.name = f.cName(QStringLiteral("LU1ABC"));
    r.add1 = f.Add1();
    r.add2 = f.Add2();
    r.country = f.ctry();
    r.latitude = f.Latitude();
    r.longitude = f.Longitude();
    r.licenceClass = f.Class();
    r.previousCall = f.PrevCall();
    r.born = f.DateOfBirth();
    r.grid = f.Grid();
    r.web = f.WebAddress();
    return r;
}

bool fieldsAreRight(const Fields& r) {
    return r.name == QStringLiteral("Ana Gómez") && r.add1 == QStringLiteral("Avenida de Mayo 1370") &&
           r.add2 == QStringLiteral("C1085ABE Buenos Aires") && r.country == QStringLiteral("Argentina") &&
           r.latitude == -34.6037 && r.longitude == -58.3816 && r.licenceClass == QStringLiteral("\tGeneral") &&
           r.previousCall.isEmpty() && r.born == QStringLiteral("\t1975") && r.grid == QStringLiteral("\tGF05tj") &&
           r.web == QStringLiteral("\thttp://lu1abc.example.ar/");
}

void setPageCounters(benchmark::State& state, qsizetype bytes) {
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * bytes);
    state.counters["page_KB"] = static_cast<double>(bytes) / 1024.0;
}

void ours(benchmark::State& state) {
    const QByteArray bytes = pageBytes();
    if (bytes.isEmpty()) return state.SkipWithError("cannot read the page");
    if (!fieldsAreRight(readFields(bytes))) return state.SkipWithError("the fields of the page are wrong");
    for (auto _ : state) {
        Fields r = readFields(bytes);
        benchmark::DoNotOptimize(r);
    }
    setPageCounters(state, bytes.size());
}

void qtextdocument(benchmark::State& state) {
    const QByteArray bytes = pageBytes();
    if (bytes.isEmpty()) return state.SkipWithError("cannot read the page");
    {
        QTextDocument doc;
        doc.setHtml(lookup::decodePageBytes(bytes));
        if (!doc.toPlainText().contains(QStringLiteral("Ana Gómez")))
            return state.SkipWithError("QTextDocument's text lacks the station's name");
    }
    for (auto _ : state) {
        QTextDocument doc;
        doc.setHtml(lookup::decodePageBytes(bytes));
        QString text = doc.toPlainText();
        benchmark::DoNotOptimize(text);
    }
    setPageCounters(state, bytes.size());
}

void webengine(benchmark::State& state) {
#ifdef PX_WEBENGINE_TOOL
    const QByteArray bytes = pageBytes();
    if (bytes.isEmpty()) return state.SkipWithError("cannot read the page");
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("long.html"));
    QFile f(file);
    if (!dir.isValid() || !f.open(QIODevice::WriteOnly) || f.write(lookup::decodePageBytes(bytes).toUtf8()) < 0)
        return state.SkipWithError("cannot write the decoded page");
    f.close();
    QProcess tool;
    tool.start(QStringLiteral(PX_WEBENGINE_TOOL), {QStringLiteral("--repeat"), QString::number(kWebEngineLoads), file});
    const bool ran = tool.waitForFinished(600000) && tool.exitStatus() == QProcess::NormalExit && tool.exitCode() == 0;
    // Output: "FILE MILLISECONDS" (milliseconds per load and read, the mean of kWebEngineLoads).
    const QList<QByteArray> fields = tool.readAllStandardOutput().trimmed().split(' ');
    bool number = false;
    const double ms = fields.size() == 2 ? fields[1].toDouble(&number) : 0.0;
    if (!ran || !number) {
        const std::string error = "webengine_innertext failed: " + tool.readAllStandardError().right(400).toStdString();
        return state.SkipWithError(error.c_str());
    }
    for (auto _ : state) state.SetIterationTime(ms / 1000.0);
    setPageCounters(state, bytes.size());
    state.counters["loads"] = kWebEngineLoads;
#else
    state.SkipWithError("built without Qt WebEngine (no webengine_innertext)");
#endif
}

// The console table, and the real time per page of each benchmark in milliseconds: the median of
// its repetitions, or its one run.
class SummaryReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) continue;
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if (!median && (run.run_type != Run::RT_Iteration || run.repetitions > 1)) continue;
            const double perUnit = benchmark::GetTimeUnitMultiplier(run.time_unit);  // units per second
            ms[run.run_name.function_name] = run.GetAdjustedRealTime() / perUnit * 1000.0;
        }
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> ms;
};

double lookupMs(const SummaryReporter& r, const char* name) {
    const auto it = r.ms.find(name);
    return it == r.ms.end() ? 0.0 : it->second;
}

}  // namespace

int main(int argc, char** argv) {
    // QTextDocument needs a QGuiApplication; nothing is shown.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    for (const auto& [name, fn] : {std::pair{"BM_LongPage/ours", &ours}, std::pair{"BM_LongPage/qtextdocument", &qtextdocument}})
        benchmark::RegisterBenchmark(name, fn)
            ->Unit(benchmark::kMillisecond)
            ->MinTime(1.0)
            ->Repetitions(kRepetitions)
            ->DisplayAggregatesOnly(true);
    benchmark::RegisterBenchmark("BM_LongPage/webengine", webengine)
        ->Unit(benchmark::kMillisecond)
        ->UseManualTime()
        ->Iterations(1);
    benchmark::AddCustomContext("page", std::string(kPage) + " (" + std::to_string(pageBytes().size()) + " bytes)");
    benchmark::AddCustomContext("webengine", std::string("child process webengine_innertext --repeat ") +
                                                 std::to_string(kWebEngineLoads) +
                                                 ", offscreen platform, engine start not timed");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    SummaryReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    const double o = lookupMs(reporter, "BM_LongPage/ours");
    const double q = lookupMs(reporter, "BM_LongPage/qtextdocument");
    const double w = lookupMs(reporter, "BM_LongPage/webengine");
    auto figure = [](double v) {
        char text[32] = "not measured";
        if (v > 0) std::snprintf(text, sizeof text, "%.3f ms", v);
        return std::string(text);
    };
    std::printf("\nPer page (%s): ours %s, QTextDocument %s, WebEngine %s\n", kPageName, figure(o).c_str(),
                figure(q).c_str(), figure(w).c_str());
    if (o > 0 && q > 0) std::printf("ours vs QTextDocument: %.1fx faster (goal: at least 5x)\n", q / o);
    if (o > 0 && w > 0) std::printf("ours vs WebEngine:     %.1fx faster (goal: at least 20x)\n", w / o);
    return 0;
}
