#include "reporting/ScanReport.h"

#include "catalogue/Connection.h"
#include "platform/FileSystem.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "shell/GridOrder.h"
#include "shell/MainMod.h"

#include <QByteArray>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace {

// The number the runtime gives a failed file operation.
long errorNumberOf(int err)
{
    switch (err) {
    case EACCES:
    case EPERM:
    case EROFS:
    case ETXTBSY:
        return VbErr::PermissionDenied;
    case ENOENT:
    case ENOTDIR:
        return VbErr::PathNotFound;
    case ENOSPC:
    case EFBIG:
    case EDQUOT:
        return VbErr::DiskFull;
    case EIO:
        return VbErr::DeviceIOError;
    default:
        return VbErr::PathFileAccess;
    }
}

// The open report: lines go out in blocks, so a failure leaves every block written before it.
class ReportStream final
{
public:
    explicit ReportStream(const QString &path)
    {
        m_fd = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        if (m_fd < 0)
            RaiseVbError(errorNumberOf(errno));
    }
    ~ReportStream()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    ReportStream(const ReportStream &) = delete;
    ReportStream &operator=(const ReportStream &) = delete;

    void WriteLine(const QString &text)
    {
        m_buffer += text.toUtf8();
        m_buffer += "\r\n";
        if (m_buffer.size() >= BlockSize)
            flush();
    }
    void Close()
    {
        flush();
        const int fd = m_fd;
        m_fd = -1;
        if (::close(fd) != 0)
            RaiseVbError(errorNumberOf(errno));
    }

private:
    static constexpr qsizetype BlockSize = 64 * 1024;
    void flush()
    {
        const char *p = m_buffer.constData();
        qsizetype left = m_buffer.size();
        while (left > 0) {
            const ssize_t n = ::write(m_fd, p, size_t(left));
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0) {
                const int err = n < 0 ? errno : ENOSPC;
                m_buffer.remove(0, m_buffer.size() - left);
                RaiseVbError(errorNumberOf(err));
            }
            p += n;
            left -= n;
        }
        m_buffer.clear();
    }
    int m_fd = -1;
    QByteArray m_buffer;
};

// The words of one file block.
struct FileBlock {
    const char *banner;
    const char *heading;
    const char *ruler;
    const char *totalWords;
    const char *checkedWords;
    const char *allHtml;
    const char *allPlain;
    const char *checkedHtml;
    const char *checkedPlain;
    const char *kind;
    bool (*listed)(const QString &path); // nullptr: the external list, every element that is not empty
    const JobResults::KindCounts JobResults::*counts;
    bool external;
};

const FileBlock FileBlocks[] = {
    {"<B><FONT color='FFFFFF'>VIDEO RESULTS</FONT></B><BR>", "VIDEO RESULTS", "-------------",
     "Total Video Files - ", "Video Files Checked - ", "<I>List of All Video Files:</I> <BR>",
     "List of All Video Files:", "<I>List of Checked Video Files:</I> <BR>", "List of Checked Video Files:",
     "Video", IsVideoFile, &JobResults::video, false},
    {"<B><FONT color='FFFFFF'>AUDIO RESULTS</FONT></B><BR>", "AUDIO RESULTS", "-------------",
     "Total Audio Files - ", "Audio Files Checked - ", "<I>List of All Audio Files:</I> <BR>",
     "List of All Audio Files:", "<I>List of Checked Audio Files:</I><BR>", "List of Checked Audio Files:",
     "Audio", IsAudioFile, &JobResults::audio, false},
    {"<B><FONT color='FFFFFF'>IMAGE RESULTS</FONT></B><BR>", "IMAGE RESULTS", "-------------",
     "Total Image Files - ", "Image Files Checked - ", "<I>List of All Image Files:</I> <BR>",
     "List of All Image Files:", "<I>List of Checked Image Files:</I><BR>", "List of Checked Image Files:",
     "Image", IsImageFile, &JobResults::images, false},
    {"<B><FONT color='FFFFFF'>TEXT RESULTS</FONT></B><BR>", "TEXT RESULTS", "------------",
     "Total Text Files - ", "Text Files Checked - ", "<I>List of All Text Files:</I> <BR>",
     "List of All Text Files:", "<I>List of Checked Text Files:</I><BR>", "List of Checked Text Files:", "Text",
     IsTextFile, &JobResults::text, false},
    {"<B><FONT color='FFFFFF'>EXTERNAL FILE RESULTS</FONT></B><BR>", "EXTERNAL FILE RESULTS",
     "---------------------", "Total External Files - ", "External Files Checked - ",
     "<I>List of All External Files:</I> <BR>", "List of All External Files:",
     "<I>List of Checked External Files:</I><BR>", "List of Checked External Files:", "External", nullptr,
     &JobResults::external, true},
};

QString L(const char *text)
{
    return QString::fromLatin1(text);
}

