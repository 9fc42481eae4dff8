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
#include <QProcessEnvironment>
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
    {"table_foot_before_body", "<table><tfoot><tr><td>f</td></tr></tfoot><tbody><tr><td>b</td></tr></tbody></table>"},
    {"table_head_after_body", "<table><tbody><tr><td>b</td></tr></tbody><thead><tr><td>h</td></tr></thead></table>"},
    {"table_empty_cells", "<table><tr><td></td><td>x</td><td></td></tr></table>"},
    {"table_empty_row", "<table><tr></tr><tr><td>a</td></tr><tr><td></td></tr><tr><td>b</td></tr></table>"},
    {"table_empty_row_group_after_rows", "<table><tr><td>a</td></tr><tbody></tbody></table>x"},
    {"table_blanks_in_cells", "<table><tr><td>  Name:  </td><td>\n Hans  Müller \n</td></tr></table>"},
    {"table_source_layout",
     "<table>\n  <tr>\n    <td class=\"dh\">Born</td>\n    <td class=\"di\">1961</td>\n  </tr>\n"
     "  <tr>\n    <td>Grid Square</td>\n    <td>JO62qm</td>\n  </tr>\n</table>"},
    {"table_between_text", "before<table><tr><td>x</td></tr></table>after"},
    {"table_caption", "<table><caption>Cap</caption><tr><td>a</td></tr></table>"},
    {"table_caption_after_rows", "<table><tr><td>a</td></tr><caption>c</caption></table>"},
    {"table_caption_hidden", "<table><caption hidden>c</caption><tr><td>a</td></tr></table>"},
    {"table_caption_inline", "<table><caption style=\"display:inline\">c</caption><tr><td>a</td></tr></table>"},
    {"table_br_in_cell", "<table><tr><td>L</td><td>a<br>b</td></tr></table>"},
    {"table_blocks_in_cell", "<table><tr><td><div>a</div><div>b</div></td><td>c</td></tr></table>"},
    {"table_paragraph_in_cell", "<table><tr><td><p>a</p></td><td>b</td></tr><tr><td>c</td></tr></table>"},
    {"table_paragraphs_in_last_cell", "<table><tr><td>a</td><td><p>b</p><p>c</p></td></tr></table>"},
    {"table_no_break_space_cell", "<table><tr><td>&nbsp;</td><td>x</td></tr></table>"},
    {"table_pre_in_cell", "<table><tr><td><pre>a\tb</pre></td><td>c</td></tr></table>"},
    {"table_hidden_cells_and_rows",
     "<table><tr><td>a</td><td hidden>b</td></tr><tr style=\"display:none\"><td>c</td></tr></table>"},
    {"table_hidden_last_row", "<table><tr><td>a</td></tr><tr hidden><td>b</td></tr></table>c"},
    {"table_hidden_last_cell", "<table><tr><td>a</td><td>b</td><td hidden>c</td></tr></table>"},
    {"table_hidden", "x<table hidden><tr><td>a</td></tr></table>y"},
    {"table_nested", "<table><tr><td>a</td><td><table><tr><td>b</td><td>c</td></tr></table></td></tr></table>"},
    {"table_misplaced_text", "<table>oops<tr><td>a</td></tr></table>"},
    {"table_implied_ends", "<table><tr><td>a<td>b<tr><td>c</table>"},
    {"table_cell_without_row", "<table><td>x</td><td>y</td></table>"},
    {"table_unclosed", "<table><tr><td>a</td><td>b"},
    {"table_colspan_and_header", "<table><tr><th colspan=\"2\">QRZ Record</th></tr><tr><td>k</td><td>v</td></tr></table>"},
    {"tables_one_after_another", "<table><tr><td>a</td></tr><tr><td>b</td></tr></table><table><tr><td>c</td></tr></table>"},
    {"table_form_around_rows", "<table><tr><td>a</td></tr><form><tr><td>b</td></tr></form></table>"},
    {"table_form_after_last_cell", "<table><tr><td>a</td><form></form></tr></table>c"},
    {"table_template_inside", "<table><template><tr><td>t</td></tr></template><tr><td>a</td></tr></table>"},
    {"table_in_paragraph_quirks_mode", "<p>x<table><tr><td>y</td></tr></table>z</p>"},
    {"table_in_paragraph_standards_mode", "<!DOCTYPE html><p>x<table><tr><td>y</td></tr></table>z</p>"},

    // Tables made by the display property.
    {"display_cell_as_block", "<table><tr><td>a</td><td style=\"display:block\">b</td><td>c</td></tr></table>"},
    {"display_cell_as_inline", "<table><tr><td>a</td><td style=\"display:inline\">b</td><td>c</td></tr></table>"},
    {"display_row_as_block", "<table><tr><td>a</td></tr><tr style=\"display:block\"><td>b</td></tr><tr><td>c</td></tr></table>"},
    {"display_row_group_as_block", "<table><thead style=\"display:block\"><tr><td>a</td></tr></thead><tr><td>b</td></tr></table>"},
    {"display_table_as_block", "<table style=\"display:block\"><tr><td>a</td><td>b</td></tr></table>"},
    {"display_cell_as_row", "<table><tr><td style=\"display:table-row\">a</td><td>b</td></tr></table>"},
    {"display_table_of_divs",
     "<div style=\"display:table\"><div style=\"display:table-row\"><div style=\"display:table-cell\">a</div>"
     "<div style=\"display:table-cell\">b</div></div></div>c"},
    {"display_cells_without_table", "<div style=\"display:table-cell\">a</div><div style=\"display:table-cell\">b</div>"},
    {"display_cells_in_a_line", "a<span style=\"display:table-cell\">x</span><span style=\"display:table-cell\">y</span>b"},
    {"display_cells_split_by_text", "<div style=\"display:table-cell\">a</div>x<div style=\"display:table-cell\">b</div>"},
    {"display_rows_without_table",
     "<div style=\"display:table-row\"><span style=\"display:table-cell\">a</span><span style=\"display:table-cell\">b</span>"
     "</div><div style=\"display:table-row\"><span style=\"display:table-cell\">c</span></div>"},
    {"display_rows_split_by_text", "<div style=\"display:table-row\">a</div>x<div style=\"display:table-row\">b</div>"},
    {"display_list_items_as_cells", "<ul><li style=\"display:table-cell\">a</li><li style=\"display:table-cell\">b</li></ul>"},

    // Paragraphs: set off by a blank line.
    {"paragraphs", "<p>One</p><p>Two</p>"},
    {"paragraph_between_text", "a<p>b</p>c"},
    {"paragraph_beside_blocks", "<h2>T</h2><p>x</p><div>y</div>"},
    {"paragraph_in_div", "<div><p>a</p></div><div>b</div>"},
    {"paragraph_empty", "a<p></p>b"},
    {"paragraphs_unclosed", "<p>one<p>two"},
    {"paragraph_with_blanks", "<p>  one  </p>\n\n<p>\ttwo\t</p>"},
    {"paragraph_inline_keeps_blank_lines", "a<p style=\"display:inline\">x</p>b"},
    {"paragraph_not_displayed", "a<p style=\"display:none\">x</p>b"},
    {"paragraphs_around_empty_div", "<p>a</p><div></div><p>b</p>"},
    {"paragraph_holding_br", "<p><br></p><p>a</p>"},
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
    {"pre_cr", "<pre>a\rb\r\rc</pre>"},
    {"pre_with_inline", "<pre>a <b> b </b>\n c</pre>"},
    {"pre_between_text", "x<pre>y</pre>z"},
    {"pre_trailing_newline", "<pre>a\n</pre>b"},
    {"listing_and_xmp", "<listing>a  b</listing><xmp><b>x</b>  y</xmp>"},
    {"plaintext", "a<plaintext><b>x</b>\n y"},

    // Lists.
    {"list_unordered", "<ul><li>one</li><li>two</li></ul>"},
    {"list_ordered", "<ol><li>one</li><li>two</li></ol>"},
    {"list_nested", "<ul><li>a<ul><li>b</li><li>c</li></ul></li><li>d</li></ul>"},
    {"list_unclosed_items", "<ul><li>one<li>two</ul>"},
    {"list_definitions", "<dl><dt>Term</dt><dd>Meaning</dd><dt>T2<dd>M2</dl>"},
    {"list_item_with_paragraph", "<ul><li><p>a</p></li><li>b</li></ul>"},
    {"list_item_with_paragraph_inside", "<ol><li>a<p>b</p>c</li></ol>"},
    {"list_item_outside_list", "<li>a</li><li>b</li>"},
    {"list_items_inline", "<ul><li style=\"display:inline\">a</li><li style=\"display:inline\">b</li></ul>"},
    {"list_item_block", "<ul><li style=\"display:block\">a</li></ul>b"},
    {"list_source_layout", "<ul class=\"menu\">\n    <li><a href=\"/\">News</a></li>\n    <li><a href=\"/f\">Forums</a></li>\n  </ul>"},

    // Headings.
    {"headings", "<h1>One</h1><h2>Two</h2><h3>Three</h3><h4>4</h4><h5>5</h5><h6>6</h6>"},
    {"heading_and_text", "<h1 class=\"call\">DL1ABC</h1>text"},
    {"heading_in_blocks", "<div><div><h1>a</h1></div></div><div><ul><li>b</li></ul></div>"},
    {"heading_with_inline", "<h2><a href=\"#\">Link</a> <small>(x)</small></h2>"},
    {"heading_unclosed", "<h1>a<h2>b"},
    {"heading_in_inline", "<span>a<h1>b</h1>c</span>"},
    {"heading_and_item_inline", "<h1 style=\"display:inline\">a</h1>b<li style=\"display:inline\">c</li>d"},

    // Nested and other blocks.
    {"divs", "<div>a</div><div>b</div>"},
    {"text_around_block", "a<div>b</div>c"},
    {"nested_divs", "<div>a<div>b<div>c</div>d</div>e</div>"},
    {"block_in_inline", "<span>a<div>b</div>c</span>"},
    {"sectioning", "<header>h</header><nav>n</nav><main><article>a</article><aside>s</aside></main><footer>f</footer>"},
    {"main_closes_paragraph", "<p>a<main>b</main>c"},
    {"quote_center_address", "<blockquote>q</blockquote><center>c</center><address>ad</address>"},
    {"hr", "a<hr>b"},
    {"form_and_fieldset", "<form><fieldset><legend>L</legend>x</fieldset></form>"},
    {"legend_outside_fieldset", "<legend>l</legend>x"},
    {"details_closed", "<details><summary>S</summary>more</details>"},
    {"details_open", "<details open><summary>S</summary>more</details>"},
    {"details_two_summaries", "<details><summary>A</summary><summary>B</summary></details>"},
    {"details_summary_not_a_child", "<details><div><summary>S</summary></div>x</details>y"},
    {"dialog", "a<dialog>d</dialog><dialog open>o</dialog>b"},
    {"isindex", "a<isindex>b</isindex>c<isindex prompt=x action=y>d"},
    {"figure", "<figure>img<figcaption>cap</figcaption></figure>"},
    {"deep_nesting",
     "<div><div><div><div><div><div><div><div><div><div>deep</div></div></div></div></div></div></div></div></div>"
     "</div>after"},
    {"display_values",
     "a<span style=\"display:inline-block\">b</span>c<div style=\"display:contents\">d</div>e"
     "<span style=\"display: flex\">f</span><span style=\"display:grid\">g</span>"
     "<div style=\"display:inline-table\">h</div>i"},

    // Inline elements.
    {"inline_elements", "<b>b</b><i>i</i><span>s</span><a href=\"#\">a</a><em>e</em><strong>st</strong><code>c</code>"},
    {"inline_blanks_between", "<span>a</span> <span>b</span>\n<a href=\"#\">c</a>"},
    {"inline_sup_sub_font", "x<sup>2</sup> H<sub>2</sub>O <font color=red>red</font> <small>s</small>"},
    {"inline_wbr_nobr", "a<wbr>b<nobr>c d</nobr>"},
    {"inline_ruby", "<ruby>漢<rp>(</rp><rt>kan</rt><rp>)</rp></ruby>"},
    {"marquee", "a<marquee>m</marquee>b"},
    {"image_between_text", "a<img src=\"/x.png\" alt=\"ALT\">b"},
    {"image_between_blanks", "a <img src=\"/x.png\"> b"},
    {"image_at_line_start", "<div> <img src=\"/x.png\"> a</div>"},
    {"image_tag_alias", "a<image src=x>b"},
    {"input_between_blanks", "Name: <input type=\"text\" value=\"v\"> <input type=\"submit\" value=\"Go\">"},
    {"input_types", "a<input type=checkbox><input type=radio><input type=image><input type=button value=B>b"},
    {"button_and_label", "<label>L</label> <button>OK</button>"},
    {"button_holding_paragraph", "<button><p>a</p></button>b"},
    {"textarea", "a<textarea>x\ny</textarea>b"},
    {"meter_and_progress", "a<meter>m</meter><progress>p</progress>b"},
    {"inline_block_style", "<span style=\"display:block\">a</span>b<div style=\"display:inline\">c</div>d"},

    // Lists to choose from: each option on a line.
    {"select_options", "a<select><option>one</option> <option>  two  words </option></select>b"},
    {"select_hidden_options",
     "a<select multiple size=3><option>one<option hidden>h<option style=\"display:none\">n<option disabled>d</select>b"},
    {"select_option_labels", "a<select><option label=\"L\">x</option><option label=\"\">y</option><option value=v></option></select>b"},
    {"select_option_groups",
     "a<select><optgroup label=g><option>x</option></optgroup><optgroup label=h></optgroup></select>b"
     "<select><option>c<optgroup><option>d</select>"},
    {"select_in_table_cell", "<table><tr><td><select><option>x<option>y</select></td><td>c</td></tr></table>"},
    {"select_not_shown", "a<select style=\"display:none\"><option>x</select>b<select hidden><option>y</select>c<select></select>d"},
    {"select_markup_in_option", "a<select><option><b>bold</b> t</option></select>b"},
    {"select_script_between_options", "a<select><option>x</option><script>s</script><option>y</option></select>b"},
    {"select_option_blanks", "a<select><option>  </option><option>&nbsp;z&nbsp;</option></select>b"},
    {"select_in_block", "<div>a<select><option>x</select></div>b"},
    {"select_blanks_around", "a <select><option>x</option></select> b<select size=4><option>y</option></select> c"},
    {"select_invisible", "a<select style=\"visibility:hidden\"><option>x</select>b"},
    {"options_outside_select", "<option>a</option><option>b</option>"},

    // Embedded content.
    {"iframe", "a<iframe src=\"about:blank\">fallback</iframe>b"},
    {"video_and_audio", "a<video>v</video><audio>au</audio><audio controls>ac</audio>b"},
    {"canvas", "a<canvas>c</canvas>b"},
    {"object_fallback", "a<object>o</object>b<object><param name=x value=y>p<embed src=x.swf></object>c"},
    {"applet", "a<applet code=x>ap</applet>b"},
    {"embed", "a<embed src=x.swf>b"},
    {"frameset", "<frameset><frame src=x></frameset>"},

    // SVG: the text of its <text> elements, each on a line.
    {"svg_without_text", "a<svg><title>Icon</title><path d=\"M0 0\"/></svg>b"},
    {"svg_between_blanks", "a <svg></svg> b"},
    {"svg_text_elements", "a<svg width=10 height=10><desc>D</desc><g><text>t1</text><text>t2</text></g></svg>b"},
    {"svg_text_spans", "a<svg><text>t<tspan>s</tspan></text></svg>b"},
    {"svg_text_blanks", "a<svg><style>t{}</style><defs><text>d</text></defs><text>  t  u </text></svg>b"},
    {"svg_links_groups_and_stray_text", "a<svg><a href=\"#\"><text>l</text></a><g><text>g</text></g>stray</svg>b"},
    {"svg_links_and_paths_in_text", "a<svg><text><a>l</a><textPath>p</textPath></text></svg>"},
    {"svg_switch", "a<svg><text>t</text></svg> b<svg><switch><text>s1</text><text>s2</text></switch></svg>"},
    {"svg_display_and_visibility",
     "a<svg><text style=\"display:none\">n</text><text visibility=\"hidden\">v</text><text>ok</text></svg>"
     "<svg><text display=\"none\">n</text><text>t<tspan visibility=\"hidden\">x</tspan>y</text></svg>"},
    {"svg_group_not_displayed", "a<svg><g><g display=\"none\"><text>g</text></g><text>h</text></g>"
                                "<a display=\"none\"><text>l</text></a><defs style=\"display:none\"><text>d</text></defs></svg>"},
    {"svg_visibility_inherited", "a<svg><g visibility=\"hidden\"><text>g</text><text visibility=\"visible\">v</text></g></svg>"},
    {"svg_not_displayed", "a<svg display=\"none\"><text>x</text></svg>b"},
    {"svg_containers", "a<svg><symbol><text>s</text></symbol><clipPath><text>c</text></clipPath>"
                       "<metadata><text>m</text></metadata></svg>b"},
    {"svg_foreign_object", "a<svg><foreignObject><div>f</div><span>g</span></foreignObject></svg>b"},
    {"svg_nested", "a<svg><text>x</text><svg><text>y</text></svg></svg>b"},
    {"svg_self_closing_and_lookalike", "a<svg><text/x>t</text></svg>b<svg><text/>u</svg>c"},
    {"svg_left_by_a_font_with_color", "a<svg><font color=red class=c>x</font></svg>b<svg><font class=c>y</font></svg>"},
    {"math_html_annotation", "<math><annotation-xml encoding=\"text/html\" class=x><div>d</div></annotation-xml></math>e"},

    // MathML.
    {"math_inline", "a<math><mi>x</mi><mo>+</mo><mn>1</mn></math>b<math><mtext>t</mtext><mrow><mi>r</mi></mrow></math>"},
    {"math_block", "a<math display=\"block\"><mi>x</mi></math>b"},

    // Entities.
    {"entities_named_and_numeric", "&amp; &lt;b&gt; &copy; &eacute; &#233; &#x20AC; &quot; &apos;"},
    {"entities_without_semicolon", "&copy 2024 &amp &lt"},
    {"entities_unknown_and_bare", "AT&T &unknown; a & b"},
    {"entities_windows_1252_numbers", "&#150; &#128; &#153;"},
    {"entities_no_break_space", "a&nbsp;&nbsp;b &nbsp; c"},
    {"entities_out_of_range", "&#0; &#x110000; &#xD800;"},
    {"entities_astral", "&#x1F600; &#128512;"},
    {"entities_in_attributes_only", "<a title=\"&lt;&gt;\">x</a>"},
    {"characters_without_width", "a\u200Bb\u00ADc\u3000d"},
    {"control_characters_and_noncharacters",
     "a\x01" "b\x7F" "c\u0080d\uFDD0e\x0B" "f &amp;\x01g <b>\x02</b> \x03 a long text with \x04 inside it\uFFFF"},
    {"private_use_characters", "a\uE000b <p>\uE001</p> &#xE002; and a longer text \U000F0000"},

    // Hidden elements.
    {"hidden_script_style_title_noscript_template",
     "<script>var x = '<p>no</p>';</script><style>p{}</style><title>T</title><noscript>n</noscript>"
     "<template><p>q</p></template>ok"},
    {"hidden_whole_document",
     "<!DOCTYPE html><html><head><title>T</title><meta charset=utf-8><style>b{}</style></head><body>Hi</body></html>"},
    {"hidden_attribute_and_display_none",
     "a<span hidden>b</span><div style=\"color:red; display: none !important\">c</div>d"},
    {"hidden_display_none_upper_case", "a<span style=\"DISPLAY: NONE\">b</span>c"},
    {"hidden_until_found", "a<div hidden=\"until-found\">b</div>c"},
    {"hidden_input_and_comment", "a<input type=hidden value=x><!-- b -->c"},
    {"hidden_script_in_body", "<div>a</div><script>document.title = 'x';</script><div>b</div>"},
    {"hidden_block_between_blocks", "<div>a</div><div hidden>b</div><div>c</div>"},
    {"hidden_attribute_overridden", "<span hidden style=\"display:inline\">x</span>"},
    {"noscript_in_head", "<html><head><noscript><link rel=\"stylesheet\" href=\"x.css\">text</noscript></head><body>ok"},
    {"noscript_holding_markup", "<p>a<noscript><p>b</p><div>c</noscript>d</p>e"},
    {"noscript_end_tag_lookalike", "<noscript>x</noscripts>y</noscript>z"},
    {"comments", "a<!-->b<!--->c<!-- x --!>d"},
    {"script_with_comment_and_script_tags", "<script><!--<script>x</script>y--></script>z"},
    {"script_ending_at_its_second_end_tag",
     "<script><!--<script></script> <!-- </script>a<span style=\"--> ;display:none\">hidden text</span>b"},

    // Visibility: hidden text takes room but shows nothing; what it holds may be visible again.
    {"visibility_hidden_inline", "a<span style=\"visibility:hidden\">b</span>"},
    {"visibility_hidden_block", "a<div style=\"visibility:hidden\">x</div>b"},
    {"visibility_hidden_paragraph", "a<p style=\"visibility:hidden\">x</p>b<p style=\"visibility:hidden\">c</p>d"},
    {"visibility_hidden_cell", "<table><tr><td>a</td><td style=\"visibility:hidden\">x</td><td>c</td></tr></table>"},
    {"visibility_hidden_last_cell", "<table><tr><td>a</td><td style=\"visibility:hidden\">x</td></tr></table>"},
    {"visibility_hidden_last_row", "<table><tr><td>a</td></tr><tr style=\"visibility:hidden\"><td>b</td></tr></table>c"},
    {"visibility_hidden_list_item", "<ul><li>a</li><li style=\"visibility:hidden\">b</li></ul>c"},
    {"visibility_hidden_br", "a<br style=\"visibility:hidden\">b<span style=\"visibility:hidden\"><br></span>c"},
    {"visibility_hidden_image", "a <img src=x.png style=\"visibility:hidden\"> b"},
    {"visibility_visible_inside_hidden",
     "<div style=\"visibility:hidden\">a<span style=\"visibility:visible\">b</span></div>"
     "a<span style=\"visibility:hidden\">x<b style=\"visibility:visible\">y</b>z</span>w"},
    {"visibility_visible_blocks_inside_hidden",
     "<div style=\"visibility:hidden\"><div style=\"visibility:visible\">a</div></div><div>b</div>"
     "<div style=\"visibility:hidden\">x<p style=\"visibility:visible\">c</p>y</div>d"},
    {"visibility_collapse_and_last_declaration",
     "<span style=\"visibility:collapse\">a</span>b<span style=\"visibility:hidden; visibility: visible\">c</span>"},
    {"visibility_hidden_between_blanks", "a <span style=\"visibility:hidden\">x</span> b"},
    {"visibility_hidden_with_trailing_blank", "a<span style=\"visibility:hidden\">x </span> b"},
    {"visibility_hidden_with_blanks_inside", "a<span style=\"visibility:hidden\"> x </span>b"},
    {"visibility_hidden_at_line_start", "<div><span style=\"visibility:hidden\">x</span> b</div>"},

    // White-space collapse.
    {"blanks_collapse", "  a \n\t b  "},
    {"blanks_across_inline", "a <b> b </b> <i> c</i>"},
    {"blanks_at_block_edges", "a <div> b </div> c"},
    {"blanks_source_line_ends", "a\r\nb\rc\nd"},
    {"blanks_only", "  \n\t "},
    {"blanks_around_br", "<div>\n  a\n  <br>\n  b\n</div>"},

    // A form feed is white space to the parser, but the layout shows it as a character.
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
    {"broken_formatting_with_attributes", "<b class=a><b class=b><b class=c><b class=d><p>x</b>y"},
    {"broken_attributes",
     "<a href=x/>a</a><a =\"x>y\">b</a><a b='c'd=\"e\"/f>c</a><span style=\"display:none\"style=\"display:inline\">d</span>"
     "<span x=1 STYLE=display:none>e</span><span/style=display:none>f</span>g"},
    {"hidden_input_in_table", "<table><input type=hidden class=x>z<tr><td>a</td></tr></table>"},
    {"empty", ""},

    // Known to differ (see kKnownDifferences).
    {"style_sheet_rules", "<style>.x{display:none}</style><span class=x>a</span>b"},
    {"dialog_in_paragraph", "<!DOCTYPE html><p>a<dialog open>b</dialog>c"},
};

