// Several groups on one time axis. Rows are found by time, so a group that lost a sample has a gap there and
// nothing behind it moves.

#include "data/expdata.h"

#include <algorithm>
#include <cmath>

#include "data/novalue.h"

namespace {

bool hasValue(const QVector<double>& v, int row)
{
    return row < v.size() && !std::isnan(v.at(row));
}

/// The selected channel of a group, in the order of time, without what is a gap, was padded or is cut away
/// here.
QVector<QPointF> valuesToJoin(const ExpData& from, const TimeCuts& cuts)
{
    const int selected = from.getSelectedSensor();
    const QVector<double>& times = from.getX();
    const QVector<double>& v = from.getYNoConv(selected);
    QVector<QPointF> values;
    values.reserve(v.size());
    for (int k = qMax(0, from.getLeftPad(selected)); k < qMin(times.size(), v.size()); ++k) {
        if (!std::isnan(v.at(k)) && !cuts.contains(times.at(k)))
            values.append({times.at(k), v.at(k)});
    }
    const auto isEarlier = [](const QPointF& a, const QPointF& b) { return a.x() < b.x(); };
    if (!std::is_sorted(values.cbegin(), values.cend(), isEarlier))
        std::stable_sort(values.begin(), values.end(), isEarlier);
    return values;
}

} // namespace

int ExpData::meanIndex() const
{
    int i = sensors.size() - 1;
    while (i > 0 && sensors.at(i) && sensors.at(i)->specialType > 0)
        --i;
    return i;
}

// --- Live ---

void ExpData::joinSample(int channel, double t, double value)
{
    const int mean = meanIndex();
    if (channel < 0 || channel >= mean || !std::isfinite(t) || !std::isfinite(value) || cuts.contains(t))
        return;
    needSave = true;
    const int row = rowFor(t);
    putValue(channel, row, value);
    averageRow(mean, row);
    followOrigins(row, row);
    shareClassRange();
}

/// The row of a time; a new one where there is none within half a sample.
int ExpData::rowFor(double t)
{
    const double reach = samplePeriod() / 2;
    if (x.isEmpty() || t - x.constLast() >= reach)
        return insertRow(x.size(), t);
    // Times rounded to half a sample can say both.
    int at = qMin(int(std::upper_bound(x.cbegin(), x.cend(), t - reach) - x.cbegin()), x.size() - 1);
    if (at + 1 < x.size() && x.at(at + 1) - t < std::fabs(t - x.at(at)))
        ++at;
    return std::fabs(x.at(at) - t) < reach ? at : insertRow(x.at(at) < t ? at + 1 : at, t);
}

int ExpData::insertRow(int at, double t)
{
    x.insert(at, t);
    for (QVector<double>& channel : y) {
        if (at < channel.size())
            channel.insert(at, noValue);
    }
    if (at < deviations.size())
        deviations.insert(at, noValue);
    minX = x.constFirst();
    maxX = x.constLast();
    return at;
}

void ExpData::averageRow(int mean, int row)
{
    double sum = 0.0;
    int count = 0;
    for (int c = 0; c < mean; ++c) {
        if (!counts(c, row))
            continue;
        sum += y.at(c).at(row);
        ++count;
    }
    const double average = count > 0 ? sum / count : noValue;
    putValue(mean, row, average);
    isAveraged = true;
    if (row > deviations.size())
        return;
    deviations.resize(qMax(row + 1, deviations.size()));
    deviations[row] = deviationAt(row, average);
}

bool ExpData::counts(int channel, int row) const
{
    return hasValue(y.at(channel), row) && !isOut(channel);
}

double ExpData::deviationAt(int row, double average) const
{
    constexpr int fewest = 2;
    double sum = 0.0;
    int count = 0;
    for (int c = 0; c < meanIndex(); ++c) {
        if (!counts(c, row))
            continue;
        const double apart = y.at(c).at(row) - average;
        sum += apart * apart;
        ++count;
    }
    return count < fewest ? noValue : std::sqrt(sum / (count - 1));
}

const QVector<double>& ExpData::spread() const
{
    const int rows = isAveraged && nSens > 0 ? y.at(meanIndex()).size() : 0;
    if (deviations.size() == rows)
        return deviations;
    deviations.resize(rows);
    for (int row = 0; row < rows; ++row)
        deviations[row] = spreadAt(row);
    return deviations;
}

