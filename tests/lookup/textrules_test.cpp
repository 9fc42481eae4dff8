// The text helpers the field parsers and call-sign cleaning rely on.
#include "common/vbtext.h"

#include <gtest/gtest.h>

namespace {

TEST(MidStrict, TakesCharactersLikeMid) {
    struct Case {
        qsizetype start, length;
        const char16_t* expected;
    };
    const Case cases[] = {
        {1, 2, u"ab"}, {2, 1, u"b"}, {3, 5, u"c"}, {4, 1, u""}, {9, 3, u""}, {1, 0, u""}, {2, 0, u""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(vb::midStrict(u"abc", c.start, c.length), QString::fromUtf16(c.expected))
            << c.start << "," << c.length;
}

TEST(MidStrict, NegativeLengthOrStartBelowOneIsAnInvalidCall) {
    EXPECT_THROW(vb::midStrict(u"abc", 1, -1), vb::InvalidCall);
    EXPECT_THROW(vb::midStrict(u"abc", 0, 1), vb::InvalidCall);
    EXPECT_THROW(vb::midStrict(u"", 5, -3), vb::InvalidCall);
}

TEST(IsAlphaNumeric, JudgesTheWindows1252Character) {
    struct Case {
        char16_t c;
        bool expected;
    };
    const Case cases[] = {
        {u'A', true},  {u'z', true},  {u'0', true},   {u'9', true},   {u'\u00E9', true},  // é
        {u'\u00D8', true},                                                                 // Ø
        {u'\u00DF', true},                                                                 // ß
        {u'\u0160', true},                                                                 // Š (byte 8A)
        {u'/', false}, {u' ', false}, {u'-', false},  {u'?', false},  {u'\u20AC', false},  // €
        {u'\u0414', false},                                                                // Д: not in the code page
        {u'\u0141', false},                                                                // Ł: not in the code page
        {u'\t', false},
    };
    for (const Case& c : cases) EXPECT_EQ(vb::isAlphaNumeric(QChar(c.c)), c.expected) << int(c.c);
}

}  // namespace
