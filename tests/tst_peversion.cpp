// The version reader on real executables built from resource scripts, checked byte for byte against
// Debian's pefile; the state the viewer keeps between files; and every hostile or odd file of the
// third-party corpus read without a crash or a hang.

#include "ArchiveFixtures.h"
#include "TestSupport.h"

#include "platform/PeVersion.h"
#include "review/VersionInformation.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {
QString fixture(const QString &name)
{
    return QStringLiteral(KEVRO_PE_DIR "/") + name;
}

QStringList fixtures()
{
    QStringList out;
    for (const char *n : {"english", "german", "japanese", "noproduct", "noversion", "twolang", "truncated", "outside"})
        out << fixture(QLatin1String(n) + QStringLiteral(".exe"));
    return out;
}

QByteArray run(const QString &program, const QStringList &args)
{
    QProcess p;
    p.start(program, args);
    if (!p.waitForFinished(60000) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        return QByteArray("failed: ") + p.readAllStandardError();
    return p.readAllStandardOutput();
}
} // namespace

class TestPeVersion final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void sameAsPefile();
    void stringsOfTheFirstTranslation();
    void whatCarriesFromOneFileToTheNext();
    void everyCorpusFileReadSafely();
};

void TestPeVersion::init()
{
    if (!QFileInfo::exists(fixture("english.exe")))
        QSKIP("no test executables: mingw-w64 binutils are missing (make test installs them)");
}

void TestPeVersion::sameAsPefile()
{
    if (!QFileInfo::exists(QStringLiteral(KEVRO_PEFILE_PYTHON)) ||
        QProcess::execute(QStringLiteral(KEVRO_PEFILE_PYTHON), {"-c", "import pefile"}) != 0)
        QSKIP("Debian's python3-pefile is missing (make test installs it)");
    const QByteArray ours = run(QStringLiteral(KEVRO_FILEINFO), fixtures());
    const QByteArray theirs = run(QStringLiteral(KEVRO_PEFILE_PYTHON), QStringList{KEVRO_PEFILE_SCRIPT} + fixtures());
    QVERIFY(!ours.startsWith("failed") && !theirs.startsWith("failed"));
    QCOMPARE(QString::fromUtf8(ours), QString::fromUtf8(theirs));
    // Eight records, each beginning with its path.
    QCOMPARE(ours.count(QByteArray(KEVRO_PE_DIR "/")), 8);
}

void TestPeVersion::stringsOfTheFirstTranslation()
{
    VersionInformation info;
    QVERIFY(info.ReadVersionInformation(fixture("english.exe")));
    QCOMPARE(info.LanguageCodePage, QStringLiteral("040904B0"));
    // The block says "040904b0" and "OriginalFilename": both found all the same.
    QCOMPARE(info.FileInformationText(fixture("english.exe")),
             QStringLiteral("Company Name:\r\nAcme Software Ltd\r\n\r\nFile Description:\r\nAcme Disc Menu\r\n\r\n"
                            "File Version:\r\n4.1.0.7\r\n\r\nInternal Name:\r\ndiscmenu\r\n\r\n"
                            "Legal Copyright:\r\nCopyright (C) 2003 Acme Software Ltd\r\n\r\n"
                            "Original FileName:\r\nDISCMENU.EXE\r\n\r\nProduct Name:\r\nAcme Autorun\r\n\r\n"
                            "Product Version:\r\n4.1"));

    QVERIFY(info.ReadVersionInformation(fixture("german.exe")));
    QCOMPARE(info.LanguageCodePage, QStringLiteral("040704E4"));
    QCOMPARE(info.FileDescription, QStringLiteral("Größenprüfung für Datenträger"));
    QVERIFY(info.ReadVersionInformation(fixture("japanese.exe")));
    QCOMPARE(info.LanguageCodePage, QStringLiteral("041104B0"));
    QCOMPARE(info.CompanyName, QStringLiteral("株式会社サンプル"));
    // Empty fields add no blank line.
    QVERIFY(info.FileInformationText(fixture("japanese.exe")).contains("Internal Name:\r\n\r\nLegal Copyright:\r\n\r\n"));

    QVERIFY(info.ReadVersionInformation(fixture("twolang.exe")));
    QCOMPARE(info.LanguageCodePage, QStringLiteral("040704E4"));
    QCOMPARE(info.CompanyName, QStringLiteral("Deutsche Firma"));
    QCOMPARE(info.ProductVersion, QStringLiteral("5.0 Deutsch"));
}

