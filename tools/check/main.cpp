// kevro-check: one whole job without screens, for automation and for checking masters in bulk.
//
//   kevro-check --client <CLIENT_ID> --catalogue <number> [--report html|text] [--content all|checked] <volume>
//
// It walks the volume or folder as the scan does with every kind of file asked for, expands the
// archives, judges the executables for the client, counts the files each review screen would list, and
// writes the report into the reports folder under the catalogue number, replacing a report of that name.
// The report's path goes to standard output; warnings go to standard error, one line each.

#include "catalogue/Connection.h"
#include "catalogue/Database.h"
#include "platform/DiscImage.h"
#include "platform/FileSystem.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/WorkLock.h"
#include "platform/VbError.h"
#include "reporting/JobRecord.h"
#include "reporting/JobResults.h"
#include "reporting/ScanReport.h"
#include "review/ExeEvaluation.h"
#include "review/ExecutableFormat.h"
#include "review/ViewerFiles.h"
#include "scan/ArchiveExpander.h"
#include "scan/MediaWalker.h"
#include "shell/MainMod.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QJsonDocument>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QScopeGuard>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <future>

#include <dirent.h>
#include <unistd.h>

namespace {

// The exit codes, one per kind of failure.
enum ExitCode : int {
    Done = 0,
    JobFailed = 1,
    BadArguments = 2,
    UnknownClient = 3,
    DatabaseUnreachable = 4,
    VolumeUnreadable = 5,
    ReportNotWritable = 6,
    AnotherProgramWorking = 7,
    NoDiscImage = 8,
    UnlicensedOnVolume = 10,
    UnknownOnVolume = 11,
    Cancelled = 130,
};

const char *const Usage =
    "usage: kevro-check --client <CLIENT_ID> --catalogue <number> [--report html|text] [--content all|checked]\n"
    "                   [--record FILE|-] [--fail-on unlicensed|unknown] "
    "<volume root, folder or disc image>\n";

const char *const Help =
    "Runs one whole KEVRO job without screens: the scan of a volume, a folder or a disc image file (ISO 9660,\n"
    "UDF, BIN/CUE; read without mounting it) with every kind of file (archives expanded), the judgement\n"
    "of its executables for the client, and the report, written into the reports\n"
    "folder of the application folder under the catalogue number. An existing report of that name is replaced.\n"
    "\n"
    "  --client <CLIENT_ID>     the client, by its code in the catalogue (the client's name comes from there)\n"
    "  --catalogue <number>     the title's catalogue number: it names the report and heads it\n"
    "  --report html|text       the report's format (default: DefaultReportType of kevro.ini, else html)\n"
    "  --content all|checked    list every file, or only the checked ones, which a job without screens has\n"
    "                           none of (default: DefaultReportContent of kevro.ini); kevro.ini is not changed\n"
    "  --record FILE|-          also write the job as one JSON document (its fields: schemas/job-record.schema.json):\n"
    "                           every file in the walk's order, every executable's verdict and the application\n"
    "                           that decided it, every file that holds a program whatever its name, the counts\n"
    "                           and the warnings; - writes it to standard output (the report's path then goes\n"
    "                           to standard error)\n"
    "  --fail-on unlicensed|unknown\n"
    "                           after the report (and the record) are written, exit 10 when an un-licensed\n"
    "                           application is on the volume (an .EXE, or a program under another name whose\n"
    "                           original file name the catalogue knows); with unknown, also 11 when an\n"
    "                           unknown .EXE is on the volume\n"
    "  -h, --help               this text\n"
    "\n"
    "The application folder is the program's folder, or $KEVRO_HOME when set. The report's path is printed\n"
    "on standard output. Warnings go to standard error, one line each naming the folder, archive or member\n"
    "and the reason (a damaged archive, a member not extracted, a folder that cannot be read, a program under\n"
    "another name than .EXE, told by its headers), and the job goes on. Links, pipes, sockets and devices on the volume are no files of the disc and are passed over.\n"
    "On a terminal the progress is shown on standard error; Ctrl+C cancels.\n"
    "\n"
    "Exit codes:\n"
    "  0    the report was written\n"
    "  1    the job failed on its way (a catalogue statement, the extract folder)\n"
    "  2    bad arguments\n"
    "  3    no client with that code in the catalogue\n"
    "  4    the catalogue database cannot be reached (or was lost during the job)\n"
    "  5    the volume or folder is missing or cannot be read\n"
    "  6    the report cannot be written\n"
    "  7    another KEVRO program (the desktop program or another kevro-check) is working in the same\n"
    "       application folder: they share its extract folder\n"
    "  8    the file named as the volume is no disc image\n"
    "  10   (with --fail-on) an un-licensed application is on the volume; the report was written\n"
    "  11   (with --fail-on unknown) an unknown program, and no un-licensed application, is on the volume\n"
    "  130  cancelled\n"
    "\n"
    "Checking a folder of masters, one report each:\n"
    "  for m in /srv/masters/*/; do kevro-check --client 4 --catalogue \"$(basename \"$m\")\" \"$m\"; done\n";

std::atomic<bool> g_interrupted{false};

void onInterrupt(int)
{
    g_interrupted = true;
}

// One line, whatever the driver's or the runtime's text held.
QString oneLine(const QString &text)
{
    QString t = text;
    t.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return t.simplified();
}

int fail(int code, const QString &message)
{
    std::fprintf(stderr, "kevro-check: %s\n", qPrintable(oneLine(message)));
    return code;
}

// A message box of the shared routines becomes lines on standard error, each naming what it is about
// and why, answered with its first button.
QStringList g_warnings; // every warning of the job, for its record

void warn(const QString &line)
{
    g_warnings.append(oneLine(line));
    std::fprintf(stderr, "kevro-check: warning: %s\n", qPrintable(g_warnings.last()));
}

int warnOnStderr(const MsgBoxRequest &box)
{
    const QStringList lines = box.detail.isEmpty() ? QStringList{box.prompt} : box.detail.split(QLatin1Char('\n'));
    for (const QString &line : lines)
        warn(line);
    return FirstButtonOf(box.style);
}

struct Arguments {
    QString client;
    QString catalogue;
    QString report;
    QString content;
    QString record;
    QString failOn;
    QString volume;
};

// Returns an empty text when the arguments are good, else what is wrong with them.
QString parse(const QStringList &args, Arguments &out, bool &help)
{
    help = false;
    for (int i = 1; i < args.size(); ++i) {
        const QString &a = args[i];
        if (a == QLatin1String("-h") || a == QLatin1String("--help")) {
            help = true;
            return QString();
        }
        QString *target = nullptr;
        QString name = a, value;
        bool inlineValue = false;
        if (a.startsWith(QLatin1String("--")) && a.contains(QLatin1Char('='))) {
            name = a.section(QLatin1Char('='), 0, 0);
            value = a.section(QLatin1Char('='), 1);
            inlineValue = true;
        }
        if (name == QLatin1String("--client"))
            target = &out.client;
        else if (name == QLatin1String("--catalogue"))
            target = &out.catalogue;
        else if (name == QLatin1String("--report"))
            target = &out.report;
        else if (name == QLatin1String("--content"))
            target = &out.content;
        else if (name == QLatin1String("--record"))
            target = &out.record;
        else if (name == QLatin1String("--fail-on"))
            target = &out.failOn;
        else if (a.startsWith(QLatin1Char('-')) && a != QLatin1String("-"))
            return QStringLiteral("unknown option %1").arg(a);
        if (!target) {
            if (!out.volume.isNull())
                return QStringLiteral("one volume or folder only");
            out.volume = a;
            continue;
        }
        if (!inlineValue) {
            if (i + 1 >= args.size())
                return QStringLiteral("%1 needs a value").arg(name);
            value = args[++i];
        }
        *target = value;
    }
    if (out.client.isEmpty())
        return QStringLiteral("--client is missing");
    if (out.catalogue.isEmpty())
        return QStringLiteral("--catalogue is missing");
    if (out.volume.isEmpty())
        return QStringLiteral("the volume or folder to check is missing");
    out.report = out.report.toLower();
    if (!out.report.isNull() && out.report != QLatin1String("html") && out.report != QLatin1String("text"))
        return QStringLiteral("--report is html or text");
    if (!out.failOn.isNull() && out.failOn != QLatin1String("unlicensed") && out.failOn != QLatin1String("unknown"))
        return QStringLiteral("--fail-on is unlicensed or unknown");
    if (!out.record.isNull() && out.record.isEmpty())
        return QStringLiteral("--record needs a file, or - for standard output");
    out.content = out.content.toLower();
    if (!out.content.isNull() && out.content != QLatin1String("all") && out.content != QLatin1String("checked"))
        return QStringLiteral("--content is all or checked");
    return QString();
}

// The client's name by its code, read as the main menu reads the clients. False when there is none.
bool findClient(Connection &connection, const QString &code, QString &name)
{
    Recordset rs;
    rs.Open(QStringLiteral("SELECT CLIENT_ID, CLIENT_NAME ") + QStringLiteral(" FROM KEVRO_CLIENTS") +
                QStringLiteral(" ORDER BY CLIENT_NAME ASC"),
            &connection, 3, 3);
    for (; !rs.Eof(); rs.MoveNext()) {
        if (NullToEmpty(rs.Fields(QStringLiteral("CLIENT_ID"))).toString() == code) {
            name = NullToEmpty(rs.Fields(QStringLiteral("CLIENT_NAME"))).toString();
            return true;
        }
    }
    return false;
}

bool readableFolder(const QString &path)
{
    const QFileInfo info(path);
    if (!info.isDir())
        return false;
    DIR *d = ::opendir(QFile::encodeName(path).constData());
    if (!d)
        return false;
    ::closedir(d);
    return true;
}

// Progress on a terminal: one line, rewritten in place, at most ten times a second.
class TerminalProgress final
{
public:
    explicit TerminalProgress(bool on) : m_on(on) {}
    ~TerminalProgress() { finish(); }
    void stage(const QString &text)
    {
        m_stage = text;
        show(true);
    }
    void files(int32_t n)
    {
        m_files = n;
        show(false);
    }
    void percent(int p)
    {
        m_percent = p;
        show(false);
    }
    void archive(const QString &path)
    {
        m_archive = path;
        show(false);
    }
    void finish()
    {
        if (m_on && m_shown)
            std::fputs("\r\033[K", stderr);
        m_shown = false;
    }

private:
    void show(bool now)
    {
        if (!m_on || (!now && m_clock.isValid() && m_clock.elapsed() < 100))
            return;
        m_clock.start();
        QString line = QStringLiteral("%1 %2 files, %3%").arg(m_stage).arg(m_files).arg(m_percent);
        if (!m_archive.isEmpty())
            line += QStringLiteral(", expanding ") + FileNameOnly(m_archive);
        std::fprintf(stderr, "\r\033[K%s", qPrintable(line.left(150)));
        std::fflush(stderr);
        m_shown = true;
    }
    bool m_on;
    bool m_shown = false;
    QElapsedTimer m_clock;
    QString m_stage;
    int32_t m_files = 0;
    int m_percent = 0;
    QString m_archive;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kevro-check"));
    ArchiveExpander::PrepareLocale();

