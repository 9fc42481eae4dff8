#pragma once
// Call-sign cleaning before a lookup (main window and call-sign file editor).
#include <QString>

// Cleans `call` in place and returns it, or returns "" when the text is no usable call sign:
// upper case, blanks trimmed, a slashed capital O (typed by some operators for zero) made "0";
// a short prefix in front of a slash ("EA8/DL1ABC") and a suffix behind one ("DL1ABC/P") are
// cut off. The text must hold a digit once the prefix is gone; the test comes before the suffix
// is cut, so the digit may leave with it ("DLABC/1" gives "DLABC"). The call has at most 6
// characters.
QString CleanCall(QString& call);