class ReportWriter final
{
public:
    ReportWriter(ReportStream &stream, ReportFormat format, const JobResults &results, bool contentAll)
        : m_out(stream), m_html(format == ReportFormat::Html), m_results(results), m_contentAll(contentAll),
          m_title(ReportTitle(format))
    {
    }

    void write()
    {
        header();
        applications();
        bool first = true;
        for (const FileBlock &block : FileBlocks) {
            // The application block's last line already parts it from the video block.
            if (!first)
                m_out.WriteLine(m_html ? QStringLiteral("<BR>") : QString());
            first = false;
            fileBlock(block);
        }
    }

private:
    void header()
    {
        if (m_html) {
            m_out.WriteLine(QStringLiteral("<html>"));
            m_out.WriteLine(QStringLiteral("<head>"));
            m_out.WriteLine(QStringLiteral("<body text='#000000' bgcolor='#FFFFFF' link='#0000EE' vlink='#551A8B' "
                                           "alink='#0000EE' background='backdrop.jpg'>"));
            m_out.WriteLine(QStringLiteral("<font size=2 face=arial>"));
            m_out.WriteLine(
                QStringLiteral("<table width='90%' border=0 cellpadding='3' cellspacing=2 align='center'>"));
            m_out.WriteLine(QStringLiteral("<TR>"));
            m_out.WriteLine(QStringLiteral("<IMG src='htmlicon.jpg'> <BR>"));
            m_out.WriteLine(QStringLiteral("<B><FONT color='#000000' face=arial size=3>") + m_title +
                            QStringLiteral("</FONT></B>"));
            m_out.WriteLine(QStringLiteral("<BR><B><FONT face=arial size=2>Catalogue Code: ") + gCatalogueNumber +
                            QStringLiteral(" Client: ") + gClientName + QStringLiteral("</FONT></B><BR>"));
            m_out.WriteLine(QStringLiteral("<hr noshade color='000000'>"));
            m_out.WriteLine(QStringLiteral("</TR>"));
            m_out.WriteLine(QStringLiteral("<TR>"));
            m_out.WriteLine(QStringLiteral("<FONT size=1>") + NowText() + QStringLiteral("</FONT><BR><BR>"));
            m_out.WriteLine(QStringLiteral("</TR>"));
        } else {
            m_out.WriteLine(RulerFor(m_title, QStringLiteral("+")));
            m_out.WriteLine(m_title);
            m_out.WriteLine(RulerFor(m_title, QStringLiteral("+")));
            m_out.WriteLine(QStringLiteral("Catalogue Number: ") + gCatalogueNumber + QStringLiteral(" Client: ") +
                            gClientName);
            m_out.WriteLine(QString());
            m_out.WriteLine(NowText());
        }
    }

    void applications()
    {
        const JobResults &r = m_results;
        if (m_html) {
            m_out.WriteLine(QStringLiteral("<FONT size=2 face=arial>"));
            m_out.WriteLine(QStringLiteral("<TR BGCOLOR='003399'>"));
            m_out.WriteLine(QStringLiteral("<B><FONT color='#FFFFFF'>APPLICATION RESULTS</FONT></B><BR>"));
            m_out.WriteLine(QStringLiteral("</TR>"));
            m_out.WriteLine(QStringLiteral("<B><FONT color='#FF0000'>") + r.unlicensedCaption +
                            QStringLiteral("</FONT></B><BR>"));
        } else {
            m_out.WriteLine(QStringLiteral("APPLICATION RESULTS"));
            m_out.WriteLine(QStringLiteral("-------------------"));
            m_out.WriteLine(r.unlicensedCaption);
        }
        applicationList(r.unlicensedApplications);
        if (m_html) {
            m_out.WriteLine(QStringLiteral("<B><BR><FONT color='#0000FF'>") + r.licensedCaption +
                            QStringLiteral("</FONT></B><BR>"));
        } else {
            m_out.WriteLine(QString());
            m_out.WriteLine(r.licensedCaption);
        }
        applicationList(r.licensedApplications);
        if (m_html) {
            m_out.WriteLine(QStringLiteral("<BR><B>") + r.unknownCaption + QStringLiteral("</B><BR>"));
        } else {
            m_out.WriteLine(QString());
            m_out.WriteLine(r.unknownCaption);
        }
        for (const JobResults::UnknownFile &f : r.unknownFiles)
            m_out.WriteLine(ChangePathIfCompressed(f.path) + QStringLiteral(" (") + f.size + QLatin1Char(')') +
                            lineBreak());
        m_out.WriteLine(m_html ? QStringLiteral("<BR>") : QString());
    }

    void applicationList(const QStringList &names)
    {
        for (const QString &name : names)
            m_out.WriteLine(name + lineBreak());
    }

