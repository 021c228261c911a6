// The audio and video review screens with the demo disc's real media files on a real X display, the
// players let go at the clean exit, and the viewers' Next and Back.

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

// Copies of demo media files on the test's disc: where, and which.
void addMedia(Disc &disc, std::initializer_list<std::pair<const char *, const char *>> copies)
{
    for (const auto &[relative, source] : copies)
        QVERIFY(!disc.addCopy(QLatin1String(relative), media(source)).isEmpty());
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
    addMedia(disc, {{"SOUND/CHIME.WAV", "CHIME.WAV"}, {"SOUND/THEME.MP3", "THEME.MP3"}});
    const QString member = disc.addMember(QStringLiteral("SETUP/DATA.ZIP/JINGLE.WAV"), 1);
    WriteTestFile(ExtractFolder() + QStringLiteral("/SETUP/DATA.ZIP/JINGLE.WAV"), ReadTestFile(media("CHIME.WAV")));
    disc.add(QStringLiteral("SOUND/BROKEN.WAV"));
    WriteTestFile(disc.root() + QStringLiteral("/SOUND/BROKEN.WAV"),
                  ReadTestFile(media("CHIME.WAV")).replace(8, 8, "XXXXXXXX")); // no WAVE, no fmt
    disc.add(QStringLiteral("SOUND/GONE.WAV"));
    gMediaFiles = disc.files();
    auto *s = Forms::get<frmScanResultsAudio>();
    s->show();
    QVERIFY(QTest::qWaitForWindowExposed(s));
    QFile::remove(disc.root() + QStringLiteral("/SOUND/GONE.WAV")); // removed after the scan
    FlexGrid *grid = Control<FlexGrid>(s, "gridAudioResults");
    QCOMPARE(Control<QLabel>(s, "lblResultComment")->text(), QStringLiteral("5 audio files found"));

    MediaPlayer *player = s->MediaPlayer1;
    ClickRow(grid, RowOf(grid, "CHIME.WAV"));
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Playing));
    QVERIFY(grid->HasCellPicture(RowOf(grid, "CHIME.WAV"), 4));
    // The player's state pictures are the video screen's, loaded for them.
    QCOMPARE(s->cmdPlay->icon().pixmap(32, 24).toImage(),
             Forms::get<frmScanResultsVideo>()->picPlayOn->pixmap().toImage());

    // The loop box holds for later files; a second file replaces the first.
    Click(Control<QCheckBox>(s, "chkLoopAudio"));
    ClickRow(grid, RowOf(grid, "JINGLE.WAV"));
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Playing));
    QCOMPARE(player->FileName(), RealPath(member)); // the control plays the real file
    QTest::qWait(2600); // past the end of the two-second file
    QCOMPARE(player->PlayState(), int(MediaPlayer::Playing));

    // A broken header and a file gone since the scan: the message, no tick, and the screen goes on.
    MsgBoxResponder boxes;
    boxes.queue(vbOK, 2);
    ClickRow(grid, RowOf(grid, "BROKEN.WAV"));
    ClickRow(grid, RowOf(grid, "GONE.WAV"));
    QCOMPARE(boxes.prompts(), QStringList(2, QStringLiteral("Could not play audio file.")));
    QCOMPARE(boxes.boxes()[0].icon(), int(vbCritical));
    QVERIFY(!grid->HasCellPicture(RowOf(grid, "BROKEN.WAV"), 4) && !grid->HasCellPicture(RowOf(grid, "GONE.WAV"), 4));
    ClickRow(grid, RowOf(grid, "THEME.MP3"));
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Playing));

    // Next writes the checked number and stops the player.
    Click(s->cmdNext);
    QCOMPARE(Forms::get<frmScanSummary>()->lblAudioChecked->text(), QStringLiteral("3")); // CHIME, JINGLE, THEME
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Stopped));

    // At the clean exit each player is handed a harmless file of the application's own, which lets go
    // of the disc's; without that file each player says so, and the exit goes on.
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    const auto exit = [] {
        try {
            ExitApplication();
        } catch (const ProcessEnded &) {
        }
    };
    boxes.clear();
    exit();
    const QString harmless = AppPath() + QStringLiteral("/reports/htmlicon.jpg");
    QCOMPARE(Forms::get<frmScanResultsVideo>()->MediaPlayer1->FileName(), harmless);
    QCOMPARE(player->FileName(), harmless);
    QCOMPARE(boxes.prompts(), QStringList());
    QVERIFY(QFile::rename(harmless, harmless + QStringLiteral(".away")));
    boxes.queue(vbOK, 2);
    exit();
    QVERIFY(QFile::rename(harmless + QStringLiteral(".away"), harmless));
    QCOMPARE(boxes.prompts(),
             QStringList(2, QStringLiteral("Error 53 occured when trying to unlatch mediaplayer.")));
    QCOMPARE(ended, (QList<int>{0, 0}));
}

