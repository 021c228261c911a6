// The catalogue screens as the plant's staff use them, on SQLite and on the test run's PostgreSQL
// server: clients, owners, applications with their components, and licences, each added, edited in
// place, saved and deleted; the apostrophe that an update strips and an insert trips over; the failures
// the database reports; the import of clients from a text file; and the way back to the main menu.

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
#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "platform/MsgBox.h"
#include "review/ExeEvaluation.h"
#include "review/frmScanResultsEXEs.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/frmMainMenu.h"

#include <QApplication>
#include <QCheckBox>
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

const QString clientsSaved = QStringLiteral("Clients updated in KEVRO database");
const QString sureToDelete = QStringLiteral("Are you sure you want to delete this record?");
const QString added = QStringLiteral("Record added to KEVRO database");
const QString updated = QStringLiteral("Record updated in KEVRO database");

// The names column of a grid, row by row.
QStringList names(FlexGrid *grid)
{
    QStringList out;
    for (int r = 0; r < grid->Rows(); ++r)
        out << grid->TextMatrix(r, 1);
    return out;
}

// Types a name into the floating box as a person does: what the box held is replaced.
void typeName(QLineEdit *box, const QString &text)
{
    QVERIFY(box->isVisible());
    box->selectAll();
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

// A click that shows exactly this one box, answered OK.
void pressForBox(MsgBoxResponder &boxes, QWidget *button, const QString &prompt)
{
    press(boxes, button);
    QCOMPARE(boxes.prompts(), QStringList{prompt});
}

// Components' names and descriptions typed into the grid from a row on, a row added for each if asked.
void typeComponents(frmFileEntry *entry, int row, const QStringList &texts, bool addRows)
{
    for (int i = 0; i < texts.size(); ++i) {
        if (addRows && i % 2 == 0)
            Click(entry->cmdAddAppCompRecord);
        doubleClickCell(entry->gridAppComponents, row + i / 2, 1 + i % 2);
        typeName(entry->txtEdit, texts[i]);
        QTest::keyClick(entry->txtEdit, Qt::Key_Return);
    }
}

// The screen a button of the main menu leads to; null unless the screen came and the menu went.
template <class Screen> Screen *fromMainMenu(QToolButton *frmMainMenu::*button)
{
    auto *menu = Forms::get<frmMainMenu>();
    menu->show();
    Click(menu->*button);
    auto *s = Forms::get<Screen>();
    return s->isVisible() && !Forms::isLoaded<frmMainMenu>() ? s : nullptr;
}

// A date as the station writes its short dates: its day/month order, the separator given.
QString typedDate(int d, int m, int y, const QString &sep)
{
    const QString order = LocaleDateOrder();
    const auto [a, b, c] = order == "DMY" ? std::array{d, m, y} : order == "MDY" ? std::array{m, d, y}
                                                                                  : std::array{y, m, d};
    return QString::number(a) + sep + QString::number(b) + sep + QString::number(c);
}

} // namespace

class TestCatalogueScreens final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase_data();
    void initTestCase();
    void init();
    void cleanup();
    void clients();
    void ownersAndApplications();
    void applicationComponents();
    void licencesTurnAVerdict();
    void datesAsTheDatabaseReadsThem();

private:
    // One column of a table, sorted.
    QStringList stored(const QString &table = "KEVRO_CLIENTS", const QString &column = "CLIENT_NAME");

    TempAppFolder m_app;
    CatalogueFixture m_catalogue;
    QString m_engine;
};

void TestCatalogueScreens::initTestCase()
{
    InstallScreenServices();
    RefuseBoxesWithoutResponder();
}

void TestCatalogueScreens::cleanup()
{
    SetEndProcessHook(nullptr);
    Forms::unload<frmClientControl>();
    Forms::unload<frmOwnerEntry>();
    Forms::unload<frmFileEntry>();
    Forms::unload<frmFileControl>();
    Forms::unload<frmLicenseEntry>();
    Forms::unload<frmLicenseControl>();
    Forms::unload<frmScanResultsEXEs>();
    Forms::unload<frmMainMenu>();
}

