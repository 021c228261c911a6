#pragma once

#include <QString>

// A small disc laid out as a folder, to scan on a first start: files of every kind the scan sorts, an
// unknown kind, a hidden file, a ZIP with folders, a self-extracting EXE, and executables the demo
// catalogue knows (some licensed to a demo client, some not) beside one it does not. The folder is
// this program's own: laying it out again replaces what is in it, and nothing outside it; a link or a
// file in its place is refused. Returns "" or what went wrong.
QString LayOutDemoDisc(const QString &folder);

// Writes kevro.ini with the demo disc as the default device and HTML reports of everything, unless
// there is a kevro.ini already. Returns "" or what went wrong.
QString WriteDemoSettings(const QString &iniFile, const QString &demoDisc);