// Where HTMLDecode knowingly renders otherwise than the browser engine, with what each gives
// (lines joined by LF). These are checked as they stand, so the list stays true.
struct KnownDifference {
    const char* name;
    const char* why;
    const char* ours;
    const char* browser;
};

constexpr KnownDifference kKnownDifferences[] = {
    {"style_sheet_rules", "HTMLDecode applies style attributes only, never the rules of a style sheet", "ab", "b"},
    {"dialog_in_paragraph", "our parser knows no <dialog>, so it does not close an open <p> as it should", "a\nb\nc",
     "a\n\nb\nc"},
};

const KnownDifference* knownDifference(const std::string& name) {
    for (const KnownDifference& k : kKnownDifferences)
        if (name == k.name) return &k;
    return nullptr;
}

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
        // Under an X server (CI runs the tests under Xvfb) the engine uses it; without one it
        // runs on the offscreen platform.
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        if (env.value(QStringLiteral("DISPLAY")).isEmpty() && env.value(QStringLiteral("WAYLAND_DISPLAY")).isEmpty() &&
            env.value(QStringLiteral("QT_QPA_PLATFORM")).isEmpty())
            env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        tool.setProcessEnvironment(env);
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
        else if (c.unicode() < 0x20) out += QStringLiteral("\\x%1").arg(static_cast<int>(c.unicode()), 2, 16, QChar(u'0'));
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
    if (const KnownDifference* known = knownDifference(GetParam().name)) {
        EXPECT_TRUE(sameLines(ours, QString::fromUtf8(known->ours).split(u'\n'))) << "HTMLDecode: " << known->why;
        EXPECT_TRUE(sameLines(QString::fromUtf8(known->browser).split(u'\n'), browser)) << "innerText: " << known->why;
        return;
    }
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
