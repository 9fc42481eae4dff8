#pragma once
// A station as a call-book page gives it and as the call-sign file keeps it.
#include <QString>

struct StationFields {
    QString call;
    QString name;
    QString add1, add2, ctry;
    double lat = 0, lon = 0;  // 0, 0: unknown
    QString licenceClass;
    QString yearBorn;
};
