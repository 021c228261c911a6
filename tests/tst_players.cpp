// The audio and video review screens with the demo disc's real media files, on a real X display
// (xvfb-run): playing, pausing, stopping, the loop flag of both players, the QuickTime viewer's natural
// size and scale, a broken file's message without a tick, the video screen loaded by the audio screen's
// player, the chain's Next that skips the external files, and the players let go at the clean exit.

#include "CatalogueFixture.h"
#include "DiscFixture.h"
#include "Operator.h"
#include "TestSupport.h"

#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/MediaPlayer.h"
#include "controls/QuickTimeViewer.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "reporting/frmScanSummary.h"
#include "review/ReviewScreens.h"
#include "review/frmScanResultsAudio.h"
#include "review/frmScanResultsOther.h"
#include "review/frmScanResultsVideo.h"
#include "scan/frmScanDisc.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

namespace {

QString media(const char *name)
{
    return QStringLiteral(KEVRO_SOURCE_DIR "/assets/demo-media/") + QLatin1String(name);
}

// A copy of a demo media file on the test's disc, stored as the scan stores it.
QString addMedia(Disc &disc, const QString &relative, const char *source, qsizetype keep = -1)
{
    const QString stored = disc.add(relative, 1);
    QByteArray bytes = ReadTestFile(media(source));
    if (keep >= 0)
        bytes.truncate(keep);
    WriteTestFile(disc.root() + QLatin1Char('/') + relative, bytes);
    return stored;
}

} // namespace

class TestPlayers final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void audioScreen();
    void videoScreen();
    void playersLetGoAtExit();
    void theChainOfScreens_data();
    void theChainOfScreens();

private:
    TempAppFolder m_app;
    CatalogueFixture m_catalogue; // the application viewer, reached by Back, judges from it
};

void TestPlayers::initTestCase()
{
    InstallScreenServices();
    RefuseBoxesWithoutResponder();
    SetShellExecuteLauncher([](const ShellExecuteRequest &) { return 42L; });
    QCOMPARE(m_catalogue.create(QStringLiteral("sqlite"), m_app.path()), QString());
}

void TestPlayers::init()
{
    WriteIniKey("Devices", "DefaultDevice", m_app.path());
    ResetList(gMediaFiles);
    ResetList(gExternalFiles);
    ResetList(gCheckedItems);
}

void TestPlayers::cleanup()
{
    SetEndProcessHook(nullptr);
    for (QWidget *w : QApplication::topLevelWidgets())
        w->hide();
    Forms::get<frmScanDisc>()->PrepareToScan();
    Forms::unload<frmScanSummary>();
    Forms::unload<frmScanDisc>();
}

