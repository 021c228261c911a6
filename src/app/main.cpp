// KEVRO, the desktop program. It takes no arguments.

#include "platform/VbError.h"
#include "scan/ArchiveExpander.h"
#include "shell/Main.h"
#include "shell/MainModScreens.h"

#include <QApplication>


int main(int argc, char **argv)
{
    // Qt's FFmpeg media back end crashes on files with sound when the machine has no sound card.
    if (qEnvironmentVariableIsEmpty("QT_MEDIA_BACKEND"))
        qputenv("QT_MEDIA_BACKEND", "gstreamer");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("KEVRO"));
    QApplication::setApplicationVersion(
        QStringLiteral("%1.%2.%3").arg(KEVRO_VERSION_MAJOR).arg(KEVRO_VERSION_MINOR).arg(KEVRO_VERSION_PATCH));
    // The screens are the program: hiding the last of them on the way to the next must not end it.
    QApplication::setQuitOnLastWindowClosed(false);
    // Member names of archives are read in the locale's character set: keep it UTF-8.
    ArchiveExpander::PrepareLocale();
    InstallScreenServices();
    int code = 0;
    RunHandler([&] { code = Main(); });
    return code;
}
