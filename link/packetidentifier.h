#pragma once

/// What stands at the head of a receive buffer, as far as the listener makes a difference.
enum class PacketKind
{
    Incomplete,
    Junk,
    Packet, ///< any that only its handler knows
    Sample, ///< one that is left out while the program is too slow
    Status, ///< one that the program has caught up with
    // Answers of a firmware loader
    BootloadReady,
    BootloadReadyVorta,
    BootloadCommandOK,
    BootloadCommandBad,
    BootloadEraseOK
};

/// Who knows a logger well enough to cut its byte stream and to read the packets. The listener asks it and
/// knows nothing of packets itself.
class PacketIdentifier
{
public:
    virtual ~PacketIdentifier() = default;

    /// Looks at `size` bytes. `length` becomes the packet's size, the number of bytes to throw away for Junk
    /// (at least 1), or 0 for Incomplete. A length of 0 or beyond `size` also counts as Incomplete. The bytes
    /// are not changed and not kept.
    virtual PacketKind identifyPacket(const char* bytes, int size, int* length) = 0;

    /// Takes a whole packet, a sample or a status, whose bytes are good during the call only. May pump
    /// events.
    virtual void handlePacket(unsigned char* data, int length) = 0;
};
