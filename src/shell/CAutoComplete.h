#pragma once

#include <QObject>

class QComboBox;

// Type-ahead for a combo box: as the operator types, the first entry that begins with the typed text
// (whatever its case) completes the text, the completed tail selected so that typing on replaces it.
class CAutoComplete final : public QObject
{
    Q_OBJECT
public:
    explicit CAutoComplete(QObject *parent = nullptr);

    bool AutoAdd() const { return m_autoAdd; }
    void setAutoAdd(bool on) { m_autoAdd = on; }
    QComboBox *LinkedComboBox() const { return mComboBox; }
    void setLinkedComboBox(QComboBox *combo);

    // The index of the first entry after start (-1: from the top) that begins with the text, or that
    // equals it when exact is set; case is ignored. -1 when there is none.
    int FindInList(const QString &text, int start, bool exact) const;
    void ShowDropDown(bool show);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void keyPress(int keyAscii);
    void keyUp(int keyCode);

    QComboBox *mComboBox = nullptr;
    bool m_autoAdd = false;
};
