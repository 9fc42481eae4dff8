#pragma once
// Writing the nickname list back to "nicknames.txt".
//
// The list is the one ReadNicknames made of the file, with the editor's changes applied to it.
// Every entry is written on its own line, in list order, so that reading the file again gives the
// same list: entries the user wrote by hand (on lines or separated by commas, quoted or not) come
// back unchanged and in their place.
#include "common/status.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

// The file's bytes for these entries: Windows-1252, each entry followed by CR LF. An entry that
// would not read back as itself when written plainly (it holds a comma or a line break, begins
// with a blank, a tab or a double quote, or ends with a blank or a tab) is written between double
// quotes. A quoted entry cannot hold a double quote, so in such an entry each double quote becomes
// an apostrophe. Empty entries are left out (reading skips them anyway). Characters that
// Windows-1252 lacks are written as "?".
QByteArray NicknameFileBytes(const QStringList& entries);

// Writes the entries to path in one step: the file holds either its old contents or the new ones,
// never a part. A failure says why; the old file is then unchanged.
Status SaveNicknames(const QString& path, const QStringList& entries);
