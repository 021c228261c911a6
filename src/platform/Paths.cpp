#include "platform/Paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
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

namespace {
QStringList opticalDrives()
{
    QStringList drives;
    for (const QString &d : QDir(QStringLiteral("/sys/block")).entryList({QStringLiteral("sr*")}, QDir::AllEntries))
        drives.append(QStringLiteral("/dev/") + d);
    return drives;
}

QString fileSystemTable()
{
    QFile fstab(QStringLiteral("/etc/fstab"));
    return fstab.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(fstab.readAll()) : QString();
}

QString fstabMountPoint(const QString &drive, const QString &fstab);
} // namespace

QList<Volume> Volumes()
{
    QList<Volume> out;
    for (const QStorageInfo &s : QStorageInfo::mountedVolumes()) {
        if (!s.isValid() || !isDiskVolume(s))
            continue;
        if (std::any_of(out.begin(), out.end(), [&](const Volume &v) { return v.root == s.rootPath(); }))
            continue;
        out.append({s.rootPath(), s.name(), isOptical(s), QString::fromLocal8Bit(s.device()), true});
    }
    out += EmptyOpticalDrives(opticalDrives(), fileSystemTable(), out);
    if (std::none_of(out.begin(), out.end(), [](const Volume &v) { return v.root == QLatin1String("/"); }))
        out.append({QStringLiteral("/"), QString(), false, QString(), true});
    std::stable_sort(out.begin(), out.end(), [](const Volume &a, const Volume &b) {
        auto rank = [](const Volume &v) { return v.optical ? 0 : v.root == QLatin1String("/") ? 1 : 2; };
        if (rank(a) != rank(b))
            return rank(a) < rank(b);
        return a.root < b.root;
    });
    return out;
}

namespace {
// A field of the file-system table, its blanks and tabs written as octal escapes.
QString fstabField(const QString &field)
{
    QString out;
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] == QLatin1Char('\\') && i + 3 < field.size() && field.mid(i + 1, 3).toInt(nullptr, 8) > 0) {
            out.append(QChar(field.mid(i + 1, 3).toInt(nullptr, 8)));
            i += 3;
        } else {
            out.append(field[i]);
        }
    }
    return out;
}

// The mount point the file-system table gives a drive, or "" when it names none.
QString fstabMountPoint(const QString &drive, const QString &fstab)
{
    for (const QString &line : fstab.split(QLatin1Char('\n'))) {
        const QStringList f = line.simplified().split(QLatin1Char(' '));
        if (f.size() < 2 || f[0].startsWith(QLatin1Char('#')))
            continue;
        const QString source = fstabField(f[0]);
        // Only a path is resolved: "proc" or "UUID=..." name no file of the current folder.
        const QString canonical = source.startsWith(QLatin1Char('/')) ? QFileInfo(source).canonicalFilePath() : QString();
        if (source == drive || (!canonical.isEmpty() && canonical == drive))
            return fstabField(f[1]);
    }
    return QString();
}
} // namespace

QList<Volume> EmptyOpticalDrives(const QStringList &drives, const QString &fstab, const QList<Volume> &mounted)
{
    QList<Volume> out;
    for (const QString &drive : drives) {
        if (std::any_of(mounted.begin(), mounted.end(), [&](const Volume &v) { return v.device == drive; }))
            continue;
        QString root = fstabMountPoint(drive, fstab);
        if (root.isEmpty())
            root = drive;
        if (std::none_of(mounted.begin(), mounted.end(), [&](const Volume &v) { return v.root == root; }))
            out.append({root, QStringLiteral("no disc"), true, drive, false});
    }
    return out;
}

bool IsEmptyDrive(const QString &root)
{
    QString r = root;
    if (r.size() > 1 && r.endsWith(QLatin1Char('/')))
        r.chop(1);
    if (r.isEmpty())
        return false;
    const QList<Volume> all = Volumes();
    if (std::any_of(all.begin(), all.end(), [&](const Volume &v) { return v.mounted && v.root == r; }))
        return false;
    // A drive's own mount point with nothing mounted on it, also while its disc is mounted elsewhere.
    const QString table = fileSystemTable();
    const QStringList drives = opticalDrives();
    return std::any_of(drives.begin(), drives.end(), [&](const QString &d) { return fstabMountPoint(d, table) == r; }) ||
           std::any_of(all.begin(), all.end(), [&](const Volume &v) { return !v.mounted && v.root == r; });
}

namespace {
QString &scannedVolume()
{
    static QString root;
    return root;
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
