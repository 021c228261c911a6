// Archive reading and expansion on archives built here and on the third-party corpus of hostile ones:
// what lands where, what never lands at all, and the bounds that stop a bomb.

#include "ArchiveFixtures.h"
#include "TestSupport.h"

#include "platform/VbError.h"
#include "scan/ArchiveExpander.h"

#include <QDirIterator>
#include <QRandomGenerator>
#include <QTest>

#include <sys/stat.h>

namespace {
using M = FixtureMember;

QByteArray randomBytes(qsizetype n)
{
    QByteArray b(n, Qt::Uninitialized);
    QRandomGenerator(7).fillRange(reinterpret_cast<quint32 *>(b.data()), n / 4);
    return b;
}

// Everything below a folder as relative paths, links included; or only what is neither a file nor a
// folder (links, pipes, devices).
QStringList everything(const QString &root, bool oddOnly = false)
{
    QStringList out;
    QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString p = it.next();
        struct stat st;
        if (!oddOnly || (lstat(QFile::encodeName(p).constData(), &st) == 0 && !S_ISREG(st.st_mode) && !S_ISDIR(st.st_mode)))
            out.append(QDir(root).relativeFilePath(p));
    }
    out.sort();
    return out;
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
    QDir().mkpath(m_sandbox);
    m_target = m_sandbox + "/target";
}

void TestArchive::readContents_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<long>("expected"); // 0 archive, 1 no archive, -N raises N
    const QByteArray zip = ArchiveBytes({{"DIR/", {}, M::Folder}, {"DIR/A.TXT", randomBytes(3000)}, {"B.EXE", "MZ"}});
    QTest::newRow("zip") << zip << 0L;
    QTest::newRow("empty zip") << ArchiveBytes({}) << 0L;
    QTest::newRow("zip behind text, no program stub") << QByteArray(3000, 't') + zip << 0L;
    QTest::newRow("zip inside text, its directory far from the end") << QByteArray(100, 't') + zip + QByteArray(70000, 'j') << 1L;
    QTest::newRow("7-zip") << ArchiveBytes({{"X.TXT", "seven"}}, "7zip") << 0L;
    QTest::newRow("text") << QByteArray("just words, PK inside\n") << 1L;
    QTest::newRow("empty file") << QByteArray() << 1L;
    // Only the directory at the end is lost: every member is still there to read.
    QTest::newRow("zip cut inside its directory") << zip.left(zip.size() - 10) << 0L;
}

void TestArchive::readContents()
{
    QFETCH(QByteArray, bytes);
    QFETCH(long, expected);
    ArchiveExpander x;
    const long got = listArchive(x, WriteTestFile(m_sandbox + "/FILE.EXE", bytes));
    QCOMPARE(got == 0 ? 0L : (got > 0 ? 1L : got), expected);
    QCOMPARE(listArchive(x, m_sandbox + "/MISSING.ZIP"), -VbErr::FileNotFound);
    // A pipe under an archive's name is never opened for reading: that would wait for a writer forever.
    QCOMPARE(mkfifo(QFile::encodeName(m_sandbox + "/PIPE.ZIP").constData(), 0644), 0);
    QVERIFY(listArchive(x, m_sandbox + "/PIPE.ZIP") > 0);
}

