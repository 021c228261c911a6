// The review screens of one kind of file, as an operator uses them: the fill in blocks of 500 with its
// kept overwrite, a tick on opening and none on a second visit, texts that are no plain text, the
// heading sorts, the default viewer, and the checked number on the summary.

#include "DiscFixture.h"
#include "Operator.h"
#include "TestSupport.h"

#include "controls/FlexGrid.h"
#include "controls/Forms.h"
#include "controls/PictureView.h"
#include "platform/MsgBox.h"
#include "platform/ShellOpen.h"
#include "platform/VbError.h"
#include "reporting/frmScanSummary.h"
#include "review/frmFullScreenViewer.h"
#include "review/frmScanResultsImages.h"
#include "review/frmScanResultsOther.h"
#include "review/frmScanResultsText.h"
#include "scan/frmScanDisc.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/Progress.h"

#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

namespace {
// A double click as the mouse makes it: the first press selects the row.
void doubleClickRow(FlexGrid *grid, int row)
{
    ClickRow(grid, row);
    QTest::mouseDClick(grid->viewport(), Qt::LeftButton, Qt::NoModifier, CellCentre(grid, row, 2));
}

QStringList column(FlexGrid *grid, int col)
{
    QStringList out;
    for (int r = 1; r < grid->Rows(); ++r)
        out << grid->TextMatrix(r, col);
    return out;
}

void clickHeading(FlexGrid *grid, int col)
{
    QHeaderView *h = grid->horizontalHeader();
    QTest::mouseClick(h->viewport(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(h->sectionViewportPosition(col) + h->sectionSize(col) / 2, h->height() / 2));
}

// A file of the disc with these contents.
QString addFile(Disc &disc, const QString &name, const QByteArray &contents)
{
    const QString stored = disc.add(name);
    WriteTestFile(disc.root() + QLatin1Char('/') + name, contents);
    return stored;
}
} // namespace

class TestViewers final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void textScreenSortsOpensAndTicks();
    void badTextFiles();
    void blocksOf500();
    void externalScreen();
    void imageScreen();

private:
    TempAppFolder m_app;
    QStringList m_opened;
    long m_openResult = 42;
};

void TestViewers::initTestCase()
{
    InstallScreenServices();
    RefuseBoxesWithoutResponder();
    SetShellExecuteLauncher([this](const ShellExecuteRequest &r) {
        m_opened << r.file;
        return m_openResult;
    });
}

void TestViewers::init()
{
    WriteIniKey("Devices", "DefaultDevice", m_app.path());
    m_opened.clear();
    m_openResult = 42;
    ResetList(gMediaFiles);
    ResetList(gExternalFiles);
    ResetList(gCheckedItems);
}

void TestViewers::cleanup()
{
    for (QWidget *w : QApplication::topLevelWidgets())
        w->hide();
    Forms::unload<frmScanResultsText>();
    Forms::unload<frmScanResultsOther>();
    Forms::unload<frmScanResultsImages>();
    Forms::unload<frmFullScreenViewer>();
    Forms::unload<frmScanSummary>();
    Forms::unload<frmScanDisc>();
}

