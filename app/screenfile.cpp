#include "app/screenfile.h"

#include "data/expdata.h"

#include <QFileInfo>

namespace {

QVector<int> kindsOf(const ExpData& set)
{
    QVector<int> kinds;
    for (const SensorPtr& sensor : set.getSensors())
        kinds.append(sensor ? sensor->ID : -1);
    return kinds;
}

} // namespace

void ScreenFile::keep(const QString& fname, const ExpData& set, bool isWhole)
{
    name = fname;
    mayReplace = isWhole;
    kinds = kindsOf(set);
}

bool ScreenFile::isLesson(const QString& fname)
{
    return fname.endsWith(QLatin1String(".lesson"), Qt::CaseInsensitive);
}

QString ScreenFile::title() const
{
    return QFileInfo(name).fileName();
}

QString ScreenFile::target(const ExpData& set) const
{
    // A lesson has all channels of its groups, whichever of them are in the class.
    return mayReplace && (isLesson() || kindsOf(set).mid(0, kinds.size()) == kinds) ? name : QString();
}