void TestArchive::layoutAndNames()
{
    // Backslashes are folders, "." and a drive are dropped, the second copy of a name wins over the
    // first and over what the target held.
    const QString zip = WriteArchive(m_sandbox + "/SETUP.ZIP",
                                     {{"Docs/", {}, M::Folder}, {"Docs/Read Me.txt", "first"},
                                      {"Docs\\Sub\\Deep.TXT", "backslashes are folders"}, {"./Dot/x.txt", "dot component"},
                                      {"C:/drive.txt", "drive dropped"}, {"caf\xc3\xa9.txt", "utf-8"},
                                      {"Docs/Read Me.txt", "second copy wins"}});
    WriteTestFile(m_target + "/Docs/Read Me.txt", "old contents, longer than the new ones");
    ArchiveExpander x;
    QList<int> progress;
    x.setObserver({[&](int p) { progress.append(p); }, {}});
    QCOMPARE(listArchive(x, zip), 0L);
    QVERIFY(x.Expand(zip, m_target));
    QVERIFY2(x.warnings().isEmpty(), qPrintable(x.warnings().join('\n')));
    QCOMPARE(everything(m_target), (QStringList{"Docs", "Docs/Read Me.txt", "Docs/Sub", "Docs/Sub/Deep.TXT", "Dot",
                                                "Dot/x.txt", QString::fromUtf8("caf\u00e9.txt"), "drive.txt"}));
    QCOMPARE(ReadTestFile(m_target + "/Docs/Read Me.txt"), QByteArray("second copy wins"));
    QVERIFY(!progress.isEmpty() && progress.last() == 100);
    QCOMPARE(x.scanTotal(), int64_t(5 + 23 + 13 + 13 + 5 + 16));

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
                                     {{"good.txt", "good"}, {"../evil.txt", "climb"},
                                      {"a/../../evil2.txt", "climb in the middle"},
                                      {"..\\..\\evil3.txt", "climb with backslashes"}, {"/abs.txt", "absolute"},
                                      {"link", {}, M::Symlink, outside.toUtf8()}, {"link/through.txt", "through the link"},
                                      {"inside", {}, M::Symlink, "good.txt"}, {"pre/x.txt", "through a link already there"}});
    ArchiveExpander x;
    QVERIFY(listArchive(x, zip) == 0 && x.Expand(zip, m_target));
    QCOMPARE(everything(outside), QStringList());
    QCOMPARE(ReadTestFile(m_target + "/abs.txt"), QByteArray("absolute"));
    // The link was never made, so its name became an ordinary folder.
    QCOMPARE(ReadTestFile(m_target + "/link/through.txt"), QByteArray("through the link"));
    QCOMPARE(everything(m_target, true), QStringList{"pre"});
    QCOMPARE(everything(m_sandbox).filter("evil"), QStringList());
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

    // An encrypted member is left out, never asked a passphrase for.
    const QString enc = WriteArchive(m_sandbox + "/ENC.ZIP", {{"secret.txt", "hidden words"}}, "zip",
                                     "zip:encryption=zipcrypt", "pw");
    QVERIFY(listArchive(x, enc) == 0 && x.Expand(enc, m_target + "/enc"));
    QCOMPARE(x.warnings(), QStringList{"secret.txt: encrypted"});
    QCOMPARE(everything(m_target + "/enc"), QStringList());

    // A stored member whose bytes were changed fails its check: it is dropped, the next one is whole.
    const QString damaged = WriteArchive(m_sandbox + "/DAMAGED.ZIP", {{"first.txt", randomBytes(8000)}, {"second.txt", "intact"}},
                                         "zip", "zip:compression=store");
    QByteArray bytes = ReadTestFile(damaged);
    for (qsizetype i = 200; i < 260; ++i)
        bytes[i] = char(bytes[i] ^ 0x5A);
    WriteTestFile(damaged, bytes);
    QVERIFY(x.Expand(damaged, m_target + "/damaged"));
    QCOMPARE(everything(m_target + "/damaged"), QStringList{"second.txt"});
    QVERIFY2(x.warnings().size() == 1 && x.warnings().first().startsWith("first.txt: damaged"),
             qPrintable(x.warnings().join('\n')));
}

