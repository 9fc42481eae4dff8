#pragma once
// The rules of the call-sign file editor that need no window: caption placeholders, where a
// station picture goes, the call as a record keeps it, the known position of a station and how
// the form's fields are written to the file.
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <optional>

class CallDatabase;

// The editor's picture area and the point a picture is centred on.
inline constexpr QRect kEditorPictureArea{193, 25, 326, 244};  // centred on 356, 147
inline constexpr QPoint kEditorPictureCentre{356, 147};

// A caption with its "???" replaced by the call. Without a call the placeholder takes one blank
// beside it along, so that no doubled, leading or trailing blank is left where the call would be.
QString ReplaceCall(const QString& text, const QString& call);

// Where the editor shows a station picture of this natural size: scaled to fill the picture area
// as far as its aspect allows (wide pictures to the area's width, tall ones to its height) and
// centred on the point 356, 147. An empty rectangle for an empty size.
QRect FitPicture(QSize natural);

// The call as the record keeps it: trimmed and cut to the call field's width, so that the search
// after a write looks for what was written.
QString StoredCall(const QString& typed);

// The known position of a station: the stations of the call-sign file itself. A record of the
// call whose position is not 0, 0 gives it (sCall its call, sLat and sLon its latitude and
// longitude as stored); so a position once typed in by hand survives a lookup on a service that
// gives none.
struct KnownPosition {
    QString sCall;
    QString sLat;
    QString sLon;
};
std::optional<KnownPosition> FindKnownPosition(CallDatabase& db, const QString& call);

// The form's fields behind the call, as typed.
struct EditorFields {
    QString name, add1, add2, ctry, lat, lon, licenceClass, yearBorn;
};

struct StoreOutcome {
    bool appended = false;  // the call was new: its record was added (written or not)
    bool written = true;    // false: the file is unchanged, db.lastError() says why
};

// Writes the record of key (a StoredCall, not empty) with these fields: over the call's record
// when the file has one, else appended and sorted in one write, so that the file is never left
// with the call unsorted at its end.
StoreOutcome StoreEditorRecord(CallDatabase& db, const QString& key, const EditorFields& fields);
