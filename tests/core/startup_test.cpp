#include "app/appcfg.h"
#include "app/datafolder.h"
#include "app/settings.h"
#include "app/startup.h"
#include "testutil.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <gtest/gtest.h>

#include <vector>

using namespace testutil;

namespace {

QString configFile() { return qEnvironmentVariable("XDG_CONFIG_HOME") + "/PX Callsigns.conf"; }

TEST(SettingsTest, DefaultsKeysAndBadValues) {
    QFile::remove(configFile());
    EXPECT_EQ(settings::GetInt16Setting(settings::kUnit, 1), 1);
    EXPECT_EQ(settings::GetDoubleSetting(settings::kMyLatitude, 0), 0.0);
    EXPECT_EQ(settings::GetSetting(settings::kPictaroInstall, "dflt"), "dflt");

    settings::SaveSetting(settings::kUnit, "0");
    settings::SaveSetting(settings::kServiceIndex, "3");
    settings::SaveSetting(settings::kMyLatitude, "51.5");
    settings::SaveSetting(settings::kPictaroInstall, "C:\\Program Files\\Pictaro\\");
    // The store is a plain INI file: sections and keys exactly as other versions wrote them.
    const QString ini = QString::fromUtf8(readFile(configFile()));
    EXPECT_TRUE(ini.contains("[Mi]\nKm=0\n")) << ini.toStdString();
    EXPECT_TRUE(ini.contains("[DataBase]\nIndex=3\n"));
    EXPECT_TRUE(ini.contains("[My]\nlatitude=51.5\n"));
    EXPECT_EQ(settings::GetSetting(settings::kPictaroInstall, ""), "C:\\Program Files\\Pictaro\\");
    EXPECT_EQ(settings::GetInt16Setting(settings::kUnit, 1), 0);
    EXPECT_EQ(settings::GetDoubleSetting(settings::kMyLatitude, 0), 51.5);

    for (const char* bad : {"abc", "70000", "", "1e400"}) {
        settings::SaveSetting(settings::kServiceIndex, bad);
        EXPECT_EQ(settings::GetInt16Setting(settings::kServiceIndex, 1), 1) << bad;
    }
    settings::SaveSetting(settings::kServiceIndex, "2.5");
    EXPECT_EQ(settings::GetInt16Setting(settings::kServiceIndex, 1), 2) << "halves round to even";
    QFile::remove(configFile());
}

TEST(SettingsTest, AnUnchangedValueIsNotWrittenAgain) {
    QFile::remove(configFile());
    settings::SaveSetting(settings::kServiceIndex, "3");
    // A line as the file's writer would never put it: any rewrite of the file changes it.
    QFile file(configFile());
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write("[Hand]\nkey  =  as typed\n");
    file.close();
    const QByteArray typed = readFile(configFile());

    settings::SaveSetting(settings::kServiceIndex, "3");
    EXPECT_EQ(readFile(configFile()), typed);
    settings::SaveSetting(settings::kServiceIndex, "4");
    const QString rewritten = QString::fromUtf8(readFile(configFile()));
    EXPECT_TRUE(rewritten.contains("[DataBase]\nIndex=4\n")) << rewritten.toStdString();
    EXPECT_FALSE(rewritten.contains("key  =")) << "the file was written anew";
    // An empty value is a value: stored once, then left alone.
    settings::SaveSetting(settings::kPictaroInstall, "");
    EXPECT_TRUE(QString::fromUtf8(readFile(configFile())).contains("[Pictaro]\nInstall=\n"));
    QFile::remove(configFile());
}

TEST(AppCfgTest, LanguageDigitTable) {
    struct Case {
        const char* line;
        const char* language;
    };
    for (const Case& c : {Case{"0", "English"}, Case{"1", "French"}, Case{"2", "German"}, Case{"3", "3"},
                          Case{"4", "Japanese"}, Case{"5", "Dutch"}, Case{"6", "6"}, Case{"7", "Polish"},
                          Case{"8", "Spanish"}, Case{"9", "Russian"}, Case{"12", "12"}, Case{"", ""},
                          Case{"x", "x"}, Case{" 0", " 0"}}) {
        EXPECT_EQ(LanguageFromAppCfg(c.line), c.language) << c.line;
    }
}

TEST(AppCfgTest, ReadsLinesOneAndFiftyNine) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/app.cfg";
    QStringList lines;
    for (int i = 1; i <= 70; ++i) lines << QString("line%1").arg(i);
    lines[0] = "PA3XYZ";
    lines[58] = "5";
    for (const char* eol : {"\r\n", "\n", "\r"}) {
        writeFile(path, lines.join(eol).toLatin1());
        const auto cfg = ReadAppCfg(path);
        ASSERT_TRUE(cfg) << cfg.message().toStdString();
        EXPECT_EQ(cfg->myCall, "PA3XYZ");
        EXPECT_EQ(cfg->language, "Dutch");
    }
    writeFile(path, lines.mid(0, 58).join("\r\n").toLatin1() + "\r\n");
    EXPECT_EQ(ReadAppCfg(path).message(), "Input past end of file\r\n" + path);
    EXPECT_EQ(ReadAppCfg(dir.path() + "/none.cfg").message(), "File not found\r\n" + dir.path() + "/none.cfg");
}

