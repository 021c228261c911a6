#include "shell/frmMainMenu.h"

#include "reporting/frmReportViewer.h"

#include "catalogue/Database.h"
#include "platform/Events.h"
#include "platform/MsgBox.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "shell/CAutoComplete.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "catalogue/frmClientControl.h"
#include "catalogue/frmFileControl.h"
#include "catalogue/frmLicenseControl.h"
#include "controls/Forms.h"
#include "controls/ScreenParts.h"
#include "controls/Pictures.h"
#include "scan/frmScanDisc.h"

#include <QAction>
#include <QComboBox>
#include <QEvent>
#include <QFrame>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMouseEvent>
#include <QToolButton>

namespace {


constexpr long ButtonTop = 3480;
constexpr long ButtonSize = 1080;
constexpr long LabelTop = ButtonTop + ButtonSize + 60;
} // namespace

frmMainMenu::frmMainMenu()
{
    setObjectName(QStringLiteral("frmMainMenu"));
    setWindowTitle(QStringLiteral("KEVRO - Main Menu"));
    auto *central = Named(new QWidget(this), "frmMainMenuBackground");
    central->setStyleSheet(QStringLiteral("#frmMainMenuBackground { background: #ffffff; }"));
    setCentralWidget(central);
    menus = BuildStandardMenus(this);
    setFixedSize(TwipsToPixels(9000), TwipsToPixels(5520) + menuBar()->sizeHint().height());

    picBanner = Named(new QLabel(central), "picBanner");
    picBanner->setPixmap(LoadPicture(QStringLiteral("banner")));
    picBanner->setScaledContents(true);
    PlaceTw(picBanner, 0, 0, 9000, 900);

    lblClient = Named(new QLabel(QStringLiteral("Client Code:"), central), "lblClient");
    PlaceTw(lblClient, 360, 1230, 1440, 330);
    cmbClientCode = Named(new QComboBox(central), "cmbClientCode");
    PlaceTw(cmbClientCode, 1860, 1170, 2160, 390);
    txtClientSearch = Named(new QLineEdit(central), "txtClientSearch");
    txtClientSearch->setPlaceholderText(QStringLiteral("Search code"));
    txtClientSearch->setToolTip(QStringLiteral("Type the start of a client code"));
    PlaceTw(txtClientSearch, 4140, 1170, 1800, 390);
    lblClientName = Named(new QLabel(QStringLiteral("Client Name:"), central), "lblClientName");
    PlaceTw(lblClientName, 360, 1770, 1440, 330);
    cmbClientName = Named(new QComboBox(central), "cmbClientName");
    PlaceTw(cmbClientName, 1860, 1710, 4080, 390);
    lblCatNo = Named(new QLabel(QStringLiteral("Catalogue:"), central), "lblCatNo");
    PlaceTw(lblCatNo, 360, 2310, 1440, 330);
    txtCatNo = Named(new QLineEdit(central), "txtCatNo");
    PlaceTw(txtCatNo, 1860, 2250, 2160, 390);
    for (QComboBox *combo : {cmbClientCode, cmbClientName}) {
        combo->setEditable(true);
        combo->setInsertPolicy(QComboBox::NoInsert);
        combo->setMaxVisibleItems(12);
        combo->setCompleter(nullptr); // no completion of Qt's own: the name's type-ahead is CAutoComplete's
    }

    picLogo = Named(new QLabel(central), "picLogo");
    picLogo->setPixmap(LoadPicture(QStringLiteral("logo")));
    picLogo->setScaledContents(true);
    PlaceTw(picLogo, 6240, 1080, 2520, 1260);

    linDivider = Named(new QFrame(central), "linDivider");
    linDivider->setFrameShape(QFrame::HLine);
    linDivider->setStyleSheet(QStringLiteral("color: #c9d3de;"));
    PlaceTw(linDivider, 360, 2850, 8280, 30);

    shpSlip = Named(new QFrame(central), "shpSlip");
    shpSlip->setStyleSheet(QStringLiteral("#shpSlip { background: #f4f7fa; border: 1px solid #dbe3ec; "
                                          "border-radius: 8px; }"));
    PlaceTw(shpSlip, 240, 3000, 8520, 2220);

    picScanEngineTitle = Named(new QLabel(central), "picScanEngineTitle");
    picScanEngineTitle->setPixmap(LoadPicture(QStringLiteral("title_scan_engine")));
    PlaceTw(picScanEngineTitle, 480, 3060, 3000, 420);
    picDatabaseTitle = Named(new QLabel(central), "picDatabaseTitle");
    picDatabaseTitle->setPixmap(LoadPicture(QStringLiteral("title_database")));
    PlaceTw(picDatabaseTitle, 3960, 3060, 3000, 420);

    picScanDiscNormal = PictureHolder(central, "picScanDiscNormal", QStringLiteral("scan_disc_normal"));
    picScanDiscHover = PictureHolder(central, "picScanDiscHover", QStringLiteral("scan_disc_hover"));
    picReportsNormal = PictureHolder(central, "picReportsNormal", QStringLiteral("reports_normal"));
    picReportsHover = PictureHolder(central, "picReportsHover", QStringLiteral("reports_hover"));
    picClientsNormal = PictureHolder(central, "picClientsNormal", QStringLiteral("clients_normal"));
    picClientsHover = PictureHolder(central, "picClientsHover", QStringLiteral("clients_hover"));
    picApplicationsNormal = PictureHolder(central, "picApplicationsNormal", QStringLiteral("applications_normal"));
    picApplicationsHover = PictureHolder(central, "picApplicationsHover", QStringLiteral("applications_hover"));
    picLicensesNormal = PictureHolder(central, "picLicensesNormal", QStringLiteral("licenses_normal"));
    picLicencesHover = PictureHolder(central, "picLicencesHover", QStringLiteral("licenses_hover"));

    auto button = [&](const char *name, const char *labelName, const QString &caption, long left, QLabel **label) {
        auto *b = Named(new QToolButton(central), name);
        b->setAutoRaise(true);
        b->setIconSize(QSize(TwipsToPixels(ButtonSize) - 8, TwipsToPixels(ButtonSize) - 8));
        b->setCursor(Qt::PointingHandCursor);
        b->setToolTip(caption);
        PlaceTw(b, left, ButtonTop, ButtonSize, ButtonSize);
        *label = Named(new QLabel(caption, central), labelName);
        (*label)->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
        (*label)->setStyleSheet(QStringLiteral("color: #1f3a5f;"));
        PlaceTw(*label, left - 240, LabelTop, ButtonSize + 480, 330);
        return b;
    };
    cmdScanDisc = button("cmdScanDisc", "lblScanDisc", QStringLiteral("Scan Disc"), 600, &lblScanDisc);
    cmdReports = button("cmdReports", "lblReports", QStringLiteral("Reports"), 2040, &lblReports);
    cmdClients = button("cmdClients", "lblClientControl", QStringLiteral("Clients"), 4080, &lblClientControl);
    cmdFileControl =
        button("cmdFileControl", "lblFileControl", QStringLiteral("Applications"), 5520, &lblFileControl);
    cmdLicenseControl =
        button("cmdLicenseControl", "lblLicenseControl", QStringLiteral("Licenses"), 6960, &lblLicenseControl);
    // The button under the mouse shows its hover face, the background all normal ones.
    m_faces = new HoverPictures(central);
    m_faces->add(cmdScanDisc, picScanDiscNormal, picScanDiscHover, false);
    m_faces->add(cmdReports, picReportsNormal, picReportsHover, false);
    m_faces->add(cmdClients, picClientsNormal, picClientsHover, false);
    m_faces->add(cmdFileControl, picApplicationsNormal, picApplicationsHover, false);
    m_faces->add(cmdLicenseControl, picLicensesNormal, picLicencesHover, false);
    shpSlip->lower();

    // The combos and the job.
    On(cmbClientCode, qOverload<int>(&QComboBox::activated), this, [this](int i) { cmbClientCode_Click(i); });
    On(cmbClientName, qOverload<int>(&QComboBox::activated), this, [this](int i) { cmbClientName_Click(i); });
    On(cmbClientName, &QComboBox::editTextChanged, this, [this] {
        if (!m_settingName)
            cmbClientName_Change();
    });
    cmbClientCode->installEventFilter(this);
    On(txtClientSearch, &QLineEdit::textChanged, this, [this] { txtClientSearch_Change(); });
    On(txtCatNo, &QLineEdit::textChanged, this, [this](const QString &t) { gCatalogueNumber = t; });

    // Where each action leads. The moves to the screens that are not part of the program yet come with them.
    On(cmdScanDisc, &QToolButton::clicked, this, [this] { ScanDisc(); });
    On(menus.mnuScanEngineScanDisc, &QAction::triggered, this, [this] { ScanDisc(); });
    On(cmdReports, &QToolButton::clicked, this, [this] { OpenReportsForm(); });
    On(menus.mnuScanEngineReports, &QAction::triggered, this, [this] { OpenReportsForm(); });
    On(cmdFileControl, &QToolButton::clicked, this, [this] { FileControl(); });
    On(menus.mnuDatabaseFileControl, &QAction::triggered, this, [this] { FileControl(); });
    On(cmdClients, &QToolButton::clicked, this, [this] { ClientControl(); });
    On(menus.mnuDatabaseClients, &QAction::triggered, this, [this] { ClientControl(); });
    On(cmdLicenseControl, &QToolButton::clicked, this, [this] { LicenseControl(); });
    On(menus.mnuDatabaseLicenseControl, &QAction::triggered, this, [this] { LicenseControl(); });
    ConnectOptionsAndHelp(this, menus);
    On(menus.mnuFileExit, &QAction::triggered, this, [] { EndProcess(0); });
}

