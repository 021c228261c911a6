// The catalogue screens as the plant's staff use them, on SQLite and on the test run's PostgreSQL
// server: the clients edited in place and saved, the apostrophe that an update strips and an insert
// trips over, the empty name the database refuses, deletes, the import from a text file, and the way
// back to the main menu.

#include "CatalogueFixture.h"
#include "Operator.h"
#include "TestSupport.h"

#include "catalogue/frmClientControl.h"
#include "controls/CommonDialog.h"
#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/Twips.h"
#include "platform/MsgBox.h"
#include "platform/VbError.h"
#include "shell/MainModScreens.h"
#include "shell/Progress.h"
#include "shell/frmMainMenu.h"

#include <QLineEdit>
#include <QToolButton>
#include <QPushButton>
#include <QRadioButton>

namespace {

void clickRow(FlexGrid *grid, int row)
{
    const QPoint at = grid->visualRect(grid->model()->index(row - grid->FixedRows(), 1)).center();
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, Qt::NoModifier, at);
}

QStringList names(FlexGrid *grid)
{
    QStringList out;
    for (int r = 0; r < grid->Rows(); ++r)
        out << grid->TextMatrix(r, 1);
    return out;
}

QStringList states(FlexGrid *grid)
{
    QStringList out;
    for (int r = 0; r < grid->Rows(); ++r)
        out << grid->TextMatrix(r, 2);
    return out;
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

} // namespace

class TestCatalogueScreens final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void clients_data();
    void clients();
    void clientImport_data();
    void clientImport();

private:
    bool useEngine(const QString &engine);
    frmClientControl *openClients();
    QStringList storedClients();

    TempAppFolder m_app;
    CatalogueFixture m_catalogue;
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
    Forms::unload<frmMainMenu>();
}

