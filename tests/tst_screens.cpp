// The small screens as an operator meets them: Options with and without kevro.ini, the About box's
// slide-in and credits, the splash's start-up steps, the progress box, and the screens' registry.

#include "Operator.h"
#include "TestSupport.h"

#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/VbError.h"
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

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>

namespace {
// A screen that counts its loads and remembers how it was asked to unload.
class frmProbe final : public Form
{
public:
    static inline int loads = 0;
    static inline QList<int> modes;

protected:
    void Form_Load() override { ++loads; }
    void Form_QueryUnload(int &, int mode) override { modes << mode; }
};
} // namespace

class TestScreens final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init() { cleanup(); }
    void cleanup();
    void registryAndUnloadModes();
    void optionsReadsTheProfile();
    void optionsWithoutProfileOkWritesCancelDoesNot();
    void optionsOkWhenTheProfileCannotBeWritten();
    void showOptionsIsModalAndPlaced();
    void aboutSlidesInAndShowsCredits();
    void splashStartsUpAndWarnsWithoutMovies();
    void progressBoxFollowsUpdates();
    void typeAheadCompletesAfterPunctuation();

private:
    TempAppFolder m_app;
};

void TestScreens::initTestCase()
{
    InstallScreenServices();
    RefuseBoxesWithoutResponder();
}

// The Options screen as the operator meets it: on the screen.
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
    frmProbe *first = Forms::get<frmProbe>();
    QCOMPARE(Forms::get<frmProbe>(), first);
    QCOMPARE(frmProbe::loads, 1);
    QVERIFY(Forms::isLoaded<frmProbe>());
    Forms::unload<frmProbe>();
    QVERIFY(!Forms::isLoaded<frmProbe>());
    QPointer<frmProbe> gone(first);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(gone.isNull());
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

void TestScreens::optionsReadsTheProfile()
{
    MsgBoxResponder boxes;
    WriteTestFile(IniFileName(), "[Devices]\r\nDefaultDevice=/\r\n[Reports]\r\n"
                                 "DefaultReportType=htmlish\r\nDefaultReportContent=all files\r\n");
    auto *options = Forms::get<frmOptions>();
    QVERIFY(boxes.boxes().isEmpty());
    // Lower case and longer values count by their first letters.
    QVERIFY(options->optHTML->isChecked());
    QVERIFY(!options->optText->isChecked());
    QVERIFY(options->optAllFiles->isChecked());
    QCOMPARE(options->Drive1->Drive(), QString("/"));
    QCOMPARE(options->txtExtractFolder->text(), m_app.path() + "/extract");
    // Browse does nothing: no box, and the screen stays as it is.
    options->show();
    QVERIFY(QTest::qWaitForWindowExposed(options));
    Click(Control<QPushButton>(options, "cmdBrowse"));
    QVERIFY(boxes.boxes().isEmpty());
    QVERIFY(Forms::isLoaded<frmOptions>() && options->isVisible());
}

