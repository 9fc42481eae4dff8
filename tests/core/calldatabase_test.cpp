#include "db/calldatabase.h"
#include "testutil.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

#include <vector>

using namespace testutil;

namespace {

class CallDatabaseTest : public testing::Test {
protected:
    QTemporaryDir dir;
    QString path = dir.path() + "/Norvane-DB.db";
    CallDatabase db{path};

    void fill(const QString& call, const QString& name) {
        db.ClearRecord();
        db.CurrentRecord.setField(CallField::Call, call);
        db.CurrentRecord.setField(CallField::Name, name);
    }
    // The store sequence of the windows: find, clear, fill, then append + sort or update.
    void store(const QString& call, const QString& name) {
        const int32_t n = db.FindCallRecord(call);
        fill(call, name);
        if (n == 0) {
            ASSERT_TRUE(db.AppendRecord());
            ASSERT_TRUE(db.SortDatabase());
        } else {
            ASSERT_TRUE(db.UpdateRecord(n));
        }
    }
};

TEST(CallRecordTest, FieldsArePaddedCutAndEncodedInWindows1252) {
    CallRecord r;
    r.setField(CallField::Call, "G4ABCDEF");
    r.setField(CallField::Name, QString::fromUtf8("Jos\u00e9 \u20ac \u0141"));
    r.setField(CallField::YearBorn, "19");
    const QByteArray bytes(r.bytes().data(), CallRecord::kSize);
    EXPECT_EQ(bytes.left(6), QByteArray("G4ABCD"));
    EXPECT_EQ(bytes.mid(6, 25), QByteArray("Jos\xe9 \x80 ?                 "));
    EXPECT_EQ(bytes.mid(163, 4), QByteArray("19  "));
    EXPECT_EQ(bytes.mid(31, 132), QByteArray(132, ' '));
    EXPECT_EQ(r.Name(), QString::fromUtf8("Jos\u00e9 \u20ac ?                 "));
}

TEST_F(CallDatabaseTest, ExactBytesAfterAddUpdateDeleteSequence) {
    writeFile(path, {});
    store("W1AW", "Hiram");
    store("DL1AB", "Bernd");
    store("G4ABC", "Alice");
    EXPECT_EQ(readFile(path), recordBytes("DL1AB", "Bernd") + recordBytes("G4ABC", "Alice") + recordBytes("W1AW", "Hiram"));

    store("G4ABC", "Alice B");  // known call: updated in place
    EXPECT_EQ(readFile(path), recordBytes("DL1AB", "Bernd") + recordBytes("G4ABC", "Alice B") + recordBytes("W1AW", "Hiram"));

    ASSERT_TRUE(db.DeleteCallRecord("DL1AB "));
    EXPECT_EQ(readFile(path), recordBytes("G4ABC", "Alice B") + recordBytes("W1AW", "Hiram"));
    EXPECT_FALSE(QFileInfo::exists(dir.path() + "/temp.db"));

    ASSERT_TRUE(db.DeleteCallRecord("K9ZZZ"));  // absent: the same bytes again
    EXPECT_EQ(readFile(path), recordBytes("G4ABC", "Alice B") + recordBytes("W1AW", "Hiram"));
}

TEST_F(CallDatabaseTest, SortOrderIsBinaryOnTrimmedCalls) {
    // Digits before upper case before lower case; a call sorts before the longer calls it begins.
    writeFile(path, records({"g4abc", "G4ABC", "AB1C", "9A1A", "AB1", "  ZZ", "A"}));
    ASSERT_TRUE(db.SortDatabase());
    QStringList calls;
    db.FillCallList(calls);
    EXPECT_EQ(calls, (QStringList{"9A1A", "A", "AB1", "AB1C", "G4ABC", "ZZ", "g4abc"}));
}

TEST_F(CallDatabaseTest, SortKeepsTheCombSortOrderOfEqualCalls) {
    // Equal calls are not kept in file order: the comb sort's swaps decide, and the file must
    // come out exactly as they leave it (a stable sort would give 1, 2, 3 here).
    const QByteArray b1 = recordBytes("B", "1"), b2 = recordBytes("B", "2"), b3 = recordBytes("B", "3");
    writeFile(path, b1 + b2 + recordBytes("A", "a") + b3);
    ASSERT_TRUE(db.SortDatabase());
    // Gaps 3, 2, 1: only the gap-2 pass swaps (B1 with A).
    const QByteArray sorted = readFile(path);
    EXPECT_EQ(sorted.left(167), recordBytes("A", "a"));
    EXPECT_EQ(sorted.mid(167), b2 + b1 + b3);
}

TEST_F(CallDatabaseTest, SortLeavesAPartialTailWhereItIs) {
    writeFile(path, records({"B", "A"}) + QByteArray("tail"));
    ASSERT_TRUE(db.SortDatabase());
    EXPECT_EQ(readFile(path), records({"A", "B"}) + QByteArray("tail"));
}

TEST_F(CallDatabaseTest, TheTwoCountFormulasOnAPartialLastRecord) {
    // 10 whole records and 100 bytes: search, sort and list see 10, count and delete see 11.
    QByteArray bytes = records({"A0", "A1", "A2", "A3", "A4", "A5", "A6", "A7", "A8", "A9"});
    bytes += recordBytes("ZZ9").left(100);
    writeFile(path, bytes);
    EXPECT_EQ(db.CountRecords(), 11);
    QStringList calls;
    db.FillCallList(calls);
    EXPECT_EQ(calls.size(), 10);
    EXPECT_EQ(db.FindCallRecord("ZZ9"), 0);
    // Delete reads the partial record as an eleventh (its missing bytes as NUL) and writes it whole.
    ASSERT_TRUE(db.DeleteCallRecord("A5"));
    const QByteArray after = readFile(path);
    ASSERT_EQ(after.size(), 10 * 167);
    EXPECT_EQ(after.mid(9 * 167), recordBytes("ZZ9").left(100) + QByteArray(67, '\0'));

    // 83 extra bytes round down: count 10, and an append overwrites them.
    writeFile(path, records({"A", "B"}) + QByteArray(83, 'x'));
    EXPECT_EQ(db.CountRecords(), 2);
    fill("C", "Carl");
    ASSERT_TRUE(db.AppendRecord());
    EXPECT_EQ(readFile(path), records({"A", "B"}) + recordBytes("C", "Carl"));

    // 84 extra bytes round up: the append lands one record further, the gap filled with NUL.
    writeFile(path, records({"A"}) + QByteArray(84, 'x'));
    ASSERT_TRUE(db.AppendRecord());
    EXPECT_EQ(readFile(path), records({"A"}) + QByteArray(84, 'x') + QByteArray(83, '\0') + recordBytes("C", "Carl"));
}

TEST_F(CallDatabaseTest, FindCases) {
    writeFile(path, records({"AB1", "AB1C", "G4ABCD", "K1XYZ", "W1AW"}));
    struct Case {
        const char* key;
        int32_t expected;
    };
    for (const Case& c : {Case{"AB1", 1}, Case{"AB1C", 2}, Case{"G4ABCD", 3}, Case{"K1XYZ", 4}, Case{"W1AW", 5},
                          Case{"w1aw", 0}, Case{"AB", 0}, Case{"G4ABCDE", 0}, Case{"ZZ", 0}, Case{"", 0}}) {
        EXPECT_EQ(db.FindCallRecord(c.key), c.expected) << c.key;
        if (c.expected) {
            EXPECT_EQ(db.CurrentRecord.Name().trimmed(), QString("Op ") + c.key);
        } else {
            EXPECT_EQ(db.CurrentRecord, CallRecord()) << "cleared after a miss: " << c.key;
        }
    }
}

TEST_F(CallDatabaseTest, MissingAndEmptyFiles) {
    QStringList untouched{"keep"};
    EXPECT_EQ(db.CountRecords(), 0);
    db.FillCallList(untouched);
    EXPECT_EQ(untouched, QStringList{"keep"});
    fill("A", "x");
    EXPECT_TRUE(db.AppendRecord());
    EXPECT_TRUE(db.UpdateRecord(1));
    EXPECT_TRUE(db.DeleteCallRecord("A"));  // nothing to delete from: no error
    EXPECT_FALSE(QFileInfo::exists(path));

    // The search creates an empty file; on it even the empty key finds nothing.
    EXPECT_EQ(db.FindCallRecord(""), 0);
    EXPECT_TRUE(QFileInfo(path).isFile());
    EXPECT_EQ(QFileInfo(path).size(), 0);
    EXPECT_EQ(db.CurrentRecord, CallRecord());
    db.FillCallList(untouched);
    EXPECT_TRUE(untouched.isEmpty());
}

TEST_F(CallDatabaseTest, DeleteRemovesEveryCopyAndIgnoresAStaleTempFile) {
    // A temp.db left behind by an earlier run is longer than the new contents: none of its
    // records may come back.
    writeFile(dir.path() + "/temp.db", records({"OLD1", "OLD2", "OLD3", "OLD4", "OLD5"}));
    writeFile(path, records({"A", "B", "B", "C"}));
    ASSERT_TRUE(db.DeleteCallRecord("B"));
    EXPECT_EQ(readFile(path), records({"A", "C"}));
    EXPECT_FALSE(QFileInfo::exists(dir.path() + "/temp.db"));
}

TEST_F(CallDatabaseTest, AFailedWriteLeavesTheFileAsItWas) {
    writeFile(path, records({"B", "A"}));
    // A folder named temp.db cannot be opened as the temporary file.
    ASSERT_TRUE(QDir(dir.path()).mkdir("temp.db"));
    EXPECT_FALSE(db.SortDatabase());
    EXPECT_FALSE(db.lastError().isEmpty());
    fill("C", "x");
    EXPECT_FALSE(db.AppendRecord());
    EXPECT_EQ(readFile(path), records({"B", "A"}));
}

TEST_F(CallDatabaseTest, UpdateInsidePastTheEndAndBadNumbers) {
    const QByteArray tail(83, 'x');
    struct Case {
        QByteArray start;
        int32_t n;
        QByteArray expected;
    };
    const std::vector<Case> cases{
        {records({"A"}), 3, records({"A"}) + QByteArray(167, '\0') + recordBytes("C", "x")},
        {records({"A", "B"}) + tail, 2, records({"A"}) + recordBytes("C", "x") + tail},
        {records({"A", "B"}) + tail, 3, records({"A", "B"}) + recordBytes("C", "x")},
        {records({"A", "B", "D"}), 3, records({"A", "B"}) + recordBytes("C", "x")},
    };
    for (const Case& c : cases) {
        writeFile(path, c.start);
        fill("C", "x");
        EXPECT_FALSE(db.UpdateRecord(0));
        EXPECT_TRUE(db.UpdateRecord(c.n)) << c.n;
        EXPECT_EQ(readFile(path), c.expected) << c.n;
    }

    // A record inside the file is written where it stands: no temp.db is needed for it.
    writeFile(path, records({"A", "B"}));
    ASSERT_TRUE(QDir(dir.path()).mkdir("temp.db"));
    fill("B", "y");
    EXPECT_TRUE(db.UpdateRecord(2));
    EXPECT_EQ(readFile(path), records({"A"}) + recordBytes("B", "y"));
    EXPECT_FALSE(db.UpdateRecord(3));
    EXPECT_EQ(readFile(path), records({"A"}) + recordBytes("B", "y"));
}

}  // namespace