void TestCatalogueScreens::initTestCase_data()
{
    QTest::addColumn<QString>("engine");
    QTest::newRow("sqlite") << QStringLiteral("sqlite");
    QTest::newRow("postgresql") << QStringLiteral("postgresql");
}

// Every case on a new catalogue of the row's engine.
void TestCatalogueScreens::init()
{
    QFETCH_GLOBAL(QString, engine);
    m_engine = engine;
    if (engine == QLatin1String("postgresql") && !CatalogueFixture::postgresAvailable()) {
        if (qEnvironmentVariableIsSet("CI"))
            QFAIL("KEVRO_TEST_PG is not set: CI must run the PostgreSQL tests (make test starts the server)");
        QSKIP("no PostgreSQL server: run through `make test`, which starts one");
    }
    QCOMPARE(m_catalogue.create(engine, m_app.path()), QString());
}

QStringList TestCatalogueScreens::stored(const QString &table, const QString &column)
{
    QStringList out = m_catalogue.column("SELECT " + column + " FROM " + table, column);
    out.sort();
    return out;
}

void TestCatalogueScreens::clients()
{
    MsgBoxResponder boxes;
    auto *s = fromMainMenu<frmClientControl>(&frmMainMenu::cmdClients);
    QVERIFY(s);
    FlexGrid *grid = s->gridClients;
    QLineEdit *box = s->txtEdit;

    // An empty table: neither delete nor save until Add Record; the box's text goes into its row first.
    QVERIFY(!s->cmdDeleteRecord->isEnabled() && !s->cmdSaveRecords->isEnabled());
    Click(s->cmdAddRecord);
    QVERIFY(s->cmdDeleteRecord->isEnabled() && s->cmdSaveRecords->isEnabled());
    typeName(box, "Northwind Discs");
    addRow(s, "Contoso Média");
    pressForBox(boxes, s->cmdSaveRecords, clientsSaved);
    QCOMPARE(stored(), (QStringList{"Contoso Média", "Northwind Discs"}));

    // Quotes and percent signs are plain text to the catalogue. A name past the column's 255 characters
    // is a value the server's column cannot take: the save's general message; SQLite keeps it.
    const bool server = m_engine == QLatin1String("postgresql");
    addRow(s, "\"Quoted\" 100% Discs");
    Click(s->cmdAddRecord);
    box->setText(QString(300, QLatin1Char('L')));
    pressForBox(boxes, s->cmdSaveRecords, server ? "Error -2147217913 occurred.  Can not save record." : clientsSaved);
    QVERIFY(stored().contains("\"Quoted\" 100% Discs"));
    QCOMPARE(stored().contains(QString(300, QLatin1Char('L'))), !server);
    m_catalogue.execute("DELETE FROM KEVRO_CLIENTS WHERE CLIENT_NAME LIKE '%Quoted%' OR CLIENT_NAME LIKE 'LLL%'");
    s->ShowDBClients();

    // Another program holding the catalogue locked through the save: the general message, not the
    // apostrophe's; the row is saved once the lock is gone.
    if (!server) {
        {
            QSqlDatabase holder = QSqlDatabase::addDatabase("QSQLITE", "holder");
            holder.setDatabaseName(m_app.file("kevro.db"));
            QVERIFY(holder.open() && QSqlQuery(holder).exec("BEGIN EXCLUSIVE"));
            addRow(s, "Fabrikam");
            pressForBox(boxes, s->cmdSaveRecords, "Error -2147217871 occurred.  Can not save record.");
        }
        QSqlDatabase::removeDatabase("holder");
        pressForBox(boxes, s->cmdSaveRecords, clientsSaved);
        QCOMPARE(stored(), (QStringList{"Contoso Média", "Fabrikam", "Northwind Discs"}));
        m_catalogue.execute("DELETE FROM KEVRO_CLIENTS WHERE CLIENT_NAME = 'Fabrikam'");
        s->ShowDBClients();
    }

    // An existing name changed to one with an apostrophe is saved without it; a new one is refused.
    // Rows written before the failure stay written, and the save after the name is mended does not
    // write them a second time.
    doubleClickCell(grid, 0, 1);
    typeName(box, "O'Brien Media");
    addRow(s, "Adatum");
    addRow(s, "O'Neil Pressing");
    pressForBox(boxes, s->cmdSaveRecords, "Can not use ' character in filenames or descriptions.");
    QCOMPARE(stored(), (QStringList{"Adatum", "Northwind Discs", "OBrien Media"}));
    doubleClickCell(grid, 3, 1);
    typeName(box, "ONeil Pressing");
    pressForBox(boxes, s->cmdSaveRecords, clientsSaved);
    const QStringList four{"Adatum", "Northwind Discs", "OBrien Media", "ONeil Pressing"};
    QCOMPARE(stored(), four);

    // An empty new name: the database's rule, and the message; the row, never saved, goes without a statement.
    addRow(s, QString());
    pressForBox(boxes, s->cmdSaveRecords, "All fields must be completed before saving.");
    boxes.queue(vbYes);
    Click(s->cmdDeleteRecord);
    QCOMPARE(grid->Rows(), 4);
    QCOMPARE(stored(), four);

    // A saved client's delete goes at once; deleting the last row disables delete and save.
    s->ShowDBClients();
    boxes.queue(vbYes, 4);
    for (const int row : {1, 0, 0, 0}) {
        ClickRow(grid, row, 1);
        Click(s->cmdDeleteRecord);
        QCOMPARE(stored().contains("Northwind Discs"), false); // the row clicked, not the first
    }
    QCOMPARE(stored(), QStringList());
    QCOMPARE(grid->Rows(), 0);
    QVERIFY(!s->cmdDeleteRecord->isEnabled() && !s->cmdSaveRecords->isEnabled());

    // Import. Neither road is chosen for the operator: without a choice nothing is imported.
    s->txtFilePath->setText(WriteTestFile(m_app.file("clients.txt"),
                                          QByteArray("Alpha Records\r\nBeta Pressing\nCaf\xe9 Discs\r\nDelta\n")));
    pressForBox(boxes, s->cmdImport, "Choose Replace or Append before importing.  Nothing was imported.");
    QCOMPARE(stored(), QStringList());

    // Replace: every client goes before the first line; CR LF and LF lines, a line in the Windows
    // code page. Append; then a file that is not there, and a folder.
    const QString imported = QStringLiteral("Import completed sucessfully.");
    Click(s->optReplace);
    pressForBox(boxes, s->cmdImport, imported);
    QCOMPARE(stored(), (QStringList{"Alpha Records", "Beta Pressing", "Café Discs", "Delta"}));
    QCOMPARE(names(s->gridClients), stored());
    Click(s->optAppend);
    s->txtFilePath->setText(WriteTestFile(m_app.file("more.txt"), "Echo Media\n"));
    pressForBox(boxes, s->cmdImport, imported);
    QCOMPARE(stored().size(), 5);
    for (const QString &notAFile : {m_app.file("gone.txt"), m_app.path()}) {
        s->txtFilePath->setText(notAFile);
        pressForBox(boxes, s->cmdImport, "File does not exist!");
    }
    QCOMPARE(stored().size(), 5);

    // A line with an apostrophe, and a blank line, are statements the database refuses: the platform's
    // message and the end of the program; the lines before stay imported, after a replace too.
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    Click(s->optReplace);
    const QList<QPair<QByteArray, QString>> refused{{"Foxtrot\nO'Hara Sound\nGolf\n", "Foxtrot"},
                                                    {"Hotel\n\nIndia\n", "Hotel"}};
    for (const auto &[bad, kept] : refused) {
        s->txtFilePath->setText(WriteTestFile(m_app.file("bad.txt"), bad));
        press(boxes, s->cmdImport);
        QVERIFY(boxes.prompts().value(0).startsWith("Run-time error '"));
        QCOMPARE(stored(), QStringList{kept});
    }
    QCOMPARE(ended, (QList<int>{1, 1}));

    // Back: the main menu at this screen's place; rows not saved are dropped without a question.
    addRow(s, "Never Saved");
    s->Move(9600, 7200);
    const QPoint place = s->pos();
    Click(s->cmdPrevious);
    auto *menu = Forms::get<frmMainMenu>();
    QVERIFY(!Forms::isLoaded<frmClientControl>() && menu->isVisible());
    QCOMPARE(menu->pos(), place);
    QCOMPARE(menu->cmbClientName->count(), 1);
}

