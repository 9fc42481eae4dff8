// The call-sign file editor on big files: opening it (list filled, window shown and drawn), adding
// a new call (append + sort + refill + select + scroll), updating one in place, deleting one, and
// the search that runs on every key typed into the call box, on 100,000 and 1,000,000 records.
#include "db/calldatabase.h"
#include "db/form26.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <map>
#include <memory>

namespace {

constexpr int kBig = 1000000;

// The n-th call of an ascending run: letter, letter, digit, letter, letter ("AA0AA", "AA0AB", ...).
QString callNumber(int n) {
    const char* letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    QString call;
    call += QChar(letters[(n / (10 * 26 * 26 * 26)) % 26]);
    call += QChar(letters[(n / (10 * 26 * 26)) % 26]);
    call += QChar('0' + (n / (26 * 26)) % 10);
    call += QChar(letters[(n / 26) % 26]);
    call += QChar(letters[n % 26]);
    return call;
}

long residentKiB() {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:")) return line.mid(6).trimmed().split(' ').value(0).toLong();
    return 0;
}

// A data folder per size, each with a sorted call-sign file of that many records, every field
// filled; the records' bytes are kept to put the file back between rounds.
struct Setup {
    QTemporaryDir root;
    std::map<int, QString> folders;
    std::map<int, QByteArray> files;
    QStringList nicknames{QStringLiteral("G4ABC*Ally")};

    Setup() {
        qputenv("XDG_CONFIG_HOME", (root.path() + "/config").toLocal8Bit());
        qputenv("XDG_DATA_HOME", (root.path() + "/data").toLocal8Bit());
        QByteArray all;
        all.reserve(static_cast<qsizetype>(kBig) * CallRecord::kSize);
        CallRecord r;
        for (int i = 0; i < kBig; ++i) {
            const QString call = callNumber(i);
            r.clear();
            r.setField(CallField::Call, call);
            r.setField(CallField::Name, "Operator " + call);
            r.setField(CallField::Add1, QStringLiteral("1 Sample Street"));
            r.setField(CallField::Add2, QStringLiteral("Sample Town"));
            r.setField(CallField::Ctry, QStringLiteral("Sampleland"));
            r.setField(CallField::Lat, QString::number(-60 + (i % 120)));
            r.setField(CallField::Lon, QString::number(-170 + (i % 340)));
            r.setField(CallField::Class, QStringLiteral("Full"));
            r.setField(CallField::YearBorn, QStringLiteral("1970"));
            all.append(r.bytes().data(), CallRecord::kSize);
        }
        for (int n : {100000, kBig}) {
            const QString folder = root.path() + QStringLiteral("/n%1/Norvane").arg(n);
            QDir().mkpath(folder + "/images/qrzImages");
            folders[n] = folder;
            files[n] = all.left(static_cast<qsizetype>(n) * CallRecord::kSize);
            restore(n);
            CallDatabase db(folder + "/Norvane-DB.db");
            if (db.CountRecords() != n) qFatal("bad call file");
        }
    }

    void restore(int n) {
        QFile f(folders[n] + "/Norvane-DB.db");
        if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(files[n]) != files[n].size())
            qFatal("cannot write the call file");
    }

    ModuleValues values(int n) {
        ModuleValues g;
        g.DataPath = folders[n];
        g.ServiceNo = 1;
        g.Texts.EditorEntries = QStringLiteral("Number of callsigns in database = xxx");
        g.Texts.EditorAdd = QStringLiteral("Add ??? to the database");
        g.Texts.EditorLookup = QStringLiteral("Look up ??? on ***");
        g.Texts.EditorDelete = QStringLiteral("Delete ???");
        return g;
    }
};

Setup& setup() {
    static Setup s;
    return s;
}

void drawn(QWidget& w) {
    QApplication::processEvents(QEventLoop::AllEvents);
    w.repaint();
}

// From nothing to the editor on screen with the whole list: construction, loading, the first paint.
void BM_OpenEditor(benchmark::State& state) {
    Setup& s = setup();
    const int n = static_cast<int>(state.range(0));
    ModuleValues g = s.values(n);
    long rss = 0;
    for (auto _ : state) {
        auto form = std::make_unique<Form26>(g, s.nicknames);
        form->Form_Load();
        form->show();
        drawn(*form);
        state.PauseTiming();
        if (form->calls->rowCount() != n) {
            state.SkipWithError("wrong list");
            break;
        }
        rss = std::max(rss, residentKiB());
        form.reset();
        QApplication::processEvents();
        state.ResumeTiming();
    }
    state.counters["peak_rss_MiB"] = static_cast<double>(rss) / 1024.0;
}
BENCHMARK(BM_OpenEditor)->Arg(100000)->Arg(kBig)->Unit(benchmark::kMillisecond)->Iterations(5);