void TestPlayers::audioScreen()
{
    Disc disc;
    addMedia(disc, QStringLiteral("SOUND/CHIME.WAV"), "CHIME.WAV");
    addMedia(disc, QStringLiteral("SOUND/THEME.MP3"), "THEME.MP3");
    addMedia(disc, QStringLiteral("SOUND/.HIDDEN.WAV"), "CHIME.WAV");
    const QString member = disc.addMember(QStringLiteral("SETUP/DATA.ZIP/JINGLE.WAV"), 1);
    QFile::remove(ExtractFolder() + QStringLiteral("/SETUP/DATA.ZIP/JINGLE.WAV"));
    QVERIFY(QFile::copy(media("CHIME.WAV"), ExtractFolder() + QStringLiteral("/SETUP/DATA.ZIP/JINGLE.WAV")));
    QByteArray broken = ReadTestFile(media("CHIME.WAV"));
    broken.replace(8, 8, "XXXXXXXX");
    disc.add(QStringLiteral("SOUND/BROKEN.WAV"));
    WriteTestFile(disc.root() + QStringLiteral("/SOUND/BROKEN.WAV"), broken);
    disc.add(QStringLiteral("SOUND/GONE.WAV"));
    gMediaFiles = disc.files();
    QVERIFY(!Forms::isLoaded<frmScanResultsVideo>());

    auto *s = Forms::get<frmScanResultsAudio>();
    s->show();
    QVERIFY(QTest::qWaitForWindowExposed(s));
    QFile::remove(disc.root() + QStringLiteral("/SOUND/GONE.WAV")); // removed after the scan
    FlexGrid *grid = Control<FlexGrid>(s, "gridAudioResults");
    QCOMPARE(Control<QLabel>(s, "lblResultComment")->text(), QStringLiteral("6 audio files found"));
    QCOMPARE(Forms::get<frmScanSummary>()->lblAudioTotal->text(), QStringLiteral("6"));
    // The marks stand on the sorted rows.
    QVERIFY(grid->HasCellPicture(RowOf(grid, ".HIDDEN.WAV"), 0) && grid->HasCellPicture(RowOf(grid, "JINGLE.WAV"), 0));
    QVERIFY(!grid->HasCellPicture(RowOf(grid, "CHIME.WAV"), 0) && !grid->HasCellPicture(RowOf(grid, "THEME.MP3"), 0));

    MediaPlayer *player = s->MediaPlayer1;
    ClickRow(grid, RowOf(grid, "CHIME.WAV"));
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Playing));
    QVERIFY(grid->HasCellPicture(RowOf(grid, "CHIME.WAV"), 4));
    QCOMPARE(gCheckedItems.last().kind, QStringLiteral("Audio"));
    // The player's state pictures are the video screen's: that screen was loaded and filled for them.
    QVERIFY(Forms::isLoaded<frmScanResultsVideo>());
    QCOMPARE(Forms::get<frmScanSummary>()->lblVideoTotal->text(), QStringLiteral("0"));
    QCOMPARE(s->cmdPlay->icon().pixmap(32, 24).toImage(),
             Forms::get<frmScanResultsVideo>()->picPlayOn->pixmap().toImage());

    // Pause and Stop through the transport.
    Click(s->cmdPause);
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Paused));
    Click(s->cmdStop);
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Stopped));
    QCOMPARE(player->CurrentPosition(), 0.0);

    // The loop box acts at once and holds for later files; a second file replaces the first.
    Click(Control<QCheckBox>(s, "chkLoopAudio"));
    QCOMPARE(player->PlayCount(), 0);
    ClickRow(grid, RowOf(grid, "JINGLE.WAV"));
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Playing));
    QCOMPARE(player->FileName(), RealPath(member)); // the control plays the real file
    QCOMPARE(player->PlayCount(), 0);
    QTest::qWait(2600); // past the end of the two-second file
    QCOMPARE(player->PlayState(), int(MediaPlayer::Playing));
    QCOMPARE(grid->ToolTipText(), QStringLiteral("Archive file: /SETUP/DATA.ZIP/JINGLE.WAV"));

    // A broken header and a file gone since the scan: the message, no tick, and the screen goes on.
    MsgBoxResponder boxes;
    boxes.queue(vbOK, 2);
    ClickRow(grid, RowOf(grid, "BROKEN.WAV"));
    ClickRow(grid, RowOf(grid, "GONE.WAV"));
    QCOMPARE(boxes.prompts(), (QStringList{QStringLiteral("Could not play audio file."),
                                           QStringLiteral("Could not play audio file.")}));
    QCOMPARE(boxes.boxes()[0].icon(), int(vbCritical));
    QVERIFY(!grid->HasCellPicture(RowOf(grid, "BROKEN.WAV"), 4) && !grid->HasCellPicture(RowOf(grid, "GONE.WAV"), 4));
    ClickRow(grid, RowOf(grid, "THEME.MP3"));
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Playing));

    // Next writes the checked number and stops the player.
    auto *scan = Forms::get<frmScanDisc>();
    for (const char *box : {"chkImageFiles", "chkTextFiles"})
        Control<QCheckBox>(scan, box)->setChecked(false);
    Click(s->cmdNext);
    QCOMPARE(Forms::get<frmScanSummary>()->lblAudioChecked->text(), QStringLiteral("3"));
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Stopped));
    QVERIFY(Forms::get<frmScanSummary>()->isVisible());
}

