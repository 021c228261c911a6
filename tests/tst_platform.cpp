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

#include <QCoreApplication>
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
    void profileReads();
    void profileWrites();
    void shellCommandSplitting_data();
    void shellCommandSplitting();
    void workingFolder();
    void shellOpenFallsBackAndWarns();
    void shellOpenStartsARealProgram();
    void shellOpenNeverExecutesDiscFiles();
    void responderRecordsAndAnswers();
    void failuresCarryTheirNumbers();
    void storedNames_data();
    void storedNames();
    void storedPathsReachTheirOwnFiles();
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

void TestPlatform::profileReads()
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
}

void TestPlatform::profileWrites()
{
    const QString ini = m_app.file("write/kevro.ini");
    QDir().mkpath(m_app.file("write"));
    // A write creates the file, in the classic form a person can edit.
    QVERIFY(WritePrivateProfileString("Devices", "DefaultDevice", "/media/cdrom", ini));
    QVERIFY(WritePrivateProfileString("Reports", "DefaultReportType", "HTML", ini));
    QVERIFY(WritePrivateProfileString("Reports", "DefaultReportContent", "ALL", ini));
    QCOMPARE(ReadTestFile(ini), QByteArray("[Devices]\r\nDefaultDevice=/media/cdrom\r\n"
                                           "[Reports]\r\nDefaultReportType=HTML\r\nDefaultReportContent=ALL\r\n"));
    // A second write replaces the value in place, whatever case the key was written in.
    QVERIFY(WritePrivateProfileString("reports", "defaultreporttype", "TEXT", ini));
    QCOMPARE(GetPrivateProfileString("Reports", "DefaultReportType ", "Nowt", 50, ini), QString("TEXT"));
    QCOMPARE(ReadTestFile(ini).count("ReportType"), 1);

    // A hand-edited file keeps its comments, blank lines and line ends.
    const QString edited = WriteTestFile(m_app.file("write/edited.ini"),
                                         "# plant station 3\n[Devices]\nDefaultDevice=/media/cdrom\n\n[Other]\nA=1\n");
    QVERIFY(WritePrivateProfileString("Devices", "Added", "yes", edited));
    QCOMPARE(ReadTestFile(edited),
             QByteArray("# plant station 3\n[Devices]\nDefaultDevice=/media/cdrom\nAdded=yes\n\n[Other]\nA=1\n"));

    // A profile that cannot be written reports it and is left as it was.
    QDir().mkpath(m_app.file("write/folder.ini"));
    QVERIFY(!WritePrivateProfileString("Devices", "DefaultDevice", "/", m_app.file("write/folder.ini")));
    QVERIFY(!WritePrivateProfileString("Devices", "DefaultDevice", "/", m_app.file("no/such/folder/k.ini")));
}

void TestPlatform::shellCommandSplitting_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("parameters");
    QTest::newRow("quoted with blanks") << "\"/media/cd rom/read me.txt\"" << "/media/cd rom/read me.txt" << "";
    QTest::newRow("quoted and parameters") << "\"/opt/my app/run\"   -a -b" << "/opt/my app/run" << "-a -b";
    QTest::newRow("plain and parameters") << "/usr/bin/prog  --x y" << "/usr/bin/prog" << "--x y";
    QTest::newRow("plain alone") << "/usr/bin/prog" << "/usr/bin/prog" << "";
    QTest::newRow("one quote only") << "\"/a b" << "\"/a" << "b";
    QTest::newRow("address") << "https://example.org/search?q=x" << "https://example.org/search?q=x" << "";
}

void TestPlatform::shellCommandSplitting()
{
    QFETCH(QString, command);
    const ShellCommand c = SplitShellCommand(command);
    QFETCH(QString, file);
    QCOMPARE(c.file, file);
    QFETCH(QString, parameters);
    QCOMPARE(c.parameters, parameters);
}

void TestPlatform::workingFolder()
{
    QCOMPARE(DeriveWorkingFolder("/media/cdrom/SETUP.EXE"), QString("/media/cdrom"));
    QCOMPARE(DeriveWorkingFolder("/SETUP.EXE"), QString("/")); // the root keeps its separator
    QCOMPARE(DeriveWorkingFolder("SETUP.EXE"), QDir::currentPath());
}

