#include "db/editorrules.h"

#include "common/vbtext.h"
#include "db/calldatabase.h"

#include <algorithm>

QString ReplaceCall(const QString& text, const QString& call) {
    if (!call.isEmpty()) return QString(text).replace(QStringLiteral("???"), call);
    QString out = text;
    for (qsizetype at = out.indexOf(QStringLiteral("???")); at >= 0; at = out.indexOf(QStringLiteral("???"), at)) {
        if (at > 0 && out.at(at - 1) == u' ') out.remove(at - 1, 4), --at;
        else if (at + 3 < out.size() && out.at(at + 3) == u' ') out.remove(at, 4);
        else out.remove(at, 3);
    }
    return out;
}

QRect FitPicture(QSize natural) {
    if (natural.isEmpty()) return {};
    const QRect area = kEditorPictureArea;
    const qint64 w = natural.width(), h = natural.height();
    int width = 0, height = 0;
    if (w * area.height() >= h * area.width()) {
        // Wider than the area: as wide as the area.
        width = area.width();
        height = std::max<int>(1, static_cast<int>((h * area.width() + w / 2) / w));
    } else {
        // Taller: as high as the area.
        height = area.height();
        width = std::max<int>(1, static_cast<int>((w * area.height() + h / 2) / h));
    }
    const QPoint centre = kEditorPictureCentre;
    return {centre.x() - width / 2, centre.y() - height / 2, width, height};
}

