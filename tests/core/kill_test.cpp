// The command-line tool killed with SIGKILL at random moments while it adds, updates or deletes a
// record: the call-sign file must afterwards hold exactly the records it held before the command
// or exactly those the finished command leaves, byte for byte, and a temp.db left behind by a
// killed run must never change what a later command writes. (An update overwrites its record in
// place with one write; the kernel could split that write at a page boundary, but that window is
// far narrower than anything these trials can hit.)
#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <map>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

extern char** environ;

namespace {

// The record layout, written out here so that the test does not take it from the code it checks.
constexpr int kRecordSize = 167;
constexpr std::array<int, 9> kWidths{6, 25, 30, 30, 30, 15, 15, 12, 4};
constexpr std::array<const char*, 9> kOptions{"--call", "--name", "--add1", "--add2", "--ctry",
                                              "--lat",  "--lon",  "--class", "--year"};
constexpr int kInitialRecords = 20000;
constexpr int kTrials = 300;

using Fields = std::array<std::string, 9>;
using Clock = std::chrono::steady_clock;

std::string recordOf(const Fields& f) {
    std::string rec;
    for (size_t i = 0; i < f.size(); ++i) {
        std::string field = f[i].substr(0, static_cast<size_t>(kWidths[i]));
        field.resize(static_cast<size_t>(kWidths[i]), ' ');
        rec += field;
    }
    return rec;
}

std::string callOf(const std::string& rec) {
    std::string call = rec.substr(0, 6);
    call.erase(call.find_last_not_of(' ') + 1);
    return call;
}

// The records in the file's order: the calls here are distinct upper-case letters and digits, so
// that order is their plain byte order.
class Model {
public:
    std::string bytes() const {
        std::string all;
        all.reserve(records_.size() * kRecordSize);
        for (const auto& [call, rec] : records_) all += rec;
        return all;
    }
    // Adds, or replaces the record of the same call.
    void put(const std::string& rec) {
        const std::string call = callOf(rec);
        auto it = std::lower_bound(records_.begin(), records_.end(), call,
                                   [](const auto& r, const std::string& c) { return r.first < c; });
        if (it != records_.end() && it->first == call)
            it->second = rec;
        else
            records_.insert(it, {call, rec});
    }
    void remove(const std::string& call) {
        records_.erase(std::remove_if(records_.begin(), records_.end(), [&](const auto& r) { return r.first == call; }),
                       records_.end());
    }
    size_t size() const { return records_.size(); }
    const std::string& callAt(size_t i) const { return records_[i].first; }
    const std::string& recordAt(size_t i) const { return records_[i].second; }

private:
    std::vector<std::pair<std::string, std::string>> records_;
};

class Maker {
public:
    explicit Maker(uint64_t seed) : rng_(seed) {}

    std::string newCall(std::set<std::string>& used) {
        static constexpr const char* kPrefixes[] = {"K", "W", "N", "AA", "KB", "KD", "VE", "DL", "JA", "G", "M", "PY"};
        for (;;) {
            std::string call = kPrefixes[rng_() % std::size(kPrefixes)];
            call += static_cast<char>('0' + rng_() % 10);
            const size_t suffix = call.size() == 2 ? 1 + rng_() % 4 : 1 + rng_() % 3;
            for (size_t i = 0; i < suffix; ++i) call += static_cast<char>('A' + rng_() % 26);
            if (used.insert(call).second) return call;
        }
    }