void TestScreens::optionsWithoutProfileOkWritesCancelDoesNot()
{
    MsgBoxResponder boxes;
    boxes.queue(vbOK, 2); // the two loads without a device
    auto *options = shownOptions();
    // "Nowt" names drive N, which is no volume here.
    QCOMPARE(boxes.prompts(), QStringList{"Default device not currently available."});
    QCOMPARE(boxes.boxes()[0].icon(), int(vbCritical));
    QCOMPARE(options->Drive1->ListIndex(), std::min(1, options->Drive1->ListCount() - 1));
    QVERIFY(!options->optHTML->isChecked() && !options->optText->isChecked());
    QVERIFY(!options->optAllFiles->isChecked() && !options->optCheckedFiles->isChecked());
    Click(Control<QPushButton>(options, "cmdCancel"));
    QVERIFY(!Forms::isLoaded<frmOptions>());
    QVERIFY(!QFile::exists(IniFileName()));

    options = shownOptions();
    auto *drives = Control<DriveList>(options, "Drive1");
    QVERIFY(ChooseFromList(drives, drives->itemText(drives->findData("/"))));
    Click(Control<QRadioButton>(options, "optCheckedFiles"));
    Click(Control<QPushButton>(options, "cmdOK")); // neither report type set: HTML
    QVERIFY(!Forms::isLoaded<frmOptions>());
    QCOMPARE(ReadIniKey("Devices", "DefaultDevice "), QString("/"));
    QCOMPARE(ReadIniKey("Reports", "DefaultReportType "), QString("HTML"));
    QCOMPARE(ReadIniKey("Reports", "DefaultReportContent "), QString("CHK"));

    options = shownOptions();
    QCOMPARE(boxes.boxes().size(), 2); // the saved device is found
    Click(Control<QRadioButton>(options, "optText"));
    Click(Control<QRadioButton>(options, "optAllFiles"));
    Click(Control<QPushButton>(options, "cmdOK"));
    QCOMPARE(ReadIniKey("Reports", "DefaultReportType "), QString("TEXT"));
    QCOMPARE(ReadIniKey("Reports", "DefaultReportContent "), QString("ALL"));
    options = Forms::get<frmOptions>();
    QCOMPARE(boxes.boxes().size(), 2);
    QVERIFY(options->optText->isChecked());
}

void TestScreens::optionsOkWhenTheProfileCannotBeWritten()
{
    MsgBoxResponder boxes;
    boxes.queue(vbOK, 2); // the load without a device, then the failed write
    QDir().mkpath(IniFileName()); // a folder where the file should be
    auto *options = shownOptions();
    boxes.clear();
    Click(Control<QPushButton>(options, "cmdOK"));
    QCOMPARE(boxes.prompts(), QStringList{"Could not write to KEVRO Configuration file"});
    QCOMPARE(boxes.boxes()[0].icon(), int(vbCritical));
    QVERIFY(Forms::isLoaded<frmOptions>()); // the screen stays open
    QDir(IniFileName()).removeRecursively();
}

void TestScreens::showOptionsIsModalAndPlaced()
{
    MsgBoxResponder boxes;
    boxes.queue(vbOK); // the load without a device
    Form caller;
    caller.setFixedSize(600, 400);
    caller.Move(3000, 1500);
    caller.show();
    long left = 0, top = 0;
    bool modal = false;
    QTimer::singleShot(50, [&] {
        auto *options = Forms::get<frmOptions>();
        left = options->Left();
        top = options->Top();
        modal = options->isVisible() && options->windowModality() == Qt::ApplicationModal;
        Click(Control<QPushButton>(options, "cmdCancel"));
    });
    ShowOptions(&caller); // returns once the screen is gone
    QVERIFY(modal);
    QVERIFY(!Forms::isLoaded<frmOptions>());
    QCOMPARE(left, caller.Left() + caller.Width() / 2 - caller.Width() / 4 - 300);
    QCOMPARE(top, caller.Top() + caller.Height() / 2 - caller.Height() / 4 - 300);
}

