// The screens on a real X display with a real window manager (openbox), as an operator's desktop runs
// them: each window is activated as it comes up and its grid takes the focus, and a click can arrive
// while a player waits for its file. No offscreen test ever sees either.

#include "CatalogueFixture.h"
#include "Operator.h"
#include "TestSupport.h"

#include "catalogue/Connection.h"
#include "catalogue/DemoDisc.h"
#include "catalogue/frmLicenseControl.h"
#include "catalogue/frmLicenseEntry.h"
#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/MediaPlayer.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/ShellOpen.h"
#include "reporting/frmScanSummary.h"
#include "review/ViewerScreen.h"
#include "review/frmScanResultsAudio.h"
#include "review/frmScanResultsEXEs.h"
#include "review/frmScanResultsImages.h"
#include "review/frmScanResultsOther.h"
#include "review/frmScanResultsText.h"
#include "review/frmScanResultsVideo.h"
#include "scan/frmScanDisc.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"

#include "controls/DriveList.h"
#include "controls/PictureView.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QProcess>
#include <QStandardPaths>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

namespace {
// A date as the operator types it in this machine's short-date order.
QString typedDate(int d, int m, int y)
{
    const QString order = LocaleDateOrder();
    return order == "DMY"   ? QStringLiteral("%1/%2/%3").arg(d).arg(m).arg(y)
           : order == "MDY" ? QStringLiteral("%1/%2/%3").arg(m).arg(d).arg(y)
                            : QStringLiteral("%1-%2-%3").arg(y).arg(m).arg(d);
}

// Waits until the window manager has made the window active and the events of its coming up are done.
bool activated(QWidget *window)
{
    if (!QTest::qWaitForWindowActive(window))
        return false;
    QTest::qWait(300);
    return true;
}

int ticks(FlexGrid *grid, int tickColumn)
{
    int n = 0;
    for (int r = 1; r < grid->Rows(); ++r)
        n += grid->HasCellPicture(r, tickColumn) ? 1 : 0;
    return n;
}
} // namespace

class TestDesktop final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void viewersTickNothingUntilARowIsOpened();
    void aClickWhileAFileLoadsOpensNothingElse_data();
    void aClickWhileAFileLoadsOpensNothingElse();
    void anImageJobOpensItsFilesOnEveryViewer();
    void anAccessKeyChecksTheBoxItLeaves_data();
    void anAccessKeyChecksTheBoxItLeaves();

private:
    // Scans the demo disc from the set-up screen, every kind asked for.
    void scanTheDemoDisc();

    TempAppFolder m_app;
    CatalogueFixture m_catalogue;
    QString m_disc;
};

void TestDesktop::initTestCase()
{
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        QSKIP("needs an X display with a window manager: run through ctest, which starts Xvfb and openbox");
    InstallScreenServices();
    RefuseBoxesWithoutResponder();
    SetShellExecuteLauncher([](const ShellExecuteRequest &) { return 42L; });
    QCOMPARE(m_catalogue.create(QStringLiteral("sqlite"), m_app.path()), QString());
    m_disc = m_app.file(QStringLiteral("demo-disc"));
    QCOMPARE(LayOutDemoDisc(m_disc), QString());
}

void TestDesktop::cleanup()
{
    for (QWidget *w : QApplication::topLevelWidgets())
        w->hide();
    if (Forms::isLoaded<frmScanDisc>())
        Forms::get<frmScanDisc>()->PrepareToScan();
    Forms::unload<frmScanSummary>();
    Forms::unload<frmScanDisc>();
    Forms::unload<frmLicenseEntry>();
    Forms::unload<frmLicenseControl>();
}

void TestDesktop::scanTheDemoDisc()
{
    WriteIniKey("Devices", "DefaultDevice", m_disc);
    ResetList(gCheckedItems);
    auto *scan = Forms::get<frmScanDisc>();
    scan->show();
    QVERIFY(activated(scan));
    Click(scan->cmdNext);
}

