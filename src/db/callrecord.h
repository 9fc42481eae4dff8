#pragma once
// One record of the call-sign file: nine fixed-width text fields, 167 bytes, Windows-1252,
// padded on the right with blanks. The bytes are the record; fields are views on them.
#include <QString>
#include <array>
#include <cstddef>

enum class CallField { Call, Name, Add1, Add2, Ctry, Lat, Lon, Class, YearBorn };

struct CallFieldLayout {
    int offset;
    int width;
};

class CallRecord {
public:
    static constexpr int kSize = 167;
    static constexpr int kFieldCount = 9;
    static constexpr std::array<CallFieldLayout, kFieldCount> kLayout{{
        {0, 6}, {6, 25}, {31, 30}, {61, 30}, {91, 30}, {121, 15}, {136, 15}, {151, 12}, {163, 4}}};

    CallRecord() { clear(); }

    // Every field filled with blanks.
    void clear() { bytes_.fill(' '); }

    // The field as stored, padding included.
    QString field(CallField f) const;
    // Stores text cut to the field's width and padded with blanks; characters the code page
    // lacks become '?'.
    void setField(CallField f, const QString& text);

    QString Call() const { return field(CallField::Call); }
    QString Name() const { return field(CallField::Name); }
    QString Add1() const { return field(CallField::Add1); }
    QString Add2() const { return field(CallField::Add2); }
    QString Ctry() const { return field(CallField::Ctry); }
    QString Lat() const { return field(CallField::Lat); }
    QString Lon() const { return field(CallField::Lon); }
    QString Class() const { return field(CallField::Class); }
    QString YearBorn() const { return field(CallField::YearBorn); }

    std::array<char, kSize>& bytes() { return bytes_; }
    const std::array<char, kSize>& bytes() const { return bytes_; }

    friend bool operator==(const CallRecord&, const CallRecord&) = default;

private:
    std::array<char, kSize> bytes_{};
};

// Sort key of a call field: the trimmed call's characters in Unicode order packed into 64 bits,
// so that comparing keys compares the trimmed calls as a binary string comparison does.
uint64_t callSortKey(const char* callField);
