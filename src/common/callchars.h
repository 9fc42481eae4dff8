#pragma once
// Characters with a meaning of their own in call signs.

// The slashed capital O (U+00D8) that operators write for a zero, so that it is not read as
// the letter O.
inline constexpr char16_t kSlashedO = u'\u00D8';