void TestDesktop::viewersTickNothingUntilARowIsOpened()
{
    MsgBoxResponder boxes;
    scanTheDemoDisc();
    auto *exes = Forms::get<frmScanResultsEXEs>();
    QVERIFY(activated(exes));
    Click(exes->cmdNext);
    // Video, audio, images, text, external: each comes up, is activated, its grid has the focus, and
    // nothing is opened or ticked.
    for (const char *name : {"frmScanResultsVideo", "frmScanResultsAudio", "frmScanResultsImages",
                             "frmScanResultsText", "frmScanResultsOther"}) {
        QWidget *screen = nullptr;
        for (QWidget *w : QApplication::topLevelWidgets())
            if (w->objectName() == QLatin1String(name) && w->isVisible())
                screen = w;
        QVERIFY2(screen, name);
        QVERIFY2(activated(screen), name);
        auto *viewer = static_cast<ViewerScreen *>(screen);
        QVERIFY2(viewer->Grid()->Rows() > 1, name);
        QCOMPARE(ticks(viewer->Grid(), viewer->Grid()->Cols() - 1), 0);
        QCOMPARE(viewer->CheckedCount(), int16_t(0));
        QVERIFY2(ListIsEmpty(gCheckedItems), qPrintable(gCheckedItems.first().text));
        Click(viewer->cmdNext);
    }
    auto *summary = Forms::get<frmScanSummary>();
    QVERIFY(activated(summary));
    for (QLabel *checked : {summary->lblVideoChecked, summary->lblAudioChecked, summary->lblImagesChecked,
                            summary->lblTextChecked, summary->lblExternalChecked})
        QCOMPARE(checked->text(), QStringLiteral("0"));
    QCOMPARE(boxes.prompts(), QStringList());
}

void TestDesktop::aClickWhileAFileLoadsOpensNothingElse_data()
{
    QTest::addColumn<QString>("screen");
    QTest::addColumn<QString>("opened");
    QTest::addColumn<QString>("other");
    QTest::newRow("a movie") << "frmScanResultsVideo" << "INTRO.MPG" << "TRAILER.AVI";
    QTest::newRow("a tune") << "frmScanResultsAudio" << "CHIME.WAV" << "THEME.MP3";
}

void TestDesktop::aClickWhileAFileLoadsOpensNothingElse()
{
    QFETCH(QString, screen);
    QFETCH(QString, opened);
    QFETCH(QString, other);
    MsgBoxResponder boxes;
    scanTheDemoDisc();
    auto *exes = Forms::get<frmScanResultsEXEs>();
    QVERIFY(activated(exes));
    Click(exes->cmdNext);
    if (screen == QLatin1String("frmScanResultsAudio"))
        Click(Forms::get<frmScanResultsVideo>()->cmdNext);
    auto *viewer = static_cast<ViewerScreen *>(screen == QLatin1String("frmScanResultsAudio")
                                                   ? static_cast<QWidget *>(Forms::get<frmScanResultsAudio>())
                                                   : Forms::get<frmScanResultsVideo>());
    QVERIFY(activated(viewer));
    FlexGrid *grid = viewer->Grid();
    MediaPlayer *player = viewer->findChild<MediaPlayer *>(QStringLiteral("MediaPlayer1"));
    QVERIFY(player);
    // While the player opens the first file the operator clicks another row, then Next.
    bool duringTheLoad = false;
    QTimer::singleShot(0, this, [&] {
        duringTheLoad = viewer->CheckedCount() == 0 && viewer->isVisible();
        ClickRow(grid, RowOf(grid, other));
        Click(viewer->cmdNext);
    });
    ClickRow(grid, RowOf(grid, opened));
    QVERIFY(duringTheLoad);
    QTest::qWait(200);
    // The file played and ticked is the one opened; the screen is still up with one row checked.
    QVERIFY(viewer->isVisible());
    QCOMPARE(QFileInfo(player->FileName()).fileName().toUpper(), opened);
    QVERIFY(grid->HasCellPicture(RowOf(grid, opened), 4));
    QCOMPARE(ticks(grid, 4), 1);
    QCOMPARE(gCheckedItems.size(), 1);
    QVERIFY(gCheckedItems.first().text.contains(opened));
    QCOMPARE(boxes.prompts(), QStringList());
}

