#pragma once
// Buffers kept from one page to the next on the same thread, so that a page is not worked on in
// fresh memory (which the system hands out a page at a time, each first touch a fault).
#include <QByteArray>

#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace lookup::html {

// A change the prescan makes to the page: the text from `from` to `to` is replaced.
struct Edit {
    size_t from, to;
    long run;                      // the number of the run whose mark goes in its place, or -1
    std::string_view insert = {};  // else the text put in its place
};

struct Scratch {
    Scratch() = default;
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch() {
        for (void* b : blocks) std::free(b);
    }
    // Gives up what a very large page left behind.
    void trim() {
        constexpr size_t kKeep = 16 << 20;
        if (edits.capacity() * sizeof(Edit) > kKeep) std::vector<Edit>().swap(edits);
        if (runs.capacity() * sizeof(std::string_view) > kKeep) std::vector<std::string_view>().swap(runs);
        if (static_cast<size_t>(parsed.capacity()) > kKeep) parsed = QByteArray();
        if (text.capacity() > kKeep) std::string().swap(text);
    }

    std::vector<Edit> edits, tagEdits;  // the prescan's
    std::vector<std::string_view> runs;
    std::vector<size_t> changedTags;
    QByteArray parsed;          // the page as the parser gets it
    std::string text;           // the rendered text
    std::vector<void*> blocks;  // the arena's blocks not in use
};

}  // namespace lookup::html
