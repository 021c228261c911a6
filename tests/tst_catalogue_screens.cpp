// The catalogue screens as the plant's staff use them, on SQLite and on the test run's PostgreSQL
// server: the clients edited in place and saved, the apostrophe that an update strips and an insert
// trips over, the empty name the database refuses, deletes, the import from a text file, and the way
// back to the main menu.

#include "CatalogueFixture.h"
#include "DiscFixture.h"
#include "Operator.h"
#include "TestSupport.h"

#include "catalogue/Connection.h"
#include "catalogue/frmClientControl.h"
#include "catalogue/frmFileControl.h"
#include "catalogue/frmFileEntry.h"
#include "catalogue/frmLicenseControl.h"
#include "catalogue/frmLicenseEntry.h"
#include "catalogue/frmOwnerEntry.h"
#include "controls/CommonDialog.h"
#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/Twips.h"
#include "platform/MsgBox.h"
#include "platform/VbError.h"
#include "review/ExeEvaluation.h"
#include "review/frmScanResultsEXEs.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/Progress.h"
#include "shell/frmMainMenu.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QRadioButton>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QToolButton>

namespace {

const char *const noServer = "no PostgreSQL server: run through `make test`, which starts one";
const QString clientsSaved = QStringLiteral("Clients updated in KEVRO database");
const QString sureToDelete = QStringLiteral("Are you sure you want to delete this record?");

// The texts of one column of a grid, row by row: 1 the names, 2 the row states of a name grid.
QStringList cells(FlexGrid *grid, int col)
{
    QStringList out;
    for (int r = 0; r < grid->Rows(); ++r)
        out << grid->TextMatrix(r, col);
    return out;
}

QStringList names(FlexGrid *grid)
{
    return cells(grid, 1);
}

// Types a name into the floating box as a person does: what the box held is replaced.
void typeName(QLineEdit *box, const QString &text)
{
    QVERIFY(box->isVisible());
    box->selectAll();
    if (text.isEmpty())
        QTest::keyClick(box, Qt::Key_Delete);
    for (const QChar c : text) {
        if (c.unicode() < 128) {
            QTest::keyClick(box, c.toLatin1());
        } else { // a letter of a keyboard other than the test's own
            QKeyEvent press(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, QString(c));
            QApplication::sendEvent(box, &press);
        }
    }
}

// A new row on a screen's name grid, its name typed into the floating box.
template <class Screen> void addRow(Screen *s, const QString &name)
{
    Click(s->cmdAddRecord);
    typeName(s->txtEdit, name);
}

// A double click on a cell as the mouse delivers it: the press makes the cell current first.
void doubleClickCell(FlexGrid *grid, int row, int col)
{
    ClickRow(grid, row, col);
    QTest::mouseDClick(grid->viewport(), Qt::LeftButton, Qt::NoModifier, CellCentre(grid, row, col));
}

// A click whose boxes get these answers; only the boxes it shows are kept to look at.
void press(MsgBoxResponder &boxes, QWidget *button, int answer = vbOK, int times = 1)
{
    boxes.clear();
    boxes.queue(answer, times);
    Click(button);
}

// A click that shows exactly one box, answered OK: its text and its icon.
void pressForBox(MsgBoxResponder &boxes, QWidget *button, const QString &prompt, int icon)
{
    press(boxes, button);
    QCOMPARE(boxes.prompts(), QStringList{prompt});
    QCOMPARE(boxes.boxes()[0].icon(), icon);
}

// The screen a button of the main menu leads to; null unless the screen came and the menu went.
template <class Screen> Screen *fromMainMenu(QToolButton *frmMainMenu::*button)
{
    auto *menu = Forms::get<frmMainMenu>();
    menu->Move(600, 450);
    menu->show();
    Click(menu->*button);
    auto *s = Forms::get<Screen>();
    return s->isVisible() && !Forms::isLoaded<frmMainMenu>() ? s : nullptr;
}

} // namespace

class TestCatalogueScreens final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void clients_data() { engines(); }
    void clients();
    void clientImport_data() { engines(); }
    void clientImport();
    void owners_data() { engines(); }
    void owners();
    void applications_data() { engines(); }
    void applications();
    void applicationComponents_data() { engines(); }
    void applicationComponents();
    void licencesTurnAVerdict_data() { engines(); }
    void licencesTurnAVerdict();
    void datesAsTheDatabaseReadsThem();

private:
    static void engines();
    bool useEngine();
    QStringList storedClients();

    TempAppFolder m_app;
    CatalogueFixture m_catalogue;
    QString m_engine;
    QStringList m_progress;
};

void TestCatalogueScreens::initTestCase()
{
    InstallScreenServices();
    RefuseBoxesWithoutResponder();
}

void TestCatalogueScreens::cleanup()
{
    SetEndProcessHook(nullptr);
    SetOpenDialogResponder(nullptr);
    Forms::unload<frmClientControl>();
    Forms::unload<frmOwnerEntry>();
    Forms::unload<frmFileEntry>();
    Forms::unload<frmFileControl>();
    Forms::unload<frmLicenseEntry>();
    Forms::unload<frmLicenseControl>();
    Forms::unload<frmScanResultsEXEs>();
    Forms::unload<frmMainMenu>();
}

void TestCatalogueScreens::engines()
{
    QTest::addColumn<QString>("engine");
    QTest::newRow("sqlite") << QStringLiteral("sqlite");
    QTest::newRow("postgresql") << QStringLiteral("postgresql");
}

// A new catalogue on the row's engine; false when that engine's server is not there.
bool TestCatalogueScreens::useEngine()
{
    QFETCH(QString, engine);
    m_engine = engine;
    if (engine == QLatin1String("postgresql") && !CatalogueFixture::postgresAvailable()) {
        if (qEnvironmentVariableIsSet("CI"))
            qFatal("KEVRO_TEST_PG is not set: CI must run the PostgreSQL tests (make test starts the server)");
        return false;
    }
    const QString made = m_catalogue.create(engine, m_app.path());
    if (!made.isEmpty())
        qFatal("%s", qPrintable(made));
    return true;
}

