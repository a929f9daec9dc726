#include "data/expdata.h"

bool ExpData::mergeDataFromNewOpen(int nSens, const QVector<double>& t, double dt)
{
    if (nSens < 0 || t.isEmpty() || dt != this->dt || minX != t.constFirst())
        return false;
    ++appendIndex;
    lastShift = 0;
    needSave = true;
    firstLive = 0;
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
        x[i] = last + (i - before + 1) * samplePeriod();
    updateXExtent();
}