void TestArchive::bounds()
{
    // A member of zeros inflating far beyond the ratio: stopped, the file removed, what came before stays.
    const QString bomb = WriteArchive(m_sandbox + "/BOMB.ZIP", {{"small.txt", "kept"}, {"zeros.bin", QByteArray(4 << 20, '\0')},
                                                                {"after.txt", "never reached"}});
    ArchiveExpander x(smallLimits());
    QVERIFY(!x.Expand(bomb, m_target + "/bomb"));
    QCOMPARE(everything(m_target + "/bomb"), QStringList{"small.txt"});
    QVERIFY2(x.warnings().size() == 1 && x.warnings().first().startsWith("Expansion stopped at zeros.bin") &&
                 x.warnings().first().contains("200 times"), qPrintable(x.warnings().join('\n')));

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
    QVERIFY(!c.Expand(crowd, m_target + "/crowd"));
    QCOMPARE(everything(m_target + "/crowd"), (QStringList{"m0", "m1", "m2"}));
    QCOMPARE(c.warnings(), QStringList{"Expansion stopped at m3: the archive holds more than 3 members"});
    QVERIFY(!c.Expand(crowd, m_target + "/crowd2"));
    QCOMPARE(everything(m_target + "/crowd2"), QStringList{"m0"});
    QCOMPARE(c.warnings(), QStringList{"Expansion stopped at m1: the disc's archives hold more than 5 members"});

    // Not enough free space left: nothing is written.
    counted.freeSpaceReserve = int64_t(1) << 62;
    ArchiveExpander z(counted);
    QVERIFY(!z.Expand(one, m_target + "/full"));
    QVERIFY(z.warnings().first().contains("free"));
    QCOMPARE(everything(m_target + "/full"), QStringList());

    // A cancel once the large member has begun to land: the partial file goes, what came before stays.
    const QString large = WriteArchive(m_sandbox + "/LARGE.ZIP", {{"a.txt", "a"}, {"large.bin", randomBytes(8 << 20)}});
    ArchiveExpander a;
    a.setObserver({[&](int) { a.setAbort(QFileInfo(m_target + "/large/large.bin").size() > 0); }, {}});
    QVERIFY(!a.Expand(large, m_target + "/large"));
    QCOMPARE(everything(m_target + "/large"), QStringList{"a.txt"});
}

void TestArchive::corpus()
{
    const QString corpus = CorpusFolder();
    if (corpus.isEmpty())
        QSKIP("skipped: no corpus");
    // A name fragment; a file that must land below the target with this size (-1: any), or none; and
    // what a warning must say, if anything. (The walk's corpus case checks nothing escapes, and the size.)
    const QList<std::tuple<const char *, const char *, qint64, const char *>> expectations{
        {"zip-slip__archives__zip-slip.zip", "good.txt", -1, ".."}, {"zip-slip-win.zip", "good.txt", -1, ".."},
        {"dotdot-slip.zip", "", 0, ".."}, {"exfil-slip.zip", "", 0, "a link"},
        {"size_exceeds_declared_deflate", "", 0, "first: damaged"}, {"uncompressed_size_off_by_4gib", "hello.txt", 5, ""},
        {"encryption_partially", "bar.txt", -1, "foo.txt: encrypted"}, {"zbsm.zip", "", 0, "Expansion stopped"}};
    const QStringList files = QDir(corpus + "/archives").entryList(QDir::Files, QDir::Name);
    QVERIFY(files.size() > 50);
    ArchiveExpander x;
    int archives = 0;
    for (const QString &name : files) {
        const QString target = m_target + "/" + QString::number(archives++);
        if (listArchive(x, corpus + "/archives/" + name) != 0) {
            // Self-extractors are all read; a damaged archive is reported as one, never as "no archive".
            QVERIFY2(!name.contains("sfx") || name.contains("7zip_sfx_boundary") || name.contains("7zip_sfx_modified"),
                     qPrintable(name));
            continue;
        }
        x.Expand(corpus + "/archives/" + name, target);
        const QStringList landed = everything(target);
        QVERIFY2(everything(target, true).isEmpty(), qPrintable(name));
        QVERIFY2(!name.contains("sfx") || !landed.isEmpty(), qPrintable(name));
        if (name.contains("compat_zip_8")) // backslash separators became folders
            QVERIFY2(!landed.filter("/").isEmpty() && landed.filter("\\").isEmpty(), qPrintable(landed.join(',')));
        for (const auto &[fragment, file, size, warning] : expectations) {
            if (!name.contains(QLatin1String(fragment)))
                continue;
            const QStringList found = landed.filter(QRegularExpression("(^|/)" + QRegularExpression::escape(file) + "$"));
            QVERIFY2(!*file || found.size() == 1, qPrintable(name));
            QVERIFY2(!*file || size < 0 || QFileInfo(target + "/" + found.value(0)).size() == size, qPrintable(name));
            QVERIFY2(x.warnings().join('\n').contains(QLatin1String(warning)), qPrintable(name + ": " + x.warnings().join('\n')));
        }
    }
    QCOMPARE(everything(m_sandbox).filter(QRegularExpression("^[^/]+$")), QStringList{"target"}); // nothing beside it
}

QTEST_GUILESS_MAIN(TestArchive)
#include "tst_archive.moc"
