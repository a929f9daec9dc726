#include "classroom/classrun.h"

#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"

#include <utility>

void ClassRun::beginSimulation(const SensorList& channels, double period, const QString& name)
{
    if (!manager->dataC() || !data(0))
        return;
    beginRun();
    isOn = false; // no logger is in it, so one that starts with its own key begins another
    for (int slot = 0; slot < manager->nMaxTembrins(); ++slot) {
        const bool isGivenUp = places[slot].isGivenUp;
        places[slot] = Place();
        places[slot].isGivenUp = isGivenUp;
    }
    isPlayed = true;
    data(0)->setDataNewEmpty(channels, period, name);
    data(0)->setSelectedSensor(0);
    Q_EMIT experimentBegun(0);
    set.rebuild(1);
    Q_EMIT classBegun();
    for (int slot = 0; slot < manager->nMaxTembrins(); ++slot)
        Q_EMIT phaseChanged(slot); // who was lost in the run before is no more
}

void ClassRun::takeSimulated(double time, const QVector<double>& values)
{
    if (!isPlayed)
        return;
    data(0)->addSample(time, values);
    set.take(0);
    Q_EMIT rowTaken(0, time, values);
    ++taken;
    Q_EMIT samplesTaken(0, 0);
}

void ClassRun::endSimulation()
{
    if (!isPlayed)
        return;
    duration = elapsed();
    isPlayed = false;
    data(0)->finalData = true;
    manager->dataC()->setXRange();
    Q_EMIT simulationEnded();
    Q_EMIT ended();
}
