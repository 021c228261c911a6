#pragma once

// What an operator does on a screen, for the test programs that drive screens: controls are found by
// their names, and every action goes through the mouse and the keyboard as QTest delivers them.

#include "controls/FlexGrid.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QRadioButton>
#include <QStyle>
#include <QStyleOptionButton>
#include <QTest>

// The control of that name on a screen. A screen without it is a fault the test cannot go past.
template <class T> T *Control(const QObject *screen, const char *name)
{
    T *control = screen->findChild<T *>(QLatin1String(name));
    if (!control)
        qFatal("%s has no control named %s", qPrintable(screen->objectName()), name);
    return control;
}

// A click where an operator clicks a control: on the mark of a check box or an option button (their
// caption may not reach the middle), in the middle of anything else.
inline void Click(QWidget *control)
{
    QPoint at = control->rect().center();
    QStyleOptionButton option;
    option.initFrom(control);
    if (qobject_cast<QRadioButton *>(control))
        at = control->style()->subElementRect(QStyle::SE_RadioButtonIndicator, &option, control).center();
    else if (qobject_cast<QCheckBox *>(control))
        at = control->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, control).center();
    QTest::mouseClick(control, Qt::LeftButton, Qt::NoModifier, at);
}

// Opens a combo's list with a click and clicks the entry with that text. Returns false when the list
// has no such entry.
inline bool ChooseFromList(QComboBox *combo, const QString &text)
{
    const int index = combo->findText(text, Qt::MatchFixedString | Qt::MatchCaseSensitive);
    if (index < 0)
        return false;
    combo->showPopup();
    QAbstractItemView *list = combo->view();
    if (!QTest::qWaitForWindowExposed(list->window()))
        return false;
    // The list ignores a release that follows its opening too closely, as a real list does.
    QTest::qWait(QApplication::doubleClickInterval() + 20);
    const QModelIndex entry = list->model()->index(index, combo->modelColumn(), combo->rootModelIndex());
    list->scrollTo(entry);
    const QPoint at = list->visualRect(entry).center();
    QTest::mouseMove(list->viewport(), at);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    return !list->isVisible() && combo->currentIndex() == index;
}

// Picks a menu entry with the mouse: the title on the menu bar, then the entry in the menu that opens.
// Returns false when the entry is not on the screen's menu bar or its menu did not open.
inline bool ClickMenu(QMainWindow *screen, const char *entryName)
{
    auto *entry = screen->findChild<QAction *>(QLatin1String(entryName));
    if (!entry)
        return false;
    QMenu *menu = nullptr;
    for (QObject *o : entry->associatedObjects()) {
        if (auto *m = qobject_cast<QMenu *>(o))
            menu = m;
    }
    if (!menu)
        return false;
    QMenuBar *bar = screen->menuBar();
    QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier, bar->actionGeometry(menu->menuAction()).center());
    if (!QTest::qWaitForWindowExposed(menu))
        return false;
    QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(entry).center());
    return !menu->isVisible();
}

// Empties a text box (or an editable combo's text) as an operator does: Home, Shift+End, Delete. (Not
// Ctrl+A: the release of A is a letter to the type-ahead, which would complete and select anew.)
inline void ClearText(QWidget *box)
{
    QTest::keyClick(box, Qt::Key_Home);
    QTest::keyClick(box, Qt::Key_End, Qt::ShiftModifier);
    QTest::keyClick(box, Qt::Key_Delete);
}

// The middle of a grid's cell. Row 0 is the heading when the grid has one: the view's rows start below it.
inline QPoint CellCentre(FlexGrid *grid, int row, int col)
{
    return grid->visualRect(grid->model()->index(row - grid->FixedRows(), col)).center();
}

// A click on a row of a review screen's grid, on its name.
inline void ClickRow(FlexGrid *grid, int row, int col = 2)
{
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, Qt::NoModifier, CellCentre(grid, row, col));
}

// The first row of a review grid that shows this name, or -1.
inline int RowOf(FlexGrid *grid, const QString &fileName)
{
    for (int r = 1; r < grid->Rows(); ++r)
        if (grid->TextMatrix(r, 2) == fileName)
            return r;
    return -1;
}
