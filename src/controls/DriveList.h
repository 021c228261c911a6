#pragma once

#include <QComboBox>

// The list of drives: here the volumes, optical drives first (an empty one too), then the folders chosen
// as volumes and the disc image files chosen, read afresh each time the list opens. Drive is the
// selected volume's root path (an image's own path), "" while none is chosen. Setting it to an existing
// folder or image file adds it to the list; anything else that names no volume raises 68 (device
// unavailable).
class DriveList final : public QComboBox
{
    Q_OBJECT
public:
    explicit DriveList(QWidget *parent = nullptr);

    QString Drive() const;
    void setDrive(const QString &drive);
    int ListIndex() const { return currentIndex(); }
    void setListIndex(int index);
    int ListCount() const { return count(); }
    void Refresh();

protected:
    void showPopup() override;

private:
    QStringList m_folders;
};
