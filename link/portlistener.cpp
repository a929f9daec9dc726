#include "link/portlistener.h"

#include "link/linklog.h"

#include <QVarLengthArray>

#include <algorithm>

namespace {
constexpr int readSize = 2500;
constexpr int backlogLimit = 2000; // bytes that make no packet
constexpr int workSize = 1024;     // no packet is longer
/// What one call takes off the port before other events get their turn.
constexpr qint64 bytesPerCall = 64 * 1024;
} // namespace

PortListener::PortListener(SerialPort* port, PacketIdentifier* identifier, int index, QObject* parent)
    : QObject(parent)
    , port(port)
    , identifier(identifier)
    , index(index)
{
    rxBuffer.reserve(backlogLimit + readSize);
}

void PortListener::clearBuffer()
{
    rxBuffer.resize(0);
    readPosition = 0;
}

void PortListener::end()
{
    clearBuffer();
    port = nullptr;
    disconnect();
}

void PortListener::receive()
{
    if (!port || port->bytesAvailable() <= 0)
        return;
    const QPointer<PortListener> self(this);
    qint64 taken = 0;
    do {
        // What is whole goes out before anything is read: a burst of packets never counts as a backlog.
        cutWholePackets();
        if (self && waiting() > backlogLimit)
            dropBacklog();
        if (!self)
            return;
        if (taken >= bytesPerCall) {
            QMetaObject::invokeMethod(this, &PortListener::receive, Qt::QueuedConnection);
            return;
        }
        taken += readSize;
    } while (readMore());
}

/// A slot that pumps events may cut, read and clear through an inner receive(), so nothing is remembered
/// across a signal but the members. The listener may be gone on return.
void PortListener::cutWholePackets()
{
    const QPointer<PortListener> self(this);
    QVarLengthArray<unsigned char, workSize> work;
    while (self && waiting() > 0) {
        const char* head = rxBuffer.constData() + readPosition;
        int length = 0;
        const PacketKind kind = identifier->identifyPacket(head, waiting(), &length);
        if (length <= 0 || length > waiting())
            return;
        if (kind != PacketKind::Junk) {
            work.resize(length);
            std::copy_n(head, length, work.begin());
        }
        readPosition += length;
        deliver(kind, work.data(), length);
    }
}

bool PortListener::readMore()
{
    if (!port)
        return false;
    const QByteArray bytes = port->read(readSize);
    if (bytes.isEmpty())
        return false;
    rxBuffer.remove(0, readPosition); // once a read, and never more than the limit
    readPosition = 0;
    rxBuffer.append(bytes);
    return true;
}

void PortListener::dropBacklog()
{
    qCWarning(linkLog) << "logger" << index << ":" << waiting() << "bytes make no packet, thrown away";
    clearBuffer();
    tooSlow = true;
    Q_EMIT tooSlowSignal();
}

void PortListener::deliver(PacketKind kind, unsigned char* data, int length)
{
    switch (kind) {
    case PacketKind::Incomplete:
        break;
    case PacketKind::Junk:
        qCDebug(linkLog) << "logger" << index << ": some junk was sent," << length << "bytes";
        break;
    case PacketKind::Sample:
        if (tooSlow)
            qCDebug(linkLog) << "<Slow: skip online data>";
        else
            identifier->handlePacket(data, length);
        break;
    case PacketKind::Status:
        tooSlow = false;
        identifier->handlePacket(data, length);
        break;
    case PacketKind::Packet:
        identifier->handlePacket(data, length);
        break;
    case PacketKind::BootloadReady:
        Q_EMIT bootloadReady(false, length > 3 ? data[3] : 0);
        break;
    case PacketKind::BootloadReadyVorta:
        Q_EMIT bootloadReady(true, 0);
        break;
    case PacketKind::BootloadCommandOK:
        Q_EMIT bootloadCommandOK();
        break;
    case PacketKind::BootloadCommandBad:
        Q_EMIT bootloadCommandBad();
        break;
    case PacketKind::BootloadEraseOK:
        Q_EMIT bootloadEraseOK();
        break;
    }
}

void PortListener::reportWritten(qlonglong bytes)
{
    qCDebug(linkLog) << "logger" << index << ":" << bytes << " bytes written";
}

void PortListener::reportClose()
{
    qCDebug(linkLog) << "logger" << index << ": closing port";
}

void PortListener::reportDsr(bool status)
{
    qCDebug(linkLog) << "logger" << index << (status ? ": device was turned on" : ": device was turned off");
}

void PortListener::reportReadFinished()
{
    qCDebug(linkLog) << "logger" << index << ": Read Finished";
}
