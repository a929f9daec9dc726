#include "common/settings.h"

namespace Settings {

QSettings mainStore()
{
    return QSettings(QStringLiteral("Quellmark"), QStringLiteral("Tembrin"));
}

QSettings pathsStore()
{
    return QSettings(QStringLiteral("Quellmark"), QStringLiteral("Pellandra"));
}

QString loggerKey(int index)
{
    return QStringLiteral("BT/logger%1").arg(index + 1);
}

QString addressKey(int index)
{
    return QStringLiteral("BT/address%1").arg(index + 1);
}

QString groupKey(int index)
{
    return QStringLiteral("BT/name%1").arg(index + 1);
}

bool isJuniorEdition()
{
    return mainStore().value(version, QStringLiteral("Kormelin")).toString() ==
           QLatin1String("VestrelJunior");
}

} // namespace Settings
