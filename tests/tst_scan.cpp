// The scan as the operator runs it and as the later screens read it: the walk in the file system's own
// order, the stored paths and their real files, the two lists, the archives expanded into the extract
// folder and walked again, the faults a disc brings, cancel, and the set-up screen's messages.

#include "ArchiveFixtures.h"
#include "HostileDisc.h"
#include "TestSupport.h"

#include "catalogue/CatalogueSetup.h"
#include "catalogue/Connection.h"
#include "catalogue/Database.h"
#include "controls/DriveList.h"
#include "controls/Forms.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "scan/MediaWalker.h"
#include "review/frmScanResultsEXEs.h"
#include "scan/frmScanDisc.h"
#include "scan/frmScanProgress.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/frmMainMenu.h"

#include <QCheckBox>
#include <QDirIterator>
#include <QGroupBox>
#include <QLabel>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <dirent.h>
#include <sys/fsuid.h>
#include <sys/stat.h>

namespace {
using M = FixtureMember;

// The reference: every file below root in readdir order, a folder's files before its folders'.
QStringList depthFirst(const QString &root)
{
    QStringList files, folders;
    DIR *d = opendir(QFile::encodeName(root).constData());
    while (const dirent *e = readdir(d)) {
        const QString name = QFile::decodeName(e->d_name);
        if (name != "." && name != "..")
            (QFileInfo(root + "/" + name).isDir() ? folders : files).append(root + "/" + name);
    }
    closedir(d);
    for (const QString &sub : folders)
        files += depthFirst(sub);
    return files;
}

QStringList entries(const QStringList &list)
{
    return ListIsEmpty(list) ? QStringList() : list;
}

QStringList filesBelow(const QString &root)
{
    QStringList out;
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext())
        out.append(QDir(root).relativeFilePath(it.next()));
    out.sort();
    return out;
}

// The links below a folder; the bytes its files hold are added up.
QStringList linksBelow(const QString &root, int64_t *bytes = nullptr)
{
    QStringList links;
    QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo f(it.next());
        if (f.isSymLink())
            links.append(f.filePath());
        else if (bytes && f.isFile())
            *bytes += f.size();
    }
    return links;
}

// Runs the scan logic over a volume with no screen, the way the batch runner will.
void walk(const QString &volume, MediaWalker::Display display = {})
{
    ResetExtractFolder();
    MediaWalker w;
    w.setDisplay(std::move(display));
    w.SetDrive(volume);
    w.ScanFiles();
}

// Next on the set-up screen; while the scan runs, look is called at every turn of the event loop, as
// the operator's eye and hand would act on the progress screen.
void nextWhileWatching(frmScanDisc *s, const std::function<void()> &look)
{
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, look);
    watch.start(0);
    QTest::mouseClick(s->cmdNext, Qt::LeftButton);
}
} // namespace

class TestScan final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void walkOrderStoredPathsAndLists();
    void archivesInTheWalk();
    void walkFaults();
    void whatADiscHolds();
    void volumeHoldingTheApplicationFolder();
    void setUpScreen();
    void scanThroughTheScreens();
    void failurePastTheStartFolder();
    void cancel();
    void corpusDisc();

private:
    QString makeDisc(const QString &name);
    // The set-up screen shown, kevro.ini naming the device first when one is given.
    frmScanDisc *scanDisc(const QString &device = QString());

    TempAppFolder m_app;
    QTemporaryDir m_discs;
    QString m_extract;
};

void TestScan::initTestCase()
{
    InstallScreenServices();
    RefuseBoxesWithoutResponder();
    qputenv("ODBCINI", m_app.file("no-user-odbc.ini").toLocal8Bit());
    qputenv("ODBCSYSINI", m_app.file("no-system-odbc").toLocal8Bit());
    CatalogueTarget target;
    target.sqliteFile = m_app.file("kevro.db");
    QCOMPARE(CreateCatalogue(target, true), QString());
    QCOMPARE(LoadDemoCatalogue(target), QString());
    QCOMPARE(WriteDataSourceEntry(target, m_app.file("odbc.ini")), QString());
    m_extract = ExtractFolder();
}

