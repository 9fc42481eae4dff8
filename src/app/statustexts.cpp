#include "app/statustexts.h"

#include "common/vbtext.h"

namespace {
constexpr qsizetype kShownLength = 20;
}

QString NoCallStatus(const LanguageTexts& texts, const QString& text) {
    const QString trimmed = vb::trim(text.simplified());
    if (trimmed.isEmpty()) return texts.StatusNoCall;
    QString shown = trimmed.left(kShownLength);
    if (trimmed.size() > kShownLength) shown += QStringLiteral("...");
    return QString(texts.StatusNotACall).replace(QStringLiteral("???"), shown);
}

QString FailureStatus(const LanguageTexts& texts, const DownloadFailure& failure, const QString& service) {
    QString text;
    switch (failure.kind) {
    case DownloadFailure::HttpError:
        text = QString(texts.StatusHttpError).replace(QStringLiteral("###"), QString::number(failure.httpStatus));
        break;
    case DownloadFailure::TimedOut: text = texts.StatusTimedOut; break;
    case DownloadFailure::TooLarge: text = texts.StatusTooLarge; break;
    case DownloadFailure::Unreachable:
    case DownloadFailure::None: text = texts.StatusUnreachable; break;
    }
    return text.replace(QStringLiteral("***"), service);
}
