#include "protocol/tembrindata.h"

#include "common/common.h"
#include "common/settings.h"
#include "protocol/packets.h"

#include <algorithm>

namespace {

constexpr const char* rateNames[RateTables::count] = {
    QT_TRANSLATE_NOOP("TembrinData", "Manual"),    QT_TRANSLATE_NOOP("TembrinData", "1/Min"),
    QT_TRANSLATE_NOOP("TembrinData", "1/Sec"),     QT_TRANSLATE_NOOP("TembrinData", "10/Sec"),
    QT_TRANSLATE_NOOP("TembrinData", "25/Sec"),    QT_TRANSLATE_NOOP("TembrinData", "100/Sec"),
    QT_TRANSLATE_NOOP("TembrinData", "1000/Sec"),  QT_TRANSLATE_NOOP("TembrinData", "25000/Sec"),
    QT_TRANSLATE_NOOP("TembrinData", "25000/Sec"), QT_TRANSLATE_NOOP("TembrinData", "100000/Sec"),
};

constexpr const char* vortaRateNames[RateTables::vortaCount] = {
    "",
    QT_TRANSLATE_NOOP("TembrinData", "1/Sec"),
    QT_TRANSLATE_NOOP("TembrinData", "10/Sec"),
    QT_TRANSLATE_NOOP("TembrinData", "25/Sec"),
    QT_TRANSLATE_NOOP("TembrinData", "100/Sec"),
    QT_TRANSLATE_NOOP("TembrinData", "500/Sec"),
};

constexpr int onePerSecond = 2;

bool isExternalTemperature(int id)
{
    return id == SENSOR_EXT_TEMP || id == SENSOR_EXT_TEMP_NTC;
}

bool isSameSensor(int id, int other)
{
    return id == other || (isExternalTemperature(id) && isExternalTemperature(other));
}

} // namespace

TembrinData::TembrinData(int index, const Units& units, QObject* parent)
    : QObject(parent)
    , index(index)
    , units(units)
    , download(index)
{
    setNames();
    setupSensorsForType(LOGGER_BIRCH);
    connectDownload();
}

TembrinData::~TembrinData() = default;

void TembrinData::setNames()
{
    for (int i = 0; i < RateTables::count; ++i)
        RateNames[i] = tr(rateNames[i]);
    for (int i = 1; i < RateTables::vortaCount; ++i)
        VortaRateNames[i] = tr(vortaRateNames[i]);
    SamplesNames[0] = tr("10");
    SamplesNames[1] = tr("100");
    SamplesNames[2] = tr("1000");
    SamplesNames[4] = tr("30000");
    TrigTypeNames[0] = tr("Not active");
    TrigTypeNames[1] = tr("Rising edge");
    TrigTypeNames[2] = tr("Falling edge");
}

void TembrinData::setSamplesNamesForType()
{
    SamplesNames[3] = tembrinType == LOGGER_SORREL_BASIC ? tr("3000") : tr("10000");
}

