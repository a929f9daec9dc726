#include "protocol/tembrindata.h"

#include "protocol/packets.h"

namespace {

/// Hands one sensor its bytes and moves on; false when they don't reach.
bool takeValue(Sensor* sensor, const unsigned char** data, int* left)
{
    if (sensor->numBytes > *left)
        return false;
    sensor->setLastValue(*data, sensor->numBytes);
    *data += sensor->numBytes;
    *left -= sensor->numBytes;
    return true;
}

} // namespace

// Runs for every sample: nothing here allocates.
void TembrinData::handleOnline(unsigned char* udata, int len)
{
    auto packet = Packets::parseOnline(udata, len);
    if (!packet)
        return;
    qCDebug(lcProtocol) << "logger" << index << *packet;
    if (packet->sample == 0)
        setActiveFromMask(packet->mask);
    for (const int i : qAsConst(activeIndices)) {
        if (!takeValue(sensors.at(i).data(), &packet->data, &packet->dataSize))
            break;
    }
    Q_EMIT onlineReceived(index, packet->sample, SampleBlock(), samplesWaiting);
}

void TembrinData::handleTelemetry(unsigned char* udata, int len)
{
    auto packet = Packets::parseSnapshot(udata, len);
    if (!packet)
        return;
    qCDebug(lcProtocol) << "logger" << index << *packet;
    if (!packet->sumGood)
        qCInfo(lcProtocol) << "logger" << index << "CS in trouble";
    for (const SensorPtr& sensor : qAsConst(sensors)) {
        if (!takeValue(sensor.data(), &packet->data, &packet->dataSize))
            break;
    }
    Q_EMIT newSnapReceived();
}

void TembrinData::tooSlowSignal()
{
    Q_EMIT onlineReceived(index, -1, SampleBlock(), -1);
}