QStringList TestCatalogueScreens::storedClients()
{
    QStringList out = m_catalogue.column(QStringLiteral("SELECT CLIENT_NAME FROM KEVRO_CLIENTS"), "CLIENT_NAME");
    out.sort();
    return out;
}

void TestCatalogueScreens::clients()
{
    if (!useEngine())
        QSKIP(noServer);
    MsgBoxResponder boxes;
    auto *s = fromMainMenu<frmClientControl>(&frmMainMenu::cmdClients);
    QVERIFY(s);
    QCOMPARE(s->pos(), QPoint(TwipsToPixels(600), TwipsToPixels(450)));
    FlexGrid *grid = s->gridClients;
    QLineEdit *box = s->txtEdit;

    // An empty table: no rows, neither delete nor save; Add Record makes both possible.
    QCOMPARE(grid->Rows(), 0);
    QVERIFY(!s->cmdDeleteRecord->isEnabled() && !s->cmdSaveRecords->isEnabled());
    Click(s->cmdAddRecord);
    QVERIFY(s->cmdDeleteRecord->isEnabled() && s->cmdSaveRecords->isEnabled());
    QCOMPARE(cells(grid, 2), QStringList{"Insert"});
    typeName(box, QStringLiteral("Northwind Discs"));
    addRow(s, QStringLiteral("Contoso Média")); // the box's text goes into its row first
    pressForBox(boxes, s->cmdSaveRecords, clientsSaved, vbInformation);
    QCOMPARE(storedClients(), (QStringList{"Contoso Média", "Northwind Discs"}));
    QCOMPARE(names(grid), (QStringList{"Contoso Média", "Northwind Discs"}));
    QCOMPARE(cells(grid, 2), (QStringList{"Original", "Original"}));
    QVERIFY(!grid->TextMatrix(0, 0).isEmpty());

    // Quotes and percent signs are plain text to the catalogue. A name past the column's 255 characters
    // is a value the server's column cannot take: the save's general message; SQLite keeps it.
    addRow(s, QStringLiteral("\"Quoted\" 100% Discs"));
    pressForBox(boxes, s->cmdSaveRecords, clientsSaved, vbInformation);
    QVERIFY(storedClients().contains(QStringLiteral("\"Quoted\" 100% Discs")));
    Click(s->cmdAddRecord);
    box->setText(QString(300, QLatin1Char('L')));
    const bool server = m_engine == QLatin1String("postgresql");
    pressForBox(boxes, s->cmdSaveRecords,
                server ? QStringLiteral("Error -2147217913 occurred.  Can not save record.") : clientsSaved,
                server ? vbCritical : vbInformation);
    QCOMPARE(storedClients().contains(QString(300, QLatin1Char('L'))), !server);
    m_catalogue.execute("DELETE FROM KEVRO_CLIENTS WHERE CLIENT_NAME LIKE '%Quoted%' OR CLIENT_NAME LIKE 'LLL%'");
    s->ShowDBClients();

    // Another program holding the catalogue locked through the save: the general message, not the
    // apostrophe's; the row is saved once the lock is gone.
    if (!server) {
        {
            QSqlDatabase holder = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("holder"));
            holder.setDatabaseName(m_app.file(QStringLiteral("kevro.db")));
            QVERIFY(holder.open() && QSqlQuery(holder).exec(QStringLiteral("BEGIN EXCLUSIVE")));
            addRow(s, QStringLiteral("Fabrikam"));
            pressForBox(boxes, s->cmdSaveRecords, QStringLiteral("Error -2147217871 occurred.  Can not save record."),
                        vbCritical);
            holder.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("holder"));
        pressForBox(boxes, s->cmdSaveRecords, clientsSaved, vbInformation);
        QCOMPARE(storedClients(), (QStringList{"Contoso Média", "Fabrikam", "Northwind Discs"}));
        m_catalogue.execute("DELETE FROM KEVRO_CLIENTS WHERE CLIENT_NAME = 'Fabrikam'");
        s->ShowDBClients();
    }

    // An existing name changed to one with an apostrophe is saved without it; a new one is refused.
    // Rows written before the failure stay written, and the save after the name is mended does not
    // write them a second time.
    doubleClickCell(grid, 0, 1);
    QCOMPARE(box->text(), QStringLiteral("Contoso Média"));
    QCOMPARE(cells(grid, 2)[0], QStringLiteral("Update"));
    typeName(box, QStringLiteral("O'Brien Media"));
    addRow(s, QStringLiteral("Adatum"));
    addRow(s, QStringLiteral("O'Neil Pressing"));
    pressForBox(boxes, s->cmdSaveRecords, QStringLiteral("Can not use ' character in filenames or descriptions."),
                vbExclamation);
    QCOMPARE(storedClients(), (QStringList{"Adatum", "Northwind Discs", "OBrien Media"}));
    QCOMPARE(names(grid), (QStringList{"O'Brien Media", "Northwind Discs", "Adatum", "O'Neil Pressing"}));
    doubleClickCell(grid, 3, 1);
    typeName(box, QStringLiteral("ONeil Pressing"));
    pressForBox(boxes, s->cmdSaveRecords, clientsSaved, vbInformation);
    QCOMPARE(storedClients(), (QStringList{"Adatum", "Northwind Discs", "OBrien Media", "ONeil Pressing"}));

    // An empty new name: the database's rule, and the message. The row, never saved, is deleted
    // without a statement; No keeps it.
    addRow(s, QString());
    pressForBox(boxes, s->cmdSaveRecords, QStringLiteral("All fields must be completed before saving."),
                vbExclamation);
    boxes.queue(vbNo);
    boxes.queue(vbYes);
    Click(s->cmdDeleteRecord);
    QCOMPARE(grid->Rows(), 5);
    Click(s->cmdDeleteRecord);
    QCOMPARE(boxes.prompts().mid(1), QStringList(2, sureToDelete));
    QCOMPARE(grid->Rows(), 4);
    QCOMPARE(storedClients(), (QStringList{"Adatum", "Northwind Discs", "OBrien Media", "ONeil Pressing"}));

    // Deleting a saved client goes to the database at once; deleting the last row empties the grid
    // and disables delete and save.
    s->ShowDBClients();
    boxes.queue(vbYes, 4);
    ClickRow(grid, 1, 1);
    Click(s->cmdDeleteRecord);
    QCOMPARE(storedClients(), (QStringList{"Adatum", "OBrien Media", "ONeil Pressing"}));
    for (int i = 0; i < 3; ++i) {
        ClickRow(grid, 0, 1);
        Click(s->cmdDeleteRecord);
    }
    QCOMPARE(storedClients(), QStringList());
    QCOMPARE(grid->Rows(), 0);
    QVERIFY(!s->cmdDeleteRecord->isEnabled() && !s->cmdSaveRecords->isEnabled());

    // Two screens' worth of new rows: the progress box from the tenth row on.
    m_progress.clear();
    SetProgressSink(
        {[this](int percent, const QString &text) { m_progress << QString::number(percent) + ' ' + text; }, [] {}});
    for (int i = 1; i <= 25; ++i)
        addRow(s, QStringLiteral("Client %1").arg(i, 2, 10, QLatin1Char('0')));
    press(boxes, s->cmdSaveRecords);
    InstallScreenServices();
    QCOMPARE(m_progress, (QStringList{"40 Saving Client Information...", "80 Saving Client Information..."}));
    QCOMPARE(storedClients().size(), 25);
    QCOMPARE(grid->Rows(), 25);

    // Back: the main menu at this screen's place; rows not saved are dropped without a question.
    addRow(s, QStringLiteral("Never Saved"));
    s->Move(9600, 7200);
    const QPoint place = s->pos();
    Click(s->cmdPrevious);
    QVERIFY(!Forms::isLoaded<frmClientControl>());
    auto *menu = Forms::get<frmMainMenu>();
    QVERIFY(menu->isVisible());
    QCOMPARE(menu->pos(), place);
    QCOMPARE(storedClients().size(), 25);
    QCOMPARE(menu->cmbClientName->count(), 25);
}

