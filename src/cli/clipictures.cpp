#include "cli/clipictures.h"

#include "cli/clioutput.h"
#include "pictures/dibsection.h"
#include "pictures/savejpg.h"
#include "pictures/stationpicture.h"

namespace {

// picture jpeg IN OUT [--quality N]: the picture IN through the bitmap class into a JPEG file,
// as the program saves a station picture.
int runJpeg(const CliArgs& p) {
    for (const QString& option : p.options())
        if (option != QLatin1String("--quality") && option != QLatin1String("--data"))
            return CliUsageError(QStringLiteral("picture jpeg does not take ") + option);
    if (p.positional.size() != 4) return CliUsageError(QStringLiteral("picture jpeg needs IN and OUT"));
    bool ok = true;
    const int quality = p.values.contains(QStringLiteral("--quality")) ? p.values.value(QStringLiteral("--quality")).toInt(&ok)
                                                                       : kStationJpegQuality;
    if (!ok || quality < 0 || quality > 100) return CliUsageError(QStringLiteral("--quality takes 0 to 100"));
    const Result<QImage> picture = ReadPictureFile(p.positional[2]);
    if (!picture) return CliFailure(picture.message());
    cDIBSection bitmap;
    bitmap.CreateFromPicture(*picture);
    if (bitmap.isNull()) return CliFailure(QStringLiteral("The picture is too large"));
    if (const Status saved = SaveJPG(bitmap, p.positional[3], quality); !saved) return CliFailure(saved.message());
    return 0;
}

}  // namespace

int RunPictureCommand(const CliArgs& p) {
    if (p.positional.value(1) == QLatin1String("jpeg")) return runJpeg(p);
    return CliUsageError(QStringLiteral("picture takes: jpeg"));
}
