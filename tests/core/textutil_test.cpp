#include "common/cp1252.h"
#include "common/vbtext.h"

#include <QStringList>
#include <gtest/gtest.h>
#include <cmath>
#include <vector>

TEST(TextTest, SearchesAreOneBasedAndCaseSensitive) {
    EXPECT_EQ((std::vector<qsizetype>{vb::inStr(u"Name: Bob", u"Name"), vb::inStr(u"Name: Bob", u"name"),
                                      vb::inStr(4, u"abcabc", u"abc"), vb::inStr(5, u"abcabc", u"abc"), vb::inStr(9, u"abc", u"a"),
                                      vb::inStr(0, u"abc", u"a"), vb::inStrRev(u"a,b,c", u","), vb::inStrRev(u"a,b,c", u",", 3)}),
              (std::vector<qsizetype>{1, 0, 4, 0, 0, 0, 4, 2}));
    EXPECT_EQ((QStringList{vb::mid(u"abcdef", 2, 3), vb::mid(u"abcdef", 5), vb::mid(u"abcdef", 5, 10), vb::mid(u"abc", 7),
                           vb::mid(u"abc", 0, 2), vb::left(u"abc", 5), vb::right(u"abc", 2), vb::trim(u"  a b\t ")}),
              (QStringList{"bcd", "ef", "ef", "", "", "abc", "bc", "a b\t"}));
}

TEST(TextTest, LeadingNumberValue) {
    const std::pair<const char16_t*, double> cases[] = {
        {u"51.5072", 51.5072}, {u"  -0.1276 W", -0.1276}, {u"\t\n42", 42}, {u"1 615 198th", 1}, {u"abc", 0},
        {u"", 0},              {u"-", 0},                 {u"1.5e2x", 150}, {u"2e", 2},          {u"3.4.5", 3.4},
        {u".5", 0.5},          {u"- 5", 0},               {u"5.", 5},       {u"+7", 7},          {u"52.52*", 52.52},
        {u"1e999", 0}};
    for (const auto& [text, value] : cases) EXPECT_DOUBLE_EQ(vb::val(text), value) << QString::fromUtf16(text).toStdString();
}

TEST(TextTest, RoundingHalvesToEvenAndOverflowIsAnError) {
    const std::pair<double, std::optional<int16_t>> int16s[] = {{2.5, 2},           {3.5, 4},        {-2.5, -2},
                                                                {32767.4, 32767},   {32767.5, {}},   {-32768.5, -32768},
                                                                {NAN, {}}};
    for (const auto& [value, rounded] : int16s) EXPECT_EQ(vb::toInt16(value), rounded) << value;
    EXPECT_EQ((std::vector{vb::toInt32(2147483647.4), vb::toInt32(2147483647.6)}), (std::vector<std::optional<int32_t>>{2147483647, {}}));
    EXPECT_EQ((std::vector{vb::parseNumber(u" 12.5 "), vb::parseNumber(u"12,5"), vb::parseNumber(u"x")}),
              (std::vector<std::optional<double>>{12.5, std::nullopt, std::nullopt}));
}

TEST(Cp1252Test, EveryByteRoundTripsAndRanksFollowUnicodeOrder) {
    for (int b = 0; b < 256; ++b) EXPECT_EQ(cp1252::fromUnicode(cp1252::toUnicode(static_cast<unsigned char>(b))), b) << b;
    EXPECT_EQ(cp1252::toUnicode(0x80), u'\u20AC');
    EXPECT_EQ(cp1252::toUnicode(0x9F), u'\u0178');
    EXPECT_EQ(cp1252::fromUnicode(u'\u0141'), '?');
    // The euro sign (0x80) sorts after y-diaeresis (0xFF) because it does in Unicode.
    EXPECT_GT(cp1252::unicodeRank(0x80), cp1252::unicodeRank(0xFF));
}

TEST(Cp1252Test, FilesAreReadAsUtf8WhenValidElseWindows1252) {
    EXPECT_EQ((QStringList{decodeUtf8OrCp1252("Caf\xc3\xa9"), decodeUtf8OrCp1252("Caf\xe9"), decodeUtf8OrCp1252("\xef\xbb\xbfOK")}),
              (QStringList{"Caf\u00e9", "Caf\u00e9", "OK"}));
}
