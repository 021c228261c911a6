// The version reader on executables built from resource scripts, checked byte for byte against Debian's
// pefile; the state kept between files; every hostile file of the third-party corpus read safely.

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
QString fixture(const QString &name) { return QStringLiteral(KEVRO_PE_DIR "/") + name; }

QByteArray run(const QString &program, const QStringList &args)
{
    QProcess p;
    p.start(program, args);
    const bool ok = p.waitForFinished(60000) && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
    return ok ? p.readAllStandardOutput() : "failed: " + p.readAllStandardError();
}
} // namespace

class TestPeVersion final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        if (!QFileInfo::exists(fixture("english.exe")))
            QSKIP("no test executables: mingw-w64 binutils are missing (make test installs them)");
    }
    void sameAsPefile();
    void stringsOfTheFirstTranslationAndWhatCarriesOver();
    void everyCorpusFileReadSafely();
};

void TestPeVersion::sameAsPefile()
{
    if (QProcess::execute(QStringLiteral(KEVRO_PEFILE_PYTHON), {"-c", "import pefile"}) != 0)
        QSKIP("Debian's python3-pefile is missing (make test installs it)");
    QStringList files;
    for (const char *n : {"english", "german", "japanese", "noproduct", "noversion", "twolang", "truncated", "outside"})
        files << fixture(QLatin1String(n) + ".exe");
    QCOMPARE(QString::fromUtf8(run(QStringLiteral(KEVRO_FILEINFO), files)),
             QString::fromUtf8(run(QStringLiteral(KEVRO_PEFILE_PYTHON), QStringList{KEVRO_PEFILE_SCRIPT} + files)));
}

void TestPeVersion::stringsOfTheFirstTranslationAndWhatCarriesOver()
{
    VersionInformation info;
    // The block says "040904b0" and "OriginalFilename": both found all the same.
    QCOMPARE(info.FileInformationText(fixture("english.exe")),
             QStringLiteral("Company Name:\r\nAcme Software Ltd\r\n\r\nFile Description:\r\nAcme Disc Menu\r\n\r\n"
                            "File Version:\r\n4.1.0.7\r\n\r\nInternal Name:\r\ndiscmenu\r\n\r\n"
                            "Legal Copyright:\r\nCopyright (C) 2003 Acme Software Ltd\r\n\r\n"
                            "Original FileName:\r\nDISCMENU.EXE\r\n\r\nProduct Name:\r\nAcme Autorun\r\n\r\n"
                            "Product Version:\r\n4.1"));
    // Code page 1252, a 64-bit file in UTF-16 Japanese, and of two translations the first.
    for (const auto &[file, translation, company] :
         {std::tuple{"german.exe", "040704E4", "Müller & Söhne GmbH"}, {"japanese.exe", "041104B0", "株式会社サンプル"},
          {"twolang.exe", "040704E4", "Deutsche Firma"}}) {
        QVERIFY2(info.ReadVersionInformation(fixture(QLatin1String(file))), file);
        QCOMPARE(info.LanguageCodePage, QLatin1String(translation));
        QCOMPARE(info.CompanyName, QString::fromUtf8(company));
    }
    // Empty fields add no blank line.
    QVERIFY(info.FileInformationText(fixture("japanese.exe")).contains("Internal Name:\r\n\r\nLegal Copyright:\r\n\r\n"));
    // A company name without a product version is no version information, yet the name stays read.
    QCOMPARE(info.FileInformationText(fixture("noproduct.exe")), QStringLiteral("(No version information for this file)"));
    QCOMPARE(info.CompanyName, QStringLiteral("Nameless Tools Inc"));
    // No version block, a damaged or missing file, a block not numbered 1: all eight strings emptied.
    for (const char *name : {"noversion.exe", "truncated.exe", "outside.exe", "missing.exe", "numbertwo.exe"}) {
        QVERIFY(info.ReadVersionInformation(fixture("english.exe")));
        QVERIFY2(!info.ReadVersionInformation(fixture(QLatin1String(name))), name);
        QCOMPARE(info.CompanyName, QString());
    }
    // Debian's own launchers carry their version block under number 102: no version information either.
    const QDir distlib(QStringLiteral("/usr/lib/python3/dist-packages/distlib"));
    const QStringList launchers = distlib.entryList({QStringLiteral("*.exe")}, QDir::Files);
    QVERIFY2(!launchers.isEmpty(), "Debian's python3-distlib is missing (make test installs it)");
    const QByteArray versionKey(reinterpret_cast<const char *>(u"VS_VERSION_INFO"), 30);
    for (const QString &name : launchers) { // the block is there, yet not read
        const QString path = distlib.filePath(name);
        QVERIFY2(ReadTestFile(path).contains(versionKey) && ReadVersionBlock(path).isEmpty(), qPrintable(name));
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
    for (const QString &f : files)
        QVERIFY2(lines.contains(f), qPrintable(f));
    // Of two version resources the one numbered 1 counts, as on Windows; a loop of resources ends.
    const QList<std::pair<const char *, const char *>> translations{
        {"secana+PeNet__test__PeNet.Test__Binaries__pidgin_with_additional_firefox_version_entry.exe", "040904B0"},
        {"hananoki+nkf-gui__nkf32.dll", "041103A4"}, {"fermiumbay+OurBirthplace__UNLHA32.DLL", "040904E4"},
        {"radareorg+radare2-testbins__pe__NoREpls.exe", "0C0904B0"}, {"corkami+pocs__PE__bin__version_mini.exe", ""},
        {"corkami+pocs__PE__bin__resourceloop.exe", ""}};
    for (const auto &[name, translation] : translations)
        QCOMPARE(lines.value(lines.indexOf(corpus + "/pe/" + name) + 1), QLatin1String(translation));
}

QTEST_GUILESS_MAIN(TestPeVersion)
#include "tst_peversion.moc"
