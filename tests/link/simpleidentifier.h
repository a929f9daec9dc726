#pragma once

#include "link/packetidentifier.h"

#include <QByteArray>
#include <QVector>

#include <functional>

/// Packets of the form '.', kind, length of the rest, rest; what does not begin with a '.' is junk.
class SimpleIdentifier : public PacketIdentifier
{
public:
    PacketKind identifyPacket(const char* bytes, int size, int* length) override
    {
        if (bytes[0] != '.') {
            const int next = QByteArray::fromRawData(bytes, size).indexOf('.');
            *length = next < 0 ? size : next;
            return PacketKind::Junk;
        }
        const int whole = size < 3 || bytes[1] == '~' ? 0 : 3 + static_cast<unsigned char>(bytes[2]);
        *length = whole <= size ? whole : 0;
        return *length ? static_cast<PacketKind>(bytes[1]) : PacketKind::Incomplete;
    }

    void handlePacket(unsigned char* data, int length) override
    {
        heard.append(QByteArray(reinterpret_cast<const char*>(data), length));
        if (then)
            then();
    }

    QVector<QByteArray> heard;
    std::function<void()> then; ///< what the handler does after each

    static QByteArray packet(PacketKind kind, const QByteArray& body)
    {
        return QByteArray(".") + static_cast<char>(kind) + static_cast<char>(body.size()) + body;
    }
    /// The beginning of a packet that never becomes whole.
    static QByteArray endless() { return QByteArrayLiteral(".~"); }
};
