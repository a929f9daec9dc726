#include "data/expdata.h"

void ExpData::setDataAddRepeatExp()
{
    needSave = true;
    if (!repeatExpMode) {
        duplicateSensorList();
        curveModeHint.fill(-1);
        repeatExpMode = true;
    } else {
        const int half = nSens / 2;
        y.remove(0, half);
        minY.remove(0, half);
        maxY.remove(0, half);
        leftPad.remove(0, half);
    }
    resizeChannels(sensors.size());
    finalData = false;
}

bool ExpData::isRepeatMode1stPhase() const
{
    return repeatExpMode && getYSize(nSens - 1) < x.size();
}

void ExpData::duplicateSensorList()
{
    const SensorList first = sensors;
    for (const SensorPtr& original : first)
        sensors.append(original ? ownCopy(*original) : SensorPtr());
    nSens = sensors.size();
    needSave = true;
}

bool ExpData::mergeDataFromNewOpen(int nSens, const QVector<double>& t, double dt)
{
    if (nSens < 0 || t.isEmpty() || dt != this->dt || minX != t.constFirst())
        return false;
    ++appendIndex;
    lastShift = 0;
    needSave = true;
    repeatExpMode = false;
    finalData = true;
    sensors.resize(sensors.size() + nSens);
    resizeChannels(sensors.size());
    x += t.mid(x.size());
    updateXExtent();
    return true;
}

void ExpData::setShift(int iSens, int shift, bool newData)
{
    // The same arithmetic serves both: old data are padded by how far the shift lies below 0, new data by
    // how far it lies above.
    const int target = newData ? qMax(0, shift) : qMax(0, -shift);
    const int present = newData ? qMax(0, lastShift) : qMax(0, -lastShift);
    padFront(iSens, target - present);
}

/// Adds `n` copies of the first sample at the front, or takes away as many below 0 of those added before.
void ExpData::padFront(int iSens, int n)
{
    if (getYNoConv(iSens).isEmpty())
        return;
    QVector<double>& channel = y[iSens];
    if (n < 0) {
        // A crop may have taken some of the padding already.
        n = -qMin(-n, leftPad.at(iSens));
        channel.remove(0, qMin(-n, channel.size()));
    } else {
        channel.insert(0, n, channel.constFirst());
    }
    leftPad[iSens] += n;
}

void ExpData::shiftLastData(int shift)
{
    for (int i = 0; i < sensors.size(); ++i) {
        const SensorPtr& sensor = sensors.at(i);
        setShift(i, shift, sensor && sensor->appendIndex == appendIndex);
    }
    lastShift = shift;
    needSave = true;
    fitXToLongestChannel();
}

void ExpData::fitXToLongestChannel()
{
    int longest = 0;
    for (const QVector<double>& channel : qAsConst(y))
        longest = qMax(longest, channel.size());
    if (longest == 0 || x.isEmpty())
        return;
    const double last = x.constLast();
    const int before = x.size();
    x.resize(longest);
    for (int i = before; i < longest; ++i)
        x[i] = last + (i - before + 1) * (dt > 0 ? dt : 1.0);
    updateXExtent();
}

void ExpData::addSample(int index, const ExpData* refData)
{
    if (!refData || index < 0 || index >= y.size())
        return;
    needSave = true;
    if (!refData->x.isEmpty() && (x.isEmpty() || refData->x.constLast() > x.constLast()))
        appendMissingTimes(refData->x);
    const QVector<double>& source = refData->getYNoConv(refData->iSelectedSensor);
    QVector<double>& channel = y[index];
    const int before = channel.size();
    const int target = qMin(refData->getYSize(0), source.size());
    for (int k = before; k < target; ++k) {
        channel.append(source.at(k));
        trackExtremes(index, source.at(k), k == 0);
    }
    // A channel that starts late belongs into the averages of the positions before as well.
    updateMean(before == 0 && target > 0);
}

/// Loggers that lost samples have fewer times than others; the axis must not run backwards for that.
void ExpData::appendMissingTimes(const QVector<double>& times)
{
    for (int k = x.size(); k < times.size(); ++k)
        x.append(x.isEmpty() ? times.at(k) : qMax(x.constLast(), times.at(k)));
    if (!x.isEmpty()) {
        minX = x.constFirst();
        maxX = x.constLast();
    }
}

void ExpData::updateMean(bool reset)
{
    const int mean = closingChannel();
    if (mean < 1)
        return;
    if (reset)
        y[mean].clear();

    // Every channel that has begun must reach a position, so the shortest of them says how far it goes.
    int reach = 0;
    int begun = 0;
    for (int c = 0; c < mean; ++c) {
        const int length = y.at(c).size();
        if (length > 0)
            reach = begun++ == 0 ? length : qMin(reach, length);
    }
    for (int k = y.at(mean).size(); k < reach; ++k) {
        double sum = 0.0;
        for (int c = 0; c < mean; ++c) {
            if (k < y.at(c).size())
                sum += y.at(c).at(k);
        }
        y[mean].append(sum / begun);
        trackExtremes(mean, sum / begun, k == 0);
    }
    if (getSens(mean) && getSens(0)) {
        getSens(mean)->classMinView = getSens(0)->classMinView;
        getSens(mean)->classMaxView = getSens(0)->classMaxView;
        getSens(mean)->readClassMinMax = true;
    }
}

void ExpData::copyValues(int iSens, const ExpData* fromData)
{
    if (!fromData || iSens < 0 || iSens >= y.size())
        return;
    const int selected = fromData->iSelectedSensor;
    appendMissingTimes(fromData->x);
    y[iSens] = fromData->getYNoConv(selected);
    minY[iSens] = fromData->minY.value(selected);
    maxY[iSens] = fromData->maxY.value(selected);
    if (const SensorPtr& sensor = getSens(iSens)) {
        sensor->minView = fromData->getMinY(selected);
        sensor->maxView = fromData->getMaxY(selected);
    }
}
