// Draws the nine region map pictures from Natural Earth data through the maps' own drawing rule,
// so that a station plotted by the program lands where the picture has its place.
//
//     mapgen NATURAL_EARTH_DIR OUT_DIR [--report FILE.csv] [--only NAME]
//
// Writes "<name> Map.jpg" into OUT_DIR and, with --report, every labelled city with the pixel the
// picture drew it at and the pixel the plotting rule gives it, and prints the largest distance
// per map.
#include "maps/choosemap.h"
#include "maps/mapposition.h"
#include "shapes.h"

#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QTextStream>
#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

struct MapStyle {
    MapId map;
    const char* scale;              // Natural Earth resolution: "10m", "50m", "110m"
    GeoWindow region;               // the box the map is chosen for
    bool states;                    // state and province borders
    int cityRank;                   // largest scalerank of the cities drawn
    int riverRank;                  // largest scalerank of the rivers drawn
    double graticule;               // degrees between grid lines
    int fontPixels;
};

constexpr MapStyle kStyles[] = {
    {MapId::NorthAmerica, "50m", {-135, -55, 9, 55}, true, 3, 5, 10, 13},
    {MapId::Australia, "50m", {122, 155, -45, -10}, true, 5, 6, 5, 13},
    {MapId::NewZealand, "10m", {166, 179, -48, -33}, false, 7, 7, 2, 13},
    {MapId::UK, "10m", {-12, 3, 49, 60}, false, 6, 7, 2, 13},
    {MapId::NNederland, "10m", {3.817, 8, 52.18, 53.72}, false, 10, 9, 0.5, 13},
    {MapId::Europe, "10m", {-23, 54, 29, 60}, false, 3, 4, 5, 12},
    {MapId::Japan, "10m", {126, 148, 25, 45}, false, 6, 6, 2, 13},
    {MapId::Asia, "50m", {54, 148, -26, 62}, false, 2, 4, 10, 12},
    {MapId::World, "110m", {-170, 190, -89.99, 89.99}, false, 1, 2, 15, 12},
};

constexpr int kMargin = 40;
const QColor kSea(170, 205, 235), kLand(244, 240, 222), kCoast(90, 110, 130), kBorder(150, 80, 80),
    kState(170, 140, 140), kRiver(70, 130, 200), kGrid(120, 140, 160, 90), kCity(40, 40, 40);

bool isWorld(const MapStyle& s) { return s.map == MapId::World; }

std::optional<QPointF> project(const MapStyle& s, double lat, double lon) {
    if (isWorld(s)) lat = std::clamp(lat, -89.99, 89.99);
    const std::optional<MapPointF> p = MapPointSmooth(s.map, lat, lon, isWorld(s));
    if (!p) return std::nullopt;
    return QPointF(p->x, p->y);
}

// The picture: every pixel at x, y >= 0 that the region box projects to, and a margin.
QSize pictureSize(const MapStyle& s) {
    double maxX = 0, maxY = 0;
    const int steps = 200;
    for (int i = 0; i <= steps; ++i)
        for (int j = 0; j <= steps; ++j) {
            const double lon = s.region.lonMin + (s.region.lonMax - s.region.lonMin) * i / steps;
            const double lat = s.region.latMin + (s.region.latMax - s.region.latMin) * j / steps;
            if (const auto p = project(s, lat, lon)) {
                maxX = std::max(maxX, p->x());
                maxY = std::max(maxY, p->y());
            }
        }
    return {std::min(6000, int(std::ceil(maxX)) + kMargin), std::min(6000, int(std::ceil(maxY)) + kMargin)};
}

// The geographic window whose points land on the picture, found by sampling around the region.
GeoWindow drawWindow(const MapStyle& s, QSize size) {
    if (isWorld(s)) return {-180, 180, -90, 90};
    const QRectF slack = QRectF(QPointF(0, 0), QSizeF(size)).adjusted(-60, -60, 60, 60);
    GeoWindow w{1e9, -1e9, 1e9, -1e9};
    const double lon0 = std::max(-180.0, s.region.lonMin - 40), lon1 = std::min(180.0, s.region.lonMax + 40);
    const double lat0 = std::max(-89.0, s.region.latMin - 25), lat1 = std::min(89.0, s.region.latMax + 25);
    for (double lon = lon0; lon <= lon1; lon += 0.25)
        for (double lat = lat0; lat <= lat1; lat += 0.25)
            if (const auto p = project(s, lat, lon); p && slack.contains(*p)) {
                w.lonMin = std::min(w.lonMin, lon - 1);
                w.lonMax = std::max(w.lonMax, lon + 1);
                w.latMin = std::min(w.latMin, lat - 1);
                w.latMax = std::max(w.latMax, lat + 1);
            }
    return w;
}

// Outside-region code of a pixel against the picture with a border: runs of points in the same
// outside region can be cut to their ends without changing what shows.
int outcode(QPointF p, const QRectF& r) {
    return (p.x() < r.left() ? 1 : 0) | (p.x() > r.right() ? 2 : 0) | (p.y() < r.top() ? 4 : 0) |
           (p.y() > r.bottom() ? 8 : 0);
}

