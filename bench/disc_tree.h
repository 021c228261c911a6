#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>

// A disc-like tree for the scan benchmark, laid out once under one folder and reused while its marker
// names the current layout:
//   disc/      200,000 small files in 10,000 folders (the root and 9,999 below it, up to five deep),
//              names in ISO 9660 upper case, in mixed case with spaces, or in lower case, by folder;
//              the tails a master carries (mostly pictures, sound, video and documents, some pages and
//              libraries the scan does not sort, a few programs); a few hundred bytes each.
//   archives/  300 ZIPs in a few folders, some 3,000 members in all: text of 10 to 100 KB and
//              incompressible data, many in subfolders; some archives carry folder entries, some
//              store their members instead of deflating them.
// Everything comes from one fixed seed, so every run and every machine gets the same tree.
struct DiscTree {
    QString root;
    QString disc;
    QString archives;
    QStringList zips; // relative to archives/, in name order
    int files = 0;    // the files of disc/
    int folders = 0;  // the folders of disc/, its root included
};

// Makes the tree under root unless its marker says it is already there. A root that holds anything
// but an earlier tree of this benchmark is left alone: the result has an empty disc then, and why is
// on stderr.
DiscTree MakeDiscTree(const QString &root);

// The tree the benchmarks share: $KEVRO_BENCH_DISC, else bench-disc beside the build's programs.
DiscTree SharedDiscTree();

// Makes `folder` the application folder of the run: KEVRO_HOME points at it, it has its extract and
// reports folders, and the demo catalogue on SQLite under the data source KEVRO in its own odbc.ini (no
// data source of this machine's user or system counts). False, with why on stderr, when it cannot.
bool MakeAppFolder(const QString &folder);

// One walk of a volume (a folder or an image) as a session's first scan makes it: from empty lists and
// an empty extract folder, with the file system synced, only the walk itself timed. The lists and the
// extract folder are emptied again afterwards.
struct WalkRun {
    double ms = 0;
    int32_t walked = 0;
    qsizetype media = 0;
    qsizetype external = 0;
};
WalkRun FreshWalk(const QString &volume);
