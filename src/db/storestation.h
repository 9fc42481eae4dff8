#pragma once
// Keeping what a call-book lookup found: the station's record is updated in place when the call
// is known, else appended and the file sorted.
#include "common/station.h"
#include "db/calldatabase.h"

#include <QString>

// find, clear, fill, then update or append + sort. Every value is cut to its field's width; the
// position is written as plain decimal text. False (and db.lastError()) when the file could not
// be written.
bool StoreStation(CallDatabase& db, const StationFields& station);

// A position as the record keeps it: plain decimal text with "." ("52.52", "-0.1276").
QString CoordinateText(double value);