void TestScan::init()
{
    QFile::remove(m_app.file("kevro.ini"));
    ResetExtractFolder();
}

void TestScan::cleanup()
{
    Forms::unload<frmScanProgress>();
    Forms::unload<frmScanResultsEXEs>();
    Forms::unload<frmScanDisc>();
    Forms::unload<frmMainMenu>();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QDir::setCurrent(m_app.path());
    SetEndProcessHook(nullptr);
}

QString TestScan::makeDisc(const QString &name)
{
    QDir().mkpath(m_discs.filePath(name));
    return m_discs.filePath(name);
}

frmScanDisc *TestScan::scanDisc(const QString &device)
{
    if (!device.isNull())
        WriteIniKey("Devices", "DefaultDevice", device);
    auto *s = Forms::get<frmScanDisc>();
    s->show();
    return s;
}

void TestScan::walkOrderStoredPathsAndLists()
{
    const QString disc = makeDisc("order");
    // Names created out of alphabetical order, with the awkward characters discs carry. Media are the
    // viewers' tails (a dot and three letters, or a few longer ones) and the archives' ZIP and EXE; a
    // name that only ends like one is an external file.
    QStringList paths{"zeta.txt", "Alpha.jpg", "O'Brien's \"notes\".txt", "[draft] & 100%.nfo", "Ünïcode émoji ✓.mp3",
                      ".hidden.txt", "a.gif", "a.bmp", "a.avi", "a.mov", "a.asf", "a.wmv", "a.mpe", "a.mpg", "a.dat",
                      "a.wav", "a.aif", "a.vob", "a.ini", "read.me", "movie.mpeg", "a.jpeg", "x.readme", "setup.zip",
                      "game.exe", ".zip"};
    const QStringList external{"noextension", "programme", "nottxt", "clip.mp4", "name.exe.bak", "other.bin"};
    paths += external;
    for (const QString folder : {"m", "B folder", ".hidden dir", "a/z/deep", "a/y", "Ärger"})
        paths << folder + "/in.wav" << folder + "/other.bin";
    for (const QString &p : paths)
        WriteTestFile(disc + "/" + p, p.toUtf8());
    QDir().mkpath(disc + "/empty");

    MsgBoxResponder boxes;
    walk(disc);
    QCOMPARE(boxes.prompts(), QStringList());
    const QStringList all = depthFirst(disc);
    QStringList media, externalFiles;
    for (const QString &p : all)
        (external.contains(QFileInfo(p).fileName()) ? externalFiles : media).append(p.toUpper());
    QCOMPARE(entries(gMediaFiles), media);
    QCOMPARE(entries(gExternalFiles), externalFiles);
    QCOMPARE(gFilesScanned, int32_t(all.size()));
    QCOMPARE(gScanDrive, disc);
}

