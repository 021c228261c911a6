// The grid as the screens drive it: block writes into a selection, sorts, cell pictures, rows added and
// removed, the mouse, and in-cell editing. (The review screens' fill in blocks is in tst_viewers.)

#include "TestSupport.h"

#include "controls/KeyCodes.h"

#include "platform/MsgBox.h"
#include "platform/VbError.h"
#include "controls/FlexGrid.h"
#include "controls/Form.h"
#include "shell/MainModScreens.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTest>

class TestFlexGrid final : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void clipWritesIntoTheSelection();
    void sorts();
    void picturesAndRowDataTravelWithRows();
    void rowsAddedAndRemoved();
    void dragAndBelowTheLastRow();
    void inCellEditing();
    void keyCodesOfRealKeys();
    void punctuationTypedInTheEditBox();

private:
    static QStringList column(const FlexGrid &grid, int c)
    {
        QStringList out;
        for (int r = 1; r < grid.Rows(); ++r)
            out << grid.TextMatrix(r, c);
        return out;
    }
    // A grid on a form with the edit box the catalogue screens place over its current cell.
    struct EditingForm {
        QWidget form;
        FlexGrid *grid = new FlexGrid(&form);
        QLineEdit *edit = new QLineEdit(&form);
        EditingForm()
        {
            form.resize(500, 300);
            grid->setGeometry(20, 30, 400, 200);
            grid->setCols(3);
            grid->setRows(4);
            edit->hide();
            form.show();
        }
    };
};

void TestFlexGrid::clipWritesIntoTheSelection()
{
    FlexGrid grid;
    grid.setCols(4);
    grid.setRows(4);
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c)
            grid.setTextMatrix(r, c, QString("%1%2").arg(r).arg(c));
    grid.setRow(1);
    grid.setCol(1);
    grid.setRowSel(2);
    grid.setColSel(2);
    // Columns and rows past the selection are dropped; cells the text does not reach keep their text.
    grid.setClip("a\tb\tEXTRA\rc\rDROPPED\tROW");
    grid.setRowSel(3);
    grid.setColSel(3);
    QCOMPARE(grid.Clip(), QString("a\tb\t13\rc\t22\t23\r31\t32\t33"));
    // Setting Row and Col makes the current cell the selection again.
    grid.setRow(3);
    grid.setCol(0);
    QCOMPARE(grid.Clip(), QString("30"));
}

void TestFlexGrid::sorts()
{
    // Numeric sorts read the leading number of the size text; whole rows move, the heading row stays.
    FlexGrid grid;
    grid.setCols(3);
    grid.setRows(1);
    grid.setTextMatrix(0, 2, "File Size");
    for (const auto &[name, size] : {std::pair{"beta.txt", "10 KB"}, {"Alpha.txt", "9 KB"}, {"gamma.txt", "100 KB"},
                                     {"10", "0 KB"}, {"9", "1 KB"}})
        grid.AddItem(QString("\t%1\t%2").arg(name, size));
    grid.setCol(2);
    grid.setSort(FlexGrid::flexSortNumericAscending);
    QCOMPARE(column(grid, 2), (QStringList{"0 KB", "1 KB", "9 KB", "10 KB", "100 KB"}));
    QCOMPARE(column(grid, 1), (QStringList{"10", "9", "Alpha.txt", "beta.txt", "gamma.txt"}));

    // Generic sorts: numbers as numbers, words without regard to case, one order whatever order the rows
    // come in. Texts that start with a digit ("1A") or with punctuation stay texts, after every number;
    // so does " nan", which reads as a number that orders against none.
    const QStringList mixed{"9", "1A", "10", "!note", "2", "a", "B", "10", "-3", " nan", "1.5"};
    const QStringList expected{"-3", "1.5", "2", "9", "10", "10", " nan", "!note", "1A", "a", "B"};
    const int n = int(mixed.size()); // a prime: every step below walks through all of the rows
    for (int step : {1, 3, 4, 7})
        for (int start = 0; start < n; ++start) {
            FlexGrid g;
            g.setCols(1);
            g.setRows(1);
            for (int i = 0; i < n; ++i)
                g.AddItem(mixed[(start + i * step) % n]);
            g.setCol(0);
            g.setSort(FlexGrid::flexSortGenericAscending);
            QCOMPARE(column(g, 0), expected);
            g.setSort(FlexGrid::flexSortGenericDescending);
            QStringList down = column(g, 0);
            std::reverse(down.begin(), down.end());
            QCOMPARE(down, expected);
        }
}