// The ring as pixels, shifted by lonShift degrees; points closer than a third of a pixel and
// runs outside the picture are thinned.
QPolygonF toPixels(const MapStyle& s, const GeoRing& ring, double lonShift, const QRectF& frame) {
    QPolygonF out;
    out.reserve(int(ring.size()));
    int lastCode = -1;
    bool pendingTail = false;
    QPointF tail;
    for (const GeoPoint& g : ring) {
        const auto p = project(s, g.lat, g.lon + lonShift);
        if (!p) continue;
        const int code = outcode(*p, frame);
        if (code != 0 && code == lastCode) {
            tail = *p;
            pendingTail = true;
            continue;
        }
        if (pendingTail) out << tail;
        pendingTail = false;
        if (out.isEmpty() || code != 0 || std::hypot(out.back().x() - p->x(), out.back().y() - p->y()) > 0.33)
            out << *p;
        lastCode = code;
    }
    if (pendingTail) out << tail;
    return out;
}

// The world map's picture runs past 180 E: shapes are drawn once more a turn further east.
std::vector<double> lonShifts(const MapStyle& s) { return isWorld(s) ? std::vector<double>{0, 360} : std::vector<double>{0}; }

void drawPolygons(QPainter& painter, const MapStyle& s, const std::vector<GeoShape>& shapes, const QRectF& frame) {
    for (double shift : lonShifts(s)) {
        for (const GeoShape& shape : shapes) {
            QPainterPath path;
            path.setFillRule(Qt::OddEvenFill);
            for (const GeoRing& ring : shape.parts) {
                const QPolygonF poly = toPixels(s, ring, shift, frame);
                if (poly.size() >= 3) path.addPolygon(poly);
            }
            painter.drawPath(path);
        }
    }
}

void drawLines(QPainter& painter, const MapStyle& s, const std::vector<GeoShape>& shapes, const QRectF& frame) {
    for (double shift : lonShifts(s))
        for (const GeoShape& shape : shapes)
            for (const GeoRing& ring : shape.parts) painter.drawPolyline(toPixels(s, ring, shift, frame));
}

void drawGraticule(QPainter& painter, const MapStyle& s, const GeoWindow& w, const QRectF& frame) {
    const double step = s.graticule;
    const double lonEnd = isWorld(s) ? 190 : w.lonMax, lonStart = isWorld(s) ? -170 : w.lonMin;
    const double latStart = std::max(-89.99, w.latMin), latEnd = std::min(89.99, w.latMax);
    for (double lon = std::ceil(lonStart / step) * step; lon <= lonEnd; lon += step) {
        GeoRing line;
        for (double lat = latStart; lat <= latEnd; lat += 0.25) line.push_back({lon, lat});
        line.push_back({lon, latEnd});
        painter.drawPolyline(toPixels(s, line, 0, frame));
    }
    for (double lat = std::ceil(latStart / step) * step; lat <= latEnd; lat += step) {
        GeoRing line;
        for (double lon = lonStart; lon <= lonEnd; lon += 0.25) line.push_back({lon, lat});
        painter.drawPolyline(toPixels(s, line, 0, frame));
    }
}

struct DrawnCity {
    Place place;
    QPointF drawn;
};