void TestScan::archivesInTheWalk()
{
    const QString disc = makeDisc("archives");
    const QByteArray deep = QByteArray("0123456789 ").repeated(1000);
    const QByteArray sfx = QByteArray("MZ") + QByteArray(1022, '\x90');
    WriteArchive(disc + "/Setup/Data.zip", {{"Docs/", {}, M::Folder}, {"Docs/ReadMe.txt", "read me"},
                                            {"Docs/Deep/Part.dat", deep}, {"Tool.exe", "MZ not an archive"},
                                            {"Nested.zip", ArchiveBytes({{"Inner.txt", "inner member"}})},
                                            {"../escape.txt", "must not land"}});
    WriteTestFile(disc + "/Game.exe", sfx + ArchiveBytes({{"Game/Play.jpg", "picture"}}));
    WriteTestFile(disc + "/Plain.exe", sfx + QByteArray(4096, 'p'));
    WriteArchive(disc + "/ZipNamed.exe", {{"Hidden.txt", "zip under an exe name"}});
    WriteArchive(disc + "/A/Same.zip", {{"One.txt", "from A"}});
    WriteArchive(disc + "/B/Same.zip", {{"One.txt", "from B"}});
    const QByteArray whole = ArchiveBytes({{"Broken.txt", deep}});
    WriteTestFile(disc + "/Broken.zip", whole.left(whole.size() / 2));
    // A bomb: 64 MB of zeros in about 64 KB.
    WriteArchive(disc + "/Bomb.zip", {{"Zeros.bin", QByteArray(64 << 20, '\0')}});

    MsgBoxResponder boxes;
    boxes.queue(vbOK, 3);
    walk(disc);
    // One box for the damaged archive, one for each archive that could not be extracted whole.
    const QStringList prompts = boxes.prompts();
    QCOMPARE(prompts.size(), 3);
    QCOMPARE(prompts.filter("Error 321 while reading Zip file.  Zip file will be ignored").size(), 1);
    QCOMPARE(prompts.filter(QRegularExpression("^Not everything in DATA.ZIP was extracted:\n\n"
                                               "\\.\\./escape\\.txt: leads outside")).size(), 1);
    QCOMPARE(prompts.filter(QRegularExpression("^Not everything in BOMB.ZIP was extracted:\n\n"
                                               "Expansion stopped at Zeros.bin")).size(), 1);

    // Archives stay in the list whether or not they expanded; the second pass lists their members below
    // the extract folder (same-named archives apart), one level deep: a nested archive's are not walked,
    // and a member stopped part way left nothing.
    QStringList listed = entries(gMediaFiles) + entries(gExternalFiles), expected;
    for (const QString a : {"/SETUP/DATA.ZIP", "/GAME.EXE", "/PLAIN.EXE", "/ZIPNAMED.EXE", "/A/SAME.ZIP", "/B/SAME.ZIP",
                            "/BROKEN.ZIP", "/BOMB.ZIP"})
        expected << disc.toUpper() + a;
    for (const QString m : {"/SETUP/DATA.ZIP/DOCS/README.TXT", "/SETUP/DATA.ZIP/DOCS/DEEP/PART.DAT",
                            "/SETUP/DATA.ZIP/NESTED.ZIP", "/SETUP/DATA.ZIP/TOOL.EXE", "/GAME.EXE/GAME/PLAY.JPG",
                            "/ZIPNAMED.EXE/HIDDEN.TXT", "/A/SAME.ZIP/ONE.TXT", "/B/SAME.ZIP/ONE.TXT"})
        expected << m_extract.toUpper() + m;
    listed.sort();
    expected.sort();
    QCOMPARE(listed, expected);
    const QString innerTarget = m_extract + "/" + (m_extract + "/Setup/Data.zip/Nested.zip").mid(1);
    QCOMPARE(ReadTestFile(innerTarget + "/Inner.txt"), QByteArray("inner member"));
    QCOMPARE(filesBelow(m_discs.path()).filter("escape") + filesBelow(m_extract).filter("escape"), QStringList());
}

void TestScan::walkFaults()
{
    const QString disc = makeDisc("faults");
    for (const char *f : {"a", "b", "c", "d"}) {
        WriteTestFile(disc + "/" + f + "/file.txt", "x");
        WriteTestFile(disc + "/" + f + "/sub/file.txt", "x");
    }
    QStringList folders; // in the order the walk meets them
    for (const QString &p : depthFirst(disc))
        if (const QString f = p.mid(disc.size() + 1).section('/', 0, 0); !folders.contains(f))
            folders.append(f);
    // The second folder met cannot be read: its level ends with the warning, the levels above go on.
    const QString locked = disc + "/" + folders[1], first = "/" + folders[0].toUpper() + "/";
    chmod(QFile::encodeName(locked).constData(), 0700);
    // As root, permissions only bind once the file-system identity is somebody else's (for anyone else
    // setfsuid changes nothing).
    for (const QString &from : {disc, m_extract})
        for (QString p = from; p != "/"; p = QFileInfo(p).path())
            chmod(QFile::encodeName(p).constData(), 0755);
    MsgBoxResponder boxes;
    boxes.queue(vbOK, 2);
    MediaWalker w;
    w.SetDrive(disc);
    setfsuid(65534);
    w.ScanFiles();
    setfsuid(0);
    QCOMPARE(boxes.prompts(), QStringList{"Error 70"});
    // A log line says which folder and why, and what else the walk left out with it.
    QCOMPARE(boxes.boxes().first().detail, locked + ": the folder cannot be read (Permission denied); "
                                           "it was left out, and with it the 2 folders after it in " + disc);
    QCOMPARE(entries(gMediaFiles), (QStringList{disc.toUpper() + first + "FILE.TXT", disc.toUpper() + first + "SUB/FILE.TXT"}));
    chmod(QFile::encodeName(locked).constData(), 0755);

    // A folder taken away while the walk runs: listed before, gone when its turn comes.
    boxes.clear();
    const QString last = disc + "/" + folders.last();
    bool removed = false;
    MediaWalker::Display display;
    display.currentAction = [&](const QString &label) {
        if (!removed && label.contains(first))
            removed = QDir(last).removeRecursively();
    };
    walk(disc, display);
    QVERIFY(removed);
    QCOMPARE(boxes.prompts(), QStringList{"Error 76"});
    QCOMPARE(boxes.boxes().first().detail, last + ": the folder cannot be read (Path not found); it was left out");
    QCOMPARE(entries(gMediaFiles).filter("/" + folders[1].toUpper() + "/").size(), 2);
}

