// The screens on a real X display with a real window manager (openbox): each window is activated as it comes
// up and its grid takes the focus, and a click can arrive while a player waits for its file.

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
#include "review/ReviewScreens.h"
#include "review/ViewerScreen.h"
#include "review/frmScanResultsEXEs.h"
#include "scan/frmScanDisc.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"

#include <QProcess>
#include <QStandardPaths>
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
    const bool active = QTest::qWaitForWindowActive(window);
    QTest::qWait(300);
    return active;
}
} // namespace

class TestDesktop final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void nothingIsTickedButWhatIsOpened_data();
    void nothingIsTickedButWhatIsOpened();
    void anImageJobOpensItsFilesOnEveryViewer();
    void anAccessKeyChecksTheBoxItLeaves_data();
    void anAccessKeyChecksTheBoxItLeaves();

private:
    void scan(const QString &device, const QHash<QString, QString> &open, const char *until, ViewerScreen *&at);

    TempAppFolder m_app;
    CatalogueFixture m_catalogue;
    const QString m_disc = m_app.file(QStringLiteral("demo-disc"));
};

void TestDesktop::initTestCase()
{
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        QSKIP("needs an X display with a window manager: run through ctest, which starts Xvfb and openbox");
    InstallScreenServices();
    RefuseBoxesWithoutResponder();
    SetShellExecuteLauncher([](const ShellExecuteRequest &) { return 42L; });
    QCOMPARE(m_catalogue.create(QStringLiteral("sqlite"), m_app.path()), QString());
    QCOMPARE(LayOutDemoDisc(m_disc), QString());
}

void TestDesktop::cleanup()
{
    SetShellExecuteLauncher([](const ShellExecuteRequest &) { return 42L; });
    for (QWidget *w : QApplication::topLevelWidgets())
        w->hide();
    if (Forms::isLoaded<frmScanDisc>())
        Forms::get<frmScanDisc>()->PrepareToScan();
    Forms::unload<frmScanSummary>();
    Forms::unload<frmScanDisc>();
    Forms::unload<frmLicenseEntry>();
    Forms::unload<frmLicenseControl>();
}

// Scans a disc, every kind asked for, and takes Next through the application viewer and the viewers as far as
// `until` (else to the summary). Each screen must come up activated, a viewer with rows and none ticked: nothing
// of its coming up may open a row. The file `open` names for a screen is opened before its Next.
void TestDesktop::scan(const QString &device, const QHash<QString, QString> &open, const char *until, ViewerScreen *&at)
{
    WriteIniKey("Devices", "DefaultDevice", device);
    auto *scan = Forms::get<frmScanDisc>();
    scan->show();
    QVERIFY(activated(scan));
    Click(scan->cmdNext);
    auto *exes = Forms::get<frmScanResultsEXEs>();
    QVERIFY(activated(exes));
    if (open.contains("frmScanResultsEXEs"))
        ClickRow(exes->gridUnknownEXEs, RowOf(exes->gridUnknownEXEs, open["frmScanResultsEXEs"]));
    Click(exes->cmdNext);
    for (const char *name : {"frmScanResultsVideo", "frmScanResultsAudio", "frmScanResultsImages",
                             "frmScanResultsText", "frmScanResultsOther"}) {
        auto *viewer = static_cast<ViewerScreen *>(ReviewScreenNamed(QLatin1String(name)));
        QVERIFY2(viewer->isVisible() && activated(viewer), name);
        QVERIFY2(viewer->Grid()->Rows() > 1 && viewer->CheckedCount() == 0, name);
        if (until && qstrcmp(name, until) == 0) {
            at = viewer;
            return;
        }
        if (open.contains(name)) {
            ClickRow(viewer->Grid(), RowOf(viewer->Grid(), open[name]));
            QTRY_COMPARE(viewer->CheckedCount(), int16_t(1));
        }
        Click(viewer->cmdNext);
    }
}

// Nothing is ticked but what is opened: not as a viewer comes up, nor by a click or Next while a file loads.
void TestDesktop::nothingIsTickedButWhatIsOpened_data()
{
    QTest::addColumn<QString>("screen");
    QTest::addColumn<QString>("opened");
    QTest::addColumn<QString>("other");
    QTest::addColumn<bool>("accessKey"); // Next by Alt+N rather than by a click
    QTest::newRow("every viewer as it comes up") << QString() << QString() << QString() << false;
    QTest::newRow("a click while a movie loads") << "frmScanResultsVideo" << "INTRO.MPG" << "TRAILER.AVI" << false;
    QTest::newRow("a click while a tune loads") << "frmScanResultsAudio" << "CHIME.WAV" << "THEME.MP3" << false;
    QTest::newRow("Alt+N while a tune loads") << "frmScanResultsAudio" << "CHIME.WAV" << "THEME.MP3" << true;
}

