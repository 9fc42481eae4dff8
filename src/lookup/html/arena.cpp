// The parse arena: the only place that uses setjmp and longjmp.
//
// parseWithin calls setjmp, then the parser; the parser calls Arena::allocate for memory, and
// Arena::take leaves with longjmp straight back to parseWithin when the budget (or malloc) runs
// out. Everything between the two is skipped without being unwound, so on that path, from
// parseWithin's setjmp down through the parser's frames to take():
// - no C++ object with a destructor may be alive (no std::string, std::vector, QString, lock,
//   RAII guard of any kind as a local), since its destructor never runs; take() and allocate()
//   work on the arena's members only;
// - parseWithin reads no local variable after setjmp returns the second time (their values are
//   not kept), and stays free of them so it has nothing to clean up;
// - every byte the parser holds comes from this arena, so that reset() frees all of it: the
//   parser gets no other allocator (parseWithin sets it), and take() hands out only malloc'd
//   memory that the arena lists before it returns;
// - nothing else may be called back from the parser (no other callbacks in GumboOptions), and
//   nothing on the path may throw. (take() lists its blocks with push_back, which could throw
//   std::bad_alloc through the parser's frames only once memory is gone altogether.)
// The arena itself lives in the caller of parseWithin, above the setjmp, so its destructor and
// reset() run normally after the jump.
#include "lookup/html/arena.h"

#include <algorithm>
#include <cstdlib>

namespace lookup::html {
namespace {

constexpr size_t kBlock = 256 * 1024;
constexpr size_t kSpareBlocks = 16;  // blocks kept for the next page

}  // namespace

void Arena::reset() {
    taken_ = 0;
    for (void* b : blocks_) {
        if (spare_.size() < kSpareBlocks) spare_.push_back(b);
        else std::free(b);
    }
    for (void* b : large_) std::free(b);
    blocks_.clear();
    large_.clear();
    next_ = nullptr;
    left_ = 0;
}

void* Arena::allocate(void* self, size_t size) { return static_cast<Arena*>(self)->take(size); }

void Arena::deallocate(void*, void*) {}

void* Arena::take(size_t size) {
    size = (size + 15) & ~static_cast<size_t>(15);
    if (size > budget_ - std::min(taken_, budget_)) std::longjmp(overBudget_, 1);
    taken_ += size;
    if (size > kBlock / 4) {  // a large piece gets memory of its own
        void* piece = std::malloc(size);
        if (!piece) std::longjmp(overBudget_, 1);
        large_.push_back(piece);
        return piece;
    }
    if (size > left_) {
        if (spare_.empty()) {
            next_ = static_cast<char*>(std::malloc(kBlock));
            if (!next_) std::longjmp(overBudget_, 1);
        } else {
            next_ = static_cast<char*>(spare_.back());
            spare_.pop_back();
        }
        blocks_.push_back(next_);
        left_ = kBlock;
    }
    void* piece = next_;
    next_ += size;
    left_ -= size;
    return piece;
}

GumboOutput* parseWithin(GumboOptions options, Arena& arena, std::string_view html) {
    options.allocator = &Arena::allocate;
    options.deallocator = &Arena::deallocate;
    options.userdata = &arena;
    if (setjmp(arena.overBudget_) != 0) return nullptr;
    return gumbo_parse_with_options(&options, html.data(), html.size());
}

}  // namespace lookup::html
