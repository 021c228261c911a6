#include "controls/Pictures.h"

#include "platform/Paths.h"

#include <QHash>

QPixmap LoadPicture(const QString &name)
{
    static QHash<QString, QPixmap> cache;
    const QString file = AppPath() + QStringLiteral("/pictures/") + name + QStringLiteral(".png");
    auto it = cache.constFind(file);
    if (it != cache.constEnd())
        return *it;
    QPixmap pm(file);
    if (!pm.isNull())
        cache.insert(file, pm);
    return pm;
}
