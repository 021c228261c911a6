// The shared helpers on the inputs that trip them: roots, names without dots, dots in folder names,
// empty and one-byte files, long names, illegal characters, hidden files and archive members.

#include "TestSupport.h"

#include "platform/MsgBox.h"
#include "platform/Paths.h"
#include "shell/MainMod.h"

#include <QFile>
#include <QTest>

class TestHelpers final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void namesAndExtensions_data();
    void namesAndExtensions();
    void shortenPath();
    void illegalCharactersAndApostrophes();
    void nullToEmpty();
    void fileSizeText();
    void folderSizeBytes();
    void fileIconKey();
    void kindTests_data();
    void kindTests();
    void listConvention();

private:
    TempAppFolder m_app;
};

void TestHelpers::namesAndExtensions_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("extension");
    QTest::newRow("bare name") << "NAME.TXT" << "NAME.TXT" << "TXT";
    QTest::newRow("root") << "/" << "" << "";
    QTest::newRow("dot in folder") << "/A.B/FILE" << "FILE" << "";
    QTest::newRow("no dot") << "README" << "README" << "";
    QTest::newRow("two dots") << "/X/Y.TAR.GZ" << "Y.TAR.GZ" << "GZ";
    QTest::newRow("trailing dot") << "/X/Y." << "Y." << "";
    QTest::newRow("hidden name") << "/X/.PROFILE" << ".PROFILE" << "PROFILE";
    QTest::newRow("empty") << "" << "" << "";
}

void TestHelpers::namesAndExtensions()
{
    QFETCH(QString, path);
    QFETCH(QString, name);
    QCOMPARE(FileNameOnly(path), name);
    QFETCH(QString, extension);
    QCOMPARE(ExtensionOf(path), extension);
}

void TestHelpers::shortenPath()
{
    QCOMPARE(ShortenPath("/SHORT/PATH.TXT", 40), QString("/SHORT/PATH.TXT"));
    const QString exactly40 = "/" + QString(35, 'A') + "/B.C";
    QCOMPARE(exactly40.size(), 40);
    QCOMPARE(ShortenPath(exactly40, 40), exactly40);

    // A short name survives whole behind the start of the path.
    const QString deep = "/MEDIA/CDROM/VERY/DEEP/FOLDER/STRUCTURE/HERE/SETUP.EXE";
    const QString shortened = ShortenPath(deep, 40);
    QCOMPARE(shortened.size(), 40);
    QVERIFY(shortened.endsWith("...SETUP.EXE"));
    QVERIFY(deep.startsWith(shortened.left(28)));

    // A name of 37 characters or more leaves only the tail of the path behind "...".
    const QString longName = QString(37, 'N');
    const QString withLongName = "/MEDIA/CDROM/" + longName;
    QCOMPARE(ShortenPath(withLongName, 40), "..." + withLongName.right(37));
    // One character shorter, and the start of the path comes back.
    const QString name36 = QString(36, 'N');
    QCOMPARE(ShortenPath("/MEDIA/CDROM/" + name36, 40), "/..." + name36);
}

void TestHelpers::illegalCharactersAndApostrophes()
{
    QCOMPARE(ReplaceIllegalFileChars("A/B:C"), QString("A_B_C"));
    QCOMPARE(ReplaceIllegalFileChars("\\/:<>?|\"*"), QString(9, '_'));
    QCOMPARE(ReplaceIllegalFileChars("CAT-001 (v2).x"), QString("CAT-001 (v2).x"));
    QCOMPARE(RemoveApostrophes("O'Brien's 'Disc'"), QString("OBriens Disc"));
}

void TestHelpers::nullToEmpty()
{
    QCOMPARE(NullToEmpty(QVariant()).toString(), QString(""));
    QVERIFY(!NullToEmpty(QVariant()).isNull());
    QVERIFY(!NullToEmpty(QVariant(QMetaType(QMetaType::Int))).isNull());
    QCOMPARE(NullToEmpty(QVariant(42)).toInt(), 42);
    QCOMPARE(NullToEmpty(QVariant(QString("x"))).toString(), QString("x"));
}

void TestHelpers::fileSizeText()
{
    auto sized = [this](const QString &name, qint64 bytes) {
        const QString path = m_app.file("sizes/" + name);
        WriteTestFile(path, {});
        QFile f(path);
        f.resize(bytes);
        return path;
    };
    QCOMPARE(FileSizeText(sized("empty", 0)), QString("0 KB"));
    QCOMPARE(FileSizeText(sized("one", 1)), QString("1 KB"));
    QCOMPARE(FileSizeText(sized("half", 512)), QString("1 KB"));
    QCOMPARE(FileSizeText(sized("almost2", 1535)), QString("1 KB"));
    QCOMPARE(FileSizeText(sized("onehalf", 1536)), QString("2 KB"));
    QCOMPARE(FileSizeText(sized("twohalf", 2560)), QString("3 KB")); // half away from zero
    QCOMPARE(FileSizeText(sized("big", 3LL * 1024 * 1024 * 1024)), QString("3145728 KB"));
    QCOMPARE(FileSizeText(m_app.file("sizes/missing")), QString("Error"));
    QCOMPARE(FileSizeText(m_app.file("sizes")), QString("Error"));
    // A stored upper-case path reaches the real file.
    QCOMPARE(FileSizeText(m_app.file("sizes/one").toUpper()), QString("1 KB"));
}

