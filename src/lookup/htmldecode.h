#pragma once
// HTML to plain text, rendered the way a browser's innerText renders the body of a page:
// - the page is parsed as a browser loads it, a whole document whose doctype sets the quirks mode;
// - block elements (div, h1, li, table, ...) start and end lines; a <p> is set off by a blank line;
// - <br> breaks a line;
// - each table row is one line, its cells separated by a tab;
// - a <select> shows each of its options on a line; an <svg> the text of its <text> elements;
// - hidden elements (head, script, style, template, noscript, title, the hidden attribute,
//   style="display:none") give nothing; style="visibility:hidden" hides the element's own text
//   and line breaks, not what inside it is made visible again; style="display:..." can make an
//   element a block, inline, a table row or a cell;
// - runs of white space collapse to one blank and vanish at the start and end of a line, except
//   inside <pre> (and <listing>, <xmp>, <plaintext>); a form feed is kept as a character;
// - entities are decoded by the HTML parser (gumbo); control characters stay as they are.
// Style sheets are not applied, only style attributes.
// Lines are joined with CR LF; the text neither starts nor ends with a line break of its own.
#include <QByteArrayView>
#include <QString>
#include <QStringView>

namespace lookup {

QString HTMLDecode(QStringView html);

// A downloaded page (its bytes and the value of its Content-Type header) as plain text: the
// bytes are decoded as decodePageBytes describes, then rendered by HTMLDecode.
QString pageToText(QByteArrayView bytes, QByteArrayView contentType = {});

// Hostile pages can nest elements so deep that parsing slows to a crawl (the parser's work
// per tag grows with the depth). Start tags that would nest deeper than this are dropped
// before parsing, and so are their end tags; their text stays. Real pages stay far below
// this depth; browsers flatten deeper trees too (at 512 levels).
inline constexpr int kMaxNesting = 256;

}  // namespace lookup
