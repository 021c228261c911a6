// The platform layer: the profile file, the shell's opening of files, message boxes, failures with
// their numbers, the paths of stored names, and the extract folder's reset.

#include "TestSupport.h"

#include "platform/Events.h"
#include "platform/FileSystem.h"
#include "platform/IniProfile.h"
#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "shell/MainMod.h"
#include "shell/Progress.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>
#include <QTimer>

#include <fcntl.h>
#include <unistd.h>

class TestPlatform final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { resetPlatform(); }
    void cleanup() { resetPlatform(); }
    void profileReadsAndWrites();
    void shellCommandsAndWorkingFolders();
    void shellOpenAsksTheDesktopThenWarns();
    void shellOpenStartsStationProgramsNeverDiscFiles();
    void messageBoxesAndFailures();
    void storedNamesAndPaths();
    void emptyOpticalDrives();
    void pausePumpsEvents();
    void resetExtractFolder();

private:
    // Every test starts and ends on the same platform: no volume, the real launchers and opener, no
    // end hook, no progress sink, the extract folder in place, the first current folder.
    void resetPlatform();

    TempAppFolder m_app;
    const QString m_startFolder = QDir::currentPath();
};

void TestPlatform::resetPlatform()
{
    SetScannedVolume(QString());
    ClearRealPaths();
    SetDesktopOpener(nullptr);
    SetShellExecuteLauncher(nullptr);
    SetShellProgramLauncher(nullptr);
    SetEndProcessHook(nullptr);
    SetProgressSink({});
    QDir().mkpath(ExtractFolder());
    QDir::setCurrent(m_startFolder);
}

void TestPlatform::profileReadsAndWrites()
{
    const QString ini = m_app.file("read.ini");
    QCOMPARE(GetPrivateProfileString("Reports", "DefaultReportType ", "Nowt", 50, ini), QString("Nowt"));
    WriteTestFile(ini, "; comment line\r\n"
                       "[devices]\r\n"
                       "  DefaultDevice  =  /media/cdrom  \r\n"
                       "[Reports]\r\n"
                       "defaultreporttype=html\r\n"
                       "Quoted=\"  padded  \"\r\n"
                       "Long=" + QByteArray(60, 'x') + "\r\n");
    // Sections and keys whatever their case; a key asked with a trailing blank is found.
    QCOMPARE(GetPrivateProfileString("Devices", "DefaultDevice ", "Nowt", 50, ini), QString("/media/cdrom"));
    QCOMPARE(GetPrivateProfileString("Reports", "DefaultReportType ", "Nowt", 50, ini), QString("html"));
    QCOMPARE(GetPrivateProfileString("Reports", "Quoted", "Nowt", 50, ini), QString("  padded  "));
    // The buffer of 50 keeps 49 characters.
    QCOMPARE(GetPrivateProfileString("Reports", "Long", "Nowt", 50, ini), QString(49, 'x'));
    QCOMPARE(GetPrivateProfileString("Reports", "DefaultDevice", "Nowt", 50, ini), QString("Nowt"));
    QCOMPARE(GetPrivateProfileString("Missing", "Key", "Nowt", 3, ini), QString("No"));

    // A write creates the file, in the classic form a person can edit.
    const QString written = m_app.file("written.ini");
    QVERIFY(WritePrivateProfileString("Devices", "DefaultDevice", "/media/cdrom", written));
    QVERIFY(WritePrivateProfileString("Reports", "DefaultReportType", "HTML", written));
    QVERIFY(WritePrivateProfileString("Reports", "DefaultReportContent", "ALL", written));
    QCOMPARE(ReadTestFile(written), QByteArray("[Devices]\r\nDefaultDevice=/media/cdrom\r\n"
                                           "[Reports]\r\nDefaultReportType=HTML\r\nDefaultReportContent=ALL\r\n"));
    // A second write replaces the value in place, whatever case the key was written in.
    QVERIFY(WritePrivateProfileString("reports", "defaultreporttype", "TEXT", written));
    QCOMPARE(GetPrivateProfileString("Reports", "DefaultReportType ", "Nowt", 50, written), QString("TEXT"));
    QCOMPARE(ReadTestFile(written).count("ReportType"), 1);
    // A hand-edited file keeps its comments, blank lines and line ends.
    const QString edited = WriteTestFile(m_app.file("edited.ini"),
                                         "# plant station 3\n[Devices]\nDefaultDevice=/media/cdrom\n\n[Other]\nA=1\n");
    QVERIFY(WritePrivateProfileString("Devices", "Added", "yes", edited));
    QCOMPARE(ReadTestFile(edited),
             QByteArray("# plant station 3\n[Devices]\nDefaultDevice=/media/cdrom\nAdded=yes\n\n[Other]\nA=1\n"));
    // A profile that cannot be written reports it and is left as it was.
    QDir().mkpath(m_app.file("folder.ini"));
    QVERIFY(!WritePrivateProfileString("Devices", "DefaultDevice", "/", m_app.file("folder.ini")));
    QVERIFY(!WritePrivateProfileString("Devices", "DefaultDevice", "/", m_app.file("no/such/folder/k.ini")));
}