void TestCatalogueScreens::clientImport()
{
    if (!useEngine())
        QSKIP(noServer);
    m_catalogue.addClient(QStringLiteral("Old Client"));
    MsgBoxResponder boxes;
    auto *s = fromMainMenu<frmClientControl>(&frmMainMenu::cmdClients);
    QVERIFY(s);
    QCOMPARE(names(s->gridClients), QStringList{"Old Client"});

    // The file dialog with its title and filter; Cancel leaves the path alone.
    const QString list = WriteTestFile(m_app.path() + QStringLiteral("/clients.txt"),
                                       QByteArray("Alpha Records\r\nBeta Pressing\nCaf\xe9 Discs\r\nDelta\n"));
    QStringList asked;
    SetOpenDialogResponder([&](const QString &title, const QString &filter) {
        asked << title + QStringLiteral(" | ") + filter;
        return asked.size() == 1 ? QString() : list;
    });
    Click(s->cmdBrowse);
    QCOMPARE(s->txtFilePath->text(), QString());
    Click(s->cmdBrowse);
    QCOMPARE(asked, QStringList(2, "Import Client List | Text (*.txt *.TXT)"));
    QCOMPARE(s->txtFilePath->text(), list);

    // Neither road is chosen for the operator: without a choice nothing is imported.
    pressForBox(boxes, s->cmdImport, QStringLiteral("Choose Replace or Append before importing.  Nothing was imported."),
                vbExclamation);
    QCOMPARE(storedClients(), QStringList{"Old Client"});

    // Replace: every client goes before the first line; CR LF and LF lines, a line in the Windows
    // code page. Append; then a file that is not there.
    const QString imported = QStringLiteral("Import completed sucessfully.");
    Click(s->optReplace);
    pressForBox(boxes, s->cmdImport, imported, vbInformation);
    QCOMPARE(storedClients(), (QStringList{"Alpha Records", "Beta Pressing", "Café Discs", "Delta"}));
    QCOMPARE(names(s->gridClients), storedClients());
    Click(s->optAppend);
    s->txtFilePath->setText(WriteTestFile(m_app.path() + QStringLiteral("/more.txt"), "Echo Media\n"));
    pressForBox(boxes, s->cmdImport, imported, vbInformation);
    QCOMPARE(storedClients().size(), 5);
    for (const QString &notAFile : {m_app.path() + QStringLiteral("/gone.txt"), m_app.path()}) {
        s->txtFilePath->setText(notAFile);
        pressForBox(boxes, s->cmdImport, QStringLiteral("File does not exist!"), vbExclamation);
    }
    QCOMPARE(storedClients().size(), 5);

    // A line with an apostrophe, and a blank line, are statements the database refuses: the platform's
    // message and the end of the program; the lines before stay imported, after a replace too.
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    Click(s->optReplace);
    const QList<QPair<QByteArray, QString>> refused{{"Foxtrot\nO'Hara Sound\nGolf\n", "Foxtrot"},
                                                    {"Hotel\n\nIndia\n", "Hotel"}};
    for (const auto &[bad, kept] : refused) {
        s->txtFilePath->setText(WriteTestFile(m_app.path() + QStringLiteral("/bad.txt"), bad));
        press(boxes, s->cmdImport);
        QVERIFY(boxes.prompts().value(0).startsWith(QStringLiteral("Run-time error '")));
        QCOMPARE(storedClients(), QStringList{kept});
    }
    QCOMPARE(ended, (QList<int>{1, 1}));
}

