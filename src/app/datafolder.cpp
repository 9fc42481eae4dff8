#include "app/datafolder.h"

#include "platform/system.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

QString DefaultDataFolder(const QString& applicationDir) {
    const QString name = QLatin1String(kDataFolderName);
    for (const QString& candidate : {applicationDir + QStringLiteral("/../share/pxcallsigns/") + name,
                                     applicationDir + QStringLiteral("/share/") + name}) {
        if (QFileInfo(candidate).isDir()) return QDir(candidate).absolutePath();
    }
    return {};
}

namespace {

bool makeLayout(const QString& folder) {
    bool ok = true;
    for (const char* sub : kDataFolderLayout) ok = QDir().mkpath(folder + u'/' + QLatin1String(sub)) && ok;
    return ok;
}

}  // namespace

bool SeedDataFolder(const QString& defaultFolder, const QString& dataPath, QString* error) {
    if (QFileInfo(dataPath).isDir()) {
        if (makeLayout(dataPath)) return true;
        *error = QStringLiteral("Cannot complete the data folder ") + dataPath;
        return false;
    }
    if (QFileInfo::exists(dataPath) || defaultFolder.isEmpty()) return true;
    // Copy into a fresh folder beside the target and rename it into place, so that an
    // interrupted first run leaves no half-filled data folder behind.
    const QString staging = dataPath + QStringLiteral(".seeding");
    QDir(staging).removeRecursively();
    const QDir source(defaultFolder);
    bool ok = QDir().mkpath(staging);
    QDirIterator it(defaultFolder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                    QDirIterator::Subdirectories);
    while (ok && it.hasNext()) {
        const QString from = it.next();
        const QString to = staging + u'/' + source.relativeFilePath(from);
        ok = it.fileInfo().isDir() ? QDir().mkpath(to) : QFile::copy(from, to);
        if (ok && !it.fileInfo().isDir()) QFile(to).setPermissions(QFile(to).permissions() | QFile::WriteOwner);
    }
    if (ok) ok = makeLayout(staging) && QDir().rename(staging, dataPath);
    if (!ok) {
        *error = QStringLiteral("Cannot create the data folder ") + dataPath;
        QDir(staging).removeRecursively();
    }
    return ok;
}

QString UserDataFolder() { return platform::GetAppDataFolder() + u'/' + QLatin1String(kDataFolderName); }

bool SeedUserDataFolder(QString* error) {
    return SeedDataFolder(DefaultDataFolder(QCoreApplication::applicationDirPath()), UserDataFolder(), error);
}