TEST(StartupTest, MapCatalogueKeepsNamesEndingInMapBeforeTheExtension) {
    QTemporaryDir dir;
    QDir(dir.path()).mkdir("Maps");
    for (const char* name : {"World Map.jpg", "world map.jpg", "EuropeMap.gif", "Map.jpg", "Maps.jpg", "Map",
                             "ab", "Asia Map.jpeg", "USA Map.JPG"})
        writeFile(dir.path() + "/Maps/" + name, "x");
    QDir(dir.path() + "/Maps").mkdir("Dir Map.jpg");
    EXPECT_EQ(MapCatalogue(dir.path()), (QStringList{"EuropeMap.gif", "Map.jpg", "USA Map.JPG", "World Map.jpg"}));
    EXPECT_TRUE(MapCatalogue(dir.path() + "/nowhere").isEmpty());
}

QString noRunningPictaro(const QString&) { return {}; }
QString runningPictaroFolder;
QString runningPictaro(const QString& name) { return name == "Pictaro.exe" ? runningPictaroFolder : QString(); }

TEST(StartupTest, PictaroFolderResolution) {
    QTemporaryDir installed, running;
    const QString inst = installed.path() + "/", run = running.path() + "/";
    runningPictaroFolder = run;

    // No Pictaro.exe in the saved folder and nothing running: the failure names "app.cfg".
    PictaroFolder r = ResolvePictaroFolder(inst, &noRunningPictaro);
    EXPECT_EQ(r.failure, "File not found\r\napp.cfg");

    // Running, but its folder has no app.cfg.
    r = ResolvePictaroFolder(inst, &runningPictaro);
    EXPECT_EQ(r.failure, "File not found\r\n" + run + "app.cfg");

    // Running with app.cfg: used and to be stored.
    writeFile(run + "app.cfg", "x");
    r = ResolvePictaroFolder(inst, &runningPictaro);
    EXPECT_TRUE(r.failure.isEmpty());
    EXPECT_EQ(r.folder, run);
    EXPECT_TRUE(r.store);

    // Pictaro.exe in the saved folder: used as it is, app.cfg not checked here.
    writeFile(inst + "Pictaro.exe", "x");
    r = ResolvePictaroFolder(inst, &runningPictaro);
    EXPECT_EQ(r.folder, inst);
    EXPECT_FALSE(r.store);
    EXPECT_TRUE(r.failure.isEmpty());
}

TEST(StartupTest, OwnPositionFallsBackToTheOwnRecord) {
    QTemporaryDir dir;
    const QString db = dir.path() + "/Norvane-DB.db";
    CallRecord r;
    r.setField(CallField::Call, "PA3XYZ");
    r.setField(CallField::Name, "Jan");
    r.setField(CallField::Lat, "52.0907");
    r.setField(CallField::Lon, "5.1214*");
    writeFile(db, QByteArray(r.bytes().data(), CallRecord::kSize));
    struct Case {
        double lat, lon;
        const char* call;
        double wantLat, wantLon;
    };
    for (const Case& c : {Case{0, 0, "PA3XYZ", 52.0907, 5.1214}, Case{0, 4.5, "PA3XYZ", 0, 4.5},
                          Case{1.5, 0, "PA3XYZ", 1.5, 0}, Case{0, 0, "G4ABC", 0, 0}}) {
        const Position p = OwnPosition(c.lat, c.lon, c.call, db);
        EXPECT_DOUBLE_EQ(p.lat, c.wantLat) << c.call;
        EXPECT_DOUBLE_EQ(p.lon, c.wantLon) << c.call;
    }
}