void TestCatalogueScreens::ownersAndApplications()
{
    MsgBoxResponder boxes;
    auto *list = fromMainMenu<frmFileControl>(&frmMainMenu::cmdFileControl);
    QVERIFY(list);
    Click(list->cmdOwners);
    auto *s = Forms::get<frmOwnerEntry>();
    QVERIFY(s->isVisible() && list->isHidden());
    FlexGrid *grid = s->gridOwners;
    const QString saved = QStringLiteral("Owners updated in KEVRO database");
    const auto owners = [this] { return stored("KEVRO_OWNERS", "OWNER_NAME"); };

    // Both statements drop the apostrophe; an added row deleted before the save touches nothing.
    addRow(s, "O'Reilly Software");
    addRow(s, "Throwaway");
    boxes.queue(vbYes);
    Click(s->cmdDeleteRecord);
    addRow(s, "Adobe");
    pressForBox(boxes, s->cmdSaveRecords, saved);

    // A key on the grid opens the box with that key; a click on another row puts the text into the row
    // it was typed for, before the move.
    ClickRow(grid, 0, 1);
    QTest::keyClick(grid, 'A');
    QTest::keyClicks(s->txtEdit, "dobe Systems");
    ClickRow(grid, 1, 1);
    QCOMPARE(names(grid), (QStringList{"Adobe Systems", "OReilly Software"}));
    QVERIFY(s->txtEdit->isHidden());
    addRow(s, "Corel");
    pressForBox(boxes, s->cmdSaveRecords, saved);
    QCOMPARE(owners(), (QStringList{"Adobe Systems", "Corel", "OReilly Software"}));

    // The screen's own delete statement goes at once.
    boxes.queue(vbYes);
    ClickRow(grid, 0, 1);
    Click(s->cmdDeleteRecord);
    QCOMPARE(owners(), (QStringList{"Corel", "OReilly Software"}));

    Click(s->cmdBack);
    QVERIFY(!Forms::isLoaded<frmOwnerEntry>() && list->isVisible());

    // An application added, its owner one the owner screen left: each missing piece is named in turn.
    Click(list->cmdAddRecord);
    auto *entry = Forms::get<frmFileEntry>();
    QVERIFY(entry->isVisible() && list->isHidden());
    entry->cmdSave->setEnabled(true);
    press(boxes, entry->cmdSave, vbOK, 3);
    entry->txtAppName->setText("O'Brien Flash Player");
    Click(entry->cmdSave);
    entry->drpOwnerName->setCurrentIndex(entry->drpOwnerName->findText("OReilly Software"));
    Click(entry->cmdSave);
    QCOMPARE(boxes.prompts(),
             (QStringList{"You must enter a filename",
                          "You must select an application owner.  Create application owners on the previous screen, "
                          "if none are available.",
                          "All application component fields must be completed before saving."}));

    // The components typed into the grid's floating box; a licence per product always requires one.
    typeComponents(entry, 1, {"FLASH.OCX", "Flash control"}, false);
    typeComponents(entry, 2, {"FLASHUTIL.EXE", "Flash's helper"}, true);
    Click(entry->chkPerProductLicense);
    QVERIFY(entry->chkRequiresLicense->isChecked() && !entry->chkRequiresLicense->isEnabled());
    pressForBox(boxes, entry->cmdSave, added);
    QVERIFY(!Forms::isLoaded<frmFileEntry>() && list->isVisible());
    QCOMPARE(names(list->gridFiles), QStringList{"OBrien Flash Player"});
    QCOMPARE(stored("KEVRO_APP_COMPONENTS", "EXE_DESCRIPTION"), (QStringList{"Flash control", "Flashs helper"}));
    const QStringList stamp = stored("KEVRO_APPS", "APP_DATE_EDITED");
    QVERIFY(!stamp.value(0).isEmpty());

    // Edit: the record and its components come back, the licence box still locked; a component
    // deleted and then Back stays deleted, the other changes are lost.
    ClickRow(list->gridFiles, 0, 1);
    Click(list->cmdEditRecord);
    entry = Forms::get<frmFileEntry>();
    QCOMPARE(entry->txtAppName->text(), QString("OBrien Flash Player"));
    QCOMPARE(entry->drpOwnerName->currentText(), QString("OReilly Software"));
    QVERIFY(entry->chkPerProductLicense->isChecked() && entry->chkRequiresLicense->isChecked() &&
            !entry->chkRequiresLicense->isEnabled());
    QCOMPARE(entry->gridAppComponents->Rows(), 3);
    entry->txtAppName->setText("Renamed");
    press(boxes, entry->cmdDelete, vbYes);
    QCOMPARE(boxes.prompts(), QStringList{"Are you sure you want to delete this component?"});
    Click(entry->cmdBack);
    QVERIFY(!Forms::isLoaded<frmFileEntry>() && list->isVisible());
    QCOMPARE(names(list->gridFiles), QStringList{"OBrien Flash Player"});
    QCOMPARE(stored("KEVRO_APP_COMPONENTS", "EXE_NAME").size(), 1);

    // Its owner deleted meanwhile: the application opens with no owner, and must be given one; the
    // save keeps the date it was made.
    m_catalogue.execute("DELETE FROM KEVRO_OWNERS WHERE OWNER_NAME = 'OReilly Software'");
    list->gridFiles->setRow(0);
    QTest::mouseDClick(list->gridFiles->viewport(), Qt::LeftButton, Qt::NoModifier, CellCentre(list->gridFiles, 0, 1));
    entry = Forms::get<frmFileEntry>();
    press(boxes, entry->cmdSave, vbOK, 2);
    QVERIFY(boxes.prompts().value(0).startsWith("You must select an application owner."));
    entry->drpOwnerName->setCurrentIndex(entry->drpOwnerName->findText("Corel"));
    Click(entry->cmdSave);
    QCOMPARE(boxes.prompts().value(1), updated);
    QCOMPARE(stored("KEVRO_APPS", "APP_DATE_EDITED"), stamp);

    // Delete from the list, once a row is clicked: the application goes, its components stay.
    QVERIFY(!list->cmdDeleteRecord->isEnabled());
    ClickRow(list->gridFiles, 0, 1);
    press(boxes, list->cmdDeleteRecord, vbYes);
    QCOMPARE(boxes.prompts(), QStringList{sureToDelete});
    QCOMPARE(list->gridFiles->Rows(), 0);
    QCOMPARE(stored("KEVRO_APP_COMPONENTS", "EXE_NAME").size(), 1);

    Click(list->cmdPrevious);
    QVERIFY(!Forms::isLoaded<frmFileControl>() && Forms::get<frmMainMenu>()->isVisible());
}

