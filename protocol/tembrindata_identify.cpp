#include "protocol/tembrindata.h"

#include "protocol/packets.h"

#include <QtEndian>

#include <algorithm>

namespace {

// The first of the two start bytes names the family.
constexpr unsigned char familyLogger = 0x2E;
constexpr unsigned char familyVorta = 0x3E;
constexpr unsigned char familyLoader = 0x4C;

constexpr unsigned char typeSensorList = 0x82;
constexpr unsigned char typeStatus = 0x83;
constexpr unsigned char typeVortaStatusLong = 0x84;

constexpr int snapshotFrame = 5; ///< start bytes, type, size, checksum
constexpr int onlineFrame = 9;   ///< the same, mask and sample number

// Sizes that are not the same for every packet of a kind.
constexpr int sizeOfSnapshot = -1;
constexpr int sizeOfOnline = -2;
constexpr int sizeOfData = -3;
// What looking at the head of a packet may give instead of its size.
constexpr int sizeNotKnownYet = 0;
constexpr int sizeWrong = -1;

struct PacketRow
{
    unsigned char family;
    unsigned char type;
    int size;
    PacketKind kind;
    bool countsWaiting; ///< packets of this size behind it are counted
};

constexpr PacketRow packetRows[] = {
    {familyLogger, 0x82, 21, PacketKind::SensorID, false},
    {familyLogger, 0x83, 33, PacketKind::Status, false},
    {familyLogger, 0x81, sizeOfSnapshot, PacketKind::Telemetry, false},
    {familyLogger, 0x84, sizeOfOnline, PacketKind::Online, true},
    {familyLogger, 0x44, sizeOfData, PacketKind::Data, false},
    {familyLogger, 0x54, sizeOfData, PacketKind::Data, false},
    {familyLogger, 0x45, 16, PacketKind::Info, false},
    {familyLogger, 0x55, 18, PacketKind::Info, false},
    {familyLogger, 0x85, 6, PacketKind::ExtEvent, false},
    {familyLogger, 0xA8, 12, PacketKind::TestData, false},
    {familyVorta, 0x83, 16, PacketKind::VortaStatus, true},
    {familyVorta, 0x84, 18, PacketKind::VortaStatus, true},
    {familyVorta, 0x81, 14, PacketKind::VortaFetch, false},
    {familyVorta, 0xF0, 12, PacketKind::VortaOnlineSlow, true},
    {familyVorta, 0xF1, 36, PacketKind::VortaOnlineSlow, true},
    {familyVorta, 0xF2, 84, PacketKind::VortaOnlineSlow, true},
    {familyVorta, 0xF3, 254, PacketKind::VortaOnlineFast, true},
    {familyLoader, 0x11, 5, PacketKind::BootloadReady, false},
    {familyLoader, 0x12, 5, PacketKind::BootloadReadyVorta, false},
    {familyLoader, 0x14, 4, PacketKind::BootloadCommandOK, false},
    {familyLoader, 0x15, 4, PacketKind::BootloadCommandBad, false},
    {familyLoader, 0x20, 4, PacketKind::BootloadEraseOK, false},
    {familyLoader, 0x23, 136, PacketKind::BootloadProgMem, false},
    {familyLoader, 0x24, 22, PacketKind::BootloadEeprom, false},
    {familyLoader, 0x27, 9, PacketKind::BootloadCS, false},
};

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

const PacketRow* rowOf(unsigned char family, unsigned char type)
{
    for (const PacketRow& row : packetRows) {
        if (row.family == family && row.type == type)
            return &row;
    }
    return nullptr;
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

bool TembrinData::passesGate(unsigned char family, unsigned char type) const
{
    if (family == familyLogger) {
        if (!gotSensorList)
            return type == typeSensorList;
        return loggerRecognized || type == typeStatus;
    }
    if (family == familyVorta)
        return vorta || type == typeStatus || type == typeVortaStatusLong;
    return true;
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

    const PacketRow* row = passesGate(head[0], head[2]) ? rowOf(head[0], head[2]) : nullptr;
    if (!row) {
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
        samplesWaiting = size / packetSize - 1;
    *length = packetSize;
    return row->kind;
}

int TembrinData::packetSizeAt(const unsigned char* head, int size, int rowSize)
{
    switch (rowSize) {
    case sizeOfData:
        return dataPacketSize;
    case sizeOfSnapshot:
        if (size < 4)
            return sizeNotKnownYet;
        return head[3] == snapshotFrame + bytesPerSample(0xFFFF) ? head[3] : sizeWrong;
    case sizeOfOnline:
        if (size < 6)
            return sizeNotKnownYet;
        countOnlineBytes(qFromBigEndian<quint16>(head + 4));
        if (head[3] == onlineFrame + onlineBytesPerSample)
            return head[3];
        qCInfo(lcProtocol) << "bad online transmission. logger=" << index << "bytes=" << onlineBytesPerSample
                           << "dataLen=" << head[3];
        return sizeWrong;
    }
    return rowSize;
}

void TembrinData::countOnlineBytes(quint16 mask)
{
    if (onlineMask == mask)
        return;
    onlineMask = mask;
    onlineBytesPerSample = bytesPerSample(mask);
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
