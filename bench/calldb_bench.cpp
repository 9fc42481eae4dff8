// Timings of the call-sign file's operations at 10k, 100k and 1M records, each beside SQLite doing
// the same work on the same records in the same run.
//
// The records are made up once per size in a temporary folder: distinct call signs of the usual
// shape (prefix letters, a digit, suffix letters) with all nine fields filled, written in the
// file's own order and checked with CallDatabase::SortDatabase. The SQLite database holds the same
// records in a table of the nine fields with an index on call; it keeps its connection open, uses
// the default rollback journal (journal_mode=DELETE) with synchronous=NORMAL, and its statements
// are prepared once, as a desktop program would have them.
//
// Every benchmark leaves its data as it found it (restoring outside the timing), and checks so
// after its loop: the call-sign file byte for byte, the SQLite table by its row count.
#include "db/calldatabase.h"

#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <unordered_set>
#include <vector>

namespace {

constexpr int kRec = CallRecord::kSize;
constexpr int kExtras = 512;  // calls kept out of the file, for appending
using Fields = std::array<std::string, CallRecord::kFieldCount>;

[[noreturn]] void die(const std::string& message) {
    std::fprintf(stderr, "calldb_bench: %s\n", message.c_str());
    std::exit(1);
}

// ---- Made-up records ------------------------------------------------------------------------

constexpr const char* kPrefixes[] = {"K",  "W",  "N",  "G",  "M",  "F",  "I",  "AA", "AB", "AC", "AD", "AE",
                                     "AF", "AG", "AI", "AK", "KA", "KB", "KC", "KD", "KE", "KF", "KG", "KI",
                                     "KJ", "KK", "NA", "NB", "NC", "ND", "WA", "WB", "WD", "WE", "VE", "VA",
                                     "VK", "ZL", "JA", "JH", "DL", "DK", "DJ", "PA", "ON", "OH", "SM", "LA",
                                     "OZ", "EA", "CT", "PY", "LU", "ZS", "EI", "GM", "GW", "HB", "OE", "SP"};
constexpr const char* kFirstNames[] = {"James", "Mary", "Robert", "Patricia", "John", "Jennifer", "Michael",
                                       "Linda", "William", "Elizabeth", "David", "Barbara", "Richard", "Susan",
                                       "Joseph", "Jessica", "Thomas", "Sarah", "Charles", "Karen", "Hans",
                                       "Ingrid", "Pierre", "Sofia", "Kenji", "Aiko", "Lars", "Marta"};
constexpr const char* kLastNames[] = {"Smith", "Johnson", "Williams", "Brown", "Jones", "Garcia", "Miller",
                                      "Davis", "Rodriguez", "Martinez", "Hernandez", "Lopez", "Wilson",
                                      "Anderson", "Taylor", "Thomas", "Moore", "Jackson", "Martin", "Lee",
                                      "Schmidt", "Dubois", "Rossi", "Tanaka", "Nielsen", "Kowalski"};
constexpr const char* kStreets[] = {"Main", "Oak", "Pine", "Maple", "Cedar", "Elm", "Washington", "Lake",
                                    "Hill", "Park", "Sunset", "Ridge", "Church", "Mill", "River", "Spring"};
constexpr const char* kStreetKinds[] = {"St", "Ave", "Rd", "Dr", "Ln", "Ct", "Way", "Blvd"};
constexpr const char* kCities[] = {"Springfield", "Riverside", "Fairview", "Madison", "Georgetown", "Salem",
                                   "Franklin", "Clinton", "Arlington", "Ashland", "Dover", "Milton",
                                   "Newport", "Oxford", "Bristol", "Burlington"};
constexpr const char* kRegions[] = {"CA", "TX", "NY", "FL", "OH", "PA", "IL", "WA", "ON", "BC", "NSW", "QLD"};
constexpr const char* kCountries[] = {"United States", "Canada", "Germany", "Japan", "Australia", "England",
                                      "France", "Italy", "Netherlands", "Sweden", "Brazil", "Argentina",
                                      "South Africa", "New Zealand", "Spain", "Poland"};
constexpr const char* kClasses[] = {"Extra", "General", "Technician", "Advanced", "Novice", "Amateur"};

template <size_t N>
const char* pick(std::mt19937_64& rng, const char* const (&list)[N]) {
    return list[rng() % N];
}

std::string makeCall(std::mt19937_64& rng) {
    std::string call = pick(rng, kPrefixes);
    call += static_cast<char>('0' + rng() % 10);
    const int suffix = 1 + static_cast<int>(rng() % 8 < 5 ? 2 : rng() % 2);  // mostly three letters
    for (int i = 0; i < suffix; ++i) call += static_cast<char>('A' + rng() % 26);
    return call;
}

Fields makeFields(std::mt19937_64& rng, const std::string& call) {
    char buffer[64];
    Fields f;
    f[0] = call;
    f[1] = std::string(pick(rng, kFirstNames)) + ' ' + pick(rng, kLastNames);
    std::snprintf(buffer, sizeof buffer, "%u %s %s", static_cast<unsigned>(1 + rng() % 9999), pick(rng, kStreets),
                  pick(rng, kStreetKinds));
    f[2] = buffer;
    std::snprintf(buffer, sizeof buffer, "%s, %s %05u", pick(rng, kCities), pick(rng, kRegions),
                  static_cast<unsigned>(rng() % 100000));
    f[3] = buffer;
    f[4] = pick(rng, kCountries);
    std::snprintf(buffer, sizeof buffer, "%.4f", -60.0 + static_cast<double>(rng() % 1300000) / 10000.0);
    f[5] = buffer;
    std::snprintf(buffer, sizeof buffer, "%.4f", -180.0 + static_cast<double>(rng() % 3600000) / 10000.0);
    f[6] = buffer;
    f[7] = pick(rng, kClasses);
    f[8] = std::to_string(1930 + rng() % 79);
    return f;
}

// The 167 bytes of a record: every field padded with blanks (the made-up text is plain ASCII and
// always fits its field).
std::string recordBytes(const Fields& f) {
    std::string rec(kRec, ' ');
    for (int i = 0; i < CallRecord::kFieldCount; ++i) {
        const auto [offset, width] = CallRecord::kLayout[i];
        if (static_cast<int>(f[i].size()) > width) die("field too long: " + f[i]);
        rec.replace(offset, f[i].size(), f[i]);
    }
    return rec;
}

Fields fieldsOf(const char* rec) {
    Fields f;
    for (int i = 0; i < CallRecord::kFieldCount; ++i) {
        const auto [offset, width] = CallRecord::kLayout[i];
        std::string text(rec + offset, width);
        text.erase(text.find_last_not_of(' ') + 1);
        f[i] = text;
    }
    return f;
}

std::string readAll(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return "<unreadable>";
    const QByteArray bytes = file.readAll();
    return std::string(bytes.constData(), static_cast<size_t>(bytes.size()));
}

// ---- SQLite ---------------------------------------------------------------------------------

void exec(sqlite3* db, const char* sql) {
    char* error = nullptr;
    if (sqlite3_exec(db, sql, nullptr, nullptr, &error) != SQLITE_OK) {
        const std::string message = std::string(sql) + ": " + (error ? error : "?");
        sqlite3_free(error);
        die(message);
    }
}

class Stmt {
public:
    Stmt(sqlite3* db, const char* sql) {
        if (sqlite3_prepare_v3(db, sql, -1, SQLITE_PREPARE_PERSISTENT, &stmt_, nullptr) != SQLITE_OK)
            die(std::string(sql) + ": " + sqlite3_errmsg(db));
    }
    ~Stmt() { sqlite3_finalize(stmt_); }
    Stmt(const Stmt&) = delete;
    Stmt& operator=(const Stmt&) = delete;
    sqlite3_stmt* get() const { return stmt_; }
    void text(int column, const std::string& value) {
        sqlite3_bind_text(stmt_, column, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
    }
    void integer(int column, int64_t value) { sqlite3_bind_int64(stmt_, column, value); }
    int step() { return sqlite3_step(stmt_); }
    void reset() {
        sqlite3_reset(stmt_);
        sqlite3_clear_bindings(stmt_);
    }

private:
    sqlite3_stmt* stmt_ = nullptr;
};

constexpr const char* kInsertSql =
    "INSERT INTO calls(rowid, call, name, add1, add2, ctry, lat, lon, class, yearborn) "
    "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10)";

// Inserts one record; rowid 0 lets SQLite choose it.
bool insertRow(Stmt& insert, int64_t rowid, const Fields& f) {
    if (rowid > 0) insert.integer(1, rowid);
    for (int i = 0; i < CallRecord::kFieldCount; ++i) insert.text(i + 2, f[i]);
    const bool ok = insert.step() == SQLITE_DONE;
    insert.reset();
    return ok;
}

int64_t rowCount(sqlite3* db) {
    Stmt count(db, "SELECT count(*) FROM calls");
    return count.step() == SQLITE_ROW ? sqlite3_column_int64(count.get(), 0) : -1;
}

// ---- One data set per size ------------------------------------------------------------------

struct Dataset {
    explicit Dataset(int64_t size);
    ~Dataset() { sqlite3_close(db); }

