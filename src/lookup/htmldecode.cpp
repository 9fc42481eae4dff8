#include "lookup/htmldecode.h"

#include "lookup/pagecharset.h"

#include <gumbo.h>

#include <algorithm>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lookup {
namespace {

using std::string_view;
using Names = std::initializer_list<string_view>;

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }
// White space that collapses in shown text. A form feed is white space to the parser but not to
// the layout, which shows it as a character of its own.
bool isCollapsible(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
bool oneOf(string_view name, Names names) { return std::find(names.begin(), names.end(), name) != names.end(); }
template <size_t N>
bool oneOf(string_view name, const string_view (&names)[N]) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

// ---------------------------------------------------------------------------------------------
// Prescan of the page's text before it is parsed, for two things:
// - nesting: a rough model of the parser's stack of open elements (with the end tags the parser
//   implies for li, p, td, tr, option, ...), enough to find start tags that would nest deeper
//   than kMaxNesting on a hostile page;
// - <noscript>: a browser runs scripts, so it reads what a <noscript> holds as text, never shown.
//   Our parser reads it as markup (and in <head>, moves what it does not allow there into the
//   body), so what a <noscript> holds is cut before parsing; its tags stay.

// Elements that never hold others: the void elements, and html, head and body, whose tags in a
// page's text only add attributes to the elements that are already there.
constexpr string_view kNeverOpen[] = {"area",  "base", "basefont", "bgsound", "br",    "col",    "embed",
                                      "frame", "hr",   "image",    "img",     "input", "keygen", "link",
                                      "meta",  "param", "source",  "track",   "wbr",   "html",   "head", "body"};
// Elements whose content is text up to their end tag.
constexpr string_view kRawText[] = {"script", "style",   "textarea", "title",    "xmp",
                                    "iframe", "noembed", "noframes", "noscript", "plaintext"};
constexpr string_view kClosesP[] = {
    "address", "article", "aside",  "blockquote", "center", "details", "dialog", "dir",     "div", "dl",
    "fieldset", "figcaption", "figure", "footer", "form", "h1", "h2", "h3", "h4", "h5", "h6", "header",
    "hgroup", "li", "dd", "dt", "listing", "main", "menu", "nav", "ol", "p", "pre", "section", "summary",
    "table", "ul"};
constexpr string_view kScopeEnds[] = {"button", "table",  "td",      "th",      "caption",
                                      "object", "applet", "marquee", "template"};
constexpr string_view kHeadings[] = {"h1", "h2", "h3", "h4", "h5", "h6"};
constexpr string_view kFormatting[] = {"a",    "b", "big",   "code",   "em",     "font", "i",
                                       "nobr", "s", "small", "strike", "strong", "tt",   "u"};

// Position behind the '>' that ends the tag whose attributes start at j (quoted values may
// hold '>'); the end of the text when the tag is not closed.
size_t behindTag(string_view html, size_t j) {
    while (j < html.size()) {
        const char c = html[j++];
        if (c == '>') return j;
        if (c != '=') continue;
        while (j < html.size() && isSpace(html[j])) ++j;
        if (j < html.size() && (html[j] == '"' || html[j] == '\'')) {
            const size_t close = html.find(html[j], j + 1);
            if (close == string_view::npos) return html.size();
            j = close + 1;
        }
    }
    return html.size();
}

// Position of the end tag "</name" at or after `from` (case-insensitive, the name followed by a
// blank, '/' or '>'), or the end of the text.
size_t findEndTag(string_view html, size_t from, string_view name) {
    for (size_t i = html.find("</", from); i != string_view::npos; i = html.find("</", i + 2)) {
        size_t k = 0;
        while (k < name.size() && i + 2 + k < html.size() && lower(html[i + 2 + k]) == name[k]) ++k;
        const size_t behind = i + 2 + k;
        if (k == name.size() && behind < html.size() &&
            (isSpace(html[behind]) || html[behind] == '/' || html[behind] == '>'))
            return i;
    }
    return html.size();
}

class Prescan {
public:
    explicit Prescan(QByteArray utf8)
        : utf8_(std::move(utf8)), html_(utf8_.constData(), static_cast<size_t>(utf8_.size())) {}

    // The page without the start tags that would nest too deep (and their end tags) and without
    // what its <noscript> elements hold.
    QByteArray run();

private:
    void startTag(size_t from, size_t to);
    void endTag(size_t from, size_t to);
    // Pops down to and including the nearest element that `isTarget`, unless an element named
    // in `stops` comes first. Formatting elements popped on the way are reopened later, as
    // the parser does.
    template <typename Target, typename Stops>
    bool popThrough(Target isTarget, const Stops& stops);
    template <typename Stops>
    bool popThroughNamed(string_view target, const Stops& stops) {
        return popThrough([target](const std::string& n) { return n == target; }, stops);
    }
    void reopenFormatting();

    const QByteArray utf8_;
    const string_view html_;
    std::string name_;                   // of the tag at hand, lower-cased
    std::vector<std::string> open_;      // elements open, innermost last
    std::vector<std::string> reopen_;    // formatting elements the parser will reopen
    std::map<std::string, int, std::less<>> dropped_;  // cut start tags whose end tags go too
    std::vector<std::pair<size_t, size_t>> cuts_;
};

template <typename Target, typename Stops>
bool Prescan::popThrough(Target isTarget, const Stops& stops) {
    for (size_t k = open_.size(); k-- > 0;) {
        if (isTarget(open_[k])) {
            for (size_t m = k + 1; m < open_.size(); ++m)
                if (oneOf(open_[m], kFormatting) &&
                    std::count(reopen_.begin(), reopen_.end(), open_[m]) < 3)  // as many as the parser keeps
                    reopen_.push_back(open_[m]);
            open_.resize(k);
            return true;
        }
        if (oneOf(open_[k], stops)) return false;
    }
    return false;
}

void Prescan::reopenFormatting() {
    open_.insert(open_.end(), reopen_.begin(), reopen_.end());
    reopen_.clear();
}

void Prescan::endTag(size_t from, size_t to) {
    if (const auto d = dropped_.find(name_); d != dropped_.end() && d->second > 0) {
        --d->second;
        cuts_.emplace_back(from, to);
    } else if (!popThroughNamed(name_, Names{})) {
        if (const auto r = std::find(reopen_.begin(), reopen_.end(), name_); r != reopen_.end()) reopen_.erase(r);
    }
}

void Prescan::startTag(size_t from, size_t to) {
    // The end tags the parser implies before this start tag.
    const string_view n = name_;
    if (n == "li") popThroughNamed("li", Names{"ul", "ol", "menu"});
    if (n == "dt" || n == "dd") popThrough([](const std::string& e) { return e == "dt" || e == "dd"; }, Names{"dl"});
    if (n == "td" || n == "th") popThrough([](const std::string& e) { return e == "td" || e == "th"; }, Names{"tr", "table"});
    if (n == "tr") popThroughNamed("tr", Names{"table"});
    if (n == "thead" || n == "tbody" || n == "tfoot")
        popThrough([](const std::string& e) { return e == "thead" || e == "tbody" || e == "tfoot"; }, Names{"table"});
    if (n == "option") popThroughNamed("option", Names{"select", "datalist", "optgroup"});
    if (n == "optgroup") popThrough([](const std::string& e) { return e == "option" || e == "optgroup"; }, Names{"select"});
    if (n == "a" || n == "nobr" || n == "button") popThroughNamed(n, kScopeEnds);
    if (oneOf(n, kClosesP)) popThroughNamed("p", kScopeEnds);
    if (oneOf(n, kHeadings) && !open_.empty() && oneOf(open_.back(), kHeadings)) open_.pop_back();
    if (!oneOf(n, kClosesP)) reopenFormatting();

    if (open_.size() >= static_cast<size_t>(kMaxNesting)) {
        ++dropped_[name_];
        cuts_.emplace_back(from, to);
    } else {
        open_.push_back(name_);
    }
}

QByteArray Prescan::run() {
    const string_view html = html_;
    size_t i = 0;
    while ((i = html.find('<', i)) != string_view::npos) {
        const size_t start = i;
        if (html.compare(i, 4, "<!--") == 0) {
            i = html.find("-->", i + 2);  // "<!-->" is a whole comment
            if (i == string_view::npos) break;
            i += 3;
            continue;
        }
        const bool isEnd = i + 1 < html.size() && html[i + 1] == '/';
        size_t j = i + 1 + (isEnd ? 1 : 0);
        if (j >= html.size() || !isLetter(html[j])) {
            const bool markup = i + 1 < html.size() && (html[i + 1] == '!' || html[i + 1] == '?' || isEnd);
            i = markup ? html.find('>', i) : i + 1;
            if (i == string_view::npos) break;
            if (markup) ++i;
            continue;
        }
        name_.clear();
        while (j < html.size() && !isSpace(html[j]) && html[j] != '/' && html[j] != '>') name_ += lower(html[j++]);
        i = behindTag(html, j);
        if (isEnd) {
            endTag(start, i);
        } else if (oneOf(name_, kRawText)) {
            const size_t content = i;
            i = findEndTag(html, i, name_);
            if (name_ == "noscript" && i > content) cuts_.emplace_back(content, i);
        } else if (!oneOf(name_, kNeverOpen)) {
            startTag(start, i);
        }
    }
    if (cuts_.empty()) return utf8_;
    QByteArray out;
    out.reserve(utf8_.size());
    size_t from = 0;
    for (const auto& [cutFrom, cutTo] : cuts_) {
        out.append(utf8_.constData() + from, static_cast<qsizetype>(cutFrom - from));
        from = cutTo;
    }
    out.append(utf8_.constData() + from, static_cast<qsizetype>(html.size() - from));
    return out;
}

// ---------------------------------------------------------------------------------------------
// Text collection, in the order and with the line structure of innerText.

class TextSink {
public:
    // A block boundary: at least n line breaks before the next content; none at the very
    // start or end of the text.
    void breaks(int n) {
        pendingBreaks_ = std::max(pendingBreaks_, n);
        space_ = Space::None;
        atomAfterBreaks_ = false;
    }
    // A tab between cells or the line feed of a <br> or a table row; these always count.
    void literal(char c) {
        flushBreaks();
        space_ = Space::None;
        out_ += c == '\n' ? string_view("\r\n") : string_view(&c, 1);
        any_ = true;
        lineHasContent_ = false;
    }
    // Something on the line that shows no text (an image, a form control, a hidden character):
    // blanks around it are kept.
    void atom() {
        if (pendingBreaks_ > 0) {
            atomAfterBreaks_ = true;
            return;
        }
        if (space_ == Space::Shown) out_ += ' ';
        space_ = Space::None;
        lineHasContent_ = true;
    }
    void text(string_view s, bool preformatted) {
        for (const char c : s) {
            if (!preformatted && isCollapsible(c)) {
                if (space_ == Space::None && lineHasContent()) space_ = Space::Shown;
                continue;
            }
            flushBreaks();
            if (space_ == Space::Shown) out_ += ' ';
            space_ = Space::None;
            any_ = true;
            if (c == '\n') {
                out_ += "\r\n";
                lineHasContent_ = false;
            } else {
                out_ += c;
                lineHasContent_ = true;
            }
        }
    }
    // Text that is laid out but not shown (visibility: hidden): it shows nothing, yet a blank in
    // it is the one that the blanks after it collapse into, and its other characters keep the
    // blanks before them.
    void hiddenText(string_view s, bool preformatted) {
        for (const char c : s) {
            if (!preformatted && isCollapsible(c)) {
                if (space_ == Space::None && lineHasContent()) space_ = Space::Hidden;
            } else {
                atom();
            }
        }
    }
    // Whether the line at hand shows something already.
    bool lineHasContent() const { return pendingBreaks_ > 0 ? atomAfterBreaks_ : lineHasContent_; }
    const std::string& result() const { return out_; }

private:
    // A collapsed blank waiting for the next content on its line, shown or hidden.
    enum class Space { None, Shown, Hidden };

    void flushBreaks() {
        if (pendingBreaks_ == 0) return;
        if (any_)
            for (int k = 0; k < pendingBreaks_; ++k) out_ += "\r\n";
        pendingBreaks_ = 0;
        lineHasContent_ = atomAfterBreaks_;
        atomAfterBreaks_ = false;
    }

    std::string out_;
    int pendingBreaks_ = 0;
    Space space_ = Space::None;
    bool lineHasContent_ = false;
    bool atomAfterBreaks_ = false;
    bool any_ = false;
};

// How an element takes part in the text:
// Hidden        nothing, not even its descendants;
// Inline        its content flows in the line (also elements unknown to the parser);
// Block         its content starts and ends a line; Paragraph: with a blank line around;
// Table         a block whose rows follow; RowGroup: holds rows, gives nothing of its own;
// Row           a line feed after it unless it is the last row of its table;
// Cell          a tab after it unless it is the last cell of its row;
// Atom          shown without text (an image, a form control), keeps the blanks around it;
// LineBreak     <br>; Preformatted: keeps its white space;
// Select        an atom whose options follow, each on a line of its own;
// SvgRoot       an atom whose <text> and <foreignObject> descendants show, each a block.
enum class Box {
    Hidden, Inline, Block, Paragraph, Table, RowGroup, Row, Cell, Atom, LineBreak, Preformatted, Select, SvgRoot
};

const char* attribute(const GumboElement& e, const char* name) {
    const GumboAttribute* a = gumbo_get_attribute(&e.attributes, name);
    return a ? a->value : nullptr;
}

std::string lowered(const char* s) {
    std::string out(s ? s : "");
    std::transform(out.begin(), out.end(), out.begin(), lower);
    return out;
}

// The values of the display and visibility properties in a style attribute, lower-cased, ""
// when absent; the last declaration of each wins.
struct InlineStyle {
    std::string display, visibility;
};

InlineStyle inlineStyle(const char* style) {
    InlineStyle result;
    if (!style) return result;
    string_view rest(style);
    while (!rest.empty()) {
        const size_t semi = std::min(rest.find(';'), rest.size());
        string_view decl = rest.substr(0, semi);
        rest.remove_prefix(std::min(semi + 1, rest.size()));
        const size_t colon = decl.find(':');
        if (colon == string_view::npos) continue;
        std::string key;
        for (const char c : decl.substr(0, colon))
            if (!isSpace(c)) key += lower(c);
        std::string* target = key == "display" ? &result.display : key == "visibility" ? &result.visibility : nullptr;
        if (!target) continue;
        std::string value;
        for (const char c : decl.substr(colon + 1)) value += lower(c);
        if (const size_t bang = value.find('!'); bang != std::string::npos) value.resize(bang);
        const auto b = value.find_first_not_of(" \t\r\n\f");
        const auto e = value.find_last_not_of(" \t\r\n\f");
        *target = b == std::string::npos ? std::string() : value.substr(b, e - b + 1);
    }
    return result;
}

// An element's name as written, for the elements the parser knows no enum for (most of SVG's).
bool unknownTagIs(const GumboElement& e, string_view name) {
    GumboStringPiece tag = e.original_tag;
    if (!tag.data || tag.length == 0) return false;
    gumbo_tag_from_original_text(&tag);
    if (tag.length != name.size()) return false;
    for (size_t k = 0; k < name.size(); ++k)
        if (lower(tag.data[k]) != name[k]) return false;
    return true;
}

bool isElement(const GumboNode* node, GumboTag tag) {
    return node && node->type == GUMBO_NODE_ELEMENT && node->v.element.tag == tag &&
           node->v.element.tag_namespace == GUMBO_NAMESPACE_HTML;
}

Box boxOfTag(const GumboNode* node) {
    const GumboElement& e = node->v.element;
    switch (e.tag) {
    case GUMBO_TAG_HEAD: case GUMBO_TAG_SCRIPT: case GUMBO_TAG_STYLE: case GUMBO_TAG_TEMPLATE:
    case GUMBO_TAG_NOSCRIPT: case GUMBO_TAG_TITLE: case GUMBO_TAG_META: case GUMBO_TAG_LINK:
    case GUMBO_TAG_BASE: case GUMBO_TAG_AREA: case GUMBO_TAG_DATALIST: case GUMBO_TAG_NOEMBED:
    case GUMBO_TAG_NOFRAMES: case GUMBO_TAG_PARAM: case GUMBO_TAG_RP: case GUMBO_TAG_SOURCE:
    case GUMBO_TAG_TRACK: case GUMBO_TAG_FRAMESET: case GUMBO_TAG_FRAME:
        return Box::Hidden;
    case GUMBO_TAG_UNKNOWN:
        if (unknownTagIs(e, "dialog")) return attribute(e, "open") ? Box::Block : Box::Hidden;
        return Box::Inline;
    case GUMBO_TAG_AUDIO:
        return attribute(e, "controls") ? Box::Atom : Box::Hidden;
    case GUMBO_TAG_INPUT:
        return lowered(attribute(e, "type")) == "hidden" ? Box::Hidden : Box::Atom;
    case GUMBO_TAG_FORM: {
        // A form the parser left inside a table's structure is not displayed.
        const GumboNode* p = node->parent;
        return isElement(p, GUMBO_TAG_TABLE) || isElement(p, GUMBO_TAG_TBODY) || isElement(p, GUMBO_TAG_THEAD) ||
                       isElement(p, GUMBO_TAG_TFOOT) || isElement(p, GUMBO_TAG_TR)
                   ? Box::Hidden
                   : Box::Block;
    }
    case GUMBO_TAG_SELECT:
        return Box::Select;
    case GUMBO_TAG_IMG: case GUMBO_TAG_IMAGE: case GUMBO_TAG_TEXTAREA: case GUMBO_TAG_IFRAME:
    case GUMBO_TAG_VIDEO: case GUMBO_TAG_CANVAS: case GUMBO_TAG_EMBED: case GUMBO_TAG_METER:
    case GUMBO_TAG_PROGRESS: case GUMBO_TAG_KEYGEN:
        return Box::Atom;
    case GUMBO_TAG_BR:
        return Box::LineBreak;
    case GUMBO_TAG_P:
        return Box::Paragraph;
    case GUMBO_TAG_TABLE:
        return Box::Table;
    case GUMBO_TAG_TBODY: case GUMBO_TAG_THEAD: case GUMBO_TAG_TFOOT:
        return Box::RowGroup;
    case GUMBO_TAG_TR:
        return Box::Row;
    case GUMBO_TAG_TD: case GUMBO_TAG_TH:
        return Box::Cell;
    case GUMBO_TAG_PRE: case GUMBO_TAG_LISTING: case GUMBO_TAG_XMP: case GUMBO_TAG_PLAINTEXT:
        return Box::Preformatted;
    case GUMBO_TAG_HTML: case GUMBO_TAG_BODY: case GUMBO_TAG_ADDRESS: case GUMBO_TAG_ARTICLE:
    case GUMBO_TAG_ASIDE: case GUMBO_TAG_BLOCKQUOTE: case GUMBO_TAG_CENTER: case GUMBO_TAG_DD:
    case GUMBO_TAG_DETAILS: case GUMBO_TAG_DIR: case GUMBO_TAG_DIV: case GUMBO_TAG_DL:
    case GUMBO_TAG_DT: case GUMBO_TAG_FIELDSET: case GUMBO_TAG_FIGCAPTION: case GUMBO_TAG_FIGURE:
    case GUMBO_TAG_FOOTER: case GUMBO_TAG_H1: case GUMBO_TAG_H2:
    case GUMBO_TAG_H3: case GUMBO_TAG_H4: case GUMBO_TAG_H5: case GUMBO_TAG_H6:
    case GUMBO_TAG_HEADER: case GUMBO_TAG_HGROUP: case GUMBO_TAG_HR: case GUMBO_TAG_LEGEND:
    case GUMBO_TAG_LI: case GUMBO_TAG_MAIN: case GUMBO_TAG_MENU: case GUMBO_TAG_NAV:
    case GUMBO_TAG_OL: case GUMBO_TAG_SECTION: case GUMBO_TAG_SUMMARY: case GUMBO_TAG_UL:
    case GUMBO_TAG_CAPTION: case GUMBO_TAG_OPTGROUP: case GUMBO_TAG_OPTION:
        return Box::Block;
    default:
        // Inline elements, and <marquee> (an inline block), <object> and <applet> (which show
        // what they hold in place of what they would embed).
        return Box::Inline;
    }
}

// Elements inside an <svg>: only the text of its <text> elements (and what a <foreignObject>
// holds) shows, each a block; its title, description, metadata, scripts and styles do not.
Box boxOfSvgElement(const GumboElement& e) {
    switch (e.tag) {
    case GUMBO_TAG_TITLE: case GUMBO_TAG_DESC: case GUMBO_TAG_SCRIPT: case GUMBO_TAG_STYLE:
        return Box::Hidden;
    case GUMBO_TAG_FOREIGNOBJECT:
        return Box::Block;
    default:
        if (unknownTagIs(e, "text")) return Box::Block;
        if (unknownTagIs(e, "metadata")) return Box::Hidden;
        return Box::Inline;
    }
}

// A closed <details> shows its first <summary> only.
bool hiddenInClosedDetails(const GumboNode* node) {
    const GumboNode* parent = node->parent;
    if (!parent || parent->type != GUMBO_NODE_ELEMENT || parent->v.element.tag != GUMBO_TAG_DETAILS ||
        attribute(parent->v.element, "open"))
        return false;
    if (node->type != GUMBO_NODE_ELEMENT || node->v.element.tag != GUMBO_TAG_SUMMARY) return true;
    const GumboVector& siblings = parent->v.element.children;
    for (unsigned k = 0; k < siblings.length; ++k) {
        const auto* s = static_cast<const GumboNode*>(siblings.data[k]);
        if (s->type == GUMBO_NODE_ELEMENT && s->v.element.tag == GUMBO_TAG_SUMMARY) return s != node;
    }
    return false;
}

// The display property's value as a box, for the elements whose box it can change.
Box boxOfDisplay(Box box, const std::string& display) {
    if (display.empty()) return box;
    if (box != Box::Inline && box != Box::Block && box != Box::RowGroup && box != Box::Row && box != Box::Cell)
        return box;
    if (display == "block" || display == "flex" || display == "grid" || display == "list-item" ||
        display == "flow-root" || display == "table" || display == "table-caption")
        return Box::Block;
    if (display == "inline" || display == "inline-block" || display == "inline-flex" || display == "inline-grid" ||
        display == "inline-table" || display == "contents")
        return Box::Inline;
    if (display == "table-cell") return Box::Cell;
    if (display == "table-row") return Box::Row;
    if (display == "table-row-group" || display == "table-header-group" || display == "table-footer-group")
        return Box::RowGroup;
    return box;
}

Box boxOf(const GumboNode* node) {
    const GumboElement& e = node->v.element;
    if (hiddenInClosedDetails(node)) return Box::Hidden;
    Box box = Box::Inline;
    std::string display = inlineStyle(attribute(e, "style")).display;
    switch (e.tag_namespace) {
    case GUMBO_NAMESPACE_SVG:
        if (display.empty()) display = lowered(attribute(e, "display"));
        if (display == "none") return Box::Hidden;
        if (e.tag == GUMBO_TAG_SVG && (!node->parent || node->parent->type != GUMBO_NODE_ELEMENT ||
                                       node->parent->v.element.tag_namespace != GUMBO_NAMESPACE_SVG))
            return Box::SvgRoot;
        return boxOfSvgElement(e);
    case GUMBO_NAMESPACE_MATHML:
        if (display == "none") return Box::Hidden;
        if (e.tag == GUMBO_TAG_MATH && lowered(attribute(e, "display")) == "block") return Box::Block;
        return Box::Inline;
    case GUMBO_NAMESPACE_HTML:
        box = boxOfTag(node);
        break;
    }
    if (box == Box::Hidden || display == "none" || (display.empty() && attribute(e, "hidden"))) return Box::Hidden;
    return boxOfDisplay(box, display);
}

// An element's own visibility: 1 visible, 0 hidden, -1 as its parent's.
int visibilityOf(const GumboElement& e) {
    std::string visibility = inlineStyle(attribute(e, "style")).visibility;
    if (visibility.empty() && e.tag_namespace == GUMBO_NAMESPACE_SVG) visibility = lowered(attribute(e, "visibility"));
    if (visibility == "hidden" || visibility == "collapse") return 0;
    if (visibility == "visible") return 1;
    return -1;
}

const GumboVector& childrenOf(const GumboNode* node) { return node->v.element.children; }

// The siblings after `node`, in order, until `f` returns true; whether it did.
template <typename F>
bool anyLaterSibling(const GumboNode* node, F f) {
    const GumboNode* parent = node->parent;
    if (!parent || parent->type != GUMBO_NODE_ELEMENT) return false;
    const GumboVector& siblings = childrenOf(parent);
    for (unsigned k = node->index_within_parent + 1; k < siblings.length; ++k)
        if (f(static_cast<const GumboNode*>(siblings.data[k]))) return true;
    return false;
}

Box parentBox(const GumboNode* node) {
    const GumboNode* p = node->parent;
    return p && p->type == GUMBO_NODE_ELEMENT ? boxOf(p) : Box::Block;
}

bool holdsRow(const GumboNode* group) {
    const GumboVector& children = childrenOf(group);
    for (unsigned k = 0; k < children.length; ++k) {
        const auto* c = static_cast<const GumboNode*>(children.data[k]);
        if (c->type == GUMBO_NODE_ELEMENT && boxOf(c) == Box::Row) return true;
    }
    return false;
}

// Whether another row of the same table follows `node` (a row, or a group of rows). Within a
// table its rows count, also those of the row groups after; elsewhere rows next to each other
// make up a table of their own.
bool rowFollows(const GumboNode* node) {
    const Box parent = parentBox(node);
    const bool inTable = parent == Box::Table || parent == Box::RowGroup;
    bool follows = false;
    anyLaterSibling(node, [&](const GumboNode* s) {
        if (s->type == GUMBO_NODE_TEXT) return !inTable;  // text ends a run of rows
        if (s->type != GUMBO_NODE_ELEMENT) return false;
        const Box box = boxOf(s);
        if (box == Box::Hidden) return false;
        follows = box == Box::Row || (box == Box::RowGroup && holdsRow(s));
        return follows || !inTable;
    });
    if (follows) return true;
    return parent == Box::RowGroup && rowFollows(node->parent);
}

// Whether another cell of the same row follows `cell`. In a row, anything shown after a cell
// makes a cell; elsewhere cells next to each other make up a row of their own.
bool cellFollows(const GumboNode* cell) {
    const bool inRow = parentBox(cell) == Box::Row;
    bool follows = false;
    anyLaterSibling(cell, [&](const GumboNode* s) {
        if (s->type == GUMBO_NODE_TEXT) {
            follows = inRow;
            return true;
        }
        if (s->type != GUMBO_NODE_ELEMENT) return false;
        const Box box = boxOf(s);
        if (box == Box::Hidden) return false;
        follows = inRow || box == Box::Cell;
        return true;
    });
    return follows;
}

// White space between the parts of a table is not laid out.
bool inTableStructure(const GumboNode* node) {
    const GumboNode* p = node->parent;
    if (!p || p->type != GUMBO_NODE_ELEMENT) return false;
    const GumboTag t = p->v.element.tag;
    return t == GUMBO_TAG_TABLE || t == GUMBO_TAG_TBODY || t == GUMBO_TAG_THEAD || t == GUMBO_TAG_TFOOT ||
           t == GUMBO_TAG_TR || t == GUMBO_TAG_COLGROUP;
}

// An option's label as a list shows it: its text without scripts, blanks collapsed and trimmed.
std::string optionText(const GumboNode* option) {
    std::string raw;
    std::vector<const GumboNode*> todo{option};
    while (!todo.empty()) {
        const GumboNode* n = todo.back();
        todo.pop_back();
        if (n->type == GUMBO_NODE_TEXT || n->type == GUMBO_NODE_WHITESPACE || n->type == GUMBO_NODE_CDATA) {
            raw += n->v.text.text;
        } else if (n->type == GUMBO_NODE_ELEMENT && n->v.element.tag != GUMBO_TAG_SCRIPT) {
            const GumboVector& children = childrenOf(n);
            for (unsigned k = children.length; k-- > 0;) todo.push_back(static_cast<const GumboNode*>(children.data[k]));
        }
    }
    std::string text;
    bool blank = false;
    for (const char c : raw) {
        if (isSpace(c)) {
            blank = !text.empty();
        } else {
            if (blank) text += ' ';
            blank = false;
            text += c;
        }
    }
    return text;
}

// The options of a list (<select>), also those in its option groups, each on a line.
void selectOptions(const GumboNode* select, TextSink& sink) {
    const GumboVector& children = childrenOf(select);
    for (unsigned k = 0; k < children.length; ++k) {
        const auto* c = static_cast<const GumboNode*>(children.data[k]);
        if (c->type != GUMBO_NODE_ELEMENT) continue;
        if (isElement(c, GUMBO_TAG_OPTION)) {
            sink.breaks(1);
            sink.text(optionText(c), false);
            sink.breaks(1);
        } else if (isElement(c, GUMBO_TAG_OPTGROUP)) {
            selectOptions(c, sink);
        }
    }
}

std::string renderText(const GumboNode* root) {
    struct Frame {
        const GumboNode* node;
        Box box;
        bool visible;     // visibility: hidden turns the element's text and breaks off
        bool textShown;   // false in an <svg> outside its <text> elements
        const GumboNode* onlyChild = nullptr;  // an SVG <switch> shows its first element only
        unsigned next = 0;
    };
    TextSink sink;
    std::vector<Frame> stack;
    int preformatted = 0;

    auto enter = [&](const GumboNode* node) {
        const Frame* parent = stack.empty() ? nullptr : &stack.back();
        switch (node->type) {
        case GUMBO_NODE_TEXT:
        case GUMBO_NODE_WHITESPACE:
            if (parent && !parent->textShown) return;
            if (node->type == GUMBO_NODE_WHITESPACE && preformatted == 0 && inTableStructure(node)) return;
            if (hiddenInClosedDetails(node)) return;
            // Text that is only white space to the parser is laid out in an inline element, or
            // behind something shown on its line; elsewhere (at the start of a block, behind a
            // block or a <br>) it is dropped. That shows only when it holds a form feed.
            if (node->type == GUMBO_NODE_WHITESPACE && preformatted == 0 && !sink.lineHasContent() &&
                parent && parent->box != Box::Inline)
                return;
            if (!parent || parent->visible) sink.text(node->v.text.text, preformatted > 0);
            else sink.hiddenText(node->v.text.text, preformatted > 0);
            return;
        case GUMBO_NODE_ELEMENT:
            break;
        default:
            return;  // comments, CDATA, templates
        }
        if (parent && parent->onlyChild && parent->onlyChild != node) return;
        const Box box = boxOf(node);
        if (box == Box::Hidden) return;
        const int ownVisibility = visibilityOf(node->v.element);
        const bool visible = ownVisibility < 0 ? (!parent || parent->visible) : ownVisibility == 1;
        bool textShown = !parent || parent->textShown;
        const GumboNode* onlyChild = nullptr;
        switch (box) {
        case Box::Atom:
            sink.atom();
            return;
        case Box::Select:
            sink.atom();
            if (visible) selectOptions(node, sink);
            sink.atom();
            return;
        case Box::LineBreak:
            if (visible) sink.literal('\n');
            return;
        case Box::SvgRoot:
            sink.atom();
            textShown = false;
            break;
        case Box::Block: case Box::Table:
            if (visible) sink.breaks(1);
            break;
        case Box::Paragraph:
            if (visible) sink.breaks(2);
            break;
        case Box::Preformatted:
            if (visible) sink.breaks(1);
            ++preformatted;
            break;
        default:
            break;
        }
        if (node->v.element.tag_namespace == GUMBO_NAMESPACE_SVG) {
            if (box == Box::Block) textShown = true;  // <text>, <foreignObject>
            if (unknownTagIs(node->v.element, "switch")) {
                const GumboVector& children = childrenOf(node);
                for (unsigned k = 0; k < children.length && !onlyChild; ++k)
                    if (static_cast<const GumboNode*>(children.data[k])->type == GUMBO_NODE_ELEMENT)
                        onlyChild = static_cast<const GumboNode*>(children.data[k]);
                if (!onlyChild) onlyChild = node;  // no element child: nothing shows
            }
        }
        stack.push_back({node, box, visible, textShown, onlyChild});
    };
    auto leave = [&](const Frame& f) {
        switch (f.box) {
        case Box::Block: case Box::Table:
            if (f.visible) sink.breaks(1);
            break;
        case Box::Paragraph:
            if (f.visible) sink.breaks(2);
            break;
        case Box::Preformatted:
            --preformatted;
            if (f.visible) sink.breaks(1);
            break;
        case Box::SvgRoot:
            sink.atom();
            break;
        case Box::Row:
            if (f.visible && rowFollows(f.node)) sink.literal('\n');
            break;
        case Box::Cell:
            if (f.visible && cellFollows(f.node)) sink.literal('\t');
            break;
        default:
            break;
        }
    };

    enter(root);
    while (!stack.empty()) {
        Frame& top = stack.back();
        const GumboVector& children = top.node->v.element.children;
        if (top.next < children.length) {
            enter(static_cast<const GumboNode*>(children.data[top.next++]));  // may grow the stack
        } else {
            const Frame done = top;
            stack.pop_back();
            leave(done);
        }
    }
    return sink.result();
}

}  // namespace

QString HTMLDecode(QStringView html) {
    const QByteArray utf8 = Prescan(html.toUtf8()).run();
    GumboOptions options = kGumboDefaultOptions;
    // The page is parsed as a whole document, as a browser loads it: its doctype (or the lack of
    // one) sets the quirks mode, in which a <table> does not close an open <p>, and blanks before
    // the <html> start tag are dropped.
    // Recorded parse errors each copy the stack of open elements; we need none of them.
    options.max_errors = 0;
    GumboOutput* output = gumbo_parse_with_options(&options, utf8.constData(), static_cast<size_t>(utf8.size()));
    const std::string text = renderText(output->root);
    gumbo_destroy_output(&options, output);
    return QString::fromStdString(text);
}

QString pageToText(QByteArrayView bytes, QByteArrayView contentType) {
    return HTMLDecode(decodePageBytes(bytes, contentType));
}

}  // namespace lookup