double ExpData::spreadAt(int row) const
{
    double sum = 0.0; // of the groups: a person may have smoothed their average
    int count = 0;
    for (int c = 0; c < meanIndex(); ++c) {
        sum += counts(c, row) ? y.at(c).at(row) : 0.0;
        count += counts(c, row) ? 1 : 0;
    }
    return deviationAt(row, sum / qMax(1, count));
}

void ExpData::setOut(int channel, bool tf)
{
    if (channel < 0 || channel >= meanIndex() || !isAveraged || isOut(channel) == tf)
        return;
    if (tf)
        outs.append(channel);
    else
        outs.removeAll(channel);
    updateMean(true);
    needSave = true;
}

bool ExpData::isOfOneKind() const
{
    // Who has no values yet, such as a group whose logger never came, does not count beside those who have.
    QVector<SensorPtr> all;
    QVector<SensorPtr> measured;
    for (int c = 0; c < meanIndex(); ++c) {
        if (isOut(c))
            continue;
        all.append(sensors.at(c));
        if (std::any_of(y.at(c).cbegin(), y.at(c).cend(), [](double value) { return !std::isnan(value); }))
            measured.append(sensors.at(c));
    }
    const QVector<SensorPtr>& counted = measured.isEmpty() ? all : measured;
    return std::all_of(counted.cbegin(), counted.cend(), [&](const SensorPtr& sensor) {
        return sensor && counted.first() && sensor->isSameQuantity(*counted.first());
    });
}

/// A file does not say that its last channel is an average, but its values do.
bool ExpData::isLastTheMean() const
{
    constexpr double rounding = 0.0101; // of values with two decimals and their mean
    const int mean = meanIndex();
    if (mean < 1 || !isOfOneKind())
        return false;
    bool isAny = false;
    for (int row = 0; row < x.size(); ++row) {
        double sum = 0;
        int count = 0;
        for (int c = 0; c < mean; ++c) {
            if (counts(c, row)) {
                sum += y.at(c).at(row);
                ++count;
            }
        }
        if (!hasValue(y.at(mean), row))
            continue;
        if (count == 0 || std::fabs(sum / count - y.at(mean).at(row)) > rounding)
            return false;
        isAny = true;
    }
    return isAny;
}

bool ExpData::isMeaningless(int channel) const
{
    return isAveraged && channel == meanIndex() && !isOfOneKind();
}

int ExpData::valuesAt(int row) const
{
    int count = 0;
    for (int c = 0; row >= 0 && c < meanIndex(); ++c)
        count += counts(c, row) ? 1 : 0;
    return count;
}

/// How many rows a group knows, if it still delivers; else 0.
int ExpData::deliveredRows(int channel) const
{
    constexpr double patience = 1.5;       // seconds that a group may be behind the first one
    const int newest = finalData ? 3 : 10; // or rows
    const int known = qMin(y.at(channel).size(), x.size());
    if (known == 0)
        return 0;
    const bool isRecent = known > x.size() - newest || (dt > 0 && x.last() - x.at(known - 1) <= patience);
    return isRecent ? known : 0;
}

int ExpData::settledRows() const
{
    int settled = x.size();
    for (int c = 0; c < meanIndex(); ++c) {
        if (const int known = isOut(c) ? 0 : deliveredRows(c))
            settled = qMin(settled, known);
    }
    return settled;
}

int ExpData::groupsInAverage() const
{
    int count = 0;
    for (int c = 0; c < meanIndex(); ++c)
        count += !isOut(c) && deliveredRows(c) > 0 ? 1 : 0;
    return count;
}

void ExpData::addSample(int index, const ExpData* refData)
{
    if (!refData || index < 0 || index >= meanIndex())
        return;
    const int selected = refData->iSelectedSensor;
    const int known = qMin(getYSize(index), x.size());
    const double after = known > 0 ? x.at(known - 1) + samplePeriod() / 2 : 0.0;
    const QVector<double>& times = refData->x;
    int k = refData->timedSamples(selected);
    while (k > 0 && (known == 0 || times.at(k - 1) > after))
        --k;
    for (; k < refData->timedSamples(selected); ++k)
        joinSample(index, times.at(k), refData->y.at(selected).at(k));
}

// --- Whole channels ---