    Arguments args;
    bool help = false;
    if (const QString wrong = parse(app.arguments(), args, help); !wrong.isEmpty()) {
        std::fprintf(stderr, "kevro-check: %s\n%s", qPrintable(wrong), Usage);
        return BadArguments;
    }
    if (help) {
        std::printf("%s\n%s", Usage, Help);
        return Done;
    }

    // The extract folder is shared with every KEVRO program of this application folder.
    WorkLock work;
    if (!work.Take())
        return fail(AnotherProgramWorking, QStringLiteral("another KEVRO program is working in %1; try again when "
                                                          "it has finished")
                                               .arg(AppPath()));

    const QString volume = QDir::cleanPath(QFileInfo(args.volume).absoluteFilePath());
    if (QFileInfo(volume).isFile()) {
        // A file is a volume when it is a disc image, told by its content.
        QString why;
        if (!DiscImage::Open(volume, &why))
            return fail(NoDiscImage, QStringLiteral("%1 is no disc image: %2").arg(args.volume, why));
    } else if (!readableFolder(volume)) {
        return fail(VolumeUnreadable, QStringLiteral("cannot read the volume or folder %1").arg(args.volume));
    }

    // Boxes of the shared routines become lines on standard error; the job goes on.
    SetMsgBoxPresenter(warnOnStderr);

