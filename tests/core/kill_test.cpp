// The command-line tool killed with SIGKILL at random moments while it adds, updates or deletes a
// record: the call-sign file must afterwards hold exactly the records it held before the command
// or exactly those the finished command leaves, byte for byte, and a temp.db left behind by a
// killed run must never change what a later command writes. (An update overwrites its record in
// place with one write; the kernel could split that write at a page boundary, but that window is
// far narrower than anything these trials can hit.)
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <iostream>
#include <iterator>
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
constexpr size_t kRecordSize = 167;
constexpr std::array<size_t, 9> kWidths{6, 25, 30, 30, 30, 15, 15, 12, 4};
constexpr std::array<const char*, 9> kOptions{"--call", "--name", "--add1", "--add2", "--ctry",
                                              "--lat",  "--lon",  "--class", "--year"};
constexpr int kInitialRecords = 20000;
constexpr int kTrials = 300;

using Fields = std::array<std::string, 9>;
using Clock = std::chrono::steady_clock;
// Records by call: the calls are upper-case letters and digits, so map order is the file's byte order.
using Model = std::map<std::string, std::string>;

std::string recordOf(const Fields& f) {
    std::string rec;
    for (size_t i = 0; i < f.size(); ++i) rec += (f[i] + std::string(kWidths[i], ' ')).substr(0, kWidths[i]);
    return rec;
}

std::string bytesOf(const Model& model) {
    std::string all;
    for (const auto& [call, rec] : model) all += rec;
    return all;
}

struct Maker {
    std::mt19937_64 rng{0x6b696c6cULL};
    std::set<std::string> used;

    std::string any(std::initializer_list<const char*> texts) { return texts.begin()[rng() % texts.size()]; }
    std::string num(unsigned from, unsigned count) { return std::to_string(from + rng() % count); }

    std::string newCall() {
        for (;;) {
            std::string call = any({"K", "W", "N", "AA", "KB", "KD", "VE", "DL", "JA", "G", "M", "PY"}) + num(0, 10);
            const size_t suffix = call.size() == 2 ? 1 + rng() % 4 : 1 + rng() % 3;
            for (size_t i = 0; i < suffix; ++i) call += static_cast<char>('A' + rng() % 26);
            if (used.insert(call).second) return call;
        }
    }

    Fields fields(const std::string& call, const std::string& tag) {
        return {call, any({"Ada Lowe", "Ben Ortiz", "Cleo Marsh", "Dev Patel", "Edda Holm"}) + ' ' + tag,
                num(1, 9999) + " Ridge Rd", any({"Salem, OR 97301", "Dover, DE 19901", "Bergen 5003", "Osaka 530"}),
                any({"United States", "Norway"}), num(10, 60) + "." + num(1000, 9000),
                "-" + num(10, 160) + "." + num(1000, 9000), any({"Extra", "General"}), num(1940, 60)};
    }
};

std::string readFile(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll().toStdString() : "<missing>";
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

// killed: by our SIGKILL; otherwise the tool exited by itself with exitCode.
struct Outcome { bool killed = false; int exitCode = -1; double seconds = 0; };

// Runs the tool with its output thrown away; kills it after `killAfter` seconds unless negative.
Outcome runTool(const std::vector<std::string>& args, double killAfter) {
    std::vector<char*> argv{const_cast<char*>(PX_CLI)};
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int fd : {1, 2}) posix_spawn_file_actions_addopen(&actions, fd, "/dev/null", O_WRONLY, 0);
    const auto start = Clock::now();
    pid_t pid = -1;
    const int spawned = posix_spawn(&pid, PX_CLI, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        ADD_FAILURE() << "cannot start " << PX_CLI << ": " << spawned;
        return {};
    }
    if (killAfter >= 0) {
        std::this_thread::sleep_until(start + std::chrono::duration<double>(killAfter));
        ::kill(pid, SIGKILL);  // the child, even when already finished, is not reaped before waitpid
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) continue;
    return {WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL, WIFEXITED(status) ? WEXITSTATUS(status) : -1,
            std::chrono::duration<double>(Clock::now() - start).count()};
}

std::vector<std::string> addArgs(const Fields& f, const std::string& data) {
    std::vector<std::string> args{"db", "add"};
    for (size_t i = 0; i < f.size(); ++i) args.insert(args.end(), {kOptions[i], f[i]});
    args.insert(args.end(), {"--data", data});
    return args;
}

// What a file that is neither expected content holds, in words.
std::string describe(const std::string& file, const std::string& before, const std::string& after,
                     const std::string& added) {
    const auto records = [](const std::string& bytes) { return std::to_string(bytes.size() / kRecordSize); };
    if (file.size() % kRecordSize != 0) return "length " + std::to_string(file.size()) + " is no multiple of 167";
    if (!added.empty() && file == before + added) return "the new record appended but the file not sorted";
    return records(file) + " records (" + records(before) + " before, " + records(after) + " after) in other bytes";
}