// Each case lays out a tree under a temporary root: folders to make (a trailing "=" makes a file of
// that name instead), the executable's folder, and the default folder expected ("" for none).
TEST(DataFolderTest, DefaultFolderIsFoundFromTheExecutablesFolder) {
    struct Case {
        std::initializer_list<const char*> made;
        const char* appDir;
        const char* want;
    };
    const Case cases[] = {
        {{"usr/bin", "usr/share/pxcallsigns/Norvane"}, "usr/bin", "usr/share/pxcallsigns/Norvane"},
        {{"build/share/Norvane"}, "build", "build/share/Norvane"},
        // An installed tree wins over a build tree's folder beside the executable.
        {{"opt/px/bin/share/Norvane", "opt/px/share/pxcallsigns/Norvane"}, "opt/px/bin", "opt/px/share/pxcallsigns/Norvane"},
        // The executable's folder is taken as it is given, "." and ".." included.
        {{"a/b/bin", "a/b/share/pxcallsigns/Norvane"}, "a/b/bin/./../bin", "a/b/share/pxcallsigns/Norvane"},
        {{"usr/bin", "usr/share/pxcallsigns/Norvane="}, "usr/bin", ""},
        {{"usr/bin/share/Norvane=", "usr/share/pxcallsigns/Norvane="}, "usr/bin", ""},
        {{"usr/bin", "usr/share/pxcallsigns/norvane", "usr/share/Norvane", "usr/bin/Norvane"}, "usr/bin", ""},
        {{"build/share/Norvane", "share/pxcallsigns/Norvane="}, "build", "build/share/Norvane"},
        {{}, "missing/bin", ""},
    };
    for (const Case& c : cases) {
        QTemporaryDir root;
        QString layout;
        for (QString made : c.made) {
            layout += made + u' ';
            if (!made.endsWith(u'=')) {
                ASSERT_TRUE(QDir(root.path()).mkpath(made)) << made.toStdString();
                continue;
            }
            made.chop(1);
            QDir(root.path()).mkpath(QFileInfo(made).path());
            writeFile(root.path() + "/" + made, "not a folder");
        }
        const QString want = *c.want ? root.path() + "/" + c.want : QString();
        EXPECT_EQ(DefaultDataFolder(root.path() + "/" + c.appDir), want) << c.appDir << " in " << layout.toStdString();
    }
}

