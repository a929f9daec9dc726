#include "protocol/packets.h"

#include <QtEndian>

#include <numeric>

// Failures are messages of the level info; the packets themselves, of the level debug, are off unless asked
// for.
Q_LOGGING_CATEGORY(lcProtocol, "pellandra.protocol", QtInfoMsg)

namespace Packets {

namespace {

constexpr int sensorListSize = 21;
constexpr int statusSize = 33;
constexpr int externalEventSize = 6;
constexpr int selfTestSize = 12;
constexpr int onlineHeaderSize = 8;
constexpr int snapshotHeaderSize = 4;
constexpr int storedDataSmallest = 20; ///< the longest header and the checksum
constexpr unsigned char typeDataWithSockets = 0x54;
constexpr unsigned char typeInfoWithSockets = 0x55;
constexpr int infoSize = 16;
constexpr int infoWithSocketsSize = 18;
constexpr int progMemSize = 136;
constexpr int eepromSize = 22;
constexpr int loaderSumsSize = 9;
constexpr int vortaStatusSize = 16;
constexpr int vortaStatusLongSize = 18;
constexpr quint16 vortaUsualGain = 285; ///< of the loggers whose status has no gain
constexpr int vortaSnapshotSize = 14;
constexpr int firstQuellmarkID = 100; ///< a nibble of the socket byte counts from here

quint16 word(const unsigned char* bytes)
{
    return qFromBigEndian<quint16>(bytes);
}

int fromBCD(unsigned char byte)
{
    return (byte >> 4) * 10 + (byte & 0x0F);
}

/// Six bytes: day, month, year from 2000, hour, minute, second.
QDateTime dateTimeFromBCD(const unsigned char* bytes)
{
    return QDateTime(QDate(2000 + fromBCD(bytes[2]), fromBCD(bytes[1]), fromBCD(bytes[0])),
                     QTime(fromBCD(bytes[3]), fromBCD(bytes[4]), fromBCD(bytes[5])), Qt::UTC);
}

int idOfNibble(int nibble)
{
    return nibble == 0 ? 0 : firstQuellmarkID + nibble;
}

const char* sumText(bool good)
{
    return good ? "" : ", wrong checksum";
}

} // namespace

bool isSumGood(const unsigned char* bytes, int len)
{
    return std::accumulate(bytes, bytes + len, 0u) % 256 == 0;
}

std::optional<SensorList> parseSensorList(const unsigned char* bytes, int len)
{
    if (len < sensorListSize)
        return std::nullopt;
    SensorList packet;
    std::copy(bytes + 3, bytes + 19, packet.ids.begin());
    packet.external1 = idOfNibble(bytes[19] >> 4);
    packet.external2 = idOfNibble(bytes[19] & 0x0F);
    packet.sumGood = isSumGood(bytes, sensorListSize);
    return packet;
}

std::optional<Status> parseStatus(const unsigned char* bytes, int len)
{
    if (len < statusSize)
        return std::nullopt;
    Status packet;
    packet.eventCode = bytes[3];
    packet.type = bytes[4];
    packet.firmware = fromBCD(bytes[5]);
    packet.smallFirmware = fromBCD(bytes[6]);
    packet.runState = bytes[7];
    packet.numExperiments = bytes[8];
    packet.mask = word(bytes + 9);
    packet.rateCode = bytes[11];
    packet.samples = bytes[12];
    packet.dateTime = dateTimeFromBCD(bytes + 13);
    packet.trigType = bytes[21];
    packet.trigSens = bytes[22];
    packet.trigLevel = word(bytes + 23);
    packet.externalCode1 = bytes[25];
    packet.externalCode2 = bytes[26];
    packet.rangeSens = bytes[27];
    packet.rangeMin = word(bytes + 28);
    packet.options = bytes[30];
    packet.language = bytes[31];
    packet.sumGood = isSumGood(bytes, statusSize);
    return packet;
}

std::optional<Online> parseOnline(const unsigned char* bytes, int len)
{
    if (len < onlineHeaderSize + 1)
        return std::nullopt;
    return Online{word(bytes + 4), qFromBigEndian<qint16>(bytes + 6), bytes + onlineHeaderSize,
                  len - onlineHeaderSize - 1};
}

std::optional<Snapshot> parseSnapshot(const unsigned char* bytes, int len)
{
    if (len < snapshotHeaderSize + 1)
        return std::nullopt;
    return Snapshot{bytes + snapshotHeaderSize, len - snapshotHeaderSize - 1, isSumGood(bytes, len)};
}

std::optional<ExternalEvent> parseExternalEvent(const unsigned char* bytes, int len)
{
    if (len < externalEventSize)
        return std::nullopt;
    return ExternalEvent{bytes[3], bytes[4], isSumGood(bytes, externalEventSize)};
}

std::optional<SelfTest> parseSelfTest(const unsigned char* bytes, int len)
{
    if (len < selfTestSize)
        return std::nullopt;
    return SelfTest{bytes + 3, selfTestSize - 4, isSumGood(bytes, selfTestSize)};
}

std::optional<StoredData> parseStoredData(const unsigned char* bytes, int len)
{
    if (len < storedDataSmallest)
        return std::nullopt;
    StoredData packet{};
    packet.withSockets = bytes[2] == typeDataWithSockets;
    packet.number = qFromBigEndian<qint16>(bytes + 4);
    packet.sumGood = isSumGood(bytes, len);
    int start = 6;
    if (packet.number == 0) {
        packet.mask = word(bytes + 6);
        packet.rateCode = bytes[8];
        packet.sampleCount = word(bytes + 9);
        start = 17;
        if (packet.withSockets) {
            packet.externalCode1 = bytes[17];
            packet.externalCode2 = bytes[18];
            start = 19;
        }
    }
    packet.samples = bytes + start;
    packet.samplesSize = len - start - 1;
    return packet;
}

std::optional<Info> parseInfo(const unsigned char* bytes, int len)
{
    if (len < infoSize)
        return std::nullopt;
    Info packet{};
    packet.withSockets = bytes[2] == typeInfoWithSockets;
    if (packet.withSockets && len < infoWithSocketsSize)
        return std::nullopt;
    packet.number = bytes[3];
    packet.mask = word(bytes + 4);
    packet.rateCode = bytes[6];
    packet.sampleCount = word(bytes + 7);
    packet.dateTime = dateTimeFromBCD(bytes + 9);
    if (packet.withSockets) {
        packet.externalCode1 = bytes[15];
        packet.externalCode2 = bytes[16];
    }
    packet.sumGood = isSumGood(bytes, packet.withSockets ? infoWithSocketsSize : infoSize);
    return packet;
}

std::optional<LoaderPage> parseProgMem(const unsigned char* bytes, int len)
{
    if (len < progMemSize)
        return std::nullopt;
    return LoaderPage{qFromBigEndian<qint32>(bytes + 3),
                      QByteArray(reinterpret_cast<const char*>(bytes) + 7, progMemSize - 8),
                      isSumGood(bytes, progMemSize)};
}

std::optional<LoaderPage> parseEeprom(const unsigned char* bytes, int len)
{
    if (len < eepromSize)
        return std::nullopt;
    return LoaderPage{word(bytes + 3), QByteArray(reinterpret_cast<const char*>(bytes) + 5, eepromSize - 6),
                      isSumGood(bytes, eepromSize)};
}

std::optional<LoaderSums> parseLoaderSums(const unsigned char* bytes, int len)
{
    if (len < loaderSumsSize)
        return std::nullopt;
    return LoaderSums{bytes[3], qFromBigEndian<qint32>(bytes + 4)};
}

std::optional<VortaStatus> parseVortaStatus(const unsigned char* bytes, int len)
{
    const bool withGain = len >= vortaStatusLongSize;
    if (len < vortaStatusSize)
        return std::nullopt;
    const unsigned char* offsets = bytes + (withGain ? 12 : 10);
    VortaStatus packet;
    packet.eventCode = bytes[3];
    packet.hardware = fromBCD(bytes[4]);
    packet.software = fromBCD(bytes[5]);
    packet.runState = bytes[6];
    packet.rate = bytes[7];
    packet.samples = word(bytes + 8);
    packet.gain = withGain ? word(bytes + 10) : vortaUsualGain;
    packet.offset1 = word(offsets);
    packet.offset2 = word(offsets + 2);
    packet.sumGood = isSumGood(bytes, withGain ? vortaStatusLongSize : vortaStatusSize);
    return packet;
}

std::optional<VortaSnapshot> parseVortaSnapshot(const unsigned char* bytes, int len)
{
    if (len < vortaSnapshotSize)
        return std::nullopt;
    VortaSnapshot packet;
    for (int i = 0; i < 5; ++i) {
        const quint16 raw = word(bytes + 3 + 2 * i);
        packet.words[i] = i < 2 ? raw : quint16(raw << 4);
    }
    packet.sumGood = isSumGood(bytes, vortaSnapshotSize);
    return packet;
}

VortaWords vortaFastWords(const unsigned char* b)
{
    return {quint16((b[0] & 0x0F) << 8 | b[1]), 0, quint16(word(b + 2) & 0xFFF0), 0,
            quint16(word(b + 3) << 4)};
}

VortaWords vortaSlowWords(const unsigned char* b)
{
    return {quint16((b[0] & 0x0F) << 8 | b[1]), quint16(word(b + 2) >> 4), quint16(word(b + 3) << 4),
            quint16(word(b + 5) & 0xFFF0), quint16(word(b + 6) << 4)};
}

QDebug operator<<(QDebug debug, const SensorList& packet)
{
    QDebugStateSaver saver(debug);
    debug.nospace() << "sensor list";
    for (const unsigned char id : packet.ids)
        debug << ' ' << int(id);
    return debug << ", sockets " << packet.external1 << ' ' << packet.external2 << sumText(packet.sumGood);
}

QDebug operator<<(QDebug debug, const Status& packet)
{
    QDebugStateSaver saver(debug);
    return debug.nospace() << Qt::hex << "status, event " << packet.eventCode << ", type " << packet.type
                           << Qt::dec << ", firmware " << packet.firmware << '.' << packet.smallFirmware
                           << ", state " << packet.runState << Qt::hex << ", mask " << packet.mask << Qt::dec
                           << ", rate code " << packet.rateCode << ", samples " << packet.samples
                           << ", stored " << packet.numExperiments << sumText(packet.sumGood);
}

QDebug operator<<(QDebug debug, const Online& packet)
{
    QDebugStateSaver saver(debug);
    return debug.nospace() << "sample " << packet.sample << ", mask " << Qt::hex << packet.mask << Qt::dec
                           << ", " << packet.dataSize << " bytes";
}

QDebug operator<<(QDebug debug, const Snapshot& packet)
{
    QDebugStateSaver saver(debug);
    return debug.nospace() << "snapshot, " << packet.dataSize << " bytes" << sumText(packet.sumGood);
}

QDebug operator<<(QDebug debug, const ExternalEvent& packet)
{
    QDebugStateSaver saver(debug);
    return debug.nospace() << "plugged in: " << packet.first << ", " << packet.second
                           << sumText(packet.sumGood);
}

QDebug operator<<(QDebug debug, const SelfTest& packet)
{
    QDebugStateSaver saver(debug);
    return debug.nospace() << "self test, first byte " << Qt::hex << int(packet.results[0]) << Qt::dec
                           << sumText(packet.sumGood);
}

QDebug operator<<(QDebug debug, const StoredData& packet)
{
    QDebugStateSaver saver(debug);
    debug.nospace() << "stored data " << packet.number << ", " << packet.samplesSize << " bytes";
    if (packet.number == 0) {
        debug << ", mask " << Qt::hex << packet.mask << Qt::dec << ", rate code " << packet.rateCode
              << ", samples " << packet.sampleCount;
    }
    return debug << sumText(packet.sumGood);
}

QDebug operator<<(QDebug debug, const Info& packet)
{
    QDebugStateSaver saver(debug);
    return debug.nospace() << "experiment " << packet.number << ", mask " << Qt::hex << packet.mask << Qt::dec
                           << ", rate code " << packet.rateCode << ", samples " << packet.sampleCount
                           << sumText(packet.sumGood);
}

QDebug operator<<(QDebug debug, const LoaderPage& packet)
{
    QDebugStateSaver saver(debug);
    return debug.nospace() << "loader page at " << Qt::hex << packet.address << Qt::dec << ", "
                           << packet.data.size() << " bytes" << sumText(packet.sumGood);
}

QDebug operator<<(QDebug debug, const LoaderSums& packet)
{
    QDebugStateSaver saver(debug);
    return debug.nospace() << "loader sums " << packet.eeprom << ' ' << packet.flash;
}

QDebug operator<<(QDebug debug, const VortaStatus& packet)
{
    QDebugStateSaver saver(debug);
    return debug.nospace() << "Vorta status, event " << Qt::hex << packet.eventCode << Qt::dec << ", state "
                           << packet.runState << ", rate " << packet.rate << ", samples " << packet.samples
                           << ", gain " << packet.gain << ", offsets " << packet.offset1 << ' '
                           << packet.offset2 << sumText(packet.sumGood);
}

QDebug operator<<(QDebug debug, const VortaSnapshot& packet)
{
    QDebugStateSaver saver(debug);
    debug.nospace() << "Vorta snapshot" << Qt::hex;
    for (const quint16 word : packet.words)
        debug << ' ' << word;
    return debug << Qt::dec << sumText(packet.sumGood);
}

} // namespace Packets
