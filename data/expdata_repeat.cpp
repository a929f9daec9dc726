#include "data/expdata.h"

// All that a repeated run is: the channels twice, and rows of samples that begin with the second half.

void ExpData::setDataAddRepeatExp()
{
    if (!isRepeatMode()) {
        firstLive = sensors.size();
        duplicateSensorList();
        curveModeHint.fill(-1);
    } else {
        y.remove(0, firstLive);
        minY.remove(0, firstLive);
        maxY.remove(0, firstLive);
        leftPad.remove(0, firstLive);
    }
    resizeChannels(sensors.size());
    finalData = false;
}

bool ExpData::isRepeatMode1stPhase() const
{
    return isRepeatMode() && getYSize(nSens - 1) < x.size();
}

void ExpData::duplicateSensorList()
{
    const SensorList first = sensors;
    for (const SensorPtr& original : first) {
        sensors.append(ownCopy(original));
        sensors.last()->specialOriginIndex += first.size();
    }
    nSens = sensors.size();
}
