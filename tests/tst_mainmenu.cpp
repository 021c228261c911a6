// KEVRO's start and its hub as an operator uses them: a client chosen by code, by name and by
// type-ahead; the code search and its warning; the checks before each move; the slide and the hover
// pictures; the shutdown roads; the logon; the start of the program itself, a second copy of it and a
// copy that crashed; and the message when the catalogue cannot be reached.

#include "Operator.h"
#include "TestSupport.h"

#include "catalogue/CatalogueSetup.h"
#include "catalogue/Database.h"
#include "platform/MsgBox.h"
#include "platform/VbError.h"
#include "shell/CAutoComplete.h"
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
#include <QFrame>
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
    void chooseByCodeAndByName();
    void typeAhead();
    void findInList();
    void codeSearch();
    void checksBeforeEachMove();
    void reportsClientsAndApplicationsNeedNoClient();
    void emptyClientTable();
    void slideAndHover();
    void shutdownRoads();
    void logon();
    void unreachableCatalogueAtStart();
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
    SetEndProcessHook(nullptr);
}

void TestMainMenu::cleanup()
{
    Forms::unload<frmMainMenu>();
    Forms::unload<frmLogon>();
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
    QCOMPARE(code->currentText(), QString(""));
    QCOMPARE(name->currentText(), QString(""));
    QVERIFY(ListIsEmpty(gMediaFiles) && ListIsEmpty(gCheckedItems) && ListIsEmpty(gExternalFiles));
    QCOMPARE(gMediaFiles.size(), 1);
}

void TestMainMenu::chooseByCodeAndByName()
{
    MsgBoxResponder boxes;
    auto *m = menu();
    auto *code = Control<QComboBox>(m, "cmbClientCode");
    auto *name = Control<QComboBox>(m, "cmbClientName");
    auto *search = Control<QLineEdit>(m, "txtClientSearch");
    const QString contoso = codeOf("Contoso Games");
    const QString northwind = codeOf("Northwind Records");
    // A click on a code brings its name, and the code into the search box.
    QVERIFY(ChooseFromList(code, contoso));
    QCOMPARE(name->currentText(), QString("Contoso Games"));
    QCOMPARE(gClientCode, contoso);
    QCOMPARE(gClientName, QString("Contoso Games"));
    QCOMPARE(search->text(), contoso);
    // A click on a name brings its code.
    QVERIFY(ChooseFromList(name, "Northwind Records"));
    QCOMPARE(code->currentText(), northwind);
    QCOMPARE(gClientCode, northwind);
    QCOMPARE(gClientName, QString("Northwind Records"));
    QVERIFY(boxes.boxes().isEmpty());
    // A name typed by hand lands in the code field, and so in the job, until an entry is clicked.
    ClearText(name);
    QTest::keyClicks(name, "3");
    QCOMPARE(name->currentText(), QString("3"));
    QCOMPARE(code->currentText(), QString("3"));
    QCOMPARE(gClientCode, QString("3"));
    // The catalogue number follows its box.
    QTest::keyClicks(Control<QLineEdit>(m, "txtCatNo"), "CAT-42");
    QCOMPARE(gCatalogueNumber, QString("CAT-42"));
}