void TestViewers::textScreenSortsOpensAndTicks()
{
    // (The marks, the archive's tool tip, a failed open's missing tick, the summary's found numbers and
    // where Next and Back lead are the base screen's, which tst_players checks on its screens.)
    Disc disc;
    const QString notes = addFile(disc, QStringLiteral("DOCS/NOTES.TXT"), "release notes\n");
    for (const char *name : {"SETUP.INI", "READ.ME", "INSTALL.README", "DOCS/.DRAFT.TXT", "PROGRAMME", "PICTURE.JPG"})
        disc.add(QLatin1String(name));
    disc.add(QStringLiteral("CREDITS.NFO"), 9000);
    disc.addMember(QStringLiteral("SETUP/DATA.ZIP/GUIDE.TXT"), 2000);
    gMediaFiles = disc.files();
    auto *s = Forms::get<frmScanResultsText>();
    s->show();
    FlexGrid *grid = Control<FlexGrid>(s, "gridTextResults");
    QCOMPARE(column(grid, 2), (QStringList{".DRAFT.TXT", "CREDITS.NFO", "GUIDE.TXT", "INSTALL.README", "NOTES.TXT",
                                           "READ.ME", "SETUP.INI"}));
    // The first click on a heading sorts ascending again, the second the other way; sizes by the number.
    clickHeading(grid, 2);
    clickHeading(grid, 2);
    QCOMPARE(column(grid, 2).first(), QStringLiteral("SETUP.INI"));
    clickHeading(grid, 3);
    QCOMPARE(column(grid, 3), (QStringList(5, QStringLiteral("1 KB")) + QStringList{"2 KB", "9 KB"}));
    clickHeading(grid, 3);
    QCOMPARE(column(grid, 3).first(), QStringLiteral("9 KB"));

    // Opening a file shows it and ticks it once, however often it is visited.
    const int plain = RowOf(grid, "NOTES.TXT");
    ClickRow(grid, plain);
    QCOMPARE(Control<QPlainTextEdit>(s, "txtSelectedText")->toPlainText(), QStringLiteral("release notes\n"));
    QVERIFY(grid->HasCellPicture(plain, 4));
    QCOMPARE(gCheckedItems[0].text, notes + QStringLiteral(" (1 KB)"));
    QCOMPARE(gCheckedItems[0].kind, QStringLiteral("Text"));
    ClickRow(grid, RowOf(grid, "GUIDE.TXT"));
    ClickRow(grid, plain);
    QCOMPARE(gCheckedItems.size(), 2);

    // A right click opens the menu over the current row; the row under the mouse is not selected.
    const int credits = RowOf(grid, "CREDITS.NFO");
    QTest::mouseClick(grid->viewport(), Qt::RightButton, Qt::NoModifier, CellCentre(grid, credits, 2));
    QVERIFY(s->mnuContext->isVisible());
    s->mnuContext->hide();
    QCOMPARE(grid->Row(), plain);

    // A double click opens the file with the desktop's viewer, adding no tick to its first press's; in the
    // default viewer's mode the current file opens there without a tick, and each one selected then, ticked.
    doubleClickRow(grid, RowOf(grid, "READ.ME"));
    QCOMPARE(m_opened.size(), 1);
    QVERIFY(m_opened[0].endsWith(QStringLiteral("READ.ME"), Qt::CaseInsensitive));
    m_opened.clear();
    ClickRow(grid, plain);
    Click(Control<QCheckBox>(s, "chkSendToIE"));
    QCOMPARE(m_opened.size(), 1);
    QVERIFY(m_opened[0].endsWith(QStringLiteral("NOTES.TXT"), Qt::CaseInsensitive));
    const int ini = RowOf(grid, "SETUP.INI");
    ClickRow(grid, ini);
    QCOMPARE(m_opened.size(), 2);
    QVERIFY(grid->HasCellPicture(ini, 4));
    QCOMPARE(gCheckedItems.size(), 4);

    // Next with nothing else to review: the summary, which gets the checked number; its Back comes to
    // this screen, which kept its ticks.
    auto *scan = Forms::get<frmScanDisc>();
    for (const char *box : {"chkVideoFiles", "chkAudioFiles", "chkImageFiles", "chkOtherFiles"})
        Control<QCheckBox>(scan, box)->setChecked(false);
    auto *summary = Forms::get<frmScanSummary>();
    Click(Control<QPushButton>(s, "cmdNext"));
    QVERIFY(summary->isVisible() && s->isHidden() && Forms::isLoaded<frmScanResultsText>());
    QCOMPARE(summary->lblTextChecked->text(), QStringLiteral("4"));
    Click(Control<QPushButton>(summary, "cmdPrevious"));
    QVERIFY(s->isVisible() && grid->HasCellPicture(ini, 4));
    // The close box takes the clean road out; a new scan's preparation unloads the screen.
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    s->close();
    SetEndProcessHook(nullptr);
    QCOMPARE(ended, QList<int>{0});
    scan->PrepareToScan();
    QVERIFY(!Forms::isLoaded<frmScanResultsText>());
}