void TestCatalogueScreens::owners()
{
    if (!useEngine())
        QSKIP(noServer);
    MsgBoxResponder boxes;
    auto *list = fromMainMenu<frmFileControl>(&frmMainMenu::cmdFileControl);
    QVERIFY(list);
    Click(list->cmdOwners);
    auto *s = Forms::get<frmOwnerEntry>();
    QVERIFY(s->isVisible() && list->isHidden());
    FlexGrid *grid = s->gridOwners;
    QCOMPARE(grid->Rows(), 0);
    QVERIFY(!s->cmdDeleteRecord->isEnabled() && !s->cmdSaveRecords->isEnabled());
    const QString saved = QStringLiteral("Owners updated in KEVRO database");
    const auto stored = [this] {
        QStringList names = m_catalogue.column("SELECT OWNER_NAME FROM KEVRO_OWNERS", "OWNER_NAME");
        names.sort();
        return names;
    };

    // Both statements drop the apostrophe; an added row deleted before the save touches nothing.
    addRow(s, QStringLiteral("O'Reilly Software"));
    addRow(s, QStringLiteral("Throwaway"));
    boxes.queue(vbYes);
    Click(s->cmdDeleteRecord);
    addRow(s, QStringLiteral("Adobe"));
    pressForBox(boxes, s->cmdSaveRecords, saved, vbInformation);
    QCOMPARE(names(grid), (QStringList{"Adobe", "OReilly Software"}));

    // A key on the grid opens the box with that key; a click on another row puts the text into the row
    // it was typed for, before the move. (A row left blank goes as the clients' screen shows.)
    ClickRow(grid, 0, 1);
    QTest::keyClick(grid, 'A');
    QCOMPARE(s->txtEdit->text(), QStringLiteral("A"));
    QTest::keyClicks(s->txtEdit, "dobe Systems");
    QCOMPARE(cells(grid, 2)[0], QStringLiteral("Update"));
    ClickRow(grid, 1, 1);
    QCOMPARE(names(grid), (QStringList{"Adobe Systems", "OReilly Software"}));
    QVERIFY(s->txtEdit->isHidden());
    addRow(s, QStringLiteral("Corel"));
    pressForBox(boxes, s->cmdSaveRecords, saved, vbInformation);
    QCOMPARE(stored(), (QStringList{"Adobe Systems", "Corel", "OReilly Software"}));

    // The screen's own delete statement goes at once.
    boxes.queue(vbYes);
    ClickRow(grid, 0, 1);
    Click(s->cmdDeleteRecord);
    QCOMPARE(stored(), (QStringList{"Corel", "OReilly Software"}));

    Click(s->cmdBack);
    QVERIFY(!Forms::isLoaded<frmOwnerEntry>() && list->isVisible());
}

