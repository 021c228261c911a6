// KEVRO's start and its hub as an operator uses them: a client chosen by code, by name, by type-ahead
// and by the code search; where each button and menu entry leads, and the checks before; the shutdown
// roads; the logon; the start of the program itself, a second copy of it and a copy that crashed.

#include "Operator.h"
#include "TestSupport.h"

#include "catalogue/CatalogueSetup.h"
#include "catalogue/Database.h"
#include "platform/MsgBox.h"
#include "catalogue/frmClientControl.h"
#include "catalogue/frmFileControl.h"
#include "catalogue/frmLicenseControl.h"
#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/frmLogon.h"
#include "shell/frmMainMenu.h"
#include "reporting/frmReportViewer.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <csignal>

class TestMainMenu final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void loadFillsParallelLists();
    void chooseByCodeByNameAndBySearch();
    void typeAhead();
    void whereEachActionLeads_data();
    void whereEachActionLeads();
    void shutdownRoads();
    void logon();
    void theProgramStartsOnceAndRecoversFromACrash();

private:
    frmMainMenu *menu();
    QString codeOf(const QString &name);

    TempAppFolder m_app;
    CatalogueTarget m_target;
};

void TestMainMenu::initTestCase()
{
    InstallScreenServices();
    RefuseBoxesWithoutResponder();
    qputenv("ODBCINI", m_app.file("no-user-odbc.ini").toLocal8Bit());
    qputenv("ODBCSYSINI", m_app.file("no-system-odbc").toLocal8Bit());
    m_target.sqliteFile = m_app.file("kevro.db");
}

void TestMainMenu::init()
{
    // Each test meets the demo catalogue as the set-up leaves it, and no job chosen yet.
    QCOMPARE(CreateCatalogue(m_target, true), QString());
    QCOMPARE(LoadDemoCatalogue(m_target), QString());
    QFile::remove(m_app.file("odbc.ini"));
    QCOMPARE(WriteDataSourceEntry(m_target, m_app.file("odbc.ini")), QString());
    gClientCode.clear();
    gClientName.clear();
    gCatalogueNumber.clear();
}

void TestMainMenu::cleanup()
{
    Forms::unload<frmMainMenu>();
    Forms::unload<frmLogon>();
    Forms::unload<frmLicenseControl>();
    Forms::unload<frmReportViewer>();
    Forms::unload<frmClientControl>();
    Forms::unload<frmFileControl>();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    SetEndProcessHook(nullptr);
    gConnection.reset();
}

frmMainMenu *TestMainMenu::menu()
{
    auto *m = Forms::get<frmMainMenu>();
    m->show();
    if (!QTest::qWaitForWindowExposed(m))
        qWarning("the main menu did not come on the screen");
    return m;
}

QString TestMainMenu::codeOf(const QString &name)
{
    OpenDatabase();
    Recordset rs;
    rs.Open("Select CLIENT_ID From KEVRO_CLIENTS Where CLIENT_NAME = '" + name + "'", gConnection.get());
    const QString code = rs.Fields("CLIENT_ID").toString();
    CloseDatabase();
    return code;
}

void TestMainMenu::loadFillsParallelLists()
{
    AppendToList(gMediaFiles, "/D/LEFT/OVER.EXE");
    AddCheckedItem("/D/A.JPG (1 KB)", "Image");
    auto *m = menu();
    auto *code = Control<QComboBox>(m, "cmbClientCode");
    auto *name = Control<QComboBox>(m, "cmbClientName");
    QCOMPARE(name->count(), 4);
    QCOMPARE(name->itemText(0), QString("Blue Yonder Music"));
    QCOMPARE(name->itemText(3), QString("Northwind Records"));
    for (int i = 0; i < 4; ++i)
        QCOMPARE(code->itemText(i), codeOf(name->itemText(i)));
    QCOMPARE(code->currentText() + name->currentText(), QString());
    QVERIFY(ListIsEmpty(gMediaFiles) && ListIsEmpty(gCheckedItems) && ListIsEmpty(gExternalFiles));
    QCOMPARE(gMediaFiles.size(), 1);

    // An empty table loads as empty lists.
    Forms::unload<frmMainMenu>();
    OpenDatabase();
    gConnection->Execute("DELETE * FROM KEVRO_CLIENTS");
    CloseDatabase();
    m = menu();
    QCOMPARE(Control<QComboBox>(m, "cmbClientCode")->count() + Control<QComboBox>(m, "cmbClientName")->count(), 0);
}

