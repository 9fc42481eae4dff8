// HTMLDecode beside a browser engine: every fixture page and a set of small hand-written pages are
// rendered by HTMLDecode and by Qt WebEngine (document.body.innerText, through the
// webengine_innertext tool), and the two must give the same lines.
//
// Both get the same text: a fixture page's bytes are decoded by decodePageBytes first; the engine
// is given that text as UTF-8 with an explicit utf-8 charset. All pages go through one engine start
// (the tool is run once, on first use). HTMLDecode's lines are split on CR LF, innerText's on LF.
#include "lookup/htmldecode.h"
#include "lookup/pagecharset.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace {

struct Page {
    std::string name;  // letters, digits and '_': the test's name and the file's name
    QString html;
};

struct Case {
    const char* name;
    const char* html;
};

// Small pages, each for one rule of the rendering.
constexpr Case kCases[] = {
    // Tables: a row a line, cells split by a tab.
    {"table_rows_and_cells", "<table><tr><td>a</td><td>b</td></tr><tr><td>c</td><td>d</td></tr></table>"},
    {"table_row_groups",
     "<table><thead><tr><th>H1</th><th>H2</th></tr></thead><tbody><tr><td>1</td><td>2</td></tr></tbody>"
     "<tfoot><tr><td>f1</td><td>f2</td></tr></tfoot></table>"},
    {"table_empty_cells", "<table><tr><td></td><td>x</td><td></td></tr></table>"},
    {"table_empty_row", "<table><tr></tr><tr><td>a</td></tr><tr><td></td></tr><tr><td>b</td></tr></table>"},
    {"table_blanks_in_cells", "<table><tr><td>  Name:  </td><td>\n Hans  Müller \n</td></tr></table>"},
    {"table_source_layout",
     "<table>\n  <tr>\n    <td class=\"dh\">Born</td>\n    <td class=\"di\">1961</td>\n  </tr>\n"
     "  <tr>\n    <td>Grid Square</td>\n    <td>JO62qm</td>\n  </tr>\n</table>"},
    {"table_between_text", "before<table><tr><td>x</td></tr></table>after"},
    {"table_caption", "<table><caption>Cap</caption><tr><td>a</td></tr></table>"},
    {"table_br_in_cell", "<table><tr><td>L</td><td>a<br>b</td></tr></table>"},
    {"table_blocks_in_cell", "<table><tr><td><div>a</div><div>b</div></td><td>c</td></tr></table>"},
    {"table_paragraph_in_cell", "<table><tr><td><p>a</p></td><td>b</td></tr><tr><td>c</td></tr></table>"},
    {"table_hidden_cells_and_rows",
     "<table><tr><td>a</td><td hidden>b</td></tr><tr style=\"display:none\"><td>c</td></tr></table>"},
    {"table_nested", "<table><tr><td>a</td><td><table><tr><td>b</td><td>c</td></tr></table></td></tr></table>"},
    {"table_misplaced_text", "<table>oops<tr><td>a</td></tr></table>"},
    {"table_implied_ends", "<table><tr><td>a<td>b<tr><td>c</table>"},
    {"table_cell_without_row", "<table><td>x</td><td>y</td></table>"},
    {"table_unclosed", "<table><tr><td>a</td><td>b"},
    {"table_colspan_and_header", "<table><tr><th colspan=\"2\">QRZ Record</th></tr><tr><td>k</td><td>v</td></tr></table>"},
    {"tables_one_after_another", "<table><tr><td>a</td></tr></table><table><tr><td>b</td></tr></table>"},
    {"table_in_paragraph_quirks_mode", "<p>x<table><tr><td>y</td></tr></table>z</p>"},
    {"table_in_paragraph_standards_mode", "<!DOCTYPE html><p>x<table><tr><td>y</td></tr></table>z</p>"},

    // Paragraphs: set off by a blank line.
    {"paragraphs", "<p>One</p><p>Two</p>"},
    {"paragraph_between_text", "a<p>b</p>c"},
    {"paragraph_beside_blocks", "<h2>T</h2><p>x</p><div>y</div>"},
    {"paragraph_in_div", "<div><p>a</p></div><div>b</div>"},
    {"paragraph_empty", "a<p></p>b"},
    {"paragraphs_unclosed", "<p>one<p>two"},
    {"paragraph_with_blanks", "<p>  one  </p>\n\n<p>\ttwo\t</p>"},
    {"block_in_paragraph", "<p><div>x</div></p>"},

    // Line breaks.
    {"br", "a<br>b<br><br>c"},
    {"br_first", "<br>a"},
    {"br_last", "a<br>"},
    {"br_alone", "<br>"},
    {"br_before_block_end", "<div>a<br></div><div>b</div>"},
    {"br_in_inline", "<span>a<br>b</span>"},
    {"br_with_blanks", "a <br> b"},
    {"br_end_tag", "a</br>b"},
    {"br_between_paragraphs", "<p>a</p><br><p>b</p>"},

    // Preformatted text.
    {"pre_keeps_blanks", "<pre>  a  b\n\n c </pre>"},
    {"pre_first_newline", "<pre>\nx\ty</pre>"},
    {"pre_two_first_newlines", "<pre>\n\nx</pre>"},
    {"pre_crlf", "<pre>a\r\nb</pre>"},
    {"pre_with_inline", "<pre>a <b> b </b>\n c</pre>"},
    {"pre_between_text", "x<pre>y</pre>z"},
    {"pre_trailing_newline", "<pre>a\n</pre>b"},
    {"listing_and_xmp", "<listing>a  b</listing><xmp><b>x</b>  y</xmp>"},

    // Lists.
    {"list_unordered", "<ul><li>one</li><li>two</li></ul>"},
    {"list_ordered", "<ol><li>one</li><li>two</li></ol>"},
    {"list_nested", "<ul><li>a<ul><li>b</li><li>c</li></ul></li><li>d</li></ul>"},
    {"list_unclosed_items", "<ul><li>one<li>two</ul>"},
    {"list_definitions", "<dl><dt>Term</dt><dd>Meaning</dd><dt>T2<dd>M2</dl>"},
    {"list_item_with_paragraph", "<ul><li><p>a</p></li><li>b</li></ul>"},
    {"list_item_outside_list", "<li>a</li><li>b</li>"},
    {"list_source_layout", "<ul class=\"menu\">\n    <li><a href=\"/\">News</a></li>\n    <li><a href=\"/f\">Forums</a></li>\n  </ul>"},

    // Headings.
    {"headings", "<h1>One</h1><h2>Two</h2><h3>Three</h3><h4>4</h4><h5>5</h5><h6>6</h6>"},
    {"heading_and_text", "<h1 class=\"call\">DL1ABC</h1>text"},
    {"heading_in_blocks", "<div><div><h1>a</h1></div></div><div><ul><li>b</li></ul></div>"},
    {"heading_with_inline", "<h2><a href=\"#\">Link</a> <small>(x)</small></h2>"},
    {"heading_unclosed", "<h1>a<h2>b"},

    // Nested and other blocks.
    {"divs", "<div>a</div><div>b</div>"},
    {"text_around_block", "a<div>b</div>c"},
    {"nested_divs", "<div>a<div>b<div>c</div>d</div>e</div>"},
    {"block_in_inline", "<span>a<div>b</div>c</span>"},
    {"sectioning", "<header>h</header><nav>n</nav><main><article>a</article><aside>s</aside></main><footer>f</footer>"},
    {"quote_center_address", "<blockquote>q</blockquote><center>c</center><address>ad</address>"},
    {"hr", "a<hr>b"},
    {"form_and_fieldset", "<form><fieldset><legend>L</legend>x</fieldset></form>"},
    {"details_closed", "<details><summary>S</summary>more</details>"},
    {"details_open", "<details open><summary>S</summary>more</details>"},
    {"figure", "<figure>img<figcaption>cap</figcaption></figure>"},
    {"deep_nesting",
     "<div><div><div><div><div><div><div><div><div><div>deep</div></div></div></div></div></div></div></div></div>"
     "</div>after"},

    // Inline elements.
    {"inline_elements", "<b>b</b><i>i</i><span>s</span><a href=\"#\">a</a><em>e</em><strong>st</strong><code>c</code>"},
    {"inline_blanks_between", "<span>a</span> <span>b</span>\n<a href=\"#\">c</a>"},
    {"inline_sup_sub_font", "x<sup>2</sup> H<sub>2</sub>O <font color=red>red</font> <small>s</small>"},
    {"image_between_text", "a<img src=\"/x.png\" alt=\"ALT\">b"},
    {"image_between_blanks", "a <img src=\"/x.png\"> b"},
    {"image_at_line_start", "<div> <img src=\"/x.png\"> a</div>"},
    {"input_between_blanks", "Name: <input type=\"text\" value=\"v\"> <input type=\"submit\" value=\"Go\">"},
    {"button_and_label", "<label>L</label> <button>OK</button>"},
    {"inline_block_style", "<span style=\"display:block\">a</span>b<div style=\"display:inline\">c</div>d"},

    // Entities.
    {"entities_named_and_numeric", "&amp; &lt;b&gt; &copy; &eacute; &#233; &#x20AC; &quot; &apos;"},
    {"entities_without_semicolon", "&copy 2024 &amp &lt"},
    {"entities_unknown_and_bare", "AT&T &unknown; a & b"},
    {"entities_windows_1252_numbers", "&#150; &#128; &#153;"},
    {"entities_no_break_space", "a&nbsp;&nbsp;b &nbsp; c"},
    {"entities_out_of_range", "&#0; &#x110000; &#xD800;"},
    {"entities_astral", "&#x1F600; &#128512;"},
    {"entities_in_attributes_only", "<a title=\"&lt;&gt;\">x</a>"},

    // Hidden elements.
    {"hidden_script_style_title_noscript_template",
     "<script>var x = '<p>no</p>';</script><style>p{}</style><title>T</title><noscript>n</noscript>"
     "<template><p>q</p></template>ok"},
    {"hidden_whole_document",
     "<!DOCTYPE html><html><head><title>T</title><meta charset=utf-8><style>b{}</style></head><body>Hi</body></html>"},
    {"hidden_attribute_and_display_none",
     "a<span hidden>b</span><div style=\"color:red; display: none !important\">c</div>d"},
    {"hidden_visibility", "a<span style=\"visibility:hidden\">b</span>"},
    {"hidden_input_and_comment", "a<input type=hidden value=x><!-- b -->c"},
    {"hidden_script_in_body", "<div>a</div><script>document.title = 'x';</script><div>b</div>"},
    {"hidden_block_between_blocks", "<div>a</div><div hidden>b</div><div>c</div>"},
    {"hidden_attribute_overridden", "<span hidden style=\"display:inline\">x</span>"},
    {"noscript_in_head", "<html><head><noscript><link rel=\"stylesheet\" href=\"x.css\">text</noscript></head><body>ok"},
    {"noscript_holding_markup", "<p>a<noscript><p>b</p><div>c</noscript>d</p>e"},
    {"noscript_end_tag_lookalike", "<noscript>x</noscripts>y</noscript>z"},

    // White-space collapse.
    {"blanks_collapse", "  a \n\t b  "},
    {"blanks_across_inline", "a <b> b </b> <i> c</i>"},
    {"blanks_at_block_edges", "a <div> b </div> c"},
    {"blanks_source_line_ends", "a\r\nb\rc\nd"},
    {"blanks_only", "  \n\t "},
    {"blanks_around_br", "<div>\n  a\n  <br>\n  b\n</div>"},
    {"form_feed_in_text", "a\fb a \f b\n\f"},
    {"form_feed_alone_between_elements", "<b>a</b>\f<b>b</b><div>c</div>\f<div>d</div>a<br>\f<br>b<img src=x.png>\fc"},
    {"form_feed_in_inline", "<span>\f</span>x<span> \f </span>y<div>z</div><span>\f</span>"},
    {"form_feed_at_line_edges", "<div> \f a \f</div><p>\f</p><p>x \f<br>\f y</p>"},
    {"form_feed_before_the_document", "\f \fa"},

    // Broken markup.
    {"broken_misnested_inline", "<div><b>bold<i>both</b>italic</div>"},
    {"broken_stray_end_tags", "</div>x</span></p>y"},
    {"broken_unterminated_comment", "a<!-- b"},
    {"broken_unterminated_tag", "x<div"},
    {"broken_less_than_in_text", "a < b and c<3"},
    {"broken_quotes_in_attributes", "<a title='x > y' href=\"/\">link</a>"},
    {"broken_unclosed_script", "a<script>b"},
    {"broken_formatting_across_paragraph", "<b><p>x</b>y</p>"},
    {"broken_upper_case_tags", "<DIV>A</DIV><BR>B<P>C</P>"},
    {"broken_unquoted_attributes", "<div class=a id=b>x</div><span style=display:none>y</span>z"},
    {"broken_link_around_block", "<a href=\"#\"><div>x</div></a>y"},
    {"broken_tag_in_tag", "<div<div>x</div>"},
    {"empty", ""},
    {"probe_select", "a<select><option>one<option selected>two</select>b"},
    {"probe_select_block", "<div>a</div><select><option>one</select><div>b</div>"},
    {"probe_textarea", "a<textarea>x\ny</textarea>b"},
    {"probe_iframe", "a<iframe src=\"about:blank\">fallback</iframe>b"},
    {"probe_video_audio", "a<video>v</video><audio>au</audio><audio controls>ac</audio>b"},
    {"probe_canvas_object", "a<canvas>c</canvas><object>o</object>b"},
    {"probe_svg", "a<svg><text>t</text></svg>b"},
    {"probe_math", "a<math><mi>x</mi></math>b"},
    {"probe_ruby", "<ruby>漢<rp>(</rp><rt>kan</rt><rp>)</rp></ruby>"},
    {"probe_dialog", "a<dialog>d</dialog><dialog open>o</dialog>b"},
    {"probe_optgroup", "<select><optgroup label=g><option>x</optgroup></select>"},
    {"probe_meter_progress", "a<meter>m</meter><progress>p</progress>b"},
    {"probe_wbr_nobr", "a<wbr>b<nobr>c d</nobr>"},
    {"probe_marquee", "a<marquee>m</marquee>b"},
    {"probe_legend_outside", "<legend>l</legend>x"},
    {"probe_caption_hidden", "<table><caption hidden>c</caption><tr><td>a</td></tr></table>"},
    {"probe_td_display_block", "<table><tr><td style=\"display:block\">a</td><td>b</td></tr></table>"},
    {"probe_div_display_table_cell", "<div style=\"display:table-cell\">a</div><div style=\"display:table-cell\">b</div>"},
    {"probe_li_display_inline", "<ul><li style=\"display:inline\">a</li><li style=\"display:inline\">b</li></ul>"},
    {"probe_visibility_visible_child", "<div style=\"visibility:hidden\">a<span style=\"visibility:visible\">b</span></div>"},
    {"probe_display_none_upper", "a<span style=\"DISPLAY: NONE\">b</span>c"},
    {"probe_style_in_body", "<style>.x{display:none}</style><span class=x>a</span>b"},
    {"probe_hidden_until_found", "a<div hidden=\"until-found\">b</div>c"},
    {"probe_main_closes_p", "<p>a<main>b</main>c"},
    {"probe_nested_p_in_button", "<button><p>a</p></button>b"},
    {"probe_empty_div_between_paragraphs", "<p>a</p><div></div><p>b</p>"},
    {"probe_br_in_empty_paragraph", "<p><br></p><p>a</p>"},
    {"probe_p_in_li", "<ol><li>a<p>b</p>c</li></ol>"},
    {"probe_table_inside_p_td", "<table><tr><td>a</td><td><p>b</p><p>c</p></td></tr></table>"},
    {"probe_nbsp_only_cell", "<table><tr><td>&nbsp;</td><td>x</td></tr></table>"},
    {"probe_tab_in_pre_cell", "<table><tr><td><pre>a\tb</pre></td><td>c</td></tr></table>"},
    {"probe_frameset", "<frameset><frame src=x></frameset>"},
    {"probe_image_tag", "a<image src=x>b"},
    {"probe_plaintext", "a<plaintext><b>x</b>\n y"},
    {"probe_h1_in_span", "<span>a<h1>b</h1>c</span>"},
    {"probe_cr_only_lines", "<pre>a\rb\r\rc</pre>"},
    {"probe_zero_width_chars", "a\u200Bb\u00ADc\u3000d"},
    {"probe_input_types", "a<input type=checkbox><input type=radio><input type=image><input type=button value=B>b"},
    {"probe_template_in_table", "<table><template><tr><td>t</td></tr></template><tr><td>a</td></tr></table>"},
    {"probe_comment_forms", "a<!-->b<!--->c<!-- x --!>d"},
    {"probe_script_escape", "<script><!--<script>x</script>y--></script>z"},
    {"probe_row_display_none_last", "<table><tr><td>a</td></tr><tr hidden><td>b</td></tr></table>c"},
    {"probe_cell_display_none_last", "<table><tr><td>a</td><td>b</td><td hidden>c</td></tr></table>"},
    {"probe_table_display_none", "x<table hidden><tr><td>a</td></tr></table>y"},
    {"probe_details_summary_nested", "<details><div><summary>S</summary></div>x</details>y"},
    {"probe_details_two_summaries", "<details><summary>A</summary><summary>B</summary></details>"},
};