void TestViewers::badTextFiles()
{
    Disc disc;
    addFile(disc, QStringLiteral("EOF.TXT"), QByteArray("before\x1a" "after", 12));
    addFile(disc, QStringLiteral("NUL.TXT"), QByteArray("shown\0hidden", 12));
    disc.add(QStringLiteral("BIG.TXT"));
    QVERIFY(QFile(disc.root() + QStringLiteral("/BIG.TXT")).resize(frmScanResultsText::TextBoxLimit + 1));
    disc.add(QStringLiteral("GONE.TXT"));
    // Names with apostrophes and accented letters, stored in upper case, found again on a disc that
    // spells them in lower case; texts from Windows editors in their own encodings.
    addFile(disc, QStringLiteral("docs/o'brien's été.txt"), "Ça va, l'été");
    addFile(disc, QStringLiteral("ANSI.TXT"), "\x93" "Caf\xe9\x94 \x80" "5");
    addFile(disc, QStringLiteral("WIDE.TXT"), QByteArray("\xff\xfeN\0o\0\xeb\0l\0", 10));
    gMediaFiles = disc.files();
    auto *s = Forms::get<frmScanResultsText>();
    s->show();
    FlexGrid *grid = Control<FlexGrid>(s, "gridTextResults");
    auto *text = Control<QPlainTextEdit>(s, "txtSelectedText");
    QFile::remove(disc.root() + QStringLiteral("/GONE.TXT"));

    MsgBoxResponder boxes;
    const QString cannot = QStringLiteral("Can not display file as text.");
    boxes.queue(vbOK, 2);
    ClickRow(grid, RowOf(grid, "EOF.TXT"));
    ClickRow(grid, RowOf(grid, "GONE.TXT"));
    QCOMPARE(boxes.prompts(), (QStringList{cannot, cannot}));
    for (const auto &[name, shown] : {std::pair{"O'BRIEN'S ÉTÉ.TXT", "Ça va, l'été"}, {"ANSI.TXT", "“Café” €5"},
                                      {"WIDE.TXT", "Noël"}, {"NUL.TXT", "shown"}}) { // a NUL ends what is shown
        ClickRow(grid, RowOf(grid, QString::fromUtf8(name)));
        QCOMPARE(text->toPlainText(), QString::fromUtf8(shown));
    }
    QCOMPARE(gCheckedItems.first().text, disc.root().toUpper() + QStringLiteral("/DOCS/O'BRIEN'S ÉTÉ.TXT (1 KB)"));

    // Too large for the box: the question; Yes opens it elsewhere, and neither answer ticks.
    const QString tooLarge =
        QStringLiteral("Text file is too large to display, would you like to open it in the default viewer?");
    boxes.clear();
    boxes.queue(vbNo);
    boxes.queue(vbYes);
    const int bigRow = RowOf(grid, "BIG.TXT");
    ClickRow(grid, bigRow);
    ClickRow(grid, RowOf(grid, "NUL.TXT"));
    ClickRow(grid, bigRow);
    QCOMPARE(boxes.prompts(), (QStringList{tooLarge, tooLarge}));
    QCOMPARE(boxes.boxes()[0].style, vbYesNo | vbExclamation);
    QCOMPARE(m_opened.size(), 1);
    QVERIFY(!grid->HasCellPicture(bigRow, 4));
}

