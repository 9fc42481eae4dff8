#pragma once
// Keeping what a call-book lookup found: the station's record is updated in place when the call
// is known, else appended and the file sorted.
#include "db/calldatabase.h"

#include <QString>

struct StationFields {
    QString call;
    QString name;
    QString add1, add2, ctry;
    double lat = 0, lon = 0;
    QString licenceClass;
    QString yearBorn;
};

// find, clear, fill, then update or append + sort. Every value is cut to its field's width; the
// position is written as plain decimal text. False (and db.lastError()) when the file could not
// be written.
bool StoreStation(CallDatabase& db, const StationFields& station);

// A position as the record keeps it: plain decimal text with "." ("52.52", "-0.1276").
QString CoordinateText(double value);

// The year in a date of birth as the services write it ("12 Mar 1961", "03/07/1969", "1961"):
// the first run of exactly four digits, else the text trimmed.
QString YearOf(const QString& dateOfBirth);
