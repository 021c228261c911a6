// kevro-fileinfo FILE...: the version information of executables, as the application viewer shows it.
// For each file: its path, the language and code page as eight hexadecimal digits (an empty line when
// the file has none), then the viewer's text with its CR LF line ends, and a line end.

#include "review/VersionInformation.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList files = app.arguments().mid(1);
    if (files.isEmpty()) {
        std::fputs("usage: kevro-fileinfo FILE...\n", stderr);
        return 2;
    }
    for (const QString &file : files) {
        // Each file is read by itself: nothing of one file's strings carries into the next.
        VersionInformation info;
        const QString text = info.FileInformationText(file);
        const QString out = file + QLatin1Char('\n') + info.LanguageCodePage + QLatin1Char('\n') + text + QLatin1Char('\n');
        std::fputs(out.toUtf8().constData(), stdout);
    }
    return 0;
}
