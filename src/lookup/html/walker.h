#pragma once
// The walk over the parsed page that writes its text, element by element, as innerText does.
#include <gumbo.h>

#include <string>
#include <string_view>
#include <vector>

namespace lookup::html {

// Renders the tree under `root` into `out` (emptied first); the marks in its text are replaced
// by the `runs` they stand for (textmarks.h).
void renderText(const GumboNode* root, const std::vector<std::string_view>& runs, std::string& out);

}  // namespace lookup::html
