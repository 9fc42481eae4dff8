#include "lookup/cleancall.h"

#include "common/callchars.h"
#include "common/vbtext.h"

namespace {

// 1-based position of the first character that is not a letter or digit; 0 when there is none.
qsizetype firstNonAlphaNumeric(const QString& text) {
    for (qsizetype i = 0; i < text.size(); ++i)
        if (!vb::isAlphaNumeric(text[i])) return i + 1;
    return 0;
}

}  // namespace

QString CleanCall(QString& call) {
    if (call.isEmpty()) return {};
    call = vb::trim(call.toUpper());
    call.replace(QChar(kSlashedO), u'0');

    // A separator within the first four characters ends a prefix such as "EA8/".
    if (const qsizetype at = firstNonAlphaNumeric(call); at > 0 && at < 5) call = vb::trim(vb::mid(call, at + 1));

    bool hasDigit = false;
    for (const QChar c : call) hasDigit = hasDigit || (c >= u'0' && c <= u'9');
    if (!hasDigit) return {};

    if (const qsizetype at = firstNonAlphaNumeric(call); at > 0) call.truncate(at - 1);
    return call.size() > 6 ? QString() : call;
}