    int64_t n;
    QTemporaryDir dir;
    QString filePath;
    std::string fileBytes;                // the file as written: records in call order
    std::vector<std::string> calls;       // calls[i] is record i + 1 and SQLite rowid i + 1
    std::vector<Fields> extraFields;      // calls in neither store
    std::vector<std::string> extraRecords;
    sqlite3* db = nullptr;
};

Dataset::Dataset(int64_t size) : n(size) {
    if (!dir.isValid()) die("no temporary folder");
    filePath = dir.path() + u'/' + QLatin1String(CallDatabase::kFileName);
    std::mt19937_64 rng(0x5eed0000u + static_cast<uint64_t>(size));

    std::unordered_set<std::string> seen;
    seen.reserve(static_cast<size_t>(size + kExtras) * 2);
    while (static_cast<int64_t>(calls.size()) < size) {
        std::string call = makeCall(rng);
        if (seen.insert(call).second) calls.push_back(std::move(call));
    }
    while (static_cast<int>(extraFields.size()) < kExtras) {
        std::string call = makeCall(rng);
        if (!seen.insert(call).second) continue;
        extraFields.push_back(makeFields(rng, call));
        extraRecords.push_back(recordBytes(extraFields.back()));
    }
    // Plain byte order of the trimmed calls, which for these characters is the file's own order.
    std::sort(calls.begin(), calls.end());

    if (sqlite3_open(QFile::encodeName(dir.path() + QStringLiteral("/calls.sqlite")).constData(), &db) != SQLITE_OK)
        die("cannot open the SQLite database");
    exec(db, "PRAGMA journal_mode=DELETE");
    exec(db, "PRAGMA synchronous=NORMAL");
    exec(db,
         "CREATE TABLE calls(call TEXT NOT NULL, name TEXT NOT NULL, add1 TEXT NOT NULL, add2 TEXT NOT NULL, "
         "ctry TEXT NOT NULL, lat TEXT NOT NULL, lon TEXT NOT NULL, class TEXT NOT NULL, yearborn TEXT NOT NULL)");
    exec(db, "BEGIN");
    {
        Stmt insert(db, kInsertSql);
        fileBytes.reserve(static_cast<size_t>(size * kRec));
        for (int64_t i = 0; i < size; ++i) {
            const Fields f = makeFields(rng, calls[static_cast<size_t>(i)]);
            fileBytes += recordBytes(f);
            if (!insertRow(insert, i + 1, f)) die(std::string("insert: ") + sqlite3_errmsg(db));
        }
    }
    exec(db, "COMMIT");
    exec(db, "CREATE INDEX calls_call ON calls(call)");
    exec(db, "ANALYZE");

    QFile file(filePath);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(fileBytes.data(), static_cast<qint64>(fileBytes.size())) != static_cast<qint64>(fileBytes.size()))
        die("cannot write " + filePath.toStdString());
    file.close();
    // The program's own sort must find nothing to move.
    CallDatabase check(filePath);
    if (!check.SortDatabase() || readAll(filePath) != fileBytes) die("the made-up file is not in the file's order");
}

Dataset& dataset(int64_t size) {
    static std::map<int64_t, std::unique_ptr<Dataset>> sets;
    auto& slot = sets[size];
    if (!slot) slot = std::make_unique<Dataset>(size);
    return *slot;
}

// Checks after a benchmark's loop that it left its data as it found it.
void checkOurs(benchmark::State& state, const Dataset& ds) {
    if (!state.error_occurred() && readAll(ds.filePath) != ds.fileBytes)
        state.SkipWithError("the call-sign file differs from the one the benchmark started with");
}
void checkSqlite(benchmark::State& state, const Dataset& ds) {
    if (!state.error_occurred() && rowCount(ds.db) != ds.n)
        state.SkipWithError("the SQLite table's row count changed");
}

// Random record indexes, the same sequence for both stores.
std::vector<size_t> randomIndexes(int64_t n, size_t count, uint64_t seed) {
    std::mt19937_64 rng(seed);
    std::vector<size_t> out(count);
    for (auto& i : out) i = static_cast<size_t>(rng() % static_cast<uint64_t>(n));
    return out;
}

// Reports an error from inside the loop; the timer must be running for that.
void failInLoop(benchmark::State& state, bool paused, const char* message) {
    if (paused) state.ResumeTiming();
    state.SkipWithError(message);
}

// ---- Find: a present call, a different one each iteration ----------------------------------

void findOurs(benchmark::State& state, int64_t n) {
    Dataset& ds = dataset(n);
    const auto picks = randomIndexes(n, 4096, 1);
    std::vector<QString> keys;
    for (size_t i : picks) keys.push_back(QString::fromStdString(ds.calls[i]));
    CallDatabase db(ds.filePath);
    size_t k = 0;
    for (auto _ : state) {
        const size_t i = k++ % keys.size();
        const int32_t found = db.FindCallRecord(keys[i]);
        if (found != static_cast<int32_t>(picks[i] + 1)) {
            failInLoop(state, false, "FindCallRecord missed a present call");
            break;
        }
        benchmark::DoNotOptimize(db.CurrentRecord);
    }
}

void findSqlite(benchmark::State& state, int64_t n) {
    Dataset& ds = dataset(n);
    const auto picks = randomIndexes(n, 4096, 1);
    Stmt select(ds.db, "SELECT rowid, call, name, add1, add2, ctry, lat, lon, class, yearborn FROM calls WHERE call = ?1");
    size_t k = 0;
    for (auto _ : state) {
        const size_t i = k++ % picks.size();
        select.text(1, ds.calls[picks[i]]);
        if (select.step() != SQLITE_ROW || sqlite3_column_int64(select.get(), 0) != static_cast<int64_t>(picks[i] + 1)) {
            select.reset();
            failInLoop(state, false, "SELECT missed a present call");
            break;
        }
        size_t length = 0;
        for (int c = 1; c <= CallRecord::kFieldCount; ++c) {
            const unsigned char* text = sqlite3_column_text(select.get(), c);
            length += text ? static_cast<size_t>(sqlite3_column_bytes(select.get(), c)) : 0;
        }
        benchmark::DoNotOptimize(length);
        select.reset();
    }
}

// ---- Append: one new call, then the file sorted again ---------------------------------------

void appendOurs(benchmark::State& state, int64_t n) {
    Dataset& ds = dataset(n);
    CallDatabase db(ds.filePath);
    size_t k = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const size_t e = k++ % ds.extraRecords.size();
        std::copy_n(ds.extraRecords[e].data(), kRec, db.CurrentRecord.bytes().begin());
        state.ResumeTiming();
        if (!db.AppendRecord() || !db.SortDatabase()) {
            failInLoop(state, false, "AppendRecord or SortDatabase failed");
            break;
        }
        state.PauseTiming();
        const bool restored = db.DeleteCallRecord(QString::fromStdString(ds.extraFields[e][0])).ok();
        if (!restored) {
            failInLoop(state, true, "DeleteCallRecord failed");
            break;
        }
        state.ResumeTiming();
    }
    checkOurs(state, ds);
}