void TestHelpers::folderSizeBytes()
{
    const QString root = m_app.file("tree");
    WriteTestFile(root + "/a.bin", QByteArray(100, 'a'));
    WriteTestFile(root + "/.hidden", QByteArray(20, 'h'));
    WriteTestFile(root + "/sub/b.bin", QByteArray(300, 'b'));
    WriteTestFile(root + "/sub/deeper/c.bin", QByteArray(7, 'c'));
    QCOMPARE(FolderSizeBytes(root), 427.0);
    QCOMPARE(FolderSizeBytes(root + "/nothing-here"), 0.0);

    // Only the low 32 bits count, read as a signed number.
    const QString huge = WriteTestFile(root + "/sub/huge.iso", {});
    QFile(huge).resize((1LL << 31) + 10);
    QCOMPARE(FolderSizeBytes(root), 427.0 + double(int32_t(0x8000000A)));

    // A link to a folder above does not loop.
    QVERIFY(QFile::link(root, root + "/sub/loop"));
    QCOMPARE(FolderSizeBytes(root), 427.0 + double(int32_t(0x8000000A)));
}

void TestHelpers::fileIconKey()
{
    MsgBoxResponder boxes;
    const QString member = WriteTestFile(ExtractFolder() + "/DISC/SETUP.ZIP/.hidden.txt", "x");
    QCOMPARE(FileIconKey(member.toUpper()), QString("Zip")); // the archive mark wins
    const QString hidden = WriteTestFile(m_app.file("disc/.secret.exe"), "x");
    QCOMPARE(FileIconKey(hidden.toUpper()), QString("Hidden"));
    const QString plain = WriteTestFile(m_app.file("disc/plain.exe"), "x");
    QCOMPARE(FileIconKey(plain.toUpper()), QString(""));
    // Missing and empty names are passed over without a message.
    QCOMPARE(FileIconKey(m_app.file("disc/GONE.EXE")), QString(""));
    QCOMPARE(FileIconKey(""), QString(""));
    QVERIFY(boxes.boxes().isEmpty());
}

void TestHelpers::kindTests_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("video");
    QTest::addColumn<bool>("audio");
    QTest::addColumn<bool>("image");
    QTest::addColumn<bool>("text");
    QTest::newRow("avi") << "/D/A.AVI" << true << false << false << false;
    QTest::newRow("mpeg") << "/D/A.MPEG" << true << false << false << false;
    QTest::newRow("mpe") << "/D/A.MPE" << true << false << false << false;
    QTest::newRow("wmv is not video") << "/D/A.WMV" << false << false << false << false;
    QTest::newRow("wmw is") << "/D/A.WMW" << true << false << false << false;
    QTest::newRow("vcd track") << "/D/MPEGAV/AVSEQ01.DAT" << true << false << false << false;
    QTest::newRow("dat elsewhere") << "/D/DATA/AVSEQ01.DAT" << false << false << false << false;
    QTest::newRow("lower case") << "/d/a.avi" << false << false << false << false;
    QTest::newRow("mp3") << "/D/A.MP3" << false << true << false << false;
    QTest::newRow("jpg") << "/D/A.JPG" << false << false << true << false;
    QTest::newRow("jpeg is not") << "/D/A.JPEG" << false << false << false << false;
    QTest::newRow("ini") << "/D/SETUP.INI" << false << false << false << true;
    QTest::newRow("read me") << "/D/READ.ME" << false << false << false << true;
    QTest::newRow("dot readme") << "/D/FILE.README" << false << false << false << true;
}

void TestHelpers::kindTests()
{
    QFETCH(QString, path);
    QFETCH(bool, video);
    QCOMPARE(IsVideoFile(path), video);
    QFETCH(bool, audio);
    QCOMPARE(IsAudioFile(path), audio);
    QFETCH(bool, image);
    QCOMPARE(IsImageFile(path), image);
    QFETCH(bool, text);
    QCOMPARE(IsTextFile(path), text);
}

void TestHelpers::listConvention()
{
    QStringList list{"left over"};
    ResetList(list);
    QCOMPARE(list.size(), 1);
    QVERIFY(ListIsEmpty(list));
    AppendToList(list, "/D/A.EXE");
    QCOMPARE(list, QStringList{"/D/A.EXE"});
    AppendToList(list, "/D/B.EXE");
    QCOMPARE(list, (QStringList{"/D/A.EXE", "/D/B.EXE"}));
    QVERIFY(!ListIsEmpty(list));

    ResetList(gCheckedItems);
    QVERIFY(ListIsEmpty(gCheckedItems));
    AddCheckedItem("/D/A.JPG (1 KB)", "Image");
    QCOMPARE(gCheckedItems.size(), 1);
    AddCheckedItem("/D/B.TXT (2 KB)", "Text");
    QCOMPARE(gCheckedItems.size(), 2);
    QCOMPARE(gCheckedItems[1].kind, QString("Text"));
    QCOMPARE(gCheckedItems[0].done, int16_t(0));

    FillExtensionList();
    QCOMPARE(gExtensionList.size(), 15);
    QCOMPARE(gExtensionList.first(), QString(".EXE"));
    QCOMPARE(gExtensionList.last(), QString(".NFO"));
}

QTEST_GUILESS_MAIN(TestHelpers)
#include "tst_helpers.moc"