void TestScan::whatADiscHolds()
{
    HostileDisc disc;
    const QString D = disc.root().toUpper(), X = m_extract.toUpper();
    MsgBoxResponder boxes;
    boxes.queue(vbOK);
    walk(disc.root());
    // The link in the archive is the one thing said, its name as stored: it can add no line to a log.
    const QString link = "link_kevro-check: warning: forged: a link, not a file";
    QCOMPARE(boxes.prompts(), QStringList{"Not everything in DATA.ZIP was extracted:\n\n" + link});

    // Exactly the regular files, in stored form (case twins twice), each entry opening its own file.
    QStringList listed, expected;
    Occurrences occurrence;
    for (const QString &path : entries(gMediaFiles) + entries(gExternalFiles))
        listed.append(path + " = " + QString::fromUtf8(ReadTestFile(RealPath(path, occurrence(path)))));
    for (const HostileDisc::File &f : disc.files())
        expected.append((f.member ? X : D) + f.stored + " = " + QString::fromUtf8(f.contents));
    listed.sort();
    expected.sort();
    QCOMPARE(listed, expected);
    QCOMPARE(gFilesScanned, int32_t(listed.size()));
    QCOMPARE(entries(gExternalFiles), QStringList{D + "/A_B.BIN"});

    // Nothing was written outside; the extract folder's links are the ways into the two unnamable files.
    QCOMPARE(filesBelow(disc.outside()), (QStringList{"SECRET.TXT", "passwd"}));
    const QString inside = QFileInfo(disc.root()).canonicalFilePath() + "/";
    QCOMPARE(linksBelow(m_extract).size(), 2);
    for (const QString &l : linksBelow(m_extract))
        QVERIFY2(QFileInfo(l).canonicalFilePath().startsWith(inside), qPrintable(l));
}

void TestScan::volumeHoldingTheApplicationFolder()
{
    // KEVRO installed on the volume it scans, reached through a link of its own: its own folders are no
    // part of the disc, and the archive's members are walked once, in the extract folder's pass.
    const QString disc = makeDisc("holds-app"), app = disc + "/Programs/KEVRO";
    for (const QString &f :
         {disc + "/README.TXT", disc + "/Programs/Other.txt", app + "/kevro.ini", app + "/reports/OLD.txt"})
        WriteTestFile(f, "text");
    WriteArchive(disc + "/Setup.zip", {{"Member.txt", "member"}});
    QDir().mkpath(app + "/extract");
    const QByteArray home = qgetenv("KEVRO_HOME");
    qputenv("KEVRO_HOME", QFile::encodeName(app));
    const QString volume = m_discs.filePath("holds-app-link");
    QVERIFY(QFile::link(disc, volume));
    MsgBoxResponder boxes;
    walk(volume);
    qputenv("KEVRO_HOME", home);
    const QString D = volume.toUpper();
    QCOMPARE(entries(gMediaFiles), (QStringList{D + "/README.TXT", D + "/SETUP.ZIP", D + "/PROGRAMS/OTHER.TXT",
                                                app.toUpper() + "/EXTRACT/SETUP.ZIP/MEMBER.TXT"}));
    QCOMPARE(entries(gExternalFiles), QStringList());
}

