#pragma once

#include <QPointF>
#include <QString>
#include <QVector>

class ExpData;

/// What somebody expects a channel to do: a line over the time, drawn before it was measured. It knows its
/// channel by what that measures, so it stays when a run takes the place of another.
struct Prediction
{
    static constexpr int mostPoints = 10000;

    int sensorID = 0;
    int number = 0;          ///< which of the channels with this ID; of a class all groups' are meant
    QVector<QPointF> points; ///< seconds and base unit, in the order of time

    bool isOfSame(const Prediction& other) const
    {
        return sensorID == other.sensorID && number == other.number;
    }
    /// The pen went from one point straight to the other, in either direction: what was there before goes.
    void draw(const QPointF& from, const QPointF& to);
};
bool operator==(const Prediction& a, const Prediction& b);

namespace Predictions {

/// Of a channel, still without points.
Prediction about(const ExpData& set, int channel);
/// The first channel that a prediction is about, -1 where the set has none.
int channelOf(const ExpData& set, const Prediction& prediction);
/// Null without one.
const Prediction* of(const ExpData& set, int channel);
/// Over the time that a prediction and the curve both have, the mean of how far samples lie from the line,
/// base unit; gaps count nothing. Not a number where there is no such sample.
double meanDeviation(const Prediction& prediction, const QVector<double>& times,
                     const QVector<double>& samples);
/// The same of a set, in the unit on display; in a class over the samples of all groups that measure it.
double meanDeviation(const ExpData& set, const Prediction& prediction, bool isClass);
/// With the decimals and the unit of the channel; empty where there is nothing to tell.
QString deviationText(const ExpData& set, const Prediction& prediction, bool isClass);

} // namespace Predictions
