// Archive reading and expansion on archives built here and on the third-party corpus of hostile ones:
// what lands where, what never lands at all, and the bounds that stop a bomb.

#include "ArchiveFixtures.h"
#include "TestSupport.h"

#include "platform/VbError.h"
#include "scan/ArchiveExpander.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {
using M = FixtureMember;

QByteArray randomBytes(qsizetype n)
{
    QByteArray b(n, Qt::Uninitialized);
    QRandomGenerator gen(7);
    gen.fillRange(reinterpret_cast<quint32 *>(b.data()), n / 4);
    return b;
}

// Everything below a folder, links included, as relative paths.
QStringList everything(const QString &root)
{
    QStringList out;
    QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        out.append(QDir(root).relativeFilePath(it.next()));
    out.sort();
    return out;
}

QStringList linksBelow(const QString &root)
{
    QStringList out;
    QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString p = it.next();
        struct stat st;
        if (lstat(QFile::encodeName(p).constData(), &st) == 0 && !S_ISREG(st.st_mode) && !S_ISDIR(st.st_mode))
            out.append(p);
    }
    return out;
}

int64_t bytesBelow(const QString &root)
{
    int64_t total = 0;
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        struct stat st;
        if (lstat(QFile::encodeName(it.next()).constData(), &st) == 0)
            total += int64_t(st.st_blocks) * 512 > st.st_size ? int64_t(st.st_blocks) * 512 : st.st_size;
    }
    return total;
}

long listArchive(ArchiveExpander &x, const QString &path)
{
    try {
        return x.ReadContents(path);
    } catch (const VbError &e) {
        return -e.number;
    }
}

ArchiveExpander::Limits smallLimits()
{
    ArchiveExpander::Limits l = ArchiveExpander::DefaultLimits();
    l.archiveBytes = 1024 * 1024;
    l.scanBytes = 1536 * 1024;
    l.ratioFloorBytes = 256 * 1024;
    l.maxRatio = 200;
    l.freeSpaceReserve = 0;
    return l;
}
} // namespace

class TestArchive final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void readContents_data();
    void readContents();
    void layoutAndNames();
    void hostileMembers();
    void bounds();
    void encryptedAndDamagedMembers();
    void abortRemovesThePartialFile();
    void corpus();

private:
    QTemporaryDir m_tmp;
    QString m_sandbox; // the target folder lives here; nothing else may appear beside it
    QString m_target;
};

void TestArchive::init()
{
    m_sandbox = m_tmp.filePath(QString::fromLatin1(QTest::currentTestFunction()) + "-" +
                               QString::fromLatin1(QTest::currentDataTag()));
    QDir(m_sandbox).removeRecursively();
    QDir().mkpath(m_sandbox);
    m_target = m_sandbox + "/target";
}

void TestArchive::readContents_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<long>("expected"); // 0 archive, 1 no archive, -N raises N
    QByteArray text;
    for (int i = 0; i < 3000; ++i)
        text += QByteArray::number(i * 7919) + ' ';
    const QByteArray zip = ArchiveBytes({{"DIR/", {}, M::Folder}, {"DIR/A.TXT", text}, {"B.EXE", "MZ"}});
    QByteArray stub("MZ");
    stub.append(QByteArray(510, '\x90'));
    QTest::newRow("zip") << zip << 0L;
    QTest::newRow("empty zip") << ArchiveBytes({}) << 0L;
    QTest::newRow("self-extractor: program stub then zip") << stub + zip << 0L;
    QTest::newRow("zip behind text, no program stub") << QByteArray(3000, 't') + zip << 0L;
    QTest::newRow("zip inside text, its directory far from the end") << QByteArray(100, 't') + zip + QByteArray(70000, 'j') << 1L;
    QTest::newRow("7-zip") << ArchiveBytes({{"X.TXT", "seven"}}, "7zip") << 0L;
    QTest::newRow("plain program") << stub + randomBytes(4096) << 1L;
    QTest::newRow("text") << QByteArray("just words, PK inside\n") << 1L;
    QTest::newRow("empty file") << QByteArray() << 1L;
    QTest::newRow("zip cut inside a member") << zip.left(zip.size() / 2) << -VbErr::InvalidFileFormat;
    // Only the directory at the end is lost: every member is still there to read.
    QTest::newRow("zip cut inside its directory") << zip.left(zip.size() - 10) << 0L;
}

