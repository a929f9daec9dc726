#pragma once

#include <QObject>
#include <QTimer>
#include <QVector>

#include "protocol/rundecoder.h"

namespace Packets {
struct StoredData;
}

/// A stored experiment that was downloaded to its end.
struct StoredRun
{
    SensorList channels;              ///< new objects, composites as their children
    double dt = 0;                    ///< seconds between two samples, 0 for samples taken by hand
    QVector<QVector<double>> columns; ///< one a channel, base units
};

/// The download of one experiment: asks for packet after packet, again for one that does not come, and
/// decodes them when the last is there. What the experiment's own header says is all that counts for that.
class StoredDownload : public QObject
{
    Q_OBJECT

public:
    /// The header of packet 0, in the program's terms.
    struct Header
    {
        RunDecoder decoder;
        short rate = 0; ///< index into RateTables::seconds
        int samples = 0;
        int size = 0; ///< bytes of packet 0 that are no samples
    };

    /// `index` is the logger's, for messages.
    explicit StoredDownload(int index, QObject* parent = nullptr);

    bool isOpen() const { return open; }
    /// The logger has begun to send; `packetSize` is that of all its packets.
    void start(int packetSize);
    /// A packet with this number may be taken now.
    bool isNext(int number) const { return open && number == lastPacket + 1; }
    /// What packet 0 says, before it is taken.
    void setHeader(const Header& header);
    /// The next packet, undamaged.
    void take(const Packets::StoredData& packet);
    /// The logger has no more packets.
    void finish();
    /// Ends it without a result and without a word.
    void cancel();
    /// No packet came for some time.
    void ask();

    /// The last experiment that was received to its end.
    const StoredRun& result() const { return lastRun; }

Q_SIGNALS:
    void needNextPacket();
    /// Good packets so far, of all; never more than all.
    void donePacket(int packet, int of);
    void ended(bool success);

private:
    int sampleSize() const;
    bool isAllReceived() const;
    void end(bool success);
    void decode();

    const int index;
    QTimer timer;
    Header header;
    QVector<unsigned char> bytes; ///< samples, cut without regard to where one ends
    int packetSize = 0;
    int lastPacket = -1; ///< number of the last good packet
    int expectedPackets = 1;
    int repeats = 0; ///< requests since the last good packet
    bool open = false;
    StoredRun lastRun;
};
