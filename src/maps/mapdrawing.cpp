#include "maps/mapdrawing.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>

namespace {

// A label as the window's labels look: text on a white box with a thin frame, kept on the picture.
void drawLabel(QPainter& painter, const QString& text, QPoint at, QSize picture) {
    QFont font(QStringLiteral("Arial"));
    font.setPixelSize(12);
    font.setBold(true);
    painter.setFont(font);
    const QStringList lines = text.split(QStringLiteral("\r\n"));
    const QFontMetrics metrics(font);
    int width = 0;
    for (const QString& line : lines) width = std::max(width, metrics.horizontalAdvance(line));
    QRect box(at, QSize(width + 6, metrics.height() * int(lines.size()) + 4));
    if (box.right() >= picture.width()) box.moveRight(std::max(0, picture.width() - 1));
    if (box.bottom() >= picture.height()) box.moveBottom(std::max(0, picture.height() - 1));
    if (box.left() < 0) box.moveLeft(0);
    if (box.top() < 0) box.moveTop(0);
    painter.setPen(QPen(kMapForeground, 1));
    painter.setBrush(QColor(255, 255, 225));
    painter.drawRect(box.adjusted(0, 0, -1, -1));
    for (int i = 0; i < lines.size(); ++i)
        painter.drawText(QPoint(box.left() + 3, box.top() + 2 + metrics.ascent() + i * metrics.height()), lines[i]);
}

void drawMarker(QPainter& painter, int x, int y) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 0, 0));
    painter.drawRect(x - 2, y - 2, 5, 5);
}

}  // namespace

void DrawStations(QPainter& painter, const StationPlot& plot, QSize picture) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    if (plot.line) {
        painter.setPen(QPen(kMapLineColour, 2, Qt::SolidLine, Qt::FlatCap));
        painter.drawLine(plot.ownX, plot.ownY, plot.calledX, plot.calledY);
    }
    if (plot.calledPlaced) {
        painter.setPen(QPen(kMapForeground, 2));
        painter.setBrush(Qt::NoBrush);
        const QPoint centre(plot.calledX, plot.calledY);
        painter.drawEllipse(centre, kMapInnerCircle, kMapInnerCircle);
        painter.drawEllipse(centre, kMapOuterCircle, kMapOuterCircle);
    }
    if (plot.ownPlaced) {
        drawMarker(painter, plot.ownX, plot.ownY);
        drawLabel(painter, QStringLiteral(" Me "), QPoint(plot.ownX + 8, plot.ownY + 6), picture);
    }
    if (plot.calledPlaced) {
        drawMarker(painter, plot.calledX, plot.calledY);
        drawLabel(painter, plot.callCaption, QPoint(plot.calledX + kMapOuterCircle + 4, plot.calledY - 8), picture);
    }
    painter.restore();
}

QImage PlotMapPicture(const QImage& map, const StationPlot& plot) {
    QImage picture = map.convertToFormat(QImage::Format_RGB32);
    QPainter painter(&picture);
    DrawStations(painter, plot, picture.size());
    return picture;
}