// The component grid of an application as the operator edits it: deletes act on a component and never
// on the heading, what is typed after the last component went is saved, a save that failed half way is
// not written twice by the next; the application keeps its own owner among owners of one name; every
// caption of the screen reads whole.
void TestCatalogueScreens::applicationComponents()
{
    m_catalogue.execute("INSERT INTO KEVRO_OWNERS (OWNER_NAME) VALUES ('Acme')");
    m_catalogue.execute("INSERT INTO KEVRO_OWNERS (OWNER_NAME) VALUES ('Acme')");
    const QString secondAcme = stored("KEVRO_OWNERS", "OWNER_ID").value(1);
    m_catalogue.addApp("Reader", {"READER.EXE"}, true);
    m_catalogue.execute("UPDATE KEVRO_APPS SET APP_OWNER = " + secondAcme);
    m_catalogue.execute("UPDATE KEVRO_APP_COMPONENTS SET EXE_DESCRIPTION = 'Part'");
    const auto components = [this] { return stored("KEVRO_APP_COMPONENTS", "EXE_NAME"); };
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
    typeComponents(entry, 1, {"VIEWER.EXE", "Viewer", "SPARE.EXE", "Spare"}, true);
    Click(entry->cmdDelete);
    QCOMPARE(names(grid), (QStringList{"File Name", "VIEWER.EXE"}));
    pressForBox(boxes, entry->cmdSave, updated);
    QCOMPARE(components(), QStringList{"VIEWER.EXE"});
    QCOMPARE(stored("KEVRO_APPS", "APP_OWNER"), QStringList{secondAcme});
    QCOMPARE(ended, QList<int>());

    // A new application whose second component the catalogue refuses: the general message, and the
    // save after it is mended adds neither the application nor the first component a second time.
    m_catalogue.refuseInsert("KEVRO_APP_COMPONENTS", "EXE_NAME", "BAD.EXE");
    Click(list->cmdAddRecord);
    entry = Forms::get<frmFileEntry>();
    grid = entry->gridAppComponents;
    entry->txtAppName->setText("Player");
    entry->drpOwnerName->setCurrentIndex(0);
    Click(entry->cmdAddAppCompRecord);
    typeComponents(entry, 1, {"PLAYER.EXE", "Player", "BAD.EXE", "Codec"}, false);
    press(boxes, entry->cmdSave, vbOK, 2);
    QCOMPARE(boxes.prompts(), QStringList{"Error -2147467259 occurred.  Can not save record."});
    QVERIFY(entry->isVisible());
    doubleClickCell(grid, 2, 1);
    typeName(entry->txtEdit, "CODEC.DLL");
    Click(entry->cmdSave);
    QCOMPARE(boxes.prompts().last(), added);
    QCOMPARE(stored("KEVRO_APPS", "APP_NAME"), (QStringList{"Player", "Reader"}));
    QCOMPARE(components(), (QStringList{"CODEC.DLL", "PLAYER.EXE", "VIEWER.EXE"}));
}

