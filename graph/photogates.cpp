#include "graph/photogates.h"

#include "data/expdata.h"
#include "graph/markertexts.h"
#include "graph/myplotmarker.h"

namespace {

constexpr double gateLevel = 5;      // V, height of a blocked gate, which its text points at
constexpr double belowGateLevel = 4; // so that a second text does not hide the first

void addSpeed(const ExpData& data, int iSens, QVector<Photogates::Told>* result)
{
    double speed = 0;
    double midTime = 0;
    double dt = 0;
    double width = 0;
    data.photoSpeed(iSens, &speed, &midTime, &dt, &width);
    if (speed != 0)
        result->append({iSens, QPointF(midTime, gateLevel),
                        QPoint(myPlotMarker::textDistance, -myPlotMarker::textDistance),
                        MarkerTexts::speed({dt, width, speed})});
}

void addAcceleration(const ExpData& data, int iSens1, int iSens2, QVector<Photogates::Told>* result)
{
    double accel = 0;
    double dV = 0;
    double midTime = 0;
    double dt = 0;
    data.photoAccel(iSens1, iSens2, &accel, &dV, &midTime, &dt);
    if (dt != 0)
        result->append({iSens1, QPointF(midTime, belowGateLevel), QPoint(0, 0),
                        MarkerTexts::acceleration({dt, dV, accel})});
}

} // namespace

QVector<Photogates::Told> Photogates::read(const ExpData& data)
{
    QVector<Told> result;
    QVector<int> gates;
    for (int i = 0; i < data.getNSens(); ++i) {
        const SensorPtr& sensor = data.getSens(i);
        if (!sensor || !Sensor::isPhotoGate(sensor->ID))
            continue;
        addSpeed(data, i, &result);
        gates.append(i);
    }
    if (gates.size() == 2)
        addAcceleration(data, gates[0], gates[1], &result);
    return result;
}