void TestArchive::readContents()
{
    QFETCH(QByteArray, bytes);
    QFETCH(long, expected);
    ArchiveExpander x;
    const QString path = WriteTestFile(m_sandbox + "/FILE.EXE", bytes);
    const long got = listArchive(x, path);
    QCOMPARE(got == 0 ? 0L : (got > 0 ? 1L : got), expected);
    QCOMPARE(listArchive(x, m_sandbox + "/MISSING.ZIP"), -VbErr::FileNotFound);
    // A pipe under an archive's name is never opened for reading: that would wait for a writer forever.
    QCOMPARE(mkfifo(QFile::encodeName(m_sandbox + "/PIPE.ZIP").constData(), 0644), 0);
    QVERIFY(listArchive(x, m_sandbox + "/PIPE.ZIP") > 0);
}

void TestArchive::layoutAndNames()
{
    const QString zip = WriteArchive(m_sandbox + "/SETUP.ZIP",
                                     {{"Docs/", {}, M::Folder},
                                      {"Docs/Read Me.txt", "first"},
                                      {"Docs\\Sub\\Deep.TXT", "backslashes are folders"},
                                      {"./Dot/x.txt", "dot component"},
                                      {"C:/drive.txt", "drive dropped"},
                                      {"caf\xc3\xa9.txt", "utf-8"},
                                      {"Docs/Read Me.txt", "second copy wins"}});
    WriteTestFile(m_target + "/Docs/Read Me.txt", "old contents, longer than the new ones");
    ArchiveExpander x;
    QList<int> progress;
    x.setObserver({[&](int p) { progress.append(p); }, {}});
    QCOMPARE(listArchive(x, zip), 0L);
    QVERIFY(x.Expand(zip, m_target));
    QVERIFY2(x.warnings().isEmpty(), qPrintable(x.warnings().join('\n')));
    QCOMPARE(ReadTestFile(m_target + "/Docs/Read Me.txt"), QByteArray("second copy wins"));
    QCOMPARE(ReadTestFile(m_target + "/Docs/Sub/Deep.TXT"), QByteArray("backslashes are folders"));
    QCOMPARE(ReadTestFile(m_target + "/Dot/x.txt"), QByteArray("dot component"));
    QCOMPARE(ReadTestFile(m_target + "/drive.txt"), QByteArray("drive dropped"));
    QCOMPARE(ReadTestFile(m_target + QString::fromUtf8("/caf\u00e9.txt")), QByteArray("utf-8"));
    QVERIFY(!progress.isEmpty());
    QCOMPARE(progress.last(), 100);
    QCOMPARE(x.scanTotal(), int64_t(5 + 23 + 13 + 13 + 5 + 16));
    QCOMPARE(everything(m_sandbox).first(), QString("SETUP.ZIP"));

    // An old DOS tool's name: code page 437 bytes and no UTF-8 mark in the headers.
    const QString dosZip = WriteTestFile(m_sandbox + "/DOS.ZIP", DosArchiveBytes({{"\x81" "ber \x9c.txt", "cp437"}}));
    QVERIFY(x.Expand(dosZip, m_target + "/dos"));
    QCOMPARE(everything(m_target + "/dos"), QStringList{QString::fromUtf8("\u00fcber \u00a3.txt")});
}

