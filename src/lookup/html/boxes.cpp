#include "lookup/html/boxes.h"

#include "lookup/html/ascii.h"

#include <algorithm>

namespace lookup::html {
namespace {

using std::string_view;

std::string loweredAttribute(const GumboElement& e, const char* name) {
    const char* value = attribute(e, name);
    return lowered(value ? value : "");
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
        return loweredAttribute(e, "type") == "hidden" ? Box::Hidden : Box::Atom;
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

Box boxOf(const GumboNode* element) { return boxOf(element, inlineStyle(attribute(element->v.element, "style"))); }

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

Box boxOfParent(const GumboNode* node) {
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

}  // namespace

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
        std::string value = lowered(decl.substr(colon + 1));
        if (const size_t bang = value.find('!'); bang != std::string::npos) value.resize(bang);
        *target = std::string(trimmed(value));
    }
    return result;
}

bool unknownTagIs(const GumboElement& e, string_view name) {
    GumboStringPiece tag = e.original_tag;
    if (!tag.data || tag.length == 0) return false;
    gumbo_tag_from_original_text(&tag);
    return equalsNoCase(string_view(tag.data, tag.length), name);
}

bool isElement(const GumboNode* node, GumboTag tag) {
    return node && node->type == GUMBO_NODE_ELEMENT && node->v.element.tag == tag &&
           node->v.element.tag_namespace == GUMBO_NAMESPACE_HTML;
}

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

Box boxOf(const GumboNode* element, const InlineStyle& style) {
    const GumboElement& e = element->v.element;
    if (hiddenInClosedDetails(element)) return Box::Hidden;
    Box box = Box::Inline;
    std::string display = style.display;
    switch (e.tag_namespace) {
    case GUMBO_NAMESPACE_SVG:
        if (display.empty()) display = loweredAttribute(e, "display");
        // A <g> is laid out even when not displayed (it may hold resources); so is its text.
        if (display == "none" && !unknownTagIs(e, "g")) return Box::Hidden;
        if (e.tag == GUMBO_TAG_SVG && (!element->parent || element->parent->type != GUMBO_NODE_ELEMENT ||
                                       element->parent->v.element.tag_namespace != GUMBO_NAMESPACE_SVG))
            return Box::SvgRoot;
        return boxOfSvgElement(e);
    case GUMBO_NAMESPACE_MATHML:
        if (display == "none") return Box::Hidden;
        if (e.tag == GUMBO_TAG_MATH && loweredAttribute(e, "display") == "block") return Box::Block;
        return Box::Inline;
    case GUMBO_NAMESPACE_HTML:
        box = boxOfTag(element);
        break;
    }
    if (box == Box::Hidden || display == "none" || (display.empty() && attribute(e, "hidden"))) return Box::Hidden;
    return boxOfDisplay(box, display);
}

int visibilityOf(const GumboElement& e, const InlineStyle& style) {
    std::string visibility = style.visibility;
    if (visibility.empty() && e.tag_namespace == GUMBO_NAMESPACE_SVG) visibility = loweredAttribute(e, "visibility");
    if (visibility == "hidden" || visibility == "collapse") return 0;
    if (visibility == "visible") return 1;
    return -1;
}

bool rowFollows(const GumboNode* node, Box parent) {
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
    return parent == Box::RowGroup && rowFollows(node->parent, boxOfParent(node->parent));
}

bool cellFollows(const GumboNode* cell, Box parent) {
    const bool inRow = parent == Box::Row;
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

bool inTableStructure(const GumboNode* node) {
    const GumboNode* p = node->parent;
    if (!p || p->type != GUMBO_NODE_ELEMENT) return false;
    const GumboTag t = p->v.element.tag;
    return t == GUMBO_TAG_TABLE || t == GUMBO_TAG_TBODY || t == GUMBO_TAG_THEAD || t == GUMBO_TAG_TFOOT ||
           t == GUMBO_TAG_TR || t == GUMBO_TAG_COLGROUP;
}

}  // namespace lookup::html
