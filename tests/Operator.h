#pragma once

// What an operator does on a screen: controls found by their names, every action through QTest's mouse and keys.

#include "controls/FlexGrid.h"

#include <QTest>
#include <QtWidgets>

// The control of that name on a screen. A screen without it is a fault the test cannot go past.
template <class T> T *Control(const QObject *screen, const char *name)
{
    T *control = screen->findChild<T *>(QLatin1String(name));
    return control ? control : (qFatal("%s has no control named %s", qPrintable(screen->objectName()), name), nullptr);
}

// A click on the mark of a check box or an option button (the caption may not reach the middle), else mid-control.
inline void Click(QWidget *control)
{
    QStyleOptionButton option;
    option.initFrom(control);
    const bool radio = qobject_cast<QRadioButton *>(control), box = qobject_cast<QCheckBox *>(control);
    const auto mark = radio ? QStyle::SE_RadioButtonIndicator : QStyle::SE_CheckBoxIndicator;
    QTest::mouseClick(control, Qt::LeftButton, Qt::NoModifier,
                      radio || box ? control->style()->subElementRect(mark, &option, control).center()
                                   : control->rect().center());
}

// Opens a combo's list and clicks the entry with that text; false when there is no such entry.
inline bool ChooseFromList(QComboBox *combo, const QString &text)
{
    const int index = combo->findText(text, Qt::MatchFixedString | Qt::MatchCaseSensitive);
    if (index < 0)
        return false;
    combo->showPopup();
    QAbstractItemView *list = combo->view();
    if (!QTest::qWaitForWindowExposed(list->window()))
        return false;
    QTest::qWait(QApplication::doubleClickInterval() + 20); // as a real list, it ignores a release too soon
    const QModelIndex entry = list->model()->index(index, combo->modelColumn(), combo->rootModelIndex());
    list->scrollTo(entry);
    const QPoint at = list->visualRect(entry).center();
    QTest::mouseMove(list->viewport(), at);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    return !list->isVisible() && combo->currentIndex() == index;
}

// Picks a menu entry with the mouse, title then entry; false when it is not on the menu bar or did not open.
inline bool ClickMenu(QMainWindow *screen, const char *entryName)
{
    auto *entry = screen->findChild<QAction *>(QLatin1String(entryName));
    QMenu *menu = nullptr;
    for (QObject *o : entry ? entry->associatedObjects() : QObjectList())
        menu = qobject_cast<QMenu *>(o) ? static_cast<QMenu *>(o) : menu;
    if (!menu)
        return false;
    QMenuBar *bar = screen->menuBar();
    QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier, bar->actionGeometry(menu->menuAction()).center());
    if (!QTest::qWaitForWindowExposed(menu))
        return false;
    QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(entry).center());
    return !menu->isVisible();
}

// Empties a text box as an operator does; not with Ctrl+A, whose release the type-ahead takes for a letter.
inline void ClearText(QWidget *box)
{
    QTest::keySequence(box, QKeySequence(QStringLiteral("Home, Shift+End, Del")));
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
