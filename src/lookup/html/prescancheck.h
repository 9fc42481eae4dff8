#pragma once
// The check, after parsing, that the parser read the page as the prescan (prescan.h) expected.
#include <gumbo.h>

#include <cstddef>
#include <string_view>
#include <vector>

namespace lookup::html {

// Whether the parser read the page as the prescan did: each of the `marks` marks stands once in
// the text of the parsed page, and each tag the prescan changed was read as a tag, not inside a
// text, a comment or another tag. `parsed` is what the parser got; `changedTags` holds where the
// changed tags start and end in it (Prescan::changedTags). A tag that the parser ignored inside
// a text also counts as wrong, which only costs another parse.
bool prescanHeld(const GumboNode* document, std::string_view parsed, size_t marks, const std::vector<size_t>& changedTags);

}  // namespace lookup::html
