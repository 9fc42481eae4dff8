// HTML to plain text with innerText's line structure, lines joined by CR LF.
#include "lookup/htmldecode.h"

#include <QStringList>
#include <gtest/gtest.h>

namespace {

using lookup::HTMLDecode;

struct Case {
    const char* name;
    const char* html;
    const char* expected;
};

void expectRendered(const Case* begin, const Case* end) {
    for (const Case* c = begin; c != end; ++c)
        EXPECT_EQ(HTMLDecode(QString::fromUtf8(c->html)), QString::fromUtf8(c->expected)) << c->name;
}

TEST(HTMLDecode, BlocksParagraphsAndLineBreaks) {
    const Case cases[] = {
        {"empty", "", ""},
        {"only blanks", "  \n\t ", ""},
        {"divs", "<div>a</div><div>b</div>", "a\r\nb"},
        {"nested blocks give one break", "<div><div><h1>a</h1></div></div><div><ul><li>b</li></ul></div>", "a\r\nb"},
        {"text around a block", "a<div>b</div>c", "a\r\nb\r\nc"},
        {"paragraphs are set off by a blank line", "<p>One</p><p>Two</p>", "One\r\n\r\nTwo"},
        {"paragraph beside a block", "<h2>T</h2><p>x</p><div>y</div>", "T\r\n\r\nx\r\n\r\ny"},
        {"no breaks at the start or end", "<p><div>x</div></p>", "x"},
        {"br", "a<br>b<br><br>c", "a\r\nb\r\n\r\nc"},
        {"br at the start counts", "<br>a", "\r\na"},
        {"br before a block end", "<div>a<br></div><div>b</div>", "a\r\n\r\nb"},
        {"list items", "<ul><li>one</li><li>two</li></ul>", "one\r\ntwo"},
        {"hr", "a<hr>b", "a\r\nb"},
        {"closed details show their summary", "<details><summary>S</summary>more</details>", "S"},
        {"open details show all", "<details open><summary>S</summary>more</details>", "S\r\nmore"},
    };
    expectRendered(std::begin(cases), std::end(cases));
}

TEST(HTMLDecode, TablesAreRowsOfTabSeparatedCells) {
    const Case cases[] = {
        {"rows and cells", "<table><tr><td>a</td><td>b</td></tr><tr><td>c</td><td>d</td></tr></table>", "a\tb\r\nc\td"},
        {"header cells and row groups",
         "<table><thead><tr><th>H1</th><th>H2</th></tr></thead><tbody><tr><td>1</td><td>2</td></tr></tbody></table>",
         "H1\tH2\r\n1\t2"},
        {"empty cells keep their tabs", "<table><tr><td></td><td>x</td><td></td></tr></table>", "\tx\t"},
        {"blanks inside cells vanish", "<table><tr><td>  Name:  </td><td>\n Hans  Müller \n</td></tr></table>",
         "Name:\tHans Müller"},
        {"table between text", "before<table><tr><td>x</td></tr></table>after", "before\r\nx\r\nafter"},
        {"caption", "<table><caption>Cap</caption><tr><td>a</td></tr></table>", "Cap\r\na"},
        {"br inside a cell", "<table><tr><td>L</td><td>a<br>b</td></tr></table>", "L\ta\r\nb"},
        {"hidden cells and rows do not count",
         "<table><tr><td>a</td><td hidden>b</td></tr><tr style=\"display:none\"><td>c</td></tr></table>", "a"},
        {"nested table",
         "<table><tr><td>a</td><td><table><tr><td>b</td><td>c</td></tr></table></td></tr></table>", "a\t\r\nb\tc"},
        {"text misplaced in a table comes before it", "<table>oops<tr><td>a</td></tr></table>", "oops\r\na"},
        {"implied row and cell ends", "<table><tr><td>a<td>b<tr><td>c</table>", "a\tb\r\nc"},
    };
    expectRendered(std::begin(cases), std::end(cases));
}

TEST(HTMLDecode, WhiteSpaceCollapsesExceptInPre) {
    const Case cases[] = {
        {"runs collapse", "  a \n\t b  ", "a b"},
        {"across inline elements", "a <b> b </b> <i> c</i>", "a b c"},
        {"blanks at block edges vanish", "a <div> b </div> c", "a\r\nb\r\nc"},
        {"line ends in the source are blanks", "a\r\nb\rc\nd", "a b c d"},
        {"pre keeps everything", "<pre>  a  b\n\n c </pre>", "  a  b\r\n\r\n c "},
        {"pre drops the newline after its start tag", "<pre>\nx\ty</pre>", "x\ty"},
        {"pre with CR LF in the source", "<pre>a\r\nb</pre>", "a\r\nb"},
        {"no-break spaces stay", "a&nbsp;&nbsp;b", "a\u00A0\u00A0b"},
    };
    expectRendered(std::begin(cases), std::end(cases));
}

TEST(HTMLDecode, HiddenElementsGiveNothing) {
    const Case cases[] = {
        {"script, style, title, noscript, template",
         "<script>var x = '<p>no</p>';</script><style>p{}</style><title>T</title><noscript>n</noscript>"
         "<template><p>q</p></template>ok",
         "ok"},
        {"a whole document", "<!DOCTYPE html><html><head><title>T</title><meta charset=utf-8></head><body>Hi</body></html>",
         "Hi"},
        {"hidden attribute and display none", "a<span hidden>b</span><div style=\"color:red; display: none !important\">c</div>d",
         "ad"},
        {"visibility hidden", "a<span style=\"visibility:hidden\">b</span>", "a"},
        {"hidden inputs and comments", "a<input type=hidden value=x><!-- b -->c", "ac"},
        {"inline style can make a block", "<span style=\"display:block\">a</span>b", "a\r\nb"},
        {"inline style can make an inline", "<div style=\"display:inline\">a</div>b", "ab"},
    };
    expectRendered(std::begin(cases), std::end(cases));
}

TEST(HTMLDecode, EntitiesAreDecoded) {
    const Case cases[] = {
        {"named and numeric", "&amp; &lt;b&gt; &copy; &eacute; &#233; &#x20AC; &quot;", "& <b> © é é € \""},
        {"without semicolon", "&copy 2024", "© 2024"},
        {"bare ampersand", "AT&T &unknown;", "AT&T &unknown;"},
        {"Windows-1252 numeric references", "&#150; &#128;", "– €"},
    };
    expectRendered(std::begin(cases), std::end(cases));
}

TEST(HTMLDecode, BrokenMarkupStillGivesItsText) {
    const Case cases[] = {
        {"misnested inline", "<div><b>bold<i>both</b>italic</div>", "boldbothitalic"},
        {"unclosed paragraphs", "<p>one<p>two", "one\r\n\r\ntwo"},
        {"unclosed list items", "<ul><li>one<li>two</ul>", "one\r\ntwo"},
        {"stray end tags", "</div>x</span></p>y", "x\r\n\r\ny"},
        {"unterminated comment", "a<!-- b", "a"},
        {"unterminated tag", "x<div", "x"},
        {"less-than in text", "a < b and c<3", "a < b and c<3"},
        {"quotes in attributes", "<a title='x > y' href=\"/\">link</a>", "link"},
        {"unclosed script swallows the rest", "a<script>b", "a"},
        {"attributes as the tokenizer reads them",
         "<a href=x/>a</a><a =\"x>y\">b</a><a b='c'd=\"e\"/f>c</a><span style=\"display:none\"style=\"display:inline\">d</span>"
         "<span x=1 STYLE=display:none>e</span><span/style=display:none>f</span>g",
         "ay\">bcg"},
        {"isindex is an element like any unknown one", "a<isindex>b</isindex>c<isindex prompt=x action=y>d", "abcd"},
        {"a self-closing look-alike in SVG", "a<svg><text/x>t</text></svg>b<svg><text/>u</svg>c", "a\r\nt\r\nb\r\nc"},
    };
    expectRendered(std::begin(cases), std::end(cases));
    // NUL characters in text are dropped by the parser.
    EXPECT_EQ(HTMLDecode(QString::fromUtf8(QByteArray("a\0b", 3))), QStringLiteral("ab"));
}

TEST(HTMLDecode, TheDoctypeSetsTheQuirksMode) {
    const Case cases[] = {
        {"without a doctype a table stays in its paragraph", "<p>x<table><tr><td>y</td></tr></table>z</p>",
         "x\r\ny\r\nz"},
        {"with one the table closes it", "<!DOCTYPE html><p>x<table><tr><td>y</td></tr></table>z</p>",
         "x\r\n\r\ny\r\nz"},
        {"blanks before the document go", "\f \fa", "a"},
    };
    expectRendered(std::begin(cases), std::end(cases));
}

TEST(HTMLDecode, NoscriptHoldsTextThatNeverShows) {
    const Case cases[] = {
        {"markup in it does not close what is open", "<p>a<noscript><p>b</p><div>c</noscript>d</p>e", "ad\r\n\r\ne"},
        {"in the head", "<html><head><noscript><link rel=\"stylesheet\" href=\"x.css\">text</noscript></head><body>ok",
         "ok"},
        {"only its own end tag ends it", "<noscript>x</noscripts>y</noscript>z", "z"},
    };
    expectRendered(std::begin(cases), std::end(cases));
}

TEST(HTMLDecode, AFormFeedIsACharacterOfItsOwn) {
    const Case cases[] = {
        {"in text", "a\fb a \f b", "a\fb a \f b"},
        {"alone behind inline content", "<b>a</b>\f<b>b</b>", "a\fb"},
        {"alone behind a line break or a block", "a<br>\f<br>b<div>c</div>\f<div>d</div>", "a\r\n\r\nb\r\nc\r\nd"},
        {"alone in an inline element", "<div>x</div><span>\f</span>", "x\r\n\f"},
    };
    expectRendered(std::begin(cases), std::end(cases));
}

TEST(HTMLDecode, ListsToChooseFromShowEachOptionOnALine) {
    const Case cases[] = {
        {"options", "a<select><option>one</option> <option>  two  words </option></select>b",
         "a\r\none\r\ntwo words\r\nb"},
        {"groups, hidden options, labels",
         "<select><optgroup label=g><option hidden>x</option></optgroup><option label=L>y<option></select>",
         "x\r\ny"},
        {"blanks around the list stay", "a <select><option>x</option></select> b", "a \r\nx\r\n b"},
        {"in a cell", "<table><tr><td><select><option>x<option>y</select></td><td>c</td></tr></table>",
         "x\r\ny\r\n\tc"},
        {"a hidden list shows nothing", "a<select style=\"visibility:hidden\"><option>x</select>b", "ab"},
    };
    expectRendered(std::begin(cases), std::end(cases));
}

TEST(HTMLDecode, VisibilityHiddenTakesRoomButShowsNothing) {
    const Case cases[] = {
        {"blanks around it stay", "a <span style=\"visibility:hidden\">x</span> b", "a  b"},
        {"a blank in it takes the blanks after it", "a<span style=\"visibility:hidden\">x </span> b", "ab"},
        {"visible again inside", "a<span style=\"visibility:hidden\">x<b style=\"visibility:visible\">y</b>z</span>w",
         "ayw"},
        {"a hidden block gives no line breaks", "a<div style=\"visibility:hidden\">x</div>b", "ab"},
        {"a hidden last cell still counts", "<table><tr><td>a</td><td style=\"visibility:hidden\">x</td></tr></table>",
         "a\t"},
        {"a hidden br breaks nothing", "a<br style=\"visibility:hidden\">b", "ab"},
    };
    expectRendered(std::begin(cases), std::end(cases));
}

TEST(HTMLDecode, TheDisplayPropertyMakesBlocksAndTableParts) {
    const Case cases[] = {
        {"a cell made a block", "<table><tr><td>a</td><td style=\"display:block\">b</td><td>c</td></tr></table>",
         "a\t\r\nb\r\nc"},
        {"a table of divs",
         "<div style=\"display:table\"><div style=\"display:table-row\"><div style=\"display:table-cell\">a</div>"
         "<div style=\"display:table-cell\">b</div></div></div>c",
         "a\tb\r\nc"},
        {"cells in a line", "a<span style=\"display:table-cell\">x</span><span style=\"display:table-cell\">y</span>b",
         "ax\tyb"},
        {"a paragraph keeps its blank lines", "a<p style=\"display:inline\">x</p>b", "a\r\n\r\nx\r\n\r\nb"},
        {"forms inside a table's structure are not shown",
         "<table><tr><td>a</td></tr><form><tr><td>b</td></tr></form></table><table><tr><td>c</td><form></form></tr></table>",
         "a\r\nb\r\nc"},
    };
    expectRendered(std::begin(cases), std::end(cases));
}

TEST(HTMLDecode, EmbeddedContent) {
    const Case cases[] = {
        {"an object shows what it holds", "a<object><param name=x value=y>o</object>b", "aob"},
        {"a marquee is inline", "a<marquee>m</marquee>b", "amb"},
        {"an SVG shows the text of its text elements",
         "a<svg><title>Icon</title><path d=\"M0 0\"/><g><text>t1</text><text> t2 </text></g>stray</svg>b",
         "a\r\nt1\r\nt2\r\nb"},
        {"MathML is inline text", "a<math><mi>x</mi><mo>+</mo><mn>1</mn></math>b", "ax+1b"},
    };
    expectRendered(std::begin(cases), std::end(cases));
}

TEST(HTMLDecode, ControlAndPrivateUseCharactersStay) {
    // The parser would turn control characters and noncharacters into U+FFFD; a browser keeps them.
    const Case cases[] = {
        {"control characters and noncharacters",
         "a\x01" "b\x7F" "c\u0080d\uFDD0e\x0B" "f &amp;\x01g <b>\x02</b> \x03 a long text with \x04 inside it",
         "a\x01" "b\x7F" "c\u0080d\uFDD0e\x0B" "f &\x01g \x02 \x03 a long text with \x04 inside it"},
        {"private-use characters of the page itself", "a\uE000b <p>\uE001</p> &#xE002; and a longer text",
         "a\uE000b\r\n\r\n\uE001\r\n\r\n\uE002 and a longer text"},
    };
    expectRendered(std::begin(cases), std::end(cases));
}

TEST(HTMLDecode, TextOnlyTheTokenizerSeesAsMarkupIsLeftAlone) {
    // The inner </script> does not end the script (it sits in an escaped <script> in a comment):
    // the real end is the second one, and the comment-like text behind the first one is no
    // comment. The style attribute must keep its value as it is written.
    EXPECT_EQ(HTMLDecode(QStringLiteral(
                  "<script><!--<script></script> <!-- </script>a<span style=\"--> ;display:none\">hidden text</span>b")),
              QStringLiteral("ab"));
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
    EXPECT_EQ(HTMLDecode(html), lines.join(QStringLiteral("\r\n")));
}

TEST(HTMLDecode, DeepNestingKeepsAllText) {
    // Below the limit the structure is kept: every line is there.
    QString shallow;
    for (int i = 0; i < 200; ++i) shallow += QStringLiteral("<div>a");
    EXPECT_EQ(HTMLDecode(shallow), QStringList(200, QStringLiteral("a")).join(QStringLiteral("\r\n")));

    // Far beyond it the tags that nest too deep go, their text stays.
    QString deep;
    for (int i = 0; i < 100000; ++i) deep += QStringLiteral("<div><span>a");
    const QString text = HTMLDecode(deep);
    EXPECT_EQ(text.count(u'a'), 100000);
    EXPECT_TRUE(text.startsWith(QStringLiteral("a\r\na\r\n")));

    QString formatting;
    for (int i = 0; i < 100000; ++i) formatting += QStringLiteral("<a href=x><b>z");
    EXPECT_EQ(HTMLDecode(formatting).count(u'z'), 100000);
}

TEST(PageToText, DecodesThenRenders) {
    EXPECT_EQ(lookup::pageToText("<p>M\xFCller</p><p>\x80</p>"), QStringLiteral("Müller\r\n\r\n€"));
    EXPECT_EQ(lookup::pageToText("<p>\xC1</p>", "text/html; charset=koi8-r"), QStringLiteral("а"));
}

}  // namespace
