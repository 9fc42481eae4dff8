#include "app/stationservice.h"

#include "app/picturecache.h"
#include "common/vbtext.h"
#include "db/calldatabase.h"
#include "lookup/uclookup.h"

StationService::StationService(ucLookUp& lookUp, const QString& dataPath) : lookUp_(lookUp), dataPath_(dataPath) {}

QString StationService::callFilePath() const { return dataPath_ + u'/' + QLatin1String(CallDatabase::kFileName); }

lookup::StationReading StationService::Read(const QString& call) { return lookup::ReadStation(lookUp_, call); }

TakenPage StationService::Take(const QString& call) {
    TakenPage taken;
    const lookup::StationReading reading = Read(call);
    taken.refusal = reading.refusal;
    if (!reading.station) return taken;

    StationFields station = *reading.station;
    taken.record = RecordFieldsOf(station);
    CallDatabase db(callFilePath());
    if (station.lat == 0 && station.lon == 0) {
        if (const auto known = FindKnownPosition(db, station.call)) {
            taken.record.lat = known->sLat;
            taken.record.lon = known->sLon;
            station.lat = vb::val(known->sLat);
            station.lon = vb::val(known->sLon);
            taken.positionFromFile = true;
        }
    }
    taken.station = station;
    taken.stored = StoreRecord(db, taken.record);
    lookUp_.GetPicture(call);
    return taken;
}

bool StationService::KeepPicture(const QString& call, const QByteArray& bytes) const {
    return StorePictureInCache(dataPath_, call, bytes);
}
