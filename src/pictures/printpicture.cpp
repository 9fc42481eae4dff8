#include "pictures/printpicture.h"

#include <QPainter>
#include <QPrinter>
#include <algorithm>

QRectF PrintedPictureRect(QSizeF areaMm, QSize pictureSize, int widthCm) {
    if (pictureSize.isEmpty() || areaMm.isEmpty() || widthCm <= 0) return {};
    const double aspect = double(pictureSize.height()) / pictureSize.width();
    double width = widthCm * 10.0;
    width = std::min(width, areaMm.width());
    width = std::min(width, areaMm.height() / aspect);
    return QRectF((areaMm.width() - width) / 2, 0, width, width * aspect);
}

Status PrintPicture(QPrinter& printer, const QImage& picture, int widthCm) {
    QPainter painter;
    if (!painter.begin(&printer))
        return Status::Failed(QStringLiteral("Cannot print to ") +
                              (printer.outputFileName().isEmpty() ? printer.printerName() : printer.outputFileName()));
    // The painter's origin is the printable area's top left corner, in device pixels.
    const QRectF area = printer.pageLayout().paintRect(QPageLayout::Millimeter);
    const QRectF mm = PrintedPictureRect(area.size(), picture.size(), widthCm);
    const double pixelsPerMm = printer.resolution() / 25.4;
    const QRectF target(mm.x() * pixelsPerMm, mm.y() * pixelsPerMm, mm.width() * pixelsPerMm, mm.height() * pixelsPerMm);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(target, picture);
    if (!painter.end()) return Status::Failed(QStringLiteral("The printer did not take the page"));
    return Status::Ok();
}

QPageLayout PrintPageLayout() {
    return QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(10, 10, 10, 10), QPageLayout::Millimeter);
}

Status PrintPictureToPdf(const QString& pdfFile, const QImage& picture, int widthCm) {
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(pdfFile);
    printer.setPageLayout(PrintPageLayout());
    return PrintPicture(printer, picture, widthCm);
}
