#include "lookup/pagecharset.h"

#include "common/cp1252.h"
#include "lookup/html/ascii.h"

#include <QStringDecoder>
#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

namespace lookup {
namespace {

using std::string_view;

using html::isLetter;
using html::isSpace;
using html::lower;
using html::lowered;
using html::startsWithNoCase;
using html::trimmed;

// The value after "charset" in a Content-Type text (also the content attribute of a <meta>).
QByteArray charsetParameter(string_view text) {
    const std::string lowerText = lowered(text);
    size_t at = 0;
    while (true) {
        at = lowerText.find("charset", at);
        if (at == string_view::npos) return {};
        size_t i = at + 7;
        while (i < text.size() && isSpace(text[i])) ++i;
        if (i < text.size() && text[i] == '=') {
            ++i;
            while (i < text.size() && isSpace(text[i])) ++i;
            if (i < text.size() && (text[i] == '"' || text[i] == '\'')) {
                const char quote = text[i++];
                const size_t end = text.find(quote, i);
                if (end == string_view::npos) return {};
                return QByteArray(text.data() + i, static_cast<qsizetype>(end - i));
            }
            size_t end = i;
            while (end < text.size() && !isSpace(text[end]) && text[end] != ';') ++end;
            return QByteArray(text.data() + i, static_cast<qsizetype>(end - i));
        }
        at += 7;
    }
}

enum class Kind { Unknown, Utf8, Cp1252, Utf16LE, Utf16BE, Named };

struct Encoding {
    Kind kind = Kind::Unknown;
    QByteArray name;  // for Kind::Named, the label a QStringDecoder accepts
};

Encoding encodingForLabel(QByteArrayView label, bool fromMeta) {
    const std::string l = lowered(trimmed(string_view(label.data(), static_cast<size_t>(label.size()))));
    if (l.empty()) return {};
    static constexpr string_view kUtf8[] = {"utf-8", "utf8", "unicode-1-1-utf-8", "unicode11utf8",
                                            "unicode20utf8", "x-unicode20utf8"};
    static constexpr string_view kWindows1252[] = {
        "windows-1252", "x-cp1252", "cp1252", "iso-8859-1", "iso8859-1", "iso88591", "iso_8859-1",
        "iso_8859-1:1987", "iso-ir-100", "latin1", "l1", "csisolatin1", "ibm819", "cp819",
        "us-ascii", "ascii", "ansi_x3.4-1968"};
    static constexpr string_view kUtf16LE[] = {"utf-16", "utf-16le", "unicode", "ucs-2", "csunicode",
                                               "iso-10646-ucs-2", "unicodefeff"};
    static constexpr string_view kUtf16BE[] = {"utf-16be", "unicodefffe"};
    auto in = [&](const auto& list) { return std::find(std::begin(list), std::end(list), l) != std::end(list); };
    if (in(kUtf8)) return {Kind::Utf8, {}};
    if (in(kWindows1252)) return {Kind::Cp1252, {}};
    if (in(kUtf16LE) || in(kUtf16BE)) {
        // Bytes that could be read far enough to find the <meta> are no UTF-16.
        if (fromMeta) return {Kind::Utf8, {}};
        return {in(kUtf16LE) ? Kind::Utf16LE : Kind::Utf16BE, {}};
    }
    if (fromMeta && l == "x-user-defined") return {Kind::Cp1252, {}};
    const QByteArray name = QByteArray::fromStdString(l);
    if (QStringDecoder(name.constData()).isValid()) return {Kind::Named, name};
    return {};
}

QString decodeAs(const Encoding& encoding, QByteArrayView bytes) {
    switch (encoding.kind) {
    case Kind::Cp1252:
        return cp1252::decode(bytes.data(), bytes.size());
    case Kind::Utf8:
        return QStringDecoder(QStringConverter::Utf8).decode(bytes);
    case Kind::Utf16LE:
        return QStringDecoder(QStringConverter::Utf16LE).decode(bytes);
    case Kind::Utf16BE:
        return QStringDecoder(QStringConverter::Utf16BE).decode(bytes);
    case Kind::Named:
        return QStringDecoder(encoding.name.constData()).decode(bytes);
    case Kind::Unknown:
        break;
    }
    return decodeUtf8OrCp1252(bytes.toByteArray());
}

// Reads one attribute of a tag at `i` (just behind the tag name or a previous attribute).
// Returns false at the end of the tag; `i` is then behind its '>'.
//
// Not html::behindTag, the prescan's walk through a tag (lookup/html/tags.h): the two read a
// tag alike except at two edges, and neither may change without changing which charset, or
// which text, a page gives. Here a '=' where a name would start begins the value of an empty
// name, where behindTag makes it the name's first character (`<meta =' charset=koi8-r '>`
// names no charset here, and would through behindTag); and an attribute cut off by the end of
// the text (the scan stops at kMetaScanBytes, where a <meta> may be cut short) is still read
// here, while behindTag never reports an attribute of a tag that is not closed. This one also
// needs the values, which behindTag does not collect.
bool nextAttribute(string_view page, size_t& i, std::string& name, std::string& value) {
    while (i < page.size() && (isSpace(page[i]) || page[i] == '/')) ++i;
    if (i >= page.size()) return false;
    if (page[i] == '>') {
        ++i;
        return false;
    }
    name.clear();
    value.clear();
    while (i < page.size() && !isSpace(page[i]) && page[i] != '=' && page[i] != '>' && page[i] != '/')
        name += lower(page[i++]);
    while (i < page.size() && isSpace(page[i])) ++i;
    if (i >= page.size() || page[i] != '=') return true;
    ++i;
    while (i < page.size() && isSpace(page[i])) ++i;
    if (i < page.size() && (page[i] == '"' || page[i] == '\'')) {
        const char quote = page[i++];
        const size_t end = std::min(page.find(quote, i), page.size());
        value.assign(page.substr(i, end - i));
        i = end + 1;
    } else {
        while (i < page.size() && !isSpace(page[i]) && page[i] != '>') value += page[i++];
    }
    return true;
}

}  // namespace

QByteArray charsetFromContentType(QByteArrayView contentType) {
    return charsetParameter(string_view(contentType.data(), static_cast<size_t>(contentType.size())));
}

QByteArray charsetFromMeta(QByteArrayView bytes) {
    const string_view page(bytes.data(), static_cast<size_t>(std::min(bytes.size(), kMetaScanBytes)));
    std::string name, value;
    size_t i = 0;
    while ((i = page.find('<', i)) != string_view::npos) {
        if (page.compare(i, 4, "<!--") == 0) {
            const size_t end = page.find("-->", i + 4);
            if (end == string_view::npos) return {};
            i = end + 3;
        } else if (startsWithNoCase(page, i, "<meta") && i + 5 < page.size() &&
                   (isSpace(page[i + 5]) || page[i + 5] == '/')) {
            i += 5;
            QByteArray charset;
            bool httpEquivContentType = false;
            QByteArray content;
            while (nextAttribute(page, i, name, value)) {
                if (name == "charset" && charset.isEmpty()) charset = QByteArray::fromStdString(value);
                else if (name == "http-equiv") httpEquivContentType = lowered(trimmed(value)) == "content-type";
                else if (name == "content") content = QByteArray::fromStdString(value);
            }
            if (charset.isEmpty() && httpEquivContentType) charset = charsetFromContentType(content);
            if (encodingForLabel(charset, true).kind != Kind::Unknown) return charset;
        } else if (i + 1 < page.size() && isLetter(page[i + 1])) {
            // Some other tag: step over it with its attributes, so that quoted text in them
            // cannot look like a <meta>.
            ++i;
            while (i < page.size() && !isSpace(page[i]) && page[i] != '>' && page[i] != '/') ++i;
            while (nextAttribute(page, i, name, value)) {
            }
        } else if (page.compare(i, 2, "<!") == 0 || page.compare(i, 2, "</") == 0 ||
                   page.compare(i, 2, "<?") == 0) {
            i = page.find('>', i);
            if (i == string_view::npos) return {};
        } else {
            ++i;
        }
    }
    return {};
}

namespace {

// The encoding a page is read in, and the bytes that are read (behind a byte-order mark).
std::pair<Encoding, QByteArrayView> pageEncoding(QByteArrayView bytes, QByteArrayView contentType) {
    // A byte-order mark outranks every declaration.
    if (bytes.startsWith("\xEF\xBB\xBF")) return {{Kind::Utf8, {}}, bytes.sliced(3)};
    if (bytes.startsWith("\xFE\xFF")) return {{Kind::Utf16BE, {}}, bytes.sliced(2)};
    if (bytes.startsWith("\xFF\xFE")) return {{Kind::Utf16LE, {}}, bytes.sliced(2)};

    Encoding encoding = encodingForLabel(charsetFromContentType(contentType), false);
    if (encoding.kind == Kind::Unknown) encoding = encodingForLabel(charsetFromMeta(bytes), true);
    return {encoding, bytes};
}

// Whether the bytes are well-formed UTF-8: no stray or missing continuation bytes, no overlong
// forms, no surrogates, nothing above U+10FFFF.
bool isValidUtf8(QByteArrayView bytes) {
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    const auto* end = p + bytes.size();
    while (p < end) {
        const unsigned c = *p;
        if (c < 0x80) {
            ++p;
            continue;
        }
        // The length of the sequence and the range of its second byte.
        size_t n = 0;
        unsigned lo = 0x80, hi = 0xBF;
        if (c >= 0xC2 && c <= 0xDF) {
            n = 2;
        } else if (c >= 0xE0 && c <= 0xEF) {
            n = 3;
            if (c == 0xE0) lo = 0xA0;  // overlong below
            if (c == 0xED) hi = 0x9F;  // surrogates above
        } else if (c >= 0xF0 && c <= 0xF4) {
            n = 4;
            if (c == 0xF0) lo = 0x90;  // overlong below
            if (c == 0xF4) hi = 0x8F;  // beyond U+10FFFF above
        } else {
            return false;
        }
        if (static_cast<size_t>(end - p) < n || p[1] < lo || p[1] > hi) return false;
        for (size_t k = 2; k < n; ++k)
            if ((p[k] & 0xC0) != 0x80) return false;
        p += n;
    }
    return true;
}

}  // namespace

QString decodePageBytes(QByteArrayView bytes, QByteArrayView contentType) {
    const auto [encoding, text] = pageEncoding(bytes, contentType);
    return decodeAs(encoding, text);
}

QByteArrayView pageUtf8(QByteArrayView bytes, QByteArrayView contentType, QByteArray& storage) {
    const auto [encoding, text] = pageEncoding(bytes, contentType);
    // Read as UTF-8 (declared, or found valid), valid bytes decode to themselves; the decoder
    // would only drop a byte-order mark at their start.
    if ((encoding.kind == Kind::Utf8 || encoding.kind == Kind::Unknown) && !text.startsWith("\xEF\xBB\xBF") &&
        isValidUtf8(text))
        return text;
    storage = decodeAs(encoding, text).toUtf8();
    return storage;
}

}  // namespace lookup