void appendSqlite(benchmark::State& state, int64_t n) {
    Dataset& ds = dataset(n);
    Stmt insert(ds.db, kInsertSql);
    Stmt remove(ds.db, "DELETE FROM calls WHERE rowid = ?1");
    size_t k = 0;
    for (auto _ : state) {
        const size_t e = k++ % ds.extraFields.size();
        if (!insertRow(insert, 0, ds.extraFields[e])) {
            failInLoop(state, false, "INSERT failed");
            break;
        }
        state.PauseTiming();
        remove.integer(1, sqlite3_last_insert_rowid(ds.db));
        const bool restored = remove.step() == SQLITE_DONE && sqlite3_changes(ds.db) == 1;
        remove.reset();
        if (!restored) {
            failInLoop(state, true, "DELETE failed");
            break;
        }
        state.ResumeTiming();
    }
    checkSqlite(state, ds);
}

// ---- Update: a found record written back with another name ----------------------------------
// Iterations alternate between a changed name and the original one, so the data ends as it began
// after an even count; an odd count is put right outside the timing.

void updateOurs(benchmark::State& state, int64_t n) {
    Dataset& ds = dataset(n);
    const auto picks = randomIndexes(n, 4096, 2);
    CallDatabase db(ds.filePath);
    size_t k = 0;
    int32_t changed = 0;  // record number left with the changed name, 0 for none
    for (auto _ : state) {
        state.PauseTiming();
        const std::string& call = ds.calls[picks[(k / 2) % picks.size()]];
        const bool restore = k++ % 2 == 1;
        const int32_t number = db.FindCallRecord(QString::fromStdString(call));
        if (number == 0) {
            failInLoop(state, true, "FindCallRecord missed a present call");
            break;
        }
        if (restore)
            std::copy_n(ds.fileBytes.data() + static_cast<size_t>(number - 1) * kRec, kRec, db.CurrentRecord.bytes().begin());
        else
            db.CurrentRecord.setField(CallField::Name, QStringLiteral("Renamed Operator"));
        state.ResumeTiming();
        if (!db.UpdateRecord(number)) {
            failInLoop(state, false, "UpdateRecord failed");
            break;
        }
        changed = restore ? 0 : number;
    }
    if (changed != 0) {
        std::copy_n(ds.fileBytes.data() + static_cast<size_t>(changed - 1) * kRec, kRec, db.CurrentRecord.bytes().begin());
        if (!db.UpdateRecord(changed)) state.SkipWithError("restoring the changed record failed");
    }
    checkOurs(state, ds);
}