    Fields fields(const std::string& call, const std::string& tag) {
        static constexpr const char* kNames[] = {"Ada Lowe", "Ben Ortiz", "Cleo Marsh", "Dev Patel", "Edda Holm"};
        static constexpr const char* kTowns[] = {"Salem, OR 97301", "Dover, DE 19901", "Bergen 5003", "Osaka 530"};
        const unsigned number = static_cast<unsigned>(1 + rng_() % 9999);
        return {call,
                std::string(kNames[rng_() % std::size(kNames)]) + ' ' + tag,
                std::to_string(number) + " Ridge Rd",
                kTowns[rng_() % std::size(kTowns)],
                rng_() % 2 ? "United States" : "Norway",
                std::to_string(10 + rng_() % 60) + "." + std::to_string(1000 + rng_() % 9000),
                "-" + std::to_string(10 + rng_() % 160) + "." + std::to_string(1000 + rng_() % 9000),
                rng_() % 2 ? "Extra" : "General",
                std::to_string(1940 + rng_() % 60)};
    }

    uint64_t next() { return rng_(); }
    double uniform(double from, double to) { return std::uniform_real_distribution<double>(from, to)(rng_); }

private:
    std::mt19937_64 rng_;
};

std::string readFile(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) return "<missing>";
    const QByteArray b = f.readAll();
    return std::string(b.constData(), static_cast<size_t>(b.size()));
}

void writeFile(const QString& path, const std::string& bytes) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ASSERT_EQ(f.write(bytes.data(), static_cast<qint64>(bytes.size())), static_cast<qint64>(bytes.size()));
}

// When a file last changed, to the nanosecond; -1 when it is not there.
int64_t changedAt(const QString& path) {
    struct stat st {};
    if (::stat(QFile::encodeName(path).constData(), &st) != 0) return -1;
    return static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
}

struct Outcome {
    bool killed = false;  // ended by our SIGKILL (otherwise it exited by itself)
    int exitCode = -1;
    double seconds = 0;
};

// Runs the tool with its output thrown away; kills it after `killAfter` seconds unless negative.
Outcome runTool(const std::vector<std::string>& args, double killAfter) {
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(PX_CLI));
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);

    Outcome out;
    const auto start = Clock::now();
    pid_t pid = -1;
    const int spawned = posix_spawn(&pid, PX_CLI, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        ADD_FAILURE() << "cannot start " << PX_CLI << ": " << spawned;
        return out;
    }
    if (killAfter >= 0) {
        std::this_thread::sleep_until(start + std::chrono::duration<double>(killAfter));
        ::kill(pid, SIGKILL);  // the child, even when already finished, is not reaped before waitpid
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    out.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    out.killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    out.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return out;
}

std::vector<std::string> addArgs(const Fields& f, const QString& data) {
    std::vector<std::string> args{"db", "add"};
    for (size_t i = 0; i < f.size(); ++i) {
        args.push_back(kOptions[i]);
        args.push_back(f[i]);
    }
    args.push_back("--data");
    args.push_back(data.toStdString());
    return args;
}

std::vector<std::string> deleteArgs(const std::string& call, const QString& data) {
    return {"db", "delete", call, "--data", data.toStdString()};
}

// What a file that is neither expected content holds, in words.
std::string describe(const std::string& file, const std::string& before, const std::string& after,
                     const std::string& newRecord) {
    if (file.size() % kRecordSize != 0) return "length " + std::to_string(file.size()) + " is no multiple of 167";
    if (!newRecord.empty() && file == before + newRecord) return "the new record appended but the file not sorted";
    std::set<std::string> calls, b, a;
    for (size_t at = 0; at < file.size(); at += kRecordSize) calls.insert(callOf(file.substr(at, 6)));
    for (size_t at = 0; at < before.size(); at += kRecordSize) b.insert(callOf(before.substr(at, 6)));
    for (size_t at = 0; at < after.size(); at += kRecordSize) a.insert(callOf(after.substr(at, 6)));
    std::string text = std::to_string(file.size() / kRecordSize) + " records";
    if (calls != b && calls != a) text += ", a call set matching neither";
    else text += ", the right calls in other bytes or another order";
    return text;
}

enum class Op { AddNew, Update, Delete };

