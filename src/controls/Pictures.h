#pragma once

#include <QPixmap>
#include <QString>

// A picture of the application folder's pictures/ by name ("tick", "zip", "scan_disc_hover").
// A missing picture gives an empty one: a screen never fails for want of its decoration.
QPixmap LoadPicture(const QString &name);