std::vector<DrawnCity> drawCities(QPainter& painter, const MapStyle& s, std::vector<Place> places, QSize size) {
    std::sort(places.begin(), places.end(), [](const Place& a, const Place& b) {
        return a.scalerank != b.scalerank ? a.scalerank < b.scalerank : a.population > b.population;
    });
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(s.fontPixels);
    painter.setFont(font);
    const QFontMetricsF metrics(font);
    std::vector<QRectF> taken;
    std::vector<DrawnCity> drawn;
    const QRectF inside(8, 8, size.width() - 16, size.height() - 16);
    for (const Place& place : places) {
        if (place.scalerank > s.cityRank) continue;
        const auto p = project(s, place.lat, place.lon);
        if (!p || !inside.contains(*p)) continue;
        const QRectF dot(p->x() - 3.5, p->y() - 3.5, 7, 7);
        QRectF label = metrics.boundingRect(place.name);
        label.moveTopLeft(QPointF(p->x() + 5, p->y() - metrics.ascent() / 2 - 2));
        if (label.right() > size.width() - 4) label.moveRight(p->x() - 5);
        const bool fits = std::none_of(taken.begin(), taken.end(), [&](const QRectF& r) {
            return r.intersects(label.adjusted(-2, -1, 2, 1)) || r.intersects(dot);
        });
        if (!fits) continue;
        taken.push_back(label);
        taken.push_back(dot);
        painter.setPen(QPen(Qt::white, 1.2));
        painter.setBrush(kCity);
        painter.drawEllipse(*p, 3, 3);
        QPainterPath text;
        text.addText(label.left(), label.top() + metrics.ascent(), font, place.name);
        painter.setPen(QPen(QColor(255, 255, 255, 220), 3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(text);
        painter.setPen(Qt::NoPen);
        painter.setBrush(kCity);
        painter.drawPath(text);
        drawn.push_back({place, *p});
    }
    return drawn;
}

QString layer(const QString& root, const MapStyle& s, const char* name) {
    return root + u'/' + QLatin1String(s.scale) + QStringLiteral("/ne_") + QLatin1String(s.scale) + u'_' +
           QLatin1String(name);
}

struct Report {
    QTextStream* csv = nullptr;
};

void drawMap(const QString& root, const QString& outDir, const MapStyle& s, Report& report) {
    const QSize size = pictureSize(s);
    const GeoWindow window = drawWindow(s, size);
    const QRectF frame = QRectF(QPointF(0, 0), QSizeF(size)).adjusted(-20, -20, 20, 20);
    QImage image(size, QImage::Format_RGB32);
    image.fill(kSea);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);

    painter.setPen(QPen(kGrid, 1));
    drawGraticule(painter, s, window, frame);
    painter.setPen(QPen(kCoast, isWorld(s) ? 0.8 : 1.0));
    painter.setBrush(kLand);
    drawPolygons(painter, s, ReadShapes(layer(root, s, "land"), window), frame);
    painter.setBrush(Qt::NoBrush);
    if (s.states) {
        std::vector<GeoShape> states = ReadShapes(root + QStringLiteral("/10m/ne_10m_admin_1_states_provinces_lines"),
                                                  window, {QStringLiteral("adm0_a3")});
        std::erase_if(states, [](const GeoShape& g) {
            return !QStringList{"USA", "CAN", "MEX", "AUS"}.contains(g.fields.value(0));
        });
        painter.setPen(QPen(kState, 1, Qt::DashLine));
        drawLines(painter, s, states, frame);
    }
    std::vector<GeoShape> rivers = ReadShapes(layer(root, s, "rivers_lake_centerlines"), window,
                                              {QStringLiteral("featurecla"), QStringLiteral("scalerank")});
    std::erase_if(rivers, [&](const GeoShape& g) {
        return !g.fields.value(0).startsWith(QStringLiteral("River")) || g.fields.value(1).toInt() > s.riverRank;
    });
    painter.setPen(QPen(kRiver, 1.2));
    drawLines(painter, s, rivers, frame);
    painter.setPen(QPen(kBorder, 1.4));
    drawLines(painter, s, ReadShapes(layer(root, s, "admin_0_boundary_lines_land"), window), frame);
    painter.setPen(QPen(kGrid, 1));
    painter.drawRect(QRectF(0.5, 0.5, size.width() - 1, size.height() - 1));

    const std::vector<DrawnCity> cities =
        drawCities(painter, s, ReadPlaces(root + QStringLiteral("/10m/ne_10m_populated_places_simple"), window), size);
    painter.end();

    const QString name = MapName(s.map);
    image.save(outDir + u'/' + name + QStringLiteral(".jpg"), "JPG", 88);

    double worst = 0;
    QString worstPlace;
    for (const DrawnCity& c : cities) {
        // The cities this map is chosen for (the world map: those no region map takes).
        if (ChooseMap(c.place.lat, c.place.lon) != name) continue;
        const MapPlot plot = MapPosition(name, c.place.lat, c.place.lon);
        if (plot.outcome != MapPlot::Outcome::Placed) continue;
        const double d = std::hypot(plot.x - c.drawn.x(), plot.y - c.drawn.y());
        if (report.csv)
            *report.csv << name << ',' << '"' << c.place.name << '"' << ',' << c.place.lat << ',' << c.place.lon << ','
                        << c.drawn.x() << ',' << c.drawn.y() << ',' << plot.x << ',' << plot.y << ',' << d << '\n';
        if (d > worst) {
            worst = d;
            worstPlace = c.place.name;
        }
    }
    std::printf("%-18s %5dx%-5d %3zu cities, largest distance %.2f px (%s)\n", qPrintable(name), size.width(),
                size.height(), cities.size(), worst, qPrintable(worstPlace));
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 3) {
        std::fprintf(stderr, "usage: mapgen NATURAL_EARTH_DIR OUT_DIR [--report FILE.csv] [--only NAME]\n");
        return 2;
    }
    QFile csvFile;
    QTextStream csv;
    Report report;
    const qsizetype reportAt = args.indexOf(QStringLiteral("--report"));
    if (reportAt > 0 && reportAt + 1 < args.size()) {
        csvFile.setFileName(args[reportAt + 1]);
        if (!csvFile.open(QIODevice::WriteOnly | QIODevice::Truncate)) return 1;
        csv.setDevice(&csvFile);
        csv << "map,place,lat,lon,drawn_x,drawn_y,plotted_x,plotted_y,distance\n";
        report.csv = &csv;
    }
    const qsizetype onlyAt = args.indexOf(QStringLiteral("--only"));
    const QString only = onlyAt > 0 && onlyAt + 1 < args.size() ? args[onlyAt + 1] : QString();
    QElapsedTimer timer;
    timer.start();
    for (const MapStyle& s : kStyles)
        if (only.isEmpty() || MapName(s.map) == only) drawMap(args[1], args[2], s, report);
    std::printf("mapgen: %lld ms\n", static_cast<long long>(timer.elapsed()));
    return 0;
}
