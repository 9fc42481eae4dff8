// The main window's lookups, timed: F8 to the labels filled for a call in a call-sign file of
// 1,000,000 records, and a web lookup against the local call-book stand-in, from the request to
// the record kept, beside a bare download of the same page (the server's own time).
#include "app/form1.h"
#include "app/settings.h"
#include "db/calldatabase.h"
#include "lookup/uclookup.h"
#include "lookup/callbookserver.h"

#include <QComboBox>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QLabel>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTemporaryDir>
#include <QElapsedTimer>
#include <benchmark/benchmark.h>

#include <random>

namespace {

constexpr int kRecords = 1000000;

// A data folder, settings and Pictaro folder in a temporary directory, and a loaded main window.
struct Setup {
    QTemporaryDir root;
    QString data;
    std::unique_ptr<CallbookServer> server;
    ModuleValues values;
    std::unique_ptr<Form1> form;
    QStringList calls;

    Setup() {
        qputenv("XDG_CONFIG_HOME", (root.path() + "/config").toLocal8Bit());
        qputenv("XDG_DATA_HOME", (root.path() + "/data").toLocal8Bit());
        data = root.path() + "/data/Norvane";
        for (const char* dir : {"/Maps", "/images/qrzImages", "/Languages"}) QDir().mkpath(data + dir);
        QFile::copy(PX_SOURCE_DIR "/data/Languages/Norvane_English.Language", data + "/Languages/Norvane_English.Language");
        write(data + "/nicknames.txt", "G4ABC*Ally\r\n");
        QDir().mkpath(root.path() + "/Pictaro");
        write(root.path() + "/Pictaro/Pictaro.exe", "stand-in");
        write(root.path() + "/Pictaro/app.cfg", "PA3XYZ\r\n" + QByteArray("0\r\n").repeated(59));
        writeCallFile();
        server = std::make_unique<CallbookServer>();
        settings::SaveSetting(settings::kPictaroInstall, root.path() + "/Pictaro/");
        const char* services[] = {"eHam", "QRZ", "QRZCQ", "Callook", "HamCall"};
        const char* prefixes[] = {"/eham", "/qrz", "/qrzcq", "/callook", "/hamcall"};
        for (int i = 0; i < 5; ++i) settings::SaveSetting({"Hosts", services[i]}, server->url(prefixes[i]));
        settings::SaveSetting({"Hosts", "Pictures"}, server->url("/pictures"));
        form = std::make_unique<Form1>(values);
        form->showFailure = [](const QString& text, const QString&) { qFatal("%s", qPrintable(text)); };
        if (!form->Form_Load()) qFatal("the main window did not load");
        form->show();
        QEventLoop().processEvents(QEventLoop::AllEvents, 500);
    }

    // A second data folder whose call file holds the first n records of the big one.
    QString smallData(int n) {
        const QString folder = root.path() + QStringLiteral("/small%1/Norvane").arg(n);
        if (!QDir().mkpath(folder + "/images/qrzImages")) qFatal("cannot make %s", qPrintable(folder));
        QFile big(data + "/Norvane-DB.db");
        if (!big.open(QIODevice::ReadOnly)) qFatal("no call file");
        write(folder + "/Norvane-DB.db", big.read(static_cast<qint64>(n) * CallRecord::kSize));
        return folder;
    }

    static void write(const QString& path, const QByteArray& bytes) {
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size()) qFatal("cannot write %s", qPrintable(path));
    }

    // Distinct calls "AA0AAA".."ZZ9ZZZ"-like, written in sorted order, every field filled.
    void writeCallFile() {
        QByteArray all;
        all.reserve(static_cast<qsizetype>(kRecords) * CallRecord::kSize);
        CallRecord r;
        for (int i = 0; i < kRecords; ++i) {
            QString call;
            int n = i;
            const char* letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
            call += QChar(letters[(n / (10 * 26 * 26 * 26)) % 26]);
            call += QChar(letters[(n / (10 * 26 * 26)) % 26]);
            call += QChar('0' + (n / (26 * 26)) % 10);
            call += QChar(letters[(n / 26) % 26]);
            call += QChar(letters[n % 26]);
            r.clear();
            r.setField(CallField::Call, call);
            r.setField(CallField::Name, "Operator " + call);
            r.setField(CallField::Add1, "1 Sample Street");
            r.setField(CallField::Add2, "Sample Town");
            r.setField(CallField::Ctry, "Sampleland");
            r.setField(CallField::Lat, QString::number(-60 + (i % 120)));
            r.setField(CallField::Lon, QString::number(-170 + (i % 340)));
            r.setField(CallField::Class, "Full");
            r.setField(CallField::YearBorn, "1970");
            all.append(r.bytes().data(), CallRecord::kSize);
            if (i % 997 == 0) calls << call;
        }
        write(data + "/Norvane-DB.db", all);
        CallDatabase db(data + "/Norvane-DB.db");
        if (!db.SortDatabase() || db.CountRecords() != kRecords) qFatal("bad call file");
    }
};

