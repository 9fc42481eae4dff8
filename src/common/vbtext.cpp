#include "common/vbtext.h"

#include "common/cp1252.h"

#include <cmath>
#include <limits>

namespace vb {

QString trim(QStringView text) {
    qsizetype b = 0, e = text.size();
    while (b < e && text[b] == u' ') ++b;
    while (e > b && text[e - 1] == u' ') --e;
    return text.mid(b, e - b).toString();
}

qsizetype inStr(qsizetype start, QStringView hay, QStringView needle) {
    if (start < 1 || start > hay.size() + (needle.isEmpty() ? 1 : 0)) return 0;
    if (needle.isEmpty()) return start;
    const qsizetype at = hay.indexOf(needle, start - 1, Qt::CaseSensitive);
    return at < 0 ? 0 : at + 1;
}

qsizetype inStrRev(QStringView hay, QStringView needle, qsizetype start) {
    if (start == -1) start = hay.size();
    if (start < 1 || start > hay.size() || needle.isEmpty()) return needle.isEmpty() ? start : 0;
    // The match must lie wholly within the first `start` characters.
    const qsizetype at = hay.left(start).lastIndexOf(needle, -1, Qt::CaseSensitive);
    return at < 0 ? 0 : at + 1;
}

QString mid(QStringView text, qsizetype start, qsizetype length) {
    if (start < 1 || start > text.size()) return {};
    const qsizetype from = start - 1;
    if (length < 0 || length > text.size() - from) length = text.size() - from;
    return text.mid(from, length).toString();
}

QString midStrict(QStringView text, qsizetype start, qsizetype length) {
    if (start < 1 || length < 0) throw InvalidCall();
    return mid(text, start, length);
}

QString left(QStringView text, qsizetype length) {
    return length <= 0 ? QString() : text.left(std::min(length, text.size())).toString();
}

QString right(QStringView text, qsizetype length) {
    return length <= 0 ? QString() : text.right(std::min(length, text.size())).toString();
}

double val(QStringView text) {
    qsizetype i = 0;
    while (i < text.size() && (text[i] == u' ' || text[i] == u'\t' || text[i] == u'\n')) ++i;
    const auto isDigit = [&](qsizetype at) { return at < text.size() && text[at] >= u'0' && text[at] <= u'9'; };
    const qsizetype start = i;
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) ++i;
    const qsizetype digitsFrom = i;
    while (isDigit(i)) ++i;
    qsizetype digits = i - digitsFrom;
    if (i < text.size() && text[i] == u'.') {
        const qsizetype fraction = ++i;
        while (isDigit(i)) ++i;
        digits += i - fraction;
    }
    if (digits == 0) return 0.0;
    // An exponent counts only when digits follow it.
    if (i < text.size() && (text[i] == u'e' || text[i] == u'E')) {
        qsizetype j = i + 1;
        if (j < text.size() && (text[j] == u'-' || text[j] == u'+')) ++j;
        if (isDigit(j)) {
            while (isDigit(j)) ++j;
            i = j;
        }
    }
    bool ok = false;
    const double value = text.mid(start, i - start).toString().toDouble(&ok);
    return ok && std::isfinite(value) ? value : 0.0;
}

bool isAlphaNumeric(QChar c) {
    // A character the code page lacks becomes '?', which is no letter either.
    return QChar(cp1252::toUnicode(cp1252::fromUnicode(c.unicode()))).isLetterOrNumber();
}

namespace {
template <typename T>
std::optional<T> roundToEven(double value) {
    if (!std::isfinite(value)) return std::nullopt;
    const double r = std::nearbyint(value);  // default rounding mode: halves to even
    if (r < static_cast<double>(std::numeric_limits<T>::min()) ||
        r > static_cast<double>(std::numeric_limits<T>::max()))
        return std::nullopt;
    return static_cast<T>(r);
}
}  // namespace

std::optional<int16_t> toInt16(double value) { return roundToEven<int16_t>(value); }
std::optional<int32_t> toInt32(double value) { return roundToEven<int32_t>(value); }

std::optional<double> parseNumber(QStringView text) {
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value)) return std::nullopt;
    return value;
}

}  // namespace vb