void TestScan::setUpScreen()
{
    // A master copied to a folder deep in a share: the path runs past the buffer a drive letter needs.
    const QString disc = makeDisc("setup/a master delivered as a folder copy, deep enough to be long");
    // A folder named in kevro.ini joins the list and is chosen. Nothing ticked, and nothing but the
    // progress box ticked, are the same refusal; Back goes to the main menu.
    MsgBoxResponder boxes;
    auto *s = scanDisc(disc);
    QCOMPARE(s->Drive1->Drive(), disc);
    for (QCheckBox *box : {s->chkEXEFiles, s->chkVideoFiles, s->chkAudioFiles, s->chkImageFiles, s->chkTextFiles,
                           s->chkOtherFiles})
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
    boxes.queue(vbOK);
    QTest::mouseClick(s->cmdNext, Qt::LeftButton);
    QCOMPARE(boxes.prompts(), QStringList{"You must select something to scan."});
    QTest::mouseClick(s->cmdPrevious, Qt::LeftButton);
    QVERIFY(!Forms::isLoaded<frmScanDisc>() && Forms::get<frmMainMenu>()->isVisible());

    // A default device that is not there (none in kevro.ini reads as "Nowt"): a letter is named as a
    // drive, a folder as itself. No drive stands chosen by itself, never the system's root.
    const QList<std::pair<QString, QString>> devices{{QString(), "N:\\"}, {"q", "Q:\\"}, {disc + "/gone", disc + "/gone"}};
    for (const auto &[value, device] : devices) {
        QFile::remove(m_app.file("kevro.ini"));
        boxes.clear();
        boxes.queue(vbOK);
        s = scanDisc(value);
        QCOMPARE(boxes.prompts(), QStringList{"Default device " + device + " is not ready or available."});
        QCOMPARE(s->Drive1->Drive(), QString());
        Forms::unload<frmScanDisc>();
    }

    // The volume vanishes between the choice and Next: the walk's failure reaches the screen, which
    // comes back with the message, and the extract folder is emptied.
    WriteTestFile(m_extract + "/LEFT/OVER.TXT", "from the last scan");
    boxes.clear();
    boxes.queue(vbOK);
    s = scanDisc(disc);
    QDir(disc).removeRecursively();
    QTest::mouseClick(s->cmdNext, Qt::LeftButton);
    QCOMPARE(boxes.prompts(), QStringList{"Device is not available or media is not loaded."});
    QVERIFY(s->isVisible() && !Forms::isLoaded<frmScanProgress>());
    QCOMPARE(filesBelow(m_extract), QStringList());
}