QList<QToolButton *> frmMainMenu::buttons() const
{
    return {cmdScanDisc, cmdReports, cmdClients, cmdFileControl, cmdLicenseControl};
}

QList<QLabel *> frmMainMenu::buttonLabels() const
{
    return {lblScanDisc, lblReports, lblClientControl, lblFileControl, lblLicenseControl};
}

void frmMainMenu::ShowNormalPictures()
{
    m_faces->ShowNormalPictures();
}

void frmMainMenu::Form_Load()
{
    ShowNormalPictures();
    ResetList(gCheckedItems);
    ResetList(gMediaFiles);
    ResetList(gExternalFiles);

    Recordset rs;
    m_settingName = true; // filling the lists is no typing
    OpenDatabase();
    rs.Open(QStringLiteral("SELECT CLIENT_ID, CLIENT_NAME ") + QStringLiteral(" FROM KEVRO_CLIENTS") +
                QStringLiteral(" ORDER BY CLIENT_NAME ASC"),
            gConnection.get(), 3, 3);
    if (!(rs.Bof() && rs.Eof())) {
        rs.MoveFirst();
        while (!rs.Eof()) {
            cmbClientCode->addItem(NullToEmpty(rs.Fields(QStringLiteral("CLIENT_ID"))).toString());
            cmbClientName->addItem(NullToEmpty(rs.Fields(QStringLiteral("CLIENT_NAME"))).toString());
            rs.MoveNext();
        }
    }
    CloseDatabase();
    // The combos come up empty: no client is chosen until the operator chooses one.
    cmbClientCode->setCurrentIndex(-1);
    cmbClientName->setCurrentIndex(-1);
    m_settingName = false;

    m_autoComplete = new CAutoComplete(this);
    m_autoComplete->setLinkedComboBox(cmbClientName);
}

