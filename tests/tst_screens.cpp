// The small screens as an operator meets them: Options with and without kevro.ini, the About box's
// slide-in and credits, the splash's start-up steps, the progress box, and the screens' registry.

#include "Operator.h"
#include "TestSupport.h"

#include "platform/MsgBox.h"
#include "controls/DriveList.h"
#include "controls/Forms.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/Progress.h"
#include "shell/frmAbout.h"
#include "shell/frmOptions.h"
#include "shell/frmProgressBox.h"
#include "controls/QuickTimeViewer.h"
#include "shell/frmSplash.h"
#include "shell/CAutoComplete.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

namespace {
// A screen that counts its loads and remembers how it was asked to unload.
struct frmProbe final : Form {
    static inline int loads = 0;
    static inline QList<int> modes;
    void Form_Load() override { ++loads; }
    void Form_QueryUnload(int &, int mode) override { modes << mode; }
};
} // namespace

class TestScreens final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        InstallScreenServices();
        RefuseBoxesWithoutResponder();
    }
    void init() { cleanup(); }
    void cleanup();
    void registryAndUnloadModes();
    void optionsWithoutProfileOkWritesCancelDoesNotThenReads();
    void showOptionsIsModal();
    void aboutSlidesInAndShowsCredits();
    void splashStartsUpAndWarnsWithoutMovies();
    void progressBoxFollowsUpdates();
    void typeAheadCompletesAfterPunctuation();

private:
    TempAppFolder m_app;
};

static frmOptions *shownOptions()
{
    auto *options = Forms::get<frmOptions>();
    options->show();
    if (!QTest::qWaitForWindowExposed(options))
        qWarning("the Options screen did not come on the screen");
    return options;
}