void TestCatalogueScreens::applications()
{
    if (!useEngine())
        QSKIP(noServer);
    m_catalogue.execute("INSERT INTO KEVRO_OWNERS (OWNER_NAME) VALUES ('Adobe')");
    m_catalogue.execute("INSERT INTO KEVRO_OWNERS (OWNER_NAME) VALUES ('Macromedia')");
    MsgBoxResponder boxes;
    auto *list = fromMainMenu<frmFileControl>(&frmMainMenu::cmdFileControl);
    QVERIFY(list);
    QCOMPARE(list->gridFiles->Rows(), 0);
    QVERIFY(!list->cmdEditRecord->isEnabled() && !list->cmdDeleteRecord->isEnabled());

    // Add: each missing piece is named in turn.
    Click(list->cmdAddRecord);
    auto *entry = Forms::get<frmFileEntry>();
    QVERIFY(entry->isVisible() && list->isHidden());
    QCOMPARE(entry->lblResultComment->text(), QStringLiteral("Add Application"));
    FlexGrid *grid = entry->gridAppComponents;
    QCOMPARE(grid->Rows(), 2);
    QCOMPARE(grid->TextMatrix(1, 3), QStringLiteral("Insert"));
    QCOMPARE(entry->drpOwnerName->count(), 2);
    boxes.queue(vbOK, 3);
    entry->cmdSave->setEnabled(true);
    Click(entry->cmdSave);
    entry->txtAppName->setText(QStringLiteral("O'Brien Flash Player"));
    Click(entry->cmdSave);
    entry->drpOwnerName->setCurrentIndex(entry->drpOwnerName->findText("Macromedia"));
    Click(entry->cmdSave);
    QCOMPARE(boxes.prompts(),
             (QStringList{"You must enter a filename",
                          "You must select an application owner.  Create application owners on the previous screen, "
                          "if none are available.",
                          "All application component fields must be completed before saving."}));

    // The components typed into the grid's floating box; a licence per product always requires one.
    const auto editCell = [grid, entry](int row, int col, const QString &text) {
        doubleClickCell(grid, row, col);
        typeName(entry->txtEdit, text);
        grid->setFocus();
    };
    editCell(1, 1, QStringLiteral("FLASH.OCX"));
    editCell(1, 2, QStringLiteral("Flash control"));
    Click(entry->cmdAddAppCompRecord);
    editCell(2, 1, QStringLiteral("FLASHUTIL.EXE"));
    editCell(2, 2, QStringLiteral("Flash's helper"));
    Click(entry->chkPerProductLicense);
    QVERIFY(entry->chkRequiresLicense->isChecked() && !entry->chkRequiresLicense->isEnabled());
    pressForBox(boxes, entry->cmdSave, QStringLiteral("Record added to KEVRO database"), vbInformation);
    QVERIFY(!Forms::isLoaded<frmFileEntry>() && list->isVisible());
    QCOMPARE(names(list->gridFiles), QStringList{"OBrien Flash Player"});
    QCOMPARE(
        m_catalogue.column("SELECT EXE_DESCRIPTION FROM KEVRO_APP_COMPONENTS ORDER BY EXE_NAME", "EXE_DESCRIPTION"),
        (QStringList{"Flash control", "Flashs helper"}));
    QCOMPARE(m_catalogue.column("SELECT CAST(APP_REQUIRES_LICENSE AS INTEGER) AS R FROM KEVRO_APPS", "R"),
             QStringList{"1"});
    const QString stamp = m_catalogue.column("SELECT APP_DATE_EDITED FROM KEVRO_APPS", "APP_DATE_EDITED").value(0);
    QVERIFY(!stamp.isEmpty());

    // Edit: the record and its components come back; a component deleted and then Back stays deleted,
    // the other changes are lost.
    ClickRow(list->gridFiles, 0, 1);
    QVERIFY(list->cmdEditRecord->isEnabled() && list->cmdDeleteRecord->isEnabled());
    Click(list->cmdEditRecord);
    entry = Forms::get<frmFileEntry>();
    QCOMPARE(entry->lblResultComment->text(), QStringLiteral("Edit Application"));
    QCOMPARE(entry->txtAppName->text(), QStringLiteral("OBrien Flash Player"));
    QCOMPARE(entry->drpOwnerName->currentText(), QStringLiteral("Macromedia"));
    QVERIFY(entry->chkPerProductLicense->isChecked() && entry->chkRequiresLicense->isChecked());
    QVERIFY(!entry->chkRequiresLicense->isEnabled()); // still locked when opened
    grid = entry->gridAppComponents;
    QCOMPARE(grid->Rows(), 3);
    entry->txtAppName->setText(QStringLiteral("Renamed"));
    press(boxes, entry->cmdDelete, vbYes);
    QCOMPARE(boxes.prompts(), QStringList{"Are you sure you want to delete this component?"});
    QCOMPARE(grid->Rows(), 2);
    Click(entry->cmdBack);
    QVERIFY(!Forms::isLoaded<frmFileEntry>() && list->isVisible());
    QCOMPARE(names(list->gridFiles), QStringList{"OBrien Flash Player"});
    QCOMPARE(m_catalogue.column("SELECT EXE_NAME FROM KEVRO_APP_COMPONENTS", "EXE_NAME").size(), 1);

    // Its owner deleted meanwhile: the application opens with no owner, and must be given one.
    m_catalogue.execute("DELETE FROM KEVRO_OWNERS WHERE OWNER_NAME = 'Macromedia'");
    list->gridFiles->setRow(0);
    QTest::mouseDClick(list->gridFiles->viewport(), Qt::LeftButton, Qt::NoModifier, CellCentre(list->gridFiles, 0, 1));
    entry = Forms::get<frmFileEntry>();
    QVERIFY(entry->isVisible());
    QCOMPARE(entry->drpOwnerName->currentText(), QString());
    press(boxes, entry->cmdSave, vbOK, 2);
    QVERIFY(boxes.prompts().value(0).startsWith(QStringLiteral("You must select an application owner.")));
    entry->drpOwnerName->setCurrentIndex(entry->drpOwnerName->findText("Adobe"));
    Click(entry->cmdSave);
    QCOMPARE(boxes.prompts().value(1), QStringLiteral("Record updated in KEVRO database"));
    QCOMPARE(m_catalogue.column("SELECT APP_DATE_EDITED FROM KEVRO_APPS", "APP_DATE_EDITED").value(0), stamp);

    // Delete from the list: the application goes, its components stay.
    QVERIFY(!list->cmdDeleteRecord->isEnabled()); // back from the entry screen: until the grid is clicked
    ClickRow(list->gridFiles, 0, 1);
    press(boxes, list->cmdDeleteRecord, vbYes);
    QCOMPARE(boxes.prompts(), QStringList{sureToDelete});
    QCOMPARE(list->gridFiles->Rows(), 0);
    QCOMPARE(m_catalogue.column("SELECT EXE_NAME FROM KEVRO_APP_COMPONENTS", "EXE_NAME").size(), 1);

    // The clipboard monitor takes web addresses and wipes whatever the clipboard holds.
    Click(list->cmdAddRecord);
    entry = Forms::get<frmFileEntry>();
    Click(entry->lblCheckClipboard);
    QApplication::clipboard()->setText(QStringLiteral("ftp://example.com/eula"));
    QTRY_COMPARE(QApplication::clipboard()->text(), QString());
    QCOMPARE(entry->txtWebLicense->text(), QString());
    QApplication::clipboard()->setText(QStringLiteral("http://www.example.com/eula.html"));
    QTRY_COMPARE(entry->txtWebLicense->text(), QStringLiteral("http://www.example.com/eula.html"));
    QTRY_COMPARE(QApplication::clipboard()->text(), QString());
    Click(entry->lblCheckClipboard);
    QApplication::clipboard()->setText(QStringLiteral("www.kept.example"));
    QTest::qWait(250);
    QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("www.kept.example"));
    Click(entry->cmdBack);

    Click(list->cmdPrevious);
    QVERIFY(!Forms::isLoaded<frmFileControl>() && Forms::get<frmMainMenu>()->isVisible());
}