void TestFlexGrid::picturesAndRowDataTravelWithRows()
{
    // An alignment set before the cell has its picture holds for the pictures set afterwards.
    QPixmap dot(8, 8);
    dot.fill(Qt::red);
    FlexGrid early;
    early.setCols(2);
    early.setRows(2);
    early.setRow(1);
    early.setCol(1);
    early.setCellPictureAlignment(FlexGrid::flexAlignRightCenter);
    early.setCellPicture(dot);
    early.setCellPicture(QPixmap());
    QVERIFY(!early.HasCellPicture(1, 1));
    early.setCellPicture(dot);
    QCOMPARE(early.CellPictureAlignment(), int(FlexGrid::flexAlignRightCenter));

    FlexGrid grid;
    grid.setCols(3);
    grid.setRows(1);
    grid.AddItem("Zip\t/D/B.EXE\tB.EXE");
    grid.AddItem("Hidden\t/D/A.EXE\tA.EXE");
    grid.AddItem("\t/D/C.EXE\tC.EXE");
    for (int r = 1; r <= 3; ++r)
        grid.setRowData(r, 10 * r);
    grid.setRow(1);
    grid.setCol(0);
    grid.setText("");
    grid.setCellPicture(dot);
    grid.setCol(2);
    grid.setSort(FlexGrid::flexSortGenericAscending);
    // B.EXE moved to row 2 with its picture.
    QCOMPARE(grid.TextMatrix(2, 2), QString("B.EXE"));
    QVERIFY(grid.HasCellPicture(2, 0) && !grid.HasCellPicture(1, 0));
    QCOMPARE((QList<long>{grid.RowData(1), grid.RowData(2), grid.RowData(3)}), (QList<long>{20, 10, 30}));
    grid.RemoveItem(1);
    QVERIFY(grid.HasCellPicture(1, 0));
    QCOMPARE(grid.RowData(1), 10L);
    grid.Clear();
    QVERIFY(!grid.HasCellPicture(1, 0));
    QCOMPARE(grid.Rows(), 3);
    QCOMPARE(grid.TextMatrix(1, 2), QString(""));
}

void TestFlexGrid::rowsAddedAndRemoved()
{
    FlexGrid grid;
    QVERIFY(grid.Rows() == 2 && grid.Cols() == 2 && grid.FixedRows() == 1);
    grid.setCols(3);
    grid.AddItem("a\tb\tc\td"); // the extra field is dropped
    QCOMPARE(grid.TextMatrix(2, 2), QString("c"));
    grid.AddItem("first", 1);
    QCOMPARE(grid.TextMatrix(1, 0), QString("first"));
    grid.setRows(0);
    QCOMPARE(grid.FixedRows(), 0);
    const auto errorOf = [](const std::function<void()> &use) {
        try {
            use();
        } catch (const VbError &e) {
            return e.number;
        }
        return 0L;
    };
    QCOMPARE(errorOf([&] { grid.TextMatrix(0, 0); }), 381L);
    QCOMPARE(errorOf([&] { grid.setRow(5); }), long(VbErr::InvalidRowValue));
    grid.setColWidth(1, 0);
    QVERIFY(grid.isColumnHidden(1));
    grid.setColWidth(1, 1500);
    QVERIFY(!grid.isColumnHidden(1));
}

void TestFlexGrid::dragAndBelowTheLastRow()
{
    // (Clicks on the heading and on rows are the review screens' daily work: tst_viewers, tst_review.)
    FlexGrid grid;
    grid.setCols(3);
    grid.setRows(1);
    for (int i = 0; i < 6; ++i)
        grid.AddItem(QString("x\t/D/%1\t%1").arg(i));
    grid.resize(400, 300);
    grid.show();
    QVERIFY(QTest::qWaitForWindowExposed(&grid));
    // Dragging down stretches the selection; the current row stays until the screen moves it.
    const QPoint third(grid.columnViewportPosition(1) + 5, grid.rowViewportPosition(2) + 3);
    const QPoint fifth(third.x(), grid.rowViewportPosition(4) + 3);
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, third);
    QTest::mousePress(grid.viewport(), Qt::LeftButton, {}, third);
    QMouseEvent move(QEvent::MouseMove, fifth, grid.viewport()->mapToGlobal(fifth), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(grid.viewport(), &move);
    QTest::mouseRelease(grid.viewport(), Qt::LeftButton, {}, fifth);
    QCOMPARE(grid.Row(), 3);
    QCOMPARE(grid.RowSel(), 5);
    // Below the last row the mouse counts as over the last row.
    QTest::mouseClick(grid.viewport(), Qt::RightButton, {}, QPoint(5, grid.viewport()->height() - 2));
    QCOMPARE(grid.MouseRow(), grid.Rows() - 1);
}

void TestFlexGrid::inCellEditing()
{
    // (A letter that starts the text over is the catalogue screens' way in: tst_catalogue_screens.)
    EditingForm f;
    FlexGrid *grid = f.grid;
    QLineEdit *edit = f.edit;
    grid->setTextMatrix(2, 1, "Microsoft");
    QVERIFY(QTest::qWaitForWindowExposed(&f.form));
    grid->setRow(2);
    grid->setCol(1);
    // A key at or below 32 edits the cell's own text with the caret at its end.
    FlexGridEditStart(grid, edit, vbKeyAsciiReturn);
    QCOMPARE(edit->text(), QString("Microsoft"));
    QCOMPARE(edit->cursorPosition(), 9);
    QVERIFY(edit->isVisible());

    FlexGridEditKeyCode(grid, edit, vbKeyDown, 0);
    FlexGridEditKeyCode(grid, edit, vbKeyDown, 0); // the last row stays
    QCOMPARE(grid->Row(), 3);
    grid->setRow(1);
    FlexGridEditKeyCode(grid, edit, vbKeyUp, 0); // the first row below the heading stays too
    QCOMPARE(grid->Row(), 1);
    FlexGridEditKeyCode(grid, edit, vbKeyEscape, 0);
    QVERIFY(!edit->isVisible());
}