void TestArchive::hostileMembers()
{
    const QString outside = m_sandbox + "/outside";
    QDir().mkpath(outside);
    QDir().mkpath(m_target);
    // A link the target already holds must not be written through either.
    QVERIFY(QFile::link(outside, m_target + "/pre"));
    const QString zip = WriteArchive(m_sandbox + "/SLIP.ZIP",
                                     {{"good.txt", "good"},
                                      {"../evil.txt", "climb"},
                                      {"a/../../evil2.txt", "climb in the middle"},
                                      {"..\\..\\evil3.txt", "climb with backslashes"},
                                      {"/abs.txt", "absolute"},
                                      {"link", {}, M::Symlink, outside.toUtf8()},
                                      {"link/through.txt", "through the link"},
                                      {"inside", {}, M::Symlink, "good.txt"},
                                      {"pre/x.txt", "through a link already there"}});
    ArchiveExpander x;
    QCOMPARE(listArchive(x, zip), 0L);
    QVERIFY(x.Expand(zip, m_target));
    QCOMPARE(everything(outside), QStringList());
    QCOMPARE(ReadTestFile(m_target + "/good.txt"), QByteArray("good"));
    QCOMPARE(ReadTestFile(m_target + "/abs.txt"), QByteArray("absolute"));
    // The link was never made, so its name became an ordinary folder.
    QCOMPARE(ReadTestFile(m_target + "/link/through.txt"), QByteArray("through the link"));
    QCOMPARE(linksBelow(m_target), QStringList{m_target + "/pre"});
    QCOMPARE(everything(m_sandbox).filter(QRegularExpression("evil")), QStringList());
    const QString w = x.warnings().join('\n');
    for (const char *name : {"../evil.txt", "a/../../evil2.txt", "evil3.txt: leads outside", "link: a link", "inside: a link",
                             "pre/x.txt"})
        QVERIFY2(w.contains(QLatin1String(name)), qPrintable(w));
    QCOMPARE(x.warnings().size(), 6);

    // Pipes and device files (7-Zip can carry them) are never made.
    const QString special = WriteArchive(m_sandbox + "/SPECIAL.EXE",
                                         {{"pipe", {}, M::Fifo}, {"dev", {}, M::Device}, {"plain.txt", "plain"}}, "7zip");
    QVERIFY(x.Expand(special, m_target + "/special"));
    QCOMPARE(everything(m_target + "/special"), QStringList{"plain.txt"});
    QCOMPARE(x.warnings(), (QStringList{"pipe: not a file or a folder", "dev: not a file or a folder"}));
}

