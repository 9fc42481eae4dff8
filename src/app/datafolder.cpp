#include "app/datafolder.h"

#include "platform/system.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

QString DefaultDataFolder(const QString& applicationDir) {
    const QString name = QLatin1String(kDataFolderName);
    for (const QString& candidate : {applicationDir + QStringLiteral("/../share/pxcallsigns/") + name,
                                     applicationDir + QStringLiteral("/share/") + name}) {
        if (QFileInfo(candidate).isDir()) return QDir(candidate).absolutePath();
    }
    return {};
}

QList<IconFile> ProgramIconFiles(const QString& applicationDir, const QString& iconName) {
    for (const QString& theme : {applicationDir + QStringLiteral("/../share/icons/hicolor"),
                                 applicationDir + QStringLiteral("/icons/hicolor")}) {
        // Only the square bitmap sizes ("48x48"): not "scalable", nor the doubled "48x48@2".
        static const QRegularExpression kSquare(QStringLiteral("^([1-9][0-9]{0,3})x\\1$"));
        QList<IconFile> found;
        for (const QString& folder : QDir(theme).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            const QRegularExpressionMatch square = kSquare.match(folder);
            if (!square.hasMatch()) continue;
            const QString path = QDir(theme).absoluteFilePath(folder + QStringLiteral("/apps/") + iconName + QStringLiteral(".png"));
            if (QFileInfo(path).isFile()) found.append({square.captured(1).toInt(), QDir::cleanPath(path)});
        }
        if (found.isEmpty()) continue;
        std::sort(found.begin(), found.end(), [](const IconFile& a, const IconFile& b) { return a.size < b.size; });
        return found;
    }
    return {};
}

namespace {

bool makeLayout(const QString& folder) {
    bool ok = true;
    for (const char* sub : kDataFolderLayout) ok = QDir().mkpath(folder + u'/' + QLatin1String(sub)) && ok;
    return ok;
}

// The shipped map pictures that the folder's Maps lacks, by name. A map is shipped with the
// program, not made by the user: a data folder from an older release gets the maps of this one,
// and a map file the user already has, shipped or his own, is never touched.
bool addMissingMaps(const QString& defaultFolder, const QString& folder) {
    bool ok = true;
    const QDir shipped(defaultFolder + QStringLiteral("/Maps"));
    for (const QString& name : shipped.entryList(QDir::Files)) {
        const QString to = folder + QStringLiteral("/Maps/") + name;
        if (QFileInfo::exists(to)) continue;
        ok = QFile::copy(shipped.filePath(name), to) && ok;
        if (ok) QFile(to).setPermissions(QFile(to).permissions() | QFile::WriteOwner);
    }
    return ok;
}

}  // namespace

Status SeedDataFolder(const QString& defaultFolder, const QString& dataPath) {
    if (QFileInfo(dataPath).isDir())
        return makeLayout(dataPath) && (defaultFolder.isEmpty() || addMissingMaps(defaultFolder, dataPath))
                   ? Status::Ok()
                   : Status::Failed(QStringLiteral("Cannot complete the data folder ") + dataPath);
    if (QFileInfo::exists(dataPath) || defaultFolder.isEmpty()) return Status::Ok();
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
    if (ok) return Status::Ok();
    QDir(staging).removeRecursively();
    return Status::Failed(QStringLiteral("Cannot create the data folder ") + dataPath);
}

QString UserDataFolder() { return platform::GetAppDataFolder() + u'/' + QLatin1String(kDataFolderName); }

Status SeedUserDataFolder() {
    return SeedDataFolder(DefaultDataFolder(QCoreApplication::applicationDirPath()), UserDataFolder());
}
