// The two ways to a page's text give the same text: the marks path (runs of text stand as one
// private-use character each while the page is parsed, attributes nothing reads are dropped)
// and the plain path (the page parsed as it is, but for the changes that make the parser read
// it as a browser does). HTMLDecode takes the marks path whenever the parser read the marked
// page as the prescan expected; on every fixture page and every page of cases.json, what it
// gives must be what the plain path gives.
#include "conformance/pages.h"
#include "lookup/html/render.h"
#include "lookup/htmldecode.h"

#include <QByteArray>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace {

using conformance::Page;

// The pages whose text comes from the plain path, and why; every other page must take the
// marks path, so that comparing the two says something about it.
struct PlainPage {
    const char *name, *why;
};
constexpr PlainPage kPlainPages[] = {
    {"private_use_characters", "the page's own private-use characters would pass for marks"},
    {"script_ending_at_its_second_end_tag",
     "the prescan ends the <script> at its first end tag, the parser (after \"<!--<script>\" in it) at its second"},
};

bool takesPlainPath(const std::string& name) {
    return std::any_of(std::begin(kPlainPages), std::end(kPlainPages), [&](const PlainPage& p) { return name == p.name; });
}

lookup::html::Rendering render(const Page& page, bool marks) {
    const QByteArray utf8 = page.html.toUtf8();
    return lookup::html::renderUtf8(std::string_view(utf8.constData(), static_cast<size_t>(utf8.size())), marks);
}

class MarksAndPlainPath : public testing::TestWithParam<Page> {};

TEST_P(MarksAndPlainPath, GiveTheSameText) {
    const lookup::html::Rendering marked = render(GetParam(), true), plain = render(GetParam(), false);
    EXPECT_FALSE(plain.fromMarks);
    EXPECT_EQ(marked.fromMarks, !takesPlainPath(GetParam().name)) << "marks path taken";
    EXPECT_TRUE(conformance::sameLines(marked.text.split(QStringLiteral("\r\n")), plain.text.split(QStringLiteral("\r\n"))))
        << (marked.fromMarks ? "marks path" : "plain path both times");
}

INSTANTIATE_TEST_SUITE_P(FixturePages, MarksAndPlainPath, testing::ValuesIn(conformance::fixturePages()), conformance::nameOf);
INSTANTIATE_TEST_SUITE_P(Cases, MarksAndPlainPath, testing::ValuesIn(conformance::casePages()), conformance::nameOf);

// Pages on which the fuzz target found the two paths apart, each with the text a browser gives.
struct Found {
    const char *name, *html, *text;
};
constexpr Found kFound[] = {
    // Cutting the unread attributes behind the '/' made "<svg/>" of it: self-closing, so the
    // "!" stood outside the <svg> (where it shows) instead of inside (where it does not).
    {"attribute_behind_slash", "<svg/a=\"\"c>!", ""},
    {"attributes_behind_slash_quoted", "<svg/a=\"b\"c>!<p>x", "x"},
};

TEST(MarksAndPlainPath, PagesTheFuzzerFound) {
    for (const Found& f : kFound) {
        const Page page{f.name, QString::fromUtf8(f.html)};
        const lookup::html::Rendering marked = render(page, true), plain = render(page, false);
        EXPECT_TRUE(marked.fromMarks) << f.name;
        EXPECT_EQ(marked.text, QString::fromUtf8(f.text)) << f.name;
        EXPECT_EQ(plain.text, QString::fromUtf8(f.text)) << f.name;
    }
}

// Pages nested as deep as the parser is let go (kMaxNesting levels of `open`), where the start
// tags behind are cut with their end tags; the text on both sides of a cut tag comes together
// and must read as it read with the tag between, on both paths.
struct DeepFound {
    const char *name, *open, *tail, *text;
};
constexpr DeepFound kDeepFound[] = {
    {"less_than_before_cut_tag", "<div>", "<<b>ab>", "<ab>"},
    {"less_than_before_cut_end_tag", "<div>", "<b>x<</b>ab>", "x<ab>"},
    {"less_than_before_two_cut_tags", "<div>", "<<b><i>ab>c", "<ab>c"},
    {"less_than_before_cut_tag_then_end_tag", "<div>", "x<<b>/div>y", "x</div>y"},
    {"less_than_before_cut_tag_then_comment", "<div>", "x<<b>!--y-->z", "x<!--y-->z"},
    {"less_than_before_cut_tag_in_table", "<table><tr><td>", "<<b>ab>", "<ab>"},
    {"named_reference_before_cut_tag", "<div>", "&not<b>in;", "\u00ACin;"},
    {"reference_without_semicolon_before_cut_tag", "<div>", "&amp<b>;x", "&;x"},
    {"numeric_reference_before_cut_tag", "<div>", "&#65<b>0;", "A0;"},
    {"hex_reference_before_cut_tag", "<div>", "&#x26<b>1;", "&1;"},
};

TEST(MarksAndPlainPath, TextAroundCutTags) {
    for (const DeepFound& f : kDeepFound) {
        std::string html;
        for (int k = 0; k < lookup::kMaxNesting; ++k) html += f.open;
        html += f.tail;
        const Page page{f.name, QString::fromStdString(html)};
        const lookup::html::Rendering marked = render(page, true), plain = render(page, false);
        EXPECT_TRUE(marked.fromMarks) << f.name;
        EXPECT_EQ(marked.text.trimmed(), QString::fromUtf8(f.text)) << f.name;
        EXPECT_EQ(plain.text.trimmed(), QString::fromUtf8(f.text)) << f.name;
    }
}

}  // namespace