void TestMainMenu::typeAhead()
{
    auto *m = menu();
    auto *name = Control<QComboBox>(m, "cmbClientName");
    QLineEdit *edit = name->lineEdit();
    Click(edit);
    QVERIFY(edit->hasFocus());
    // One letter completes the first name that begins with it, whatever its case; the last typed
    // letter is selected with the completed tail.
    QTest::keyClick(name, Qt::Key_N);
    QCOMPARE(edit->text(), QString("Northwind Records"));
    QCOMPARE(edit->selectionStart(), 0);
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

void TestMainMenu::findInList()
{
    auto *m = menu();
    auto *name = Control<QComboBox>(m, "cmbClientName");
    CAutoComplete *ac = m->AutoComplete();
    QCOMPARE(ac->FindInList("contoso", -1, false), name->findText("Contoso Games"));
    QCOMPARE(ac->FindInList("CONTOSO GAMES", -1, true), name->findText("Contoso Games"));
    QCOMPARE(ac->FindInList("Contoso", -1, true), -1);
    QCOMPARE(ac->FindInList("Zebra", -1, false), -1);
    // From a start entry the search goes on behind it and comes round again.
    const int blue = name->findText("Blue Yonder Music");
    QCOMPARE(ac->FindInList("B", blue, false), blue);
    // With AutoAdd, a name no entry begins with, confirmed with Enter, joins the list.
    ac->setAutoAdd(true);
    Click(name->lineEdit());
    QTest::keyClicks(name, "Zebra Sound");
    QCOMPARE(name->currentText(), QString("Zebra Sound"));
    QTest::keyClick(name, Qt::Key_Return);
    QCOMPARE(name->count(), 5);
    QVERIFY(ac->FindInList("Zebra Sound", -1, true) >= 0);
}

void TestMainMenu::codeSearch()
{
    MsgBoxResponder boxes;
    auto *m = menu();
    auto *code = Control<QComboBox>(m, "cmbClientCode");
    auto *search = Control<QLineEdit>(m, "txtClientSearch");
    const QString fabrikam = codeOf("Fabrikam Learning");
    // The first code that begins with the text exactly is taken.
    QTest::keyClicks(search, fabrikam);
    QCOMPARE(code->currentText(), fabrikam);
    QVERIFY(boxes.boxes().isEmpty());
    // Every keystroke that leaves no match warns.
    boxes.queue(vbOK, 2);
    QTest::keyClicks(search, "99");
    QCOMPARE(boxes.prompts(), (QStringList{"No match", "No match"}));
    QCOMPARE(boxes.boxes()[0].icon(), int(vbExclamation));
    // Clearing the box says nothing and leaves the selection.
    boxes.clear();
    ClearText(search);
    QVERIFY(boxes.boxes().isEmpty());
    QCOMPARE(code->currentText(), fabrikam);
}

void TestMainMenu::checksBeforeEachMove()
{
    MsgBoxResponder boxes;
    boxes.queue(vbOK, 4);
    auto *m = menu();
    Click(Control<QToolButton>(m, "cmdScanDisc"));
    Click(Control<QToolButton>(m, "cmdLicenseControl"));
    QVERIFY(ClickMenu(m, "mnuScanEngineScanDisc"));
    QVERIFY(ClickMenu(m, "mnuDatabaseLicenseControl"));
    QCOMPARE(boxes.prompts(), QStringList(4, "You must select a client to work with."));
    QCOMPARE(boxes.boxes()[0].icon(), int(vbExclamation));
    boxes.clear();
    // With a client chosen the scan still wants a catalogue number, and the menu stays.
    QVERIFY(ChooseFromList(Control<QComboBox>(m, "cmbClientCode"), codeOf("Contoso Games")));
    boxes.queue(vbOK);
    Click(Control<QToolButton>(m, "cmdScanDisc"));
    QCOMPARE(boxes.prompts(), QStringList{"You must enter a catalogue number."});
    QVERIFY(m->isVisible());
    // The licences want nothing more than the client: no box (the responder has no answer for one), and
    // the licence screen comes with that client's licences, by the button and by the menu entry.
    boxes.clear();
    for (bool byMenu : {false, true}) {
        m = menu();
        QVERIFY(ChooseFromList(Control<QComboBox>(m, "cmbClientCode"), codeOf("Contoso Games")));
        const QPoint place = m->pos();
        if (byMenu)
            QVERIFY(ClickMenu(m, "mnuDatabaseLicenseControl"));
        else
            Click(Control<QToolButton>(m, "cmdLicenseControl"));
        QVERIFY(!Forms::isLoaded<frmMainMenu>());
        auto *licences = Forms::get<frmLicenseControl>();
        QVERIFY(licences->isVisible());
        QCOMPARE(licences->pos(), place);
        QCOMPARE(licences->lblResultComment->text(), QStringLiteral("Licenses for Contoso Games"));
        QVERIFY(licences->gridLicenses->Rows() > 0);
        Forms::unload<frmLicenseControl>();
    }
    QVERIFY(boxes.boxes().isEmpty());
}

void TestMainMenu::reportsClientsAndApplicationsNeedNoClient()
{
    MsgBoxResponder boxes; // only the boxes queued here may come
    const QString noReports = QStringLiteral("No reports were found in the KEVRO reports directory.");
    // Without a client: the button and the menu entry each go to the report viewer, which finds only
    // the pictures in this application folder's reports.
    for (bool byMenu : {false, true}) {
        boxes.clear();
        boxes.queue(vbOK);
        auto *m = menu();
        if (byMenu)
            QVERIFY(ClickMenu(m, "mnuScanEngineReports"));
        else
            Click(Control<QToolButton>(m, "cmdReports"));
        QVERIFY(!Forms::isLoaded<frmMainMenu>());
        QVERIFY(Forms::isLoaded<frmReportViewer>() && Forms::get<frmReportViewer>()->isVisible());
        QTRY_COMPARE(boxes.prompts(), QStringList{noReports});
        Forms::unload<frmReportViewer>();
    }
    // Clients and Applications, by button and by menu entry, without a client chosen.
    boxes.clear();
    for (const char *action : {"cmdClients", "mnuDatabaseClients", "cmdFileControl", "mnuDatabaseFileControl"}) {
        auto *m = menu();
        if (action[0] == 'c')
            Click(Control<QToolButton>(m, action));
        else
            QVERIFY(ClickMenu(m, action));
        QVERIFY(!Forms::isLoaded<frmMainMenu>());
        const bool clients = QByteArray(action).contains("Clients");
        QVERIFY(clients ? Forms::get<frmClientControl>()->isVisible() : Forms::get<frmFileControl>()->isVisible());
        Forms::unload<frmClientControl>();
        Forms::unload<frmFileControl>();
    }
    QVERIFY(boxes.boxes().isEmpty());
}

// An empty table loads as empty lists, and no box (the moves' checks are those of no client chosen).
void TestMainMenu::emptyClientTable()
{
    OpenDatabase();
    gConnection->Execute("DELETE * FROM KEVRO_CLIENTS");
    CloseDatabase();
    auto *m = menu();
    QCOMPARE(Control<QComboBox>(m, "cmbClientCode")->count(), 0);
    QCOMPARE(Control<QComboBox>(m, "cmbClientName")->count(), 0);
}

void TestMainMenu::slideAndHover()
{
    auto *m = menu();
    auto *clients = Control<QToolButton>(m, "cmdClients");
    const QPixmap normal = Control<QLabel>(m, "picClientsNormal")->pixmap();
    const QPixmap hover = Control<QLabel>(m, "picClientsHover")->pixmap();
    QVERIFY(!hover.isNull() && hover.toImage() != normal.toImage());
    auto face = [&] { return clients->icon().pixmap(64).toImage(); };
    QCOMPARE(face(), QIcon(normal).pixmap(64).toImage());
    QTest::mouseMove(clients, QPoint(10, 10));
    QTRY_COMPARE(face(), QIcon(hover).pixmap(64).toImage());
    QCOMPARE(Control<QToolButton>(m, "cmdReports")->icon().pixmap(64).toImage(),
             QIcon(Control<QLabel>(m, "picReportsNormal")->pixmap()).pixmap(64).toImage());
    QTest::mouseMove(m->centralWidget(), QPoint(5, m->centralWidget()->height() - 5));
    QTRY_COMPARE(face(), QIcon(normal).pixmap(64).toImage());

    auto *scan = Control<QToolButton>(m, "cmdScanDisc");
    auto *logo = Control<QLabel>(m, "picLogo");
    const long buttonLeft = LeftTw(scan), logoLeft = LeftTw(logo);
    m->SlideMenuOut(4);
    QVERIFY(qAbs(LeftTw(scan) - (buttonLeft - 2400)) <= 4 * 15);
    QVERIFY(qAbs(LeftTw(logo) - (logoLeft + 2400)) <= 4 * 15);
    QVERIFY(scan->isHidden() && Control<QLabel>(m, "lblLicenseControl")->isHidden() &&
            Control<QFrame>(m, "shpSlip")->isHidden());
    QVERIFY(Control<QLabel>(m, "picScanEngineTitle")->isHidden() && Control<QFrame>(m, "linDivider")->isHidden());
    QVERIFY(logo->isVisible());
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
    QVERIFY(logon->AnimationRunning);
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
    const long widthBefore = logon->Width();
    QTRY_VERIFY_WITH_TIMEOUT(!logon->AnimationRunning && logon->isHidden(), 10000);
    // The window swelled by 20 + 40 + ... + 320 twips before it went.
    QVERIFY(qAbs(logon->Width() - (widthBefore + 2720)) <= 16 * 15);
    QCOMPARE(boxes.prompts(), QStringList(2, "Username and/or password are not correct"));
    QCOMPARE(frames.size(), 2);
    QVERIFY(frames[0] != frames[1]); // the logo moved on meanwhile
    auto *m = Forms::get<frmMainMenu>();
    QVERIFY(m->isVisible());
    QVERIFY(qAbs(m->Left() + m->Width() / 2 - ScreenWidthTw() / 2) <= 60);
    QVERIFY(password->isHidden() && Control<QWidget>(logon, "frmKevroLogon")->isHidden());
}

void TestMainMenu::unreachableCatalogueAtStart()
{
    MsgBoxResponder boxes;
    boxes.queue(vbOK);
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    QVERIFY(QFile::rename(m_app.file("odbc.ini"), m_app.file("odbc.away")));
    bool stopped = false;
    try {
        Forms::get<frmMainMenu>();
    } catch (const ProcessEnded &) {
        stopped = true;
    }
    QFile::rename(m_app.file("odbc.away"), m_app.file("odbc.ini"));
    QVERIFY(stopped);
    QCOMPARE(ended, QList<int>{1});
    QCOMPARE(boxes.prompts(), QStringList{"Could not connect to the KEVRO Database.  Database may be deleted or "
                                          "moved, network may be down or ODBC settings may be incorrect.  Can not "
                                          "continue."});
    QCOMPARE(boxes.boxes()[0].icon(), int(vbCritical));
    gConnection.reset();
}

void TestMainMenu::theProgramStartsOnceAndRecoversFromACrash()
{
    const QString kevro = QStringLiteral(KEVRO_BUILD_APP_DIR) + "/kevro";
    QVERIFY(QFile::exists(kevro));
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
    QVERIFY(first.state() == QProcess::Running);
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
