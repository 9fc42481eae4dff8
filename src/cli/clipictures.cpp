#include "cli/clipictures.h"

#include "pictures/dibsection.h"
#include "pictures/savejpg.h"
#include "pictures/stationpicture.h"

#include <QTextStream>
#include <cstdio>

namespace {

int fail(int status, const QString& message, bool usage) {
    QTextStream err(stderr);
    err << "pxcallsigns: " << message << "\n";
    if (usage) err << "Try 'pxcallsigns --help'.\n";
    return status;
}

// picture jpeg IN OUT [--quality N]: the picture IN through the bitmap class into a JPEG file,
// as the program saves a station picture.
int runJpeg(const CliArgs& p) {
    for (const QString& option : p.options())
        if (option != QLatin1String("--quality") && option != QLatin1String("--data"))
            return fail(2, QStringLiteral("picture jpeg does not take ") + option, true);
    if (p.positional.size() != 4) return fail(2, QStringLiteral("picture jpeg needs IN and OUT"), true);
    bool ok = true;
    const int quality = p.values.contains(QStringLiteral("--quality")) ? p.values.value(QStringLiteral("--quality")).toInt(&ok)
                                                                       : kStationJpegQuality;
    if (!ok || quality < 0 || quality > 100) return fail(2, QStringLiteral("--quality takes 0 to 100"), true);
    const Result<QImage> picture = ReadPictureFile(p.positional[2]);
    if (!picture) return fail(1, picture.message(), false);
    cDIBSection bitmap;
    bitmap.CreateFromPicture(*picture);
    if (bitmap.isNull()) return fail(1, QStringLiteral("The picture is too large"), false);
    if (const Status saved = SaveJPG(bitmap, p.positional[3], quality); !saved) return fail(1, saved.message(), false);
    return 0;
}

}  // namespace

int RunPictureCommand(const CliArgs& p) {
    if (p.positional.value(1) == QLatin1String("jpeg")) return runJpeg(p);
    return fail(2, QStringLiteral("picture takes: jpeg"), true);
}