// An unknown program added to the catalogue from the application viewer, a licence for it added on the
// licence screens, and the next judgement of the same disc finds it licensed.
void TestCatalogueScreens::licencesTurnAVerdict()
{
    m_catalogue.execute("INSERT INTO KEVRO_OWNERS (OWNER_NAME) VALUES ('Acme')");
    gClientCode = QString::number(m_catalogue.addClient("Northwind Discs"));
    gClientName = QStringLiteral("Northwind Discs");
    Disc disc;
    disc.add("SETUP/CHAT.EXE");
    gMediaFiles = disc.files();
    MsgBoxResponder boxes;

    // From the viewer's unknown programs to the entry screen and back; the viewer is not judged again.
    auto *viewer = Forms::get<frmScanResultsEXEs>();
    viewer->show();
    viewer->gridUnknownEXEs->setRow(1);
    viewer->mnuContextUnknownAddToFileDb->trigger();
    auto *entry = Forms::get<frmFileEntry>();
    QVERIFY(entry->isVisible() && viewer->isHidden());
    QCOMPARE(entry->txtAppName->text(), QString("CHAT.EXE"));
    entry->drpOwnerName->setCurrentIndex(0);
    Click(entry->chkRequiresLicense);
    typeComponents(entry, 1, {"CHAT.EXE", "Chat client"}, false);
    pressForBox(boxes, entry->cmdSave, added);
    QVERIFY(!Forms::isLoaded<frmFileEntry>() && viewer->isVisible());
    QCOMPARE(viewer->gridUnknownEXEs->Rows(), 2);
    QCOMPARE(EvaluateExecutables(gMediaFiles, gClientCode).unlicensed.size(), 1);

    // The client's licences: none yet, so edit and delete do nothing.
    auto *list = Forms::get<frmLicenseControl>();
    list->DisplayLicenseDetails();
    list->show();
    QVERIFY(!list->cmdEditRecord->isEnabled() && !list->cmdDeleteRecord->isEnabled());
    list->ConfirmDelete();
    QVERIFY(!Forms::isLoaded<frmLicenseEntry>());

    // Add, with nothing chosen for the operator: only an application that needs a licence is listed and
    // can be chosen (the name of one that needs none, typed, is none); a period needs its dates. A
    // permanent licence is saved with empty dates, and Save comes back for a further entry.
    m_catalogue.addApp("Freeware", {}, false);
    Click(list->cmdAddRecord);
    auto *lic = Forms::get<frmLicenseEntry>();
    QVERIFY(lic->isVisible() && list->isHidden());
    QCOMPARE(lic->drpLicenseFile->count(), 1);
    QCOMPARE(lic->drpLicenseFile->currentText(), QString());
    QTest::keyClicks(lic->drpLicenseFile, "Freeware");
    press(boxes, lic->cmdSave, vbOK, 3);
    lic->drpLicenseFile->setCurrentIndex(0);
    Click(lic->cmdSave);
    QCOMPARE(boxes.prompts(),
             (QStringList{"You must select an application to license", "You must enter a start and end date"}));
    Click(lic->chkPerminantLicense);
    Click(lic->cmdSave);
    QCOMPARE(boxes.prompts().last(), added);
    QVERIFY(lic->cmdSave->isEnabled());
    QCOMPARE(stored("KEVRO_LICENSES", "LICENSE_VALID_FROM"), QStringList{QString()});
    Click(lic->cmdBack);
    QVERIFY(!Forms::isLoaded<frmLicenseEntry>() && list->isVisible());
    QCOMPARE(names(list->gridLicenses), QStringList{"CHAT.EXE"});
    const ExeEvaluation judged = EvaluateExecutables(gMediaFiles, gClientCode);
    QCOMPARE(judged.licensed.size(), 1);
    QCOMPARE(judged.unlicensed.size(), 0);

    // The context menu's entry edits without filling the list: the name shows all the same. Edited into
    // a licence with a period, its dates typed as the station writes its short dates, with its separator
    // where that is one a date takes (a text that is no date: tst_desktop).
    QString sep = LocaleDateOrder() == "YMD" ? "-" : "/";
    for (const QString c : {"-", ".", "/"})
        if (QLocale::system().dateFormat(QLocale::ShortFormat).contains(c))
            sep = c;
    ClickRow(list->gridLicenses, 0, 1);
    list->mnuLicenseGridContextAdd->trigger();
    lic = Forms::get<frmLicenseEntry>();
    QCOMPARE(lic->drpLicenseFile->currentText(), QString("CHAT.EXE"));
    QCOMPARE(lic->lblResultComment->text(), QString("Edit License for Northwind Discs"));
    QVERIFY(lic->chkPerminantLicense->isChecked() && !lic->txtStartDate->isEnabled());
    Click(lic->chkPerminantLicense);
    lic->txtStartDate->setText(typedDate(15, 10, 2026, sep));
    lic->txtEndDate->setText(typedDate(31, 12, 2026, sep));
    pressForBox(boxes, lic->cmdSave, updated);
    QCOMPARE(stored("KEVRO_LICENSES", "LICENSE_PERMINANT").size(), 1);
    Click(lic->cmdBack);
    // Opened again, the dates read as they were typed, whether the engine kept the text or a date.
    ClickRow(list->gridLicenses, 0, 1);
    Click(list->cmdEditRecord);
    lic = Forms::get<frmLicenseEntry>();
    QCOMPARE(lic->txtStartDate->text(), typedDate(15, 10, 2026, sep));
    QCOMPARE(lic->txtEndDate->text(), typedDate(31, 12, 2026, sep));
    Click(lic->cmdBack);

    // Deleted, after the question: the grid empties and edit is no longer possible.
    ClickRow(list->gridLicenses, 0, 1);
    press(boxes, list->cmdDeleteRecord, vbYes);
    QCOMPARE(boxes.prompts(), QStringList{sureToDelete});
    QCOMPARE(list->gridLicenses->Rows(), 0);

    // With no application that takes a licence per client, adding is refused and the screen stays.
    m_catalogue.execute("UPDATE KEVRO_APPS SET APP_LICENSE_PER_MEDIA = TRUE");
    press(boxes, list->cmdAddRecord);
    QCOMPARE(boxes.prompts(), QStringList{"There are no applications in the KEVRO database!"});
    QVERIFY(list->isVisible());

    // A licence deleted while the list shows it opens with empty fields; an application deleted while
    // its licence is open: Save cannot find it and stays off.
    m_catalogue.execute("UPDATE KEVRO_APPS SET APP_LICENSE_PER_MEDIA = FALSE");
    Click(list->cmdAddRecord);
    lic = Forms::get<frmLicenseEntry>();
    lic->drpLicenseFile->setCurrentIndex(0);
    lic->chkPerminantLicense->setChecked(true);
    press(boxes, lic->cmdSave, vbOK, 3);
    Click(lic->cmdBack);
    m_catalogue.execute("DELETE FROM KEVRO_LICENSES");
    ClickRow(list->gridLicenses, 0, 1);
    Click(list->cmdEditRecord);
    lic = Forms::get<frmLicenseEntry>();
    QCOMPARE(boxes.prompts().value(1), QString("Record no longer exists"));
    QCOMPARE(lic->drpLicenseFile->currentText(), QString());
    QVERIFY(!lic->chkPerminantLicense->isChecked() && lic->txtStartDate->text().isEmpty());
    lic->drpLicenseFile->setCurrentIndex(0);
    lic->chkPerminantLicense->setChecked(true);
    m_catalogue.execute("DELETE FROM KEVRO_APPS");
    Click(lic->cmdSave);
    QCOMPARE(boxes.prompts().value(2), QString("Error: could not find selected EXE in database, can not save record."));
    QVERIFY(!lic->cmdSave->isEnabled());
    Click(lic->cmdBack);
    QCOMPARE(list->gridLicenses->Rows(), 0);
    Click(list->cmdPrevious);
    QVERIFY(!Forms::isLoaded<frmLicenseControl>() && Forms::get<frmMainMenu>()->isVisible());
}