void TestMainMenu::chooseByCodeByNameAndBySearch()
{
    MsgBoxResponder boxes; // a box with no answer queued fails the test
    auto *m = menu();
    auto *code = Control<QComboBox>(m, "cmbClientCode");
    auto *name = Control<QComboBox>(m, "cmbClientName");
    auto *search = Control<QLineEdit>(m, "txtClientSearch");
    const QString contoso = codeOf("Contoso Games");
    // A click on a code brings its name, and the code into the search box.
    QVERIFY(ChooseFromList(code, contoso));
    QCOMPARE(gClientCode, contoso);
    QCOMPARE(gClientName, QString("Contoso Games"));
    QCOMPARE(search->text(), contoso);
    // A click on a name brings its code.
    QVERIFY(ChooseFromList(name, "Northwind Records"));
    QCOMPARE(gClientCode, codeOf("Northwind Records"));
    QCOMPARE(gClientName, QString("Northwind Records"));
    // A name typed by hand lands in the code field, and so in the job, until an entry is clicked.
    ClearText(name);
    QTest::keyClicks(name, "3");
    QCOMPARE(gClientCode, QString("3"));

    // The code search takes the first code that begins with the text exactly; every keystroke that
    // leaves no match warns; clearing the box says nothing and leaves the selection.
    const QString fabrikam = codeOf("Fabrikam Learning");
    ClearText(search);
    QTest::keyClicks(search, fabrikam);
    QCOMPARE(code->currentText(), fabrikam);
    boxes.queue(vbOK, 2);
    QTest::keyClicks(search, "99");
    QCOMPARE(boxes.prompts(), (QStringList{"No match", "No match"}));
    QCOMPARE(boxes.boxes()[0].icon(), int(vbExclamation));
    ClearText(search);
    QCOMPARE(code->currentText(), fabrikam);
}

void TestMainMenu::typeAhead()
{
    auto *m = menu();
    auto *name = Control<QComboBox>(m, "cmbClientName");
    QLineEdit *edit = name->lineEdit();
    Click(edit);
    // One letter completes the first name that begins with it, whatever its case; the last typed
    // letter is selected with the completed tail.
    QTest::keyClick(name, Qt::Key_N);
    QCOMPARE(edit->text(), QString("Northwind Records"));
    QCOMPARE(edit->selectedText(), QString("Northwind Records"));
    QVERIFY(name->view()->isVisible());
    // Enter takes the entry: the client is chosen.
    QTest::keyClick(name, Qt::Key_Return);
    QTRY_COMPARE(Control<QComboBox>(m, "cmbClientCode")->currentText(), codeOf("Northwind Records"));
    QCOMPARE(gClientName, QString("Northwind Records"));

    // Backspace never completes, so the completed tail can be deleted: here the whole of it.
    ClearText(name);
    QTest::keyClick(name, Qt::Key_C);
    QCOMPARE(edit->text(), QString("Contoso Games"));
    QTest::keyClick(name, Qt::Key_Backspace);
    QCOMPARE(edit->text(), QString(""));
    // A letter that leaves no match closes the list and keeps the text as typed, caret in place.
    QTest::keyClick(name, Qt::Key_B);
    QCOMPARE(edit->text(), QString("Blue Yonder Music"));
    QTest::keyClick(name, Qt::Key_End);
    QTest::keyClick(name, Qt::Key_X);
    QCOMPARE(edit->text(), QString("Blue Yonder Musicx"));
    QCOMPARE(edit->cursorPosition(), 18);
    QVERIFY(!name->view()->isVisible());

}

// Every button and its menu entry: the checks before the move (a box other than the one expected fails
// the test), and the screen it leads to, in the menu's place.
void TestMainMenu::whereEachActionLeads_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<bool>("clientChosen");
    QTest::addColumn<QString>("box");
    QTest::addColumn<QString>("screen");
    // The report viewer finds only the pictures in this application folder's reports.
    const QList<std::tuple<QStringList, bool, QString, QString>> rows{
        {{"cmdScanDisc", "mnuScanEngineScanDisc", "cmdLicenseControl", "mnuDatabaseLicenseControl"}, false,
         "You must select a client to work with.", ""},
        {{"cmdScanDisc", "mnuScanEngineScanDisc"}, true, "You must enter a catalogue number.", ""},
        {{"cmdLicenseControl", "mnuDatabaseLicenseControl"}, true, "", "frmLicenseControl"},
        {{"cmdReports", "mnuScanEngineReports"}, false, "No reports were found in the KEVRO reports directory.",
         "frmReportViewer"},
        {{"cmdClients", "mnuDatabaseClients"}, false, "", "frmClientControl"},
        {{"cmdFileControl", "mnuDatabaseFileControl"}, false, "", "frmFileControl"}};
    for (const auto &[actions, client, box, screen] : rows)
        for (const QString &a : actions)
            QTest::addRow("%s%s", qPrintable(a), client ? " with a client" : "") << a << client << box << screen;
}

