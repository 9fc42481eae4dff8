// Page bytes to text: BOM, then the Content-Type header, then <meta>, else UTF-8 when valid,
// else Windows-1252.
#include "lookup/pagecharset.h"

#include <gtest/gtest.h>

namespace {

using lookup::decodePageBytes;

TEST(DecodePageBytes, ChoosesTheDeclaredOrDetectedCharset) {
    // The page is markup (ASCII, the same in the text) and bytes; the text, the markup and expected.
    struct Case { const char* name; QByteArray markup, bytes, contentType; QString expected; };
    const QByteArray metaKoi8 = "<meta charset=\"koi8-r\">";
    const QByteArray blanks(lookup::kMetaScanBytes, ' ');
    const QByteArray html = "text/html", utf8 = "text/html; charset=utf-8";
    const Case cases[] = {
        {"undeclared valid UTF-8", "", "M\xC3\xBCller", "", QStringLiteral("Müller")},
        {"undeclared invalid UTF-8 is Windows-1252", "", "M\xFCller", "", QStringLiteral("Müller")},
        {"Windows-1252 beyond Latin-1", "", "\x80 \x92\x8A", "", QStringLiteral("€ ’Š")},
        {"plain ASCII", "Call DL1ABC", "", html, ""},
        {"header UTF-8 keeps broken bytes broken", "", "M\xFCller", "text/html; charset=UTF-8", QStringLiteral("M\uFFFDller")},
        {"header ISO-8859-1 means Windows-1252", "", "\x80", "text/html; charset=ISO-8859-1", QStringLiteral("€")},
        {"header US-ASCII means Windows-1252", "", "\xE9", "text/html; charset=us-ascii", QStringLiteral("é")},
        {"header quoted label", "", "\xC1", "text/html; charset=\"windows-1251\"", QStringLiteral("Б")},
        {"header beats meta", "<meta charset=windows-1252>", "\xC3\xA9", utf8, QStringLiteral("é")},
        {"unknown header label falls back to meta", metaKoi8, "\xC1", "text/html; charset=x-bogus", QStringLiteral("а")},
        {"meta charset", metaKoi8, "\xC1", "", QStringLiteral("а")},
        {"meta http-equiv", "<META HTTP-EQUIV='Content-Type' CONTENT='text/html; charset=windows-1250'>", "\x8A", "", QStringLiteral("Š")},
        {"meta content without http-equiv is no declaration", "<meta content=\"charset=koi8-r\">", "\xC1", "", QStringLiteral("Á")},
        {"meta in a comment does not count", "<!-- <meta charset=koi8-r> -->", "\xC3\xA9", "", QStringLiteral("é")},
        {"meta text inside an attribute does not count", "<a title=\"<meta charset=koi8-r>\">", "\xC3\xA9", "", QStringLiteral("é")},
        {"meta claiming UTF-16 means UTF-8", "<meta charset=utf-16>", "\xC3\xA9", "", QStringLiteral("é")},
        {"meta past the scan window is not read", blanks + metaKoi8, "\xC1", "", QStringLiteral("Á")},
        {"UTF-8 BOM beats the header", "", "\xEF\xBB\xBF\xC3\xA9", "text/html; charset=windows-1252", QStringLiteral("é")},
        {"UTF-16LE BOM", "", QByteArray("\xFF\xFE\xE9\x00\x41\x00", 6), "", QStringLiteral("éA")},
        {"header UTF-16BE", "", QByteArray("\x00\xE9\x00\x41", 4), "text/html; charset=utf-16be", QStringLiteral("éA")},
        {"empty page", "", "", utf8, ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(decodePageBytes(c.markup + c.bytes, c.contentType), QString::fromLatin1(c.markup) + c.expected) << c.name;
}

TEST(CharsetLabel, FromTheContentTypeHeaderAndFromMeta) {
    const std::pair<QByteArray, QByteArray> cases[] = {
        {"text/html", ""},        {"text/html;charset=utf-8", "utf-8"}, {"text/html; Charset = 'ISO-8859-1' ", "ISO-8859-1"},
        {"", ""},                 {"text/html; charset=\"koi8-r\"; foo=bar", "koi8-r"},
        {"text/html; charset=\"unterminated", ""}, {"text/html; charset=windows-1252;", "windows-1252"},
    };
    for (const auto& [header, label] : cases) EXPECT_EQ(lookup::charsetFromContentType(header), label) << header.constData();
    // From <meta>: the first declaration that names a known charset.
    const std::pair<QByteArray, QByteArray> metas[] = {
        {"<html><head><meta charset=\"utf-8\"></head>", "utf-8"},
        {"<meta name=viewport content=\"width=device-width\"><meta charset=latin1>", "latin1"},
        {"<meta charset=nonsense><meta charset=koi8-r>", "koi8-r"}, {"<meta/charset=utf-8>", "utf-8"},
        {"<metadata charset=utf-8>", ""},                           {"<p>no declaration</p>", ""},
    };
    for (const auto& [page, label] : metas) EXPECT_EQ(lookup::charsetFromMeta(page), label) << page.constData();
}

// pageUtf8 gives the text of decodePageBytes in UTF-8, in the page's own bytes where it can.
TEST(PageUtf8, IsTheDecodedTextInUtf8) {
    struct Bytes { const char* name; QByteArray bytes; QByteArray contentType; bool ownBytes; };
    const QByteArray utf8 = "text/html; charset=utf-8";
    const Bytes cases[] = {
        {"undeclared valid UTF-8", "<p>M\xC3\xBCller \xF0\x9F\x98\x80 \xEF\xBF\xBF</p>", "", true},
        {"declared UTF-8", "M\xC3\xBCller", utf8, true}, {"byte-order mark", "\xEF\xBB\xBFM\xC3\xBCller", "", true},
        {"two byte-order marks", "\xEF\xBB\xBF\xEF\xBB\xBFx", "", false}, {"cut short at the end", "a\xE2\x82", utf8, false},
        {"invalid UTF-8 declared", "M\xFCller", "text/html; charset=UTF-8", false},
        {"invalid UTF-8 undeclared is Windows-1252", "M\xFCller \x80", "", false},
        {"overlong form", "a\xC0\xAF" "b", utf8, false}, {"overlong three-byte form", "a\xE0\x80\xAF" "b", utf8, false},
        {"surrogate", "a\xED\xA0\x80" "b", utf8, false}, {"beyond U+10FFFF", "a\xF4\x90\x80\x80" "b", utf8, false},
        {"declared Windows-1252", "<meta charset=windows-1252>M\xFCller", "", false},
        {"UTF-16", QByteArray("\xFF\xFEM\0\xFC\0", 6), "", false},
    };
    for (const Bytes& c : cases) {
        QByteArray storage;
        const QByteArrayView view = lookup::pageUtf8(c.bytes, c.contentType, storage);
        EXPECT_EQ(view.toByteArray(), decodePageBytes(c.bytes, c.contentType).toUtf8()) << c.name;
        EXPECT_EQ(view.data() >= c.bytes.constData() && view.data() < c.bytes.constData() + c.bytes.size(), c.ownBytes) << c.name;
    }
}

}  // namespace