void updateSqlite(benchmark::State& state, int64_t n) {
    Dataset& ds = dataset(n);
    const auto picks = randomIndexes(n, 4096, 2);
    Stmt update(ds.db, "UPDATE calls SET name = ?1 WHERE rowid = ?2");
    const std::string renamed = "Renamed Operator";
    size_t k = 0;
    int64_t changed = 0;
    std::string original;
    for (auto _ : state) {
        const size_t i = picks[(k / 2) % picks.size()];
        const bool restore = k++ % 2 == 1;
        if (restore) original = fieldsOf(ds.fileBytes.data() + i * kRec)[1];
        update.text(1, restore ? original : renamed);
        update.integer(2, static_cast<int64_t>(i + 1));
        const bool ok = update.step() == SQLITE_DONE && sqlite3_changes(ds.db) == 1;
        update.reset();
        if (!ok) {
            failInLoop(state, false, "UPDATE failed");
            break;
        }
        changed = restore ? 0 : static_cast<int64_t>(i + 1);
    }
    if (changed != 0) {
        original = fieldsOf(ds.fileBytes.data() + static_cast<size_t>(changed - 1) * kRec)[1];
        update.text(1, original);
        update.integer(2, changed);
        update.step();
        update.reset();
    }
    checkSqlite(state, ds);
}

