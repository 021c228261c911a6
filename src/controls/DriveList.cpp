#include "controls/DriveList.h"

#include "platform/DiscImage.h"
#include "platform/Paths.h"
#include "platform/VbError.h"

#include <QDir>
#include <QFileInfo>

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
    for (const QString &folder : std::as_const(m_folders)) {
        if (findData(folder) < 0)
            addItem(folder, folder);
    }
    // Nothing is chosen by itself: no drive stands chosen until the operator or the settings choose one.
    setCurrentIndex(findData(current));
    blockSignals(false);
}

void DriveList::showPopup()
{
    // A disc put in (or a drive plugged in) since the list was last read is offered.
    Refresh();
    QComboBox::showPopup();
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
    int i = findData(root);
    if (i < 0 && root.startsWith(QLatin1Char('/')) &&
        (QFileInfo(root).isDir() || (QFileInfo(root).isFile() && IsDiscImage(root)))) {
        // A folder, or a disc image file, joins the list as a volume of its own.
        root = QDir::cleanPath(root);
        i = findData(root);
        if (i < 0) {
            m_folders.append(root);
            addItem(root, root);
            i = count() - 1;
        }
    }
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
