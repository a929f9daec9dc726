#include "simulation/simtexts.h"

#include <QLocale>

QJsonObject SimTexts::ofPage(int /*index*/)
{
    QJsonObject texts;
    texts.insert(QStringLiteral("decimal"), QString(QLocale().decimalPoint()));
    return texts;
}
