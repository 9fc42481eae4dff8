#pragma once
// Keeping a station in the call-sign file: the record is updated in place when the call is
// known, else appended and the file sorted in one write.
#include "common/station.h"
#include "common/status.h"
#include "db/calldatabase.h"

#include <QString>
#include <optional>

// The nine fields of a record as text, as they are written (each is cut to its field's width).
struct RecordFields {
    QString call, name, add1, add2, ctry, lat, lon, licenceClass, yearBorn;
};

// A station's fields as the record keeps them: the position as plain decimal text.
RecordFields RecordFieldsOf(const StationFields& station);

struct StoreOutcome {
    bool appended = false;  // the call was new: its record was added (written or not)
    Status written;         // a failure leaves the file unchanged
};

// The call as the record keeps it: trimmed and cut to the call field's width, so that the search
// after a write looks for what was written.
QString StoredCall(const QString& typed);

// find, clear, fill, then update or append + sort, under the StoredCall of record.call (which
// must not be empty).
StoreOutcome StoreRecord(CallDatabase& db, const RecordFields& record);

// The position the file knows for a station: its record's, when that is not 0, 0. So a position
// once typed in by hand survives a lookup on a service that gives none.
struct KnownPosition {
    QString sCall;
    QString sLat;  // as stored, trimmed
    QString sLon;
};
std::optional<KnownPosition> FindKnownPosition(CallDatabase& db, const QString& call);

// A position as the record keeps it: plain decimal text with "." ("52.52", "-0.1276").
QString CoordinateText(double value);
