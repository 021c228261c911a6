// KEVRO's start and its hub as an operator uses them: a client chosen by code, by name and by
// type-ahead; the code search and its warning; the checks before each move; the slide and the hover
// pictures; the shutdown roads; the logon; the start of the program itself, a second copy of it and a
// copy that crashed; and the message when the catalogue cannot be reached.

#include "TestSupport.h"

#include "catalogue/CatalogueSetup.h"
#include "catalogue/Database.h"
#include "platform/MsgBox.h"
#include "platform/VbError.h"
#include "shell/CAutoComplete.h"
#include "controls/Forms.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/frmLogon.h"
#include "shell/frmMainMenu.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QMouseEvent>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
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
    void cleanup();
    void loadFillsParallelLists();
    void chooseByCodeAndByName();
    void typeAhead();
    void findInList();
    void codeSearch();
    void checksBeforeEachMove();
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
    qputenv("ODBCINI", m_app.file("no-user-odbc.ini").toLocal8Bit());
    qputenv("ODBCSYSINI", m_app.file("no-system-odbc").toLocal8Bit());
    m_target.sqliteFile = m_app.file("kevro.db");
    QCOMPARE(CreateCatalogue(m_target, true), QString());
    QCOMPARE(LoadDemoCatalogue(m_target), QString());
    QCOMPARE(WriteDataSourceEntry(m_target, m_app.file("odbc.ini")), QString());
}

void TestMainMenu::cleanup()
{
    Forms::unload<frmMainMenu>();
    Forms::unload<frmLogon>();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    SetEndProcessHook(nullptr);
}

frmMainMenu *TestMainMenu::menu()
{
    auto *m = Forms::get<frmMainMenu>();
    m->show();
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
    QCOMPARE(m->windowTitle(), QString("KEVRO - Main Menu"));
    QCOMPARE(m->cmbClientName->count(), 4);
    QCOMPARE(m->cmbClientName->itemText(0), QString("Blue Yonder Music"));
    QCOMPARE(m->cmbClientName->itemText(3), QString("Northwind Records"));
    for (int i = 0; i < 4; ++i)
        QCOMPARE(m->cmbClientCode->itemText(i), codeOf(m->cmbClientName->itemText(i)));
    QCOMPARE(m->cmbClientCode->currentText(), QString(""));
    QCOMPARE(m->cmbClientName->currentText(), QString(""));
    QVERIFY(ListIsEmpty(gMediaFiles) && ListIsEmpty(gCheckedItems) && ListIsEmpty(gExternalFiles));
    QCOMPARE(gMediaFiles.size(), 1);
    QCOMPARE(m->lblClientControl->text(), QString("Clients"));
    QCOMPARE(m->findChild<QAction *>("mnuDatabaseFileControl")->text(), QString("&Applications"));
    QVERIFY(m->AutoComplete() && m->AutoComplete()->LinkedComboBox() == m->cmbClientName);
}

void TestMainMenu::chooseByCodeAndByName()
{
    MsgBoxResponder boxes;
    auto *m = menu();
    const QString contoso = codeOf("Contoso Games");
    const QString northwind = codeOf("Northwind Records");
    // A click on a code brings its name, and the code into the search box.
    const int c = m->cmbClientCode->findText(contoso);
    m->cmbClientCode->setCurrentIndex(c);
    Q_EMIT m->cmbClientCode->activated(c);
    QCOMPARE(m->cmbClientName->currentText(), QString("Contoso Games"));
    QCOMPARE(gClientCode, contoso);
    QCOMPARE(gClientName, QString("Contoso Games"));
    QCOMPARE(m->txtClientSearch->text(), contoso);
    // A click on a name brings its code.
    const int n = m->cmbClientName->findText("Northwind Records");
    m->cmbClientName->setCurrentIndex(n);
    Q_EMIT m->cmbClientName->activated(n);
    QCOMPARE(m->cmbClientCode->currentText(), northwind);
    QCOMPARE(gClientCode, northwind);
    QCOMPARE(gClientName, QString("Northwind Records"));
    QVERIFY(boxes.boxes().isEmpty());
    // A name typed by hand lands in the code field, and so in the job, until an entry is clicked.
    m->cmbClientName->lineEdit()->clear();
    QTest::keyClicks(m->cmbClientName, "3");
    QCOMPARE(m->cmbClientCode->currentText(), QString("3"));
    QCOMPARE(gClientCode, QString("3"));
    // The catalogue number follows its box.
    QTest::keyClicks(m->txtCatNo, "CAT-42");
    QCOMPARE(gCatalogueNumber, QString("CAT-42"));
}

