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
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }
bool oneOf(string_view name, Names names) { return std::find(names.begin(), names.end(), name) != names.end(); }
template <size_t N>
bool oneOf(string_view name, const string_view (&names)[N]) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

// ---------------------------------------------------------------------------------------------
// Nesting guard: a rough model of the parser's stack of open elements (with the end tags the
// parser implies for li, p, td, tr, option, ...), enough to find start tags that would nest
// deeper than kMaxNesting on a hostile page.

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

// Position of the end tag "</name" at or after `from` (case-insensitive), or the end of the text.
size_t findEndTag(string_view html, size_t from, string_view name) {
    for (size_t i = html.find("</", from); i != string_view::npos; i = html.find("</", i + 2)) {
        size_t k = 0;
        while (k < name.size() && i + 2 + k < html.size() && lower(html[i + 2 + k]) == name[k]) ++k;
        if (k == name.size()) return i;
    }
    return html.size();
}

class NestingGuard {
public:
    explicit NestingGuard(QByteArray utf8)
        : utf8_(std::move(utf8)), html_(utf8_.constData(), static_cast<size_t>(utf8_.size())) {}

    // The page without the start tags that would nest too deep (and their end tags).
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
bool NestingGuard::popThrough(Target isTarget, const Stops& stops) {
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

void NestingGuard::reopenFormatting() {
    open_.insert(open_.end(), reopen_.begin(), reopen_.end());
    reopen_.clear();
}

void NestingGuard::endTag(size_t from, size_t to) {
    if (const auto d = dropped_.find(name_); d != dropped_.end() && d->second > 0) {
        --d->second;
        cuts_.emplace_back(from, to);
    } else if (!popThroughNamed(name_, Names{})) {
        if (const auto r = std::find(reopen_.begin(), reopen_.end(), name_); r != reopen_.end()) reopen_.erase(r);
    }
}

void NestingGuard::startTag(size_t from, size_t to) {
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

QByteArray NestingGuard::run() {
    const string_view html = html_;
    size_t i = 0;
    while ((i = html.find('<', i)) != string_view::npos) {
        const size_t start = i;
        if (html.compare(i, 4, "<!--") == 0) {
            i = html.find("-->", i + 4);
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
            i = findEndTag(html, i, name_);
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
        pendingSpace_ = false;
        atomAfterBreaks_ = false;
    }
    // A tab between cells or the line feed of a <br> or a table row; these always count.
    void literal(char c) {
        flushBreaks();
        pendingSpace_ = false;
        out_ += c == '\n' ? string_view("\r\n") : string_view(&c, 1);
        any_ = true;
        lineHasContent_ = false;
    }
    // An element shown without text (an image, a form control): blanks around it are kept.
    void atom() {
        if (pendingBreaks_ > 0) {
            atomAfterBreaks_ = true;
            return;
        }
        if (pendingSpace_) out_ += ' ';
        pendingSpace_ = false;
        lineHasContent_ = true;
    }
    void text(string_view s, bool preformatted) {
        for (const char c : s) {
            if (!preformatted && isSpace(c)) {
                if (pendingBreaks_ > 0 ? atomAfterBreaks_ : lineHasContent_) pendingSpace_ = true;
                continue;
            }
            flushBreaks();
            if (pendingSpace_) out_ += ' ';
            pendingSpace_ = false;
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
    const std::string& result() const { return out_; }

private:
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
    bool pendingSpace_ = false;
    bool lineHasContent_ = false;
    bool atomAfterBreaks_ = false;
    bool any_ = false;
};

enum class Box { Hidden, Inline, Block, Paragraph, Table, Row, Cell, Atom, LineBreak, Preformatted };

const char* attribute(const GumboElement& e, const char* name) {
    const GumboAttribute* a = gumbo_get_attribute(&e.attributes, name);
    return a ? a->value : nullptr;
}

// The value of one property in a style attribute, lower-cased, "" when absent.
std::string styleProperty(const char* style, string_view property) {
    std::string result;
    string_view rest(style);
    while (!rest.empty()) {
        const size_t semi = std::min(rest.find(';'), rest.size());
        string_view decl = rest.substr(0, semi);
        rest.remove_prefix(std::min(semi + 1, rest.size()));
        const size_t colon = decl.find(':');
        if (colon == string_view::npos) continue;
        std::string key, value;
        for (const char c : decl.substr(0, colon))
            if (!isSpace(c)) key += lower(c);
        for (const char c : decl.substr(colon + 1)) value += lower(c);
        if (key != property) continue;
        if (const size_t bang = value.find('!'); bang != std::string::npos) value.resize(bang);
        const auto b = value.find_first_not_of(" \t\r\n\f");
        const auto e = value.find_last_not_of(" \t\r\n\f");
        result = b == std::string::npos ? std::string() : value.substr(b, e - b + 1);
    }
    return result;
}

// Elements the parser knows no enum for keep their name in the source text only.
bool unknownTagIs(const GumboElement& e, string_view name) {
    GumboStringPiece tag = e.original_tag;
    if (!tag.data || tag.length == 0) return false;
    gumbo_tag_from_original_text(&tag);
    if (tag.length != name.size()) return false;
    for (size_t k = 0; k < name.size(); ++k)
        if (lower(tag.data[k]) != name[k]) return false;
    return true;
}

Box boxOfTag(const GumboElement& e) {
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
    case GUMBO_TAG_INPUT: {
        const char* type = attribute(e, "type");
        std::string t(type ? type : "");
        std::transform(t.begin(), t.end(), t.begin(), lower);
        return t == "hidden" ? Box::Hidden : Box::Atom;
    }
    case GUMBO_TAG_IMG: case GUMBO_TAG_IMAGE: case GUMBO_TAG_TEXTAREA: case GUMBO_TAG_SELECT:
    case GUMBO_TAG_IFRAME: case GUMBO_TAG_VIDEO: case GUMBO_TAG_CANVAS: case GUMBO_TAG_EMBED:
    case GUMBO_TAG_OBJECT: case GUMBO_TAG_APPLET: case GUMBO_TAG_METER: case GUMBO_TAG_PROGRESS:
    case GUMBO_TAG_KEYGEN:
        return Box::Atom;
    case GUMBO_TAG_BR:
        return Box::LineBreak;
    case GUMBO_TAG_P:
        return Box::Paragraph;
    case GUMBO_TAG_TABLE:
        return Box::Table;
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
    case GUMBO_TAG_FOOTER: case GUMBO_TAG_FORM: case GUMBO_TAG_H1: case GUMBO_TAG_H2:
    case GUMBO_TAG_H3: case GUMBO_TAG_H4: case GUMBO_TAG_H5: case GUMBO_TAG_H6:
    case GUMBO_TAG_HEADER: case GUMBO_TAG_HGROUP: case GUMBO_TAG_HR: case GUMBO_TAG_LEGEND:
    case GUMBO_TAG_LI: case GUMBO_TAG_MAIN: case GUMBO_TAG_MENU: case GUMBO_TAG_NAV:
    case GUMBO_TAG_OL: case GUMBO_TAG_SECTION: case GUMBO_TAG_SUMMARY: case GUMBO_TAG_UL:
    case GUMBO_TAG_CAPTION: case GUMBO_TAG_OPTGROUP: case GUMBO_TAG_OPTION: case GUMBO_TAG_MARQUEE:
        return Box::Block;
    default:
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

Box boxOf(const GumboNode* node) {
    const GumboElement& e = node->v.element;
    if (e.tag_namespace != GUMBO_NAMESPACE_HTML) return Box::Atom;  // <svg>, <math>
    if (hiddenInClosedDetails(node)) return Box::Hidden;
    Box box = boxOfTag(e);
    if (box == Box::Hidden) return box;
    std::string display;
    if (const char* style = attribute(e, "style")) {
        if (styleProperty(style, "visibility") == "hidden") return Box::Hidden;
        display = styleProperty(style, "display");
    }
    if (display == "none" || (display.empty() && attribute(e, "hidden"))) return Box::Hidden;
    if (box == Box::Inline || box == Box::Block) {
        if (oneOf(display, {"block", "flex", "grid", "list-item", "table", "flow-root"})) box = Box::Block;
        else if (oneOf(display, {"inline", "inline-block", "inline-flex", "inline-grid", "contents"})) box = Box::Inline;
    }
    return box;
}

// The last shown child of `parent` that is one of the given tags, or null.
const GumboNode* lastShownChild(const GumboNode* parent, std::initializer_list<GumboTag> tags) {
    const GumboVector& children = parent->v.element.children;
    for (unsigned k = children.length; k-- > 0;) {
        const auto* c = static_cast<const GumboNode*>(children.data[k]);
        if (c->type == GUMBO_NODE_ELEMENT && std::find(tags.begin(), tags.end(), c->v.element.tag) != tags.end() &&
            boxOf(c) != Box::Hidden)
            return c;
    }
    return nullptr;
}

// The last shown row of a table (rows sit in row groups or directly in the table).
const GumboNode* lastRowOf(const GumboNode* table) {
    const GumboVector& children = table->v.element.children;
    for (unsigned k = children.length; k-- > 0;) {
        const auto* c = static_cast<const GumboNode*>(children.data[k]);
        if (c->type != GUMBO_NODE_ELEMENT || boxOf(c) == Box::Hidden) continue;
        const GumboTag tag = c->v.element.tag;
        if (tag == GUMBO_TAG_TR) return c;
        if (tag == GUMBO_TAG_TBODY || tag == GUMBO_TAG_THEAD || tag == GUMBO_TAG_TFOOT)
            if (const GumboNode* row = lastShownChild(c, {GUMBO_TAG_TR})) return row;
    }
    return nullptr;
}

bool inTableStructure(const GumboNode* node) {
    const GumboNode* p = node->parent;
    if (!p || p->type != GUMBO_NODE_ELEMENT) return false;
    const GumboTag t = p->v.element.tag;
    return t == GUMBO_TAG_TABLE || t == GUMBO_TAG_TBODY || t == GUMBO_TAG_THEAD || t == GUMBO_TAG_TFOOT ||
           t == GUMBO_TAG_TR || t == GUMBO_TAG_COLGROUP;
}

std::string renderText(const GumboNode* root) {
    struct Frame {
        const GumboNode* node;
        Box box;
        unsigned next = 0;
    };
    TextSink sink;
    std::vector<Frame> stack;
    std::vector<const GumboNode*> lastRows;   // per open table
    std::vector<const GumboNode*> lastCells;  // per open row
    int preformatted = 0;

    auto enter = [&](const GumboNode* node) {
        switch (node->type) {
        case GUMBO_NODE_TEXT:
        case GUMBO_NODE_WHITESPACE:
            // White space between table parts is not shown.
            if (node->type == GUMBO_NODE_WHITESPACE && preformatted == 0 && inTableStructure(node)) return;
            if (hiddenInClosedDetails(node)) return;
            sink.text(node->v.text.text, preformatted > 0);
            return;
        case GUMBO_NODE_ELEMENT:
            break;
        default:
            return;  // comments, CDATA, templates
        }
        const Box box = boxOf(node);
        switch (box) {
        case Box::Hidden: return;
        case Box::Atom: sink.atom(); return;
        case Box::LineBreak: sink.literal('\n'); return;
        case Box::Block: sink.breaks(1); break;
        case Box::Paragraph: sink.breaks(2); break;
        case Box::Preformatted: sink.breaks(1); ++preformatted; break;
        case Box::Table: sink.breaks(1); lastRows.push_back(lastRowOf(node)); break;
        case Box::Row: lastCells.push_back(lastShownChild(node, {GUMBO_TAG_TD, GUMBO_TAG_TH})); break;
        case Box::Cell: case Box::Inline: break;
        }
        stack.push_back({node, box});
    };
    auto leave = [&](const Frame& f) {
        switch (f.box) {
        case Box::Block: sink.breaks(1); break;
        case Box::Paragraph: sink.breaks(2); break;
        case Box::Preformatted: --preformatted; sink.breaks(1); break;
        case Box::Table: lastRows.pop_back(); sink.breaks(1); break;
        case Box::Row:
            lastCells.pop_back();
            if (!lastRows.empty() && lastRows.back() != f.node) sink.literal('\n');
            break;
        case Box::Cell:
            if (!lastCells.empty() && lastCells.back() != f.node) sink.literal('\t');
            break;
        default: break;
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
    const QByteArray utf8 = NestingGuard(html.toUtf8()).run();
    GumboOptions options = kGumboDefaultOptions;
    // The page is parsed as the content of a <body>, the way a browser sets a body's HTML.
    options.fragment_context = GUMBO_TAG_BODY;
    options.fragment_namespace = GUMBO_NAMESPACE_HTML;
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