void TestPlatform::shellOpenFallsBackAndWarns()
{
    MsgBoxResponder boxes;
    boxes.queue(vbOK);
    QList<ShellExecuteRequest> opened;
    QStringList started;
    auto oldExec = SetShellExecuteLauncher([&](const ShellExecuteRequest &r) {
        opened << r;
        return 31L; // nothing associated
    });
    auto oldProg = SetShellProgramLauncher([&](const QString &line, int) {
        started << line;
        return false;
    });
    OpenWithDefaultProgram("/media/cd rom/FILE.XYZ");
    QCOMPARE(opened.size(), 1);
    QCOMPARE(opened[0].file, QString("/media/cd rom/FILE.XYZ"));
    QCOMPARE(opened[0].workingFolder, QString("/media/cd rom"));
    QCOMPARE(opened[0].showState, 4);
    QCOMPARE(started, QStringList{"\"/media/cd rom/FILE.XYZ\""});
    QCOMPARE(boxes.prompts(), QStringList{"No program is associated with this file-extension."});
    QCOMPARE(boxes.boxes()[0].icon(), int(vbExclamation));
    SetShellExecuteLauncher(oldExec);
    SetShellProgramLauncher(oldProg);

    // The real launcher: a file that is not there is not opened, and the operator is told.
    boxes.clear();
    boxes.queue(vbOK);
    OpenWithDefaultProgram(m_app.file("not-there.pdf"));
    QCOMPARE(boxes.prompts(), QStringList{"No program is associated with this file-extension."});
}

void TestPlatform::shellOpenStartsARealProgram()
{
    // A program of this station, named as a command: the fallback starts it with its parameters.
    QDir::setCurrent(m_app.path());
    QVERIFY(ShellOpen("sh -c \"pwd > started.txt\"", vbNormalNoFocus) > ShellExecuteFailureLimit);
    QTRY_VERIFY_WITH_TIMEOUT(!ReadTestFile(m_app.file("started.txt")).isEmpty(), 10000);

    // A program of this station by its path: the desktop's opener comes first; when it has nothing
    // for the file, the fallback starts it.
    const QString marker = m_app.file("tool ran.txt");
    const QString tool = WriteTestFile(m_app.file("station tools/report tool"),
                                       "#!/bin/sh\necho ran > \"" + marker.toUtf8() + "\"\n");
    QFile::setPermissions(tool, QFile::permissions(tool) | QFileDevice::ExeOwner);
    QStringList offered;
    SetDesktopOpener([&](const QString &f) {
        offered << f;
        return false;
    });
    QVERIFY(ShellOpen("\"" + tool + "\"", vbNormalNoFocus) > ShellExecuteFailureLimit);
    QCOMPARE(offered, QStringList{tool});
    QTRY_VERIFY_WITH_TIMEOUT(ReadTestFile(marker) == "ran\n", 10000);
}

void TestPlatform::shellOpenNeverExecutesDiscFiles()
{
    // Scripts with the execute bit under a picture's and a program's name, on the volume under scan
    // and in the extract folder, and a link on the volume to a program of the station: opening hands
    // them to the desktop's opener; nothing runs them, even when the opener has nothing for them.
    const QString volume = m_app.file("volume");
    const QString marker = m_app.file("ran.txt");
    const QByteArray script = "#!/bin/sh\necho ran >> \"" + marker.toUtf8() + "\"\n";
    QStringList files;
    for (const QString &folder : {volume, ExtractFolder() + "/VOLUME/GAME.ZIP"})
        for (const char *name : {"PHOTO.JPG", "RUN.EXE"}) {
            const QString f = WriteTestFile(folder + "/" + name, script);
            QFile::setPermissions(f, QFile::permissions(f) | QFileDevice::ExeOwner | QFileDevice::ExeOther);
            files << f;
        }
    const QString stationTool = WriteTestFile(m_app.file("station/tool.sh"), script);
    QFile::setPermissions(stationTool, QFile::permissions(stationTool) | QFileDevice::ExeOwner);
    QVERIFY(QFile::link(stationTool, volume + "/SETUP.EXE"));
    files << volume + "/SETUP.EXE";
    SetScannedVolume(volume);

    QStringList opened;
    bool openerWorks = true;
    SetDesktopOpener([&](const QString &f) {
        opened << f;
        return openerWorks;
    });
    for (const QString &f : files)
        QVERIFY(ShellOpen("\"" + f + "\"", vbNormalNoFocus) > ShellExecuteFailureLimit);
    QCOMPARE(opened, files);

    // With no program for them, the operator hears so, and still nothing runs.
    openerWorks = false;
    MsgBoxResponder boxes;
    boxes.queue(vbOK, int(files.size()));
    for (const QString &f : files)
        OpenWithDefaultProgram(f);
    QCOMPARE(boxes.prompts(), QStringList(files.size(), "No program is associated with this file-extension."));
    QTest::qWait(300);
    QVERIFY(!QFile::exists(marker));
}