void TestPlayers::videoScreen()
{
    Disc disc;
    addMedia(disc, QStringLiteral("MEDIA/TRAILER.AVI"), "TRAILER.AVI");
    addMedia(disc, QStringLiteral("MEDIA/INTRO.MPG"), "INTRO.MPG");
    addMedia(disc, QStringLiteral("MEDIA/CLIP.MOV"), "CLIP.MOV");
    addMedia(disc, QStringLiteral("MPEGAV/AVSEQ01.DAT"), "INTRO.MPG");
    addMedia(disc, QStringLiteral("DATA/AVSEQ02.DAT"), "INTRO.MPG");
    addMedia(disc, QStringLiteral("MEDIA/PROMO.WMV"), "TRAILER.AVI");
    addMedia(disc, QStringLiteral("MEDIA/CUT.AVI"), "TRAILER.AVI", 4000);
    disc.add(QStringLiteral("MEDIA/NOTES.MOV")); // text under a movie's name
    disc.add(QStringLiteral("MEDIA/GONE.MOV"));
    disc.add(QStringLiteral("MEDIA/GONE.AVI"));
    gMediaFiles = disc.files();
    QFile::remove(disc.root() + QStringLiteral("/MEDIA/GONE.MOV"));
    QFile::remove(disc.root() + QStringLiteral("/MEDIA/GONE.AVI"));
    auto *s = Forms::get<frmScanResultsVideo>();
    s->show();
    QVERIFY(QTest::qWaitForWindowExposed(s));
    FlexGrid *grid = Control<FlexGrid>(s, "gridVideoResults");
    // A video CD's track counts; a ".DAT" elsewhere and a ".WMV" do not.
    QCOMPARE(Control<QLabel>(s, "lblResultComment")->text(), QStringLiteral("8 video files found"));
    QVERIFY(RowOf(grid, "AVSEQ01.DAT") > 0 && RowOf(grid, "AVSEQ02.DAT") < 0 && RowOf(grid, "PROMO.WMV") < 0);

    MediaPlayer *player = s->MediaPlayer1;
    QuickTimeViewer *movie = s->SkyLight1;
    ClickRow(grid, RowOf(grid, "TRAILER.AVI"));
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Playing));
    QVERIFY(player->isVisible() && !movie->isVisible());
    QVERIFY(grid->HasCellPicture(RowOf(grid, "TRAILER.AVI"), 4));
    QCOMPARE(LeftTw(player), PixelsToTwips(TwipsToPixels(5500)));
    ClickRow(grid, RowOf(grid, "INTRO.MPG"));
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Playing));
    QCOMPARE(player->ErrorCode(), 0L);

    // The first movie: the media player emptied and hidden, the viewer at its designed place, scaled
    // to 250 pixels across by the movie's natural width.
    ClickRow(grid, RowOf(grid, "CLIP.MOV"));
    QVERIFY(!player->isVisible() && player->FileName().isEmpty());
    QVERIFY(movie->isVisible());
    QCOMPARE(movie->MovieWidth(), 160);
    QCOMPARE(movie->MovieHeight(), 120);
    QCOMPARE(movie->Scale(), 250.0 / 160);
    QCOMPARE(movie->width(), 250);
    QCOMPARE(LeftTw(movie), 5520L);
    QVERIFY(!movie->ShowController());
    QTRY_VERIFY(movie->IsPlaying());
    QVERIFY(grid->HasCellPicture(RowOf(grid, "CLIP.MOV"), 4));

    // The loop box reaches both players at once; the DVD box changes nothing.
    Click(Control<QCheckBox>(s, "chkLoopVideo"));
    QVERIFY(movie->Loop());
    QCOMPARE(player->PlayCount(), 0);
    Click(Control<QCheckBox>(s, "chkDVDVideo"));
    QVERIFY(movie->isVisible() && movie->IsPlaying());
    // The transport acts on the visible player: the movie here.
    Click(s->cmdStop);
    QVERIFY(!movie->IsPlaying());
    QCOMPARE(movie->TimePosition(), 0.0);

    // A video after the movie hides the viewer again. A file cut short plays as far as it goes, or
    // tells why not; either way the row is ticked.
    MsgBoxResponder boxes;
    boxes.queue(vbOK);
    ClickRow(grid, RowOf(grid, "CUT.AVI"));
    QVERIFY(!movie->isVisible() && player->isVisible());
    QVERIFY(grid->HasCellPicture(RowOf(grid, "CUT.AVI"), 4));
    QVERIFY(boxes.prompts().size() <= 1);

    // A movie that is not a movie and files gone since the scan: the error's number and the message,
    // no tick, and the screen goes on.
    boxes.clear();
    boxes.queue(vbOK, 3);
    for (const char *name : {"NOTES.MOV", "GONE.MOV", "GONE.AVI"}) {
        ClickRow(grid, RowOf(grid, name));
        QVERIFY2(!grid->HasCellPicture(RowOf(grid, name), 4) && grid->isEnabled(), name);
    }
    QCOMPARE(boxes.prompts(), (QStringList{QStringLiteral("321 Could not play video file."),
                                           QStringLiteral("53 Could not play video file."),
                                           QStringLiteral("53 Could not play video file.")}));
    QCOMPARE(boxes.boxes()[0].icon(), int(vbCritical));
    ClickRow(grid, RowOf(grid, "INTRO.MPG"));
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Playing));

    // Next never asks for the external files: without audio, images or text, the summary.
    auto *scan = Forms::get<frmScanDisc>();
    for (const char *box : {"chkAudioFiles", "chkImageFiles", "chkTextFiles"})
        Control<QCheckBox>(scan, box)->setChecked(false);
    QVERIFY(scan->chkOtherFiles->isChecked());
    Click(s->cmdNext);
    QVERIFY(Forms::get<frmScanSummary>()->isVisible() && !Forms::isLoaded<frmScanResultsOther>());
    QCOMPARE(Forms::get<frmScanSummary>()->lblVideoChecked->text(), QString::number(s->CheckedCount()));
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Stopped));
}