// Made by the first benchmark that needs it and dropped in main() while the application still
// exists: a window destroyed after QApplication crashes the program at exit.
std::unique_ptr<Setup> theSetup;

Setup& setup() {
    if (!theSetup) theSetup = std::make_unique<Setup>();
    return *theSetup;
}

void BM_F8KnownCall_1M(benchmark::State& state) {
    Setup& s = setup();
    std::mt19937 random(7);
    for (auto _ : state) {
        state.PauseTiming();
        const QString call = s.calls[static_cast<qsizetype>(random() % s.calls.size())];
        QGuiApplication::clipboard()->setText("de " + call.toLower());
        state.ResumeTiming();
        s.form->TakeCallFromClipboard();
        state.PauseTiming();
        if (!s.form->lblCall->text().startsWith(call + "  (")) {
            state.SkipWithError("wrong station shown");
            break;
        }
        state.ResumeTiming();
    }
}
BENCHMARK(BM_F8KnownCall_1M)->Unit(benchmark::kMillisecond)->MinTime(1.0);

// A bare download of the page: what the server and HTTP take on their own.
void BM_WebPage_ServerOnly(benchmark::State& state) {
    Setup& s = setup();
    QNetworkAccessManager nam;
    const QUrl url(s.server->url("/qrz/db/DL1ABC"));
    for (auto _ : state) {
        QNetworkReply* reply = nam.get(QNetworkRequest(url));
        QEventLoop loop;
        QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        loop.exec();
        benchmark::DoNotOptimize(reply->readAll());
        reply->deleteLater();
    }
}
BENCHMARK(BM_WebPage_ServerOnly)->Unit(benchmark::kMillisecond)->MinTime(1.0);

// The whole web lookup of the main window: request, page, fields, distance, the record kept (an
// update in place after the first round), up to the end of the window's page handler. The call
// file holds state.range(0) records.
void BM_WebLookup(benchmark::State& state) {
    Setup& s = setup();
    const QString full = s.values.DataPath;
    if (state.range(0) != kRecords) s.values.DataPath = s.smallData(static_cast<int>(state.range(0)));
    int pictures = 0;
    auto counted = QObject::connect(s.form->lookUp, &ucLookUp::PictureReady, [&pictures] { ++pictures; });
    for (auto _ : state) {
        QEventLoop loop;
        // Queued: runs once the window's own handler has kept the record.
        auto done = QObject::connect(s.form->lookUp, &ucLookUp::GotPage, &loop, &QEventLoop::quit, Qt::QueuedConnection);
        pictures = 0;
        // Through the window, which only takes the answer to the page it asked for.
        s.form->cboDB->setCurrentIndex(1);  // QRZ
        s.values.CurrentCall = QStringLiteral("DL1ABC");
        s.form->cmdUpdate_Click();
        loop.exec();
        QObject::disconnect(done);
        state.PauseTiming();
        // Let the picture request that follows finish before the next round: a download still
        // running when the next request starts would be taken for that request's answer.
        QElapsedTimer waited;
        waited.start();
        while (pictures == 0 && waited.elapsed() < 5000) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        if (!s.form->lblName->text().startsWith("Hans")) {
            state.SkipWithError(qPrintable("the station was not shown: " + s.form->lblCall->text()));
            break;
        }
        state.ResumeTiming();
    }
    QObject::disconnect(counted);
    s.values.DataPath = full;
}
BENCHMARK(BM_WebLookup)->Arg(10000)->Arg(kRecords)->Unit(benchmark::kMillisecond)->MinTime(1.0);

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("DISPLAY")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    theSetup.reset();
    return 0;
}
