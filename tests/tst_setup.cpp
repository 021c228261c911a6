// kevro-setup as an installer runs it: the demo disc it lays out, the settings that point a first start
// at it, and what it leaves alone.

#include "TestSupport.h"

#include "platform/MsgBox.h"
#include "scan/MediaWalker.h"
#include "shell/MainMod.h"

#include <QDir>
#include <QDirIterator>
#include <QProcess>
#include <QTest>

namespace {
int runSetup(const QStringList &args, QString *output = nullptr)
{
    QProcess p;
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(QStringLiteral(KEVRO_SETUP_PROGRAM), args);
    p.waitForFinished(60000);
    if (output)
        *output = QString::fromLocal8Bit(p.readAll());
    return p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
}

QStringList names(const QStringList &stored, const QString &prefix)
{
    QStringList out;
    for (const QString &s : stored)
        if (s.startsWith(prefix))
            out.append(s.mid(prefix.size()));
    out.sort();
    return out;
}
} // namespace

class TestSetup final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void demoDiscScansAsAFirstStartExpects();
    void existingSettingsAndCatalogueAreLeftAlone();

private:
    TempAppFolder m_app;
};

void TestSetup::demoDiscScansAsAFirstStartExpects()
{
    QString out;
    QCOMPARE(runSetup({"--demo"}, &out), 0);
    const QString disc = m_app.file("demo-disc");
    QVERIFY2(out.contains("Laid out the demo disc in " + disc), qPrintable(out));
    // The settings a first start reads: the demo disc to scan, HTML reports of everything.
    QCOMPARE(ReadDefaultDevice(), disc);
    QCOMPARE(ReadIniKey("Reports", "DefaultReportType "), QString("HTML"));
    QCOMPARE(ReadIniKey("Reports", "DefaultReportContent "), QString("ALL"));

    // The scan of it: every kind, the archives expanded, no warning.
    QStringList boxes;
    const MsgBoxPresenter previous = SetMsgBoxPresenter([&](const MsgBoxRequest &r) {
        boxes.append(r.prompt);
        return FirstButtonOf(r.style);
    });
    ResetExtractFolder();
    MediaWalker walker;
    walker.SetDrive(disc);
    walker.ScanFiles();
    SetMsgBoxPresenter(previous);
    QCOMPARE(boxes, QStringList());
    const QString D = disc.toUpper() + "/", X = ExtractFolder().toUpper() + "/";
    const QStringList media = names(gMediaFiles, D), members = names(gMediaFiles, X);
    QCOMPARE(media, (QStringList{"AUTORUN.EXE", "DOCS/CREDITS.NFO", "DOCS/READ.ME", "DOCS/RELEASE NOTES.TXT",
                                 "MEDIA/CHIME.WAV", "MEDIA/INTRO.MPG", "MEDIA/PICTURES/COVER.BMP",
                                 "MEDIA/PICTURES/DOT.GIF", "MENU.EXE", "PLAYERS/QUICKTIMEINSTALLER.EXE",
                                 "PLAYERS/WMPLAYER.EXE", "README.TXT", "SETUP/DATA.ZIP", "SETUP/DXSETUP.EXE",
                                 "SETUP/SETUP.INI", "TOOLS/DISC.DAT", "TOOLS/DISCTOOL.EXE"}));
    QCOMPARE(members, (QStringList{"SETUP/DATA.ZIP/PROGRAM/ACRORD32.EXE", "SETUP/DATA.ZIP/PROGRAM/HELP/GUIDE.TXT",
                                   "SETUP/DATA.ZIP/PROGRAM/PLAYER/FLASHPLAYER.EXE",
                                   "SETUP/DATA.ZIP/PROGRAM/PLAYER/SPLASH.GIF",
                                   "SETUP/DXSETUP.EXE/DIRECTX/DXWEBSETUP.EXE", "SETUP/DXSETUP.EXE/DIRECTX/README.TXT"}));
    // An unknown kind and a hidden file are external files.
    QCOMPARE(names(gExternalFiles, D), (QStringList{".DISCINFO", "AUTORUN.INF", "DOCS/MANUAL.PDF"}));
    // The programs are no archives: nothing of theirs lands in the extract folder.
    QCOMPARE(QDir(ExtractFolder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{"SETUP"});
    QCOMPARE(QDir(ExtractFolder() + "/SETUP").entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             (QStringList{"DATA.ZIP", "DXSETUP.EXE"}));
}

void TestSetup::existingSettingsAndCatalogueAreLeftAlone()
{
    const QByteArray ini = "[Devices]\nDefaultDevice=e\n; the operator's own\n";
    WriteTestFile(m_app.file("kevro.ini"), ini);
    WriteTestFile(m_app.file("demo-disc/STRAY.TXT"), "left from an older demo disc");
    // The catalogue exists (the first test made it): --demo refuses it, yet the disc is laid out again.
    QString out;
    if (!QFile::exists(m_app.file("kevro.db")))
        QCOMPARE(runSetup({"--demo"}), 0);
    QVERIFY(runSetup({"--demo"}, &out) != 0);
    QVERIFY2(out.contains("Laid out the demo disc"), qPrintable(out));
    QCOMPARE(ReadTestFile(m_app.file("kevro.ini")), ini);
    QVERIFY(!QFile::exists(m_app.file("demo-disc/STRAY.TXT")));
    QVERIFY(QFile::exists(m_app.file("demo-disc/Setup/DXSETUP.EXE")));
    // --demo-disc touches nothing but the disc.
    const QByteArray db = ReadTestFile(m_app.file("kevro.db"));
    QCOMPARE(runSetup({"--demo-disc"}), 0);
    QCOMPARE(ReadTestFile(m_app.file("kevro.db")), db);
    QCOMPARE(ReadTestFile(m_app.file("kevro.ini")), ini);
}

QTEST_GUILESS_MAIN(TestSetup)
#include "tst_setup.moc"