void TestPlayers::playersLetGoAtExit()
{
    Disc disc;
    addMedia(disc, QStringLiteral("CHIME.WAV"), "CHIME.WAV");
    gMediaFiles = disc.files();
    auto *audio = Forms::get<frmScanResultsAudio>();
    audio->show();
    ClickRow(audio->gridAudioResults, 1);
    QTRY_COMPARE(audio->MediaPlayer1->PlayState(), int(MediaPlayer::Playing));
    const QString member = WriteTestFile(ExtractFolder() + QStringLiteral("/A.ZIP/B.WAV"), "b");
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    MsgBoxResponder boxes; // a failure to let go would be a box
    try {
        ExitApplication();
    } catch (const ProcessEnded &) {
    }
    QCOMPARE(ended, QList<int>{0});
    const QString harmless = AppPath() + QStringLiteral("/reports/htmlicon.jpg");
    QCOMPARE(Forms::get<frmScanResultsVideo>()->MediaPlayer1->FileName(), harmless);
    QCOMPARE(audio->MediaPlayer1->FileName(), harmless);
    QVERIFY(!QFile::exists(member));
    QCOMPARE(boxes.prompts(), QStringList());

    // Without the harmless file each player says so, and the exit goes on.
    QVERIFY(QFile::rename(harmless, harmless + QStringLiteral(".away")));
    boxes.queue(vbOK, 2);
    try {
        ExitApplication();
    } catch (const ProcessEnded &) {
    }
    QVERIFY(QFile::rename(harmless + QStringLiteral(".away"), harmless));
    QCOMPARE(boxes.prompts(), QStringList(2, QStringLiteral("Error 53 occured when trying to unlatch mediaplayer.")));
    QCOMPARE(ended, (QList<int>{0, 0}));
}

