#include "db/calldatabase.h"
#include "testutil.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

#include <tuple>
#include <utility>
#include <vector>

using namespace testutil;

namespace {

class CallDatabaseTest : public testing::Test {
protected:
    QTemporaryDir dir;
    QString path = dir.path() + "/Norvane-DB.db";
    QString temp = dir.path() + "/temp.db";
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
        ASSERT_TRUE(n == 0 ? db.AppendRecord() && db.SortDatabase() : db.UpdateRecord(n).ok()) << call.toStdString();
    }
};

TEST(CallRecordTest, FieldsArePaddedCutAndEncodedInWindows1252) {
    CallRecord r;
    r.setField(CallField::Call, "G4ABCDEF");
    r.setField(CallField::Name, QString::fromUtf8("Jos\u00e9 \u20ac \u0141"));
    r.setField(CallField::YearBorn, "19");
    EXPECT_EQ(QByteArray(r.bytes().data(), CallRecord::kSize),
              QByteArray("G4ABCDJos\xe9 \x80 ?                 ") + QByteArray(132, ' ') + "19  ");
    EXPECT_EQ(r.Name(), QString::fromUtf8("Jos\u00e9 \u20ac ?                 "));
}

TEST_F(CallDatabaseTest, ExactBytesAfterAddUpdateDeleteSequence) {
    writeFile(path, {});
    for (const char* call : {"W1AW", "DL1AB", "G4ABC"}) store(call, QString("Op ") + call);
    EXPECT_EQ(readFile(path), records({"DL1AB", "G4ABC", "W1AW"}));
    store("G4ABC", "Alice B");  // known call: updated in place
    const QByteArray rest = recordBytes("G4ABC", "Alice B") + records({"W1AW"});
    EXPECT_EQ(readFile(path), records({"DL1AB"}) + rest);
    ASSERT_TRUE(db.DeleteCallRecord("DL1AB "));
    EXPECT_EQ(readFile(path), rest);
    EXPECT_FALSE(QFileInfo::exists(temp));
    ASSERT_TRUE(db.DeleteCallRecord("K9ZZZ"));  // absent: the same bytes again
    EXPECT_EQ(readFile(path), rest);
}

TEST_F(CallDatabaseTest, SortDatabase) {
    const QByteArray a = recordBytes("A", "a"), b1 = recordBytes("B", "1"), b2 = recordBytes("B", "2"),
                     b3 = recordBytes("B", "3");
    const std::vector<std::pair<QByteArray, QByteArray>> cases{
        // Equal calls keep no file order: the comb sort's swaps decide (gaps 3, 2, 1; only the
        // gap-2 pass swaps, B1 with A), where a stable sort would give 1, 2, 3.
        {b1 + b2 + a + b3, a + b2 + b1 + b3},
        {records({"B", "A"}) + "tail", records({"A", "B"}) + "tail"},  // a partial tail stays put
        // Binary order of trimmed calls (digits, upper, lower case); a call before the longer ones it begins.
        {records({"g4abc", "G4ABC", "AB1C", "9A1A", "AB1", "  ZZ", "A"}),
         records({"9A1A", "A", "AB1", "AB1C", "G4ABC", "  ZZ", "g4abc"})},
    };
    for (size_t i = 0; i < cases.size(); ++i) {
        writeFile(path, cases[i].first);
        ASSERT_TRUE(db.SortDatabase()) << "case " << i;
        EXPECT_EQ(readFile(path), cases[i].second) << "case " << i;
    }
    QStringList calls;  // of the last file, trimmed
    db.FillCallList(calls);
    EXPECT_EQ(calls, (QStringList{"9A1A", "A", "AB1", "AB1C", "G4ABC", "ZZ", "g4abc"}));
}