// ---- Delete: one present call, put back outside the timing ----------------------------------

void deleteOurs(benchmark::State& state, int64_t n) {
    Dataset& ds = dataset(n);
    const auto picks = randomIndexes(n, 4096, 3);
    CallDatabase db(ds.filePath);
    size_t k = 0;
    for (auto _ : state) {
        const size_t i = picks[k++ % picks.size()];
        if (!db.DeleteCallRecord(QString::fromStdString(ds.calls[i]))) {
            failInLoop(state, false, "DeleteCallRecord failed");
            break;
        }
        state.PauseTiming();
        std::copy_n(ds.fileBytes.data() + i * kRec, kRec, db.CurrentRecord.bytes().begin());
        if (!db.AppendRecord() || !db.SortDatabase()) {
            failInLoop(state, true, "putting the record back failed");
            break;
        }
        state.ResumeTiming();
    }
    checkOurs(state, ds);
}

void deleteSqlite(benchmark::State& state, int64_t n) {
    Dataset& ds = dataset(n);
    const auto picks = randomIndexes(n, 4096, 3);
    Stmt remove(ds.db, "DELETE FROM calls WHERE call = ?1");
    Stmt insert(ds.db, kInsertSql);
    size_t k = 0;
    for (auto _ : state) {
        const size_t i = picks[k++ % picks.size()];
        remove.text(1, ds.calls[i]);
        const bool ok = remove.step() == SQLITE_DONE && sqlite3_changes(ds.db) == 1;
        remove.reset();
        if (!ok) {
            failInLoop(state, false, "DELETE failed");
            break;
        }
        state.PauseTiming();
        if (!insertRow(insert, static_cast<int64_t>(i + 1), fieldsOf(ds.fileBytes.data() + i * kRec))) {
            failInLoop(state, true, "putting the row back failed");
            break;
        }
        state.ResumeTiming();
    }
    checkSqlite(state, ds);
}