void TestMainMenu::typeAhead()
{
    auto *m = menu();
    QLineEdit *edit = m->cmbClientName->lineEdit();
    QComboBox *combo = m->cmbClientName; // the keys reach the combo, as the keyboard's do
    combo->setFocus();
    // One letter completes the first name that begins with it, whatever its case; the last typed
    // letter is selected with the completed tail.
    QTest::keyClick(combo, Qt::Key_N);
    QCOMPARE(edit->text(), QString("Northwind Records"));
    QCOMPARE(edit->selectionStart(), 0);
    QCOMPARE(edit->selectedText(), QString("Northwind Records"));
    QVERIFY(m->cmbClientName->view()->isVisible());
    // Enter takes the entry: the client is chosen.
    QTest::keyClick(combo, Qt::Key_Return);
    QTRY_COMPARE(m->cmbClientCode->currentText(), codeOf("Northwind Records"));
    QCOMPARE(gClientName, QString("Northwind Records"));

    // Backspace never completes, so the completed tail can be deleted.
    edit->setText("Nort");
    edit->setCursorPosition(4);
    QTest::keyClick(combo, Qt::Key_Backspace);
    QCOMPARE(edit->text(), QString("Nor"));
    // A letter that leaves no match closes the list and keeps the text as typed, caret in place.
    edit->setText("Blue");
    edit->setCursorPosition(4);
    QTest::keyClick(combo, Qt::Key_X);
    QCOMPARE(edit->text(), QString("Bluex"));
    QCOMPARE(edit->cursorPosition(), 5);
    QVERIFY(!m->cmbClientName->view()->isVisible());
}

void TestMainMenu::findInList()
{
    auto *m = menu();
    CAutoComplete *ac = m->AutoComplete();
    QCOMPARE(ac->FindInList("contoso", -1, false), m->cmbClientName->findText("Contoso Games"));
    QCOMPARE(ac->FindInList("CONTOSO GAMES", -1, true), m->cmbClientName->findText("Contoso Games"));
    QCOMPARE(ac->FindInList("Contoso", -1, true), -1);
    QCOMPARE(ac->FindInList("Zebra", -1, false), -1);
    // From a start entry the search goes on behind it and comes round again.
    const int blue = m->cmbClientName->findText("Blue Yonder Music");
    QCOMPARE(ac->FindInList("B", blue, false), blue);
    QVERIFY(!ac->AutoAdd());
    ac->setAutoAdd(true);
    m->cmbClientName->lineEdit()->setText("Brand New Client");
    QTest::keyClick(m->cmbClientName, Qt::Key_Return);
    QVERIFY(ac->FindInList("Brand New Client", -1, true) >= 0);
}

void TestMainMenu::codeSearch()
{
    MsgBoxResponder boxes;
    boxes.queue(vbOK, 2);
    auto *m = menu();
    const QString fabrikam = codeOf("Fabrikam Learning");
    // The first code that begins with the text exactly is taken.
    m->txtClientSearch->setText(fabrikam);
    QCOMPARE(m->cmbClientCode->currentText(), fabrikam);
    QVERIFY(boxes.boxes().isEmpty());
    // Every keystroke that leaves no match warns.
    QTest::keyClicks(m->txtClientSearch, "99");
    QCOMPARE(boxes.prompts(), (QStringList{"No match", "No match"}));
    QCOMPARE(boxes.boxes()[0].icon(), int(vbExclamation));
    // Clearing the box says nothing and leaves the selection.
    boxes.clear();
    m->txtClientSearch->clear();
    QVERIFY(boxes.boxes().isEmpty());
    QCOMPARE(m->cmbClientCode->currentText(), fabrikam);
}

void TestMainMenu::checksBeforeEachMove()
{
    MsgBoxResponder boxes;
    boxes.queue(vbOK, 4);
    auto *m = menu();
    QTest::mouseClick(m->cmdScanDisc, Qt::LeftButton);
    QTest::mouseClick(m->cmdLicenseControl, Qt::LeftButton);
    m->findChild<QAction *>("mnuScanEngineScanDisc")->trigger();
    m->findChild<QAction *>("mnuDatabaseLicenseControl")->trigger();
    QCOMPARE(boxes.prompts(), QStringList(4, "You must select a client to work with."));
    boxes.clear();
    // The client chosen from the code list with the keyboard: the scan still wants a catalogue number.
    m->cmbClientCode->setFocus();
    while (m->cmbClientCode->currentText() != codeOf("Contoso Games"))
        QTest::keyClick(m->cmbClientCode, Qt::Key_Down);
    boxes.queue(vbOK);
    QTest::mouseClick(m->cmdScanDisc, Qt::LeftButton);
    QCOMPARE(boxes.prompts(), QStringList{"You must enter a catalogue number."});
    QVERIFY(m->isVisible());
    boxes.clear();
}