void TestDesktop::anImageJobOpensItsFilesOnEveryViewer()
{
    // The demo disc as a disc image, with a program whose version information the viewer shows.
    const QString pe = QStringLiteral(KEVRO_PE_DIR "/english.exe");
    if (!QFileInfo::exists(pe) || QStandardPaths::findExecutable(QStringLiteral("xorriso")).isEmpty())
        QSKIP("xorriso or the test executables are missing (make test installs them)");
    const QString master = m_app.file(QStringLiteral("image-master"));
    QCOMPARE(LayOutDemoDisc(master), QString());
    QVERIFY(QFile::copy(pe, master + QStringLiteral("/Tools/ACMEMENU.EXE")));
    const QString iso = m_app.file(QStringLiteral("master.iso"));
    QCOMPARE(QProcess::execute(QStringLiteral("xorriso"), {"-as", "mkisofs", "-quiet", "-R", "-J", "-o", iso, master}), 0);
    QStringList opened;
    SetShellExecuteLauncher([&](const ShellExecuteRequest &r) {
        opened << r.file;
        return 42L;
    });
    MsgBoxResponder boxes;
    WriteIniKey("Devices", "DefaultDevice", iso);
    ResetList(gCheckedItems);
    auto *scan = Forms::get<frmScanDisc>();
    scan->show();
    QVERIFY(activated(scan));
    QCOMPARE(scan->Drive1->Drive(), iso);
    Click(scan->cmdNext);

    // The application viewer reads the version information out of the image.
    auto *exes = Forms::get<frmScanResultsEXEs>();
    QVERIFY(activated(exes));
    const int menu = RowOf(exes->gridUnknownEXEs, QStringLiteral("ACMEMENU.EXE"));
    QVERIFY(menu > 0);
    ClickRow(exes->gridUnknownEXEs, menu);
    QVERIFY2(exes->txtFileInfo->toPlainText().contains(QStringLiteral("Acme Software Ltd")),
             qPrintable(exes->txtFileInfo->toPlainText()));
    Click(exes->cmdNext);

    // Each viewer opens a file of the image: the row is ticked and the file's own bytes are what opened.
    const QList<QPair<const char *, QString>> rows{{"frmScanResultsVideo", QStringLiteral("TRAILER.AVI")},
                                                   {"frmScanResultsAudio", QStringLiteral("CHIME.WAV")},
                                                   {"frmScanResultsImages", QStringLiteral("COVER.BMP")},
                                                   {"frmScanResultsText", QStringLiteral("README.TXT")}};
    for (const auto &[name, file] : rows) {
        ViewerScreen *viewer = nullptr;
        for (QWidget *w : QApplication::topLevelWidgets())
            if (w->objectName() == QLatin1String(name) && w->isVisible())
                viewer = static_cast<ViewerScreen *>(w);
        QVERIFY2(viewer && activated(viewer), name);
        const int row = RowOf(viewer->Grid(), file);
        QVERIFY2(row > 0, name);
        ClickRow(viewer->Grid(), row);
        QTRY_COMPARE(viewer->CheckedCount(), int16_t(1));
        Click(viewer->cmdNext);
    }
    QCOMPARE(gCheckedItems.size(), 4);
    QVERIFY(Forms::get<frmScanResultsImages>()->picSelectedImage->HasPicture());
    const QString readMe = QString::fromUtf8(ReadTestFile(master + QStringLiteral("/README.TXT")));
    QVERIFY(Forms::get<frmScanResultsText>()->txtSelectedText->toPlainText().startsWith(readMe.left(20)));
    auto *other = Forms::get<frmScanResultsOther>();
    QVERIFY(activated(other));
    const int data = RowOf(other->Grid(), QStringLiteral("DATA.XYZ"));
    ClickRow(other->Grid(), data);
    QTest::mouseDClick(other->Grid()->viewport(), Qt::LeftButton, Qt::NoModifier, CellCentre(other->Grid(), data, 2));
    QCOMPARE(opened.size(), 1);
    QVERIFY(opened.first().startsWith(ExtractFolder() + QStringLiteral("/.image/")));
    QCOMPARE(ReadTestFile(opened.first()), ReadTestFile(master + QStringLiteral("/DATA.XYZ")));
    QCOMPARE(boxes.prompts(), QStringList());
    SetShellExecuteLauncher([](const ShellExecuteRequest &) { return 42L; });
}

