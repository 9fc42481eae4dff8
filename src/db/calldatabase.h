#pragma once
// The call-sign file: fixed 167-byte records sorted by call sign, no header, no index.
// Every access goes through these procedures and the one record buffer `CurrentRecord`.
//
// Each procedure opens the file, works and closes it again. An update of a record inside the file
// overwrites its 167 bytes in place with one write. Every other change writes the complete new
// contents to "temp.db" beside it and then renames that over the file, so a program killed at
// any moment leaves either the old file or the new one, never a mix. A change that could not be
// written leaves the file as it was and says why in its Status.
#include "common/status.h"
#include "db/callrecord.h"

#include <QString>
#include <QStringList>
#include <cstdint>

class CallDatabase {
public:
    static constexpr const char* kFileName = "Norvane-DB.db";
    static constexpr const char* kTempName = "temp.db";

    // filePath: the call-sign file itself (data folder + "/Norvane-DB.db").
    explicit CallDatabase(QString filePath);

    const QString& filePath() const { return path_; }
    bool exists() const;

    // Binary search by call sign. Returns the record number (from 1) and leaves the record in
    // CurrentRecord; returns 0 and clears CurrentRecord when the call is not there. Creates an
    // empty file when none exists.
    int32_t FindCallRecord(const QString& key);

    // Number of records: file length / 167 rounded to the nearest (halves to even), 0 without file.
    int32_t CountRecords() const;

    // Writes CurrentRecord as record CountRecords() + 1. Does nothing without a file.
    Status AppendRecord();

    // Writes CurrentRecord over record n (from 1): in place when the record lies wholly inside the
    // file, otherwise as a new file that ends with it. Does nothing without a file.
    Status UpdateRecord(int32_t n);

    // Comb sort (shrink 0.65) of the whole records, ascending by trimmed call sign. A file with
    // bytes after its last whole record keeps them where they are.
    Status SortDatabase();

    // AppendRecord followed by SortDatabase as one change: the file goes from its old contents
    // straight to the bytes those two leave, with no appended but unsorted file in between.
    Status AppendSorted();

    // Clears list and adds every record's trimmed call in file order; leaves the list untouched
    // without a file.
    void FillCallList(QStringList& list) const;

    // Rewrites the file without every record whose trimmed call equals the trimmed key. Nothing
    // happens without a file.
    Status DeleteCallRecord(const QString& key);

    // All nine fields of CurrentRecord to blanks.
    void ClearRecord() { CurrentRecord.clear(); }

    CallRecord CurrentRecord;

private:
    QString tempPath() const;
    void createIfMissing() const;

    QString path_;
};
