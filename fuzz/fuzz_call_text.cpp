// libFuzzer target: the call-sign text rules. The input, as UTF-8 (invalid sequences become
// U+FFFD) and again as Windows-1252, goes through CallFromClipboardText (what F8 takes from the
// clipboard), CleanCall (what every lookup does first), and the two in turn as the main window
// runs them. Checked:
//   - CallFromClipboardText gives the start of the upper-cased text with zeros as slashed O's,
//     a leading "DE " dropped, cut before the first character outside "0".."z" other than the
//     slashed O; taking it again changes nothing;
//   - CleanCall gives "" or at most 6 letters and digits, leaves exactly that in its argument
//     when it gives a call, only gives a call for a text that holds a digit (or a slashed O or
//     zero) and gives a call with a digit back unchanged.
// Any broken property is reported on stderr and ends the run with abort().
#include "app/callflow.h"
#include "common/cp1252.h"
#include "common/vbtext.h"
#include "lookup/cleancall.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr char16_t kSlashedZero = 216;

[[noreturn]] void fail(const char* what, const QString& detail = {}) {
    std::fprintf(stderr, "fuzz_call_text: %s %s\n", what, detail.toUtf8().constData());
    std::abort();
}

void check(bool ok, const char* what, const QString& detail = {}) {
    if (!ok) fail(what, detail);
}

bool hasDigit(const QString& s) {
    for (const QChar c : s)
        if (c.isDigit() || c == QChar(kSlashedZero) || c == QChar(0x00F8)) return true;
    return false;
}

void checkClipboard(const QString& text) {
    const QString call = CallFromClipboardText(text);
    QString shaped = text.toUpper();
    shaped.replace(u'0', QChar(kSlashedZero));
    if (shaped.startsWith(QLatin1String("DE "))) shaped.remove(0, 3);
    check(shaped.startsWith(call), "F8: not the start of the text", call);
    for (const QChar c : call)
        check((c >= u'0' && c <= u'z') || c == QChar(kSlashedZero), "F8: character outside the call's range", call);
    check(!call.contains(u'0'), "F8: a zero left", call);
    if (call.size() < shaped.size()) {
        const QChar next = shaped[call.size()];
        check((next < u'0' || next > u'z') && next != QChar(kSlashedZero), "F8: cut before a call character", call);
    }
    check(CallFromClipboardText(call) == call, "F8: taking the call again changed it", call);
}

void checkClean(const QString& text) {
    QString argument = text;
    const QString call = CleanCall(argument);
    if (call.isEmpty()) return;
    check(call.size() <= 6, "CleanCall: longer than 6", call);
    for (const QChar c : call) check(vb::isAlphaNumeric(c), "CleanCall: not a letter or digit", call);
    check(argument == call, "CleanCall: argument differs from the result", argument);
    check(hasDigit(text.toUpper()) || hasDigit(text), "CleanCall: a call from a text without a digit", text);
    QString again = call;
    bool asciiDigit = false;
    for (const QChar c : call) asciiDigit = asciiDigit || (c >= u'0' && c <= u'9');
    if (asciiDigit) check(CleanCall(again) == call, "CleanCall: cleaning the call again changed it", call);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    for (const QString& text : {QString::fromUtf8(bytes), cp1252::decode(bytes)}) {
        checkClipboard(text);
        checkClean(text);
        checkClean(CallFromClipboardText(text));
    }
    return 0;
}