void TembrinData::setupSensorsForType(int type)
{
    if (tembrinType == type)
        return;
    tembrinType = static_cast<short>(type);
    setSamplesNamesForType();
    clearSensors();
    if (const LoggerModel* model = loggerModel(type)) {
        if (model->packetSize > 0)
            dataPacketSize = model->packetSize;
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
    isRunFrozen = false;
    extTempIndex = ext1Index = ext2Index = -1;
    forgetOnlineMask();
}

void TembrinData::forgetConnection()
{
    forgetOnlineMask();
    samplesWaiting = 0;
    isRunFrozen = false;
    vortaRun.interrupt();
    download.cancel();
}

QString TembrinData::modelName(int type)
{
    const LoggerModel* model = loggerModel(type);
    return model && model->name ? tr(model->name) : tr("Tembrin 0x%1").arg(type, 0, 16);
}

QString TembrinData::versionLine() const
{
    const QString name = modelName(tembrinType);
    if (tembrinType == LOGGER_VORTA) {
        return tr("%1, Hardware %2, firmware %3")
            .arg(name, QString::number(Vorta_HardwareVersion), QString::number(Vorta_SoftwareVersion));
    }
    return tr("%1, firmware %2.%3%4")
        .arg(name, QString::number(firmwareVersion), QLatin1String(firmwareSmallVersion <= 9 ? "0" : ""),
             QString::number(firmwareSmallVersion));
}

short TembrinData::fixedRate(short code) const
{
    return RateTables::fromCode(code, tembrinType, firmwareVersion, firmwareSmallVersion);
}

short TembrinData::fixedRateDecrease(short rate) const
{
    return RateTables::toCode(rate, tembrinType, firmwareVersion, firmwareSmallVersion);
}

bool TembrinData::isIncludedInRateMenu(short rate) const
{
    return RateTables::isOffered(rate, tembrinType, firmwareVersion, firmwareSmallVersion);
}

QString TembrinData::getRateNameFromDT(double dt) const
{
    const auto* found = std::find(std::begin(RateTables::seconds), std::end(RateTables::seconds), dt);
    return found == std::end(RateTables::seconds) ? RateNames[onePerSecond]
                                                  : RateNames[found - RateTables::seconds];
}

double TembrinData::samplePeriod() const
{
    if (vorta)
        return vortaRun.period() > 0 ? vortaRun.period() : VortaRates[settings.vortaRate];
    return Rates[settings.rate];
}

quint16 TembrinData::activeMask() const
{
    quint16 mask = 0;
    for (int i = 0; i < qMin(sensors.size(), 16); ++i) {
        if (sensors.at(i)->active)
            mask |= quint16(1u << i);
    }
    return mask;
}

void TembrinData::setActiveFromMask(quint16 mask)
{
    for (int i = 0; i < sensors.size(); ++i)
        sensors.at(i)->active = mask >> i & 1;
    settings.mask = mask;
}

void TembrinData::setActiveSensors(const SensorList& list)
{
    for (const SensorPtr& sensor : qAsConst(sensors)) {
        sensor->active = std::any_of(list.begin(), list.end(),
                                     [&](const SensorPtr& other) { return other->ID == sensor->ID; });
    }
}

SensorPtr TembrinData::getSensByID(int id, int* virtualIndex) const
{
    for (const SensorPtr& sensor : sensors) {
        const bool isItself = isSameSensor(sensor->ID, id);
        const int child = isItself ? -1 : sensor->virtualSensorIDs.indexOf(id);
        if (!isItself && child < 0)
            continue;
        if (virtualIndex)
            *virtualIndex = child;
        return sensor;
    }
    return {};
}

SensorPtr TembrinData::getSensByName(const QString& name, int* virtualIndex) const
{
    for (const SensorPtr& sensor : sensors) {
        const bool isItself = sensor->name == name;
        const int child = isItself ? -1 : sensor->virtualSensorsNames.indexOf(name);
        if (!isItself && child < 0)
            continue;
        if (virtualIndex)
            *virtualIndex = child;
        return sensor;
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
    for (int i = 0; i < static_cast<int>(packet->ids.size()); ++i)
        appendFromSlot(i, packet->ids[i], packet->external1, packet->external2);
    noteSockets();
    // No logger has this type, so that the next status counts as a change of type and all views take the
    // list.
    tembrinType = 0;
    Q_EMIT needLoggerType();
}

void TembrinData::appendFromSlot(int slot, int id, int external1, int external2)
{
    if (id == SENSOR_BAROMETER && Common::isRussian()) {
        id = SENSOR_BAROMETER_KPA;
    } else if (id == SENSOR_EXTERNAL || id == SENSOR_EXTERNAL_B) {
        const bool first = id == SENSOR_EXTERNAL;
        (first ? ext1Index : ext2Index) = slot;
        const int plugged = first ? external1 : external2;
        if (plugged != 0)
            id = plugged;
        if (external1 == QUELLMARK_PHOTOGATE || external2 == QUELLMARK_PHOTOGATE)
            hasPhotogate = true;
    }
    if (id != 0)
        sensors.append(SensorPtr::create(id, units));
    if (isExternalTemperature(id))
        extTempIndex = slot;
}

void TembrinData::replaceSensor(bool first, int id)
{
    const int slot = first ? ext1Index : ext2Index;
    id = Sensor::socketID(id);
    if (slot < 0 || slot >= sensors.size() || id == 0 || sensors.at(slot)->ID == id)
        return;
    qCDebug(lcProtocol) << "logger" << index << "socket" << (first ? 1 : 2) << "holds sensor" << id;
    replaceEntry(slot, id);
    noteSockets();
}

/// A new object: who holds the old one keeps what it was.
void TembrinData::replaceEntry(int slot, int id)
{
    const SensorPtr sensor = SensorPtr::create(id, units);
    sensor->active = sensors.at(slot)->active;
    sensors[slot] = sensor;
    forgetOnlineMask();
}

void TembrinData::noteSockets()
{
    const int slots[] = {ext1Index, ext2Index};
    for (int i = 0; i < 2; ++i) {
        const bool hasSocket = slots[i] >= 0 && slots[i] < sensors.size();
        const int id = hasSocket ? sensors.at(slots[i])->ID : 0;
        settings.external[i] = Sensor::isIDVernier(id) || Sensor::isIDVestrel(id) ? id : 0;
    }
}

void TembrinData::noteGates(int first, int second)
{
    hasPhotogateCompatibleSensor = first == QUELLMARK_HEARTRATE_WAVE || second == QUELLMARK_HEARTRATE_WAVE;
    hasPhotogate = first == QUELLMARK_PHOTOGATE || second == QUELLMARK_PHOTOGATE;
}

void TembrinData::plugIn(bool first, int id)
{
    const int empty = first ? SENSOR_EXTERNAL : SENSOR_EXTERNAL_B;
    replaceSensor(first, id == 0 ? empty : id);
    (first ? ext1Code : ext2Code) = id;
}

void TembrinData::handleExtEvent(unsigned char* udata, int len)
{
    const auto packet = Packets::parseExternalEvent(udata, len);
    if (!packet)
        return;
    qCDebug(lcProtocol) << "logger" << index << *packet;
    noteGates(packet->first, packet->second);
    plugIn(true, packet->first);
    plugIn(false, packet->second);
    Q_EMIT statusReceived();
}

void TembrinData::handleQuellmarkSensors(int ext1, int ext2)
{
    noteGates(ext1, ext2);
    if (ext1 >= 0)
        plugIn(true, ext1);
    if (ext2 >= 0)
        plugIn(false, ext2);
}
