#include "JobReports.h"

#include "TestSupport.h"

#include "platform/Paths.h"

#include <QDate>
#include <QProcess>
#include <QRegularExpression>

QStringList reportLines(const QString &path, const QString &disc)
{
    QByteArray bytes = ReadTestFile(path);
    if (bytes.count("\n") != bytes.count("\r\n"))
        return {QStringLiteral("a line does not end in CR LF")};
    if (!bytes.endsWith("\r\n"))
        return {QStringLiteral("the last line does not end in CR LF")};
    QString text = QString::fromUtf8(bytes);
    text.chop(2);
    if (!disc.isEmpty())
        text.replace(disc.toUpper(), QStringLiteral("{DISC}"));
    text.replace(AppPath().toUpper(), QStringLiteral("{APP}"));
    QStringList lines = text.split(QStringLiteral("\r\n"));
    const QString year = QString::number(QDate::currentDate().year());
    // The date and time: the sixth line of a plain report, the thirteenth of an HTML one.
    if (path.endsWith(QLatin1String(".txt")) && lines.size() > 5 && lines[5].contains(year)) {
        lines[5] = QStringLiteral("{NOW}");
    } else if (lines.size() > 12) {
        static const QRegularExpression stamp(QStringLiteral("^<FONT size=1>(.+)</FONT><BR><BR>$"));
        const auto m = stamp.match(lines[12]);
        if (m.hasMatch() && m.captured(1).contains(year))
            lines[12] = QStringLiteral("<FONT size=1>{NOW}</FONT><BR><BR>");
    }
    return lines;
}

bool sameLines(const QStringList &actual, const QStringList &expected)
{
    for (int i = 0; i < std::min(actual.size(), expected.size()); ++i) {
        if (actual[i] != expected[i]) {
            qWarning("line %d: got\n  %s\nexpected\n  %s", i + 1, qPrintable(actual[i]), qPrintable(expected[i]));
            return false;
        }
    }
    if (actual.size() != expected.size()) {
        qWarning("%d lines, expected %d", int(actual.size()), int(expected.size()));
        return false;
    }
    return true;
}

CheckRun kevroCheck(const QStringList &args)
{
    QProcess p;
    p.start(QStringLiteral(KEVRO_CHECK), args);
    CheckRun r;
    if (!p.waitForFinished(120000))
        return r;
    r.code = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    r.out = QString::fromUtf8(p.readAllStandardOutput());
    r.err = QString::fromUtf8(p.readAllStandardError());
    return r;
}
