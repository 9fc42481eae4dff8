#include "shapes.h"

#include <shapefil.h>

#include <cstdio>

namespace {

// The files hold UTF-8 text, older ones Latin-1: a name that is no valid UTF-8 is read as Latin-1.
QString text(const char* bytes) {
    const QByteArray raw(bytes);
    const QString utf8 = QString::fromUtf8(raw);
    return utf8.contains(QChar::ReplacementCharacter) ? QString::fromLatin1(raw) : utf8;
}

struct ShpCloser {
    SHPHandle h;
    ~ShpCloser() {
        if (h) SHPClose(h);
    }
};
struct DbfCloser {
    DBFHandle h;
    ~DbfCloser() {
        if (h) DBFClose(h);
    }
};

}  // namespace

std::vector<GeoShape> ReadShapes(const QString& path, const GeoWindow& window, const QStringList& fieldNames) {
    std::vector<GeoShape> shapes;
    const QByteArray name = path.toLocal8Bit();
    ShpCloser shp{SHPOpen(name.constData(), "rb")};
    if (!shp.h) {
        std::fprintf(stderr, "mapgen: cannot read %s.shp\n", name.constData());
        return shapes;
    }
    DbfCloser dbf{fieldNames.isEmpty() ? nullptr : DBFOpen(name.constData(), "rb")};
    std::vector<int> fieldIndex;
    for (const QString& f : fieldNames) fieldIndex.push_back(dbf.h ? DBFGetFieldIndex(dbf.h, f.toLatin1().constData()) : -1);

    int count = 0;
    SHPGetInfo(shp.h, &count, nullptr, nullptr, nullptr);
    for (int i = 0; i < count; ++i) {
        SHPObject* o = SHPReadObject(shp.h, i);
        if (!o) continue;
        if (o->nVertices > 0 && window.meets(o->dfXMin, o->dfYMin, o->dfXMax, o->dfYMax)) {
            GeoShape shape;
            for (int part = 0; part < std::max(1, o->nParts); ++part) {
                const int first = o->nParts > 0 ? o->panPartStart[part] : 0;
                const int end = (o->nParts > 0 && part + 1 < o->nParts) ? o->panPartStart[part + 1] : o->nVertices;
                GeoRing ring;
                double x0 = 1e9, y0 = 1e9, x1 = -1e9, y1 = -1e9;
                for (int v = first; v < end; ++v) {
                    ring.push_back({o->padfX[v], o->padfY[v]});
                    x0 = std::min(x0, o->padfX[v]);
                    x1 = std::max(x1, o->padfX[v]);
                    y0 = std::min(y0, o->padfY[v]);
                    y1 = std::max(y1, o->padfY[v]);
                }
                // A polygon's holes are their own parts: a hole left out of a kept ring would fill
                // a lake, so parts are only dropped by their own box.
                if (ring.size() >= 2 && window.meets(x0, y0, x1, y1)) shape.parts.push_back(std::move(ring));
            }
            for (int f : fieldIndex)
                shape.fields << (f >= 0 ? text(DBFReadStringAttribute(dbf.h, i, f)) : QString());
            if (!shape.parts.empty()) shapes.push_back(std::move(shape));
        }
        SHPDestroyObject(o);
    }
    return shapes;
}

std::vector<Place> ReadPlaces(const QString& path, const GeoWindow& window) {
    std::vector<Place> places;
    const QByteArray name = path.toLocal8Bit();
    DbfCloser dbf{DBFOpen(name.constData(), "rb")};
    if (!dbf.h) {
        std::fprintf(stderr, "mapgen: cannot read %s.dbf\n", name.constData());
        return places;
    }
    const int nameField = DBFGetFieldIndex(dbf.h, "name");
    const int rankField = DBFGetFieldIndex(dbf.h, "scalerank");
    const int popField = DBFGetFieldIndex(dbf.h, "pop_max");
    const int latField = DBFGetFieldIndex(dbf.h, "latitude");
    const int lonField = DBFGetFieldIndex(dbf.h, "longitude");
    if (nameField < 0 || rankField < 0 || popField < 0 || latField < 0 || lonField < 0) return places;
    const int count = DBFGetRecordCount(dbf.h);
    for (int i = 0; i < count; ++i) {
        Place p;
        p.lat = DBFReadDoubleAttribute(dbf.h, i, latField);
        p.lon = DBFReadDoubleAttribute(dbf.h, i, lonField);
        if (!window.meets(p.lon, p.lat, p.lon, p.lat)) continue;
        p.name = text(DBFReadStringAttribute(dbf.h, i, nameField));
        p.scalerank = DBFReadIntegerAttribute(dbf.h, i, rankField);
        p.population = DBFReadDoubleAttribute(dbf.h, i, popField);
        places.push_back(p);
    }
    return places;
}