QString fixturesDir() { return QStringLiteral(PX_SOURCE_DIR "/tests/fixtures/pages"); }

// "qrz/accented-cp1252.html" -> "qrz_accented_cp1252"
std::string testName(QString path) {
    path.chop(5);  // ".html"
    for (QChar& c : path)
        if (!c.isLetterOrNumber()) c = u'_';
    return path.toStdString();
}

const std::vector<Page>& fixturePages() {
    static const std::vector<Page> pages = [] {
        std::vector<Page> out;
        QStringList files;
        QDirIterator it(fixturesDir(), {QStringLiteral("*.html")}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) files.append(QDir(fixturesDir()).relativeFilePath(it.next()));
        files.sort();
        for (const QString& file : files) {
            QFile f(fixturesDir() + u'/' + file);
            if (!f.open(QIODevice::ReadOnly)) continue;  // reported by the test on the page count
            out.push_back({testName(file), lookup::decodePageBytes(f.readAll())});
        }
        return out;
    }();
    return pages;
}

const std::vector<Page>& casePages() {
    static const std::vector<Page> pages = [] {
        std::vector<Page> out;
        for (const Case& c : kCases) out.push_back({c.name, QString::fromUtf8(c.html)});
        return out;
    }();
    return pages;
}

// innerText of every page by name, from one run of the tool; an error text when the run failed.
struct Reference {
    std::map<std::string, QString> text;
    QString error;
};