void TestArchive::bounds()
{
    // A member of zeros inflating far beyond the ratio: stopped, the file removed, what came before stays.
    const QString bomb = WriteArchive(m_sandbox + "/BOMB.ZIP", {{"small.txt", "kept"},
                                                                {"zeros.bin", QByteArray(4 * 1024 * 1024, '\0')},
                                                                {"after.txt", "never reached"}});
    ArchiveExpander x(smallLimits());
    QVERIFY(!x.Expand(bomb, m_target + "/bomb"));
    QCOMPARE(everything(m_target + "/bomb"), QStringList{"small.txt"});
    QCOMPARE(x.warnings().size(), 1);
    QVERIFY(x.warnings().first().startsWith("Expansion stopped at zeros.bin"));
    QVERIFY(x.warnings().first().contains("200 times"));

    // Incompressible members: the archive bound, then the bound of the whole scan over two archives.
    const QByteArray part = randomBytes(600 * 1024);
    const QString big = WriteArchive(m_sandbox + "/BIG.ZIP", {{"1.bin", part}, {"2.bin", part}, {"3.bin", part}});
    ArchiveExpander y(smallLimits());
    QVERIFY(!y.Expand(big, m_target + "/big"));
    QCOMPARE(everything(m_target + "/big"), QStringList{"1.bin"});
    QVERIFY(y.warnings().first().contains("more than 1 MB"));
    const QString one = WriteArchive(m_sandbox + "/ONE.ZIP", {{"1.bin", part}});
    QVERIFY(y.Expand(one, m_target + "/one"));
    QVERIFY(!y.Expand(one, m_target + "/again"));
    QVERIFY(y.warnings().first().contains("the disc's archives"));
    QCOMPARE(everything(m_target + "/again"), QStringList());
    QCOMPARE(y.scanTotal(), int64_t(2 * part.size()));

    // Many members, each empty: the member bounds stop the archive and then the scan, as the byte bounds do.
    QList<M> many;
    for (int i = 0; i < 5; ++i)
        many.append({QByteArray("m") + QByteArray::number(i), {}});
    const QString crowd = WriteArchive(m_sandbox + "/CROWD.ZIP", many);
    ArchiveExpander::Limits counted = smallLimits();
    counted.archiveMembers = 3;
    counted.scanMembers = 5;
    ArchiveExpander c(counted);
    QCOMPARE(c.ReadContents(crowd), 0L);
    QVERIFY(!c.Expand(crowd, m_target + "/crowd"));
    QCOMPARE(everything(m_target + "/crowd"), (QStringList{"m0", "m1", "m2"}));
    QCOMPARE(c.warnings(), QStringList{"Expansion stopped at m3: the archive holds more than 3 members"});
    QVERIFY(!c.Expand(crowd, m_target + "/crowd2"));
    QCOMPARE(everything(m_target + "/crowd2"), QStringList{"m0"});
    QCOMPARE(c.warnings(), QStringList{"Expansion stopped at m1: the disc's archives hold more than 5 members"});

    // Not enough free space left: nothing is written.
    ArchiveExpander::Limits full = smallLimits();
    full.freeSpaceReserve = int64_t(1) << 62;
    ArchiveExpander z(full);
    QVERIFY(!z.Expand(one, m_target + "/full"));
    QVERIFY(z.warnings().first().contains("free"));
    QCOMPARE(everything(m_target + "/full"), QStringList());
}

void TestArchive::encryptedAndDamagedMembers()
{
    QList<M> members{{"secret.txt", "hidden words"}};
    const QString enc = WriteArchive(m_sandbox + "/ENC.ZIP", members, "zip", "zip:encryption=zipcrypt", "pw");
    ArchiveExpander x;
    QCOMPARE(listArchive(x, enc), 0L);
    QVERIFY(x.Expand(enc, m_target + "/enc"));
    QCOMPARE(x.warnings(), QStringList{"secret.txt: encrypted"});
    QCOMPARE(everything(m_target + "/enc"), QStringList());

    // A stored member whose bytes were changed fails its check: it is dropped, the next one is whole.
    QByteArray text;
    for (int i = 0; i < 4000; ++i)
        text += QByteArray::number(i * 7919) + ' ';
    const QString damaged = WriteArchive(m_sandbox + "/DAMAGED.ZIP", {{"first.txt", text}, {"second.txt", "intact"}},
                                         "zip", "zip:compression=store");
    QByteArray bytes = ReadTestFile(damaged);
    for (qsizetype i = 200; i < 260; ++i)
        bytes[i] = char(bytes[i] ^ 0x5A);
    WriteTestFile(damaged, bytes);
    QVERIFY(x.Expand(damaged, m_target + "/damaged"));
    QCOMPARE(everything(m_target + "/damaged"), QStringList{"second.txt"});
    QCOMPARE(x.warnings().size(), 1);
    QVERIFY(x.warnings().first().startsWith("first.txt: damaged"));
}

void TestArchive::abortRemovesThePartialFile()
{
    const QString zip = WriteArchive(m_sandbox + "/LARGE.ZIP", {{"a.txt", "a"}, {"large.bin", randomBytes(8 << 20)}});
    ArchiveExpander x;
    // Cancel arrives once the large member has begun to land on disk.
    x.setObserver({[&](int) {
                       if (QFileInfo(m_target + "/large.bin").size() > 0)
                           x.setAbort(true);
                   },
                   {}});
    QVERIFY(!x.Expand(zip, m_target));
    QVERIFY(x.abort());
    QCOMPARE(everything(m_target), QStringList{"a.txt"});
}

