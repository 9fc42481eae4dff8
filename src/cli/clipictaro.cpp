#include "cli/clipictaro.h"

#include "app/pictaropaste.h"
#include "cli/cliargs.h"
#include "cli/clioutput.h"
#include "pictures/savejpg.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMimeData>

namespace {

// The clipboard's picture, which notes when another program asks for it.
class WatchedPicture : public QMimeData {
public:
    explicit WatchedPicture(const QImage& picture, QElapsedTimer* lastRead) : lastRead_(lastRead) { setImageData(picture); }

protected:
    QVariant retrieveData(const QString& mimeType, QMetaType type) const override {
        lastRead_->start();  // the picture in whichever form it was asked for
        return QMimeData::retrieveData(mimeType, type);
    }

private:
    QElapsedTimer* lastRead_;
};

// How long the clipboard is kept for Pictaro: until a moment after it last read the picture,
// at most a few seconds in all.
constexpr int kKeepMs = 5000;
constexpr int kAfterReadMs = 500;

}  // namespace

bool IsPictaroCommand(const QStringList& args) {
    const CliArgs p = ParseCliArgs(args.mid(1));
    return p.error.isEmpty() && p.positional.value(0) == QLatin1String("pictaro") && !p.flags.contains(QStringLiteral("--help"));
}

int RunPictaroCommand(const QStringList& args) {
    const CliArgs p = ParseCliArgs(args.mid(1));
    if (!p.options().isEmpty()) return CliUsageError(QStringLiteral("pictaro does not take ") + p.options().first());
    if (p.positional.value(1) != QLatin1String("paste") || p.positional.size() != 3)
        return CliUsageError(QStringLiteral("pictaro takes: paste IMAGE"));
    const Result<QImage> picture = ReadPictureFile(p.positional[2]);
    if (!picture) return CliFailure(picture.message());

    QElapsedTimer lastRead;
    QClipboard* clipboard = QGuiApplication::clipboard();
    PictaroDesktop desktop = SessionDesktop(clipboard);
    desktop.putPicture = [&](const QImage& image) {
        clipboard->clear();
        clipboard->setMimeData(new WatchedPicture(image, &lastRead));
        return true;
    };
    const PasteOutcome outcome = PasteToPictaro(*picture, desktop);

    QElapsedTimer kept;
    kept.start();
    while (kept.elapsed() < kKeepMs && !(lastRead.isValid() && lastRead.elapsed() > kAfterReadMs) &&
           clipboard->ownsClipboard())
        WaitKeepingWindowsPainted(20);

    switch (outcome) {
    case PasteOutcome::KeySent: return 0;
    case PasteOutcome::NoPictaro: return CliFailure(QStringLiteral("no window titled Pictaro; the picture was on the clipboard"));
    case PasteOutcome::FocusElsewhere: return CliFailure(QStringLiteral("Pictaro's window did not take the focus; no key was sent"));
    case PasteOutcome::NoKeyboard: return CliFailure(QStringLiteral("keys cannot be sent on this display (no XTest)"));
    case PasteOutcome::NoPicture: return CliFailure(QStringLiteral("the picture could not be put on the clipboard"));
    }
    return 1;
}
