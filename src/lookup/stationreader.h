#pragma once
// The station on a call-book page, read once for every window that asks a service: the name
// first (it decides whether the page holds a station at all, and the address lines continue
// from where it stopped), then the address lines and country, then the fields that search from
// the start of the page.
#include "common/station.h"
#include "lookup/callbookfields.h"

#include <optional>

namespace lookup {

struct StationReading {
    // The station to show and keep; none when the page holds no station for the call.
    std::optional<StationFields> station;
    // Why there is none, when the page said so while its name was read.
    std::optional<FieldEvent> refusal;
};

// Reads the station of `call` off fields.PageText. The events the name raises still reach
// fields.onEvent. A page that raised one of them while its name was read yields no station,
// whatever name was cut out of it: the cursor the name starts from may be left over from an
// earlier page, and what lies there is no station of this call.
StationReading ReadStation(CallbookFields& fields, const QString& call);

// The year in a date of birth as the services write it ("12 Mar 1961", "03/07/1969", "1961"):
// the first run of exactly four digits, else the text trimmed.
QString YearOf(const QString& dateOfBirth);

}  // namespace lookup