void TestArchive::corpus()
{
    const QString corpus = CorpusFolder();
    if (corpus.isEmpty())
        QSKIP("skipped: no corpus");
    // Name fragments and what must hold after each one's expansion.
    struct Expect {
        const char *fragment;
        const char *file;   // must exist below the target with this size, or "" for none
        qint64 size;
        const char *warning; // a warning must contain this, or "" for none required
    };
    const QList<Expect> expectations{
        {"zip-slip__archives__zip-slip.zip", "good.txt", -1, ".."},
        {"zip-slip-win.zip", "good.txt", -1, ".."},
        {"dotdot-slip.zip", "", 0, ".."},
        {"exfil-slip.zip", "", 0, "a link"},
        {"size_exceeds_declared_deflate", "", 0, "first: damaged"},
        {"uncompressed_size_off_by_4gib", "hello.txt", 5, ""},
        {"encryption_partially", "bar.txt", -1, "foo.txt: encrypted"},
        {"zbsm.zip", "", 0, "Expansion stopped"},
        {"compat_zip_8", "", 0, ""},
        {"zip_sfx", "", 0, ""},
        {"7zip_sfx_pe.exe", "", 0, ""},
        {"rar_sfx.exe", "", 0, ""},
        {"rar5_sfx.exe", "", 0, ""},
    };
    const QStringList files = QDir(corpus + "/archives").entryList(QDir::Files, QDir::Name);
    QVERIFY(files.size() > 50);
    ArchiveExpander x;
    int archives = 0;
    for (const QString &name : files) {
        const QString target = m_target + "/" + QString::number(archives++);
        const long listed = listArchive(x, corpus + "/archives/" + name);
        if (listed != 0) {
            // Self-extractors are all read; a damaged archive is reported as one, never as "no archive".
            QVERIFY2(!name.contains("sfx") || name.contains("7zip_sfx_boundary") || name.contains("7zip_sfx_modified"),
                     qPrintable(name));
            continue;
        }
        x.Expand(corpus + "/archives/" + name, target);
        QVERIFY2(linksBelow(target).isEmpty(), qPrintable(name));
        for (const Expect &e : expectations) {
            if (!name.contains(QLatin1String(e.fragment)))
                continue;
            if (*e.file) {
                const QStringList found = everything(target).filter(QRegularExpression(
                    "(^|/)" + QRegularExpression::escape(e.file) + "$"));
                QVERIFY2(found.size() == 1, qPrintable(name));
                if (e.size >= 0)
                    QCOMPARE(QFileInfo(target + "/" + found.first()).size(), e.size);
            }
            if (*e.warning)
                QVERIFY2(x.warnings().join('\n').contains(QLatin1String(e.warning)),
                         qPrintable(name + ": " + x.warnings().join('\n')));
        }
        if (name.contains("compat_zip_8")) // backslash separators became folders
            QVERIFY2(!everything(target).filter("/").isEmpty() && everything(target).filter("\\").isEmpty(),
                     qPrintable(everything(target).join(',')));
        if (name.contains("sfx"))
            QVERIFY2(!everything(target).isEmpty(), qPrintable(name));
    }
    // Nothing beside the target, nothing written elsewhere, and the whole corpus stays small.
    QCOMPARE(everything(m_sandbox).filter(QRegularExpression("^[^/]+$")), QStringList{"target"});
    QVERIFY(!QFileInfo::exists("/tmp/PWNED.txt") && !QFileInfo::exists("/tmp/evil.txt"));
    QVERIFY(bytesBelow(m_target) < (int64_t(4) << 30));
}

QTEST_GUILESS_MAIN(TestArchive)
#include "tst_archive.moc"