void TestFlexGrid::keyCodesOfRealKeys()
{
    const int none = Qt::NoModifier, shift = Qt::ShiftModifier, pad = Qt::KeypadModifier;
    // Punctuation lands on the key that carries it, never on the navigation codes 33 to 46 that its
    // character's own code would name.
    const QList<std::tuple<int, QString, int, int>> keys{
        {Qt::Key_ParenLeft, "(", shift, vbKey9},     {Qt::Key_ParenRight, ")", shift, vbKey0},
        {Qt::Key_Ampersand, "&", shift, 55},         {Qt::Key_Apostrophe, "'", none, vbKeyOemQuote},
        {Qt::Key_QuoteDbl, "\"", shift, vbKeyOemQuote}, {Qt::Key_Period, ".", none, vbKeyOemPeriod},
        {Qt::Key_Minus, "-", none, vbKeyOemMinus},   {Qt::Key_Percent, "%", shift, 53},
        {Qt::Key_Asterisk, "*", pad, vbKeyMultiply}, {Qt::Key_7, "7", pad, vbKeyNumpad0 + 7},
        {Qt::Key_Z, "Z", shift, vbKeyZ},             {Qt::Key_5, "5", none, 53},
        {Qt::Key_Adiaeresis, "Ä", shift, vbKeyPacket}, {Qt::Key_Right, "", none, vbKeyRight},
        {Qt::Key_Delete, "", none, vbKeyDelete},     {Qt::Key_F5, "", none, vbKeyF1 + 4}};
    QLineEdit box;
    QList<int> codes;
    OnKeyDown(&box, [&](int c, int) { codes.append(c); });
    box.show();
    for (const auto &[key, text, modifiers, code] : keys) {
        codes.clear();
        QKeyEvent press(QEvent::KeyPress, key, Qt::KeyboardModifiers(modifiers), text);
        QApplication::sendEvent(&box, &press);
        QVERIFY2(codes == QList<int>{code}, qPrintable(QString("key %1 gave %2").arg(key, 0, 16).arg(codes.value(0))));
    }
}

void TestFlexGrid::punctuationTypedInTheEditBox()
{
    // As the catalogue screens wire it: a key pressed on the grid opens the cell's edit box with that
    // key, and every key pressed in the box goes to the grid's editing rules.
    EditingForm f;
    FlexGrid *grid = f.grid;
    QLineEdit *edit = f.edit;
    QObject::connect(grid, &FlexGrid::KeyPress, grid, [&](int keyAscii) { FlexGridEditStart(grid, edit, keyAscii); });
    OnKeyDown(edit, [&](int code, int shift) { FlexGridEditKeyCode(grid, edit, code, shift); });
    QVERIFY(QTest::qWaitForWindowExposed(&f.form));
    grid->setRow(2);
    grid->setCol(2); // the last column: a Right arrow code here would fail
    grid->setFocus();

    // Delete types nothing, so it opens no box, though X11 delivers it with the text DEL.
    QKeyEvent del(QEvent::KeyPress, Qt::Key_Delete, Qt::NoModifier, QString(QChar(0x7f)));
    QApplication::sendEvent(grid, &del);
    QVERIFY(edit->isHidden());
    // '(' was the Down arrow's code: now it is typed, on the grid and in the box, and nothing moves.
    QTest::keyClick(grid, '(');
    QVERIFY(edit->isVisible() && edit->hasFocus());
    QTest::keyClicks(edit, "O'Brien & Sons). Ltd!*+,-/\"");
    QCOMPARE(edit->text(), QString("(O'Brien & Sons). Ltd!*+,-/\""));
    QVERIFY(grid->Row() == 2 && grid->Col() == 2 && edit->hasFocus());
    // The real arrows still move.
    QTest::keyClick(edit, Qt::Key_Down);
    QCOMPARE(grid->Row(), 3);
    QVERIFY(grid->hasFocus());

    // Right in the last column fails: the platform's message and the end, caught inside the key's handler.
    MsgBoxResponder boxes;
    boxes.queue(vbOK);
    QList<int> ended;
    SetEndProcessHook([&](int code) { ended << code; });
    QTest::mouseClick(edit, Qt::LeftButton);
    QTest::keyClick(edit, Qt::Key_Right);
    SetEndProcessHook(nullptr);
    QCOMPARE(boxes.prompts(), QStringList{"Run-time error '30010':\n\nInvalid Col value"});
    QCOMPARE(ended, QList<int>{1});
}

QTEST_MAIN(TestFlexGrid)
#include "tst_flexgrid.moc"
