#pragma once

#include <QObject>
#include <QString>

#include <functional>

class FlexGrid;
class QLineEdit;
class QPushButton;
struct VbError;

// The catalogue screens' way of editing a list in place: a floating box over a three-column grid
// (key, name, row state), every change kept in the grid and written by one save. A row read from the
// database is "Original"; it becomes "Update" as soon as an edit starts in it, changed text or not; a
// row added on the screen is "Insert" until it is saved.
class InPlaceEditing final : public QObject
{
public:
    static constexpr int KeyColumn = 0;
    static constexpr int NameColumn = 1;
    static constexpr int StateColumn = 2;

    InPlaceEditing(FlexGrid *grid, QLineEdit *editBox, QPushButton *deleteButton, QPushButton *saveButton);

    // The text of a visible edit box goes into the current cell and the box hides.
    void CommitCellEdit();
    // With rows: the name column, the box opened on the cell's own text, the row marked as touched.
    void StartCellEdit();
    // An "Original" current row becomes "Update".
    void MarkTouched();
    // Delete and save are possible only while the grid has rows.
    void EnableButtons();

    // The list read afresh: one row per record of the statement (key, name through NullToEmpty,
    // "Original"), widths 0 / 7240 / 0, the name column left-aligned. Failures go to the handler,
    // which the statement that failed with the platform's "disconnected" runs again.
    void Fill(const QString &sql, const QString &keyField, const QString &nameField, const QString &routine);

    // A new "Insert" row at the end, made current and scrolled into view, then edited.
    void AddRow();

    // The delete of the current row, after the question: its record goes at once (the statement as
    // given, followed by the key) unless it was never saved, then the row leaves the grid.
    // closeAlways: whether the connection is closed also when no statement ran.
    void DeleteRow(const QString &deleteSqlWithoutKey, bool closeAlways);

    // Every "Insert" and "Update" row through the statement the screen builds, the progress box from
    // the tenth row, then the list read again and the confirmation. A failure ends the save with the
    // catalogue's save messages; rows written before it stay written, a new one now "Original" with the
    // key the engine gave it, so that the next save does not write it again.
    using StatementFor = std::function<QString(int row)>;
    void SaveRows(const StatementFor &insertSql, const StatementFor &updateSql, const QString &progressText,
                  const std::function<void()> &reread, const QString &doneMessage);

    // The three save messages by the failure's number.
    static void TellSaveFailure(const VbError &e);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    FlexGrid *m_grid;
    QLineEdit *m_edit;
    QPushButton *m_delete;
    QPushButton *m_save;
};