void TestPeVersion::whatCarriesFromOneFileToTheNext()
{
    VersionInformation info;
    // A company name without a product version is no version information, yet the name stays read.
    QCOMPARE(info.FileInformationText(fixture("noproduct.exe")), QStringLiteral("(No version information for this file)"));
    QCOMPARE(info.CompanyName, QStringLiteral("Nameless Tools Inc"));
    // A file without a version block empties all eight strings; so do damaged and missing ones, and one
    // whose only block is not numbered 1 (the version API asks for that one).
    for (const char *name : {"noversion.exe", "truncated.exe", "outside.exe", "missing.exe", "numbertwo.exe"}) {
        QVERIFY(info.ReadVersionInformation(fixture("english.exe")));
        QVERIFY2(!info.ReadVersionInformation(fixture(QLatin1String(name))), name);
        QCOMPARE(info.CompanyName, QString());
        QCOMPARE(info.ProductVersion, QString());
    }
    // Debian's own launchers carry their version block under number 102: no version information either.
    const QStringList launchers = QDir(QStringLiteral("/usr/lib/python3/dist-packages/distlib"))
                                      .entryList({QStringLiteral("*.exe")}, QDir::Files);
    QVERIFY2(!launchers.isEmpty(), "Debian's python3-distlib is missing (make test installs it)");
    const QByteArray versionKey(reinterpret_cast<const char *>(u"VS_VERSION_INFO"), 30);
    for (const QString &name : launchers) {
        const QString path = QStringLiteral("/usr/lib/python3/dist-packages/distlib/") + name;
        QVERIFY2(ReadTestFile(path).contains(versionKey), qPrintable(name)); // the block is there
        QVERIFY2(ReadVersionBlock(path).isEmpty(), qPrintable(name));
    }
    // A pipe under an executable's name is never opened: no wait for a writer.
    QTemporaryDir dir;
    const QString pipe = dir.filePath("SETUP.EXE");
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QCOMPARE(info.FileInformationText(pipe), QStringLiteral("(No version information for this file)"));
}

void TestPeVersion::everyCorpusFileReadSafely()
{
    const QString corpus = CorpusFolder();
    if (corpus.isEmpty())
        QSKIP("skipped: no corpus");
    QStringList files;
    for (const QFileInfo &f : QDir(corpus + "/pe").entryInfoList(QDir::Files, QDir::Name))
        files << f.absoluteFilePath();
    QVERIFY(files.size() >= 60);
    const QString out = QString::fromUtf8(run(QStringLiteral(KEVRO_FILEINFO), files));
    QVERIFY2(!out.startsWith("failed"), qPrintable(out.left(300)));
    const QStringList lines = out.split('\n');
    const auto translationOf = [&](const QString &name) {
        const int at = lines.indexOf(corpus + "/pe/" + name);
        return at < 0 ? QStringLiteral("absent") : lines.value(at + 1);
    };
    for (const QString &f : files)
        QVERIFY2(lines.contains(f), qPrintable(f));
    QCOMPARE(translationOf("secana+PeNet__test__PeNet.Test__Binaries__pidgin.exe"), QStringLiteral("040904B0"));
    // Two version resources: the one numbered 1 counts, as on Windows.
    QCOMPARE(translationOf("secana+PeNet__test__PeNet.Test__Binaries__pidgin_with_additional_firefox_version_entry.exe"),
             QStringLiteral("040904B0"));
    QCOMPARE(translationOf("hananoki+nkf-gui__nkf32.dll"), QStringLiteral("041103A4"));
    QCOMPARE(translationOf("fermiumbay+OurBirthplace__UNLHA32.DLL"), QStringLiteral("040904E4"));
    QCOMPARE(translationOf("radareorg+radare2-testbins__pe__NoREpls.exe"), QStringLiteral("0C0904B0"));
    QCOMPARE(translationOf("corkami+pocs__PE__bin__version_mini.exe"), QString());
    QCOMPARE(translationOf("corkami+pocs__PE__bin__resourceloop.exe"), QString());
}

QTEST_GUILESS_MAIN(TestPeVersion)
#include "tst_peversion.moc"
