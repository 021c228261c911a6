#pragma once

#include <QString>
#include <QStringList>

#include "platform/StoredPaths.h"

// The application folder: $KEVRO_HOME when set, else the folder of the executable. Holds kevro.ini,
// odbc.ini, extract/, reports/, documentation/ and pictures/. Returned without a trailing separator.
QString AppPath();

// A volume is the root folder of a mounted file system; any folder may be scanned as one.
struct Volume {
    QString root;  // e.g. "/media/cdrom" or "/"
    QString label; // the file system's name, may be empty
    bool optical = false;
    QString device;      // e.g. "/dev/sr0"
    bool mounted = true; // false for an optical drive with no disc in it
};
// The volumes as they are now: optical drives first (an empty one under its mount point, or its device
// when it has none), then the file-system root, then the rest by path.
QList<Volume> Volumes();
// The optical drives (their devices) that no mounted volume holds, each under the mount point the
// file-system table (fstab's text) gives it, else under the device itself.
QList<Volume> EmptyOpticalDrives(const QStringList &drives, const QString &fstab, const QList<Volume> &mounted);
// True when the root is an optical drive with no disc in it.
bool IsEmptyDrive(const QString &root);

// The root of the volume a path lies on, separator included: the scanned volume's root for a path on
// it, "/" for any other path.
void SetScannedVolume(const QString &root);
QString ScannedVolume();
QString VolumeRootOf(const QString &path);