void TestMainMenu::whereEachActionLeads()
{
    QFETCH(QString, action);
    QFETCH(bool, clientChosen);
    QFETCH(QString, box);
    QFETCH(QString, screen);
    MsgBoxResponder boxes;
    if (!box.isEmpty())
        boxes.queue(vbOK);
    auto *m = menu();
    if (clientChosen)
        QVERIFY(ChooseFromList(Control<QComboBox>(m, "cmbClientCode"), codeOf("Contoso Games")));
    const QPoint place = m->pos();
    if (action.startsWith("cmd"))
        Click(Control<QToolButton>(m, qPrintable(action)));
    else
        QVERIFY(ClickMenu(m, qPrintable(action)));
    QTRY_COMPARE(boxes.prompts(), box.isEmpty() ? QStringList() : QStringList{box});
    if (screen.isEmpty()) {
        QVERIFY(m->isVisible());
        return;
    }
    QVERIFY(!Forms::isLoaded<frmMainMenu>());
    QWidget *shown = nullptr;
    for (QWidget *w : QApplication::topLevelWidgets())
        if (w->isVisible() && screen == w->metaObject()->className())
            shown = w;
    QVERIFY(shown);
    if (auto *licences = qobject_cast<frmLicenseControl *>(shown)) {
        QCOMPARE(licences->pos(), place);
        QCOMPARE(licences->lblResultComment->text(), QStringLiteral("Licenses for Contoso Games"));
        QVERIFY(licences->gridLicenses->Rows() > 0);
    }
}

void TestMainMenu::shutdownRoads()
{
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    auto *m = menu();
    QVERIFY(ClickMenu(m, "mnuFileExit"));
    QCOMPARE(ended, QList<int>{0});
    // The window's own close box ends the process at once; an unload by the program does not.
    m->close();
    QCOMPARE(ended, (QList<int>{0, 0}));
    Forms::get<frmMainMenu>();
    Forms::unload<frmMainMenu>();
    QCOMPARE(ended.size(), 2);
}

void TestMainMenu::logon()
{
    MsgBoxResponder boxes;
    boxes.queue(vbOK, 2);
    auto *logon = Forms::get<frmLogon>();
    auto *user = Control<QLineEdit>(logon, "txtUserName");
    auto *password = Control<QLineEdit>(logon, "txtPassword");
    QStringList frames;
    // The animation loop holds the screen from its activation on: the operator's typing comes in
    // between its frames.
    QTimer::singleShot(300, logon, [&] {
        frames << QString::number(Control<QLabel>(logon, "picLogo")->pixmap().cacheKey());
        QTest::keyClicks(user, "BIMPO");
        QTest::keyClicks(password, frmLogon::Password);
        Click(Control<QPushButton>(logon, "txtGo")); // refused: the comparison is exact
        QTest::keyClick(user, Qt::Key_Return);        // Enter in either field submits
        QTimer::singleShot(300, logon, [&] {
            frames << QString::number(Control<QLabel>(logon, "picLogo")->pixmap().cacheKey());
            ClearText(user);
            QTest::keyClicks(user, frmLogon::UserName);
            QTest::keyClick(password, Qt::Key_Return);
        });
    });
    logon->show();
    QTRY_VERIFY_WITH_TIMEOUT(!logon->AnimationRunning && logon->isHidden(), 10000);
    QCOMPARE(boxes.prompts(), QStringList(2, "Username and/or password are not correct"));
    QCOMPARE(frames.size(), 2);
    QVERIFY(frames[0] != frames[1]); // the logo moved on meanwhile
    auto *m = Forms::get<frmMainMenu>();
    QVERIFY(m->isVisible());
    QVERIFY(qAbs(m->Left() + m->Width() / 2 - ScreenWidthTw() / 2) <= 60);
}

void TestMainMenu::theProgramStartsOnceAndRecoversFromACrash()
{
    const QString kevro = QStringLiteral(KEVRO_BUILD_APP_DIR) + "/kevro";
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    env.insert("KEVRO_HOME", m_app.path());
    auto start = [&](QProcess &p) {
        p.setProcessEnvironment(env);
        p.setProcessChannelMode(QProcess::MergedChannels);
        p.start(kevro);
        QVERIFY(p.waitForStarted());
    };
    const QString marker = m_app.file("extract/left-by-a-scan.txt");
    QDir(m_app.file("extract")).removeRecursively();
    WriteTestFile(marker, "x");

    QProcess first;
    start(first);
    // The first copy empties the extract folder on its way up.
    QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(marker) && QDir(m_app.file("extract")).exists(), 20000);
    WriteTestFile(marker, "x");

    // A second copy brings the first to the front and ends at once, leaving its extract folder alone.
    QProcess second;
    start(second);
    QVERIFY(second.waitForFinished(20000));
    QCOMPARE(second.exitCode(), 0);
    QVERIFY(QFile::exists(marker));
    QVERIFY(first.state() == QProcess::Running);

    // A copy that crashed leaves its lock and socket behind: the next start takes over.
    ::kill(pid_t(first.processId()), SIGKILL);
    QVERIFY(first.waitForFinished(10000));
    QProcess third;
    start(third);
    QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(marker), 20000);
    QVERIFY(third.state() == QProcess::Running);
    third.kill();
    third.waitForFinished(10000);
}

QTEST_MAIN(TestMainMenu)
#include "tst_mainmenu.moc"
