#pragma once

#include "data/expdata.h"

inline Units inFahrenheit()
{
    Units units;
    units.fahrenheit = true;
    return units;
}

/// A loaded set whose times go as far as the first channel; without a `dt` they count the samples.
inline void load(ExpData* data, const QVector<int>& ids, const QVector<QVector<double>>& channels,
                 double dt = 1)
{
    QVector<double> t;
    for (int i = 0; i < channels.constFirst().size(); ++i)
        t.append(i * (dt > 0 ? dt : 1));
    data->setDataNew(ids.size(), t, dt);
    for (int c = 0; c < ids.size(); ++c)
        data->addSensorData(c, ids.at(c), channels.at(c), -1);
}
