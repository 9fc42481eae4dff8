// pxcallsigns lookup against the local call-book stand-in: the call-sign file first, then the
// service, and what the service found kept in the file.
#include "../core/testutil.h"
#include "app/settings.h"
#include "callbookserver.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <gtest/gtest.h>

namespace {

struct Result {
    int status;
    QJsonObject json;
    QString err;
};

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
        const char* services[] = {"eHam", "QRZ", "QRZCQ", "Callook", "HamCall"};
        const char* prefixes[] = {"/eham", "/qrz", "/qrzcq", "/callook", "/hamcall"};
        for (int i = 0; i < 5; ++i) settings::SaveSetting({"Hosts", services[i]}, server.url(prefixes[i]));
        settings::SaveSetting({"Hosts", "TimeoutMs"}, "2000");
        settings::SaveSetting(settings::kServiceIndex, "1");
    }
};

TEST_F(CliLookupTest, FromTheServiceThenFromTheFile) {
    Result r = lookup({"dl1abc/p", "--data", data.path()});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(r.json["source"].toString(), "QRZ");
    EXPECT_EQ(r.json["Name"].toString(), QString::fromUtf8("Hans M\u00fcller"));
    EXPECT_EQ(r.json["Lat"].toString(), "52.52");
    EXPECT_EQ(r.json["Lon"].toString(), "13.405");
    EXPECT_EQ(r.json["Class"].toString(), "A");
    EXPECT_EQ(r.json["YearBorn"].toString(), "1961");

    // Kept: the exact record bytes, Windows-1252.
    CallRecord expected;
    expected.setField(CallField::Call, "DL1ABC");
    expected.setField(CallField::Name, QString::fromUtf8("Hans M\u00fcller"));
    expected.setField(CallField::Add1, QString::fromUtf8("Musterstra\u00dfe 12"));
    expected.setField(CallField::Add2, "10115 Berlin");
    expected.setField(CallField::Ctry, "Germany");
    expected.setField(CallField::Lat, "52.52");
    expected.setField(CallField::Lon, "13.405");
    expected.setField(CallField::Class, "A");
    expected.setField(CallField::YearBorn, "1961");
    EXPECT_EQ(testutil::readFile(data.path() + "/Norvane-DB.db"), QByteArray(expected.bytes().data(), 167));

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
    r = lookup({"nocall", "--data", data.path()});
    EXPECT_EQ(r.status, 2);
}

}  // namespace
