#include "data/expdata.h"

#include <algorithm>
#include <cstring>

namespace {

// Gaps are equal too.
bool isSame(const QVector<double>& a, const QVector<double>& b)
{
    return a.size() == b.size() &&
           (a.constData() == b.constData() ||
            std::memcmp(a.constData(), b.constData(), size_t(a.size()) * sizeof(double)) == 0);
}

bool isSameChannel(const SensorPtr& a, const SensorPtr& b)
{
    return a && b ? a->ID == b->ID && a->specialType == b->specialType && a->name == b->name &&
                        a->groupName == b->groupName
                  : !a && !b;
}

SensorList copies(const SensorList& sensors)
{
    SensorList list;
    list.reserve(sensors.size());
    for (const SensorPtr& sensor : sensors)
        list.append(sensor ? SensorPtr::create(*sensor) : SensorPtr());
    return list;
}

} // namespace

ExpData::Content ExpData::content() const
{
    return {dt,   x,    y,         copies(sensors), curveModeHint, leftPad,   minY,
            maxY, cuts, firstLive, appendIndex,     lastShift,     isAveraged};
}

void ExpData::setContent(const Content& kept)
{
    dt = kept.dt;
    x = kept.x;
    y = kept.y;
    sensors = copies(kept.sensors);
    nSens = sensors.size();
    curveModeHint = kept.curveModeHint;
    leftPad = kept.leftPad;
    minY = kept.minY;
    maxY = kept.maxY;
    cuts = kept.cuts;
    firstLive = kept.firstLive;
    appendIndex = kept.appendIndex;
    lastShift = kept.lastShift;
    isAveraged = kept.isAveraged;
    keepSelectionInside();
    updateXExtent();
}

bool ExpData::holds(const Content& kept) const
{
    return dt == kept.dt && isSame(x, kept.x) && isLike(kept) && channelsUnlike(kept).isEmpty();
}

bool ExpData::isLike(const Content& kept) const
{
    const auto typeOf = [](const SensorPtr& sensor) { return sensor ? sensor->specialType : 0; };
    return std::equal(sensors.cbegin(), sensors.cend(), kept.sensors.cbegin(), kept.sensors.cend(),
                      [&](const SensorPtr& a, const SensorPtr& b) { return typeOf(a) == typeOf(b); });
}

QVector<int> ExpData::channelsUnlike(const Content& kept) const
{
    QVector<int> unlike;
    for (int i = 0; i < nSens; ++i) {
        if (!isSame(y.at(i), kept.y.value(i)) || !isSameChannel(sensors.at(i), kept.sensors.value(i)))
            unlike.append(i);
    }
    return unlike;
}

void ExpData::dropDerived(int n)
{
    n = qMax(0, n);
    while (sensors.size() > n && getSens(sensors.size() - 1) && sensors.constLast()->specialType != 0)
        sensors.removeLast();
    if (sensors.size() == nSens)
        return;
    resizeChannels(sensors.size());
    keepSelectionInside();
    needSave = true;
}