// Each viewer's Next and Back with the kinds asked for on the scan set-up, one letter a box: E programs,
// V video, A audio, I images, T text, O external. The rows show where the tests are not symmetrical.
void TestPlayers::theChainOfScreens_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<bool>("next");
    QTest::addColumn<QString>("boxes");
    QTest::addColumn<QString>("to");
    const QString video = QStringLiteral("frmScanResultsVideo"), audio = QStringLiteral("frmScanResultsAudio"),
                  images = QStringLiteral("frmScanResultsImages"), text = QStringLiteral("frmScanResultsText"),
                  other = QStringLiteral("frmScanResultsOther"), exes = QStringLiteral("frmScanResultsEXEs"),
                  summary = QStringLiteral("frmScanSummary"), scan = QStringLiteral("frmScanDisc");
    QTest::newRow("video next: audio first") << video << true << "VAIO" << audio;
    QTest::newRow("video next: images") << video << true << "VIT" << images;
    QTest::newRow("video next: text") << video << true << "VTO" << text;
    QTest::newRow("video next skips external") << video << true << "EVO" << summary;
    QTest::newRow("video back: programs") << video << false << "EVA" << exes;
    QTest::newRow("video back: set-up") << video << false << "VAI" << scan;
    QTest::newRow("audio next: images") << audio << true << "VAIT" << images;
    QTest::newRow("audio next skips external") << audio << true << "AO" << summary;
    QTest::newRow("audio back: video") << audio << false << "EVA" << video;
    QTest::newRow("audio back: programs") << audio << false << "EA" << exes;
    QTest::newRow("audio back: set-up") << audio << false << "AI" << scan;
    QTest::newRow("images next: external") << images << true << "IO" << other;
    QTest::newRow("images back: audio") << images << false << "EVAI" << audio;
    QTest::newRow("images back never reaches programs") << images << false << "EI" << scan;
    QTest::newRow("text back: video before audio") << text << false << "VAT" << video;
    QTest::newRow("text back: programs") << text << false << "ET" << exes;
    QTest::newRow("external next: summary") << other << true << "EVAITO" << summary;
    QTest::newRow("external back: audio") << other << false << "EAO" << audio;
    QTest::newRow("external back: set-up") << other << false << "O" << scan;
}

void TestPlayers::theChainOfScreens()
{
    QFETCH(QString, from);
    QFETCH(bool, next);
    QFETCH(QString, boxes);
    QFETCH(QString, to);
    auto *scan = Forms::get<frmScanDisc>();
    const QList<QPair<QChar, QCheckBox *>> letters{{'E', scan->chkEXEFiles},   {'V', scan->chkVideoFiles},
                                                   {'A', scan->chkAudioFiles}, {'I', scan->chkImageFiles},
                                                   {'T', scan->chkTextFiles},  {'O', scan->chkOtherFiles}};
    for (const auto &[letter, box] : letters)
        box->setChecked(boxes.contains(letter));
    Form *screen = ReviewScreenNamed(from);
    QVERIFY(screen);
    screen->move(40, 30);
    screen->show();
    Click(Control<QPushButton>(screen, next ? "cmdNext" : "cmdPrevious"));
    QWidget *target = ReviewScreenNamed(to);
    QVERIFY(target);
    QVERIFY2(target->isVisible(), qPrintable(to));
    QVERIFY(screen->isHidden());
    QCOMPARE(target->pos(), QPoint(40, 30));
}

QTEST_MAIN(TestPlayers)
#include "tst_players.moc"
