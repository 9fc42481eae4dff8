#include "common/cp1252.h"
#include "common/vbtext.h"

#include <gtest/gtest.h>
#include <cmath>

TEST(TextTest, SearchesAreOneBasedAndCaseSensitive) {
    EXPECT_EQ(vb::inStr(u"Name: Bob", u"Name"), 1);
    EXPECT_EQ(vb::inStr(u"Name: Bob", u"name"), 0);
    EXPECT_EQ(vb::inStr(4, u"abcabc", u"abc"), 4);
    EXPECT_EQ(vb::inStr(5, u"abcabc", u"abc"), 0);
    EXPECT_EQ(vb::inStr(9, u"abc", u"a"), 0);
    EXPECT_EQ(vb::inStr(0, u"abc", u"a"), 0);
    EXPECT_EQ(vb::inStrRev(u"a,b,c", u","), 4);
    EXPECT_EQ(vb::inStrRev(u"a,b,c", u",", 3), 2);
    EXPECT_EQ(vb::mid(u"abcdef", 2, 3), "bcd");
    EXPECT_EQ(vb::mid(u"abcdef", 5), "ef");
    EXPECT_EQ(vb::mid(u"abcdef", 5, 10), "ef");
    EXPECT_EQ(vb::mid(u"abc", 7), "");
    EXPECT_EQ(vb::mid(u"abc", 0, 2), "");
    EXPECT_EQ(vb::left(u"abc", 5), "abc");
    EXPECT_EQ(vb::right(u"abc", 2), "bc");
    EXPECT_EQ(vb::trim(u"  a b\t "), "a b\t");
}

TEST(TextTest, LeadingNumberValue) {
    struct Case {
        const char16_t* text;
        double value;
    };
    for (const Case& c : {Case{u"51.5072", 51.5072}, Case{u"  -0.1276 W", -0.1276}, Case{u"\t\n42", 42},
                          Case{u"1 615 198th", 1}, Case{u"abc", 0}, Case{u"", 0}, Case{u"-", 0},
                          Case{u"1.5e2x", 150}, Case{u"2e", 2}, Case{u"3.4.5", 3.4}, Case{u".5", 0.5}, Case{u"- 5", 0}, Case{u"5.", 5}, Case{u"+7", 7},
                          Case{u"52.52*", 52.52}, Case{u"1e999", 0}}) {
        EXPECT_DOUBLE_EQ(vb::val(c.text), c.value) << QString::fromUtf16(c.text).toStdString();
    }
}

TEST(TextTest, RoundingHalvesToEvenAndOverflowIsAnError) {
    EXPECT_EQ(vb::toInt16(2.5), 2);
    EXPECT_EQ(vb::toInt16(3.5), 4);
    EXPECT_EQ(vb::toInt16(-2.5), -2);
    EXPECT_EQ(vb::toInt16(32767.4), 32767);
    EXPECT_EQ(vb::toInt16(32767.5), std::nullopt);
    EXPECT_EQ(vb::toInt16(-32768.5), -32768);
    EXPECT_EQ(vb::toInt16(NAN), std::nullopt);
    EXPECT_EQ(vb::toInt32(2147483647.4), 2147483647);
    EXPECT_EQ(vb::toInt32(2147483647.6), std::nullopt);
    EXPECT_EQ(vb::parseNumber(u" 12.5 "), 12.5);
    EXPECT_EQ(vb::parseNumber(u"12,5"), std::nullopt);
    EXPECT_EQ(vb::parseNumber(u"x"), std::nullopt);
}

TEST(Cp1252Test, EveryByteRoundTripsAndRanksFollowUnicodeOrder) {
    for (int b = 0; b < 256; ++b) {
        const auto byte = static_cast<unsigned char>(b);
        EXPECT_EQ(cp1252::fromUnicode(cp1252::toUnicode(byte)), byte) << b;
    }
    EXPECT_EQ(cp1252::toUnicode(0x80), u'\u20AC');
    EXPECT_EQ(cp1252::toUnicode(0x9F), u'\u0178');
    EXPECT_EQ(cp1252::fromUnicode(u'\u0141'), '?');
    // The euro sign (0x80) sorts after y-diaeresis (0xFF) because it does in Unicode.
    EXPECT_GT(cp1252::unicodeRank(0x80), cp1252::unicodeRank(0xFF));
    EXPECT_LT(cp1252::unicodeRank('0'), cp1252::unicodeRank('A'));
    EXPECT_LT(cp1252::unicodeRank('Z'), cp1252::unicodeRank('a'));
}

TEST(Cp1252Test, FilesAreReadAsUtf8WhenValidElseWindows1252) {
    EXPECT_EQ(decodeUtf8OrCp1252(QByteArray("Caf\xc3\xa9")), QString::fromUtf8("Caf\u00e9"));
    EXPECT_EQ(decodeUtf8OrCp1252(QByteArray("Caf\xe9")), QString::fromUtf8("Caf\u00e9"));
    EXPECT_EQ(decodeUtf8OrCp1252(QByteArray("\xef\xbb\xbfOK")), "OK");
}
