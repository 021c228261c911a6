#include "catalogue/InPlaceEditing.h"

#include "catalogue/Database.h"
#include "controls/FlexGrid.h"
#include "controls/KeyCodes.h"
#include "platform/Events.h"
#include "platform/MsgBox.h"
#include "platform/VbError.h"
#include "shell/MainMod.h"
#include "shell/MainModScreens.h"
#include "shell/Progress.h"

#include <QEvent>
#include <QLineEdit>
#include <QPushButton>

namespace {
const QString Original = QStringLiteral("Original");
const QString Update = QStringLiteral("Update");
const QString Insert = QStringLiteral("Insert");
constexpr long NameColumnWidth = 7240;
} // namespace

InPlaceEditing::InPlaceEditing(FlexGrid *grid, QLineEdit *editBox, QPushButton *deleteButton, QPushButton *saveButton)
    : QObject(grid), m_grid(grid), m_edit(editBox), m_delete(deleteButton), m_save(saveButton)
{
    m_edit->hide();
    m_grid->installEventFilter(this);
    On(m_grid, &FlexGrid::LeaveCell, this, [this] { CommitCellEdit(); });
    On(m_grid, &FlexGrid::KeyPress, this, [this](int keyAscii) {
        // The box opens on the row last selected, in the name column, with the key typed.
        if (m_grid->Rows() == 0)
            return;
        m_grid->setRow(m_grid->RowSel());
        m_grid->setCol(NameColumn);
        FlexGridEditStart(m_grid, m_edit, keyAscii);
        MarkTouched();
    });
    OnKeyDown(m_edit, [this](int keyCode, int shift) {
        FlexGridEditKeyCode(m_grid, m_edit, keyCode, shift);
        if (m_grid->Rows() > 0)
            MarkTouched();
    });
    On(m_grid, &FlexGrid::MouseMove, this, [this](int button, int, long, long) {
        // Dragging keeps one row selected: the current row follows.
        if (button == vbLeftButton && m_grid->Rows() > 0 && m_grid->RowSel() != m_grid->Row())
            m_grid->setRow(m_grid->RowSel());
    });
    On(m_grid, &FlexGrid::Click, this, [this] {
        if (!m_delete->isEnabled() && m_grid->Rows() > 0)
            m_delete->setEnabled(true);
    });
}

bool InPlaceEditing::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_grid && event->type() == QEvent::FocusIn && m_grid->Rows() > 0)
        RunHandler([this] { CommitCellEdit(); });
    return QObject::eventFilter(watched, event);
}

void InPlaceEditing::CommitCellEdit()
{
    if (!m_edit->isVisible())
        return;
    m_grid->setText(m_edit->text());
    m_edit->hide();
}

void InPlaceEditing::StartCellEdit()
{
    if (m_grid->Rows() == 0)
        return;
    m_grid->setCol(NameColumn);
    FlexGridEditStart(m_grid, m_edit, vbKeySpace);
    MarkTouched();
}

void InPlaceEditing::MarkTouched()
{
    const int row = m_grid->Row();
    if (m_grid->TextMatrix(row, StateColumn) == Original)
        m_grid->setTextMatrix(row, StateColumn, Update);
}

void InPlaceEditing::EnableButtons()
{
    const bool rows = m_grid->Rows() > 0;
    m_delete->setEnabled(rows);
    m_save->setEnabled(rows);
}