void TestPlatform::shellCommandsAndWorkingFolders()
{
    // The file, and the parameters behind it.
    const QList<std::tuple<QString, QString, QString>> commands{
        {"\"/opt/my app/run\"   -a -b", "/opt/my app/run", "-a -b"},
        {"/usr/bin/prog  --x y", "/usr/bin/prog", "--x y"},
        {"\"/a b", "\"/a", "b"}}; // one quote only
    for (const auto &[command, file, parameters] : commands) {
        QCOMPARE(SplitShellCommand(command).file, file);
        QCOMPARE(SplitShellCommand(command).parameters, parameters);
    }
    QCOMPARE(DeriveWorkingFolder("/media/cdrom/SETUP.EXE"), QString("/media/cdrom"));
    QCOMPARE(DeriveWorkingFolder("/SETUP.EXE"), QString("/")); // the root keeps its separator
    QCOMPARE(DeriveWorkingFolder("SETUP.EXE"), QDir::currentPath());
}

void TestPlatform::shellOpenAsksTheDesktopThenWarns()
{
    // The desktop is asked with the bare file, its folder to work in, and no focus.
    QList<ShellExecuteRequest> opened;
    SetShellExecuteLauncher([&](const ShellExecuteRequest &r) {
        opened << r;
        return 42L;
    });
    OpenWithDefaultProgram("/media/cd rom/FILE.XYZ");
    QCOMPARE(opened.value(0).file, QString("/media/cd rom/FILE.XYZ"));
    QCOMPARE(opened.value(0).workingFolder, QString("/media/cd rom"));
    QCOMPARE(opened.value(0).showState, 4);
    // The real launcher: a file that is not there is not opened, and the operator is told.
    SetShellExecuteLauncher(nullptr);
    MsgBoxResponder boxes;
    boxes.queue(vbOK);
    OpenWithDefaultProgram(m_app.file("not-there.pdf"));
    QCOMPARE(boxes.prompts(), QStringList{"No program is associated with this file-extension."});
}

void TestPlatform::shellOpenStartsStationProgramsNeverDiscFiles()
{
    // The desktop's opener is asked first, and has nothing for any of the files below.
    QStringList opened;
    SetDesktopOpener([&](const QString &f) {
        opened << f;
        return false;
    });
    // A program of this station, named as a command: the fallback starts it with its parameters.
    QDir::setCurrent(m_app.path());
    QVERIFY(ShellOpen("sh -c \"pwd > started.txt\"", vbNormalNoFocus) > ShellExecuteFailureLimit);
    QTRY_VERIFY_WITH_TIMEOUT(!ReadTestFile(m_app.file("started.txt")).isEmpty(), 10000);
    // Each script, run, leaves "ran" in a file named after the path it was run by.
    const auto executable = [](const QString &path) {
        QFile::setPermissions(WriteTestFile(path, "#!/bin/sh\necho ran >> \"$0 ran\"\n"),
                              QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner |
                                  QFileDevice::ExeOther);
        return path;
    };
    // A program of this station by its path: the fallback starts it.
    const QString tool = executable(m_app.file("station tools/report tool"));
    QVERIFY(ShellOpen("\"" + tool + "\"", vbNormalNoFocus) > ShellExecuteFailureLimit);
    QTRY_VERIFY_WITH_TIMEOUT(ReadTestFile(tool + " ran") == "ran\n", 10000);
    // Scripts with the execute bit, on the volume under scan and in the extract folder, and a link on
    // the volume to a program of the station: the operator hears there is no program, and nothing runs.
    const QString volume = m_app.file("volume");
    QStringList files;
    for (const QString &folder : {volume, ExtractFolder() + "/VOLUME/GAME.ZIP"})
        files << executable(folder + "/RUN.EXE");
    QVERIFY(QFile::link(executable(m_app.file("station/tool.sh")), volume + "/SETUP.EXE"));
    files << volume + "/SETUP.EXE";
    SetScannedVolume(volume);
    MsgBoxResponder boxes;
    boxes.queue(vbOK, int(files.size()));
    for (const QString &f : files)
        OpenWithDefaultProgram(f);
    QCOMPARE(opened, QStringList{tool} + files);
    QCOMPARE(boxes.prompts(), QStringList(files.size(), "No program is associated with this file-extension."));
    QTest::qWait(300);
    for (const QString &f : files)
        QVERIFY2(!QFile::exists(f + " ran"), qPrintable(f));
}