void TestScan::scanThroughTheScreens()
{
    const QString disc = makeDisc("screens");
    WriteTestFile(disc + "/Top.txt", "top");
    for (int i = 0; i < 4; ++i)
        WriteTestFile(disc + QString("/Folder %1/Clip.avi").arg(i), "avi");
    WriteArchive(disc + "/Folder 0/Pack.zip", {{"Packed.gif", "gif"}});
    MsgBoxResponder boxes;
    auto *s = scanDisc(disc);
    QStringList stages, archivesShown;
    QList<int> bar;
    // Follow the screen while it works: what its labels and bars show as the walk goes. A cancel answered
    // No lets the scan run on.
    nextWhileWatching(s, [&] {
        if (!Forms::isLoaded<frmScanProgress>())
            return;
        auto *p = Forms::get<frmScanProgress>();
        const QString stage = p->frmWhatIsProgressing->title(), zip = p->lblCompressedFileProgress->text();
        if (stages.isEmpty() || stages.last() != stage)
            stages.append(stage);
        if (!zip.isEmpty() && !archivesShown.contains(zip))
            archivesShown.append(zip);
        if (stage == "Scanning media...")
            bar.append(p->ProgressBar->value());
        if (!bar.isEmpty() && boxes.boxes().isEmpty()) {
            boxes.queue(vbNo);
            QTest::mouseClick(p->cmdCancel, Qt::LeftButton);
        }
    });
    QCOMPARE(boxes.prompts(), QStringList{"Are you sure you want to cancel scan?"});
    // The pre-scan's caption is never painted: no events are pumped before the walk's caption replaces it.
    QCOMPARE(stages, (QStringList{"Scanning Disc", "Scanning media...", "Processing archive files..."}));
    QCOMPARE(archivesShown, QStringList{"Decompressing PACK.ZIP"});
    // Four top-level folders: the bar moves a quarter as each one's files are done.
    QVERIFY(std::is_sorted(bar.begin(), bar.end()));
    QCOMPARE(bar.last(), 75);
    // With executables ticked the scan ends on the application viewer; the progress screen is gone.
    QVERIFY(Forms::get<frmScanResultsEXEs>()->isVisible() && !s->isVisible() && !Forms::isLoaded<frmScanProgress>());
    QCOMPARE(entries(gMediaFiles).size(), 1 + 4 + 1 + 1);

    // Without the progress box there is no pre-scan: the root level is then listed where the process
    // stands, the file-system root, and only the volume's subfolders come from the disc.
    Forms::unload<frmScanResultsEXEs>();
    s->show();
    QTest::mouseClick(s->chkShowProgressBar, Qt::LeftButton, {}, QPoint(8, s->chkShowProgressBar->height() / 2));
    QTest::mouseClick(s->cmdNext, Qt::LeftButton);
    QVERIFY(!entries(gMediaFiles).contains(disc.toUpper() + "/TOP.TXT"));
    QVERIFY(entries(gMediaFiles).contains(disc.toUpper() + "/FOLDER 1/CLIP.AVI"));
}

void TestScan::failurePastTheStartFolder()
{
    // A failure of the judgement as the first review screen loads (here a matching component whose
    // application has no name) is no missing disc: the program ends with the platform's message.
    const QString disc = makeDisc("nameless");
    WriteTestFile(disc + "/NAMELESS.EXE", "MZ");
    const auto sql = [](std::initializer_list<const char *> statements) {
        OpenDatabase();
        for (const char *statement : statements)
            gConnection->Execute(statement);
        CloseDatabase();
    };
    sql({"INSERT INTO KEVRO_APPS (APP_NAME, APP_OWNER, APP_REQUIRES_LICENSE, APP_LICENSE_PER_MEDIA) "
         "VALUES (NULL, 1, False, False)",
         "INSERT INTO KEVRO_APP_COMPONENTS (EXE_APP, EXE_NAME, EXE_DESCRIPTION) "
         "SELECT APP_ID, 'NAMELESS.EXE', 'x' FROM KEVRO_APPS WHERE APP_NAME IS NULL"});
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    MsgBoxResponder boxes;
    boxes.queue(vbOK);
    QTest::mouseClick(scanDisc(disc)->cmdNext, Qt::LeftButton);
    sql({"DELETE FROM KEVRO_APP_COMPONENTS WHERE EXE_NAME = 'NAMELESS.EXE'",
         "DELETE FROM KEVRO_APPS WHERE APP_NAME IS NULL"});
    QCOMPARE(boxes.prompts(), QStringList{"Run-time error '94':\n\nInvalid use of Null"});
    QCOMPARE(ended, QList<int>{1});
}

