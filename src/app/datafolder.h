#pragma once
// The default data folder that ships with the program, and the first-run copy of it.

#include "common/status.h"
#include <QList>
#include <QString>

// The name of the data folder, in the user's roaming application data and in the shipped tree.
inline constexpr char kDataFolderName[] = "Norvane";

// The user's data folder: <roaming application data>/Norvane, no trailing separator.
QString UserDataFolder();

// The shipped default data folder, found from the executable's folder so that an installed tree
// may be moved: first an installed tree's (<prefix>/bin/../share/pxcallsigns/Norvane), else the
// build tree's (<build>/share/Norvane). An absolute path without "..", or "" when neither exists.
QString DefaultDataFolder(const QString& applicationDir);

// One bitmap size of the program's icon.
struct IconFile {
    int size = 0;  // width and height in pixels
    QString path;
};

// The bitmap sizes of the icon named iconName that ship with the program, found from the
// executable's folder as the data folder is: an installed tree's hicolor theme
// (<prefix>/bin/../share/icons/hicolor/NxN/apps/<iconName>.png), else the build tree's
// (<build>/icons/hicolor/...). Smallest first; none when neither holds one. Only names are read:
// no picture is opened.
QList<IconFile> ProgramIconFiles(const QString& applicationDir, const QString& iconName);

// The folders every data folder holds, even when empty (the picture cache starts empty, and an
// empty folder does not survive every way the default folder is copied).
inline constexpr const char* kDataFolderLayout[] = {"Maps", "images/qrzImages", "Languages"};

// When dataPath does not exist yet, copies the default folder there. The files of a data folder
// that exists are never touched; folders of the layout that it lacks are made, and shipped map
// pictures its Maps lacks are added. Fails with the
// message to show when the copy failed.
Status SeedDataFolder(const QString& defaultFolder, const QString& dataPath);

// The first run of either front end: seeds UserDataFolder() from the default folder beside the
// running executable. Needs a QCoreApplication.
Status SeedUserDataFolder();