    QString name;
    bool found = false;
    {
        Connection connection;
        try {
            connection.CursorLocation = 3;
            connection.Open(KevroConnectionString, QString(), QString(), -1);
        } catch (const VbError &e) {
            return fail(DatabaseUnreachable,
                        QStringLiteral("cannot reach the KEVRO catalogue database: %1").arg(e.description));
        }
        try {
            found = findClient(connection, args.client, name);
        } catch (const VbError &e) {
            return fail(DatabaseUnreachable, QStringLiteral("cannot read the clients: %1").arg(e.description));
        }
        ResumeNext([&] { connection.Close(); });
    }
    if (!found)
        return fail(UnknownClient, QStringLiteral("no client with the code %1 in the catalogue").arg(args.client));

    // The report's settings as the summary screen and the report writer read them.
    ReportFormat format = ReportFormat::Html;
    if (args.report.isNull()) {
        if (ReadIniKey(QStringLiteral("Reports"), QStringLiteral("DefaultReportType ")).left(4).toUpper() ==
            QLatin1String("TEXT"))
            format = ReportFormat::Text;
    } else if (args.report == QLatin1String("text")) {
        format = ReportFormat::Text;
    }
    const bool contentAll = args.content.isNull() ? ReportContentAll() : args.content == QLatin1String("all");

