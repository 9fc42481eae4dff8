#pragma once
// The station fields cut out of the plain text of a call-book page (HTMLDecode's output, lines
// joined with CR LF). Each service prints its fields behind fixed labels; every field is found
// by a label text and taken between fixed offsets and a delimiter, all on 1-based positions.
//
// cName, Add1, Add2 and ctry continue from ParseCursor, the position where the previous field
// stopped, so they are read in that order after a page arrived. Latitude, Longitude, Class,
// PrevCall, DateOfBirth, Grid and WebAddress search from the start of the page and may follow
// in any order. A field whose label is missing gives "" (the coordinates 0); a field whose
// delimiter is missing gives the same default. Every field that finds its label leaves
// ParseCursor at its delimiter; nothing resets ParseCursor between pages.
//
// The lookup control holds one of these, puts each decoded page into PageText and forwards
// the events cName raises.
#include "lookup/services.h"

#include <QString>
#include <QStringView>
#include <cstdint>
#include <functional>

namespace lookup {

// Raised by cName: the page says the call is unknown, or (QRZ) that a login is required.
enum class FieldEvent { CallNotFound, LoginRequired };
QString eventName(FieldEvent event);  // "CallNotFound", "LoginRequired"

class CallbookFields {
public:
    QString PageText;          // plain text of the last page
    int16_t Database = 0;      // the selected service, 1 to 5; any other value selects none
    int32_t ParseCursor = 0;   // 1-based position where the continuing fields go on
    // Receives the events cName raises, with the call sign that was passed to it.
    std::function<void(FieldEvent, const QString& ca)> onEvent;

    Service service() const;

    QString cName(const QString& ca);  // the station's name; sets ParseCursor
    QString Add1();                    // the line after the name
    QString Add2();                    // the line after that (HamCall: without its last 3 characters)
    QString ctry();                    // the line after that (Callook: always "U.S.A.")
    double Latitude();                 // degrees, north positive
    double Longitude();                // degrees, east positive
    QString Class();                   // licence class
    QString PrevCall();                // no service gives it: always ""
    QString DateOfBirth();             // QRZ, HamCall
    QString Grid();                    // QRZ, Callook
    QString WebAddress();              // QRZ

private:
    QString nameOf(const QString& ca);
    QString nextLine(qsizetype dropAtEnd);
    double coordinate(QStringView label, qsizetype offset);
    QString labelToLineEnd(QStringView label, qsizetype start, qsizetype lengthOffset);
    void raise(FieldEvent event, const QString& ca);
    void setCursor(qsizetype position);
};

}  // namespace lookup