void TestViewers::blocksOf500()
{
    QStringList progress;
    SetProgressSink({[&](int percent, const QString &t) { progress << QStringLiteral("%1 %2").arg(percent).arg(t); },
                     [] {}});
    for (const int matches : {499, 500, 501}) {
        Forms::unload<frmScanResultsText>();
        ResetList(gMediaFiles);
        progress.clear();
        // Files that are not there: their sizes read "Error", and they are listed all the same.
        for (int i = 1; i <= matches; ++i) {
            AppendToList(gMediaFiles, QStringLiteral("/NOWHERE/F%1.TXT").arg(i, 4, 10, QLatin1Char('0')));
            AppendToList(gMediaFiles, QStringLiteral("/NOWHERE/F%1.JPG").arg(i, 4, 10, QLatin1Char('0')));
        }
        auto *s = Forms::get<frmScanResultsText>();
    s->show();
        FlexGrid *grid = Control<FlexGrid>(s, "gridTextResults");
        QCOMPARE(Control<QLabel>(s, "lblResultComment")->text(), QString::number(matches) + " text files found");
        const QStringList names = column(grid, 2);
        QCOMPARE(grid->TextMatrix(1, 3), QStringLiteral("Error"));
        if (matches <= 500) {
            QCOMPARE(grid->Rows(), matches + 1);
            QCOMPARE(names.last(), QStringLiteral("F%1.TXT").arg(matches, 4, 10, QLatin1Char('0')));
            // The 500th match is the 999th entry of 1,000.
            QCOMPARE(progress.join('|'), QString(matches == 500 ? "100 Processed 998 of 999 internal files..." : ""));
        } else {
            // The second block's first row overwrote the first block's last; the blank last row sorted
            // to the top and was removed.
            QCOMPARE(grid->Rows(), 501);
            QVERIFY(!names.contains(QStringLiteral("F0500.TXT")) && !names.contains(QString()));
            QCOMPARE(names.last(), QStringLiteral("F0501.TXT"));
        }
    }
    InstallScreenServices();
    RefuseBoxesWithoutResponder();
}