void frmMainMenu::JobUpdate()
{
    if (!cmbClientCode->currentText().isEmpty()) {
        gClientCode = cmbClientCode->currentText();
        gClientName = cmbClientName->currentText();
    }
}

void frmMainMenu::cmbClientCode_Click(int index)
{
    m_settingName = true;
    cmbClientName->setCurrentIndex(index);
    m_settingName = false;
    JobUpdate();
    if (!cmbClientCode->currentText().isEmpty())
        txtClientSearch->setText(cmbClientCode->currentText());
}

void frmMainMenu::cmbClientName_Click(int index)
{
    cmbClientCode->setCurrentIndex(index);
    DoEvents();
    JobUpdate();
}

void frmMainMenu::cmbClientName_Change()
{
    // A name typed by hand lands in the code field until a list entry is clicked.
    cmbClientCode->setEditText(cmbClientName->currentText());
    DoEvents();
    JobUpdate();
}

void frmMainMenu::txtClientSearch_Change()
{
    const QString search = txtClientSearch->text();
    QString result;
    bool found = false;
    for (int i = 0; i < cmbClientCode->count(); ++i) {
        const QString entry = cmbClientCode->itemText(i);
        if (!found && entry.left(search.size()) == search) {
            result = entry;
            found = true;
        }
    }
    if (search.isEmpty())
        return;
    if (!found)
        MsgBox(QStringLiteral("No match"), vbExclamation);
    else
        cmbClientCode->setEditText(result);
}