void TestPlatform::responderRecordsAndAnswers()
{
    int answer = 0;
    {
        MsgBoxResponder outer;
        outer.queue(vbOK);
        {
            MsgBoxResponder inner;
            inner.queue(vbNo);
            QCOMPARE(MsgBox("Delete it?", vbYesNo + vbExclamation, "Confirm"), int(vbNo));
            // A box nobody queued an answer for is reported (a failure in the tests), then answered
            // with its first button.
            QStringList unexpected;
            auto strict = MsgBoxResponder::SetUnexpectedBoxHandler(
                [&](const MsgBoxRequest &box) { unexpected << box.prompt; });
            QCOMPARE(MsgBox("Again?", 52), int(vbYes));
            MsgBoxResponder::SetUnexpectedBoxHandler(strict);
            QCOMPARE(unexpected, QStringList{"Again?"});
            QCOMPARE(inner.boxes().size(), 2);
            QCOMPARE(inner.boxes()[0].title, QString("Confirm"));
            QCOMPARE(inner.boxes()[0].buttons(), int(vbYesNo));
            QCOMPARE(inner.boxes()[1].title, AppTitle());
            QCOMPARE(inner.boxes()[1].icon(), int(vbExclamation));
        }
        // The outer responder is back once the inner one is gone.
        answer = MsgBox("Saved.", vbInformation);
        QCOMPARE(outer.prompts(), QStringList{"Saved."});
    }
    QCOMPARE(answer, int(vbOK));
}

void TestPlatform::failuresCarryTheirNumbers()
{
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

    // An unhandled failure in a handler: the platform's message, then the end of the process.
    MsgBoxResponder boxes;
    boxes.queue(vbOK, 2); // the first handler fails again when the name changes again below
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    QObject sender;
    On(&sender, &QObject::objectNameChanged, &sender, [] { RaiseVbError(VbErr::FileNotFound); });
    sender.setObjectName("go");
    QCOMPARE(boxes.prompts(), QStringList{"Run-time error '53':\n\nFile not found"});
    QCOMPARE(boxes.boxes()[0].icon(), int(vbCritical));
    QCOMPARE(ended, QList<int>{1});
    // A handler may take fewer arguments than its signal carries.
    QString seen;
    On(&sender, &QObject::objectNameChanged, &sender, [&](const QString &n) { seen = n; });
    sender.setObjectName("named");
    QCOMPARE(seen, QString("named"));
}

void TestPlatform::storedNames_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("stored");
    QTest::newRow("plain") << QByteArray("Setup.exe") << "SETUP.EXE";
    QTest::newRow("tab, CR, LF, DEL") << QByteArray("a\tb\rc\nd\x7f.txt") << "A_B_C_D_.TXT";
    QTest::newRow("C1 control") << QByteArray("x\xc2\x85y") << "X_Y";
    QTest::newRow("markup") << QByteArray("<b>x</b>") << "_B_X_/B_";
    QTest::newRow("direction controls") << QByteArray("a\xe2\x80\x8e\xe2\x80\xae" "b\xe2\x81\xa6" "c\xe2\x81\xa9") << "A__B_C_";
    QTest::newRow("bytes that are not UTF-8") << QByteArray("bad\xff\xfe.txt") << "BAD__.TXT";
    QTest::newRow("overlong and surrogate") << QByteArray("\xc0\xaf\xed\xa0\x80") << "_____";
    QTest::newRow("cut short") << QByteArray("end\xe2\x82") << "END__";
    QTest::newRow("letters kept") << QByteArray("stra\xc3\x9f""e \xc3\xa9t\xc3\xa9 \xf0\x9f\x98\x80") << QString::fromUtf8("STRASSE \u00c9T\u00c9 \U0001F600");
    QTest::newRow("a real replacement mark is a letter") << QByteArray("\xef\xbf\xbd") << QString::fromUtf8("\uFFFD");
}

void TestPlatform::storedNames()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, stored);
    QCOMPARE(StoredName(name), stored);
}