void TestDesktop::anAccessKeyChecksTheBoxItLeaves_data()
{
    QTest::addColumn<QString>("engine");
    QTest::newRow("sqlite") << "sqlite";
    QTest::newRow("postgresql") << "postgresql";
}

void TestDesktop::anAccessKeyChecksTheBoxItLeaves()
{
    QFETCH(QString, engine);
    if (engine == QLatin1String("postgresql") && !CatalogueFixture::postgresAvailable()) {
        if (qEnvironmentVariableIsSet("CI"))
            QFAIL("KEVRO_TEST_PG is not set: CI must run the PostgreSQL tests (make test starts the server)");
        QSKIP("no PostgreSQL server: run through `make test`, which starts one");
    }
    QCOMPARE(m_catalogue.create(engine, m_app.path()), QString());
    m_catalogue.execute("INSERT INTO KEVRO_OWNERS (OWNER_NAME) VALUES ('Acme')");
    m_catalogue.addApp(QStringLiteral("Chat Suite"), {QStringLiteral("CHAT.EXE")}, true);
    gClientCode = QString::number(m_catalogue.addClient(QStringLiteral("Northwind Discs")));
    gClientName = QStringLiteral("Northwind Discs");
    MsgBoxResponder boxes;
    auto *list = Forms::get<frmLicenseControl>();
    list->DisplayLicenseDetails();
    list->show();
    QVERIFY(activated(list));
    Click(list->cmdAddRecord);
    auto *entry = Forms::get<frmLicenseEntry>();
    QVERIFY(activated(entry));
    QVERIFY(ChooseFromList(entry->drpLicenseFile, QStringLiteral("Chat Suite")));
    Click(entry->txtEndDate);
    QTest::keyClicks(entry->txtEndDate, typedDate(31, 12, 2030));
    Click(entry->txtStartDate);
    QTest::keyClicks(entry->txtStartDate, QStringLiteral("no date"));
    // Alt+S: the box being left is checked; it keeps the focus and nothing is saved.
    boxes.queue(vbOK);
    QTest::keyClick(entry->txtStartDate, Qt::Key_S, Qt::AltModifier);
    QCOMPARE(boxes.prompts(), QStringList{"Invalid date."});
    QTRY_VERIFY(entry->txtStartDate->hasFocus());
    QVERIFY(entry->isVisible());
    QCOMPARE(m_catalogue.column("SELECT LICENSE_ID FROM KEVRO_LICENSES", "LICENSE_ID"), QStringList());
    // Mended, the same key saves.
    ClearText(entry->txtStartDate);
    QTest::keyClicks(entry->txtStartDate, typedDate(31, 1, 2026));
    boxes.queue(vbOK);
    QTest::keyClick(entry->txtStartDate, Qt::Key_S, Qt::AltModifier);
    QCOMPARE(boxes.prompts().last(), QStringLiteral("Record added to KEVRO database"));
    QCOMPARE(m_catalogue.column("SELECT LICENSE_ID FROM KEVRO_LICENSES", "LICENSE_ID").size(), 1);
}

QTEST_MAIN(TestDesktop)
#include "tst_desktop.moc"