// The component grid of an application as the operator edits it: deletes act on a component and never
// on the heading, what is typed after the last component went is saved, a save that failed half way is
// not written twice by the next; the application keeps its own owner among owners of one name; every
// caption of the screen reads whole.
void TestCatalogueScreens::applicationComponents()
{
    if (!useEngine())
        QSKIP(noServer);
    m_catalogue.execute("INSERT INTO KEVRO_OWNERS (OWNER_NAME) VALUES ('Acme')");
    m_catalogue.execute("INSERT INTO KEVRO_OWNERS (OWNER_NAME) VALUES ('Acme')");
    const QString secondAcme =
        m_catalogue.column("SELECT OWNER_ID FROM KEVRO_OWNERS ORDER BY OWNER_ID", "OWNER_ID").value(1);
    m_catalogue.addApp(QStringLiteral("Reader"), {QStringLiteral("READER.EXE")}, true);
    m_catalogue.execute("UPDATE KEVRO_APPS SET APP_OWNER = " + secondAcme);
    m_catalogue.execute("UPDATE KEVRO_APP_COMPONENTS SET EXE_DESCRIPTION = 'Part'");
    const auto components = [this] {
        return m_catalogue.column("SELECT EXE_NAME FROM KEVRO_APP_COMPONENTS ORDER BY EXE_NAME", "EXE_NAME");
    };
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    MsgBoxResponder boxes;
    auto *list = fromMainMenu<frmFileControl>(&frmMainMenu::cmdFileControl);
    QVERIFY(list);
    ClickRow(list->gridFiles, 0, 1);
    Click(list->cmdEditRecord);
    auto *entry = Forms::get<frmFileEntry>();
    QVERIFY(entry->isVisible());
    FlexGrid *grid = entry->gridAppComponents;
    // Name and description of each component, typed into rows 1, 2, ... of the grid.
    const auto typeComponents = [&](const QStringList &texts, bool addRows) {
        for (int i = 0; i < texts.size(); ++i) {
            if (addRows && i % 2 == 0)
                Click(entry->cmdAddAppCompRecord);
            doubleClickCell(grid, 1 + i / 2, 1 + i % 2);
            typeName(entry->txtEdit, texts[i]);
            QTest::keyClick(entry->txtEdit, Qt::Key_Return);
        }
    };

    // Every caption reads whole, within its frame, in the desktop's own font.
    for (auto *caption : entry->findChildren<QWidget *>()) {
        auto *label = qobject_cast<QLabel *>(caption);
        auto *check = qobject_cast<QCheckBox *>(caption);
        if (!caption->isVisible() || !(label ? !label->text().isEmpty() : check && !check->text().isEmpty()))
            continue;
        QVERIFY2(caption->sizeHint().width() <= caption->width(), qPrintable(caption->objectName()));
        if (auto *frame = qobject_cast<QGroupBox *>(caption->parentWidget()))
            QVERIFY2(caption->geometry().right() <= frame->contentsRect().right(), qPrintable(caption->objectName()));
    }

    // Delete straight after the load takes the component, and the heading stays. A double click on the
    // grid with no component opens nothing and ends nothing.
    boxes.queue(vbYes, 2);
    Click(entry->cmdDelete);
    QCOMPARE(names(grid), QStringList{"File Name"});
    QCOMPARE(components(), QStringList());
    QVERIFY(!entry->cmdDelete->isEnabled());
    QTest::mouseDClick(grid->viewport(), Qt::LeftButton, Qt::NoModifier, grid->viewport()->rect().center());
    QVERIFY(entry->txtEdit->isHidden());

    // Components typed now are saved with the application, which keeps its owner; Delete after an
    // edit in place takes the row edited.
    typeComponents({"VIEWER.EXE", "Viewer", "SPARE.EXE", "Spare"}, true);
    Click(entry->cmdDelete);
    QCOMPARE(names(grid), (QStringList{"File Name", "VIEWER.EXE"}));
    pressForBox(boxes, entry->cmdSave, QStringLiteral("Record updated in KEVRO database"), vbInformation);
    QCOMPARE(components(), QStringList{"VIEWER.EXE"});
    QCOMPARE(m_catalogue.column("SELECT APP_OWNER FROM KEVRO_APPS", "APP_OWNER"), QStringList{secondAcme});
    QCOMPARE(ended, QList<int>());

    // A new application whose second component the catalogue refuses: the general message, and the
    // save after it is mended adds neither the application nor the first component a second time.
    m_catalogue.refuseInsert(QStringLiteral("KEVRO_APP_COMPONENTS"), QStringLiteral("EXE_NAME"),
                             QStringLiteral("BAD.EXE"));
    Click(list->cmdAddRecord);
    entry = Forms::get<frmFileEntry>();
    grid = entry->gridAppComponents;
    entry->txtAppName->setText(QStringLiteral("Player"));
    entry->drpOwnerName->setCurrentIndex(0);
    Click(entry->cmdAddAppCompRecord);
    typeComponents({"PLAYER.EXE", "Player", "BAD.EXE", "Codec"}, false);
    press(boxes, entry->cmdSave, vbOK, 2);
    QCOMPARE(boxes.prompts(), QStringList{"Error -2147467259 occurred.  Can not save record."});
    QVERIFY(entry->isVisible());
    doubleClickCell(grid, 2, 1);
    typeName(entry->txtEdit, QStringLiteral("CODEC.DLL"));
    Click(entry->cmdSave);
    QCOMPARE(boxes.prompts().last(), QStringLiteral("Record added to KEVRO database"));
    QCOMPARE(m_catalogue.column("SELECT APP_NAME FROM KEVRO_APPS ORDER BY APP_NAME", "APP_NAME"),
             (QStringList{"Player", "Reader"}));
    QCOMPARE(components(), (QStringList{"CODEC.DLL", "PLAYER.EXE", "VIEWER.EXE"}));
}

