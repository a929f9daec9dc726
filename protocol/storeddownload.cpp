#include "protocol/storeddownload.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "protocol/packets.h"
#include "protocol/ratetables.h"

namespace {

constexpr int packetTimeout = 400; ///< ms
constexpr int mostRepeats = 10;    ///< requests without progress
constexpr int endTimeout = 2000;   ///< ms from the last packet to the logger's own word that it was the last
constexpr int manualHeader = 6;    ///< bytes before each sample that was taken by hand
constexpr int packetFrame = 7;     ///< bytes of a later packet that are no samples

} // namespace

StoredDownload::StoredDownload(int index, QObject* parent)
    : QObject(parent)
    , index(index)
{
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, &StoredDownload::ask);
}

void StoredDownload::start(int size)
{
    header = {};
    bytes.clear();
    packetSize = size;
    lastPacket = -1;
    expectedPackets = 1; // until packet 0 tells
    repeats = 0;
    open = true;
    timer.start(packetTimeout);
    Q_EMIT donePacket(0, 1);
    Q_EMIT needNextPacket();
}

void StoredDownload::setHeader(const Header& of)
{
    header = of;
    const double beyondFirst = header.size - packetSize + double(header.samples) * sampleSize();
    expectedPackets = std::max(1, static_cast<int>(std::ceil(beyondFirst / (packetSize - packetFrame))) + 1);
    qCDebug(lcProtocol) << "logger" << index << "sends a stored run of" << header.samples << "samples in"
                        << expectedPackets << "packets";
}

void StoredDownload::take(const Packets::StoredData& packet)
{
    lastPacket = packet.number;
    repeats = 0;
    std::copy(packet.samples, packet.samples + packet.samplesSize, std::back_inserter(bytes));
    // Not later than the signals: a receiver that pumps events must find the timer as it belongs.
    timer.start(isAllReceived() ? endTimeout : packetTimeout);
    Q_EMIT needNextPacket();
    Q_EMIT donePacket(std::min(lastPacket + 1, expectedPackets), expectedPackets);
}

void StoredDownload::ask()
{
    if (!open)
        return;
    if (isAllReceived()) {
        // Only the logger's last word was lost.
        end(true);
        return;
    }
    qCInfo(lcProtocol) << "logger" << index << "timed out waiting for stored packet" << lastPacket + 1;
    if (repeats >= mostRepeats) {
        end(false);
        return;
    }
    ++repeats;
    timer.start(packetTimeout);
    Q_EMIT needNextPacket();
}

void StoredDownload::finish()
{
    if (open)
        end(isAllReceived());
}

void StoredDownload::cancel()
{
    open = false;
    timer.stop();
}

void StoredDownload::end(bool success)
{
    cancel();
    if (success)
        decode();
    else
        qCInfo(lcProtocol) << "logger" << index << "download failed after packet" << lastPacket << "of"
                           << expectedPackets;
    Q_EMIT ended(success);
}

int StoredDownload::sampleSize() const
{
    return header.decoder.bytesPerSample() + (header.rate == 0 ? manualHeader : 0);
}

bool StoredDownload::isAllReceived() const
{
    return lastPacket >= 0 && bytes.size() >= header.samples * sampleSize();
}

void StoredDownload::decode()
{
    const int values = header.decoder.valueCount();
    lastRun = {header.decoder.channels(), RateTables::seconds[header.rate],
               QVector<QVector<double>>(values, QVector<double>(header.samples))};
    QVector<double> row(values);
    const unsigned char* at = bytes.constData() + (header.rate == 0 ? manualHeader : 0);
    for (int n = 0; n < header.samples; ++n, at += sampleSize()) {
        header.decoder.decode(at, row.data());
        for (int c = 0; c < values; ++c)
            lastRun.columns[c][n] = row.at(c);
    }
}
