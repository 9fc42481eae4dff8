// Call-sign cleaning: the returned call and what is left in the argument.
#include "lookup/cleancall.h"

#include <gtest/gtest.h>

namespace {

TEST(CleanCall, CleansOrRejects) {
    struct Case { const char* input; const char* result; const char* callAfter; };
    const Case cases[] = {
        {"", "", ""},                         {"   ", "", ""},                      {"EA8/", "", ""},
        {"dl1abc", "DL1ABC", "DL1ABC"},       {"  dl1abc  ", "DL1ABC", "DL1ABC"},  {"DL1ABC/P", "DL1ABC", "DL1ABC"},
        {"DL1ABC-7", "DL1ABC", "DL1ABC"},     {"EA8/DL1ABC", "DL1ABC", "DL1ABC"},  {"ea8/dl1abc/p", "DL1ABC", "DL1ABC"},
        {"VK2/G4ABC/M", "G4ABC", "G4ABC"},    {"/DL1ABC", "DL1ABC", "DL1ABC"},     {"G 4ABC", "4ABC", "4ABC"},
        {"W1AW", "W1AW", "W1AW"},             {"ABCDEF", "", "ABCDEF"},            {"DL1ABCDE/P", "", "DL1ABCDE"},
        {"SMØABC", "SM0ABC", "SM0ABC"},       // slashed O typed for zero
        {"smøabc", "SM0ABC", "SM0ABC"},       // also when typed in lower case
        {"EA8/ DL1ABC", "DL1ABC", "DL1ABC"},  // the rest is trimmed
        {"3DA0/ZS1ABC", "3DA0", "3DA0"},      // a separator at position 5 ends the call
        {"DL1 ABC", "", "ABC"},               // prefix rule leaves no digit
        {"DLABC/1", "DLABC", "DLABC"},        // the digit counts before the suffix is cut
        {"DL1ABCD", "", "DL1ABCD"},           // 7 characters
        {"K1A", "K1A", "K1A"},                // no separator at all: nothing is cut
        {"RA1ÀBC", "RA1ÀBC", "RA1ÀBC"},       // À is a letter of the code page
        {"RA1AДB", "RA1A", "RA1A"},           // Д is not
    };
    for (const Case& c : cases) {
        QString call = QString::fromUtf8(c.input);
        EXPECT_EQ(CleanCall(call), QString::fromUtf8(c.result)) << c.input;
        EXPECT_EQ(call, QString::fromUtf8(c.callAfter)) << c.input;
    }
}

}  // namespace