// An unknown program added to the catalogue from the application viewer, a licence for it added on the
// licence screens, and the next judgement of the same disc finds it licensed.
void TestCatalogueScreens::licencesTurnAVerdict()
{
    if (!useEngine())
        QSKIP(noServer);
    m_catalogue.execute("INSERT INTO KEVRO_OWNERS (OWNER_NAME) VALUES ('Acme')");
    const long client = m_catalogue.addClient(QStringLiteral("Northwind Discs"));
    gClientCode = QString::number(client);
    gClientName = QStringLiteral("Northwind Discs");
    Disc disc;
    disc.add(QStringLiteral("SETUP/CHAT.EXE"));
    gMediaFiles = disc.files();
    MsgBoxResponder boxes;
    const QString added = QStringLiteral("Record added to KEVRO database");
    const QString updated = QStringLiteral("Record updated in KEVRO database");

    // From the viewer's unknown programs to the entry screen and back; the viewer is not judged again.
    auto *viewer = Forms::get<frmScanResultsEXEs>();
    viewer->show();
    QCOMPARE(viewer->gridUnknownEXEs->TextMatrix(1, 2), QStringLiteral("CHAT.EXE"));
    viewer->gridUnknownEXEs->setRow(1);
    viewer->mnuContextUnknownAddToFileDb->trigger();
    auto *entry = Forms::get<frmFileEntry>();
    QVERIFY(entry->isVisible() && viewer->isHidden());
    QCOMPARE(entry->txtAppName->text(), QStringLiteral("CHAT.EXE"));
    entry->drpOwnerName->setCurrentIndex(0);
    Click(entry->chkRequiresLicense);
    FlexGrid *components = entry->gridAppComponents;
    components->setTextMatrix(1, 1, QStringLiteral("CHAT.EXE"));
    components->setTextMatrix(1, 2, QStringLiteral("Chat client"));
    pressForBox(boxes, entry->cmdSave, added, vbInformation);
    QVERIFY(!Forms::isLoaded<frmFileEntry>() && viewer->isVisible());
    QCOMPARE(viewer->gridUnknownEXEs->Rows(), 2);
    QCOMPARE(EvaluateExecutables(gMediaFiles, gClientCode).unlicensed.size(), 1);

    // The client's licences: none yet, so edit and delete do nothing.
    auto *list = Forms::get<frmLicenseControl>();
    list->DisplayLicenseDetails();
    list->show();
    QCOMPARE(list->lblResultComment->text(), QStringLiteral("Licenses for Northwind Discs"));
    QCOMPARE(list->gridLicenses->Rows(), 0);
    QVERIFY(!list->cmdEditRecord->isEnabled() && !list->cmdDeleteRecord->isEnabled());
    list->ConfirmDelete();
    QVERIFY(!Forms::isLoaded<frmLicenseEntry>());

    // A permanent licence, saved with empty dates; Save comes back for a further entry.
    Click(list->cmdAddRecord);
    auto *lic = Forms::get<frmLicenseEntry>();
    QVERIFY(lic->isVisible() && list->isHidden());
    QCOMPARE(lic->lblResultComment->text(), QStringLiteral("Add License for Northwind Discs"));
    QCOMPARE(lic->drpLicenseFile->count(), 1);
    QCOMPARE(lic->drpLicenseFile->currentText(), QString()); // nothing chosen for the operator
    // Only a listed application can be chosen: the name of one that needs no licence, typed, is none.
    m_catalogue.addApp(QStringLiteral("Freeware"), {}, false);
    QTest::keyClicks(lic->drpLicenseFile, "Freeware");
    press(boxes, lic->cmdSave, vbOK, 3);
    lic->drpLicenseFile->setCurrentIndex(0);
    Click(lic->cmdSave);
    QCOMPARE(boxes.prompts(),
             (QStringList{"You must select an application to license", "You must enter a start and end date"}));
    Click(lic->chkPerminantLicense);
    QVERIFY(!lic->txtStartDate->isEnabled() && !lic->txtEndDate->isEnabled());
    Click(lic->cmdSave);
    QCOMPARE(boxes.prompts().last(), added);
    QVERIFY(lic->cmdSave->isEnabled());
    QCOMPARE(m_catalogue.column("SELECT LICENSE_VALID_FROM FROM KEVRO_LICENSES", "LICENSE_VALID_FROM"),
             QStringList{QString()});
    Click(lic->cmdBack);
    QVERIFY(!Forms::isLoaded<frmLicenseEntry>() && list->isVisible());
    QCOMPARE(names(list->gridLicenses), QStringList{"CHAT.EXE"});
    const ExeEvaluation judged = EvaluateExecutables(gMediaFiles, gClientCode);
    QCOMPARE(judged.licensed.size(), 1);
    QCOMPARE(judged.unlicensed.size(), 0);

    // The context menu's entry edits without filling the list: the name shows all the same and the
    // licence saves unchanged.
    ClickRow(list->gridLicenses, 0, 1);
    list->mnuLicenseGridContextAdd->trigger();
    lic = Forms::get<frmLicenseEntry>();
    QCOMPARE(lic->drpLicenseFile->currentText(), QStringLiteral("CHAT.EXE"));
    pressForBox(boxes, lic->cmdSave, updated, vbInformation);
    Click(lic->cmdBack);

    // Edited into a licence with a period: texts that are no date keep the focus until mended. Dates
    // typed as the station writes its short dates, with its separator where that is one a date takes.
    const QString order = LocaleDateOrder();
    const QString shortDate = QLocale::system().dateFormat(QLocale::ShortFormat);
    QString separator = order == QLatin1String("YMD") ? QStringLiteral("-") : QStringLiteral("/");
    for (const QString &c : {QStringLiteral("-"), QStringLiteral("."), QStringLiteral("/")})
        if (shortDate.contains(c))
            separator = c;
    const auto date = [&](int d, int m, int y) {
        const auto [a, b, c] = order == QLatin1String("DMY")   ? std::array{d, m, y}
                               : order == QLatin1String("MDY") ? std::array{m, d, y}
                                                               : std::array{y, m, d};
        return QString::number(a) + separator + QString::number(b) + separator + QString::number(c);
    };
    const QString otherOrder = order == "MDY" ? QStringLiteral("31/12/2026") : QStringLiteral("12/31/2026");
    doubleClickCell(list->gridLicenses, 0, 1);
    lic = Forms::get<frmLicenseEntry>();
    QVERIFY(lic->isVisible());
    QCOMPARE(lic->lblResultComment->text(), QStringLiteral("Edit License for Northwind Discs"));
    QVERIFY(lic->chkPerminantLicense->isChecked() && !lic->txtStartDate->isEnabled());
    Click(lic->chkPerminantLicense);
    QVERIFY(lic->txtStartDate->isEnabled());
    lic->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(lic));
    boxes.clear();
    boxes.queue(vbOK, 3);
    for (const QString &bad : {date(31, 2, 2026), QStringLiteral("tomorrow"), otherOrder}) {
        lic->txtStartDate->setFocus();
        lic->txtStartDate->setText(bad);
        lic->txtEndDate->setFocus();
        QVERIFY2(lic->txtStartDate->hasFocus(), qPrintable(bad));
    }
    QCOMPARE(boxes.prompts(), QStringList(3, "Invalid date."));
    lic->txtStartDate->setText(date(15, 10, 2026));
    lic->txtEndDate->setFocus();
    lic->txtEndDate->setText(date(31, 12, 2026));
    pressForBox(boxes, lic->cmdSave, updated, vbInformation);
    QCOMPARE(m_catalogue.column("SELECT LICENSE_PERMINANT FROM KEVRO_LICENSES", "LICENSE_PERMINANT").size(), 1);
    Click(lic->cmdBack);
    // Opened again, the dates read as they were typed, whether the engine kept the text or a date.
    ClickRow(list->gridLicenses, 0, 1);
    Click(list->cmdEditRecord);
    lic = Forms::get<frmLicenseEntry>();
    QCOMPARE(lic->txtStartDate->text(), date(15, 10, 2026));
    QCOMPARE(lic->txtEndDate->text(), date(31, 12, 2026));
    Click(lic->cmdBack);

    // Deleted, after the question: the grid empties and edit is no longer possible.
    ClickRow(list->gridLicenses, 0, 1);
    press(boxes, list->cmdDeleteRecord, vbYes);
    QCOMPARE(boxes.prompts(), QStringList{sureToDelete});
    QCOMPARE(list->gridLicenses->Rows(), 0);
    QVERIFY(!list->cmdEditRecord->isEnabled());

    // With no application that takes a licence per client, adding is refused and the screen stays.
    m_catalogue.execute("UPDATE KEVRO_APPS SET APP_LICENSE_PER_MEDIA = TRUE");
    press(boxes, list->cmdAddRecord);
    QCOMPARE(boxes.prompts(), QStringList{"There are no applications in the KEVRO database!"});
    QVERIFY(list->isVisible());

    // An application deleted while its licence is open: Save cannot find it and stays off. A licence
    // deleted meanwhile opens with empty fields.
    m_catalogue.execute("UPDATE KEVRO_APPS SET APP_LICENSE_PER_MEDIA = FALSE");
    Click(list->cmdAddRecord);
    lic = Forms::get<frmLicenseEntry>();
    lic->drpLicenseFile->setCurrentIndex(0);
    lic->chkPerminantLicense->setChecked(true);
    press(boxes, lic->cmdSave, vbOK, 3);
    Click(lic->cmdBack);
    QCOMPARE(list->gridLicenses->Rows(), 1);
    m_catalogue.execute("DELETE FROM KEVRO_LICENSES");
    ClickRow(list->gridLicenses, 0, 1);
    Click(list->cmdEditRecord);
    lic = Forms::get<frmLicenseEntry>();
    QVERIFY(lic->isVisible());
    QCOMPARE(boxes.prompts().value(1), QStringLiteral("Record no longer exists"));
    QCOMPARE(lic->drpLicenseFile->currentText(), QString());
    QVERIFY(!lic->chkPerminantLicense->isChecked() && lic->txtStartDate->text().isEmpty());
    lic->drpLicenseFile->setCurrentIndex(0);
    lic->chkPerminantLicense->setChecked(true);
    m_catalogue.execute("DELETE FROM KEVRO_APPS");
    Click(lic->cmdSave);
    QCOMPARE(boxes.prompts().value(2),
             QStringLiteral("Error: could not find selected EXE in database, can not save record."));
    QVERIFY(!lic->cmdSave->isEnabled());
    Click(lic->cmdBack);
    QCOMPARE(list->gridLicenses->Rows(), 0);
    Click(list->cmdPrevious);
    QVERIFY(!Forms::isLoaded<frmLicenseControl>() && Forms::get<frmMainMenu>()->isVisible());
}

