#include "common/common.h"
#include "protocol/packets.h"
#include "protocol/tembrindata.h"

#include <algorithm>

namespace {

bool isExternalTemperature(int id)
{
    return id == SENSOR_EXT_TEMP || id == SENSOR_EXT_TEMP_NTC;
}

} // namespace

void TembrinData::setupSensorsForType(int type)
{
    if (identity.type == type)
        return;
    identity.type = type;
    clearSensors();
    if (const LoggerModel* model = loggerModel(type)) {
        if (model->packetSize > 0)
            stream.dataPacketSize = model->packetSize;
        for (const int id : model->sensorIDs) {
            if (id != 0)
                sensors.append(SensorPtr::create(id, units));
        }
    }
    noteSockets();
    Q_EMIT loggerTypeChanged();
}

void TembrinData::clearSensors()
{
    sensors.clear();
    snapshotValues.clear();
    run = RunDecoder(units);
    rows[0].clear();
    extTempIndex = sockets.place[0] = sockets.place[1] = -1;
    forgetOnlineMask();
}

void TembrinData::setActiveSensors(const SensorList& list)
{
    if (loggerRecognized)
        return;
    settings.mask = 0;
    for (const SensorPtr& sensor : list) {
        const int place = getIndexByID(sensor->ID);
        if (place >= 0)
            settings.mask |= quint16(1U << place);
    }
}

SensorList TembrinData::channels() const
{
    SensorList all;
    for (int i = 0; i < sensors.size(); ++i) {
        if (!sensors.at(i)->hasVirtual)
            all.append(sensors.at(i));
        for (int child = 0; child < sensors.at(i)->virtualSensorIDs.size(); ++child)
            all.append(SensorPtr::create(sensors.at(i)->virtualSensorIDs.at(child), units, i, child));
    }
    return all;
}

SensorPtr TembrinData::channel(int id) const
{
    for (const SensorPtr& channel : channels()) {
        const bool isFirstChild = channel->isVirtual && channel->virtualIndex == 0;
        if (channel->ID == id || (isExternalTemperature(channel->ID) && isExternalTemperature(id)) ||
            (isFirstChild && sensors.at(channel->inLoggerIndex)->ID == id))
            return channel;
    }
    return {};
}

int TembrinData::getIndexByID(int id) const
{
    const auto found = std::find_if(sensors.begin(), sensors.end(),
                                    [id](const SensorPtr& sensor) { return sensor->ID == id; });
    return found == sensors.end() ? -1 : static_cast<int>(found - sensors.begin());
}

void TembrinData::handleSensID(unsigned char* udata, int len)
{
    const auto packet = Packets::parseSensorList(udata, len);
    if (!packet)
        return;
    qCDebug(lcProtocol) << "logger" << index << *packet;
    vorta = false;
    vortaRun.forget();
    gotSensorList = true;
    clearSensors();
    for (const int id : packet->ids)
        appendFromSlot(id, {packet->external1, packet->external2});
    noteSockets();
    noteGates(packet->external1, packet->external2); // what was pulled out while the line was lost is gone
    // No logger has this type, so that the next status counts as a change of type and all views take the
    // list.
    identity.type = 0;
    Q_EMIT needLoggerType();
}

void TembrinData::appendFromSlot(int id, const int (&external)[2])
{
    const int place = sensors.size();
    if (id == SENSOR_BAROMETER && Common::isRussian()) {
        id = SENSOR_BAROMETER_KPA;
    } else if (id == SENSOR_EXTERNAL || id == SENSOR_EXTERNAL_B) {
        const int socket = id == SENSOR_EXTERNAL ? 0 : 1;
        sockets.place[socket] = place;
        if (external[socket] != 0)
            id = external[socket];
    }
    if (isExternalTemperature(id))
        extTempIndex = place;
    if (id != 0)
        sensors.append(SensorPtr::create(id, units));
}

void TembrinData::replaceSensor(int socket, int id)
{
    const int place = sockets.place[socket];
    id = Sensor::socketID(id);
    if (place < 0 || place >= sensors.size() || id == 0 || sensors.at(place)->ID == id)
        return;
    qCDebug(lcProtocol) << "logger" << index << "socket" << socket + 1 << "holds sensor" << id;
    replaceEntry(place, id);
    noteSockets();
}

/// A new object: who holds the old one keeps what it was.
void TembrinData::replaceEntry(int place, int id)
{
    sensors[place] = SensorPtr::create(id, units);
    forgetOnlineMask();
}

void TembrinData::noteSockets()
{
    for (int i = 0; i < 2; ++i) {
        const int id = sensors.value(sockets.place[i]) ? sensors.at(sockets.place[i])->ID : 0;
        settings.external[i] = Sensor::isIDVernier(id) || Sensor::isIDVestrel(id) ? id : 0;
    }
}

void TembrinData::plugIn(int socket, int id)
{
    const int empty = socket == 0 ? SENSOR_EXTERNAL : SENSOR_EXTERNAL_B;
    replaceSensor(socket, id == 0 ? empty : id);
    sockets.told[socket] = id;
}

void TembrinData::handleExtEvent(unsigned char* udata, int len)
{
    const auto packet = Packets::parseExternalEvent(udata, len);
    if (!packet)
        return;
    qCDebug(lcProtocol) << "logger" << index << *packet;
    noteGates(packet->first, packet->second);
    plugIn(0, packet->first);
    plugIn(1, packet->second);
    Q_EMIT statusReceived();
}

void TembrinData::handleQuellmarkSensors(int ext1, int ext2)
{
    noteGates(ext1, ext2);
    if (ext1 >= 0)
        plugIn(0, ext1);
    if (ext2 >= 0)
        plugIn(1, ext2);
}

void TembrinData::noteGates(int first, int second)
{
    const auto isIn = [first, second](int id) { return first == id || second == id; };
    sockets.hasHeartSensor = isIn(QUELLMARK_HEARTRATE_WAVE);
    sockets.hasGate = isIn(QUELLMARK_PHOTOGATE);
}