bool TestCatalogueScreens::useEngine(const QString &engine)
{
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

frmClientControl *TestCatalogueScreens::openClients()
{
    auto *menu = Forms::get<frmMainMenu>();
    menu->Move(600, 450);
    menu->show();
    Click(menu->cmdClients);
    auto *s = Forms::get<frmClientControl>();
    return s->isVisible() && !Forms::isLoaded<frmMainMenu>() ? s : nullptr;
}

QStringList TestCatalogueScreens::storedClients()
{
    QStringList out = m_catalogue.column(QStringLiteral("SELECT CLIENT_NAME FROM KEVRO_CLIENTS"), "CLIENT_NAME");
    out.sort();
    return out;
}

void TestCatalogueScreens::clients_data()
{
    QTest::addColumn<QString>("engine");
    QTest::newRow("sqlite") << QStringLiteral("sqlite");
    QTest::newRow("postgresql") << QStringLiteral("postgresql");
}

void TestCatalogueScreens::clients()
{
    QFETCH(QString, engine);
    if (!useEngine(engine))
        QSKIP("no PostgreSQL server: run through `make test`, which starts one");
    MsgBoxResponder boxes;
    auto *s = openClients();
    QVERIFY(s);
    QCOMPARE(s->windowTitle(), QStringLiteral("KEVRO - Client Control"));
    QCOMPARE(s->pos(), QPoint(TwipsToPixels(600), TwipsToPixels(450)));
    FlexGrid *grid = s->gridClients;
    QLineEdit *box = s->txtEdit;

    // An empty table: no rows, neither delete nor save; Add Record makes both possible.
    QCOMPARE(grid->Rows(), 0);
    QVERIFY(!s->cmdDeleteRecord->isEnabled() && !s->cmdSaveRecords->isEnabled());
    Click(s->cmdAddRecord);
    QVERIFY(s->cmdDeleteRecord->isEnabled() && s->cmdSaveRecords->isEnabled());
    QCOMPARE(states(grid), QStringList{"Insert"});
    typeName(box, QStringLiteral("Northwind Discs"));
    Click(s->cmdAddRecord); // the box's text goes into its row first
    typeName(box, QStringLiteral("Contoso Média"));
    boxes.queue(vbOK);
    Click(s->cmdSaveRecords);
    QCOMPARE(boxes.prompts(), QStringList{"Clients updated in KEVRO database"});
    QCOMPARE(boxes.boxes()[0].icon(), int(vbInformation));
    QCOMPARE(storedClients(), (QStringList{"Contoso Média", "Northwind Discs"}));
    QCOMPARE(names(grid), (QStringList{"Contoso Média", "Northwind Discs"}));
    QCOMPARE(states(grid), (QStringList{"Original", "Original"}));
    QVERIFY(!grid->TextMatrix(0, 0).isEmpty());

    // An existing name changed to one with an apostrophe is saved without it; a new one is refused.
    // Rows written before the failure stay written.
    clickRow(grid, 0);
    QTest::mouseDClick(grid->viewport(), Qt::LeftButton, Qt::NoModifier,
                       grid->visualRect(grid->model()->index(0, 1)).center());
    QCOMPARE(box->text(), QStringLiteral("Contoso Média"));
    QCOMPARE(states(grid)[0], QStringLiteral("Update"));
    typeName(box, QStringLiteral("O'Brien Media"));
    Click(s->cmdAddRecord);
    typeName(box, QStringLiteral("O'Neil Pressing"));
    boxes.clear();
    boxes.queue(vbOK);
    Click(s->cmdSaveRecords);
    QCOMPARE(boxes.prompts(), QStringList{"Can not use ' character in filenames or descriptions."});
    QCOMPARE(boxes.boxes()[0].icon(), int(vbExclamation));
    QCOMPARE(storedClients(), (QStringList{"Northwind Discs", "OBrien Media"}));
    QCOMPARE(states(grid), (QStringList{"Update", "Original", "Insert"})); // the grid stays as it was

    // The refused row, never saved, is deleted without a statement; No keeps a row.
    boxes.clear();
    boxes.queue(vbNo);
    boxes.queue(vbYes);
    Click(s->cmdDeleteRecord);
    QCOMPARE(grid->Rows(), 3);
    Click(s->cmdDeleteRecord);
    QCOMPARE(boxes.prompts(), QStringList(2, "Are you sure you want to delete this record?"));
    QCOMPARE(boxes.boxes()[0].style, vbYesNo | vbExclamation);
    QCOMPARE(names(grid), (QStringList{"O'Brien Media", "Northwind Discs"}));

    // An empty new name: the database's rule, and the message.
    Click(s->cmdAddRecord);
    typeName(box, QString());
    boxes.clear();
    boxes.queue(vbOK);
    Click(s->cmdSaveRecords);
    QCOMPARE(boxes.prompts(), QStringList{"All fields must be completed before saving."});
    QCOMPARE(storedClients(), (QStringList{"Northwind Discs", "OBrien Media"}));

    // Deleting a saved client goes to the database at once; deleting the last row empties the grid
    // and disables delete and save.
    s->ShowDBClients();
    QCOMPARE(names(grid), (QStringList{"Northwind Discs", "OBrien Media"}));
    boxes.clear();
    boxes.queue(vbYes, 2);
    clickRow(grid, 1);
    Click(s->cmdDeleteRecord);
    QCOMPARE(storedClients(), QStringList{"Northwind Discs"});
    clickRow(grid, 0);
    Click(s->cmdDeleteRecord);
    QCOMPARE(storedClients(), QStringList());
    QCOMPARE(grid->Rows(), 0);
    QVERIFY(!s->cmdDeleteRecord->isEnabled() && !s->cmdSaveRecords->isEnabled());

    // Two screens' worth of new rows: the progress box from the tenth row on.
    m_progress.clear();
    SetProgressSink({[this](int percent, const QString &text) { m_progress << QString::number(percent) + ' ' + text; },
                     [] {}});
    for (int i = 1; i <= 25; ++i) {
        Click(s->cmdAddRecord);
        typeName(box, QStringLiteral("Client %1").arg(i, 2, 10, QLatin1Char('0')));
    }
    boxes.clear();
    boxes.queue(vbOK);
    Click(s->cmdSaveRecords);
    InstallScreenServices();
    QCOMPARE(m_progress, (QStringList{"40 Saving Client Information...", "80 Saving Client Information..."}));
    QCOMPARE(storedClients().size(), 25);
    QCOMPARE(grid->Rows(), 25);

    // Back: the main menu at this screen's place; rows not saved are dropped without a question.
    Click(s->cmdAddRecord);
    typeName(box, QStringLiteral("Never Saved"));
    s->Move(9600, 7200);
    const QPoint place = s->pos();
    Click(s->cmdPrevious);
    QVERIFY(!Forms::isLoaded<frmClientControl>());
    auto *menu = Forms::get<frmMainMenu>();
    QVERIFY(menu->isVisible());
    QCOMPARE(menu->pos(), place);
    QCOMPARE(storedClients().size(), 25);
    QCOMPARE(menu->cmbClientName->count(), 25);

    // The menu entry leads here too.
    QVERIFY(ClickMenu(menu, "mnuDatabaseClients"));
    QVERIFY(Forms::isLoaded<frmClientControl>() && Forms::get<frmClientControl>()->isVisible());
}

void TestCatalogueScreens::clientImport_data()
{
    clients_data();
}

void TestCatalogueScreens::clientImport()
{
    QFETCH(QString, engine);
    if (!useEngine(engine))
        QSKIP("no PostgreSQL server: run through `make test`, which starts one");
    m_catalogue.addClient(QStringLiteral("Old Client"));
    MsgBoxResponder boxes;
    auto *s = openClients();
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
    QCOMPARE(asked, QStringList(2, "Import Client List | Text (*.txt)"));
    QCOMPARE(s->txtFilePath->text(), list);

    // Replace: every client goes before the first line; CR LF and LF lines, a line in the Windows
    // code page.
    QVERIFY(s->optReplace->isChecked());
    boxes.queue(vbOK);
    Click(s->cmdImport);
    QCOMPARE(boxes.prompts(), QStringList{"Import completed sucessfully."});
    QCOMPARE(storedClients(), (QStringList{"Alpha Records", "Beta Pressing", "Café Discs", "Delta"}));
    QCOMPARE(names(s->gridClients), storedClients());

    // Append; then a file that is not there.
    s->optAppend->setChecked(true);
    s->txtFilePath->setText(WriteTestFile(m_app.path() + QStringLiteral("/more.txt"), "Echo Media\n"));
    boxes.clear();
    boxes.queue(vbOK, 2);
    Click(s->cmdImport);
    QCOMPARE(storedClients().size(), 5);
    s->txtFilePath->setText(m_app.path() + QStringLiteral("/gone.txt"));
    Click(s->cmdImport);
    QCOMPARE(boxes.prompts().last(), QStringLiteral("File does not exist!"));

    // A line with an apostrophe, and a blank line, are statements the database refuses: the platform's
    // message and the end of the program; the lines before stay imported, after a replace too.
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    s->optReplace->setChecked(true);
    const QList<QPair<QByteArray, QString>> refused{{"Foxtrot\nO'Hara Sound\nGolf\n", "Foxtrot"},
                                                     {"Hotel\n\nIndia\n", "Hotel"}};
    for (const auto &[bad, kept] : refused) {
        s->txtFilePath->setText(WriteTestFile(m_app.path() + QStringLiteral("/bad.txt"), bad));
        boxes.clear();
        boxes.queue(vbOK);
        Click(s->cmdImport);
        QVERIFY(boxes.prompts().value(0).startsWith(QStringLiteral("Run-time error '")));
        QCOMPARE(storedClients(), QStringList{kept});
    }
    QCOMPARE(ended, (QList<int>{1, 1}));
}

QTEST_MAIN(TestCatalogueScreens)
#include "tst_catalogue_screens.moc"
