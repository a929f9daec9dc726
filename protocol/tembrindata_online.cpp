#include "protocol/packets.h"
#include "protocol/tembrindata.h"

// Runs for every sample: nothing here allocates but for the first of a run.
void TembrinData::handleOnline(unsigned char* udata, int len)
{
    const auto packet = Packets::parseOnline(udata, len);
    if (!packet)
        return;
    qCDebug(lcProtocol) << "logger" << index << *packet;
    if (packet->sample == 0 || packet->mask != run.mask())
        freezeRun(packet->mask);
    if (packet->dataSize < run.bytesPerSample())
        return;
    run.decode(packet->data, rows[0].data());
    Q_EMIT onlineReceived(index, packet->sample, rows, stream.samplesWaiting);
}

void TembrinData::freezeRun(quint16 mask)
{
    run = RunDecoder(sensors, mask, units);
    rows[0].resize(run.valueCount());
    settings.mask = mask;
    qCDebug(lcProtocol) << "logger" << index << "a run, or a part of one, begins with mask" << Qt::hex << mask
                        << Qt::dec << "and" << run.valueCount() << "values a sample";
}

SensorList TembrinData::runChannels() const
{
    if (vorta)
        return vortaRun.channels();
    return run.sensorCount() > 0 ? run.channels() : RunDecoder(sensors, settings.mask, units).channels();
}

void TembrinData::handleTelemetry(unsigned char* udata, int len)
{
    const auto packet = Packets::parseSnapshot(udata, len);
    if (!packet)
        return;
    qCDebug(lcProtocol) << "logger" << index << *packet;
    if (!packet->sumGood)
        qCInfo(lcProtocol) << "logger" << index << "CS in trouble";
    snapshotValues.resize(sensors.size());
    int at = 0;
    for (int i = 0; i < sensors.size(); ++i) {
        const SensorKind kind(sensors.at(i)->ID, units);
        if (at + kind.numBytes() > packet->dataSize)
            break;
        snapshotValues[i].resize(kind.valueCount());
        kind.decode(packet->data + at, snapshotValues[i].data());
        at += kind.numBytes();
    }
    Q_EMIT newSnapReceived();
}

void TembrinData::tooSlowSignal()
{
    Q_EMIT onlineReceived(index, -1, SampleBlock(), -1);
}
