#include "ArchiveFixtures.h"

#include "TestSupport.h"

#include <QDir>
#include <QFileInfo>

#include <archive.h>
#include <archive_entry.h>

#include <stdexcept>

namespace {
int writeToBuffer(archive *, void *client, const void *buf, size_t n)
{
    static_cast<QByteArray *>(client)->append(static_cast<const char *>(buf), static_cast<qsizetype>(n));
    return static_cast<int>(n);
}

la_ssize_t writeCallback(archive *a, void *client, const void *buf, size_t n)
{
    return writeToBuffer(a, client, buf, n);
}

QByteArray build(const QList<FixtureMember> &members, const char *format, const char *options,
                 const char *passphrase)
{
    QByteArray out;
    archive *a = archive_write_new();
    archive_write_set_format_by_name(a, format);
    archive_write_set_bytes_in_last_block(a, 1);
    if (options && archive_write_set_options(a, options) != ARCHIVE_OK)
        throw std::runtime_error(archive_error_string(a));
    if (passphrase)
        archive_write_set_passphrase(a, passphrase);
    archive_write_open(a, &out, nullptr, writeCallback, nullptr);
    for (const FixtureMember &m : members) {
        archive_entry *e = archive_entry_new();
        archive_entry_copy_pathname(e, m.name.constData());
        archive_entry_set_mtime(e, 1000000000, 0);
        switch (m.kind) {
        case FixtureMember::File:
            archive_entry_set_filetype(e, AE_IFREG);
            archive_entry_set_perm(e, 0644);
            archive_entry_set_size(e, m.data.size());
            break;
        case FixtureMember::Folder:
            archive_entry_set_filetype(e, AE_IFDIR);
            archive_entry_set_perm(e, 0755);
            break;
        case FixtureMember::Symlink:
            archive_entry_set_filetype(e, AE_IFLNK);
            archive_entry_set_perm(e, 0777);
            archive_entry_copy_symlink(e, m.target.constData());
            break;
        case FixtureMember::Fifo: // 7-Zip keeps these; ZIP has no way to say them
            archive_entry_set_filetype(e, AE_IFIFO);
            archive_entry_set_perm(e, 0644);
            break;
        case FixtureMember::Device:
            archive_entry_set_filetype(e, AE_IFCHR);
            archive_entry_set_perm(e, 0644);
            archive_entry_set_rdev(e, 259);
            break;
        }
        if (archive_write_header(a, e) < ARCHIVE_WARN)
            throw std::runtime_error(archive_error_string(a));
        if (m.kind == FixtureMember::File && !m.data.isEmpty())
            archive_write_data(a, m.data.constData(), static_cast<size_t>(m.data.size()));
        archive_entry_free(e);
    }
    archive_write_close(a);
    archive_write_free(a);
    return out;
}
} // namespace

QByteArray ArchiveBytes(const QList<FixtureMember> &members, const char *format)
{
    return build(members, format, nullptr, nullptr);
}

QByteArray DosArchiveBytes(const QList<FixtureMember> &members)
{
    QByteArray zip = ArchiveBytes(members);
    // The general-purpose flags of each local header and each central directory entry: bit 11 off.
    for (qsizetype at = 0; (at = zip.indexOf("PK", at)) >= 0; at += 2) {
        const QByteArray sig = zip.mid(at, 4);
        const qsizetype flags = sig == QByteArray("PK\x03\x04", 4) ? at + 6 : sig == QByteArray("PK\x01\x02", 4) ? at + 8 : -1;
        if (flags >= 0)
            zip[flags + 1] = char(zip[flags + 1] & ~0x08);
    }
    return zip;
}

QString WriteArchive(const QString &path, const QList<FixtureMember> &members, const char *format,
                     const char *options, const char *passphrase)
{
    return WriteTestFile(path, build(members, format, options, passphrase));
}

QString CorpusFolder()
{
    QString dir = qEnvironmentVariable("KEVRO_CORPUS");
    if (dir.isEmpty())
        dir = QStringLiteral(KEVRO_SOURCE_DIR "/../shared/corpus");
    return QFileInfo::exists(dir + QStringLiteral("/MANIFEST.tsv")) ? QDir(dir).canonicalPath() : QString();
}
