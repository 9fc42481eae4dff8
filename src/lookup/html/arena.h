#pragma once
// Memory for one parse, and the parse that leaves through longjmp when it wants more than its
// budget. Only arena.cpp calls setjmp and longjmp; read the rules at its top before touching
// anything on that path.
#include <gumbo.h>

#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace lookup::html {

// The parser allocates and frees many small pieces; here they are cut from large blocks and all
// given back at once when the arena is reset or goes (its blocks to `spare`, for the next page).
class Arena {
public:
    explicit Arena(std::vector<void*>& spare) : spare_(spare) {}
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    ~Arena() { reset(); }

    // The most the arena hands out until the next reset; a parse that asks for more is given
    // up (see parseWithin).
    void limit(size_t bytes) { budget_ = bytes; }
    // Gives back everything handed out.
    void reset();

    // The parser's allocator and deallocator (GumboOptions), `self` being the arena.
    static void* allocate(void* self, size_t size);
    static void deallocate(void* self, void* piece);

private:
    friend GumboOutput* parseWithin(GumboOptions options, Arena& arena, std::string_view html);

    void* take(size_t size);

    std::jmp_buf overBudget_;  // where take() leaves to when the budget or memory runs out
    std::vector<void*>& spare_;
    std::vector<void*> blocks_, large_;
    char* next_ = nullptr;
    size_t left_ = 0;
    size_t taken_ = 0;
    size_t budget_ = SIZE_MAX;
};

// Parses `html` with the parser's memory from `arena` (the allocator in `options` is set to it),
// within the arena's budget; null when the parse needed more. The output lives in the arena:
// reset it, never destroy the output node by node.
GumboOutput* parseWithin(GumboOptions options, Arena& arena, std::string_view html);

}  // namespace lookup::html
