#include "catalogue/RecordButtons.h"

#include "controls/Form.h"
#include "controls/ScreenParts.h"

#include <QLabel>
#include <QPushButton>

QPushButton *RecordButton(QWidget *parent, const char *name, const char *labelName, const QString &caption, long left,
                          long top, QLabel **label)
{
    auto *b = Named(new QPushButton(parent), name);
    b->setFlat(true);
    b->setCursor(Qt::PointingHandCursor);
    PlaceTw(b, left, top, 720, 720);
    *label = Named(new QLabel(caption, parent), labelName);
    (*label)->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    PlaceTw(*label, left - 360, top + 750, 1440, 270);
    return b;
}

void RecordFaces(HoverPictures *faces, QWidget *parent, QPushButton *button, const char *normalName,
                 const char *hoverName, const QString &kind, QLabel **normal, QLabel **hover)
{
    *normal = PictureHolder(parent, normalName, QStringLiteral("record_") + kind + QStringLiteral("_normal"));
    *hover = PictureHolder(parent, hoverName, QStringLiteral("record_") + kind + QStringLiteral("_hover"));
    faces->add(button, *normal, *hover);
}