void TestScan::cancel()
{
    const QString disc = makeDisc("cancel");
    for (int i = 0; i < 30; ++i)
        WriteTestFile(disc + QString("/F%1/Movie.mpg").arg(i), "mpg");
    // Yes stops the scan before the next folder, back on the set-up screen.
    MsgBoxResponder boxes;
    auto *s = scanDisc(disc);
    nextWhileWatching(s, [&] {
        if (boxes.boxes().isEmpty() && gFilesScanned >= 10 && Forms::isLoaded<frmScanProgress>()) {
            boxes.queue(vbYes);
            QTest::mouseClick(Forms::get<frmScanProgress>()->cmdCancel, Qt::LeftButton);
        }
    });
    QCOMPARE(boxes.prompts(), QStringList{"Are you sure you want to cancel scan?"});
    const qsizetype found = entries(gMediaFiles).size();
    QVERIFY2(found >= 10 && found < 30, qPrintable(QString::number(found)));
    QVERIFY(s->isVisible() && !Forms::isLoaded<frmScanResultsEXEs>() && !Forms::isLoaded<frmScanProgress>());
    Forms::unload<frmScanDisc>();

    // Cancel while an archive expands: the member under way goes, the members before it stay, and the
    // extract folder is still walked at the level where the flag is not tested.
    const QString zipDisc = makeDisc("cancel-zip");
    QList<M> members{{"First.txt", "first"}};
    for (int i = 0; i < 200; ++i)
        members.append({QString("Part%1.dat").arg(i, 3, 10, QChar('0')).toUtf8(), QByteArray(4096, char('a' + i % 26))});
    WriteArchive(zipDisc + "/Big.zip", members);
    QString shownWhileExpanding;
    nextWhileWatching(scanDisc(zipDisc), [&] {
        if (!shownWhileExpanding.isEmpty() || !Forms::isLoaded<frmScanProgress>())
            return;
        auto *p = Forms::get<frmScanProgress>();
        if (p->lblCompressedFileProgress->text().startsWith("Decompressing") &&
            QFileInfo::exists(m_extract + "/Big.zip/First.txt")) {
            shownWhileExpanding = p->lblCurrentAction->text() + " | " + p->lblFilesScannedNumber->text();
            boxes.queue(vbYes);
            QTest::mouseClick(p->cmdCancel, Qt::LeftButton);
        }
    });
    // While an archive expands its path is on the screen; the count is shown once the folder's files
    // are classified, so the root folder's archive still sees the count of the start.
    QCOMPARE(shownWhileExpanding, ShortenPath(zipDisc.toUpper() + "/BIG.ZIP", 40) + " | 0");
    const QStringList landed = filesBelow(m_extract + "/Big.zip");
    QVERIFY2(landed.contains("First.txt") && landed.size() < 201, qPrintable(QString::number(landed.size())));
    QCOMPARE(entries(gMediaFiles), QStringList{zipDisc.toUpper() + "/BIG.ZIP"});
}

void TestScan::corpusDisc()
{
    const QString corpus = CorpusFolder();
    if (corpus.isEmpty())
        QSKIP("skipped: no corpus");
    const QString disc = m_discs.filePath("corpus");
    QCOMPARE(QProcess::execute("bash", {corpus + "/make_disc.sh", disc, "--readonly"}), 0);
    const QStringList discBefore = filesBelow(disc);
    const auto appFolder = [this] {
        return QDir(m_app.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    };
    const QStringList appBefore = appFolder();
    // Hostile archives bring many warnings: every one is answered as the operator would, with OK.
    MsgBoxResponder boxes;
    boxes.queue(vbOK, 1000);
    walk(disc);

    // The scan went to the end: the last folder in walk order was reached and the extract folder walked.
    QVERIFY(entries(gMediaFiles).contains(disc.toUpper() + "/CROSS/BOMB IN FOLDER [1]/ZBSM.ZIP"));
    QVERIFY(!entries(gMediaFiles).filter(m_extract.toUpper() + "/").isEmpty());
    QCOMPARE(boxes.prompts().filter(QRegularExpression("^Not everything in ZBSM.ZIP was extracted")).size(), 2);
    // Nothing written outside the extract folder, no link inside it, and well under 4 GB.
    QCOMPARE(filesBelow(disc), discBefore);
    QCOMPARE(appFolder(), appBefore);
    for (const char *escaped : {"/tmp/PWNED.txt", "/tmp/evil.txt", "/tmp/Temp/evil.txt"})
        QVERIFY2(!QFileInfo::exists(escaped), escaped);
    int64_t bytes = 0;
    QCOMPARE(linksBelow(m_extract, &bytes), QStringList());
    QVERIFY(bytes < (int64_t(4) << 30));
    // The read-only copy must not stay behind read-only for the temporary folder's removal.
    QProcess::execute("chmod", {"-R", "u+w", disc});
}

QTEST_MAIN(TestScan)
#include "tst_scan.moc"
