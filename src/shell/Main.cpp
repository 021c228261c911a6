#include "shell/Main.h"

#include "platform/Events.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/SingleInstance.h"
#include "platform/WorkLock.h"
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
    if (instance.AnotherIsRunning())
        return 0;
    // A batch job, or a copy of another user, may be working in this application folder: it would lose
    // its extract folder to this start.
    static WorkLock work;
    if (!work.Take()) {
        MsgBox(QStringLiteral("Another KEVRO program is working in ") + AppPath() +
                   QStringLiteral(".  Start KEVRO again when it has finished."),
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