const Reference& reference() {
    static const Reference ref = [] {
        Reference r;
        QTemporaryDir dir;
        if (!dir.isValid()) {
            r.error = QStringLiteral("no temporary folder");
            return r;
        }
        QStringList files;
        for (const auto* set : {&fixturePages(), &casePages()})
            for (const Page& page : *set) {
                const QString file = dir.filePath(QString::fromStdString(page.name) + QStringLiteral(".html"));
                QFile f(file);
                if (!f.open(QIODevice::WriteOnly) || f.write(page.html.toUtf8()) < 0) {
                    r.error = QStringLiteral("cannot write ") + file;
                    return r;
                }
                files.append(file);
            }
        QProcess tool;
        tool.start(QStringLiteral(PX_WEBENGINE_TOOL), files);
        if (!tool.waitForFinished(300000) || tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0) {
            r.error = QStringLiteral("webengine_innertext failed (exit %1): %2 %3")
                          .arg(tool.exitCode())
                          .arg(tool.errorString(), QString::fromLocal8Bit(tool.readAllStandardError()));
            return r;
        }
        const QJsonObject json = QJsonDocument::fromJson(tool.readAllStandardOutput()).object();
        for (auto it = json.begin(); it != json.end(); ++it)
            r.text[QFileInfo(it.key()).completeBaseName().toStdString()] = it.value().toString();
        return r;
    }();
    return ref;
}