void InPlaceEditing::Fill(const QString &sql, const QString &keyField, const QString &nameField, const QString &routine)
{
    const auto step = [](const std::function<void()> &statement) { RetryOn(VbErr::ObjectDisconnected, statement); };
    try {
        Recordset rs;
        step([] { OpenDatabase(); });
        step([&] { rs.Open(sql, gConnection.get()); });
        m_grid->setRows(0);
        DoEvents();
        m_grid->setFixedRows(0);
        m_grid->setCols(3);
        if (!(rs.Bof() && rs.Eof())) {
            rs.MoveFirst();
            while (!rs.Eof()) {
                step([&] {
                    m_grid->AddItem(rs.Fields(keyField).toString() + QLatin1Char('\t') +
                                    NullToEmpty(rs.Fields(nameField)).toString() + QLatin1Char('\t') + Original);
                });
                rs.MoveNext();
            }
            m_grid->setRow(0);
        } else {
            m_grid->setRows(0);
        }
        m_grid->setColWidth(KeyColumn, 0);
        m_grid->setColWidth(NameColumn, NameColumnWidth);
        m_grid->setColWidth(StateColumn, 0);
        step([] { CloseDatabase(); });
        EnableButtons();
        if (m_grid->Cols() > NameColumn)
            m_grid->setColAlignment(NameColumn, FlexGrid::flexAlignLeftCenter);
    } catch (const VbError &e) {
        MsgBox(QStringLiteral("Error number ") + QString::number(e.number) + QStringLiteral(" occurred in Module ") +
               routine + QLatin1Char('.'));
    }
}

void InPlaceEditing::AddRow()
{
    CommitCellEdit();
    m_grid->AddItem(QStringLiteral("\t\t") + Insert);
    const int last = m_grid->Rows() - 1;
    m_grid->setTopRow(last);
    m_grid->setRow(last);
    m_delete->setEnabled(true);
    m_save->setEnabled(true);
    StartCellEdit();
}

void InPlaceEditing::DeleteRow(const QString &deleteSqlWithoutKey, bool closeAlways)
{
    if (MsgBox(QStringLiteral("Are you sure you want to delete this record?"), vbYesNo | vbExclamation) != vbYes)
        return;
    // What was being typed belonged to the row that goes.
    m_edit->hide();
    OpenDatabase();
    const QString key = m_grid->TextMatrix(m_grid->Row(), KeyColumn);
    if (!key.isEmpty()) {
        gConnection->Execute(deleteSqlWithoutKey + key);
        CloseDatabase();
    } else if (closeAlways) {
        CloseDatabase();
    }
    if (m_grid->Rows() >= 2) {
        m_grid->RemoveItem(m_grid->Row());
    } else {
        m_grid->setRows(0);
        m_grid->Clear();
    }
    if (m_grid->Rows() == 0) {
        m_delete->setEnabled(false);
        m_save->setEnabled(false);
    }
}

void InPlaceEditing::SaveRows(const StatementFor &insertSql, const StatementFor &updateSql, const QString &progressText,
                              const std::function<void()> &reread, const QString &doneMessage)
{
    try {
        CommitCellEdit();
        OpenDatabase();
        const int rows = m_grid->Rows();
        int counter = 0;
        for (int row = 0; row < rows; ++row) {
            const QString state = m_grid->TextMatrix(row, StateColumn);
            if (state == Insert) {
                // Written: should a later row fail, the next save must not write this one again.
                const QVariant key = gConnection->ExecuteInsert(insertSql(row));
                m_grid->setTextMatrix(row, KeyColumn, key.toString());
                m_grid->setTextMatrix(row, StateColumn, Original);
            } else if (state == Update)
                gConnection->Execute(updateSql(row));
            if (counter == 10) {
                UpdateProgressBox(double(row) / rows * 100, progressText);
                counter = 0;
            }
            DoEvents();
            ++counter;
        }
        UnloadProgressBox();
        CloseDatabase();
        reread();
        MsgBox(doneMessage, vbInformation);
    } catch (const VbError &e) {
        UnloadProgressBox();
        TellSaveFailure(e);
    }
}

void InPlaceEditing::TellSaveFailure(const VbError &e)
{
    if (e.number == DbErr::CommandError)
        MsgBox(QStringLiteral("Can not use ' character in filenames or descriptions."), vbExclamation);
    else if (e.number == DbErr::ConstraintViolation)
        MsgBox(QStringLiteral("All fields must be completed before saving."), vbExclamation);
    else
        MsgBox(QStringLiteral("Error ") + QString::number(e.number) +
                   QStringLiteral(" occurred.  Can not save record."),
               vbCritical);
}