void TestDesktop::nothingIsTickedButWhatIsOpened()
{
    QFETCH(QString, screen);
    QFETCH(QString, opened);
    QFETCH(QString, other);
    QFETCH(bool, accessKey);
    MsgBoxResponder boxes;
    ViewerScreen *viewer = nullptr;
    scan(m_disc, {}, screen.isEmpty() ? nullptr : qPrintable(screen), viewer);
    if (!screen.isEmpty()) {
        QVERIFY(viewer);
        FlexGrid *grid = viewer->Grid();
        auto *player = Control<MediaPlayer>(viewer, "MediaPlayer1");
        // While the player opens the first file the operator clicks another row, then Next.
        bool duringTheLoad = false;
        QTimer::singleShot(0, this, [&] {
            duringTheLoad = viewer->CheckedCount() == 0 && viewer->isVisible();
            ClickRow(grid, RowOf(grid, other));
            if (accessKey)
                QTest::keyClick(viewer, Qt::Key_N, Qt::AltModifier);
            else
                Click(viewer->cmdNext);
        });
        ClickRow(grid, RowOf(grid, opened));
        QVERIFY(duringTheLoad);
        QTest::qWait(200);
        // The file played and ticked, alone, is the one opened; the screen is still up.
        QCOMPARE(QFileInfo(player->FileName()).fileName().toUpper(), opened);
        QVERIFY(viewer->isVisible() && grid->HasCellPicture(RowOf(grid, opened), 4) && viewer->CheckedCount() == 1);
    }
    QCOMPARE(boxes.prompts(), QStringList());
}

void TestDesktop::anImageJobOpensItsFilesOnEveryViewer()
{
    // The demo disc as a disc image, with a program whose version information the viewer shows.
    const QString pe = QStringLiteral(KEVRO_PE_DIR "/english.exe");
    if (!QFileInfo::exists(pe) || QStandardPaths::findExecutable(QStringLiteral("xorriso")).isEmpty())
        QSKIP("xorriso or the test executables are missing (make test installs them)");
    const QString iso = m_app.file(QStringLiteral("master.iso"));
    const QStringList mkisofs{"-as", "mkisofs", "-quiet", "-R", "-J", "-o", iso, "-graft-points"};
    QCOMPARE(QProcess::execute("xorriso", mkisofs + QStringList{"/=" + m_disc, "/Tools/ACMEMENU.EXE=" + pe}), 0);
    QStringList opened;
    SetShellExecuteLauncher([&](const ShellExecuteRequest &r) {
        opened << r.file;
        return 42L;
    });
    MsgBoxResponder boxes;
    // Every screen opens a file of the image: the application viewer reads the version information out
    // of it, and the file's own bytes are what the external files open.
    ViewerScreen *other = nullptr;
    scan(iso, {{"frmScanResultsEXEs", "ACMEMENU.EXE"}, {"frmScanResultsVideo", "TRAILER.AVI"},
               {"frmScanResultsAudio", "CHIME.WAV"}, {"frmScanResultsImages", "COVER.BMP"},
               {"frmScanResultsText", "README.TXT"}},
         "frmScanResultsOther", other);
    QVERIFY(other);
    const QString info = Forms::get<frmScanResultsEXEs>()->txtFileInfo->toPlainText();
    QVERIFY2(info.contains(QStringLiteral("Acme Software Ltd")), qPrintable(info));
    const int data = RowOf(other->Grid(), QStringLiteral("DATA.XYZ"));
    ClickRow(other->Grid(), data);
    QTest::mouseDClick(other->Grid()->viewport(), Qt::LeftButton, Qt::NoModifier, CellCentre(other->Grid(), data, 2));
    QCOMPARE(opened.size(), 1);
    QVERIFY(opened.first().startsWith(ExtractFolder() + QStringLiteral("/.image/")));
    QCOMPARE(ReadTestFile(opened.first()), ReadTestFile(m_disc + QStringLiteral("/DATA.XYZ")));
    QCOMPARE(boxes.prompts(), QStringList());
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
    m_catalogue.addApp(QStringLiteral("Chat Suite"), {QStringLiteral("CHAT.EXE")}, true);
    gClientCode = QString::number(m_catalogue.addClient(QStringLiteral("Northwind Discs")));
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
    QCOMPARE(m_catalogue.column("SELECT LICENSE_ID FROM KEVRO_LICENSES", "LICENSE_ID"), QStringList());
    // Mended, the same key saves.
    ClearText(entry->txtStartDate);
    QTest::keyClicks(entry->txtStartDate, typedDate(31, 1, 2026));
    boxes.queue(vbOK);
    QTest::keyClick(entry->txtStartDate, Qt::Key_S, Qt::AltModifier);
    QCOMPARE(m_catalogue.column("SELECT LICENSE_ID FROM KEVRO_LICENSES", "LICENSE_ID").size(), 1);
}

QTEST_MAIN(TestDesktop)
#include "tst_desktop.moc"
