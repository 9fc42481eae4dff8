#pragma once
// The one path from a call-book page to a kept station and its cached picture: the main window,
// the editor, the setup window and the command line all take it, and each says what came of it
// in its own words.
#include "common/station.h"
#include "db/storestation.h"
#include "lookup/stationreader.h"

#include <QByteArray>
#include <QString>
#include <optional>

class ucLookUp;

struct TakenPage {
    // Why the page holds no station, when it said so; its event has reached the control's
    // handlers already.
    std::optional<lookup::FieldEvent> refusal;
    // The station as kept; none when the page holds no station for the call. A page without a
    // position (0, 0) takes the one the call-sign file knows, so that a position typed in by hand
    // is never replaced by "unknown".
    std::optional<StationFields> station;
    bool positionFromFile = false;  // the page gave 0, 0 and the file's position was taken
    RecordFields record;  // the record as written
    StoreOutcome stored;
};

class StationService {
public:
    // dataPath: the data folder whose call-sign file and picture cache are used. It is read at
    // each use (start-up settles it after the windows are made) and must outlive the service.
    StationService(ucLookUp& lookUp, const QString& dataPath);

    QString callFilePath() const;

    // The station on the page that arrived for call, read and not kept.
    lookup::StationReading Read(const QString& call);

    // The station on the page that arrived for call, kept in the call-sign file (updated in
    // place or appended in sorted order), and its picture asked for; it comes as the control's
    // PictureReady or NoPic.
    TakenPage Take(const QString& call);

    // The answer to a picture request into the cache. True when it was a picture and is kept.
    bool KeepPicture(const QString& call, const QByteArray& bytes) const;

private:
    ucLookUp& lookUp_;
    const QString& dataPath_;
};