bool frmMainMenu::ClientChosen()
{
    if (cmbClientCode->currentText().isEmpty()) {
        MsgBox(QStringLiteral("You must select a client to work with."), vbExclamation);
        return false;
    }
    return true;
}

void frmMainMenu::ScanDisc()
{
    if (!ClientChosen())
        return;
    if (txtCatNo->text().isEmpty()) {
        MsgBox(QStringLiteral("You must enter a catalogue number."), vbExclamation);
        return;
    }
    auto *scanDisc = Forms::get<frmScanDisc>();
    scanDisc->Move(Left(), Top());
    SlideMenuOut(4);
    scanDisc->show();
    scanDisc->PrepareToScan();
    Unload();
}

void frmMainMenu::OpenReportsForm()
{
    // The position is read from the main menu itself, whoever calls.
    auto *viewer = Forms::get<frmReportViewer>();
    auto *menu = Forms::get<frmMainMenu>();
    viewer->Move(menu->Left(), menu->Top());
    menu->SlideMenuOut(4);
    viewer->show();
    menu->Unload();
}

void frmMainMenu::FileControl()
{
    auto *applications = Forms::get<frmFileControl>();
    applications->Move(Left(), Top());
    SlideMenuOut(4);
    applications->show();
    Unload();
}

void frmMainMenu::ClientControl()
{
    auto *clients = Forms::get<frmClientControl>();
    clients->Move(Left(), Top());
    SlideMenuOut(4);
    clients->show();
    DoEvents();
    Unload();
}

void frmMainMenu::LicenseControl()
{
    if (!ClientChosen())
        return;
    auto *licences = Forms::get<frmLicenseControl>();
    licences->Move(Left(), Top());
    licences->DisplayLicenseDetails();
    SlideMenuOut(4);
    licences->show();
    DoEvents();
    Unload();
}

void frmMainMenu::SlideMenuOut(int steps)
{
    picScanEngineTitle->hide();
    picDatabaseTitle->hide();
    linDivider->hide();
    QList<QWidget *> sliding{shpSlip};
    for (QToolButton *b : buttons())
        sliding << b;
    for (QLabel *l : buttonLabels())
        sliding << l;
    for (int i = 0; i < steps; ++i) {
        for (QWidget *w : sliding)
            SetLeftTw(w, LeftTw(w) - 2400 / steps);
        Pause(20);
    }
    for (QWidget *w : sliding)
        w->hide();
    for (int i = 0; i < steps; ++i) {
        SetLeftTw(picLogo, LeftTw(picLogo) + 2400 / steps);
        Pause(20);
    }
}

void frmMainMenu::Form_QueryUnload(int &, int unloadMode)
{
    if (unloadMode == vbFormControlMenu)
        EndProcess(0);
}

bool frmMainMenu::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyRelease && watched == cmbClientCode) {
        RunHandler([this] { JobUpdate(); });
    }
    return Form::eventFilter(watched, event);
}