TEST(KillTest, InterruptedChangesLeaveTheOldOrTheNewFile) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString data = dir.path();
    const QString filePath = data + QStringLiteral("/Norvane-DB.db");
    const QString tempPath = data + QStringLiteral("/temp.db");

    Maker make(0x6b696c6cULL);
    std::set<std::string> used;
    Model model;
    for (int i = 0; i < kInitialRecords; ++i) {
        const std::string call = make.newCall(used);
        model.put(recordOf(make.fields(call, "Initial")));
    }
    writeFile(filePath, model.bytes());

    // Uncontested runs of each kind (the median of five) set the range of kill delays; a command
    // that does nothing to the file gives the start-up time before which no kill can touch it.
    const auto median = [](std::vector<double> v) {
        std::sort(v.begin(), v.end());
        return v[v.size() / 2];
    };
    QTemporaryDir emptyDir;
    std::vector<double> startups;
    for (int i = 0; i < 5; ++i)
        startups.push_back(runTool({"db", "count", "--data", emptyDir.path().toStdString()}, -1).seconds);
    const double startup = median(startups);
    std::array<double, 3> duration{};
    {
        std::array<std::vector<double>, 3> runs;
        for (int i = 0; i < 5; ++i) {
            const std::string addCall = make.newCall(used);
            const Fields added = make.fields(addCall, "Timing");
            runs[static_cast<int>(Op::AddNew)].push_back(runTool(addArgs(added, data), -1).seconds);
            model.put(recordOf(added));
            const Fields changed = make.fields(addCall, "Timing2");
            runs[static_cast<int>(Op::Update)].push_back(runTool(addArgs(changed, data), -1).seconds);
            model.put(recordOf(changed));
            runs[static_cast<int>(Op::Delete)].push_back(runTool(deleteArgs(addCall, data), -1).seconds);
            model.remove(addCall);
            ASSERT_EQ(readFile(filePath), model.bytes()) << "uncontested runs";
        }
        for (size_t k = 0; k < runs.size(); ++k) duration[k] = median(runs[k]);
    }

    int oldState = 0, newState = 0, killedOld = 0, killedNew = 0, finishedFirst = 0, completed = 0;
    int killedMidWrite = 0, completedOverStale = 0, planted = 0, neither = 0;
    std::string firstNeither;
    std::map<std::string, int> neitherKinds;
    std::string lastDeleted;  // a record no longer in the file, for planting in a stale temp.db
    const auto begin = Clock::now();

    for (int trial = 0; trial < kTrials; ++trial) {
        const std::string before = model.bytes();
        Model next = model;
        std::vector<std::string> args;
        std::string addedRecord;  // the new record of an add, for telling its half-done state
        const uint64_t pick = make.next() % 10;
        const Op op = pick < 4 ? Op::AddNew : pick < 7 ? Op::Update : Op::Delete;
        std::string deletedRecord;
        if (op == Op::AddNew) {
            const Fields f = make.fields(make.newCall(used), "T" + std::to_string(trial));
            addedRecord = recordOf(f);
            next.put(addedRecord);
            args = addArgs(f, data);
        } else {
            const size_t index = make.next() % model.size();
            const std::string call = model.callAt(index);
            if (op == Op::Update) {
                const Fields f = make.fields(call, "U" + std::to_string(trial));
                next.put(recordOf(f));
                args = addArgs(f, data);
            } else {
                deletedRecord = model.recordAt(index);
                next.remove(call);
                args = deleteArgs(call, data);
            }
        }
        const std::string after = next.bytes();
        ASSERT_NE(before, after);

        // Every fifth trial runs to completion, over whatever temp.db earlier kills left behind,
        // or over one planted here holding a record that is gone from the file.
        const bool runToEnd = trial % 5 == 4;
        if (runToEnd && !QFileInfo::exists(tempPath) && !lastDeleted.empty()) {
            writeFile(tempPath, before + lastDeleted);
            ++planted;
        }
        const bool staleBefore = QFileInfo::exists(tempPath);
        const int64_t tempBefore = changedAt(tempPath);
        const double full = duration[static_cast<int>(op)];
        const double delay = runToEnd ? -1 : make.uniform(std::min(startup * 0.8, full * 0.5), full * 1.05);
        const Outcome outcome = runTool(args, delay);

        const std::string file = readFile(filePath);
        EXPECT_EQ(file.size() % kRecordSize, 0u) << "trial " << trial;
        if (runToEnd) {
            ++completed;
            completedOverStale += staleBefore;
            EXPECT_FALSE(outcome.killed);
            EXPECT_EQ(outcome.exitCode, 0) << "trial " << trial;
            EXPECT_EQ(file == after, true) << "trial " << trial << " ran to its end over "
                                           << (staleBefore ? "a stale temp.db" : "no temp.db") << " but left "
                                           << describe(file, before, after, addedRecord);
            // Adds and deletes go through temp.db and leave none; an update in place never opens it.
            if (op == Op::Update)
                EXPECT_EQ(QFileInfo::exists(tempPath), staleBefore) << "trial " << trial;
            else
                EXPECT_FALSE(QFileInfo::exists(tempPath)) << "trial " << trial;
        } else if (!outcome.killed) {
            ++finishedFirst;
            EXPECT_EQ(outcome.exitCode, 0) << "trial " << trial;
            EXPECT_EQ(file == after, true) << "trial " << trial << " finished by itself but left "
                                           << describe(file, before, after, addedRecord);
        } else {
            const int64_t tempAfter = changedAt(tempPath);
            killedMidWrite += tempAfter >= 0 && tempAfter != tempBefore;
            if (file == before) ++killedOld;
            if (file == after) ++killedNew;
        }

        if (file == before) {
            ++oldState;
        } else if (file == after) {
            ++newState;
            model = next;
            if (!deletedRecord.empty()) lastDeleted = deletedRecord;
        } else {
            ++neither;
            ++neitherKinds[describe(file, before, after, addedRecord)];
            if (firstNeither.empty())
                firstNeither = "trial " + std::to_string(trial) + " (" +
                               (op == Op::AddNew ? "add" : op == Op::Update ? "update" : "delete") +
                               (runToEnd ? ", run to its end" : ", killed after " + std::to_string(delay * 1000) + " ms") +
                               ") left " +
                               describe(file, before, after, addedRecord);
            // Back to the old file, so that the trials after it still test something.
            writeFile(filePath, before);
        }
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();

    std::cout << "[ kill test ] " << kTrials << " trials in " << seconds << " s over " << kInitialRecords
              << " records; start-up " << startup * 1000 << " ms, uncontested add " << duration[0] * 1000
              << " ms, update " << duration[1] * 1000 << " ms, delete " << duration[2] * 1000 << " ms\n"
              << "[ kill test ] old file: " << oldState << " (killed " << killedOld << "), new file: " << newState
              << " (killed " << killedNew << ", finished before the kill " << finishedFirst << ", run to the end "
              << completed << "), neither: " << neither << "\n"
              << "[ kill test ] killed while writing temp.db: " << killedMidWrite
              << "; runs to the end over a stale temp.db: " << completedOverStale << " (" << planted
              << " planted)\n";
    for (const auto& [kind, count] : neitherKinds) std::cout << "[ kill test ] neither: " << count << " x " << kind << "\n";
    RecordProperty("old_state", oldState);
    RecordProperty("new_state", newState);
    RecordProperty("killed_old", killedOld);
    RecordProperty("killed_new", killedNew);
    RecordProperty("killed_mid_write", killedMidWrite);
    RecordProperty("neither", neither);

    EXPECT_EQ(neither, 0) << "first: " << firstNeither;
    // The kills really did land before, during and after the writes.
    EXPECT_GT(killedOld, 0);
    EXPECT_GT(killedNew, 0);
    EXPECT_GT(killedMidWrite, 0);
    EXPECT_GT(completedOverStale, 0);
}

}  // namespace
