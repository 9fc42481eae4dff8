#pragma once
// Which catalogue entry the map window shows, the messages for missing map files, and the texts
// the map window writes: its caption, the map menu's entries and the called station's label.
#include <QString>
#include <QStringList>

// The entry less its last four characters (the dot and the extension): "Europe Map".
QString MapEntryName(const QString& entry);

// Index of the first entry that holds name as a case-sensitive substring, -1 when none does.
int FindMapEntry(const QStringList& catalogue, const QString& name);

// "<name> not found", CR LF, "Please install <name> in Quillor]Maps folder" (the bracket is the
// program's own and stays).
QString MissingMapMessage(const QString& name);

struct MapSelection {
    int index = -1;        // entry to show; -1: nothing is shown and the current index stays
    QStringList messages;  // message boxes to show first, in order
};
// The chosen map's entry; when it is missing, its message and then the world map's entry; when
// that is missing too, its message as well and no entry.
MapSelection SelectMap(const QStringList& catalogue, const QString& chosenName);

// "  Europe  " for "Europe Map.jpg": every " Map.jpg", then every " Map.gif" taken out, two
// blanks on each side.
QString MapMenuCaption(const QString& entry);

// "Map   Europe Map   (Hold down left button to move map)".
QString MapWindowCaption(const QString& entry);

// The distance with thousands separators of the default locale and no decimals ("##,##0").
QString FormatMapDistance(double distance);

// The unit word of the distance: "mi" for the setting 1, "km" otherwise.
QString MapUnitWord(int unit);

// The called station's label. With the line from the own station, one line:
// " To <call>  Dx <distance> <unit>  Az <azimuth>° "; without it, the call sign on the first line
// and "  Dx <distance> <unit>  Az <azimuth>° " on the second.
QString CalledStationCaption(const QString& call, double distance, int unit, double azimuth, bool withLine);

// The call sign the map menu passes on: the first line of the label, less the " To " of the one-line
// layout and what follows the call on that line.
QString CallFromCaption(const QString& caption);
