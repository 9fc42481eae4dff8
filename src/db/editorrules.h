#pragma once
// The rules of the call-sign file editor that need no window: caption placeholders, where a
// station picture goes.
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>

// The editor's picture area and the point a picture is centred on.
inline constexpr QRect kEditorPictureArea{193, 25, 326, 244};  // centred on 356, 147
inline constexpr QPoint kEditorPictureCentre{356, 147};

// A caption with its "???" replaced by the call. Without a call the placeholder takes one blank
// beside it along, so that no doubled, leading or trailing blank is left where the call would be.
QString ReplaceCall(const QString& text, const QString& call);

// Where the editor shows a station picture of this natural size: scaled to fill the picture area
// as far as its aspect allows (wide pictures to the area's width, tall ones to its height) and
// centred on the point 356, 147. An empty rectangle for an empty size.
QRect FitPicture(QSize natural);