// ---- List: every call, in order, into a QStringList -----------------------------------------

void listOurs(benchmark::State& state, int64_t n) {
    Dataset& ds = dataset(n);
    CallDatabase db(ds.filePath);
    QStringList list;
    for (auto _ : state) {
        db.FillCallList(list);
        if (list.size() != n || list.front() != QString::fromStdString(ds.calls.front())) {
            failInLoop(state, false, "FillCallList gave the wrong list");
            break;
        }
    }
}

void listSqlite(benchmark::State& state, int64_t n) {
    Dataset& ds = dataset(n);
    Stmt select(ds.db, "SELECT call FROM calls ORDER BY call");
    QStringList list;
    for (auto _ : state) {
        list.clear();
        while (select.step() == SQLITE_ROW)
            list.append(QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(select.get(), 0)),
                                          sqlite3_column_bytes(select.get(), 0)));
        select.reset();
        if (list.size() != n || list.front() != QString::fromStdString(ds.calls.front())) {
            failInLoop(state, false, "the SELECT gave the wrong list");
            break;
        }
    }
}

// ---- Registration ---------------------------------------------------------------------------

using BenchFn = void (*)(benchmark::State&, int64_t);

struct Operation {
    const char* name;
    BenchFn ours;
    BenchFn sqlite;
    benchmark::TimeUnit unit;
    int oursIterationsAt1M;  // the costly ones run a fixed few times at 1M; 0: by time
};

constexpr Operation kOperations[] = {
    {"BM_Find", findOurs, findSqlite, benchmark::kMicrosecond, 0},
    {"BM_AppendSort", appendOurs, appendSqlite, benchmark::kMillisecond, 5},
    {"BM_Update", updateOurs, updateSqlite, benchmark::kMillisecond, 6},
    {"BM_Delete", deleteOurs, deleteSqlite, benchmark::kMillisecond, 5},
    {"BM_List", listOurs, listSqlite, benchmark::kMillisecond, 5},
};
constexpr int64_t kSizes[] = {10000, 100000, 1000000};

void registerAll() {
    for (const Operation& op : kOperations) {
        for (int64_t size : kSizes) {
            for (int which = 0; which < 2; ++which) {
                const std::string name = std::string(op.name) + (which == 0 ? "/ours/" : "/sqlite/") + std::to_string(size);
                const BenchFn fn = which == 0 ? op.ours : op.sqlite;
                auto* b = benchmark::RegisterBenchmark(name.c_str(), [fn, size](benchmark::State& s) { fn(s, size); });
                b->Unit(op.unit)->UseRealTime();
                if (which == 0 && size == 1000000 && op.oursIterationsAt1M > 0)
                    b->Iterations(op.oursIterationsAt1M);
                else
                    b->MinTime(0.3);
            }
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    registerAll();
    benchmark::AddCustomContext("sqlite", std::string(sqlite3_libversion()) +
                                              ", journal_mode=DELETE (rollback journal), synchronous=NORMAL");
    benchmark::AddCustomContext("data", QDir::tempPath().toStdString() + " (a fresh temporary folder per size)");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
