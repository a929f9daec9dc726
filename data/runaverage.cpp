#include "data/runaverage.h"

#include <QHash>
#include <QStringList>

#include <algorithm>
#include <cmath>

#include "data/expdata.h"

namespace {

/// Rows that `second` reaches too.
int commonRows(const StoredExperiment& first, const StoredExperiment& second)
{
    if (second.times.isEmpty())
        return 0;
    const double end = second.times.constLast() + first.rate / 2;
    return int(std::upper_bound(first.times.cbegin(), first.times.cend(), end) - first.times.cbegin());
}

} // namespace

QStringList RunAverage::keysOf(const StoredExperiment& run)
{
    QHash<QString, int> counts;
    QStringList keys;
    for (const StoredExperiment::Channel& channel : run.channels) {
        const QString kind = QStringLiteral("%1 %2 %3")
                                 .arg(channel.sensorID)
                                 .arg(channel.derivedBy)
                                 .arg(run.isClass ? channel.group : QString()) +
                             (channel.derivedBy == ExpData::CURVE_FORMULA ? channel.ownName : QString());
        keys.append(QStringLiteral("%1 %2").arg(counts[kind]++).arg(kind));
    }
    return keys;
}

double RunAverage::valueAt(const StoredExperiment& run, const StoredExperiment::Channel& channel, double time)
{
    constexpr double farthest = 2.5; // samples
    constexpr double nearby = 1e-6;  // of a sample: the same time
    const QVector<double>& times = run.times;
    const int count = std::min(times.size(), channel.samples.size());
    const auto end = times.cbegin() + count;
    const double unit = run.rate > 0 ? run.rate : 1;
    const auto next = std::lower_bound(times.cbegin(), end, time - nearby * unit);
    if (next == end)
        return qQNaN();
    const int at = int(next - times.cbegin());
    if (std::abs(*next - time) <= nearby * unit)
        return channel.samples.at(at);
    if (at == 0 || *next - times.at(at - 1) > farthest * unit)
        return qQNaN();
    const double part = (time - times.at(at - 1)) / (*next - times.at(at - 1));
    return channel.samples.at(at - 1) * (1 - part) + channel.samples.at(at) * part;
}

StoredExperiment RunAverage::of(const StoredExperiment& first, const StoredExperiment& second)
{
    const int rows = commonRows(first, second);
    const QStringList keys = keysOf(first);
    const QStringList others = keysOf(second);
    StoredExperiment mean = first;
    mean.lineMarkers.clear();
    mean.barMarkers.clear();
    mean.predictions.clear();
    mean.channels.clear();
    mean.xyIndex = -1;
    mean.appendIndex = 0;
    for (int i = 0; i < first.channels.size(); ++i) {
        const int other = others.indexOf(keys.at(i));
        StoredExperiment::Channel channel = first.channels.at(i);
        const bool isAny = other >= 0 && rows > 0 && !channel.samples.isEmpty();
        if (!isAny && !first.isClass) // in the class each group has its place
            continue;
        const int own = isAny ? std::min(rows, channel.samples.size()) : 0;
        channel.samples.resize(own);
        for (int row = 0; row < own; ++row)
            channel.samples[row] =
                (channel.samples.at(row) + valueAt(second, second.channels.at(other), first.times.at(row))) /
                2;
        channel.place = mean.channels.size();
        channel.recipe = {};
        channel.originPlace = -1; // its samples are no longer those of the channel it came from
        channel.isRangeFixed = channel.barUseScale = false;
        channel.leftPad = 0;
        mean.channels.append(channel);
    }
    mean.places = mean.channels.size();
    mean.activeSens = qBound(0, first.activeSens, qMax(0, mean.places - 1));
    const bool isAny = std::any_of(mean.channels.cbegin(), mean.channels.cend(),
                                   [](const auto& channel) { return !channel.samples.isEmpty(); });
    mean.times = isAny ? first.times.mid(0, rows) : QVector<double>();
    return mean;
}