void TestScreens::cleanup()
{
    Forms::unload<frmOptions>();
    Forms::unload<frmAbout>();
    Forms::unload<frmSplash>();
    Forms::unload<frmProgressBox>();
    QFile::remove(IniFileName());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void TestScreens::registryAndUnloadModes()
{
    // One screen of a kind, loaded once; unloaded, it is gone and the next use loads it anew.
    frmProbe::loads = 0;
    frmProbe::modes.clear();
    QPointer<frmProbe> first = Forms::get<frmProbe>();
    QCOMPARE(Forms::get<frmProbe>(), first.data());
    QCOMPARE(frmProbe::loads, 1);
    Forms::unload<frmProbe>();
    QVERIFY(!Forms::isLoaded<frmProbe>());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(first.isNull());
    // The window's own close box unloads with mode 0, the code with mode 1.
    frmProbe *f = Forms::get<frmProbe>();
    QCOMPARE(frmProbe::loads, 2);
    f->show();
    f->close();
    QVERIFY(!Forms::isLoaded<frmProbe>());
    Forms::get<frmProbe>();
    Forms::unload<frmProbe>();
    QCOMPARE(frmProbe::modes, (QList<int>{vbFormCode, vbFormControlMenu, vbFormCode}));
}

void TestScreens::optionsWithoutProfileOkWritesCancelDoesNotThenReads()
{
    MsgBoxResponder boxes;
    boxes.queue(vbOK, 2); // the two loads without a device; the third finds the saved one
    auto *options = shownOptions();
    // "Nowt" names drive N, which is no volume here.
    QCOMPARE(boxes.prompts(), QStringList{"Default device not currently available."});
    QCOMPARE(options->Drive1->ListIndex(), std::min(1, options->Drive1->ListCount() - 1));
    QVERIFY(!options->optHTML->isChecked() && !options->optText->isChecked());
    QVERIFY(!options->optAllFiles->isChecked() && !options->optCheckedFiles->isChecked());
    Click(Control<QPushButton>(options, "cmdCancel"));
    QVERIFY(!Forms::isLoaded<frmOptions>() && !QFile::exists(IniFileName()));

    options = shownOptions();
    QVERIFY(ChooseFromList(options->Drive1, options->Drive1->itemText(options->Drive1->findData("/"))));
    Click(Control<QRadioButton>(options, "optCheckedFiles"));
    Click(Control<QPushButton>(options, "cmdOK")); // neither report type set: HTML
    QVERIFY(!Forms::isLoaded<frmOptions>());
    QCOMPARE(ReadIniKey("Devices", "DefaultDevice "), QString("/"));
    QCOMPARE(ReadIniKey("Reports", "DefaultReportType "), QString("HTML"));
    QCOMPARE(ReadIniKey("Reports", "DefaultReportContent "), QString("CHK"));

    options = shownOptions();
    Click(Control<QRadioButton>(options, "optText"));
    Click(Control<QRadioButton>(options, "optAllFiles"));
    Click(Control<QPushButton>(options, "cmdOK"));
    QCOMPARE(ReadIniKey("Reports", "DefaultReportType "), QString("TEXT"));
    QCOMPARE(ReadIniKey("Reports", "DefaultReportContent "), QString("ALL"));
    QVERIFY(Forms::get<frmOptions>()->optText->isChecked() && Forms::get<frmOptions>()->optAllFiles->isChecked());
    // Lower case and longer values count by their first letters.
    Forms::unload<frmOptions>();
    WriteIniKey("Reports", "DefaultReportType", "htmlish");
    WriteIniKey("Reports", "DefaultReportContent", "chk only");
    options = shownOptions();
    QVERIFY(options->optHTML->isChecked() && options->optCheckedFiles->isChecked());
    QCOMPARE(options->Drive1->Drive(), QString("/"));
    QCOMPARE(options->txtExtractFolder->text(), m_app.path() + "/extract");
    // A profile that cannot be written: the message, and the screen stays open.
    QFile::remove(IniFileName());
    QDir().mkpath(IniFileName());
    boxes.queue(vbOK);
    Click(Control<QPushButton>(options, "cmdOK"));
    QCOMPARE(boxes.prompts().last(), QString("Could not write to KEVRO Configuration file"));
    QVERIFY(Forms::isLoaded<frmOptions>() && QDir(IniFileName()).removeRecursively());
}

void TestScreens::showOptionsIsModal()
{
    MsgBoxResponder boxes;
    boxes.queue(vbOK); // the load without a device
    Form caller;
    bool modal = false;
    QTimer::singleShot(50, [&] {
        auto *options = Forms::get<frmOptions>();
        modal = options->isVisible() && options->windowModality() == Qt::ApplicationModal;
        Click(Control<QPushButton>(options, "cmdCancel"));
    });
    ShowOptions(&caller); // returns once the screen is gone
    QVERIFY(modal && !Forms::isLoaded<frmOptions>());
}

void TestScreens::aboutSlidesInAndShowsCredits()
{
    Form caller;
    ShowAboutBox(&caller); // not modal: returns at once
    auto *about = Forms::get<frmAbout>();
    QVERIFY(about->isVisible());
    QCOMPARE(about->lblAppVersion->text(), QString("KEVRO v%1.%2.%3").arg(KEVRO_VERSION_MAJOR).arg(KEVRO_VERSION_MINOR).arg(KEVRO_VERSION_PATCH));
    // The labels come to rest where the slide ends: 8000 - 12 * 225 and -8000 + 12 * 678 twips.
    QTRY_VERIFY_WITH_TIMEOUT(qAbs(LeftTw(about->lblCopyrightNotice) - 136) <= 15 * 12, 5000);
    QVERIFY(qAbs(LeftTw(about->lblAppVersion) - 5300) <= 15 * 12);
    QTest::mouseDClick(about->picKevro, Qt::LeftButton);
    QCOMPARE(about->lblCopyrightNotice->text(), frmAbout::CreditsLine());
}

void TestScreens::splashStartsUpAndWarnsWithoutMovies()
{
    Forms::get<frmSplash>()->RunStartup();
    QVERIFY(Forms::get<frmSplash>()->SkyLight1->IsInitialized()); // this machine plays QuickTime movies
    Forms::unload<frmSplash>();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    // Without GStreamer's QuickTime demuxer the operator is warned with the code, and start-up goes on.
    qputenv("GST_PLUGIN_SYSTEM_PATH", m_app.path().toLocal8Bit());
    MsgBoxResponder boxes;
    boxes.queue(vbOK);
    auto *splash = Forms::get<frmSplash>();
    splash->show();
    QTRY_VERIFY_WITH_TIMEOUT(splash->StartupDone(), 5000); // the first paint starts it
    QTRY_COMPARE_WITH_TIMEOUT(splash->ProgressBar1->value(), 100, 5000);
    qunsetenv("GST_PLUGIN_SYSTEM_PATH");
    QCOMPARE(boxes.prompts(),
             QStringList{"Unable to Initialize QuickTime! Quicktime movies will not be played.  Ensure that latest "
                         "version of Quicktime is installed.\r2"});
}

void TestScreens::progressBoxFollowsUpdates()
{
    UpdateProgressBox(40, "Walking the disc...");
    auto *box = Forms::get<frmProgressBox>();
    QVERIFY(box->isVisible());
    QCOMPARE(box->lblStatus->text(), QString("Walking the disc..."));
    QCOMPARE(box->ProgressBar->value(), 40);
    UnloadProgressBox();
    QVERIFY(!Forms::isLoaded<frmProgressBox>());
}

void TestScreens::typeAheadCompletesAfterPunctuation()
{
    // Client names carry punctuation; keys that once read as arrows or Delete complete like a letter does.
    QComboBox combo;
    combo.setEditable(true);
    combo.addItems({"A.B. Dick (UK)", "O'Brien & Sons"});
    CAutoComplete ac;
    ac.setLinkedComboBox(&combo);
    combo.show();
    QVERIFY(QTest::qWaitForWindowExposed(&combo));
    for (const auto &[before, key, completed] : QList<std::tuple<QString, char, QString>>{
             {"O", '\'', "O'Brien & Sons"}, {"A.B. Dick ", '(', "A.B. Dick (UK)"}, {"A", '.', "A.B. Dick (UK)"}}) {
        combo.lineEdit()->setText(before);
        combo.lineEdit()->setCursorPosition(int(before.size()));
        QTest::keyClick(&combo, key);
        QCOMPARE(combo.currentText(), completed);
        QCOMPARE(combo.lineEdit()->selectionStart(), int(before.size()));
    }
}

QTEST_MAIN(TestScreens)
#include "tst_screens.moc"
