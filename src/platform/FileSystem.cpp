#include "platform/FileSystem.h"

#include "platform/VbError.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

namespace {
void makeWritable(const QString &path)
{
    QFile::setPermissions(path, QFile::permissions(path) | QFileDevice::WriteOwner | QFileDevice::ReadOwner |
                                    QFileDevice::ExeOwner);
}
} // namespace

void DeleteFolder(const QString &folder, bool force)
{
    const QFileInfo info(folder);
    if (!info.isDir() || info.isSymLink())
        RaiseVbError(VbErr::PathNotFound);
    if (force) {
        makeWritable(folder);
        QDirIterator it(folder, QDir::Dirs | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString dir = it.next();
            if (!QFileInfo(dir).isSymLink())
                makeWritable(dir);
        }
    }
    if (!QDir(folder).removeRecursively())
        RaiseVbError(VbErr::PermissionDenied);
}

void CreateFolder(const QString &folder)
{
    if (QFileInfo::exists(folder))
        RaiseVbError(VbErr::FileAlreadyExists);
    const QFileInfo info(folder);
    if (!info.dir().exists())
        RaiseVbError(VbErr::PathNotFound);
    if (!QDir().mkdir(folder))
        RaiseVbError(VbErr::PermissionDenied);
}

bool IsHiddenFile(const QString &path)
{
    if (path.isEmpty())
        RaiseVbError(VbErr::BadFileName);
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink())
        RaiseVbError(VbErr::FileNotFound);
    return info.fileName().startsWith(QLatin1Char('.'));
}