void TestPlatform::messageBoxesAndFailures()
{
    MsgBoxResponder outer;
    outer.queue(vbOK);
    {
        MsgBoxResponder inner;
        inner.queue(vbNo);
        QCOMPARE(MsgBox("Delete it?", vbYesNo + vbExclamation, "Confirm"), int(vbNo));
        // A box nobody queued an answer for is reported (a failure in the tests), then answered with
        // its first button.
        QStringList unexpected;
        auto strict =
            MsgBoxResponder::SetUnexpectedBoxHandler([&](const MsgBoxRequest &box) { unexpected << box.prompt; });
        QCOMPARE(MsgBox("Again?", vbYesNo + vbExclamation), int(vbYes));
        MsgBoxResponder::SetUnexpectedBoxHandler(strict);
        QCOMPARE(unexpected, QStringList{"Again?"});
        QCOMPARE(inner.boxes()[1].title, AppTitle());
    }
    // The outer responder is back once the inner one is gone.
    QCOMPARE(MsgBox("Saved.", vbInformation), int(vbOK));
    QCOMPARE(outer.prompts(), QStringList{"Saved."});

    // Carry on at the next statement for the named numbers only.
    QCOMPARE(ResumeNextOn({53, 52}, [] { RaiseVbError(53); }), 53L);
    QCOMPARE(ResumeNextOn({53}, [] {}), 0L);
    try {
        ResumeNextOn({53}, [] { RaiseVbError(68); });
        QFAIL("68 must pass on");
    } catch (const VbError &e) {
        QCOMPARE(e.number, 68L);
        QCOMPARE(e.description, QString("Device unavailable"));
    }
    // An unhandled failure in a signal's handler: the platform's message, then the end of the process.
    outer.queue(vbOK);
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    QObject sender;
    On(&sender, &QObject::objectNameChanged, &sender, [] { RaiseVbError(VbErr::FileNotFound); });
    sender.setObjectName("go");
    QCOMPARE(outer.prompts().last(), QString("Run-time error '53':\n\nFile not found"));
    QCOMPARE(ended, QList<int>{1});
}