// The call-sign file's own part of opening: the list of calls read from the file.
void BM_FillCallList(benchmark::State& state) {
    Setup& s = setup();
    const int n = static_cast<int>(state.range(0));
    CallDatabase db(s.folders[n] + "/Norvane-DB.db");
    for (auto _ : state) {
        QStringList list;
        db.FillCallList(list);
        benchmark::DoNotOptimize(list);
    }
}
BENCHMARK(BM_FillCallList)->Arg(100000)->Arg(kBig)->Unit(benchmark::kMillisecond)->Iterations(5);

struct OpenForm {
    ModuleValues g;
    std::unique_ptr<Form26> form;
    OpenForm(Setup& s, int n) : g(s.values(n)) {
        form = std::make_unique<Form26>(g, s.nicknames);
        form->Form_Load();
        form->show();
        drawn(*form);
    }
};

// A new call in the middle of the file: append + sort in one write, the list filled again, the
// call selected and scrolled to. The file is put back between rounds.
void BM_AddNewCall(benchmark::State& state) {
    Setup& s = setup();
    const int n = static_cast<int>(state.range(0));
    OpenForm open(s, n);
    Form26& f = *open.form;
    const QString call = callNumber(n / 2) + QStringLiteral("A");  // sorts right after the middle one
    for (auto _ : state) {
        state.PauseTiming();
        s.restore(n);
        f.txtCall->setText(call);
        f.txtName->setText(QStringLiteral("New Operator"));
        state.ResumeTiming();
        f.cmdAddNewSite_Click();
        drawn(f);
        state.PauseTiming();
        if (f.calls->rowCount() != n + 1 || f.listIndex() != n / 2 + 1 || f.topIndex() != n / 2 + 1 - 14) {
            state.SkipWithError("the new call is not shown as it should be");
            break;
        }
        state.ResumeTiming();
    }
    s.restore(n);
}
BENCHMARK(BM_AddNewCall)->Arg(100000)->Arg(kBig)->Unit(benchmark::kMillisecond)->Iterations(5);

// A known call added again: the record rewritten in place, nothing else.
void BM_UpdateInPlace(benchmark::State& state) {
    Setup& s = setup();
    const int n = static_cast<int>(state.range(0));
    OpenForm open(s, n);
    Form26& f = *open.form;
    f.txtCall->setText(callNumber(n / 3));
    f.txtName->setText(QStringLiteral("Changed Name"));
    for (auto _ : state) {
        f.cmdAddNewSite_Click();
    }
    if (f.calls->rowCount() != n) state.SkipWithError("the list changed");
    s.restore(n);
}
BENCHMARK(BM_UpdateInPlace)->Arg(100000)->Arg(kBig)->Unit(benchmark::kMillisecond)->Iterations(5);

// Deleting a call: the file rewritten without it, the list filled again, the top row kept.
void BM_DeleteCall(benchmark::State& state) {
    Setup& s = setup();
    const int n = static_cast<int>(state.range(0));
    OpenForm open(s, n);
    Form26& f = *open.form;
    for (auto _ : state) {
        state.PauseTiming();
        s.restore(n);
        f.setTopIndex(n / 2 - 5);
        f.txtCall->setText(callNumber(n / 2));
        state.ResumeTiming();
        f.cmdDeleteSite_Click();
        drawn(f);
        state.PauseTiming();
        if (f.calls->rowCount() != n - 1 || f.topIndex() != n / 2 - 5) {
            state.SkipWithError("wrong list after the delete");
            break;
        }
        state.ResumeTiming();
    }
    s.restore(n);
}
BENCHMARK(BM_DeleteCall)->Arg(100000)->Arg(kBig)->Unit(benchmark::kMillisecond)->Iterations(5);

// One key typed into the call box: the search of the whole list for the call, the nickname search,
// the captions. The calls are the last two of the list, the search's longest way.
void BM_TypeOneKey(benchmark::State& state) {
    Setup& s = setup();
    const int n = static_cast<int>(state.range(0));
    OpenForm open(s, n);
    Form26& f = *open.form;
    const QString calls[2] = {callNumber(n - 2), callNumber(n - 1)};
    int k = 0;
    for (auto _ : state) {
        k ^= 1;
        f.txtCall->setText(calls[k]);
        if (f.listIndex() != n - 2 + k) {
            state.SkipWithError("not found");
            break;
        }
    }
}
BENCHMARK(BM_TypeOneKey)->Arg(100000)->Arg(kBig)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("DISPLAY")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
