#include "protocol/tembrindata.h"

#include "protocol/packets.h"

#include <QtEndian>

#include <algorithm>

namespace {

// The first of the two start bytes names the family.
constexpr unsigned char familyLogger = 0x2E;
constexpr unsigned char familyVorta = 0x3E;
constexpr unsigned char familyLoader = 0x4C;

constexpr int snapshotFrame = 5; ///< start bytes, type, size, checksum
constexpr int onlineFrame = 9;   ///< the same, mask and sample number

// Sizes that are not the same for every packet of a kind.
constexpr int sizeOfSnapshot = -1;
constexpr int sizeOfOnline = -2;
constexpr int sizeOfData = -3;
// What looking at the head of a packet may give instead of its size.
constexpr int sizeNotKnownYet = 0;
constexpr int sizeWrong = -1;

bool isFamily(unsigned char byte)
{
    return byte == familyLogger || byte == familyVorta || byte == familyLoader;
}

bool isSecondStartByte(unsigned char family, unsigned char byte)
{
    if (family == familyLogger)
        return byte == 0x69;
    return byte == 0x79 || (family == familyVorta && byte == 0x7A);
}

PacketKind incomplete(int* length)
{
    *length = 0;
    return PacketKind::Incomplete;
}

/// Everything up to the next byte that a packet may begin with.
PacketKind junk(const unsigned char* bytes, int size, int* length)
{
    *length = static_cast<int>(std::find_if(bytes + 1, bytes + size, isFamily) - bytes);
    return PacketKind::Junk;
}

} // namespace

/// When a packet is one: at any other time its bytes are junk.
enum class TembrinData::Known
{
    Always,
    BeforeListOrInSession,
    AfterList,
    InSession,
    InDownload,
    OfVorta
};

struct TembrinData::PacketRow
{
    unsigned char family;
    unsigned char type;
    int size;
    Known when;
    PacketKind kind;
    bool countsWaiting; ///< packets of this size behind it are counted
    void (TembrinData::*handler)(unsigned char*, int);
};

// clang-format off
const TembrinData::PacketRow TembrinData::packetRows[] = {
    {familyLogger, 0x84, sizeOfOnline, Known::InSession, PacketKind::Sample, true, &TembrinData::handleOnline},
    {familyLogger, 0x83, 33, Known::AfterList, PacketKind::Status, false, &TembrinData::handleStatus},
    {familyLogger, 0x82, 21, Known::BeforeListOrInSession, PacketKind::Packet, false, &TembrinData::handleSensID},
    {familyLogger, 0x81, sizeOfSnapshot, Known::InSession, PacketKind::Packet, false, &TembrinData::handleTelemetry},
    {familyLogger, 0x44, sizeOfData, Known::InDownload, PacketKind::Packet, false, &TembrinData::handleDataPacket},
    {familyLogger, 0x54, sizeOfData, Known::InDownload, PacketKind::Packet, false, &TembrinData::handleDataPacket},
    {familyLogger, 0x45, 16, Known::InSession, PacketKind::Packet, false, &TembrinData::handleInfoPacket},
    {familyLogger, 0x55, 18, Known::InSession, PacketKind::Packet, false, &TembrinData::handleInfoPacket},
    {familyLogger, 0x85, 6, Known::InSession, PacketKind::Packet, false, &TembrinData::handleExtEvent},
    {familyLogger, 0xA8, 12, Known::InSession, PacketKind::Packet, false, &TembrinData::handleTestData},
    {familyVorta, 0x83, 16, Known::Always, PacketKind::Packet, true, &TembrinData::handleVortaStatus},
    {familyVorta, 0x84, 18, Known::Always, PacketKind::Packet, true, &TembrinData::handleVortaStatus},
    {familyVorta, 0x81, 14, Known::OfVorta, PacketKind::Packet, false, &TembrinData::handleVortaFetch},
    {familyVorta, 0xF0, 12, Known::OfVorta, PacketKind::Packet, true, &TembrinData::handleVortaOnlineSlow},
    {familyVorta, 0xF1, 36, Known::OfVorta, PacketKind::Packet, true, &TembrinData::handleVortaOnlineSlow},
    {familyVorta, 0xF2, 84, Known::OfVorta, PacketKind::Packet, true, &TembrinData::handleVortaOnlineSlow},
    {familyVorta, 0xF3, 254, Known::OfVorta, PacketKind::Packet, true, &TembrinData::handleVortaOnlineFast},
    {familyLoader, 0x11, 5, Known::Always, PacketKind::BootloadReady, false, nullptr},
    {familyLoader, 0x12, 5, Known::Always, PacketKind::BootloadReadyVorta, false, nullptr},
    {familyLoader, 0x14, 4, Known::Always, PacketKind::BootloadCommandOK, false, nullptr},
    {familyLoader, 0x15, 4, Known::Always, PacketKind::BootloadCommandBad, false, nullptr},
    {familyLoader, 0x20, 4, Known::Always, PacketKind::BootloadEraseOK, false, nullptr},
    {familyLoader, 0x23, 136, Known::Always, PacketKind::Packet, false, &TembrinData::handleProgMem},
    {familyLoader, 0x24, 22, Known::Always, PacketKind::Packet, false, &TembrinData::handleEEPROM},
    {familyLoader, 0x27, 9, Known::Always, PacketKind::Packet, false, &TembrinData::HandleBLCS},
};
// clang-format on