// The licence entry's date test, in the machine's own day/month order.
void TestCatalogueScreens::datesAsTheDatabaseReadsThem()
{
    const QString order = LocaleDateOrder();
    const auto text = [&](const QString &d, const QString &m, const QString &y, const QString &sep) {
        return order == "DMY" ? d + sep + m + sep + y : order == "MDY" ? m + sep + d + sep + y : y + sep + m + sep + d;
    };
    for (const QString &sep : {QStringLiteral("/"), QStringLiteral("-"), QStringLiteral(".")}) {
        QVERIFY(IsValidDate(text("31", "12", "2026", sep)));
        QVERIFY(IsValidDate(text("1", "2", "26", sep)));     // 2026
        QVERIFY(IsValidDate(text("29", "2", "2024", sep)));  // a leap day
        QVERIFY(!IsValidDate(text("29", "2", "2026", sep))); // not one
        QVERIFY(!IsValidDate(text("31", "4", "2026", sep)));
        QVERIFY(!IsValidDate(text("0", "1", "2026", sep)));
        QVERIFY(!IsValidDate(text("1", "13", "2026", sep)));
    }
    QVERIFY(IsValidDate(QStringLiteral("2026-12-31"))); // year first is read in every order
    QVERIFY(IsValidDate(QStringLiteral(" 2026-01-05 ")));
    // Texts that are no date, and the other day/month order where it cannot be one.
    for (const QString &no : {QStringLiteral("tomorrow"), QString(), QStringLiteral("2026"), QStringLiteral("1/2"),
                              QStringLiteral("1/2/3/4"), QStringLiteral("1/2-2026"), QStringLiteral("31/12/2026 12:00"),
                              QStringLiteral("12/31/2026x"), QStringLiteral("2026-13-01"), QStringLiteral("1/1/202"),
                              order == "MDY" ? QStringLiteral("31/12/2026") : QStringLiteral("12/31/2026")})
        QVERIFY2(!IsValidDate(no), qPrintable(no));
}

QTEST_MAIN(TestCatalogueScreens)
#include "tst_catalogue_screens.moc"
