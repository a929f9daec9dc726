#include "data/expdata.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

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
    return {dt,   x,    y,         copies(sensors), leftPad,   minY,
            maxY, cuts, firstLive, appendIndex,     lastShift, isAveraged};
}

ExpData::Content ExpData::Content::withoutLastChannel() const
{
    Content less = *this;
    less.y.removeLast();
    less.sensors.removeLast();
    less.leftPad.removeLast();
    less.minY.removeLast();
    less.maxY.removeLast();
    return less;
}

void ExpData::setContent(const Content& kept)
{
    dt = kept.dt;
    x = kept.x;
    y = kept.y;
    sensors = copies(kept.sensors);
    resizeChannels(sensors.size()); // what files say of their looks stays
    leftPad = kept.leftPad;
    minY = kept.minY;
    maxY = kept.maxY;
    cuts = kept.cuts;
    firstLive = kept.firstLive;
    appendIndex = kept.appendIndex;
    lastShift = kept.lastShift;
    isAveraged = kept.isAveraged;
    deviations.clear();
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

/// The channel in which a value was typed: unlike one that was smoothed it keeps its name. -1 for none.
int ExpData::editedSince(const Content& before) const
{
    if (!isLike(before) || x.size() != before.x.size())
        return -1;
    for (const int channel : channelsUnlike(before)) {
        const SensorPtr& sensor = sensors.at(channel);
        if (sensor && sensor->specialType == 0)
            return isSameChannel(sensor, before.sensors.at(channel)) &&
                           y.at(channel).size() == before.y.at(channel).size()
                       ? channel
                       : -1;
    }
    return -1;
}

SampleStep ExpData::stepSince(const Content& before, int channel) const
{
    SampleStep step;
    step.channel = channel;
    if (nSens > before.sensors.size()) {
        const SensorPtr& added = sensors.constLast();
        step.kind = added->calculation ? SampleStep::Kind::Formula : SampleStep::Kind::Derivative;
        step.window = derivWindow;
        if (added->calculation)
            step.recipe = added->calculation->recipe();
    } else if (nSens < before.sensors.size()) {
        step.kind = SampleStep::Kind::Remove;
    } else if (const int edited = editedSince(before); edited >= 0) {
        const QVector<double>& was = before.y.at(edited);
        step.kind = SampleStep::Kind::Edit;
        step.channel = edited;
        while (step.first < was.size() - 1 && isSame({was.at(step.first)}, {y.at(edited).at(step.first)}))
            ++step.first;
        step.value = y.at(edited).at(step.first);
    } else if (x.size() == before.x.size()) {
        step.window = smoothKernel;
    } else {
        step.kind = SampleStep::Kind::Crop;
        step.first = before.x.indexOf(x.isEmpty() ? 0 : x.constFirst());
        step.rows = x.size();
    }
    return step;
}

bool ExpData::make(const SampleStep& step)
{
    if (step.kind == SampleStep::Kind::Crop) {
        if (step.first < 0 || step.rows < 1 || step.first >= x.size() || step.rows > x.size() - step.first)
            return false;
        const int end = step.first + step.rows;
        doCrop(x.at(step.first), end < x.size() ? x.at(end) : std::numeric_limits<double>::infinity());
        return true;
    }
    if (step.kind == SampleStep::Kind::Edit) {
        if (step.first < 0 || step.first >= getYSize(step.channel) || !std::isfinite(step.value))
            return false;
        replaceYVal(step.channel, step.first, step.value);
        return true;
    }
    if (step.kind == SampleStep::Kind::Formula)
        return addCalculated(step.recipe);
    if (step.kind == SampleStep::Kind::Remove) {
        const int before = nSens;
        dropDerived(before - 1);
        return nSens < before;
    }
    constexpr int mostWindow = 1000;
    if (!getSens(step.channel) || getYSize(step.channel) < 2 || step.window < 1 || step.window > mostWindow)
        return false;
    const int selected = std::exchange(iSelectedSensor, step.channel);
    if (step.kind == SampleStep::Kind::Smooth) {
        const int kernel = std::exchange(smoothKernel, step.window);
        smoothCurve();
        smoothKernel = kernel;
    } else {
        const int window = std::exchange(derivWindow, step.window);
        addSpecialCurve(CURVE_DERIV);
        derivWindow = window;
    }
    iSelectedSensor = selected;
    return true;
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
