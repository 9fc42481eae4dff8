#include "testutil.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <gtest/gtest.h>

using namespace testutil;

namespace {

struct CliRun { int status; QString out; QString err; };

CliRun cli(const QStringList& args) {
    QProcess p;
    p.start(QStringLiteral(PX_CLI), args);
    p.waitForFinished(30000);
    return {p.exitCode(), QString::fromUtf8(p.readAllStandardOutput()), QString::fromUtf8(p.readAllStandardError())};
}

TEST(CliTest, DatabaseCommands) {
    QTemporaryDir dir;
    const auto db = [&](const QStringList& args) { return cli(QStringList{"db"} + args + QStringList{"--data", dir.path()}); };
    EXPECT_EQ(db({"count"}).out, "0\n");
    CliRun r = db({"add", "--call", "w1aw", "--name", "Hiram", "--lat", "41.7", "--year", "1914"});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(r.out, "added w1aw\n");
    EXPECT_EQ(db({"add", "--call", "G4ABC", "--name", "Alice", "--ctry", "England"}).out, "added G4ABC\n");
    EXPECT_EQ(db({"add", "--call", "G4ABC", "--name", "Alice B"}).out, "updated G4ABC\n");
    EXPECT_EQ(db({"list"}).out, "G4ABC\nw1aw\n");
    EXPECT_EQ(db({"count"}).out, "2\n");
    EXPECT_EQ(readFile(dir.path() + "/Norvane-DB.db").left(167), recordBytes("G4ABC", "Alice B"));

    r = db({"find", "w1aw", "--json"});
    EXPECT_EQ(r.status, 0);
    const QJsonObject o = QJsonDocument::fromJson(r.out.toUtf8()).object();
    EXPECT_EQ(o["record"].toInt(), 2);
    for (const auto& [key, value] : {std::pair{"Name", "Hiram"}, {"Lat", "41.7"}, {"YearBorn", "1914"}, {"Ctry", ""}})
        EXPECT_EQ(o[key].toString(), value) << key;

    r = db({"find", "K1ZZZ"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "K1ZZZ: not found\n");
    EXPECT_EQ(db({"delete", "G4ABC"}).status, 0);
    EXPECT_EQ(db({"list"}).out, "w1aw\n");
}

TEST(CliTest, DistanceAndGrid) {
    EXPECT_EQ(cli({"distance", "51.5072", "-0.1276", "40.7128", "-74.006"}).out, QString::fromUtf8("5580 km 288\u00b0\n"));
    EXPECT_EQ(cli({"distance", "0", "0", "0.903", "0", "--miles", "--json"}).out, "{\"azimuth\":0,\"distance\":62,\"unit\":\"mi\"}\n");
    EXPECT_EQ(cli({"distance", "0", "0", "x", "0"}).status, 2);
    EXPECT_EQ(cli({"grid", "0", "-0.5"}).out, "IJ90ra\n");
    EXPECT_EQ(cli({"grid", "52.52", "13.405"}).out, "JO62qm\n");
    EXPECT_EQ(cli({"grid", "x", "y"}).out, "JJ00aa\n");  // non-numbers read as 0, as in the window
    const CliRun r = cli({"grid", "90.5", "0"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
}

TEST(CliTest, HelpVersionAndUsageErrors) {
    EXPECT_TRUE(cli({"--help"}).out.contains("db find CALL [--json]"));
    EXPECT_TRUE(cli({"--version"}).out.startsWith("pxcallsigns "));
    struct Case { QStringList args; const char* message; };
    for (const Case& c : {Case{{"db"}, "db needs a command"}, Case{{"db", "frob"}, "unknown db command frob"},
                          Case{{"db", "find"}, "db find needs one call sign"},
                          Case{{"db", "add", "--name", "x"}, "db add needs --call"},
                          Case{{"db", "add", "--call", "A", "--colour", "x"}, "unknown option --colour"},
                          Case{{"db", "find", "--data"}, "--data needs a value"}}) {
        const CliRun r = cli(c.args);
        EXPECT_EQ(r.status, 2) << c.message;
        EXPECT_TRUE(r.err.startsWith(QString("pxcallsigns: ") + c.message)) << r.err.toStdString();
    }
}

}  // namespace
