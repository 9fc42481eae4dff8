// HTMLDecode against the browser engine's innerText of every fixture page and every page of
// tests/conformance/cases.json, as committed in tests/conformance/expected.json: the check of
// htmldecode_conformance in every build, also where there is no browser engine (the sanitizer
// build). htmldecode_conformance checks the committed texts against the browser and rewrites
// them (see README).
#include "conformance/pages.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using conformance::Page;

const conformance::Texts& committed() {
    static const conformance::Texts texts = conformance::readExpected();
    return texts;
}

class BrowserTexts : public testing::TestWithParam<Page> {};

TEST_P(BrowserTexts, HTMLDecodeGivesTheBrowsersLines) {
    const auto it = committed().find(GetParam().name);
    ASSERT_NE(it, committed().end()) << "no text in expected.json";
    conformance::expectBrowsersLines(GetParam(), it->second);
}

TEST(BrowserTextsFile, HoldsOneTextPerPage) {
    QString error;
    const conformance::Texts texts = conformance::readExpected(&error);
    ASSERT_TRUE(error.isEmpty()) << error.toStdString();
    std::set<std::string> pages, stored;
    for (const Page& page : conformance::allPages()) EXPECT_TRUE(pages.insert(page.name).second) << "two pages named " << page.name;
    for (const auto& entry : texts) stored.insert(entry.first);
    EXPECT_EQ(stored, pages);
    EXPECT_EQ(conformance::fixturePages().size(), static_cast<size_t>(conformance::fixtureFiles().size()));
    EXPECT_GE(conformance::casePages().size(), 240u) << "cases.json";
}

INSTANTIATE_TEST_SUITE_P(FixturePages, BrowserTexts, testing::ValuesIn(conformance::fixturePages()), conformance::nameOf);
INSTANTIATE_TEST_SUITE_P(Cases, BrowserTexts, testing::ValuesIn(conformance::casePages()), conformance::nameOf);

}  // namespace