// The licence entry's date test, in the machine's own day/month order, with each separator a date takes:
// two-digit years, leap days, days and months out of range.
void TestCatalogueScreens::datesAsTheDatabaseReadsThem()
{
    const QList<std::tuple<int, int, int, bool>> dates{{31, 12, 2026, true}, {1, 2, 26, true}, {29, 2, 2024, true},
        {29, 2, 2026, false}, {31, 4, 2026, false}, {0, 1, 2026, false}, {1, 13, 2026, false}};
    for (const QString sep : {"/", "-", "."})
        for (const auto &[d, m, y, valid] : dates)
            QVERIFY2(IsValidDate(typedDate(d, m, y, sep)) == valid, qPrintable(typedDate(d, m, y, sep)));
    QVERIFY(IsValidDate("2026-12-31") && IsValidDate(" 2026-01-05 ")); // year first is read in every order
    // Texts that are no date, and the other day/month order where it cannot be one.
    for (const QString &no : QStringList{"tomorrow", "", "2026", "1/2", "1/2/3/4", "1/2-2026", "31/12/2026 12:00",
                                         "12/31/2026x", "2026-13-01", "1/1/202",
                                         LocaleDateOrder() == "MDY" ? "31/12/2026" : "12/31/2026"})
        QVERIFY2(!IsValidDate(no), qPrintable(no));
}

QTEST_MAIN(TestCatalogueScreens)
#include "tst_catalogue_screens.moc"
