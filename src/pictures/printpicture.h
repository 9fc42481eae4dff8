#pragma once
// Printing a station picture: where on the page it goes for a chosen printed width, and the
// printing itself, shared by the print window, its preview and the command line.
#include "common/status.h"

#include <QImage>
#include <QPageLayout>
#include <QRectF>
#include <QSize>
#include <QSizeF>
#include <QString>

class QPagedPaintDevice;
class QPrinter;

// The printed width the print window offers, in whole centimetres, and where it starts.
inline constexpr int kPrintWidthMinCm = 2;
inline constexpr int kPrintWidthMaxCm = 18;
inline constexpr int kPrintWidthDefaultCm = 10;

// Where a picture of pictureSize pixels goes on a printable area of areaMm millimetres when it is
// printed widthCm centimetres wide: at the top, centred across, its aspect kept, made smaller
// only when it would not fit the area. In millimetres from the area's top left corner; empty for
// an empty picture or area.
QRectF PrintedPictureRect(QSizeF areaMm, QSize pictureSize, int widthCm);

// Prints the picture on one page of printer, widthCm wide (see PrintedPictureRect).
Status PrintPicture(QPrinter& printer, const QImage& picture, int widthCm);

// The page the print window shows and the PDF file gets: A4, portrait, 10 mm margins.
QPageLayout PrintPageLayout();

// The same onto a PDF file, on that page.
Status PrintPictureToPdf(const QString& pdfFile, const QImage& picture, int widthCm);