    // The job, as the main menu, the scan set-up and the scan begin it.
    gClientCode = args.client;
    gClientName = name;
    gCatalogueNumber = args.catalogue;
    FillExtensionList();
    ResetList(gCheckedItems);
    ResetList(gMediaFiles);
    ResetList(gExternalFiles);
    ResetExtractFolder();

    const QDateTime started = QDateTime::currentDateTime();
    TerminalProgress progress(::isatty(STDERR_FILENO) == 1);
    MediaWalker walker;
    std::signal(SIGINT, onInterrupt);
    std::signal(SIGTERM, onInterrupt);
    walker.setDisplay({
        {},
        [&](int32_t n) { progress.files(n); },
        [&](const QString &stage) { progress.stage(stage); },
        [&](int percent) { progress.percent(percent); },
        [&](const QString &archive) { progress.archive(archive); },
        {},
        {},
        [&] {
            if (g_interrupted && !walker.ScanCancelled())
                walker.Cancel();
        },
    });
    walker.setShowProgress(true);
    try {
        walker.SetDrive(volume);
        walker.ScanFiles();
    } catch (const VbError &e) {
        progress.finish();
        ResetExtractFolder();
        if (walker.StartFolderListed())
            return fail(JobFailed, QStringLiteral("the scan of %1 failed in the extract folder %2: %3")
                                       .arg(volume, ExtractFolder(), e.description));
        return fail(VolumeUnreadable, QStringLiteral("the scan of %1 failed: %2").arg(volume, e.description));
    }
    if (walker.ScanCancelled()) {
        progress.finish();
        ResetExtractFolder();
        return fail(Cancelled, QStringLiteral("cancelled; no report was written"));
    }