QString visible(const QString& line) {
    QString out;
    for (const QChar c : line) {
        if (c == u'\t') out += QStringLiteral("\\t");
        else if (c == u'\u00A0') out += QStringLiteral("\\u00A0");
        else if (c == u'\r') out += QStringLiteral("\\r");
        else if (c == u'\n') out += QStringLiteral("\\n");
        else if (c == u'\f') out += QStringLiteral("\\f");
        else if (c.unicode() < 0x20) out += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, u'0');
        else out += c;
    }
    return out;
}

// The lines of both, with the first difference and two lines around it when they differ.
testing::AssertionResult sameLines(const QStringList& ours, const QStringList& browser) {
    const qsizetype common = std::min(ours.size(), browser.size());
    qsizetype first = 0;
    while (first < common && ours[first] == browser[first]) ++first;
    if (first == common && ours.size() == browser.size()) return testing::AssertionSuccess();
    auto excerpt = [&](const QStringList& lines) {
        std::string out;
        for (qsizetype i = std::max<qsizetype>(0, first - 2); i < std::min(lines.size(), first + 3); ++i)
            out += (i == first ? "  > " : "    ") + std::to_string(i + 1) + ": [" + visible(lines[i]).toStdString() + "]\n";
        if (first >= lines.size()) out += "  > " + std::to_string(first + 1) + ": (no more lines)\n";
        return out;
    };
    return testing::AssertionFailure() << "first difference at line " << first + 1 << " (HTMLDecode " << ours.size()
                                       << " lines, innerText " << browser.size() << " lines)\nHTMLDecode:\n"
                                       << excerpt(ours) << "innerText:\n"
                                       << excerpt(browser);
}

