#include "shell/MainModScreens.h"

#include "controls/AccessKeys.h"
#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/KeyCodes.h"
#include "controls/Menus.h"
#include "controls/MsgBoxDialog.h"
#include "platform/Events.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "review/ReviewScreens.h"
#include "shell/MainMod.h"
#include "shell/Progress.h"
#include "shell/frmAbout.h"
#include "shell/frmOptions.h"
#include "shell/frmProgressBox.h"

#include <QAction>
#include <QDesktopServices>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QUrl>

void InstallScreenServices()
{
    InstallMsgBoxDialogs();
    InstallAccessKeyFocus();
    SetProgressSink({[](int percent, const QString &text) {
                         auto *box = Forms::get<frmProgressBox>();
                         box->lblStatus->setText(text);
                         box->ProgressBar->setValue(percent);
                         if (!box->isVisible())
                             box->show();
                     },
                     [] { Forms::unload<frmProgressBox>(); }});
    SetMediaPlayerUnlatcher(UnlatchReviewPlayers);
    SetDesktopOpener([](const QString &target) {
        const QUrl url = QFileInfo(target).isAbsolute() ? QUrl::fromLocalFile(target) : QUrl(target);
        return QDesktopServices::openUrl(url);
    });
}

void ShowOptions(Form *form)
{
    auto *options = Forms::get<frmOptions>();
    options->setLeft(form->Left() + form->Width() / 2 - form->Width() / 4 - 300);
    options->setTop(form->Top() + form->Height() / 2 - form->Height() / 4 - 300);
    options->ShowModal();
}

void ShowAboutBox(Form *form)
{
    auto *about = Forms::get<frmAbout>();
    about->setLeft(form->Left() + form->Width() / 2 - about->Width() / 2);
    about->setTop(form->Top() + form->Height() / 2 - about->Height() / 2);
    about->show();
}

void ConnectOptionsAndHelp(Form *form, const StandardMenus &menus)
{
    On(menus.mnuToolsOptions, &QAction::triggered, form, [form] { ShowOptions(form); });
    On(menus.mnuHelpContents, &QAction::triggered, form, [] { ShowHelp(); });
    On(menus.mnuHelpAbout, &QAction::triggered, form, [form] { ShowAboutBox(form); });
}

void FlexGridEditStart(FlexGrid *grid, QLineEdit *editBox, int keyAscii)
{
    if (keyAscii >= 0 && keyAscii <= vbKeySpace) {
        editBox->setText(grid->Text());
        editBox->setCursorPosition(std::min<int>(1000, editBox->text().size()));
    } else {
        editBox->setText(QString(QChar(keyAscii)));
        editBox->setCursorPosition(1);
    }
    PlaceTw(editBox, LeftTw(grid) + grid->CellLeft(), TopTw(grid) + grid->CellTop(), grid->CellWidth() - 8,
            grid->CellHeight() - 8);
    editBox->raise();
    editBox->show();
    editBox->setFocus();
}

void FlexGridEditKeyCode(FlexGrid *grid, QLineEdit *editBox, int keyCode, int)
{
    switch (keyCode) {
    case vbKeyEscape:
        editBox->hide();
        grid->setFocus();
        break;
    case vbKeyReturn:
        grid->setFocus();
        break;
    case vbKeyUp:
        grid->setFocus();
        DoEvents();
        if (grid->Row() > grid->FixedRows())
            grid->setRow(grid->Row() - 1);
        break;
    case vbKeyDown:
        grid->setFocus();
        DoEvents();
        if (grid->Row() < grid->Rows() - 1)
            grid->setRow(grid->Row() + 1);
        break;
    case vbKeyRight:
        grid->setFocus();
        DoEvents();
        // Bounded by Cols, not Cols - 1: in the last column the step is tried and fails.
        if (grid->Col() < grid->Cols())
            grid->setCol(grid->Col() + 1);
        break;
    default:
        break;
    }
}