void TestPlatform::storedPathsReachTheirOwnFiles()
{
    // Two files that share a stored path, and one whose name no text can hold.
    const QByteArray folder = QFile::encodeName(m_app.file("Disc")) + '/';
    QDir().mkpath(m_app.file("Disc"));
    for (const QByteArray &name : {QByteArray("setup.exe"), QByteArray("SETUP.EXE"), QByteArray(".bad\xff.txt")}) {
        const int fd = ::open((folder + name).constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        QVERIFY(fd >= 0 && ::write(fd, name.constData(), size_t(name.size())) == name.size());
        ::close(fd);
    }
    const int32_t f = RegisterScanFolder(folder);
    const QString shared = QStringLiteral("/D/SETUP.EXE");
    RegisterScanFile(shared, f, "setup.exe");
    RegisterScanFile(QStringLiteral("/D/.BAD_.TXT"), f, ".bad\xff.txt");
    RegisterScanFile(shared, f, "SETUP.EXE");
    QCOMPARE(StoredPathCount(shared), 2);
    QCOMPARE(ReadTestFile(RealPath(shared, 0)), QByteArray("setup.exe"));
    QCOMPARE(ReadTestFile(RealPath(shared, 1)), QByteArray("SETUP.EXE"));
    QCOMPARE(InfoOf(shared, 1).size, qint64(9));
    // A list numbers its entries of one path in its own order; other paths are always the first.
    Occurrences occurrence;
    QCOMPARE((QList<int>{occurrence(shared), occurrence("/D/.BAD_.TXT"), occurrence(shared)}), (QList<int>{0, 0, 1}));
    // The name that is not UTF-8 is reached through a link in the extract folder, made once.
    QCOMPARE(NativePath("/D/.BAD_.TXT"), folder + ".bad\xff.txt");
    const QString link = RealPath("/D/.BAD_.TXT");
    QVERIFY2(link.startsWith(ExtractFolder() + "/") && link.endsWith("/.bad_.txt"), qPrintable(link));
    QCOMPARE(RealPath("/D/.BAD_.TXT"), link);
    QCOMPARE(ReadTestFile(link), QByteArray(".bad\xff.txt"));
    QVERIFY(InfoOf("/D/.BAD_.TXT").hidden);
    // A listed file replaced by a link since the scan is no file any more.
    QVERIFY(::unlink((folder + "setup.exe").constData()) == 0 &&
            ::symlink("/etc/hostname", (folder + "setup.exe").constData()) == 0);
    QVERIFY(!InfoOf(shared, 0).exists);
    QCOMPARE(FileSizeText(shared, 0), QStringLiteral("Error"));

    // A path no walk registered: taken as it is, else resolved name by name.
    const QString real = WriteTestFile(m_app.file("Disc/Mixed Case/Setup.exe"), "MZ");
    QCOMPARE(RealPath(real.toUpper()), real);
    QCOMPARE(RealPath("/NO/SUCH/PLACE"), QString("/NO/SUCH/PLACE"));
    QVERIFY(FileExists(real.toUpper()) && !FileExists(""));
    ClearRealPaths();
    QCOMPARE(StoredPathCount(shared), 0);

    SetScannedVolume("/media/cdrom");
    QCOMPARE(VolumeRootOf("/media/cdrom/A/B.EXE"), QString("/media/cdrom/"));
    QCOMPARE(VolumeRootOf(ExtractFolder() + "/X"), QString("/"));
    SetScannedVolume(QString());
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
    QVERIFY(fired);
    QVERIFY(t.elapsed() >= 40);
}

void TestPlatform::resetExtractFolder()
{
    const QString extract = ExtractFolder();
    const QString ro = WriteTestFile(extract + "/DISC/SETUP.ZIP/README.TXT", "x");
    QFile::setPermissions(ro, QFileDevice::ReadOwner);
    QFile::setPermissions(extract + "/DISC/SETUP.ZIP", QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    WriteTestFile(extract + "/.hidden", "x");

    QList<int> percents;
    QStringList texts;
    int unloads = 0;
    SetProgressSink({[&](int p, const QString &t) {
                         percents << p;
                         texts << t;
                     },
                     [&] { ++unloads; }});
    ResetExtractFolder();
    QVERIFY(QDir(extract).exists());
    QVERIFY(QDir(extract).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    QCOMPARE(percents, (QList<int>{1, 50, 99}));
    QCOMPARE(texts.first(), QString("Removing de-archived files..."));
    QCOMPARE(unloads, 1);

    // A folder that cannot be made again is the end of the program.
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
    QCOMPARE(boxes.boxes()[0].icon(), int(vbCritical));
}

QTEST_GUILESS_MAIN(TestPlatform)
#include "tst_platform.moc"
