#include "maps/mapselection.h"

#include <QLocale>
#include <cmath>

QString MapEntryName(const QString& entry) { return entry.left(std::max<qsizetype>(0, entry.size() - 4)); }

int FindMapEntry(const QStringList& catalogue, const QString& name) {
    for (qsizetype i = 0; i < catalogue.size(); ++i)
        if (catalogue[i].contains(name, Qt::CaseSensitive)) return static_cast<int>(i);
    return -1;
}

QString MissingMapMessage(const QString& name) {
    return name + QStringLiteral(" not found\r\nPlease install ") + name + QStringLiteral(" in Quillor]Maps folder");
}

MapSelection SelectMap(const QStringList& catalogue, const QString& chosenName) {
    MapSelection selection;
    QString name = chosenName;
    if (FindMapEntry(catalogue, name) < 0) {
        selection.messages << MissingMapMessage(name);
        name = QStringLiteral("World Map");
    }
    selection.index = FindMapEntry(catalogue, name);
    if (selection.index < 0) selection.messages << MissingMapMessage(name);
    return selection;
}

QString MapMenuCaption(const QString& entry) {
    QString caption = entry;
    caption.replace(QStringLiteral(" Map.jpg"), QString(), Qt::CaseSensitive);
    caption.replace(QStringLiteral(" Map.gif"), QString(), Qt::CaseSensitive);
    return QStringLiteral("  ") + caption + QStringLiteral("  ");
}

QString MapWindowCaption(const QString& entry) {
    return QStringLiteral("Map   ") + MapEntryName(entry) + QStringLiteral("   (Hold down left button to move map)");
}

QString FormatMapDistance(double distance) {
    QLocale grouped;
    grouped.setNumberOptions(grouped.numberOptions() & ~QLocale::OmitGroupSeparator);
    // Halves away from zero, as a number format rounds.
    return grouped.toString(static_cast<qlonglong>(std::round(distance)));
}

QString MapUnitWord(int unit) { return unit == 1 ? QStringLiteral("mi") : QStringLiteral("km"); }

QString CalledStationCaption(const QString& call, double distance, int unit, double azimuth, bool withLine) {
    QLocale plain;
    plain.setNumberOptions(plain.numberOptions() | QLocale::OmitGroupSeparator);
    const QString dxAz = QStringLiteral("  Dx ") + FormatMapDistance(distance) + u' ' + MapUnitWord(unit) +
                         QStringLiteral("  Az ") + plain.toString(azimuth, 'g', 15) + QStringLiteral("\u00b0 ");
    if (withLine) return QStringLiteral(" To ") + call + dxAz;
    return call + QStringLiteral("\r\n") + dxAz;
}

QString CallFromCaption(const QString& caption) {
    QString first = caption.section(QStringLiteral("\r\n"), 0, 0);
    if (first.startsWith(QStringLiteral(" To "))) {
        first = first.mid(4);
        const qsizetype end = first.indexOf(QStringLiteral("  Dx "));
        if (end >= 0) first = first.left(end);
    }
    return first;
}
