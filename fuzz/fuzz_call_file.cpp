// libFuzzer target: the call-sign file procedures on arbitrary file contents. The input is
// written as Norvane-DB.db; then count, list, find, sort, delete and append-with-sort run on it
// and each result is checked against what the file's bytes say it must be.
//
// Input layout:
//   byte 0    bits 0-6  which record's call is the search and delete key (index modulo the
//                       number of whole records; with none, the literal key below)
//             bit 7     the key gets blanks on both sides (they must not matter)
//   byte 1    bit 0     use the literal key (bytes 2..7) whatever bits 0-6 of byte 0 say
//             bit 1     "plain calls": the call field of every whole record is rewritten to 1..6
//                       capitals and digits padded with blanks (from its own bytes), the files
//                       where a search after the sort must find every call
//             bit 2     start without a file: find creates it, the others leave it missing
//   bytes 2-7 the call field of the record that is appended (and the literal key)
//   rest      the file
//
// Any broken property is reported on stderr and ends the run with abort().
#include "db/calldatabase.h"
#include "db/callrecord.h"

#include "common/cp1252.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr qsizetype kRec = CallRecord::kSize;
constexpr int kCallWidth = CallRecord::kLayout[0].width;

[[noreturn]] void fail(const char* what, const QString& detail = {}) {
    std::fprintf(stderr, "fuzz_call_file: %s %s\n", what, detail.toUtf8().constData());
    std::abort();
}

void check(bool ok, const char* what, const QString& detail = {}) {
    if (!ok) fail(what, detail);
}

// The call of a record as the file's order sees it: the six bytes decoded, blanks (only blanks)
// cut from both ends. Written here from the bytes, independently of the code under test.
QString trimmedCall(const char* record) {
    QString call = cp1252::decode(record, kCallWidth);
    qsizetype b = 0, e = call.size();
    while (b < e && call[b] == u' ') ++b;
    while (e > b && call[e - 1] == u' ') --e;
    return call.mid(b, e - b);
}

QString trimmedKey(const QString& key) {
    qsizetype b = 0, e = key.size();
    while (b < e && key[b] == u' ') ++b;
    while (e > b && key[e - 1] == u' ') --e;
    return key.mid(b, e - b);
}

// Record n (from 1) of the bytes, past the end read as NUL, as every procedure reads it.
QByteArray recordAt(const QByteArray& file, qsizetype n) {
    QByteArray rec(kRec, '\0');
    const qsizetype from = (n - 1) * kRec;
    for (qsizetype i = 0; i < kRec && from + i < file.size(); ++i) rec[i] = file[from + i];
    return rec;
}

// length / 167 rounded to the nearest whole number (167 is odd: there is never a half).
qsizetype roundedCount(qsizetype length) { return length / kRec + ((length % kRec) * 2 > kRec ? 1 : 0); }

// A search reads a record past the end of the file as NUL bytes: the call field of six NULs,
// which such a key matches.
bool nulKey(const QString& key) { return trimmedKey(key) == QString(kCallWidth, QChar(0)); }

QByteArray readAll(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) fail("cannot read back", path);
    return f.readAll();
}

void writeAll(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(bytes) != bytes.size())
        fail("cannot write", path);
}

std::vector<std::string> wholeRecords(const QByteArray& file) {
    std::vector<std::string> records;
    for (qsizetype i = 0; i + kRec <= file.size(); i += kRec) records.emplace_back(file.constData() + i, kRec);
    std::sort(records.begin(), records.end());
    return records;
}

QByteArray tailOf(const QByteArray& file) { return file.mid(file.size() / kRec * kRec); }

// Sorted: whole records in ascending trimmed-call order, the same records as before and the
// same bytes after the last whole record.
void checkSorted(const QByteArray& before, const QByteArray& after, const char* what) {
    check(after.size() == before.size(), what, QStringLiteral("changed the length"));
    check(wholeRecords(after) == wholeRecords(before), what, QStringLiteral("changed the records"));
    check(tailOf(after) == tailOf(before), what, QStringLiteral("changed the bytes after the last record"));
    for (qsizetype i = kRec; i + kRec <= after.size(); i += kRec) {
        const QString a = trimmedCall(after.constData() + i - kRec), b = trimmedCall(after.constData() + i);
        check(QString::compare(a, b, Qt::CaseSensitive) <= 0, what, QStringLiteral("out of order: ") + a + u' ' + b);
    }
}

