#include "shell/Main.h"

#include "platform/Events.h"
#include "platform/MsgBox.h"
#include "platform/SingleInstance.h"
#include "controls/Forms.h"
#include "shell/MainMod.h"
#include "shell/frmMainMenu.h"
#include "shell/frmSplash.h"

#include <QApplication>
#include <QWidget>

namespace {
// The copy's visible screen comes to the front when a second copy starts.
void activateVisibleScreen()
{
    for (QWidget *w : QApplication::topLevelWidgets()) {
        if (w->isVisible() && qobject_cast<Form *>(w) && !w->isHidden()) {
            w->setWindowState((w->windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
            w->raise();
            w->activateWindow();
        }
    }
}
} // namespace

int Main()
{
    static SingleInstance instance(InstanceKey());
    if (instance.AnotherIsRunning()) {
        // A copy with screens comes to the front by itself; a batch job has none to show.
        if (instance.HeldWithoutScreens())
            MsgBox(QStringLiteral("A KEVRO batch job is working in this application folder.  Start KEVRO again "
                                  "when it has finished."),
                   vbExclamation);
        return 0;
    }
    instance.SetActivator(activateVisibleScreen);

    FillExtensionList();
    auto *splash = Forms::get<frmSplash>();
    splash->show();
    DoEvents();
    splash->RunStartup();
    auto *menu = Forms::get<frmMainMenu>();
    ResetExtractFolder();
    menu->setLeft(static_cast<long>(ScreenWidthTw() / 2.0 - menu->Width() / 2.0));
    menu->setTop(static_cast<long>(ScreenHeightTw() / 2.0 - menu->Height() / 2.0));
    DoEvents();
    splash->hide();
    menu->show();
    return QApplication::exec();
}
