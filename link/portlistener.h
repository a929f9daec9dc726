#pragma once

#include "link/packetidentifier.h"
#include "link/serialport.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>

/// Collects the bytes of one logger's port, cuts them into packets as the identifier tells, and hands them to
/// it; the answers of a firmware loader are signals. Who takes a packet may pump events, clear the buffer,
/// end the listening, or have listener and port deleted later.
class PortListener : public QObject
{
    Q_OBJECT

public:
    /// Neither port nor identifier is owned; the identifier outlives the listener. `index` is the logger's,
    /// 0 to 7.
    PortListener(SerialPort* port, PacketIdentifier* identifier, int index, QObject* parent = nullptr);

    /// Forgets the bytes received but not yet cut.
    void clearBuffer();
    /// Nothing is read or handed out any more.
    void end();

public Q_SLOTS:
    /// Reads what the port has and delivers every whole packet in order. May be entered again from a slot:
    /// the inner call goes on where the outer one stands. A very long backlog is cut in several rounds of the
    /// event loop.
    void receive();

    // Diagnostics only.
    void reportWritten(qlonglong bytes);
    void reportClose();
    void reportDsr(bool status);
    void reportReadFinished();

Q_SIGNALS:
    /// A firmware loader answered: a normal logger's with its version `ver`, or a Vorta's with 0.
    void bootloadReady(bool isVorta, int ver);
    void bootloadCommandOK();
    void bootloadCommandBad();
    void bootloadEraseOK();
    /// Bytes that make no packet piled up and were thrown away; online samples are skipped until the next
    /// status.
    void tooSlowSignal();

private:
    void cutWholePackets();
    bool readMore();
    void dropBacklog();
    void deliver(PacketKind kind, unsigned char* data, int length);
    int waiting() const { return rxBuffer.size() - readPosition; }

    QPointer<SerialPort> port;
    PacketIdentifier* identifier;
    int index;
    QByteArray rxBuffer;
    int readPosition = 0; // of the first byte of rxBuffer not yet cut
    bool tooSlow = false;
};
