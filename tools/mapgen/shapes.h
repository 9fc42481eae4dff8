#pragma once
// Natural Earth shapefiles read with shapelib: the rings and lines of every record whose bounding
// box meets a geographic window, and the populated places with the fields the maps use.
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

struct GeoWindow {
    double lonMin, lonMax, latMin, latMax;
    bool meets(double x0, double y0, double x1, double y1) const {
        return x1 >= lonMin && x0 <= lonMax && y1 >= latMin && y0 <= latMax;
    }
};

struct GeoPoint {
    double lon, lat;
};
using GeoRing = std::vector<GeoPoint>;

// One record: its parts (rings of a polygon, or lines) and the text fields asked for.
struct GeoShape {
    std::vector<GeoRing> parts;
    QStringList fields;
};

// The records of path (without .shp) that meet window; fieldNames are read from the .dbf.
// An unreadable file gives no records and a message on stderr.
std::vector<GeoShape> ReadShapes(const QString& path, const GeoWindow& window, const QStringList& fieldNames = {});

struct Place {
    QString name;
    double lon, lat;
    int scalerank;
    double population;
};
std::vector<Place> ReadPlaces(const QString& path, const GeoWindow& window);
