#include "catalogue/frmLicenseEntry.h"

#include "catalogue/Database.h"
#include "catalogue/frmLicenseControl.h"
#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/ScreenParts.h"
#include "platform/MsgBox.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFocusEvent>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QScopedValueRollback>

namespace {
constexpr long FormWidth = 9360;
constexpr long FormHeight = 5400;

QString truth(bool on)
{
    return on ? QStringLiteral("True") : QStringLiteral("False");
}
} // namespace

frmLicenseEntry::frmLicenseEntry()
{
    QWidget *central = WorkingScreen(this, "frmLicenseEntry", QStringLiteral("KEVRO - License Entry"), FormWidth,
                                     FormHeight, menus, &picBanner);

    lblResultComment = Named(new QLabel(QStringLiteral("Add License"), central), "lblResultComment");
    lblResultComment->setStyleSheet(QStringLiteral("font-weight: bold;"));
    PlaceTw(lblResultComment, 240, 1020, 8000, 285);
    lblEditMode = Named(new QLabel(central), "lblEditMode");
    lblEditMode->hide();

    frmFileEditBoxes = Named(new QGroupBox(QStringLiteral("Licence Information"), central), "frmFileEditBoxes");
    PlaceTw(frmFileEditBoxes, 240, 1380, 8880, 2340);
    QWidget *f = frmFileEditBoxes;
    lblLicenseFile = Named(new QLabel(QStringLiteral("Licence Application:"), f), "lblLicenseFile");
    PlaceTw(lblLicenseFile, 180, 390, 1800, 285);
    // A list to choose from, never to type into: only the applications listed can get a licence here.
    drpLicenseFile = Named(new QComboBox(f), "drpLicenseFile");
    PlaceTw(drpLicenseFile, 2040, 345, 5400, 345);
    lblStartDate = Named(new QLabel(QStringLiteral("Start Date:"), f), "lblStartDate");
    PlaceTw(lblStartDate, 180, 870, 1800, 285);
    txtStartDate = Named(new QLineEdit(f), "txtStartDate");
    PlaceTw(txtStartDate, 2040, 825, 1800, 345);
    lblEndDate = Named(new QLabel(QStringLiteral("End Date:"), f), "lblEndDate");
    PlaceTw(lblEndDate, 180, 1350, 1800, 285);
    txtEndDate = Named(new QLineEdit(f), "txtEndDate");
    PlaceTw(txtEndDate, 2040, 1305, 1800, 345);
    chkPerminantLicense = Named(new QCheckBox(f), "chkPerminantLicense");
    PlaceTw(chkPerminantLicense, 2040, 1815, 255, 285);
    lblRequiresLicense = Named(new QLabel(QStringLiteral("Permanent License?"), f), "lblRequiresLicense");
    PlaceTw(lblRequiresLicense, 2340, 1815, 2400, 285);
    txtStartDate->installEventFilter(this);
    txtEndDate->installEventFilter(this);

    Line1 = RuleLine(central, "Line1", "#c9d3de", 240, 4080, 8880);
    linDark = RuleLine(central, "linDark", "#7f8c99", 240, 4110, 8880);
    cmdBack = Named(new QPushButton(QStringLiteral("< &Back"), central), "cmdBack");
    PlaceTw(cmdBack, 6480, 4380, 1260, 450);
    cmdSave = Named(new QPushButton(QStringLiteral("&Save"), central), "cmdSave");
    cmdSave->setDefault(true);
    PlaceTw(cmdSave, 7860, 4380, 1260, 450);

    On(chkPerminantLicense, &QCheckBox::toggled, this, [this] { chkPerminantLicense_Click(); });
    On(cmdSave, &QPushButton::clicked, this, [this] { cmdSave_Click(); });
    On(cmdBack, &QPushButton::clicked, this, [this] { ReturnToLicenseControl(); });
    On(menus.mnuFileExit, &QAction::triggered, this, [] { EndProcess(0); });
    ConnectOptionsAndHelp(this, menus);
}

void frmLicenseEntry::Form_QueryUnload(int &, int unloadMode)
{
    if (unloadMode == vbFormControlMenu)
        EndProcess(0);
}

bool frmLicenseEntry::eventFilter(QObject *watched, QEvent *event)
{
    // Leaving a date box that holds no date: the message, and the box keeps the focus. Focus lost to a
    // message box or another window is no leaving.
    static bool telling = false;
    if (event->type() == QEvent::FocusOut && !telling && (watched == txtStartDate || watched == txtEndDate)) {
        const auto reason = static_cast<QFocusEvent *>(event)->reason();
        auto *box = static_cast<QLineEdit *>(watched);
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason && !box->text().isEmpty() &&
            !IsValidDate(box->text())) {
            const QScopedValueRollback<bool> once(telling, true);
            RunHandler([box] {
                MsgBox(QStringLiteral("Invalid date."), vbExclamation);
                box->setFocus();
            });
        }
    }
    return Form::eventFilter(watched, event);
}

