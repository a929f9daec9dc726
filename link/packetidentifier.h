#pragma once

/// What stands at the head of a receive buffer.
enum class PacketKind
{
    Incomplete,
    Junk,
    SensorID,
    Status,
    Telemetry,
    Online,
    Data,
    Info,
    ExtEvent,
    TestData,
    VortaStatus,
    VortaFetch,
    VortaOnlineSlow,
    VortaOnlineFast,
    BootloadReady,
    BootloadReadyVorta,
    BootloadCommandOK,
    BootloadCommandBad,
    BootloadEraseOK,
    BootloadProgMem,
    BootloadEeprom,
    BootloadCS
};

/// Who knows a logger well enough to cut its byte stream. The listener asks it and knows nothing of packets
/// itself.
class PacketIdentifier
{
public:
    virtual ~PacketIdentifier() = default;

    /// Looks at `size` bytes. `length` becomes the packet's size, the number of bytes to throw away for Junk
    /// (at least 1), or 0 for Incomplete. A length of 0 or beyond `size` also counts as Incomplete. The bytes
    /// are not changed and not kept.
    virtual PacketKind identifyPacket(const char* bytes, int size, int* length) = 0;
};
