// The text helpers the field parsers and call-sign cleaning rely on.
#include "common/vbtext.h"

#include <gtest/gtest.h>

namespace {

TEST(MidStrict, TakesCharactersLikeMidButRefusesANegativeLengthOrAStartBelowOne) {
    struct Case { qsizetype start, length; const char16_t* expected; };
    for (const Case& c : {Case{1, 2, u"ab"}, {2, 1, u"b"}, {3, 5, u"c"}, {4, 1, u""}, {9, 3, u""}, {1, 0, u""}, {2, 0, u""}})
        EXPECT_EQ(vb::midStrict(u"abc", c.start, c.length), QString::fromUtf16(c.expected)) << c.start << "," << c.length;
    EXPECT_THROW(vb::midStrict(u"abc", 1, -1), vb::InvalidCall);
    EXPECT_THROW(vb::midStrict(u"abc", 0, 1), vb::InvalidCall);
    EXPECT_THROW(vb::midStrict(u"", 5, -3), vb::InvalidCall);
}

// Letters and digits of Windows-1252, Š (byte 8A) among them; Д and Ł are not in the code page.
TEST(IsAlphaNumeric, JudgesTheWindows1252Character) {
    for (const QChar c : QStringLiteral(u"Az09\u00E9\u00D8\u00DF\u0160")) EXPECT_TRUE(vb::isAlphaNumeric(c)) << int(c.unicode());
    for (const QChar c : QStringLiteral(u"/ -?\u20AC\u0414\u0141\t")) EXPECT_FALSE(vb::isAlphaNumeric(c)) << int(c.unicode());
}

}  // namespace
