#include "data/prediction.h"

#include <algorithm>
#include <cmath>

#include "data/expdata.h"

namespace {

struct Deviation
{
    double sum = 0;
    int count = 0;
    double mean() const { return count > 0 ? sum / count : qQNaN(); }
};

void add(Deviation* to, const Prediction& prediction, const QVector<double>& times,
         const QVector<double>& samples)
{
    const QVector<QPointF>& points = prediction.points;
    if (points.isEmpty())
        return;
    const int end = std::min(times.size(), samples.size());
    const auto* const first = std::lower_bound(times.cbegin(), times.cbegin() + end, points.constFirst().x());
    int next = 0;
    for (int i = int(first - times.cbegin()); i < end && times.at(i) <= points.constLast().x(); ++i) {
        while (points.at(next).x() < times.at(i))
            ++next;
        if (!std::isfinite(samples.at(i)))
            continue;
        const QPointF& right = points.at(next);
        const QPointF& left = points.at(std::max(0, next - 1));
        const double width = right.x() - left.x();
        const double part = width > 0 ? (times.at(i) - left.x()) / width : 1;
        to->sum += std::abs(samples.at(i) - (left.y() + part * (right.y() - left.y())));
        ++to->count;
    }
}

} // namespace

void Prediction::draw(const QPointF& from, const QPointF& to)
{
    const bool isForth = from.x() <= to.x();
    const QPointF& left = isForth ? from : to;
    const QPointF& right = isForth ? to : from;
    const auto isBefore = [](const QPointF& point, double time) { return point.x() < time; };
    auto* const begin = std::lower_bound(points.begin(), points.end(), left.x(), isBefore);
    auto* const end = std::find_if(begin, points.end(), [&](const QPointF& p) { return p.x() > right.x(); });
    const auto at = int(begin - points.begin());
    points.erase(begin, end);
    if (points.size() > mostPoints - 2)
        return;
    if (left.x() < right.x())
        points.insert(at, right);
    points.insert(at, left.x() < right.x() ? left : to);
}

bool operator==(const Prediction& a, const Prediction& b)
{
    return a.isOfSame(b) && a.points == b.points;
}

Prediction Predictions::about(const ExpData& set, int channel)
{
    Prediction prediction;
    const SensorPtr& sensor = set.getSens(channel);
    if (!sensor)
        return prediction;
    prediction.sensorID = sensor->ID;
    for (int i = 0; i < channel; ++i)
        prediction.number += set.getSens(i) && set.getSens(i)->ID == sensor->ID ? 1 : 0;
    return prediction;
}

int Predictions::channelOf(const ExpData& set, const Prediction& prediction)
{
    int before = 0;
    for (int i = 0; i < set.getNSens(); ++i) {
        const SensorPtr& sensor = set.getSens(i);
        if (sensor && sensor->ID == prediction.sensorID && before++ == prediction.number)
            return i;
    }
    return -1;
}

const Prediction* Predictions::of(const ExpData& set, int channel)
{
    const auto* const found =
        std::find_if(set.predictions.cbegin(), set.predictions.cend(),
                     [&](const Prediction& prediction) { return channelOf(set, prediction) == channel; });
    return found == set.predictions.cend() ? nullptr : found;
}

double Predictions::meanDeviation(const Prediction& prediction, const QVector<double>& times,
                                  const QVector<double>& samples)
{
    Deviation deviation;
    add(&deviation, prediction, times, samples);
    return deviation.mean();
}

double Predictions::meanDeviation(const ExpData& set, const Prediction& prediction, bool isClass)
{
    const int channel = channelOf(set, prediction);
    if (channel < 0)
        return qQNaN();
    const SensorPtr& sensor = set.getSens(channel);
    Deviation deviation;
    for (int i = 0; i < set.getNSens(); ++i) {
        const SensorPtr& other = set.getSens(i);
        const bool isMeant =
            isClass ? other && !set.isAverage(i) && other->specialType == 0 && other->isSameQuantity(*sensor)
                    : i == channel;
        if (isMeant)
            add(&deviation, prediction, set.getX(), set.getYNoConv(i));
    }
    return deviation.mean() * std::abs(sensor->altUnit().factor);
}

QString Predictions::deviationText(const ExpData& set, const Prediction& prediction, bool isClass)
{
    const double mean = meanDeviation(set, prediction, isClass);
    if (!std::isfinite(mean))
        return {};
    const SensorPtr& sensor = set.getSens(channelOf(set, prediction));
    return QStringLiteral("%1 %2").arg(QString::number(mean, 'f', int(sensor->precision)), sensor->unitName);
}
