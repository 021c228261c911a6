#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// Archives the tests build themselves with libarchive's writer, member by member.
struct FixtureMember {
    QByteArray name{};          // raw bytes of the member's name, as the archive stores them
    QByteArray data{};          // contents of a file
    enum Kind { File, Folder, Symlink, Fifo, Device } kind = File;
    QByteArray target{};        // what a link points at
};

// Writes a ZIP ("zip") or 7-Zip ("7zip") archive; options go to archive_write_set_options (for
// example "zip:encryption=zipcrypt"), with the passphrase when one is given. Returns the file's path.
QString WriteArchive(const QString &path, const QList<FixtureMember> &members, const char *format = "zip",
                     const char *options = nullptr, const char *passphrase = nullptr);
// The bytes of such an archive, for fixtures that glue a program stub in front or cut the tail off.
QByteArray ArchiveBytes(const QList<FixtureMember> &members, const char *format = "zip");
// A ZIP as an old DOS tool writes it: the names' bytes as given and no UTF-8 mark in its headers, so
// that a reader takes them for code page 437.
QByteArray DosArchiveBytes(const QList<FixtureMember> &members);

// The folder that holds the third-party corpus of hostile files, or "" when this machine has none.
QString CorpusFolder();
