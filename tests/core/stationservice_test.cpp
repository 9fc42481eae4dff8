// From a call-book page to the kept record: what the station service writes into the call-sign
// file for the pages the services send, and what it leaves alone.
#include "app/picturecache.h"
#include "app/stationservice.h"
#include "db/calldatabase.h"
#include "db/storestation.h"
#include "lookup/htmldecode.h"
#include "lookup/uclookup.h"
#include "testutil.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

QByteArray recordBytes(const QStringList& fields) {
    CallRecord r;
    for (int f = 0; f < CallRecord::kFieldCount; ++f) r.setField(CallField(f), fields.value(f));
    return QByteArray(r.bytes().data(), CallRecord::kSize);
}

class StationServiceTest : public testing::Test {
protected:
    QTemporaryDir data;
    QByteArray buffer;
    ucLookUp control{buffer, LookupHosts{}};
    QString dataPath = data.path();
    QString file = data.path() + "/Norvane-DB.db";
    StationService stations{control, dataPath};

    // The QRZ page of the fixtures as the control holds it after a download.
    void arrive(const char* page) {
        control.setDatabase(2);
        control.PageText = lookup::pageToText(testutil::readFile(QString(PX_SOURCE_DIR "/tests/fixtures/pages/qrz/") + page + ".html"));
    }
};

TEST_F(StationServiceTest, KeepsWhatThePageGivesAndAPositionTheFileKnows) {
    const QStringList hans{"DL1ABC", "Hans M\u00fcller", "Musterstra\u00dfe 12", "10115 Berlin", "Germany"};
    struct Case {
        const char* what;
        const char* page;
        QByteArray before;        // the file before the page arrived
        QByteArray after;         // the file after it
        double lat, lon;          // the station's position as shown
        bool fromFile;
    };
    const Case cases[] = {
        {"a new station with its position", "found", {}, recordBytes(hans + QStringList{"52.52", "13.405", "A", "1961"}), 52.52, 13.405, false},
        {"a known station updated in place", "found", recordBytes({"AA1AA"}) + recordBytes({"DL1ABC", "Old"}) + recordBytes({"ZZ9ZZ"}),
         recordBytes({"AA1AA"}) + recordBytes(hans + QStringList{"52.52", "13.405", "A", "1961"}) + recordBytes({"ZZ9ZZ"}),
         52.52, 13.405, false},
        {"no position on the page: the typed one stays", "noposition",
         recordBytes({"DL1ABC", "Hans", "", "", "", "51.5000", "-0.25"}),
         recordBytes(hans + QStringList{"51.5000", "-0.25", "A", "1961"}), 51.5, -0.25, true},
        {"no position anywhere", "noposition", recordBytes({"DL1ABC", "Hans", "", "", "", "0", "0"}),
         recordBytes(hans + QStringList{"0", "0", "A", "1961"}), 0, 0, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        testutil::writeFile(file, c.before);
        arrive(c.page);
        const TakenPage taken = stations.Take("DL1ABC");
        ASSERT_TRUE(taken.station);
        EXPECT_TRUE(taken.stored.written) << taken.stored.written.message().toStdString();
        EXPECT_EQ(testutil::readFile(file), c.after);
        EXPECT_EQ(taken.station->lat, c.lat);
        EXPECT_EQ(taken.station->lon, c.lon);
        EXPECT_EQ(taken.positionFromFile, c.fromFile);
        EXPECT_EQ(taken.stored.appended, c.before.isEmpty());
    }
}

TEST_F(StationServiceTest, PagesWithoutAStationKeepNothing) {
    const QByteArray before = recordBytes({"DL1ABC", "Hans", "", "", "", "51.5", "-0.25"});
    for (const auto& [page, refusal] : {std::pair{"notfound", std::optional(lookup::FieldEvent::CallNotFound)},
                                        {"login", std::optional(lookup::FieldEvent::LoginRequired)}}) {
        SCOPED_TRACE(page);
        testutil::writeFile(file, before);
        arrive(page);
        const TakenPage taken = stations.Take("DL1ABC");
        EXPECT_FALSE(taken.station);
        EXPECT_EQ(taken.refusal, refusal);
        EXPECT_EQ(testutil::readFile(file), before);
    }
}

TEST_F(StationServiceTest, AFileThatCannotBeWrittenSaysWhy) {
    testutil::writeFile(file, recordBytes({"ZZ9ZZ"}));
    ASSERT_TRUE(QDir(data.path()).mkdir("temp.db"));  // the new file cannot be written beside it
    arrive("found");
    const TakenPage taken = stations.Take("DL1ABC");
    ASSERT_TRUE(taken.station);  // shown all the same
    EXPECT_FALSE(taken.stored.written);
    EXPECT_FALSE(taken.stored.written.message().isEmpty());
    EXPECT_EQ(testutil::readFile(file), recordBytes({"ZZ9ZZ"}));
}

TEST(StoreRecordTest, ACallLongerThanItsFieldIsUpdatedNotAddedAgain) {
    QTemporaryDir dir;
    CallDatabase db(dir.path() + "/Norvane-DB.db");
    for (const char* name : {"First", "Second"}) {
        RecordFields record;
        record.call = " VK2ABCD ";
        record.name = name;
        const StoreOutcome stored = StoreRecord(db, record);
        EXPECT_TRUE(stored.written);
        EXPECT_EQ(stored.appended, QString(name) == "First");
    }
    EXPECT_EQ(testutil::readFile(db.filePath()), recordBytes({"VK2ABC", "Second"}));
}

TEST(PictureCacheTest, OnlyPicturesAreKept) {
    struct Case { QByteArray bytes; bool picture; };
    const Case cases[] = {
        {QByteArray("\xFF\xD8\xFF\xE0", 4) + "JFIF", true},
        {QByteArray("\x89PNG\r\n\x1A\n\0\0", 10), true},
        {"GIF87a;", true},
        {"GIF89a;", true},
        {QByteArray("BM\x36\0", 4), true},
        {"<!DOCTYPE html><html>No picture</html>", false},
        {"", false},
        {QByteArray("\xFF\xD8", 2), false},
        {"BM", false},
        {"GIF88a;", false},
    };
    QTemporaryDir dir;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.bytes.toHex().toStdString());
        EXPECT_EQ(LooksLikePicture(c.bytes), c.picture);
        const QString cache = PictureCachePath(dir.path(), "G4ABC");
        QFile::remove(cache);
        EXPECT_EQ(StorePictureInCache(dir.path(), "G4ABC", c.bytes), c.picture);
        EXPECT_EQ(QFile::exists(cache), c.picture);
        if (c.picture) {
            EXPECT_EQ(testutil::readFile(cache), c.bytes);
        }
    }
}

}  // namespace