    void fileBlock(const FileBlock &b)
    {
        const JobResults::KindCounts &counts = m_results.*(b.counts);
        if (m_html) {
            m_out.WriteLine(QStringLiteral("<TR BGCOLOR='003399'>"));
            m_out.WriteLine(L(b.banner));
            m_out.WriteLine(QStringLiteral("</TR>"));
        } else {
            m_out.WriteLine(L(b.heading));
            m_out.WriteLine(L(b.ruler));
        }
        m_out.WriteLine(L(b.totalWords) + counts.total + lineBreak());
        m_out.WriteLine(L(b.checkedWords) + counts.checked + lineBreak());

        const QStringList &list = b.external ? gExternalFiles : gMediaFiles;
        if (!ListIsEmpty(list) && m_contentAll) {
            subHeading(b.allHtml, b.allPlain);
            Occurrences occurrence;
            for (const QString &path : list) {
                const bool listed = b.external ? !path.isEmpty() : b.listed(path);
                // Each entry's own file, also where two entries share a path.
                const int n = occurrence(path);
                if (listed)
                    m_out.WriteLine(path + QStringLiteral(" (") + FileSizeText(path, n) +
                                    (m_html ? QStringLiteral(")<BR>") : QStringLiteral(")")));
            }
        }
        if (LeadingNumber(counts.checked) > 0) {
            subHeading(b.checkedHtml, b.checkedPlain);
            WriteCheckedItems(L(b.kind));
        }
    }

    void subHeading(const char *html, const char *plain)
    {
        if (m_html) {
            m_out.WriteLine(QStringLiteral("<BR>"));
            m_out.WriteLine(L(html));
        } else {
            m_out.WriteLine(QString());
            m_out.WriteLine(L(plain));
        }
    }

    void WriteCheckedItems(const QString &kind)
    {
        if (ListIsEmpty(gCheckedItems))
            return;
        for (const CheckedItem &item : gCheckedItems) {
            if (item.kind == kind)
                m_out.WriteLine(ChangePathIfCompressed(item.text) + lineBreak());
        }
    }

    QString lineBreak() const { return m_html ? QStringLiteral("<BR>") : QString(); }

    ReportStream &m_out;
    const bool m_html;
    const JobResults &m_results;
    const bool m_contentAll;
    const QString m_title;
};

} // namespace

QString ReportsFolder()
{
    return AppPath() + QStringLiteral("/reports");
}

QString ReportPath(const QString &catalogueNumber, ReportFormat format)
{
    const QString name =
        catalogueNumber + (format == ReportFormat::Html ? QStringLiteral(".html") : QStringLiteral(".txt"));
    return ReportsFolder() + QLatin1Char('/') + ReplaceIllegalFileChars(name);
}

QString ReportTitle(ReportFormat format)
{
    if (format == ReportFormat::Html)
        return QStringLiteral("Full Scan Report");
    return QStringLiteral("KEVRO v%1.%2%3 Full Scan Report")
        .arg(KEVRO_VERSION_MAJOR)
        .arg(KEVRO_VERSION_MINOR)
        .arg(KEVRO_VERSION_PATCH);
}

bool ReportContentAll()
{
    return ReadIniKey(QStringLiteral("Reports"), QStringLiteral("DefaultReportContent ")).left(3).toUpper() ==
           QLatin1String("ALL");
}

QString ChangePathIfCompressed(const QString &path)
{
    // The stored form of the application folder and "/EXTRACT", compared exactly.
    const QString prefix = StoredExtractFolder();
    if (path.left(prefix.size()) == prefix)
        return QStringLiteral("Archive file: ") + path.mid(prefix.size());
    return path;
}

QString RulerFor(const QString &text, const QString &ch)
{
    QString ruler;
    for (qsizetype i = 0; i < text.size(); ++i)
        ruler += ch;
    return ruler;
}

void WriteReportFile(const QString &path, ReportFormat format, const JobResults &results, bool contentAll)
{
    ReportStream stream(path);
    ReportWriter(stream, format, results, contentAll).write();
    stream.Close();
}

void WriteReport(const QString &path, ReportFormat format, const JobResultsSource &results)
{
    try {
        const bool contentAll = ReportContentAll();
        WriteReportFile(path, format, results(), contentAll);
        OpenWithDefaultProgram(path);
    } catch (const VbError &e) {
        // No blank before "occured" in this one.
        MsgBox(QStringLiteral("Error ") + QString::number(e.number) +
                   QStringLiteral("occured while saving report.  Can not display report."),
               vbCritical);
    }
}

void SaveReport(ReportFormat format, const JobResultsSource &results)
{
    try {
        const QString folder = ReportsFolder();
        const QString path = ReportPath(gCatalogueNumber, format);
        if (!QFileInfo(folder).isDir())
            CreateFolder(folder);
        const QFileInfo file(path);
        if (file.exists() || file.isSymLink()) {
            if (MsgBox(QStringLiteral("A report for this media already exists. Are you sure you want to "
                                      "overwrite this file?"),
                       vbYesNo | vbExclamation) == vbYes)
                WriteReport(path, format, results);
        } else {
            WriteReport(path, format, results);
        }
    } catch (const VbError &e) {
        MsgBox(QStringLiteral("Error ") + QString::number(e.number) +
                   QStringLiteral(" occured while saving report.  Can not display report."),
               vbCritical);
    }
}
