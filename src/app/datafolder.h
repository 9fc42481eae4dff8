#pragma once
// The default data folder that ships with the program, and the first-run copy of it.
#include <QString>

// The shipped default data folder: beside the executable in the build tree (share/Norvane) or in
// an installed tree (../share/pxcallsigns/Norvane). "" when neither exists.
QString DefaultDataFolder(const QString& applicationDir);

// When dataPath does not exist yet, copies the default folder there. A data folder that exists
// is never touched. Returns false with *error set when the copy failed.
bool SeedDataFolder(const QString& defaultFolder, const QString& dataPath, QString* error);