TEST(KillTest, InterruptedChangesLeaveTheOldOrTheNewFile) {
    QTemporaryDir dir, emptyDir;
    ASSERT_TRUE(dir.isValid());
    const std::string data = dir.path().toStdString();
    const QString filePath = dir.path() + "/Norvane-DB.db", tempPath = dir.path() + "/temp.db";
    Maker make;
    Model model;
    for (int i = 0; i < kInitialRecords; ++i) {
        const std::string call = make.newCall();
        model[call] = recordOf(make.fields(call, "Initial"));
    }
    writeFile(filePath, bytesOf(model));

    // Uncontested runs of each kind (the median of five) set the range of kill delays; a command
    // that does nothing to the file gives the start-up time before which no kill can touch it.
    enum : size_t { kAdd, kUpdate, kDelete, kStartUp };  // the kinds of run, also indexes into runs
    std::array<std::vector<double>, 4> runs;
    for (int i = 0; i < 5; ++i) {
        runs[kStartUp].push_back(runTool({"db", "count", "--data", emptyDir.path().toStdString()}, -1).seconds);
        const std::string call = make.newCall();
        runs[kAdd].push_back(runTool(addArgs(make.fields(call, "Timing"), data), -1).seconds);
        runs[kUpdate].push_back(runTool(addArgs(make.fields(call, "Timing2"), data), -1).seconds);
        runs[kDelete].push_back(runTool({"db", "delete", call, "--data", data}, -1).seconds);
        ASSERT_EQ(readFile(filePath), bytesOf(model)) << "uncontested runs";
    }
    for (auto& r : runs) std::sort(r.begin(), r.end());
    const auto median = [&](size_t k) { return runs[k][2]; };
    const double startup = median(kStartUp);

    int oldState = 0, newState = 0, killedOld = 0, killedNew = 0, finishedFirst = 0, completed = 0;
    int killedMidWrite = 0, completedOverStale = 0, planted = 0, neither = 0;
    std::string firstNeither, lastDeleted;  // lastDeleted: a record gone from the file, for a stale temp.db
    std::map<std::string, int> neitherKinds;
    const auto begin = Clock::now();

    for (int trial = 0; trial < kTrials; ++trial) {
        const std::string before = bytesOf(model), where = "trial " + std::to_string(trial);
        const size_t op = std::discrete_distribution<size_t>{4, 3, 3}(make.rng);  // kAdd (a new call), kUpdate, kDelete
        const std::string call =
            op == kAdd ? make.newCall() : std::next(model.begin(), static_cast<long>(make.rng() % model.size()))->first;
        const Fields f = make.fields(call, (op == kAdd ? "T" : "U") + std::to_string(trial));  // unused by a delete
        // The added record tells a half-done add apart; the deleted one can be planted in a temp.db.
        const std::string added = op == kAdd ? recordOf(f) : "", deleted = op == kDelete ? model[call] : "";
        Model next = model;
        next.erase(call);
        if (op != kDelete) next.emplace(call, recordOf(f));
        const auto args = op != kDelete ? addArgs(f, data) : std::vector<std::string>{"db", "delete", call, "--data", data};
        const std::string after = bytesOf(next);
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
        const double delay = runToEnd ? -1 : std::uniform_real_distribution<double>(
            std::min(startup * 0.8, median(op) * 0.5), median(op) * 1.05)(make.rng);
        const Outcome outcome = runTool(args, delay);

        const std::string file = readFile(filePath);
        if (runToEnd || !outcome.killed) {
            ++(runToEnd ? completed : finishedFirst);
            completedOverStale += runToEnd && staleBefore;
            EXPECT_FALSE(outcome.killed) << where;
            EXPECT_EQ(outcome.exitCode, 0) << where;
            EXPECT_EQ(file == after, true) << where << (runToEnd ? " ran to its end" : " finished by itself")
                                           << " (stale temp.db: " << staleBefore << ") but left "
                                           << describe(file, before, after, added);
            // Adds and deletes go through temp.db and leave none; an update in place never opens it.
            EXPECT_EQ(QFileInfo::exists(tempPath), op == kUpdate && staleBefore) << where;
        } else {
            const int64_t tempAfter = changedAt(tempPath);
            killedMidWrite += tempAfter >= 0 && tempAfter != tempBefore;
            killedOld += file == before;
            killedNew += file == after;
        }

        if (file == before) {
            ++oldState;
        } else if (file == after) {
            ++newState;
            model = std::move(next);
            if (!deleted.empty()) lastDeleted = deleted;
        } else {
            const std::string what = describe(file, before, after, added);
            ++neitherKinds[what];
            if (neither++ == 0)
                firstNeither = where + " (" + std::array{"add", "update", "delete"}[op] +
                               (runToEnd ? ", run to its end" : ", killed after " + std::to_string(delay * 1000) + " ms") +
                               ") left " + what;
            writeFile(filePath, before);  // back to the old file, so that later trials still test something
        }
    }

    std::cout << "[ kill test ] " << kTrials << " trials in "
              << std::chrono::duration<double>(Clock::now() - begin).count() << " s over " << kInitialRecords
              << " records; start-up " << startup * 1000 << " ms, uncontested add " << median(kAdd) * 1000
              << " ms, update " << median(kUpdate) * 1000 << " ms, delete " << median(kDelete) * 1000 << " ms\n"
              << "[ kill test ] old file: " << oldState << " (killed " << killedOld << "), new file: " << newState
              << " (killed " << killedNew << ", finished before the kill " << finishedFirst << ", run to the end "
              << completed << "), neither: " << neither << "\n"
              << "[ kill test ] killed while writing temp.db: " << killedMidWrite
              << "; runs to the end over a stale temp.db: " << completedOverStale << " (" << planted
              << " planted)\n";
    for (const auto& [kind, count] : neitherKinds) std::cout << "[ kill test ] neither: " << count << " x " << kind << "\n";
    const std::pair<const char*, int> properties[] = {{"old_state", oldState}, {"new_state", newState},
        {"killed_old", killedOld}, {"killed_new", killedNew}, {"killed_mid_write", killedMidWrite}, {"neither", neither}};
    for (const auto& [key, value] : properties) RecordProperty(key, value);

    EXPECT_EQ(neither, 0) << "first: " << firstNeither;
    // The kills really did land before, during and after the writes.
    EXPECT_GT(killedOld, 0);
    EXPECT_GT(killedNew, 0);
    EXPECT_GT(killedMidWrite, 0);
    EXPECT_GT(completedOverStale, 0);
}

}  // namespace