void TestViewers::externalScreen()
{
    Disc disc;
    const QString autorun = disc.add(QStringLiteral("AUTORUN.INF"), 60);
    disc.add(QStringLiteral("DATA.XYZ"), 3000);
    const QString manual = disc.add(QStringLiteral("DOCS/MANUAL.PDF"), 2048);
    disc.add(QStringLiteral(".DISCINFO"), 10);
    disc.addMember(QStringLiteral("SETUP/DATA.ZIP/LIB.DLL"), 5000);
    disc.add(QStringLiteral("GONE.BIN"), 10);
    disc.add(QStringLiteral("MOVIE.AVI"), 4000); // a media file: on disc, not in this list
    gExternalFiles = disc.files();
    gExternalFiles.removeAll(disc.files().last());
    QFile::remove(disc.root() + QStringLiteral("/GONE.BIN"));
    gScanDrive = disc.root();
    auto *s = Forms::get<frmScanResultsOther>();
    s->show();
    FlexGrid *grid = Control<FlexGrid>(s, "gridTextResults");
    // In the list's order (this screen does not sort), the extension apart; a file gone since is left out.
    QCOMPARE(column(grid, 2), (QStringList{"AUTORUN.INF", "DATA.XYZ", "MANUAL.PDF", ".DISCINFO", "LIB.DLL"}));
    QCOMPARE(column(grid, 4), (QStringList{"INF", "XYZ", "PDF", "DISCINFO", "DLL"}));
    const double external = (60 + 3000 + 2048 + 10 + 5000) / 1024.0 / 1024.0;
    const double all = (60 + 3000 + 2048 + 10 + 4000) / 1024.0 / 1024.0; // the disc itself, members not
    QCOMPARE(Control<QLabel>(s, "lblFileDetails")->text(),
             QStringLiteral("External Files %1 MB / Total Files (Uncompressed) %2 MB")
                 .arg(external, 0, 'f', 2).arg(all, 0, 'f', 2));

    // Selecting only shows the path; a double click opens and ticks, once.
    ClickRow(grid, 1);
    QCOMPARE(Control<QLabel>(s, "lblCurrentPath")->text(), autorun);
    QVERIFY(m_opened.isEmpty() && !grid->HasCellPicture(1, 5));
    doubleClickRow(grid, 3);
    doubleClickRow(grid, 3);
    QCOMPARE(m_opened.size(), 2);
    QVERIFY(grid->HasCellPicture(3, 5));
    QCOMPARE(gCheckedItems.size(), 1);
    QCOMPARE(gCheckedItems[0].text, manual + QStringLiteral(" (2 KB)"));
    QCOMPARE(gCheckedItems[0].kind, QStringLiteral("External"));
    // With no program for the file the helper says so, and the row is ticked all the same.
    MsgBoxResponder boxes;
    boxes.queue(vbOK);
    m_openResult = 31;
    doubleClickRow(grid, 2);
    QCOMPARE(boxes.prompts(), QStringList{QStringLiteral("No program is associated with this file-extension.")});
    QCOMPARE(s->CheckedCount(), int16_t(2));
    m_openResult = 42;

    // The extension heading and the name heading share one direction.
    clickHeading(grid, 4);
    QCOMPARE(column(grid, 4), (QStringList{"DISCINFO", "DLL", "INF", "PDF", "XYZ"}));
    clickHeading(grid, 2);
    QCOMPARE(column(grid, 2), (QStringList{"MANUAL.PDF", "LIB.DLL", "DATA.XYZ", "AUTORUN.INF", ".DISCINFO"}));

    // A new limit, any tail, case-blind: the ticks and the count start again, the records stay, and a
    // second opening of the same file adds a second record. The summary's total follows the limit.
    auto *limit = Control<QLineEdit>(s, "txtExtensionLimiter");
    QTest::keyClicks(limit, QStringLiteral(".pdf"));
    Click(Control<QPushButton>(s, "cmdGo"));
    QCOMPARE(column(grid, 2), QStringList{"MANUAL.PDF"});
    QCOMPARE(Forms::get<frmScanSummary>()->lblExternalTotal->text(), QStringLiteral("1"));
    QVERIFY(!grid->HasCellPicture(1, 5));
    QCOMPARE(s->CheckedCount(), int16_t(0));
    doubleClickRow(grid, 1);
    QCOMPARE(gCheckedItems.size(), 3);
    ClearText(limit);
    QTest::keyClicks(limit, QStringLiteral("zz"));
    QTest::keyClick(limit, Qt::Key_Return);
    QCOMPARE(grid->Rows(), 0);
}

