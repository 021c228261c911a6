#pragma once

#include <QString>
#include <QStringList>

// The application folder: $KEVRO_HOME when set, else the folder of the executable. Holds kevro.ini,
// odbc.ini, extract/, reports/, documentation/ and pictures/. Returned without a trailing separator.
QString AppPath();

// A volume is the root folder of a mounted file system; any folder may be scanned as one.
struct Volume {
    QString root;  // e.g. "/media/cdrom" or "/"
    QString label; // the file system's name, may be empty
    bool optical = false;
};
// Mounted volumes: optical discs first, then the file-system root, then the rest by path.
QList<Volume> Volumes();

// The root of the volume a path lies on, separator included: the scanned volume's root for a path on
// it, "/" for any other path.
void SetScannedVolume(const QString &root);
QString ScannedVolume();
QString VolumeRootOf(const QString &path);

// Stored paths are upper case; the file they came from may not be. The scan records each folder it
// lists (its stored form, separator included, with its real path; "" for the process's current
// folder), and every access by a stored path asks RealPath for the file to open. A single file can be
// recorded too.
void RegisterRealPath(const QString &stored, const QString &real);
void RegisterRealFolder(const QString &storedFolder, const QString &realFolder);
void ClearRealPaths();
// The registered real path; else, in a registered folder, the entry whose name matches without
// regard to case (the last one in the folder's order, as the walk met them); else the path itself if
// it exists; else the path resolved folder by folder without regard to case; else the path unchanged.
QString RealPath(const QString &stored);