void TestMainMenu::emptyClientTable()
{
    MsgBoxResponder boxes;
    boxes.queue(vbOK, 2);
    OpenDatabase();
    gConnection->Execute("DELETE * FROM KEVRO_CLIENTS");
    CloseDatabase();
    auto *m = menu();
    QCOMPARE(m->cmbClientCode->count(), 0);
    QCOMPARE(m->cmbClientName->count(), 0);
    QTest::mouseClick(m->cmdScanDisc, Qt::LeftButton);
    QTest::mouseClick(m->cmdLicenseControl, Qt::LeftButton);
    QCOMPARE(boxes.prompts(), QStringList(2, "You must select a client to work with."));
    Forms::unload<frmMainMenu>();
    QCOMPARE(LoadDemoCatalogue(m_target), QString()); // the owners and applications come twice: harmless here
}

void TestMainMenu::slideAndHover()
{
    auto *m = menu();
    QVERIFY(QTest::qWaitForWindowExposed(m));
    const QPixmap normal = m->picClientsNormal->pixmap();
    const QPixmap hover = m->picClientsHover->pixmap();
    QVERIFY(!hover.isNull() && hover.toImage() != normal.toImage());
    auto moveOver = [](QWidget *w, QPoint p) {
        QMouseEvent move(QEvent::MouseMove, p, w->mapToGlobal(p), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(w, &move);
    };
    auto face = [&] { return m->cmdClients->icon().pixmap(64).toImage(); };
    QCOMPARE(face(), QIcon(normal).pixmap(64).toImage());
    moveOver(m->cmdClients, QPoint(10, 10));
    QCOMPARE(face(), QIcon(hover).pixmap(64).toImage());
    QCOMPARE(m->cmdReports->icon().pixmap(64).toImage(), QIcon(m->picReportsNormal->pixmap()).pixmap(64).toImage());
    moveOver(m->centralWidget(), QPoint(5, m->centralWidget()->height() - 5));
    QCOMPARE(face(), QIcon(normal).pixmap(64).toImage());

    const long buttonLeft = LeftTw(m->cmdScanDisc), logoLeft = LeftTw(m->picLogo);
    m->SlideMenuOut(4);
    QVERIFY(qAbs(LeftTw(m->cmdScanDisc) - (buttonLeft - 2400)) <= 4 * 15);
    QVERIFY(qAbs(LeftTw(m->picLogo) - (logoLeft + 2400)) <= 4 * 15);
    QVERIFY(m->cmdScanDisc->isHidden() && m->lblLicenseControl->isHidden() && m->shpSlip->isHidden());
    QVERIFY(m->picScanEngineTitle->isHidden() && m->linDivider->isHidden());
    QVERIFY(m->picLogo->isVisible());
}

void TestMainMenu::shutdownRoads()
{
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    auto *m = menu();
    m->findChild<QAction *>("mnuFileExit")->trigger();
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
    QCOMPARE(logon->windowTitle(), QString("KEVRO - Logon"));
    QVERIFY(logon->AnimationRunning);
    QStringList frames;
    // The animation loop holds the screen from its activation on: the operator's typing comes in
    // between its frames.
    QTimer::singleShot(300, logon, [&] {
        frames << QString::number(logon->picLogo->pixmap().cacheKey());
        logon->txtUserName->setText("BIMPO");
        logon->txtPassword->setText(frmLogon::Password);
        logon->txtGo->click(); // refused: the comparison is exact
        QTest::keyClick(logon->txtUserName, Qt::Key_Return); // Enter in either field submits
        QTimer::singleShot(300, logon, [&] {
            frames << QString::number(logon->picLogo->pixmap().cacheKey());
            logon->txtUserName->setText(frmLogon::UserName);
            QTest::keyClick(logon->txtPassword, Qt::Key_Return);
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
    QVERIFY(logon->txtPassword->isHidden() && logon->frmKevroLogon->isHidden());
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
