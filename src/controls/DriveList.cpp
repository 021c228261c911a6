#include "controls/DriveList.h"

#include "platform/Paths.h"
#include "platform/VbError.h"

DriveList::DriveList(QWidget *parent) : QComboBox(parent)
{
    Refresh();
}

void DriveList::Refresh()
{
    const QString current = Drive();
    blockSignals(true);
    clear();
    for (const Volume &v : Volumes()) {
        QString text = v.root;
        if (!v.label.isEmpty())
            text += QStringLiteral(" [") + v.label + QLatin1Char(']');
        addItem(text, v.root);
    }
    const int i = findData(current);
    setCurrentIndex(i >= 0 ? i : 0);
    blockSignals(false);
}

QString DriveList::Drive() const
{
    return currentIndex() < 0 ? QString() : currentData().toString();
}

void DriveList::setDrive(const QString &drive)
{
    QString root = drive.trimmed();
    const int bracket = root.indexOf(QStringLiteral(" ["));
    if (bracket > 0)
        root = root.left(bracket);
    if (root.size() > 1 && root.endsWith(QLatin1Char('/')))
        root.chop(1);
    const int i = findData(root);
    if (i < 0)
        RaiseVbError(VbErr::DeviceUnavailable);
    setCurrentIndex(i);
}

void DriveList::setListIndex(int index)
{
    if (index < -1 || index >= count())
        RaiseVbError(VbErr::InvalidPropertyValue);
    setCurrentIndex(index);
}
