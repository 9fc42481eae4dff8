// pxcallsigns lookup against the local call-book stand-in: the call-sign file first, then the
// service, and what the service found kept in the file.
#include "../core/testutil.h"
#include "app/settings.h"
#include "callbookserver.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <gtest/gtest.h>

namespace {

struct Result { int status; QJsonObject json; QString err; };

Result lookup(const QStringList& args) {
    QProcess p;
    p.start(QStringLiteral(PX_CLI), QStringList{"lookup", "--json"} + args);
    p.waitForFinished(30000);
    return {p.exitCode(), QJsonDocument::fromJson(p.readAllStandardOutput()).object(),
            QString::fromUtf8(p.readAllStandardError())};
}

class CliLookupTest : public testing::Test {
protected:
    CallbookServer server;
    QTemporaryDir data;
    void SetUp() override {
        ASSERT_GT(server.port(), 0);
        for (const char* service : {"eHam", "QRZ", "QRZCQ", "Callook", "HamCall"})
            settings::SaveSetting({"Hosts", service}, server.url("/" + QString(service).toLower()));
        settings::SaveSetting({"Hosts", "Pictures"}, server.url("/pictures"));
        settings::SaveSetting({"Hosts", "TimeoutMs"}, "2000");
        settings::SaveSetting(settings::kServiceIndex, "1");
    }
};

TEST_F(CliLookupTest, FromTheServiceThenFromTheFile) {
    Result r = lookup({"dl1abc/p", "--data", data.path()});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(r.json["source"].toString(), "QRZ");
    // Every field in CallField order, kept as the exact record bytes (Windows-1252).
    const QStringList fields{"DL1ABC", "Hans M\u00fcller", "Musterstra\u00dfe 12", "10115 Berlin", "Germany",
                             "52.52",  "13.405",           "A",                  "1961"};
    CallRecord expected;
    for (int f = 0; f < CallRecord::kFieldCount; ++f) expected.setField(CallField(f), fields[f]);
    EXPECT_EQ(testutil::readFile(data.path() + "/Norvane-DB.db"), QByteArray(expected.bytes().data(), CallRecord::kSize));
    for (const auto& [key, f] : {std::pair{"Name", CallField::Name}, {"Lat", CallField::Lat}, {"Lon", CallField::Lon},
                                 {"Class", CallField::Class}, {"YearBorn", CallField::YearBorn}})
        EXPECT_EQ(r.json[key].toString(), fields[int(f)]) << key;
    // The station's picture in the cache, byte for byte as the server sent it.
    EXPECT_EQ(testutil::readFile(data.path() + "/images/qrzImages/DL1ABC.jpg"),
              testutil::readFile(PX_SOURCE_DIR "/tests/fixtures/pictures/dl1abc.jpg"));

    // The second time the file answers, even with the service gone.
    r = lookup({"DL1ABC", "--data", data.path(), "--service", "5"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.json["source"].toString(), "database");
}

TEST_F(CliLookupTest, NotFoundLoginAndUnreachable) {
    Result r = lookup({"XX9XYZ", "--data", data.path(), "--service", "3"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, "XX9XYZ: not found on QRZCQ\n");
    r = lookup({"ZZ500", "--data", data.path(), "--service", "4"});
    EXPECT_EQ(r.status, 3);
    EXPECT_EQ(r.err, "pxcallsigns: Callook could not be reached\n");
    EXPECT_EQ(testutil::readFile(data.path() + "/Norvane-DB.db"), QByteArray()) << "nothing kept from a failure";
}

// Refused before anything is looked up or written.
TEST_F(CliLookupTest, BadArguments) {
    const QString missing = data.path() + "/none";
    struct Case { QStringList args; QString message; };
    for (const Case& c : {Case{{"nocall", "--data", data.path()}, "no usable call sign: nocall"},
                          Case{{"DL1ABCDE/P", "--data", data.path()}, "no usable call sign: DL1ABCDE/P"},
                          Case{{"DL1ABC", "--data", data.path(), "--service", "6"}, "--service takes 1 to 5"},
                          Case{{"DL1ABC", "--data", missing}, "no such folder: " + missing},
                          Case{{"DL1ABC", "--data", data.path(), "--miles"}, "lookup does not take --miles"}}) {
        const Result r = lookup(c.args);
        EXPECT_EQ(r.status, 2) << c.message.toStdString();
        EXPECT_EQ(r.err, "pxcallsigns: " + c.message + "\nTry 'pxcallsigns --help'.\n");
    }
    settings::SaveSetting(settings::kServiceIndex, "7");  // no such service: said so, not a crash
    const Result r = lookup({"DL1ABC", "--data", data.path()});
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "pxcallsigns: the settings choose no service (DataBase/Index 7); give --service\n"
                     "Try 'pxcallsigns --help'.\n");
    EXPECT_FALSE(QFile::exists(data.path() + "/Norvane-DB.db"));
}

}  // namespace
