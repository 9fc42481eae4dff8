#pragma once
// How each element of the parsed page takes part in the text: its box, from its tag, its
// namespace, its attributes and its style attribute, and the table structure around rows and
// cells. Style sheets are not applied, only style attributes.
#include <gumbo.h>

#include <string>
#include <string_view>

namespace lookup::html {

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

// The values of the display and visibility properties in a style attribute, lower-cased, ""
// when absent; the last declaration of each wins.
struct InlineStyle {
    std::string display, visibility;
};
InlineStyle inlineStyle(const char* style);

// The value of an element's attribute, null when it has none.
inline const char* attribute(const GumboElement& e, const char* name) {
    const GumboAttribute* a = gumbo_get_attribute(&e.attributes, name);
    return a ? a->value : nullptr;
}

// An element's name as written, for the elements the parser knows no enum for (most of SVG's);
// `name` is lower-case.
bool unknownTagIs(const GumboElement& e, std::string_view name);

// Whether the node is the HTML element `tag`.
bool isElement(const GumboNode* node, GumboTag tag);

// The box of an element whose style attribute says `style`.
Box boxOf(const GumboNode* element, const InlineStyle& style);

// An element's own visibility: 1 visible, 0 hidden, -1 as its parent's.
int visibilityOf(const GumboElement& e, const InlineStyle& style);

// A closed <details> shows its first <summary> only.
bool hiddenInClosedDetails(const GumboNode* node);

inline const GumboVector& childrenOf(const GumboNode* element) { return element->v.element.children; }

// Whether another row of the same table follows `node` (a row, or a group of rows) whose parent's
// box is `parent`. Within a table its rows count, also those of the row groups after; elsewhere
// rows next to each other make up a table of their own.
bool rowFollows(const GumboNode* node, Box parent);

// Whether another cell of the same row follows `cell`, whose parent's box is `parent`. In a row,
// anything shown after a cell makes a cell; elsewhere cells next to each other make up a row of
// their own.
bool cellFollows(const GumboNode* cell, Box parent);

// Whether the node stands between the parts of a table, where white space is not laid out.
bool inTableStructure(const GumboNode* node);

}  // namespace lookup::html
