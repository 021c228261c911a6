#include "platform/ShellOpen.h"

#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/VbError.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

namespace {
constexpr long SE_ERR_FNF = ShellExecuteFileNotFound;
constexpr long SE_ERR_NOASSOC = ShellExecuteNoAssociation;
constexpr long SE_OK = 42; // any value above the failure limit

bool isAddress(const QString &file)
{
    return file.contains(QLatin1String("://")) || file.startsWith(QLatin1String("mailto:"), Qt::CaseInsensitive);
}

bool openWithXdg(const QString &target)
{
    const QString xdg = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    return !xdg.isEmpty() && QProcess::startDetached(xdg, {target});
}

DesktopOpener &desktopOpener()
{
    static DesktopOpener opener = openWithXdg;
    return opener;
}

// True for a path on the volume under scan, on any optical disc, or below the extract folder: content
// from a disc, which is opened as a document and never started, whatever its execute bit says (an
// ISO 9660 mount gives every file that bit). Both the path as named and the file it leads to count, so
// a link on the disc to a program of the station is disc content too.
bool isDiscContent(const QString &path)
{
    QStringList roots{ScannedVolume(), AppPath() + QStringLiteral("/extract")}; // the shell's ExtractFolder()
    for (const Volume &v : Volumes()) {
        if (v.optical)
            roots << v.root;
    }
    const QFileInfo info(path);
    const QStringList places{QDir::cleanPath(info.absoluteFilePath()), info.canonicalFilePath()};
    for (QString root : roots) {
        if (root.isEmpty())
            continue;
        root = QDir::cleanPath(root);
        const QString canonicalRoot = QFileInfo(root).canonicalFilePath();
        for (const QString &r : {root, canonicalRoot}) {
            if (r.isEmpty())
                continue;
            if (r == QLatin1String("/"))
                return true;
            for (const QString &p : places) {
                if (!p.isEmpty() && (p.compare(r, Qt::CaseInsensitive) == 0 ||
                                     p.startsWith(r + QLatin1Char('/'), Qt::CaseInsensitive)))
                    return true;
            }
        }
    }
    return false;
}

long launchOnDesktop(const ShellExecuteRequest &r)
{
    if (r.file.isEmpty())
        return SE_ERR_FNF;
    if (isAddress(r.file))
        return desktopOpener()(r.file) ? SE_OK : SE_ERR_NOASSOC;
    const QString folder = r.workingFolder.isEmpty() ? QDir::currentPath() : r.workingFolder;
    const QFileInfo info(QDir(folder).absoluteFilePath(r.file));
    if (!info.exists())
        return SE_ERR_FNF;
    // Every file goes to the desktop's opener by its type; none is executed from here.
    return desktopOpener()(info.absoluteFilePath()) ? SE_OK : SE_ERR_NOASSOC;
}

// The fallback start of a command line: only a program of this station, found by its path or on the
// PATH, never a file of the scanned volume, of an optical disc or of the extract folder.
bool startProgram(const QString &commandLine, int)
{
    QStringList parts = QProcess::splitCommand(commandLine);
    if (parts.isEmpty())
        return false;
    const QString named = parts.takeFirst();
    const QString program = named.contains(QLatin1Char('/')) ? QFileInfo(named).absoluteFilePath()
                                                              : QStandardPaths::findExecutable(named);
    if (program.isEmpty() || !QFileInfo(program).isExecutable() || isDiscContent(program))
        return false;
    return QProcess::startDetached(program, parts);
}

ShellExecuteLauncher &executeLauncher()
{
    static ShellExecuteLauncher l = launchOnDesktop;
    return l;
}
ShellProgramLauncher &programLauncher()
{
    static ShellProgramLauncher l = startProgram;
    return l;
}
} // namespace

ShellExecuteLauncher SetShellExecuteLauncher(ShellExecuteLauncher launcher)
{
    auto old = executeLauncher();
    executeLauncher() = launcher ? std::move(launcher) : ShellExecuteLauncher(launchOnDesktop);
    return old;
}

ShellProgramLauncher SetShellProgramLauncher(ShellProgramLauncher launcher)
{
    auto old = programLauncher();
    programLauncher() = launcher ? std::move(launcher) : ShellProgramLauncher(startProgram);
    return old;
}

void SetDesktopOpener(DesktopOpener opener)
{
    desktopOpener() = opener ? std::move(opener) : DesktopOpener(openWithXdg);
}

ShellCommand SplitShellCommand(const QString &commandLine)
{
    QString text = commandLine;
    int fileEnd = -1; // characters in the file part
    const int q = text.startsWith(QLatin1Char('"')) ? text.indexOf(QLatin1Char('"'), 1) : -1;
    if (q > 0) {
        text.remove(QLatin1Char('"'));
        fileEnd = q - 1; // the closing quote's place, less the opening quote
    } else {
        fileEnd = text.indexOf(QLatin1Char(' '));
        if (fileEnd < 0)
            fileEnd = text.size();
    }
    ShellCommand c;
    c.file = text.left(fileEnd);
    QString rest = text.mid(fileEnd);
    while (rest.startsWith(QLatin1Char(' ')))
        rest.remove(0, 1);
    c.parameters = rest;
    return c;
}

QString DeriveWorkingFolder(const QString &file)
{
    const int slash = file.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return QDir::currentPath();
    return slash == 0 ? QStringLiteral("/") : file.left(slash);
}

long ShellOpen(const QString &commandLine, int showState, const QString &workingFolder)
{
    const ShellCommand c = SplitShellCommand(commandLine);
    const QString folder = workingFolder.isEmpty() ? DeriveWorkingFolder(c.file) : workingFolder;
    const long result = executeLauncher()({c.file, c.parameters, folder, showState});
    if (result >= ShellExecuteFailureLimit)
        return result;
    if (!programLauncher()(commandLine, showState))
        RaiseVbError(VbErr::FileNotFound);
    return SE_OK;
}

void OpenWithDefaultProgram(const QString &path)
{
    try {
        ShellOpen(QLatin1Char('"') + path + QLatin1Char('"'), vbNormalNoFocus);
    } catch (const VbError &) {
        MsgBox(QStringLiteral("No program is associated with this file-extension."), vbExclamation);
    }
}

void ShowHelp()
{
    try {
        OpenWithDefaultProgram(AppPath() + QStringLiteral("/documentation/help_index.htm"));
    } catch (const VbError &e) {
        MsgBox(QStringLiteral("Could not open help file, error: ") + QString::number(e.number), vbExclamation);
    }
}