void TestPlayers::videoScreen()
{
    Disc disc;
    addMedia(disc, {{"MEDIA/TRAILER.AVI", "TRAILER.AVI"}, {"MEDIA/INTRO.MPG", "INTRO.MPG"},
                    {"MEDIA/CLIP.MOV", "CLIP.MOV"}, {"MPEGAV/AVSEQ01.DAT", "INTRO.MPG"},
                    {"DATA/AVSEQ02.DAT", "INTRO.MPG"}, {"MEDIA/PROMO.WMV", "TRAILER.AVI"}});
    disc.add(QStringLiteral("MEDIA/CUT.AVI"));
    WriteTestFile(disc.root() + QStringLiteral("/MEDIA/CUT.AVI"), ReadTestFile(media("TRAILER.AVI")).left(4000));
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
    QVERIFY(player->isVisible() && !movie->isVisible() && grid->HasCellPicture(RowOf(grid, "TRAILER.AVI"), 4));

    // The first movie: the media player emptied and hidden, the viewer scaled to 250 pixels across by
    // the movie's natural width (160).
    ClickRow(grid, RowOf(grid, "CLIP.MOV"));
    QVERIFY(!player->isVisible() && player->FileName().isEmpty() && movie->isVisible());
    QCOMPARE(movie->Scale(), 250.0 / 160);
    QTRY_VERIFY(movie->IsPlaying());
    QVERIFY(grid->HasCellPicture(RowOf(grid, "CLIP.MOV"), 4));

    Click(Control<QCheckBox>(s, "chkLoopVideo"));
    QVERIFY(movie->Loop() && player->PlayCount() == 0); // the loop box reaches both players at once
    // The transport acts on the visible player: the movie here.
    Click(s->cmdStop);
    QVERIFY(!movie->IsPlaying() && movie->TimePosition() == 0.0);

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
    QCOMPARE(boxes.prompts(), (QStringList{"321 Could not play video file.", "53 Could not play video file.",
                                           "53 Could not play video file."}));
    ClickRow(grid, RowOf(grid, "INTRO.MPG"));
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Playing));

    // Next writes the checked number (TRAILER, CLIP, CUT, INTRO) and stops the player.
    Click(s->cmdNext);
    QCOMPARE(Forms::get<frmScanSummary>()->lblVideoChecked->text(), QStringLiteral("4"));
    QTRY_COMPARE(player->PlayState(), int(MediaPlayer::Stopped));
}

// Each viewer's Next (>) and Back (<) with the kinds asked for on the scan set-up, a letter a box: E programs,
// V video, A audio, I images, T text, O external; S the summary, D the set-up. Rows: where the rules are uneven.
void TestPlayers::theChainOfScreens_data()
{
    QTest::addColumn<QString>("move");
    QTest::addColumn<QString>("boxes");
    QTest::newRow("video next: audio first") << "V>A" << "VAIO";
    QTest::newRow("video next skips external") << "V>S" << "EVO";
    QTest::newRow("video back: programs") << "V<E" << "EVA";
    QTest::newRow("audio next skips external") << "A>S" << "AO";
    QTest::newRow("audio back: video") << "A<V" << "EVA";
    QTest::newRow("images next: external") << "I>O" << "IO";
    QTest::newRow("images back: audio before video") << "I<A" << "EVAI";
    QTest::newRow("images back never reaches programs") << "I<D" << "EI";
    QTest::newRow("text back: video before audio") << "T<V" << "VAT";
    QTest::newRow("external next: summary") << "O>S" << "EVAITO";
    QTest::newRow("external back: video before audio") << "O<V" << "EVAO";
}

void TestPlayers::theChainOfScreens()
{
    QFETCH(QString, move);
    QFETCH(QString, boxes);
    auto *scan = Forms::get<frmScanDisc>();
    const QHash<QChar, QPair<QCheckBox *, QString>> kinds{
        {'E', {scan->chkEXEFiles, "frmScanResultsEXEs"}},     {'V', {scan->chkVideoFiles, "frmScanResultsVideo"}},
        {'A', {scan->chkAudioFiles, "frmScanResultsAudio"}},  {'I', {scan->chkImageFiles, "frmScanResultsImages"}},
        {'T', {scan->chkTextFiles, "frmScanResultsText"}},    {'O', {scan->chkOtherFiles, "frmScanResultsOther"}},
        {'S', {nullptr, "frmScanSummary"}},                   {'D', {nullptr, "frmScanDisc"}}};
    for (auto k = kinds.cbegin(); k != kinds.cend(); ++k)
        if (k->first)
            k->first->setChecked(boxes.contains(k.key()));
    Form *screen = ReviewScreenNamed(kinds[move[0]].second);
    screen->move(40, 30);
    screen->show();
    Click(Control<QPushButton>(screen, move[1] == '>' ? "cmdNext" : "cmdPrevious"));
    QWidget *target = ReviewScreenNamed(kinds[move[2]].second);
    QVERIFY(target && target->isVisible() && screen->isHidden());
    QCOMPARE(target->pos(), QPoint(40, 30));
}

QTEST_MAIN(TestPlayers)
#include "tst_players.moc"
