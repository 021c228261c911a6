// KEVRO, the desktop program. It takes no arguments.

#include "platform/Events.h"
#include "platform/VbError.h"
#include "shell/Forms.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/frmAbout.h"
#include "shell/frmSplash.h"

#include <QApplication>

#include <clocale>

int main(int argc, char **argv)
{
    // Qt's FFmpeg media back end crashes on files with sound when the machine has no sound card.
    if (qEnvironmentVariableIsEmpty("QT_MEDIA_BACKEND"))
        qputenv("QT_MEDIA_BACKEND", "gstreamer");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("KEVRO"));
    QApplication::setApplicationVersion(
        QStringLiteral("%1.%2.%3").arg(KEVRO_VERSION_MAJOR).arg(KEVRO_VERSION_MINOR).arg(KEVRO_VERSION_PATCH));
    // Member names of archives are read in the locale's character set: keep it UTF-8.
    std::setlocale(LC_CTYPE, "C.UTF-8");
    InstallScreenServices();

    RunHandler([] {
        FillExtensionList();
        auto *splash = Forms::get<frmSplash>();
        splash->show();
        DoEvents();
        splash->RunStartup();
        ResetExtractFolder();
        DoEvents();
        splash->hide();
        // Until the main menu is in place the program opens on the About box.
        auto *about = Forms::get<frmAbout>();
        about->Move(ScreenWidthTw() / 2 - about->Width() / 2, ScreenHeightTw() / 2 - about->Height() / 2);
        about->ShowModal();
        ExitApplication();
    });
    return 0;
}