void TestViewers::imageScreen()
{
    Disc disc;
    const auto picture = [&](const QString &name, const char *format, QSize size) {
        disc.add(name, 1);
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        QVERIFY(image.save(disc.root() + QLatin1Char('/') + name, format));
    };
    picture(QStringLiteral("COVER.JPG"), "JPG", QSize(64, 48));
    picture(QStringLiteral("ART/PLAN.BMP"), "BMP", QSize(40, 80));
    picture(QStringLiteral("pics/l'été d'or.jpg"), "JPG", QSize(30, 30));
    picture(QStringLiteral("BANNER.JPEG"), "JPG", QSize(20, 10));
    // A real one-pixel GIF, which Qt reads but cannot write.
    addFile(disc, QStringLiteral("DOT.GIF"),
            QByteArray::fromHex("47494638396101000100800000ffffff00000021f90401000000002c000000000100010000020244"
                                "01003b"));
    addFile(disc, QStringLiteral("BROKEN.JPG"), QByteArray("\xff\xd8\xff\xe0 not really a JPEG"));
    addFile(disc, QStringLiteral("NOTE.GIF"), "this GIF is a text file");
    disc.add(QStringLiteral("EMPTY.BMP"), 0);
    disc.add(QStringLiteral("COVER.PNG"));
    gMediaFiles = disc.files();
    auto *s = Forms::get<frmScanResultsImages>();
    s->show();
    FlexGrid *grid = Control<FlexGrid>(s, "gridImageResults");
    auto *view = Control<PictureView>(s, "picSelectedImage");
    QCOMPARE(column(grid, 2), (QStringList{"BANNER.JPEG", "BROKEN.JPG", "COVER.JPG", "DOT.GIF", "EMPTY.BMP",
                                           "L'ÉTÉ D'OR.JPG", "NOTE.GIF", "PLAN.BMP"}));

    // Each good picture shows and is ticked; the bad ones give the message, clear the view, no tick.
    MsgBoxResponder boxes;
    for (const char *name : {"COVER.JPG", "DOT.GIF", "PLAN.BMP", "L'ÉTÉ D'OR.JPG", "BANNER.JPEG"}) {
        ClickRow(grid, RowOf(grid, name));
        QVERIFY2(view->HasPicture() && grid->HasCellPicture(RowOf(grid, name), 4), name);
    }
    QCOMPARE(view->Picture().size(), QSize(20, 10));
    QCOMPARE(gCheckedItems.size(), 5);
    QCOMPARE(gCheckedItems[0].kind, QStringLiteral("Image"));
    const QString corrupt = QStringLiteral("Can not display image - it may be corrupt.");
    boxes.queue(vbOK, 3);
    for (const char *name : {"BROKEN.JPG", "NOTE.GIF", "EMPTY.BMP"}) {
        ClickRow(grid, RowOf(grid, name));
        QVERIFY2(!view->HasPicture() && !grid->HasCellPicture(RowOf(grid, name), 4) && grid->isEnabled(), name);
    }
    QCOMPARE(boxes.prompts(), (QStringList{corrupt, corrupt, corrupt}));

    // Zoom by the grid's keys and the buttons, only with a picture shown.
    QTest::keyClick(grid, Qt::Key_Equal);
    QCOMPARE(s->ZoomLevel, int16_t(100));
    ClickRow(grid, RowOf(grid, "COVER.JPG"));
    QTest::keyClick(grid, Qt::Key_Equal);
    QCOMPARE(s->ZoomLevel, int16_t(150));
    Click(Control<QPushButton>(s, "cmdMagnifyMinus"));
    Click(Control<QPushButton>(s, "cmdMagnifyMinus"));
    QCOMPARE(s->ZoomLevel, int16_t(75));

    // Full screen: the picture measured in its own units; a bad picture shows nothing.
    doubleClickRow(grid, RowOf(grid, "PLAN.BMP"));
    auto *full = Forms::get<frmFullScreenViewer>();
    QVERIFY(full->isVisible());
    QCOMPARE(full->picImage->PictureWidth(), 1058L); // 40 pixels at 96 to the inch, in hundredths of a millimetre
    Click(Control<QPushButton>(full, "cmdClose"));
    boxes.clear();
    boxes.queue(vbOK, 2);
    ClickRow(grid, RowOf(grid, "NOTE.GIF"));
    Click(Control<QPushButton>(s, "cmdFullScreen"));
    QCOMPARE(boxes.prompts().last(), QStringLiteral("Can not display image, it may be corrupt."));
    QVERIFY(!Forms::isLoaded<frmFullScreenViewer>() || !Forms::get<frmFullScreenViewer>()->isVisible());

    // Next to the external files' screen: the summary gets the checked number all the same.
    auto *scan = Forms::get<frmScanDisc>();
    for (const char *box : {"chkVideoFiles", "chkAudioFiles", "chkTextFiles"})
        Control<QCheckBox>(scan, box)->setChecked(false);
    gExternalFiles = QStringList{QString()};
    Click(Control<QPushButton>(s, "cmdNext"));
    QVERIFY(Forms::get<frmScanResultsOther>()->isVisible());
    QCOMPARE(Forms::get<frmScanSummary>()->lblImagesChecked->text(), QStringLiteral("5"));
}

QTEST_MAIN(TestViewers)
#include "tst_viewers.moc"
