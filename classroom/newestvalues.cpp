#include "classroom/newestvalues.h"

#include "classroom/classrun.h"
#include "classroom/multiconnectionsmanager.h"
#include "classroom/replay.h"
#include "data/expdata.h"
#include "data/novalue.h"
#include "protocol/tembrindata.h"

namespace {
constexpr int msOfSnapshot = 5000; // a logger that is asked each second has fallen silent
}

NewestValues::NewestValues(multiConnectionsManager* manager, QObject* parent)
    : QObject(parent)
    , manager(manager)
{
    connect(&manager->run(), &ClassRun::rowTaken, this, &NewestValues::changed);
    connect(&manager->replay(), &Replay::moved, this, [this](int slot) {
        if (slot >= 0)
            Q_EMIT changed(slot);
    });
    for (int slot = 0; slot < mostLoggers; ++slot) {
        connect(manager->tembrinDataAt(slot), &TembrinData::newSnapReceived, this, [this, slot] {
            snapshots[slot].start();
            Q_EMIT changed(slot);
        });
    }
}

double NewestValues::value(int slot, int sensorID) const
{
    if (manager->replay().isOn())
        return ofRun(slot, sensorID);
    if (!manager->isTembrinConnect(slot))
        return noValue;
    return manager->isRunning(slot) ? ofRun(slot, sensorID) : ofSnapshot(slot, sensorID);
}

double NewestValues::ofRun(int slot, int sensorID) const
{
    const ExpData* const set = manager->dataAt(slot);
    const QVector<double>& column = set->getYNoConv(set->locateSensByID(sensorID));
    return column.isEmpty() ? noValue : column.last();
}

double NewestValues::ofSnapshot(int slot, int sensorID) const
{
    if (!snapshots[slot].isValid() || snapshots[slot].elapsed() > msOfSnapshot)
        return noValue;
    const TembrinData* const state = manager->tembrinDataAt(slot);
    const SensorList& sensors = state->getSensors();
    for (int i = 0; i < sensors.size(); ++i) {
        const int child = sensors.at(i)->hasVirtual ? sensors.at(i)->virtualSensorIDs.indexOf(sensorID) : 0;
        if (sensors.at(i)->hasVirtual ? child >= 0 : sensors.at(i)->ID == sensorID)
            return state->snapshot().value(i).value(child, noValue);
    }
    return noValue;
}