namespace {

// AppendSorted must leave exactly what AppendRecord then SortDatabase leave, in one write.
TEST_F(CallDatabaseTest, AppendSortedWritesTheBytesOfAppendThenSort) {
    writeFile(path, records({"A", "C"}));
    fill("B", "Bea");
    ASSERT_TRUE(db.AppendSorted());
    EXPECT_EQ(readFile(path), recordBytes("A", "Op A") + recordBytes("B", "Bea") + recordBytes("C", "Op C"));
    EXPECT_FALSE(QFileInfo::exists(dir.path() + "/temp.db"));

    const QString twoStepPath = dir.path() + "/two-step/Norvane-DB.db";
    ASSERT_TRUE(QDir().mkpath(dir.path() + "/two-step"));
    CallDatabase twoStep(twoStepPath);
    const QByteArray b1 = recordBytes("B", "1"), b2 = recordBytes("B", "2");
    const std::vector<QByteArray> starts{
        QByteArray(),
        records({"A"}),
        records({"A", "B", "D", "E"}),
        records({"E", "D"}) + b1 + recordBytes("A", "a") + b2,  // unsorted, equal calls
        records({"A", "B"}) + QByteArray(83, 'x'),               // tail overwritten by the append
        records({"A", "Z"}) + QByteArray(84, 'x'),               // append one record further on
        records({"A", "Z"}) + QByteArray("tail"),
    };
    for (const char* call : {"0", "B", "C", "ZZ"}) {
        for (size_t i = 0; i < starts.size(); ++i) {
            writeFile(path, starts[i]);
            writeFile(twoStepPath, starts[i]);
            fill(call, QStringLiteral("New"));
            twoStep.CurrentRecord = db.CurrentRecord;
            ASSERT_TRUE(twoStep.AppendRecord());
            ASSERT_TRUE(twoStep.SortDatabase());
            ASSERT_TRUE(db.AppendSorted());
            EXPECT_EQ(readFile(path), readFile(twoStepPath)) << "start " << i << ", call " << call;
        }
    }

    // Without a file: no record written, an empty file made, as the two calls do.
    QFile::remove(path);
    fill("B", "Bea");
    ASSERT_TRUE(db.AppendSorted());
    EXPECT_EQ(readFile(path), QByteArray());
}

}  // namespace
