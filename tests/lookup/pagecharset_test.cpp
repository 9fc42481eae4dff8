// Page bytes to text: BOM, then the Content-Type header, then <meta>, else UTF-8 when valid,
// else Windows-1252.
#include "lookup/pagecharset.h"

#include <gtest/gtest.h>

namespace {

using lookup::decodePageBytes;

struct Case {
    const char* name;
    QByteArray bytes;
    QByteArray contentType;
    QString expected;
};

TEST(DecodePageBytes, ChoosesTheDeclaredOrDetectedCharset) {
    const QByteArray metaKoi8 = "<meta charset=\"koi8-r\">";
    const QByteArray blanks(lookup::kMetaScanBytes, ' ');
    const Case cases[] = {
        {"undeclared valid UTF-8", "M\xC3\xBCller", "", QStringLiteral("Müller")},
        {"undeclared invalid UTF-8 is Windows-1252", "M\xFCller", "", QStringLiteral("Müller")},
        {"Windows-1252 beyond Latin-1", "\x80 \x92\x8A", "", QStringLiteral("€ ’Š")},
        {"plain ASCII", "Call DL1ABC", "text/html", QStringLiteral("Call DL1ABC")},
        {"header UTF-8 keeps broken bytes broken", "M\xFCller", "text/html; charset=UTF-8", QStringLiteral("M\uFFFDller")},
        {"header ISO-8859-1 means Windows-1252", "\x80", "text/html; charset=ISO-8859-1", QStringLiteral("€")},
        {"header US-ASCII means Windows-1252", "\xE9", "text/html; charset=us-ascii", QStringLiteral("é")},
        {"header quoted label", "\xC1", "text/html; charset=\"windows-1251\"", QStringLiteral("Б")},
        {"header beats meta", "<meta charset=windows-1252>\xC3\xA9", "text/html; charset=utf-8",
         QStringLiteral("<meta charset=windows-1252>é")},
        {"unknown header label falls back to meta", metaKoi8 + "\xC1", "text/html; charset=x-bogus",
         QStringLiteral("<meta charset=\"koi8-r\">а")},
        {"meta charset", metaKoi8 + "\xC1", "", QStringLiteral("<meta charset=\"koi8-r\">а")},
        {"meta http-equiv", "<META HTTP-EQUIV='Content-Type' CONTENT='text/html; charset=windows-1250'>\x8A", "",
         QStringLiteral("<META HTTP-EQUIV='Content-Type' CONTENT='text/html; charset=windows-1250'>Š")},
        {"meta content without http-equiv is no declaration", "<meta content=\"charset=koi8-r\">\xC1", "",
         QStringLiteral("<meta content=\"charset=koi8-r\">Á")},
        {"meta in a comment does not count", "<!-- <meta charset=koi8-r> -->\xC3\xA9", "",
         QStringLiteral("<!-- <meta charset=koi8-r> -->é")},
        {"meta text inside an attribute does not count", "<a title=\"<meta charset=koi8-r>\">\xC3\xA9", "",
         QStringLiteral("<a title=\"<meta charset=koi8-r>\">é")},
        {"meta claiming UTF-16 means UTF-8", "<meta charset=utf-16>\xC3\xA9", "", QStringLiteral("<meta charset=utf-16>é")},
        {"meta past the scan window is not read", blanks + metaKoi8 + "\xC1", "",
         QString::fromLatin1(blanks) + QStringLiteral("<meta charset=\"koi8-r\">Á")},
        {"UTF-8 BOM beats the header", "\xEF\xBB\xBF\xC3\xA9", "text/html; charset=windows-1252", QStringLiteral("é")},
        {"UTF-16LE BOM", QByteArray("\xFF\xFE\xE9\x00\x41\x00", 6), "", QStringLiteral("éA")},
        {"header UTF-16BE", QByteArray("\x00\xE9\x00\x41", 4), "text/html; charset=utf-16be", QStringLiteral("éA")},
        {"empty page", "", "text/html; charset=utf-8", QStringLiteral("")},
    };
    for (const Case& c : cases) EXPECT_EQ(decodePageBytes(c.bytes, c.contentType), c.expected) << c.name;
}

TEST(CharsetFromContentType, ReadsTheCharsetParameter) {
    const std::pair<QByteArray, QByteArray> cases[] = {
        {"text/html", ""},
        {"text/html;charset=utf-8", "utf-8"},
        {"text/html; Charset = 'ISO-8859-1' ", "ISO-8859-1"},
        {"text/html; charset=\"koi8-r\"; foo=bar", "koi8-r"},
        {"text/html; charset=windows-1252;", "windows-1252"},
        {"text/html; charset=\"unterminated", ""},
        {"", ""},
    };
    for (const auto& [header, label] : cases) EXPECT_EQ(lookup::charsetFromContentType(header), label) << header.constData();
}

TEST(CharsetFromMeta, FindsTheFirstDeclarationThatNamesAKnownCharset) {
    const std::pair<QByteArray, QByteArray> cases[] = {
        {"<html><head><meta charset=\"utf-8\"></head>", "utf-8"},
        {"<meta name=viewport content=\"width=device-width\"><meta charset=latin1>", "latin1"},
        {"<meta charset=nonsense><meta charset=koi8-r>", "koi8-r"},
        {"<meta/charset=utf-8>", "utf-8"},
        {"<metadata charset=utf-8>", ""},
        {"<p>no declaration</p>", ""},
    };
    for (const auto& [page, label] : cases) EXPECT_EQ(lookup::charsetFromMeta(page), label) << page.constData();
}

}  // namespace