TEST(DataFolderTest, IconBitmapsBesideTheExecutable) {
    const QString id = "org.example.App";
    struct Case {
        std::vector<const char*> files;  // made under the root, each holding a byte
        const char* appDir;
        const char* want;  // "size:path" pairs, smallest first, space-separated
    };
    const Case cases[] = {
        // An installed tree, sizes in any order of their folders; the scalable drawing is no bitmap.
        {{"usr/share/icons/hicolor/48x48/apps/org.example.App.png", "usr/share/icons/hicolor/16x16/apps/org.example.App.png",
          "usr/share/icons/hicolor/256x256/apps/org.example.App.png", "usr/share/icons/hicolor/scalable/apps/org.example.App.svg"},
         "usr/bin",
         "16:usr/share/icons/hicolor/16x16/apps/org.example.App.png 48:usr/share/icons/hicolor/48x48/apps/org.example.App.png "
         "256:usr/share/icons/hicolor/256x256/apps/org.example.App.png"},
        // The build tree's, found only when the installed tree has none.
        {{"build/icons/hicolor/32x32/apps/org.example.App.png"}, "build", "32:build/icons/hicolor/32x32/apps/org.example.App.png"},
        {{"x/icons/hicolor/32x32/apps/org.example.App.png", "share/icons/hicolor/64x64/apps/org.example.App.png"},
         "x", "64:share/icons/hicolor/64x64/apps/org.example.App.png"},
        // Folders that are no square size, another program's icon, another kind of file: none of ours.
        {{"b/icons/hicolor/48x48@2/apps/org.example.App.png", "b/icons/hicolor/16x32/apps/org.example.App.png",
          "b/icons/hicolor/0x0/apps/org.example.App.png", "b/icons/hicolor/x/apps/org.example.App.png",
          "b/icons/hicolor/-8x-8/apps/org.example.App.png", "b/icons/hicolor/032x032/apps/org.example.App.png",
          "b/icons/hicolor/24x24/apps/org.example.Other.png", "b/icons/hicolor/22x22/apps/org.example.App.svg",
          "b/icons/hicolor/12x12/org.example.App.png"},
         "b", ""},
        {{}, "nothing/bin", ""},
    };
    for (const Case& c : cases) {
        QTemporaryDir root;
        QDir(root.path()).mkpath(c.appDir);  // the running program's own folder
        for (const char* file : c.files) {
            QDir(root.path()).mkpath(QFileInfo(file).path());
            writeFile(root.path() + "/" + file, "p");
        }
        QStringList got;
        for (const IconFile& icon : ProgramIconFiles(root.path() + "/" + c.appDir, id))
            got << QString::number(icon.size) + ":" + QDir(root.path()).relativeFilePath(icon.path);
        EXPECT_EQ(got.join(' '), QString(c.want)) << c.appDir;
    }
}

TEST(DataFolderTest, SeedsAMissingFolderAndNeverOverwrites) {
    QTemporaryDir defaults, home;
    QDir(defaults.path()).mkpath("Languages");
    writeFile(defaults.path() + "/Languages/Norvane_English.Language", "lang");
    writeFile(defaults.path() + "/nicknames.txt", "G4ABC*Al");
    const QString target = home.path() + "/share/Norvane";
    ASSERT_TRUE(SeedDataFolder(defaults.path(), target));
    EXPECT_EQ(readFile(target + "/Languages/Norvane_English.Language"), "lang");
    EXPECT_EQ(readFile(target + "/nicknames.txt"), "G4ABC*Al");
    EXPECT_FALSE(QFileInfo::exists(target + ".seeding"));
    // The whole layout, though the default folder has no maps and no picture cache.
    for (const char* folder : {"Maps", "images/qrzImages", "Languages"}) EXPECT_TRUE(QFileInfo(target + "/" + folder).isDir()) << folder;

    writeFile(target + "/nicknames.txt", "mine");
    QFile::remove(target + "/Languages/Norvane_English.Language");
    QDir(target + "/images").removeRecursively();
    ASSERT_TRUE(SeedDataFolder(defaults.path(), target));
    EXPECT_EQ(readFile(target + "/nicknames.txt"), "mine");
    EXPECT_FALSE(QFileInfo::exists(target + "/Languages/Norvane_English.Language")) << "an existing folder's files are left alone";
    EXPECT_TRUE(QFileInfo(target + "/images/qrzImages").isDir()) << "a folder of the layout it lacks is made";

    // A later release ships maps: the ones the folder lacks are added, the user's stay as they are.
    QDir(defaults.path()).mkpath("Maps");
    writeFile(defaults.path() + "/Maps/World Map.jpg", "shipped world");
    writeFile(defaults.path() + "/Maps/Europe Map.jpg", "shipped europe");
    writeFile(target + "/Maps/Europe Map.jpg", "my europe");
    writeFile(target + "/Maps/Home Map.jpg", "my home");
    ASSERT_TRUE(SeedDataFolder(defaults.path(), target));
    EXPECT_EQ(readFile(target + "/Maps/World Map.jpg"), "shipped world");
    EXPECT_EQ(readFile(target + "/Maps/Europe Map.jpg"), "my europe");
    EXPECT_EQ(readFile(target + "/Maps/Home Map.jpg"), "my home");
    EXPECT_EQ(QDir(target + "/Maps").entryList(QDir::Files).size(), 3);
}

}  // namespace
