// The decode, parse and clean-call commands of the built program.
#include <QProcess>
#include <gtest/gtest.h>

namespace {

struct CliRun {
    int exitCode = -1;
    QByteArray out, err;
};

CliRun run(const QStringList& args) {
    QProcess p;
    p.start(QStringLiteral(PX_CLI), args);
    CliRun r;
    if (!p.waitForFinished(30000)) {
        p.kill();
        p.waitForFinished();
        ADD_FAILURE() << "timed out: " << args.join(u' ').toStdString();
        return r;
    }
    r.exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.out = p.readAllStandardOutput();
    r.err = p.readAllStandardError();
    return r;
}

QString fixture(const char* file) { return QStringLiteral(PX_SOURCE_DIR "/tests/fixtures/pages/") + QLatin1String(file); }

TEST(CliDecode, PrintsThePlainTextWithCrLfLines) {
    const CliRun r = run({QStringLiteral("decode"), fixture("callook/found.html")});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.out,
              "Callook.info About API\r\n"
              "W1XYZ\r\n"
              "Show Map\tJOHN A SMITH\r\n"
              "225 MAIN ST\r\n"
              "NEWINGTON, CT 06111\r\n"
              "License\r\n"
              "Type:\tPERSON\r\n"
              "Class:\tEXTRA\r\n"
              "Grid Square:\tFN31pr\r\n"
              "Latitude:\t41.714775\r\n"
              "Longitude:\t-72.727260\r\n"
              "Expires:\t2031-05-14\r\n"
              "Data from the public licence database, refreshed daily.\r\n");
}

TEST(CliDecode, DecodesTheDeclaredCharset) {
    const CliRun r = run({QStringLiteral("decode"), fixture("qrzcq/accented-cp1252.html")});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(r.out.contains("\r\nFrançoise Lefèvre\r\n12 rue de l’Église\r\n")) << r.out.constData();
}

TEST(CliParse, PrintsEveryFieldInReadingOrderAsJson) {
    struct Case {
        const char* service;
        const char* call;
        const char* file;
        const char* json;
    };
    const Case cases[] = {
        {"4", "W1XYZ", "callook/found.html",
         R"({"cName":"JOHN A SMITH","Add1":"225 MAIN ST","Add2":"NEWINGTON, CT 06111","ctry":"U.S.A.",)"
         R"("Latitude":41.714775,"Longitude":-72.72726,"Class":"EXTRA","PrevCall":"","DateOfBirth":"",)"
         R"("Grid":"FN31pr\r\n","WebAddress":"","events":[]})"},
        {"2", "DL1ABC", "qrz/login.html",
         R"({"cName":"","Add1":"","Add2":"","ctry":"","Latitude":0,"Longitude":0,"Class":"","PrevCall":"",)"
         R"("DateOfBirth":"","Grid":"","WebAddress":"","events":["LoginRequired"]})"},
        {"5", "LU1ABC", "hamcall/long.html",
         R"({"cName":"Ana Gómez","Add1":"Avenida de Mayo 1370","Add2":"C1085ABE Buenos Aires","ctry":"Argentina",)"
         R"("Latitude":-34.6037,"Longitude":-58.3816,"Class":"General","PrevCall":"","DateOfBirth":"1975",)"
         R"("Grid":"","WebAddress":"","events":[]})"},
    };
    for (const Case& c : cases) {
        const CliRun r = run({QStringLiteral("parse"), QStringLiteral("--service"), QLatin1String(c.service),
                           QStringLiteral("--call"), QLatin1String(c.call), fixture(c.file), QStringLiteral("--json")});
        EXPECT_EQ(r.exitCode, 0) << c.file;
        EXPECT_EQ(r.out, QByteArray(c.json) + '\n') << c.file;
    }
}

TEST(CliParse, RejectsBadArguments) {
    const QString file = fixture("qrz/found.html");
    EXPECT_EQ(run({QStringLiteral("parse"), QStringLiteral("--call"), QStringLiteral("DL1ABC"), file}).exitCode, 2);
    EXPECT_EQ(run({QStringLiteral("parse"), QStringLiteral("--service"), QStringLiteral("two"), QStringLiteral("--call"),
                   QStringLiteral("DL1ABC"), file})
                  .exitCode,
              2);
    EXPECT_EQ(run({QStringLiteral("parse"), QStringLiteral("--service"), QStringLiteral("2"), file}).exitCode, 2);
    const CliRun missing = run({QStringLiteral("parse"), QStringLiteral("--service"), QStringLiteral("2"),
                             QStringLiteral("--call"), QStringLiteral("DL1ABC"), fixture("qrz/none.html")});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(missing.err.startsWith("pxcallsigns: cannot read ")) << missing.err.constData();
}

TEST(CliCleanCall, PrintsTheCallOrFails) {
    const CliRun good = run({QStringLiteral("clean-call"), QStringLiteral(" ea8/smØabc/p ")});
    EXPECT_EQ(good.exitCode, 0);
    EXPECT_EQ(good.out, "SM0ABC\n");
    const CliRun bad = run({QStringLiteral("clean-call"), QStringLiteral("DL1ABCDE")});
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_EQ(bad.out, "");
}

}  // namespace