const TembrinData::PacketRow* TembrinData::rowOf(unsigned char family, unsigned char type)
{
    for (const PacketRow& row : packetRows) {
        if (row.family == family && row.type == type)
            return &row;
    }
    return nullptr;
}

bool TembrinData::isKnown(Known when) const
{
    switch (when) {
    case Known::Always:
        return true;
    case Known::BeforeListOrInSession:
        return !gotSensorList || loggerRecognized;
    case Known::AfterList:
        return gotSensorList;
    case Known::InSession:
        return gotSensorList && loggerRecognized;
    case Known::InDownload:
        return gotSensorList && loggerRecognized && download.isOpen();
    case Known::OfVorta:
        return vorta;
    }
    return false;
}

void TembrinData::handlePacket(unsigned char* data, int length)
{
    const PacketRow* row = length > 2 ? rowOf(data[0], data[2]) : nullptr;
    if (row && row->handler)
        (this->*row->handler)(data, length);
}

PacketKind TembrinData::identifyPacket(const char* bytes, int size, int* length)
{
    const auto* head = reinterpret_cast<const unsigned char*>(bytes);
    if (size < 1)
        return incomplete(length);
    if (!isFamily(head[0]))
        return junk(head, size, length);
    if (size < 2)
        return incomplete(length);
    if (!isSecondStartByte(head[0], head[1]))
        return junk(head, size, length);
    if (size < 3)
        return incomplete(length);

    const PacketRow* row = rowOf(head[0], head[2]);
    if (!row || !isKnown(row->when)) {
        qCDebug(lcProtocol) << "logger" << index << "sent what is no packet for it now, type" << head[2];
        return junk(head, size, length);
    }
    const int packetSize = packetSizeAt(head, size, row->size);
    if (packetSize == sizeNotKnownYet)
        return incomplete(length);
    // A cut answer of the loader is dropped, since it repeats that one by itself.
    const bool dropIfCut = row->kind == PacketKind::BootloadReady && size < packetSize;
    if (packetSize == sizeWrong || dropIfCut)
        return junk(head, size, length);
    if (size < packetSize)
        return incomplete(length);
    if (row->countsWaiting)
        stream.samplesWaiting = size / packetSize - 1;
    *length = packetSize;
    return row->kind;
}

int TembrinData::packetSizeAt(const unsigned char* head, int size, int rowSize)
{
    switch (rowSize) {
    case sizeOfData:
        return stream.dataPacketSize;
    case sizeOfSnapshot:
        if (size < 4)
            return sizeNotKnownYet;
        return head[3] == snapshotFrame + bytesPerSample(0xFFFF) ? head[3] : sizeWrong;
    case sizeOfOnline:
        if (size < 6)
            return sizeNotKnownYet;
        countOnlineBytes(qFromBigEndian<quint16>(head + 4));
        if (head[3] == onlineFrame + stream.sampleBytes)
            return head[3];
        qCInfo(lcProtocol) << "bad online transmission. logger=" << index << "bytes=" << stream.sampleBytes
                           << "dataLen=" << head[3];
        return sizeWrong;
    }
    return rowSize;
}

void TembrinData::countOnlineBytes(quint16 mask)
{
    if (stream.mask == mask)
        return;
    stream.mask = mask;
    stream.sampleBytes = bytesPerSample(mask);
}

int TembrinData::bytesPerSample(quint16 mask) const
{
    int bytes = 0;
    for (int i = 0; i < sensors.size(); ++i) {
        if (mask >> i & 1)
            bytes += sensors.at(i)->numBytes;
    }
    return bytes;
}
