// The decode, parse and clean-call commands of the built program.
#include <QProcess>
#include <gtest/gtest.h>

namespace {

struct CliRun { int exitCode; QByteArray out, err; };

// A run that does not end in time fails here and is killed when `p` goes.
CliRun run(const QStringList& args) {
    QProcess p;
    p.start(QStringLiteral(PX_CLI), args);
    if (!p.waitForFinished(30000)) ADD_FAILURE() << "timed out: " << args.join(u' ').toStdString();
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, p.readAllStandardOutput(), p.readAllStandardError()};
}

QString fixture(const char* file) { return QStringLiteral(PX_SOURCE_DIR "/tests/fixtures/pages/") + QLatin1String(file); }

TEST(CliDecode, PrintsThePlainTextWithCrLfLines) {
    CliRun r = run({"decode", fixture("callook/found.html")});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.out,
              "Callook.info About API\r\nW1XYZ\r\nShow Map\tJOHN A SMITH\r\n225 MAIN ST\r\nNEWINGTON, CT 06111\r\n"
              "License\r\nType:\tPERSON\r\nClass:\tEXTRA\r\nGrid Square:\tFN31pr\r\nLatitude:\t41.714775\r\n"
              "Longitude:\t-72.727260\r\nExpires:\t2031-05-14\r\n"
              "Data from the public licence database, refreshed daily.\r\n");
    r = run({"decode", fixture("qrzcq/accented-cp1252.html")});
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(r.out.contains("\r\nFrançoise Lefèvre\r\n12 rue de l’Église\r\n")) << r.out.constData();
}

TEST(CliParse, PrintsEveryFieldInReadingOrderAsJson) {
    struct Case { const char* service; const char* call; const char* file; const char* json; };
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
        const CliRun r = run({"parse", "--service", c.service, "--call", c.call, fixture(c.file), "--json"});
        EXPECT_EQ(r.exitCode, 0) << c.file;
        EXPECT_EQ(r.out, QByteArray(c.json) + '\n') << c.file;
    }
}

TEST(CliParse, RejectsBadArguments) {
    const QString file = fixture("qrz/found.html");
    struct Case { QStringList args; const char* message; };
    for (const Case& c : {Case{{"--call", "DL1ABC", file}, "parse needs --service N"},
                          Case{{"--service", "two", "--call", "DL1ABC", file}, "--service takes 1 to 5"},
                          Case{{"--service", "0", "--call", "DL1ABC", file}, "--service takes 1 to 5"},
                          Case{{"--service", "6", "--call", "DL1ABC", file}, "--service takes 1 to 5"},
                          Case{{"--service", "65538", "--call", "DL1ABC", file}, "--service takes 1 to 5"},
                          Case{{"--service", "2", file}, "parse needs --call CALL"},
                          Case{{"--service", "2", "--call", "DL1ABC"}, "parse needs one file"},
                          Case{{"--service", "2", "--call", "DL1ABC", file, "--miles"}, "parse does not take --miles"}}) {
        const CliRun r = run(QStringList{"parse"} + c.args);
        EXPECT_EQ(r.exitCode, 2) << c.message;
        EXPECT_EQ(r.err, QByteArray("pxcallsigns: ") + c.message + "\nTry 'pxcallsigns --help'.\n");
        EXPECT_EQ(r.out, "") << c.message;
    }
    const CliRun missing = run({"parse", "--service", "2", "--call", "DL1ABC", fixture("qrz/none.html")});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(missing.err.startsWith("pxcallsigns: cannot read ")) << missing.err.constData();
}

TEST(CliCleanCall, PrintsTheCallOrFails) {
    const CliRun good = run({"clean-call", " ea8/smØabc/p "});
    EXPECT_EQ(good.exitCode, 0);
    EXPECT_EQ(good.out, "SM0ABC\n");
    const CliRun bad = run({"clean-call", "DL1ABCDE"});
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_EQ(bad.out, "");
}

}  // namespace
