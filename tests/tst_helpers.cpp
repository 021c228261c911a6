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
    void namesAndExtensions();
    void shortenPath();
    void illegalCharactersApostrophesAndNulls();
    void fileSizeText();
    void folderSizeBytes();
    void fileIconKey();
    void kindTests();
    void listConvention();

private:
    TempAppFolder m_app;
};

void TestHelpers::namesAndExtensions()
{
    const QList<std::tuple<QString, QString, QString>> cases{
        {"/", "", ""},           {"/A.B/FILE", "FILE", ""}, {"README", "README", ""}, {"/X/Y.TAR.GZ", "Y.TAR.GZ", "GZ"},
        {"/X/Y.", "Y.", ""}, {"/X/.PROFILE", ".PROFILE", "PROFILE"}, {"", "", ""}};
    for (const auto &[path, name, extension] : cases) {
        QCOMPARE(FileNameOnly(path), name);
        QCOMPARE(ExtensionOf(path), extension);
    }
}

void TestHelpers::shortenPath()
{
    const QString n36(36, 'N'), n37(37, 'N'), exactly40 = "/" + QString(35, 'A') + "/B.C";
    const QList<std::pair<QString, QString>> cases{
        {exactly40, exactly40},
        // A short name survives whole behind the start of the path.
        {"/MEDIA/CDROM/VERY/DEEP/FOLDER/STRUCTURE/HERE/SETUP.EXE", "/MEDIA/CDROM/VERY/DEEP/FOLDE...SETUP.EXE"},
        // A name of 37 characters or more leaves only the tail of the path behind "..."; one character
        // shorter, and the start of the path comes back.
        {"/MEDIA/CDROM/" + n37, "..." + n37},
        {"/MEDIA/CDROM/" + n36, "/..." + n36}};
    for (const auto &[path, shortened] : cases)
        QCOMPARE(ShortenPath(path, 40), shortened);
}

void TestHelpers::illegalCharactersApostrophesAndNulls()
{
    QCOMPARE(ReplaceIllegalFileChars("\\/:<>?|\"*"), QString(9, '_'));
    QCOMPARE(ReplaceIllegalFileChars("CAT-001 (v2).x"), QString("CAT-001 (v2).x"));
    QCOMPARE(RemoveApostrophes("O'Brien's 'Disc'"), QString("OBriens Disc"));
    // Nulls from the catalogue, typed or not, read as empty text.
    QCOMPARE(NullToEmpty(QVariant()), QVariant(QString("")));
    QVERIFY(!NullToEmpty(QVariant(QMetaType(QMetaType::Int))).isNull());
    QCOMPARE(NullToEmpty(QVariant(42)), QVariant(42));
}

void TestHelpers::fileSizeText()
{
    // Whole KB, half away from zero; a stored upper-case path reaches the real file.
    const QList<std::pair<qint64, const char *>> sizes{{0, "0 KB"},       {1, "1 KB"},    {512, "1 KB"},
                                                        {1535, "1 KB"},    {1536, "2 KB"}, {2560, "3 KB"},
                                                        {3LL << 30, "3145728 KB"}};
    for (const auto &[bytes, text] : sizes) {
        const QString path = WriteTestFile(m_app.file(QString("sizes/f%1").arg(bytes)), {});
        QFile(path).resize(bytes);
        QCOMPARE(FileSizeText(path.toUpper()), QString(text));
    }
    QCOMPARE(FileSizeText(m_app.file("sizes/missing")), QString("Error"));
    QCOMPARE(FileSizeText(m_app.file("sizes")), QString("Error"));
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
    QFile(WriteTestFile(root + "/sub/huge.iso", {})).resize((1LL << 31) + 10);
    QCOMPARE(FolderSizeBytes(root), 427.0 + double(int32_t(0x8000000A)));
    // A link to a folder above does not loop.
    QVERIFY(QFile::link(root, root + "/sub/loop"));
    QCOMPARE(FolderSizeBytes(root), 427.0 + double(int32_t(0x8000000A)));
}

void TestHelpers::fileIconKey()
{
    MsgBoxResponder boxes;
    // The archive mark wins over the hidden one.
    const QString member = WriteTestFile(ExtractFolder() + "/DISC/SETUP.ZIP/.hidden.txt", "x");
    QCOMPARE(FileIconKey(member.toUpper()), QString("Zip"));
    QCOMPARE(FileIconKey(WriteTestFile(m_app.file("disc/.secret.exe"), "x").toUpper()), QString("Hidden"));
    QCOMPARE(FileIconKey(WriteTestFile(m_app.file("disc/plain.exe"), "x").toUpper()), QString(""));
    // Missing and empty names are passed over without a message.
    QCOMPARE(FileIconKey(m_app.file("disc/GONE.EXE")), QString(""));
    QCOMPARE(FileIconKey(""), QString(""));
    QVERIFY(boxes.boxes().isEmpty());
}

void TestHelpers::kindTests()
{
    // Stored paths are upper case: lower case is no kind. A video CD's track is video, a .DAT elsewhere not.
    const QList<std::pair<QString, QString>> cases{
        {"/D/A.MPEG", "video"}, {"/D/A.MPE", "video"},  {"/D/A.WMV", ""},         {"/D/A.WMW", "video"},
        {"/D/MPEGAV/AVSEQ01.DAT", "video"}, {"/D/DATA/AVSEQ01.DAT", ""}, {"/d/a.avi", ""}, {"/D/A.MP3", "audio"},
        {"/D/A.JPG", "image"},  {"/D/A.JPEG", ""},       {"/D/SETUP.INI", "text"}, {"/D/FILE.README", "text"}};
    for (const auto &[path, kind] : cases) {
        QCOMPARE(IsVideoFile(path), kind == "video");
        QCOMPARE(IsAudioFile(path), kind == "audio");
        QCOMPARE(IsImageFile(path), kind == "image");
        QCOMPARE(IsTextFile(path), kind == "text");
    }
}

void TestHelpers::listConvention()
{
    // A list's empty first element is taken by the first entry; later ones go at the end.
    QStringList list{"left over"};
    ResetList(list);
    QCOMPARE(list, QStringList{QString()});
    AppendToList(list, "/D/A.EXE");
    AppendToList(list, "/D/B.EXE");
    QCOMPARE(list, (QStringList{"/D/A.EXE", "/D/B.EXE"}));
    // The checked items keep the same convention.
    ResetList(gCheckedItems);
    AddCheckedItem("/D/A.JPG (1 KB)", "Image");
    AddCheckedItem("/D/B.TXT (2 KB)", "Text");
    QCOMPARE(gCheckedItems.size(), 2);
}

QTEST_GUILESS_MAIN(TestHelpers)
#include "tst_helpers.moc"
