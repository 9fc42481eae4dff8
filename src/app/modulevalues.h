#pragma once
// The values the main window sets while it loads and every other window reads.
#include "ui/language.h"

#include <QByteArray>
#include <QString>
#include <cstdint>

struct ModuleValues {
    QString DataPath;          // roaming application data + "/Norvane", no trailing separator
    QString MyCall;            // line 1 of Pictaro's app.cfg
    double MyLat = 0;          // own position, decimal degrees, north and east positive
    double MyLon = 0;
    int16_t DistUnit = 1;      // 1 = miles, anything else kilometres
    int16_t ServiceNo = 2;     // 1 eHam, 2 QRZ, 3 QRZCQ, 4 Callook, 5 HamCall
    QString ServiceName;       // the service box's text
    QString CurrentCall;       // the call sign last shown
    double OtherLat = 0;       // position of the station on show; 0, 0 is unknown
    double OtherLon = 0;
    QString Language;          // picks the language file
    int16_t TwipsPerPixelX = 15;
    int16_t TwipsPerPixelY = 15;
    int32_t ScreenWidthTw = 0;
    int32_t ScreenHeightTw = 0;
    QString MenuFontName;
    float MenuFontSize = 0;
    LanguageTexts Texts;       // the user-interface texts of the current language
    QByteArray DownloadBuffer; // the bytes of the last completed download

    QString callFilePath() const { return DataPath + QStringLiteral("/Norvane-DB.db"); }
    QString nicknamesPath() const { return DataPath + QStringLiteral("/nicknames.txt"); }
};