void ExpData::copyValues(int iSens, const ExpData* fromData)
{
    if (fromData && hasSlot(iSens))
        joinChannel(iSens, sensors.at(iSens), *fromData);
}

void ExpData::joinChannel(int channel, const SensorPtr& kind, const ExpData& from)
{
    if (channel < 0 || channel >= meanIndex())
        return;
    const SensorPtr before = sensors.at(channel);
    takeKind(channel, kind);
    mergeRows(channel, valuesToJoin(from, cuts));
    updateXExtent();
    minY[channel] = maxY[channel] = 0.0;
    findMinMax(y.at(channel), minY[channel], maxY[channel]);
    updateMapRange(channel);
    viewExtremes(channel);
    updateMean(true);
    if (!before || before->ID != sensors.at(channel)->ID || before->name != sensors.at(channel)->name)
        renewDerived(channel);
}

/// Curves derived from a channel whose sensor was changed take its name and its unit.
void ExpData::renewDerived(int channel)
{
    QVector<bool> isOther(sensors.size(), false);
    isOther[channel] = true;
    isOther[meanIndex()] = channel == 0;
    for (int c = meanIndex() + 1; c < sensors.size(); ++c) {
        const int origin = sensors.at(c) ? sensors.at(c)->specialOriginIndex : -1;
        if (origin < 0 || origin >= c || !isOther.at(origin) || sensors.at(c)->calculation)
            continue;
        isOther[c] = true;
        const SensorPtr renewed = derivedFrom(origin, c, sensors.at(c)->specialType);
        sensors[c] = renewed;
        describeSpecialCurve(c, *sensors.at(origin));
    }
}

/// What a group's channel measures from now on. A range that the user set holds for all sensors of a kind.
void ExpData::takeKind(int channel, const SensorPtr& kind)
{
    const SensorPtr taken = ownCopy(kind);
    taken->calculation.reset(); // the formula is that of the group's own set
    taken->readSetMinMax = taken->readClassMinMax = taken->readClassSetMinMax = false;
    for (int c = 0; c < meanIndex(); ++c) {
        const SensorPtr& other = sensors.at(c);
        if (!other || other->ID != taken->ID || !other->readClassSetMinMax)
            continue;
        taken->classMinView = other->classMinView;
        taken->classMaxView = other->classMaxView;
        taken->readClassSetMinMax = true;
    }
    sensors[channel] = taken;
    SensorPtr& mean = sensors[meanIndex()];
    if (channel > 0 || (mean && mean->ID == taken->ID))
        return;
    const QString name = mean ? mean->groupName : QString();
    mean = ownCopy(taken);
    mean->specialType = 0; // or it would be one of the derived channels behind itself
    mean->groupName = name;
}

/// Puts the values of one channel in place of what it had. Rows that no group has a value in vanish.
void ExpData::mergeRows(int channel, const QVector<QPointF>& values)
{
    y[channel].clear();
    QVector<bool> kept(x.size());
    for (int row = 0; row < x.size(); ++row) {
        for (int c = 0; c < meanIndex(); ++c)
            kept[row] = kept.at(row) || hasValue(y.at(c), row);
    }
    const JoinedRows rows = JoinedRows::merge(x, kept, values, samplePeriod() / 2);
    for (int c = 0; c < meanIndex(); ++c)
        y[c] = c == channel ? rows.own : rows.moved(y.at(c));
    x = rows.times;
}

void ExpData::updateMean(bool reset)
{
    const int mean = meanIndex();
    if (mean < 1)
        return;
    if (reset) {
        deviations.clear();
        for (int c = mean; c < y.size(); ++c) {
            y[c].clear();
            minY[c] = maxY[c] = 0.0;
        }
    }
    const int first = y.at(mean).size();
    for (int row = first; row < x.size(); ++row)
        averageRow(mean, row);
    if (first < x.size())
        followOrigins(first, x.size() - 1);
    shareClassRange();
}

/// The average is shown in the range of the first group.
void ExpData::shareClassRange()
{
    const SensorPtr& mean = sensors.at(meanIndex());
    const SensorPtr& first = sensors.constFirst();
    if (!mean || !first)
        return;
    mean->classMinView = first->classMinView;
    mean->classMaxView = first->classMaxView;
    mean->readClassMinMax = true;
}