struct Dirs {
    QTemporaryDir one, two;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 8) return 0;
    static Dirs* dirs = new Dirs;  // one pair of folders for the whole run
    const QString path = dirs->one.path() + u'/' + QLatin1String(CallDatabase::kFileName);
    const QString path2 = dirs->two.path() + u'/' + QLatin1String(CallDatabase::kFileName);

    const uint8_t keyByte = data[0], flags = data[1];
    const QByteArray appendCall(reinterpret_cast<const char*>(data + 2), kCallWidth);
    QByteArray file(reinterpret_cast<const char*>(data + 8), static_cast<qsizetype>(size - 8));
    const qsizetype whole = file.size() / kRec;
    if (flags & 2) {
        for (qsizetype r = 0; r < whole; ++r) {
            char* call = file.data() + r * kRec;
            const int length = 1 + static_cast<unsigned char>(call[0]) % kCallWidth;
            for (int i = 0; i < kCallWidth; ++i) {
                const int v = static_cast<unsigned char>(call[i]) % 36;
                call[i] = i < length ? static_cast<char>(v < 10 ? '0' + v : 'A' + v - 10) : ' ';
            }
        }
    }
    const bool missing = flags & 4;

    QString key = (whole > 0 && !(flags & 1)) ? trimmedCall(file.constData() + (keyByte & 0x7f) % whole * kRec)
                                              : cp1252::decode(appendCall);
    if (keyByte & 0x80) key = QStringLiteral("  ") + key + QStringLiteral(" ");

    QFile::remove(path);
    QFile::remove(path2);
    if (missing) {
        CallDatabase db(path);
        check(db.CountRecords() == 0, "count without a file");
        QStringList list{QStringLiteral("kept")};
        db.FillCallList(list);
        check(list.size() == 1, "list without a file touched the list");
        check(db.DeleteCallRecord(key) && !db.exists(), "delete without a file");
        check(db.AppendRecord() && !db.exists(), "append without a file");
        // Record 1 of the new empty file reads as NUL bytes, which only a key of six NULs matches.
        const int32_t n = db.FindCallRecord(key);
        check(n == (nulKey(key) ? 1 : 0), "find without a file", QString::number(n));
        check(db.exists() && QFileInfo(path).size() == 0, "find did not create an empty file");
        check(n == 1 || db.CurrentRecord == CallRecord(), "find without a file left a record");
        return 0;
    }

    writeAll(path, file);
    CallDatabase db(path);

    // Count and list.
    check(db.CountRecords() == roundedCount(file.size()), "count");
    QStringList list;
    db.FillCallList(list);
    check(list.size() == whole, "list length");
    for (qsizetype i = 0; i < whole; ++i)
        check(list[i] == trimmedCall(file.constData() + i * kRec), "list entry", list[i]);

    // Find: whatever the order of the file, a hit is a record with the key's call, and the
    // record buffer holds that record; a miss leaves it blank. The file stays as it was.
    {
        const int32_t n = db.FindCallRecord(key);
        check(n >= 0 && n <= std::max<qsizetype>(1, whole), "find: record number out of range");
        if (n > 0) {
            const QByteArray rec = recordAt(file, n);
            check(QByteArray(db.CurrentRecord.bytes().data(), kRec) == rec, "find: buffer is not the record");
            check(trimmedCall(rec.constData()) == trimmedKey(key), "find: wrong call", key);
        } else {
            check(db.CurrentRecord == CallRecord(), "find: miss left a record");
        }
        check(readAll(path) == file, "find changed the file");
    }

    // Sort, twice: the second leaves the file as it is.
    const Status sortedOnce = db.SortDatabase();
    check(sortedOnce.ok(), "sort failed", sortedOnce.message());
    const QByteArray sorted = readAll(path);
    checkSorted(file, sorted, "sort");
    check(db.SortDatabase().ok() && readAll(path) == sorted, "second sort changed the file");

    // On a sorted file of plain calls, every call is found.
    if (flags & 2) {
        for (qsizetype r = 0; r < whole; ++r) {
            const QString call = trimmedCall(sorted.constData() + r * kRec);
            const int32_t n = db.FindCallRecord(call);
            check(n > 0 && trimmedCall(recordAt(sorted, n).constData()) == call, "sorted: call not found", call);
        }
    }

    // Delete: exactly the records with the key's call go, the others stay in their order. The
    // records counted are length / 167 rounded, the last read past the end as NUL.
    {
        QByteArray expected;
        const QString k = trimmedKey(key);
        for (qsizetype i = 1; i <= roundedCount(sorted.size()); ++i) {
            const QByteArray rec = recordAt(sorted, i);
            if (trimmedCall(rec.constData()) != k) expected += rec;
        }
        const Status deleted = db.DeleteCallRecord(key);
        check(deleted.ok(), "delete failed", deleted.message());
        check(readAll(path) == expected, "delete", key);
        // Not found any more; except that a search of a file without a whole record reads record
        // 1 from past the end, as NUL bytes, which a key of six NULs matches.
        check(db.FindCallRecord(key) == 0 || (expected.isEmpty() && nulKey(key)), "delete: call still found", key);
    }

    // Append with sort: the same bytes as AppendRecord then SortDatabase, on a copy.
    {
        const QByteArray before = readAll(path);
        writeAll(path2, before);
        CallDatabase db2(path2);
        CallRecord rec;
        std::copy(appendCall.begin(), appendCall.end(), rec.bytes().begin());
        for (int i = kCallWidth; i < kRec; ++i) rec.bytes()[i] = static_cast<char>('a' + i % 26);
        db.CurrentRecord = rec;
        db2.CurrentRecord = rec;
        const Status appendedSorted = db.AppendSorted();
        check(appendedSorted.ok(), "append+sort failed", appendedSorted.message());
        const Status appendedOnly = db2.AppendRecord();
        const Status thenSorted = appendedOnly ? db2.SortDatabase() : appendedOnly;
        check(thenSorted.ok(), "append, sort failed", thenSorted.message());
        const QByteArray one = readAll(path), two = readAll(path2);
        check(one == two, "append+sort differs from append, then sort");

        // What the append wrote: the record after the rounded count of records.
        const qsizetype at = roundedCount(before.size()) * kRec;
        QByteArray appended = before.left(std::min(before.size(), at));
        if (at > before.size()) appended += QByteArray(at - before.size(), '\0');
        appended += QByteArray(rec.bytes().data(), kRec);
        if (at + kRec < before.size()) appended += before.mid(at + kRec);
        checkSorted(appended, one, "append+sort");
    }
    return 0;
}