TEST_F(CallDatabaseTest, TheTwoCountFormulasOnAPartialLastRecord) {
    // 10 whole records and 100 bytes: search, sort and list see 10, count and delete see 11.
    const QByteArray partial = recordBytes("ZZ9").left(100);
    writeFile(path, records({"A0", "A1", "A2", "A3", "A4", "A5", "A6", "A7", "A8", "A9"}) + partial);
    EXPECT_EQ(db.CountRecords(), 11);
    QStringList calls;
    db.FillCallList(calls);
    EXPECT_EQ(calls.size(), 10);
    EXPECT_EQ(db.FindCallRecord("ZZ9"), 0);
    // Delete reads the partial record as an eleventh (its missing bytes as NUL) and writes it whole.
    ASSERT_TRUE(db.DeleteCallRecord("A5"));
    EXPECT_EQ(readFile(path), records({"A0", "A1", "A2", "A3", "A4", "A6", "A7", "A8", "A9"}) + partial + QByteArray(67, '\0'));

    // 83 extra bytes round down: count 2, and an append overwrites them.
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
    const std::pair<const char*, int32_t> cases[] = {{"AB1", 1}, {"AB1C", 2}, {"G4ABCD", 3}, {"K1XYZ", 4},
                                                     {"W1AW", 5}, {"w1aw", 0}, {"AB", 0}, {"G4ABCDE", 0},
                                                     {"ZZ", 0}, {"", 0}};
    for (const auto& [key, expected] : cases) {
        EXPECT_EQ(db.FindCallRecord(key), expected) << key;
        // A hit leaves its record in the buffer, a miss clears it.
        EXPECT_EQ(QByteArray(db.CurrentRecord.bytes().data(), CallRecord::kSize),
                  expected ? recordBytes(key, QString("Op ") + key) : QByteArray(CallRecord::kSize, ' '))
            << key;
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
    EXPECT_EQ(readFile(path), QByteArray());
    EXPECT_EQ(db.CurrentRecord, CallRecord());
    db.FillCallList(untouched);
    EXPECT_TRUE(untouched.isEmpty());
}

TEST_F(CallDatabaseTest, DeleteRemovesEveryCopyAndIgnoresAStaleTempFile) {
    // A temp.db left by an earlier run, longer than the new contents: none of its records may come back.
    writeFile(temp, records({"OLD1", "OLD2", "OLD3", "OLD4", "OLD5"}));
    writeFile(path, records({"A", "B", "B", "C"}));
    ASSERT_TRUE(db.DeleteCallRecord("B"));
    EXPECT_EQ(readFile(path), records({"A", "C"}));
    EXPECT_FALSE(QFileInfo::exists(temp));
}

TEST_F(CallDatabaseTest, AFailedWriteLeavesTheFileAsItWas) {
    writeFile(path, records({"B", "A"}));
    ASSERT_TRUE(QDir(dir.path()).mkdir("temp.db"));  // a folder cannot be opened as the temporary file
    const Status sorted = db.SortDatabase();
    EXPECT_FALSE(sorted);
    EXPECT_FALSE(sorted.message().isEmpty());
    fill("C", "x");
    EXPECT_FALSE(db.AppendRecord());
    EXPECT_EQ(readFile(path), records({"B", "A"}));

    // A record inside the file is written where it stands: no temp.db is needed for it.
    writeFile(path, records({"A", "B"}));
    fill("B", "y");
    EXPECT_TRUE(db.UpdateRecord(2));
    EXPECT_EQ(readFile(path), records({"A"}) + recordBytes("B", "y"));
    EXPECT_FALSE(db.UpdateRecord(3));
    EXPECT_EQ(readFile(path), records({"A"}) + recordBytes("B", "y"));
}

TEST_F(CallDatabaseTest, UpdateInsidePastTheEndAndBadNumbers) {
    const QByteArray tail(83, 'x'), c = recordBytes("C", "x");
    const std::tuple<QByteArray, int32_t, QByteArray> cases[] = {  // start, record number, result
        {records({"A"}), 3, records({"A"}) + QByteArray(167, '\0') + c},
        {records({"A", "B"}) + tail, 2, records({"A"}) + c + tail},
        {records({"A", "B"}) + tail, 3, records({"A", "B"}) + c},
        {records({"A", "B", "D"}), 3, records({"A", "B"}) + c}};
    for (const auto& [start, n, expected] : cases) {
        writeFile(path, start);
        fill("C", "x");
        EXPECT_FALSE(db.UpdateRecord(0)) << "n " << n << ", start " << start.size();
        EXPECT_TRUE(db.UpdateRecord(n)) << "n " << n << ", start " << start.size();
        EXPECT_EQ(readFile(path), expected) << "n " << n << ", start " << start.size();
    }
}

// AppendSorted must leave exactly what AppendRecord then SortDatabase leave, in one write.
TEST_F(CallDatabaseTest, AppendSortedWritesTheBytesOfAppendThenSort) {
    QTemporaryDir otherDir;
    const QString twoStepPath = otherDir.path() + "/Norvane-DB.db";
    CallDatabase twoStep(twoStepPath);
    const QByteArray b1 = recordBytes("B", "1"), b2 = recordBytes("B", "2");
    const std::vector<QByteArray> starts{
        QByteArray(), records({"A"}), records({"A", "B", "D", "E"}),
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
            EXPECT_FALSE(QFileInfo::exists(temp)) << "start " << i << ", call " << call;
        }
    }

    // Without a file: no record written, an empty file made, as the two calls do.
    QFile::remove(path);
    fill("B", "Bea");
    ASSERT_TRUE(db.AppendSorted());
    EXPECT_EQ(readFile(path), QByteArray());
}

}  // namespace