void TestPlatform::storedNamesAndPaths()
{
    // Every control, markup and direction character, and every byte that is no UTF-8, becomes "_";
    // letters of any script are kept, upper-cased.
    const QList<std::pair<QByteArray, QString>> names{
        {"a\tb\rc\nd\x7f.txt", "A_B_C_D_.TXT"},
        {"x\xc2\x85y", "X_Y"}, // a C1 control
        {"<b>x</b>", "_B_X_/B_"},
        {"a\xe2\x80\x8e\xe2\x80\xae" "b\xe2\x81\xa6" "c\xe2\x81\xa9", "A__B_C_"},
        {"bad\xff\xfe.txt", "BAD__.TXT"},
        {"\xc0\xaf\xed\xa0\x80", "_____"}, // overlong and surrogate
        {"end\xe2\x82", "END__"},          // cut short
        {"stra\xc3\x9f" "e \xc3\xa9t\xc3\xa9 \xf0\x9f\x98\x80", QString::fromUtf8("STRASSE \u00c9T\u00c9 \U0001F600")},
        {"\xef\xbf\xbd", QString::fromUtf8("\uFFFD")}}; // a real replacement mark is a letter
    for (const auto &[name, stored] : names)
        QCOMPARE(StoredName(name), stored);

    // (Names equal but for case, and a whole hostile disc read back file by file, are tst_scan's.)
    const QByteArray folder = QFile::encodeName(m_app.file("Disc")) + '/';
    QDir().mkpath(m_app.file("Disc"));
    for (const QByteArray &name : {QByteArray("setup.exe"), QByteArray(".bad\xff.txt")}) {
        const int fd = ::open((folder + name).constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        QVERIFY(fd >= 0 && ::write(fd, name.constData(), size_t(name.size())) == name.size());
        ::close(fd);
    }
    const int32_t f = RegisterScanFolder(folder);
    const QString shared = QStringLiteral("/D/SETUP.EXE");
    RegisterScanFile(shared, f, "setup.exe");
    RegisterScanFile(QStringLiteral("/D/.BAD_.TXT"), f, ".bad\xff.txt");
    // The name that is not UTF-8 keeps its bytes, and is reached through one link in the extract folder.
    QCOMPARE(NativePath("/D/.BAD_.TXT"), folder + ".bad\xff.txt");
    const QString link = RealPath("/D/.BAD_.TXT");
    QCOMPARE(ReadTestFile(link), QByteArray(".bad\xff.txt"));
    QCOMPARE(RealPath("/D/.BAD_.TXT"), link);
    QVERIFY(InfoOf("/D/.BAD_.TXT").hidden);
    // A listed file replaced by a link since the scan is no file any more.
    QVERIFY(::unlink((folder + "setup.exe").constData()) == 0 &&
            ::symlink("/etc/hostname", (folder + "setup.exe").constData()) == 0);
    QVERIFY(!InfoOf(shared, 0).exists);
    QCOMPARE(FileSizeText(shared, 0), QStringLiteral("Error"));

    // A path no walk registered: resolved name by name, else taken as it is.
    QVERIFY(FileExists(WriteTestFile(m_app.file("Disc/Mixed Case/Setup.exe"), "MZ").toUpper()) && !FileExists(""));
    QCOMPARE(RealPath("/NO/SUCH/PLACE"), QString("/NO/SUCH/PLACE"));
    QCOMPARE(StoredPathCount(shared), 1);
    ClearRealPaths();
    QCOMPARE(StoredPathCount(shared), 0);
    SetScannedVolume("/media/cdrom");
    QCOMPARE(VolumeRootOf("/media/cdrom/A/B.EXE"), QString("/media/cdrom/"));
    QCOMPARE(VolumeRootOf(ExtractFolder() + "/X"), QString("/"));
}

void TestPlatform::emptyOpticalDrives()
{
    // A drive with a disc is the mounted volume; an empty one stands under its mount point (blanks
    // escaped as fstab writes them), or under its device when the table names none.
    const QString fstab = "# /dev/sr1 /media/commented iso9660 user,noauto 0 0\n"
                          "UUID=1234 / ext4 defaults 0 1\n"
                          "/dev/sr1   /media/cd\\040rom  udf,iso9660 user,noauto 0 0\n";
    const QList<Volume> mounted{{"/media/disc", "MASTER", true, "/dev/sr0", true}};
    const QList<Volume> empty = EmptyOpticalDrives({"/dev/sr0", "/dev/sr1", "/dev/sr2"}, fstab, mounted);
    QCOMPARE(empty.size(), 2);
    QCOMPARE(empty[0].root, QString("/media/cd rom"));
    QCOMPARE(empty[1].root, QString("/dev/sr2"));
    QVERIFY(empty[0].optical && !empty[0].mounted && empty[1].device == "/dev/sr2");
    QVERIFY(!Volumes().isEmpty() && !IsEmptyDrive("/"));
}

void TestPlatform::pausePumpsEvents()
{
    bool fired = false;
    QTimer::singleShot(5, [&] { fired = true; });
    QElapsedTimer t;
    t.start();
    Pause(40);
    QVERIFY(fired && t.elapsed() >= 40);
}

void TestPlatform::resetExtractFolder()
{
    const QString extract = ExtractFolder();
    const QString ro = WriteTestFile(extract + "/DISC/SETUP.ZIP/README.TXT", "x");
    QFile::setPermissions(ro, QFileDevice::ReadOwner);
    QFile::setPermissions(extract + "/DISC/SETUP.ZIP", QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    WriteTestFile(extract + "/.hidden", "x");
    QStringList steps;
    const auto step = [&](int p, const QString &t) { steps << QString::number(p) + " " + t; };
    SetProgressSink({step, [&] { steps << "gone"; }});
    ResetExtractFolder();
    QVERIFY(QDir(extract).exists() && QDir(extract).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    const QString text = "Removing de-archived files...";
    QCOMPARE(steps, (QStringList{"1 " + text, "50 " + text, "99 " + text, "gone"}));

    // An extract folder gone from under the program is the end of it.
    MsgBoxResponder boxes;
    boxes.queue(vbOK);
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    QVERIFY(QDir(extract).removeRecursively());
    QVERIFY_THROWS_EXCEPTION(ProcessEnded, ResetExtractFolder());
    QCOMPARE(ended, QList<int>{1});
    QCOMPARE(boxes.prompts(),
             QStringList{"Error deleting and creating temp extract folder. Error #76 Make sure all files in " + extract +
                         " are deleted before running KEVRO again.  Can not continue."});
}

QTEST_GUILESS_MAIN(TestPlatform)
#include "tst_platform.moc"