void TestScreens::aboutSlidesInAndShowsCredits()
{
    Form caller;
    caller.setFixedSize(800, 600);
    caller.Move(1500, 1500);
    ShowAboutBox(&caller); // not modal: returns at once
    auto *about = Forms::get<frmAbout>();
    QVERIFY(about->isVisible());
    QCOMPARE(about->lblAppVersion->text(), QString("KEVRO v%1.%2.%3").arg(KEVRO_VERSION_MAJOR).arg(KEVRO_VERSION_MINOR).arg(KEVRO_VERSION_PATCH));
    QCOMPARE(about->lblCopyrightNotice->text(), frmAbout::CopyrightNotice());
    // Within the window frame's few pixels, which are only known once the box is on the screen.
    QVERIFY(qAbs(about->Left() - (caller.Left() + caller.Width() / 2 - about->Width() / 2)) <= 60);
    // The labels come to rest where the slide ends: 8000 - 12 * 225 and -8000 + 12 * 678 twips.
    QTRY_VERIFY_WITH_TIMEOUT(qAbs(LeftTw(about->lblCopyrightNotice) - 136) <= 15 * 12, 5000);
    QVERIFY(qAbs(LeftTw(about->lblAppVersion) - 5300) <= 15 * 12);
    QVERIFY(qAbs(LeftTw(about->lblCopyright) - 5300) <= 15 * 12);

    QTest::mouseDClick(about->picKevro, Qt::LeftButton);
    QCOMPARE(about->lblCopyrightNotice->text(), frmAbout::CreditsLine());
    QVERIFY(qAbs(TopTw(about->lblCopyrightNotice) - 4000) <= 15);
    QVERIFY(qAbs(LeftTw(about->lblCopyrightNotice) + 300) <= 15);
    Click(Control<QPushButton>(about, "cmdOK"));
    QVERIFY(!Forms::isLoaded<frmAbout>());
}

void TestScreens::splashStartsUpAndWarnsWithoutMovies()
{
    MsgBoxResponder boxes;
    auto *splash = Forms::get<frmSplash>();
    splash->RunStartup();
    QCOMPARE(splash->ProgressBar1->value(), 100);
    QVERIFY(splash->SkyLight1->IsInitialized()); // this machine plays QuickTime movies
    QVERIFY(boxes.boxes().isEmpty());
    QCOMPARE(splash->lblStatus->text(), QString("Initializing Quicktime..."));
    Forms::unload<frmSplash>();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    // Without GStreamer's QuickTime demuxer the operator is warned with the code, and start-up goes on.
    qputenv("GST_PLUGIN_SYSTEM_PATH", m_app.path().toLocal8Bit());
    boxes.clear();
    boxes.queue(vbOK);
    splash = Forms::get<frmSplash>();
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
    QVERIFY(Forms::isLoaded<frmProgressBox>());
    auto *box = Forms::get<frmProgressBox>();
    QVERIFY(box->isVisible());
    QCOMPARE(box->lblStatus->text(), QString("Walking the disc..."));
    QCOMPARE(box->ProgressBar->value(), 40);
    UnloadProgressBox();
    QVERIFY(!Forms::isLoaded<frmProgressBox>());
    // A fresh box shows its stored text until the first update.
    QCOMPARE(Forms::get<frmProgressBox>()->lblStatus->text(), QString("Populating Something..."));
}

void TestScreens::typeAheadCompletesAfterPunctuation()
{
    // Client names carry punctuation; each of these keys completes like a letter does.
    QComboBox combo;
    combo.setEditable(true);
    combo.addItems({"A.B. Dick (UK)", "Bang! Games", "O'Brien & Sons", "Plus+ Media", "Smith-Jones", "Star*Soft"});
    combo.setCurrentIndex(-1);
    CAutoComplete ac;
    ac.setLinkedComboBox(&combo);
    combo.show();
    QVERIFY(QTest::qWaitForWindowExposed(&combo));
    const QList<std::tuple<QString, char, QString>> cases{
        {"O", '\'', "O'Brien & Sons"}, {"O'Brien ", '&', "O'Brien & Sons"}, {"A", '.', "A.B. Dick (UK)"},
        {"A.B. Dick ", '(', "A.B. Dick (UK)"}, {"Bang", '!', "Bang! Games"}, {"Smith", '-', "Smith-Jones"},
        {"Plus", '+', "Plus+ Media"}, {"Star", '*', "Star*Soft"}};
    for (const auto &[before, key, completed] : cases) {
        combo.lineEdit()->setText(before);
        combo.lineEdit()->setCursorPosition(int(before.size()));
        QTest::keyClick(&combo, key);
        QCOMPARE(combo.currentText(), completed);
        QCOMPARE(combo.lineEdit()->selectionStart(), int(before.size()));
    }
}

QTEST_MAIN(TestScreens)
#include "tst_screens.moc"
