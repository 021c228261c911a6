#include "platform/Paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QStorageInfo>

#include <algorithm>

QString AppPath()
{
    QString home = qEnvironmentVariable("KEVRO_HOME");
    if (home.isEmpty())
        home = QCoreApplication::instance() ? QCoreApplication::applicationDirPath() : QDir::currentPath();
    home = QDir::cleanPath(QDir(home).absolutePath());
    if (home.size() > 1 && home.endsWith(QLatin1Char('/')))
        home.chop(1);
    return home;
}

namespace {
bool isOptical(const QStorageInfo &s)
{
    const QByteArray type = s.fileSystemType().toLower();
    const QByteArray device = s.device();
    return type == "iso9660" || type == "udf" || device.startsWith("/dev/sr") || device.startsWith("/dev/cdrom");
}

bool isDiskVolume(const QStorageInfo &s)
{
    if (s.rootPath() == QLatin1String("/"))
        return true;
    if (!QFileInfo(s.rootPath()).isDir())
        return false; // files bound into a container
    const QByteArray type = s.fileSystemType().toLower();
    static const QList<QByteArray> pseudo{"tmpfs", "devtmpfs", "proc", "sysfs", "devpts", "cgroup", "cgroup2",
                                          "mqueue", "overlay", "squashfs", "autofs", "binfmt_misc", "tracefs",
                                          "debugfs", "securityfs", "pstore", "bpf", "fusectl", "configfs",
                                          "hugetlbfs", "nsfs", "ramfs", "efivarfs", "fuse.portal"};
    if (pseudo.contains(type))
        return false;
    return s.device().startsWith("/dev/") || isOptical(s);
}
} // namespace

QList<Volume> Volumes()
{
    QList<Volume> out;
    for (const QStorageInfo &s : QStorageInfo::mountedVolumes()) {
        if (!s.isValid() || !isDiskVolume(s))
            continue;
        if (std::any_of(out.begin(), out.end(), [&](const Volume &v) { return v.root == s.rootPath(); }))
            continue;
        out.append({s.rootPath(), s.name(), isOptical(s)});
    }
    if (std::none_of(out.begin(), out.end(), [](const Volume &v) { return v.root == QLatin1String("/"); }))
        out.append({QStringLiteral("/"), QString(), false});
    std::stable_sort(out.begin(), out.end(), [](const Volume &a, const Volume &b) {
        auto rank = [](const Volume &v) { return v.optical ? 0 : v.root == QLatin1String("/") ? 1 : 2; };
        if (rank(a) != rank(b))
            return rank(a) < rank(b);
        return a.root < b.root;
    });
    return out;
}

namespace {
QString &scannedVolume()
{
    static QString root;
    return root;
}
QHash<QString, QString> &realPaths()
{
    static QHash<QString, QString> map;
    return map;
}
// Stored folder (separator included) to real folder, as the walk listed them.
QHash<QString, QString> &realFolders()
{
    static QHash<QString, QString> map;
    return map;
}
// A registered folder's entries by their upper-case names, read when first asked for.
QHash<QString, QHash<QString, QString>> &folderEntries()
{
    static QHash<QString, QHash<QString, QString>> map;
    return map;
}

const QHash<QString, QString> &entriesOf(const QString &realFolder)
{
    auto it = folderEntries().find(realFolder);
    if (it == folderEntries().end()) {
        QHash<QString, QString> byUpper;
        QDir dir(realFolder.isEmpty() ? QDir::currentPath() : realFolder);
        for (const QString &name : dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                                 QDir::NoDotAndDotDot, QDir::Unsorted))
            byUpper.insert(name.toUpper(), name);
        it = folderEntries().insert(realFolder, byUpper);
    }
    return *it;
}
} // namespace

void SetScannedVolume(const QString &root)
{
    scannedVolume() = root;
}

QString ScannedVolume()
{
    return scannedVolume();
}

QString VolumeRootOf(const QString &path)
{
    QString root = scannedVolume();
    if (!root.isEmpty()) {
        if (!root.endsWith(QLatin1Char('/')))
            root += QLatin1Char('/');
        if (path.startsWith(root, Qt::CaseInsensitive) || path.compare(root.chopped(1), Qt::CaseInsensitive) == 0)
            return root;
    }
    return QStringLiteral("/");
}

void RegisterRealPath(const QString &stored, const QString &real)
{
    realPaths().insert(stored, real);
}

void RegisterRealFolder(const QString &storedFolder, const QString &realFolder)
{
    realFolders().insert(storedFolder, realFolder);
}

void ClearRealPaths()
{
    realPaths().clear();
    realFolders().clear();
    folderEntries().clear();
}

QString RealPath(const QString &stored)
{
    const auto it = realPaths().constFind(stored);
    if (it != realPaths().constEnd())
        return *it;
    const qsizetype slash = stored.lastIndexOf(QLatin1Char('/'));
    const auto folder = realFolders().constFind(stored.left(slash + 1));
    if (folder != realFolders().constEnd()) {
        const QHash<QString, QString> &entries = entriesOf(*folder);
        const auto entry = entries.constFind(stored.mid(slash + 1));
        if (entry != entries.constEnd())
            return (folder->isEmpty() ? QDir::currentPath() + QLatin1Char('/') : *folder) + *entry;
    }
    if (stored.isEmpty() || QFileInfo::exists(stored) || !stored.startsWith(QLatin1Char('/')))
        return stored;
    // Resolve one name at a time, taking the first entry whose name matches without regard to case.
    QString current = QStringLiteral("/");
    const QStringList parts = stored.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    for (const QString &part : parts) {
        const QString exact = QDir(current).filePath(part);
        if (QFileInfo::exists(exact)) {
            current = exact;
            continue;
        }
        const QStringList entries =
            QDir(current).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        auto match = std::find_if(entries.begin(), entries.end(),
                                  [&](const QString &e) { return e.compare(part, Qt::CaseInsensitive) == 0; });
        if (match == entries.end())
            return stored;
        current = QDir(current).filePath(*match);
    }
    return current;
}