    // Programs under other names than ".EXE" are told by their headers: every file's first bytes are read
    // on a core of their own while the judgement and the report go on.
    const QList<ListedFile> listed = FilesInWalkOrder();
    std::atomic<bool> stopHeads{false};
    std::future<QList<qsizetype>> marked =
        std::async(std::launch::async, [&] { return FilesMarkedAsPrograms(1, &stopHeads); });
    // A job that ends early (a failure, Ctrl+C) does not wait for the heads of the whole disc.
    const auto endHeads = qScopeGuard([&] { stopHeads = true; });
    JobResults results;
    ExeEvaluation evaluation;
    QList<ProgramFile> programs;
    QList<NameVerdict> components;
    progress.stage(QStringLiteral("Judging the executables..."));
    // The catalogue was there at the start; a connection lost now ends the judgement, not the program,
    // so that the extract folder is still emptied.
    SetEndProcessHook([](int) {});
    try {
        evaluation = EvaluateExecutables(gMediaFiles, gClientCode);
        results = ResultsOfEvaluation(evaluation);
    } catch (const ProcessEnded &) {
        SetEndProcessHook(nullptr);
        progress.finish();
        ResetExtractFolder();
        return fail(DatabaseUnreachable, QStringLiteral("the catalogue database was lost during the job"));
    } catch (const VbError &e) {
        SetEndProcessHook(nullptr);
        progress.finish();
        ResetExtractFolder();
        return fail(JobFailed, QStringLiteral("the judgement of the executables failed: error %1, %2")
                                   .arg(e.number)
                                   .arg(e.description));
    }
    SetEndProcessHook(nullptr);
    if (g_interrupted) {
        progress.finish();
        ResetExtractFolder();
        return fail(Cancelled, QStringLiteral("cancelled; no report was written"));
    }
    // What each review screen's fill would count; nothing is checked without screens.
    results.video.total = QString::number(CountViewerFiles(ViewerKind::Video));
    results.audio.total = QString::number(CountViewerFiles(ViewerKind::Audio));
    results.images.total = QString::number(CountViewerFiles(ViewerKind::Image));
    results.text.total = QString::number(CountViewerFiles(ViewerKind::Text));
    results.external.total = QString::number(CountViewerFiles(ViewerKind::External));

    const QString path = ReportPath(gCatalogueNumber, format);
    progress.stage(QStringLiteral("Writing the report..."));
    try {
        if (!QFileInfo(ReportsFolder()).isDir())
            CreateFolder(ReportsFolder());
        WriteReportFile(path, format, results, contentAll);
    } catch (const VbError &e) {
        progress.finish();
        ResetExtractFolder();
        return fail(ReportNotWritable, QStringLiteral("cannot write the report %1: %2").arg(path, e.description));
    }
    // The programs the heads marked, their version information, and what the catalogue says of the names
    // it gives them.
    progress.stage(QStringLiteral("Looking at programs under other names..."));
    programs = ExaminePrograms(listed, marked.get());
    QStringList originalNames;
    for (const ProgramFile &p : programs)
        originalNames.append(p.originalFileName);
    try {
        components = JudgeNames(originalNames, gClientCode);
    } catch (const VbError &e) {
        warn(QStringLiteral("the programs' original names could not be judged: ") + e.description);
    }
    for (qsizetype i = 0; i < programs.size(); ++i) {
        const QString line = HiddenProgramLine(programs[i], components.value(i));
        if (!line.isEmpty())
            warn(line);
    }

    // The record of the whole job, for a plant's own systems.
    if (!args.record.isNull()) {
        JobRecordInput input;
        input.clientCode = gClientCode;
        input.clientName = gClientName;
        input.catalogueNumber = gCatalogueNumber;
        input.volume = volume;
        input.imageFormat = ScannedImage() ? ScannedImage()->Format() : QString();
        input.started = started;
        input.ended = QDateTime::currentDateTime();
        input.reportPath = path;
        input.evaluation = &evaluation;
        input.results = results;
        input.programs = programs;
        input.programComponents = components;
        input.archives = walker.ExpandedArchives();
        input.warnings = g_warnings;
        const QByteArray json = MakeJobRecord(input).toJson(QJsonDocument::Indented);
        if (args.record == QLatin1String("-")) {
            std::fwrite(json.constData(), 1, size_t(json.size()), stdout);
        } else {
            QFile out(args.record);
            if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate) || out.write(json) != json.size()) {
                progress.finish();
                ResetExtractFolder();
                return fail(ReportNotWritable, QStringLiteral("cannot write the record %1: %2").arg(args.record, out.errorString()));
            }
        }
    }
    // Nothing of the disc stays behind once the report stands.
    progress.finish();
    ResetExtractFolder();
    std::fprintf(args.record == QLatin1String("-") ? stderr : stdout, "%s\n", qPrintable(path));
    const bool hiddenUnlicensed =
        std::any_of(components.cbegin(), components.cend(), [](const NameVerdict &c) { return c.known && !c.licensed; });
    if (!args.failOn.isNull() && (!evaluation.unlicensed.isEmpty() || hiddenUnlicensed))
        return UnlicensedOnVolume;
    if (args.failOn == QLatin1String("unknown") && !evaluation.unknown.isEmpty())
        return UnknownOnVolume;
    return Done;
}
