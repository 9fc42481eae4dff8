#include "cli/cliargs.h"
#include "testutil.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <gtest/gtest.h>

using namespace testutil;

namespace {

struct CliRun { int status; QString out; QString err; };

// A run that does not end in time (say, a window that opened) fails here and is killed.
CliRun cli(const QStringList& args, const QProcessEnvironment& env = QProcessEnvironment::systemEnvironment()) {
    QProcess p;
    p.setProcessEnvironment(env);
    p.start(QStringLiteral(PX_CLI), args);
    if (!p.waitForFinished(30000)) ADD_FAILURE() << "did not end: " << args.join(u' ').toStdString();
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, QString::fromUtf8(p.readAllStandardOutput()),
            QString::fromUtf8(p.readAllStandardError())};
}

TEST(CliTest, DatabaseCommands) {
    QTemporaryDir dir;
    const auto db = [&](const QStringList& args) { return cli(QStringList{"db"} + args + QStringList{"--data", dir.path()}); };
    EXPECT_EQ(db({"count"}).out, "0\n");
    CliRun r = db({"add", "--call", " ea8/w1aw/p", "--name", "Hiram", "--lat", "41.7", "--lon", "-180", "--year", "1914"});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(r.out, "added W1AW\n");  // cleaned as for a lookup
    EXPECT_EQ(db({"add", "--call", "G4ABC", "--name", "Alice", "--ctry", "England"}).out, "added G4ABC\n");
    EXPECT_EQ(db({"add", "--call", "G4ABC", "--name", "Alice B"}).out, "updated G4ABC\n");
    EXPECT_EQ(db({"list"}).out, "G4ABC\nW1AW\n");
    EXPECT_EQ(db({"count"}).out, "2\n");
    EXPECT_EQ(readFile(dir.path() + "/Norvane-DB.db").left(167), recordBytes("G4ABC", "Alice B"));

    r = db({"find", "W1AW", "--json"});
    EXPECT_EQ(r.status, 0);
    const QJsonObject o = QJsonDocument::fromJson(r.out.toUtf8()).object();
    EXPECT_EQ(o["record"].toInt(), 2);
    for (const auto& [key, value] : {std::pair{"Name", "Hiram"}, {"Lat", "41.7"}, {"YearBorn", "1914"}, {"Ctry", ""}})
        EXPECT_EQ(o[key].toString(), value) << key;

    r = db({"find", "K1ZZZ"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "K1ZZZ: not found\n");
    EXPECT_EQ(db({"delete", "G4ABC"}).status, 0);
    EXPECT_EQ(db({"list"}).out, "W1AW\n");

    // Refused: the file keeps its bytes.
    const QByteArray kept = readFile(dir.path() + "/Norvane-DB.db");
    r = db({"delete", "G4ABC"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "G4ABC: not found\n");
    struct Bad { QStringList args; const char* message; };
    for (const Bad& c : {Bad{{"--call", "DL1ABCDE/P"}, "no usable call sign: DL1ABCDE/P"},  // its 8 characters stay unusable
                         Bad{{"--call", "ABCDEF"}, "no usable call sign: ABCDEF"},
                         Bad{{"--call", "W1AW", "--lat", "90.01"}, "--lat takes a number from -90 to 90, not '90.01'"},
                         Bad{{"--call", "W1AW", "--lat", "-91"}, "--lat takes a number from -90 to 90, not '-91'"},
                         Bad{{"--call", "W1AW", "--lat", "41,7"}, "--lat takes a number from -90 to 90, not '41,7'"},
                         Bad{{"--call", "W1AW", "--lon", "180.5"}, "--lon takes a number from -180 to 180, not '180.5'"},
                         Bad{{"--call", "W1AW", "--lon", ""}, "--lon takes a number from -180 to 180, not ''"},
                         Bad{{"--call", "W1AW", "--lon", "east"}, "--lon takes a number from -180 to 180, not 'east'"}}) {
        r = db(QStringList{"add"} + c.args);
        EXPECT_EQ(r.status, 2) << c.message;
        EXPECT_EQ(r.err, QString("pxcallsigns: %1\nTry 'pxcallsigns --help'.\n").arg(c.message));
    }
    EXPECT_EQ(readFile(dir.path() + "/Norvane-DB.db"), kept);

    // No file: a delete says so and makes none.
    QTemporaryDir empty;
    r = cli({"db", "delete", "W1AW", "--data", empty.path()});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "W1AW: not found\n");
    EXPECT_FALSE(QFile::exists(empty.path() + "/Norvane-DB.db"));
}

// Options stand anywhere: every spelling gives the same output.
TEST(CliTest, OptionsInAnyPosition) {
    QTemporaryDir dir;
    const QString d = dir.path();
    ASSERT_EQ(cli({"db", "add", "--call", "G4ABC", "--name", "Alice", "--data", d}).status, 0);
    struct Case { std::vector<QStringList> spellings; const char* out; };
    const Case cases[] = {
        {{{"--data", d, "db", "count"}, {"db", "--data", d, "count"}, {"db", "count", "--data", d}}, "2\n"},
        {{{"--json", "--data", d, "db", "find", "G4ABC"}, {"db", "find", "--json", "G4ABC", "--data", d}},
         R"({"Add1":"","Add2":"","Call":"G4ABC","Class":"","Ctry":"","Lat":"","Lon":"","Name":"Alice","YearBorn":"","found":true,"record":1})"
         "\n"},
        {{{"--miles", "distance", "0", "0", "0.903", "0"}, {"distance", "0", "0", "--miles", "0.903", "0"}}, "62 mi 0\u00b0\n"},
        {{{"--data", d, "db", "add", "--call", "K1ABC"}, {"db", "--call", "K1ABC", "add", "--data", d}}, "updated K1ABC\n"},
    };
    ASSERT_EQ(cli({"db", "add", "--call", "K1ABC", "--data", d}).out, "added K1ABC\n");
    for (const Case& c : cases)
        for (const QStringList& args : c.spellings) {
            const CliRun r = cli(args);
            EXPECT_EQ(r.status, 0) << args.join(' ').toStdString() << ": " << r.err.toStdString();
            EXPECT_EQ(r.out, QString::fromUtf8(c.out)) << args.join(' ').toStdString();
        }
}

TEST(CliTest, DistanceAndGrid) {
    EXPECT_EQ(cli({"distance", "51.5072", "-0.1276", "40.7128", "-74.006"}).out, QString::fromUtf8("5580 km 288\u00b0\n"));
    EXPECT_EQ(cli({"distance", "0", "0", "0.903", "0", "--miles", "--json"}).out, "{\"azimuth\":0,\"distance\":62,\"unit\":\"mi\"}\n");
    EXPECT_EQ(cli({"distance", "0", "0", "-33.9", "151.2"}).out, QString::fromUtf8("15203 km 144\u00b0\n"));
    EXPECT_EQ(cli({"grid", "0", "-0.5"}).out, "IJ90ra\n");
    EXPECT_EQ(cli({"grid", "52.52", "13.405"}).out, "JO62qm\n");
    EXPECT_EQ(cli({"grid", " 52.52 ", "13.405"}).out, "JO62qm\n");
    const CliRun r = cli({"grid", "90.5", "0"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "pxcallsigns: no grid square beyond 90 degrees of latitude\n");
    // Text that is not a whole number is refused, not read as far as it goes.
    for (const QStringList& args : {QStringList{"grid", "x", "y"}, {"grid", "52.5N", "13"}, {"grid", "52", ""},
                                    {"distance", "0", "0", "x", "0"}, {"distance", "1e999", "0", "0", "0"}}) {
        const CliRun bad = cli(args);
        EXPECT_EQ(bad.status, 2) << args.join(' ').toStdString();
        EXPECT_TRUE(bad.err.startsWith("pxcallsigns: not a number: ")) << bad.err.toStdString();
        EXPECT_EQ(bad.out, "");
    }
}

TEST(CliTest, MapChooseAndPosition) {
    struct Case {
        QStringList args;
        int status;
        QString out;
        QString errStart;
    };
    for (const Case& c : {
             Case{{"map", "choose", "53", "5"}, 0, "N-Nederland Map\n", ""},
             Case{{"map", "choose", "53", "3.817"}, 0, "Europe Map\n", ""},
             Case{{"map", "choose", "-40", "179.5"}, 0, "World Map\n", ""},
             Case{{"map", "position", "World Map", "-12.3", "20"}, 0, "1474 819\n", ""},
             Case{{"map", "position", "World Map", "40", "-175", "--json"}, 0, "{\"map\":\"World Map\",\"x\":2631,\"y\":360}\n", ""},
             Case{{"map", "position", "North America Map", "40", "-115.5"}, 0, "278 423\n", ""},
             Case{{"map", "position", "My Map", "40", "5"}, 1, "", "pxcallsigns: not one of the nine maps: My Map"},
             Case{{"map", "position", "UK Map", "-300", "0"}, 1, "", "pxcallsigns: overflow: "},
             Case{{"map", "position", "World Map", "90", "0"}, 1, "", "pxcallsigns: the world map has no row"},
             Case{{"map", "position", "World Map", "x", "0"}, 2, "", "pxcallsigns: not a number: x"},
             Case{{"map", "choose", "53"}, 2, "", "pxcallsigns: map choose needs LAT LON"},
             Case{{"map", "choose", "53", "5", "--json"}, 2, "", "pxcallsigns: map choose does not take --json"},
             Case{{"map", "draw"}, 2, "", "pxcallsigns: unknown map command draw"},
             Case{{"map"}, 2, "", "pxcallsigns: map needs a command"},
         }) {
        const CliRun r = cli(c.args);
        EXPECT_EQ(r.status, c.status) << c.args.join(' ').toStdString();
        EXPECT_EQ(r.out, c.out) << c.args.join(' ').toStdString();
        if (c.errStart.isEmpty())
            EXPECT_EQ(r.err, "") << c.args.join(' ').toStdString();
        else
            EXPECT_TRUE(r.err.startsWith(c.errStart)) << r.err.toStdString();
    }
}

TEST(CliTest, HelpVersionAndUsageErrors) {
    EXPECT_TRUE(cli({"--help"}).out.contains("db find CALL [--json]"));
    EXPECT_TRUE(cli({"--version"}).out.startsWith("pxcallsigns "));
    EXPECT_EQ(cli({"db", "count", "-h"}).out, cli({"--help"}).out);
    QTemporaryDir dir;
    const QString missing = dir.path() + "/none";
    struct Case { QStringList args; QString message; };
    for (const Case& c : {Case{{"db"}, "db needs a command"}, Case{{"db", "frob"}, "unknown db command frob"},
                          Case{{"db", "find"}, "db find needs one call sign"},
                          Case{{"db", "delete", "A", "B"}, "db delete needs one call sign"},
                          Case{{"db", "count", "extra"}, "unexpected argument extra"},
                          Case{{"db", "add", "--name", "x"}, "db add needs --call"},
                          Case{{"db", "add", "--call", "A", "--colour", "x"}, "unknown option --colour"},
                          Case{{"db", "find", "--data"}, "--data needs a value"},
                          Case{{"db", "list", "--json"}, "db list does not take --json"},
                          Case{{"db", "count", "--data", missing}, "no such folder: " + missing},
                          Case{{"grid", "1", "2", "--miles"}, "grid does not take --miles"},
                          Case{{"clean-call", "W1AW", "--data", dir.path()}, "clean-call does not take --data"},
                          Case{{"frob"}, "unknown command frob"}, Case{{"--frob"}, "unknown option --frob"},
                          Case{{"-x"}, "unknown option -x"}, Case{{"--json"}, "no command given"},
                          Case{{"-platform", "offscreen", "db", "count"}, "unknown option -platform"}}) {
        const CliRun r = cli(c.args);
        EXPECT_EQ(r.status, 2) << c.message.toStdString();
        EXPECT_EQ(r.err, "pxcallsigns: " + c.message + "\nTry 'pxcallsigns --help'.\n");
        EXPECT_EQ(r.out, "");
    }
}

// The command line takes any word or "--" option; the window keeps no arguments and Qt's own.
TEST(CliTest, CommandLineOrWindow) {
    struct Case { QStringList args; bool cli; QString platform; };
    for (const Case& c : {Case{{}, false, ""}, Case{{"-platform", "offscreen"}, false, "offscreen"},
                          Case{{"-reverse", "-platform", "xcb", "-display", ":1"}, false, "xcb"},
                          Case{{"-style=fusion", "-platform", "db"}, false, "db"},  // a value, not a command
                          Case{{"-platform"}, false, ""}, Case{{"db", "count"}, true, ""}, Case{{"--data", "x"}, true, ""},
                          Case{{"-platform", "offscreen", "grid"}, true, "offscreen"}, Case{{"-h"}, true, ""},
                          Case{{"--version"}, true, ""}, Case{{"-x"}, true, ""}, Case{{"--platform", "xcb"}, true, ""},
                          Case{{""}, true, ""}}) {
        const QStringList args = QStringList{"pxcallsigns"} + c.args;
        EXPECT_EQ(IsCliInvocation(args), c.cli) << c.args.join(' ').toStdString();
        EXPECT_EQ(WindowOption(args, "platform"), c.platform) << c.args.join(' ').toStdString();
    }
}

// Without --data the user's folder is the one, and the first use copies the default folder that
// ships beside the program into it; later uses leave the user's files as they are. A folder that
// cannot be made ends the command with the reason.
TEST(CliTest, FirstUseSeedsTheUserFolder) {
    QTemporaryDir home;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("XDG_DATA_HOME", home.path() + "/data");
    const QString shipped = QFileInfo(QStringLiteral(PX_CLI)).absolutePath() + "/share/Norvane";
    const QString user = home.path() + "/data/Norvane";
    const QByteArray sample = readFile(shipped + "/Norvane-DB.db");
    ASSERT_GT(sample.size(), 0);
    ASSERT_EQ(sample.size() % CallRecord::kSize, 0);

    CliRun r = cli({"db", "count"}, env);
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(r.out, QString::number(sample.size() / CallRecord::kSize) + "\n");
    for (const char* file : {"Norvane-DB.db", "nicknames.txt", "Help.txt", "Languages/Norvane_German.Language"})
        EXPECT_EQ(readFile(user + "/" + file), readFile(shipped + "/" + file)) << file;

    writeFile(user + "/nicknames.txt", "DL1XYZ*Mine");
    QFile::remove(user + "/Norvane-DB.db");
    r = cli({"db", "count"}, env);
    EXPECT_EQ(r.out, "0\n");
    EXPECT_EQ(readFile(user + "/nicknames.txt"), "DL1XYZ*Mine");
    EXPECT_FALSE(QFileInfo::exists(user + "/Norvane-DB.db")) << "a user's folder is not filled up again";

    writeFile(home.path() + "/file", "x");
    env.insert("XDG_DATA_HOME", home.path() + "/file/data");
    r = cli({"db", "list"}, env);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "pxcallsigns: Cannot create the data folder " + home.path() + "/file/data/Norvane\n");
}

// Without a display the window is not opened: a message and exit 1, not Qt's abort.
TEST(CliTest, NoDisplayForTheWindow) {
#ifdef PX_CLI_ONLY
    const CliRun r = cli({});
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "pxcallsigns: this build has the command line only (see --help)\n");
#else
    struct Case { const char* platformEnv; const char* displayEnv; QStringList args; QString why; };
    for (const Case& c : {Case{nullptr, nullptr, {}, "DISPLAY is not set"}, Case{"xcb", "", {}, "DISPLAY is not set"},
                          Case{nullptr, ":4711", {}, "cannot open the X display :4711"},
                          Case{"offscreen", nullptr, {"-platform", "xcb", "-display", ":4712"}, "cannot open the X display :4712"}}) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.remove("QT_QPA_PLATFORM");
        env.remove("DISPLAY");
        if (c.platformEnv) env.insert("QT_QPA_PLATFORM", c.platformEnv);
        if (c.displayEnv) env.insert("DISPLAY", c.displayEnv);
        const CliRun r = cli(c.args, env);
        EXPECT_EQ(r.status, 1) << c.why.toStdString();
        EXPECT_EQ(r.err, "pxcallsigns: no display: " + c.why + " (see pxcallsigns --help for the commands)\n");
    }
#endif
}

}  // namespace
