// HTML to plain text with innerText's line structure, lines joined by CR LF. What a browser shows
// for a rule is checked page by page in tests/conformance; these are the exact texts it cannot
// check, and the long and deep pages.
#include "lookup/htmldecode.h"

#include <QStringList>
#include <gtest/gtest.h>

#include <string_view>

namespace {

using namespace std::string_view_literals;
using lookup::HTMLDecode;

QString crlf(const QStringList& lines) { return lines.join(QStringLiteral("\r\n")); }

TEST(HTMLDecode, ExactTexts) {
    struct Case {
        const char* name;
        std::string_view html;
        const char* expected;
    };
    const Case cases[] = {
        {"blocks are joined by CR LF", "<div>a</div><div>b</div>", "a\r\nb"},
        {"paragraphs by a blank line", "<p>One</p><p>Two</p>", "One\r\n\r\nTwo"},
        {"br at the start counts", "<br>a", "\r\na"},
        {"rows by CR LF, cells by tabs", "<table><tr><td>a</td><td>b</td></tr><tr><td>c</td><td>d</td></tr></table>",
         "a\tb\r\nc\td"},
        {"CR LF in pre stays one line end", "<pre>a\r\nb</pre>", "a\r\nb"},
        {"CR, LF and CR LF outside pre are blanks", "a\r\nb\rc\nd", "a b c d"},
        // A hidden option inside a group still shows; an empty one gives no line.
        {"option groups, hidden options, labels",
         "<select><optgroup label=g><option hidden>x</option></optgroup><option label=L>y<option></select>", "x\r\ny"},
        {"NUL characters in text are dropped", "a\0b"sv, "ab"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(HTMLDecode(QString::fromUtf8(c.html.data(), qsizetype(c.html.size()))), QString::fromUtf8(c.expected))
            << c.name;
}

TEST(HTMLDecode, EveryRunOfTextOfALongPageComesThrough) {
    // More runs of text than the first range of marks holds.
    QString html;
    QStringList lines;
    for (int i = 0; i < 8000; ++i) {
        html += QStringLiteral("<p>line %1 of the page</p><table><tr><td>%1</td><td> x%1 </td></tr></table>\n").arg(i);
        lines << QStringLiteral("line %1 of the page").arg(i) << QString() << QStringLiteral("%1\tx%1").arg(i) << QString();
    }
    lines.removeLast();
    EXPECT_EQ(HTMLDecode(html), crlf(lines));
}

TEST(HTMLDecode, DeepNestingKeepsAllText) {
    // Below the limit the structure is kept: every line is there.
    EXPECT_EQ(HTMLDecode(QStringLiteral("<div>a").repeated(200)), crlf(QStringList(200, QStringLiteral("a"))));

    // Far beyond it the tags that nest too deep go, their text stays.
    const QString text = HTMLDecode(QStringLiteral("<div><span>a").repeated(100000));
    EXPECT_EQ(text.count(u'a'), 100000);
    EXPECT_TRUE(text.startsWith(QStringLiteral("a\r\na\r\n")));
    EXPECT_EQ(HTMLDecode(QStringLiteral("<a href=x><b>z").repeated(100000)).count(u'z'), 100000);
}

TEST(PageToText, DecodesThenRenders) {
    EXPECT_EQ(lookup::pageToText("<p>M\xFCller</p><p>\x80</p>"), QStringLiteral("Müller\r\n\r\n€"));
    EXPECT_EQ(lookup::pageToText("<p>\xC1</p>", "text/html; charset=koi8-r"), QStringLiteral("а"));
}

}  // namespace
