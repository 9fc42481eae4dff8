#include "app/statustexts.h"

#include "common/vbtext.h"

namespace {
constexpr qsizetype kShownLength = 20;

ServiceTexts textsOf(int serviceNo) {
    const CallbookService* service = ServiceByNumber(serviceNo);
    return service ? service->texts : ServiceTexts::Shared;
}
}  // namespace

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

QString LoginStatus(const LanguageTexts& texts, int serviceNo, bool loggedIn) {
    switch (textsOf(serviceNo)) {
    case ServiceTexts::Qrzcq: return texts.LoginNotNeededQrzcq;
    case ServiceTexts::Callook: return texts.LoginNotNeededCallook;
    case ServiceTexts::Shared: break;
    }
    return loggedIn ? texts.LoggedIn : texts.NotLoggedIn;
}

QString LoggedOutPageStatus(const LanguageTexts& texts, int serviceNo) {
    switch (textsOf(serviceNo)) {
    case ServiceTexts::Qrzcq: return texts.LookupFailedQrzcq;
    case ServiceTexts::Callook: return texts.CallookStatus;
    case ServiceTexts::Shared: break;
    }
    return texts.LookupFailed;
}

QString OwnPositionStatus(const LanguageTexts& texts, int serviceNo) {
    if (!ServiceByNumber(serviceNo)) return texts.LookupFailed;
    switch (textsOf(serviceNo)) {
    case ServiceTexts::Qrzcq: return texts.SetupPositionQrzcq;
    case ServiceTexts::Callook: return texts.CallookStatus;
    case ServiceTexts::Shared: break;
    }
    return texts.SetupPositionFound;
}
