#pragma once
// The steps of loading the main window that need no window: each is a plain function so that
// it can be tested on its own.
#include <QString>
#include <QStringList>
#include <optional>

// Files of dataPath/Maps whose name, without its last four characters, ends in "Map" (exactly
// so cased); whole names, extension included, in name order.
QStringList MapCatalogue(const QString& dataPath);

// The items of the nickname list: separated by commas or line ends, blanks around an item
// dropped, a quoted item taken without its quotes, empty items skipped. nullopt when the file
// cannot be opened.
std::optional<QStringList> ReadNicknames(const QString& path);
QStringList ParseNicknames(const QString& text);

// Where Pictaro's app.cfg is to be read, decided as the program always has: the saved install
// folder when Pictaro.exe is there; else the folder of the running Pictaro.exe when that holds
// app.cfg (then `store` is true: it is to be saved); else failure with the message to show.
struct PictaroFolder {
    QString folder;   // ends in a separator
    bool store = false;
    QString failure;  // "" on success
};
PictaroFolder ResolvePictaroFolder(const QString& installSetting, QString (*findProgPath)(const QString&));

// Own position from the call-sign file's record of myCall when both saved values are 0.
struct Position {
    double lat = 0;
    double lon = 0;
};
Position OwnPosition(double savedLat, double savedLon, const QString& myCall, const QString& callFilePath);