bool frmLicenseEntry::PopulateFileList()
{
    // Added to, not emptied: the screen is unloaded on leaving.
    OpenDatabase();
    Recordset rs;
    rs.Open(QStringLiteral("Select APP_NAME ") + QStringLiteral("From KEVRO_APPS ") +
                QStringLiteral("Where APP_REQUIRES_LICENSE = True AND ") +
                QStringLiteral("APP_LICENSE_PER_MEDIA = False ") + QStringLiteral("Order By APP_NAME"),
            gConnection.get());
    const bool any = !(rs.Bof() && rs.Eof());
    const int shown = drpLicenseFile->currentIndex(); // filling the list chooses nothing
    while (!rs.Eof()) {
        drpLicenseFile->addItem(NullToEmpty(rs.Fields(QStringLiteral("APP_NAME"))).toString());
        rs.MoveNext();
    }
    drpLicenseFile->setCurrentIndex(shown);
    CloseDatabase();
    return any;
}

void frmLicenseEntry::ShowApplication(const QString &name)
{
    int index = drpLicenseFile->findText(name, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index < 0) {
        drpLicenseFile->addItem(name);
        index = drpLicenseFile->count() - 1;
    }
    drpLicenseFile->setCurrentIndex(index);
}

void frmLicenseEntry::chkPerminantLicense_Click()
{
    // A permanent licence has no period; the dates typed stay in their boxes.
    const bool permanent = chkPerminantLicense->isChecked();
    for (QLineEdit *box : {txtStartDate, txtEndDate}) {
        box->setEnabled(!permanent);
        QPalette p = box->palette();
        p.setColor(QPalette::Base, palette().color(permanent ? QPalette::Button : QPalette::Base));
        box->setPalette(p);
    }
}

void frmLicenseEntry::cmdSave_Click()
{
    // No handler: a statement the database refuses is the platform's message.
    if (drpLicenseFile->currentText().isEmpty()) {
        MsgBox(QStringLiteral("You must select an application to license"), vbExclamation);
        return;
    }
    const bool permanent = chkPerminantLicense->isChecked();
    if (!permanent && (txtStartDate->text().isEmpty() || txtEndDate->text().isEmpty())) {
        MsgBox(QStringLiteral("You must enter a start and end date"), vbExclamation);
        return;
    }
    cmdSave->setEnabled(false);
    OpenDatabase();
    Recordset rs;
    rs.Open(QStringLiteral("Select KEVRO_APPS.APP_ID ") + QStringLiteral("From KEVRO_APPS ") +
                QStringLiteral("Where KEVRO_APPS.APP_NAME='") + drpLicenseFile->currentText() + QStringLiteral("' ") +
                QStringLiteral("Group By KEVRO_APPS.APP_ID;"),
            gConnection.get());
    if (rs.Bof() && rs.Eof()) {
        // Save stays disabled and the connection open, as they always did.
        MsgBox(QStringLiteral("Error: could not find selected EXE in database, can not save record."));
        return;
    }
    const QString app = rs.Fields(QStringLiteral("APP_ID")).toString();
    if (lblEditMode->text() == QLatin1String("Add")) {
        QString sql = QStringLiteral("Insert Into KEVRO_LICENSES( ") + QStringLiteral("LICENSE_CLIENT, ") +
                      QStringLiteral("LICENSE_APP, ") + QStringLiteral("LICENSE_DATE_ADDED, ");
        if (!permanent)
            sql += QStringLiteral("LICENSE_VALID_FROM, ") + QStringLiteral("LICENSE_VALID_TO, ");
        sql += QStringLiteral("LICENSE_PERMINANT) ") + QStringLiteral("Values(") + QStringLiteral("'") + gClientCode +
               QStringLiteral("', ") + QStringLiteral("'") + app + QStringLiteral("', ") + QStringLiteral("'") +
               NowText() + QStringLiteral("', ");
        if (!permanent)
            sql += QStringLiteral("'") + txtStartDate->text() + QStringLiteral("', ") + QStringLiteral("'") +
                   txtEndDate->text() + QStringLiteral("', ");
        sql += truth(permanent) + QStringLiteral(")");
        gConnection->Execute(sql);
        MsgBox(QStringLiteral("Record added to KEVRO database"), vbInformation);
        CloseDatabase();
        drpLicenseFile->setFocus();
    } else {
        auto *list = Forms::get<frmLicenseControl>();
        const long licence = list->gridLicenses->TextMatrix(list->gridLicenses->Row(), 0).toLong();
        QString sql = QStringLiteral("Update KEVRO_LICENSES Set ") + QStringLiteral("LICENSE_CLIENT = '") +
                      gClientCode + QStringLiteral("', ") + QStringLiteral("LICENSE_APP = '") + app +
                      QStringLiteral("', ");
        if (!permanent)
            sql += QStringLiteral("LICENSE_VALID_FROM = '") + txtStartDate->text() + QStringLiteral("', ") +
                   QStringLiteral("LICENSE_VALID_TO = '") + txtEndDate->text() + QStringLiteral("', ");
        sql += QStringLiteral("LICENSE_PERMINANT =") + truth(permanent) + QStringLiteral(" Where LICENSE_ID =") +
               QString::number(licence);
        gConnection->Execute(sql);
        MsgBox(QStringLiteral("Record updated in KEVRO database"), vbInformation);
        CloseDatabase();
    }
    cmdSave->setEnabled(true);
    cmdSave->setFocus();
}

void frmLicenseEntry::ReturnToLicenseControl()
{
    auto *list = Forms::get<frmLicenseControl>();
    list->Move(Left(), Top());
    list->DisplayLicenseDetails();
    list->InitializeForm();
    list->show();
    Unload();
}
