#pragma once

#include <QString>

#include <functional>

// The two parts of a command line: the file (or address) to open, and the parameters behind it.
struct ShellCommand {
    QString file;
    QString parameters;
};
ShellCommand SplitShellCommand(const QString &commandLine);

// The folder a file part runs in when the caller names none: the text up to its last separator, the
// separator kept only for the root; the current folder when the file part has no separator.
QString DeriveWorkingFolder(const QString &file);

// The show states a caller hands on, as the original's shell call takes them.
enum ShowState : int { vbHide = 0, vbNormalFocus = 1, vbMinimizedFocus = 2, vbMaximizedFocus = 3, vbNormalNoFocus = 4 };
// The shell call's results: above ShellExecuteFailureLimit a success, below it these failures.
constexpr long ShellExecuteFileNotFound = 2;
constexpr long ShellExecuteNoAssociation = 31;
constexpr long ShellExecuteFailureLimit = 32;

// Opens a document, a folder or an address with the desktop's program for it. A file is never
// executed by this call: programs from a disc go to the desktop's opener like any other file.
// Returns a value above 32 on success, as the original's shell call does; below 32 a failure
// (file not found, no program associated). Falls back on starting the whole command line as a
// program of this station (never one on the scanned volume, on an optical disc or in the extract
// folder, nor a link to a program from there); a failure there raises error 53.
long ShellOpen(const QString &commandLine, int showState, const QString &workingFolder = QString());

// The launcher behind ShellOpen, replaced by tests to see what would be opened.
struct ShellExecuteRequest {
    QString file;
    QString parameters;
    QString workingFolder;
    int showState = 0;
};
using ShellExecuteLauncher = std::function<long(const ShellExecuteRequest &)>;
using ShellProgramLauncher = std::function<bool(const QString &commandLine, int showState)>;
ShellExecuteLauncher SetShellExecuteLauncher(ShellExecuteLauncher launcher);
ShellProgramLauncher SetShellProgramLauncher(ShellProgramLauncher launcher);
// How documents and addresses reach the desktop (the screens hand them to Qt's desktop services).
using DesktopOpener = std::function<bool(const QString &fileOrAddress)>;
void SetDesktopOpener(DesktopOpener opener);

// Opens a file with the program that the desktop associates with it; warns when there is none.
void OpenWithDefaultProgram(const QString &path);
// Opens the help index page of the application folder.
void ShowHelp();
