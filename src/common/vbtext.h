#pragma once
// The small text and number rules the whole program shares: 1-based searches, trimming of blanks,
// the leading-number conversion and whole-number rounding (halves to even, overflow is an error).
#include <QString>
#include <QStringView>
#include <cstdint>
#include <optional>
#include <stdexcept>

namespace vb {

// Removes leading and trailing blanks (code 32) only; tabs and other white space stay.
QString trim(QStringView text);

// 1-based position of needle in hay at or after start, 0 when absent (case-sensitive).
// An empty needle is found at start; a start beyond the end finds nothing.
qsizetype inStr(qsizetype start, QStringView hay, QStringView needle);
inline qsizetype inStr(QStringView hay, QStringView needle) { return inStr(1, hay, needle); }

// 1-based position of the last needle that starts at or before start (-1: from the end).
qsizetype inStrRev(QStringView hay, QStringView needle, qsizetype start = -1);

// Characters from 1-based start; length < 0 means "to the end". A start past the end gives "".
QString mid(QStringView text, qsizetype start, qsizetype length = -1);
// As mid, but a start below 1 or a negative length is an invalid call (InvalidCall is thrown),
// the way the classic Mid treats them; callers that must give a default catch it.
struct InvalidCall : std::invalid_argument {
    InvalidCall() : std::invalid_argument("invalid procedure call") {}
};
QString midStrict(QStringView text, qsizetype start, qsizetype length);
QString left(QStringView text, qsizetype length);
QString right(QStringView text, qsizetype length);

// Leading-number value: after leading blanks, tabs and line feeds, an optional sign, digits with
// "." as the decimal point and an optional exponent; stops at the first character that cannot
// continue the number. No number gives 0.
double val(QStringView text);

// Letter or digit as the alphanumeric test of the Windows-1252 code page judges the character's
// byte: accented Latin letters count, characters the code page lacks do not.
bool isAlphaNumeric(QChar c);

// Whole-number conversions: round to nearest with halves to even; nullopt when the rounded value
// does not fit (or is not a number).
std::optional<int16_t> toInt16(double value);
std::optional<int32_t> toInt32(double value);

// A setting or field read as a number: the whole text (blanks around it allowed) must be a number
// written with "." as the decimal point; nullopt otherwise.
std::optional<double> parseNumber(QStringView text);

}  // namespace vb