void PrintTo(const Page& page, std::ostream* os) { *os << page.name; }

class Conformance : public testing::TestWithParam<Page> {};

TEST_P(Conformance, HTMLDecodeGivesTheLinesOfInnerText) {
    const Reference& ref = reference();
    ASSERT_TRUE(ref.error.isEmpty()) << ref.error.toStdString();
    const auto it = ref.text.find(GetParam().name);
    ASSERT_NE(it, ref.text.end()) << "no innerText for " << GetParam().name;
    const QStringList ours = lookup::HTMLDecode(GetParam().html).split(QStringLiteral("\r\n"));
    const QStringList browser = it->second.split(u'\n');
    EXPECT_TRUE(sameLines(ours, browser));
}

TEST(ConformancePages, AllFixturePagesAreThere) {
    // Every service's pages are compared, the update index too.
    QDirIterator it(fixturesDir(), {QStringLiteral("*.html")}, QDir::Files, QDirIterator::Subdirectories);
    int files = 0;
    for (; it.hasNext(); it.next()) ++files;
    EXPECT_EQ(fixturePages().size(), static_cast<size_t>(files));
    for (const char* service : {"eham_", "qrz_", "qrzcq_", "callook_", "hamcall_"})
        EXPECT_TRUE(std::any_of(fixturePages().begin(), fixturePages().end(),
                                [&](const Page& p) { return p.name.rfind(service, 0) == 0; }))
            << service;
}

std::string nameOf(const testing::TestParamInfo<Page>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(FixturePages, Conformance, testing::ValuesIn(fixturePages()), nameOf);
INSTANTIATE_TEST_SUITE_P(Cases, Conformance, testing::ValuesIn(casePages()), nameOf);

}  // namespace
