#include "protocol/tembrindata.h"

#include "protocol/packets.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

constexpr int packetTimeout = 400; ///< ms
constexpr int mostRepeats = 10;    ///< requests without progress
constexpr int endTimeout = 2000;   ///< ms from the last packet to the logger's own word that it was the last
constexpr int manualHeader = 6;    ///< bytes before each sample that was taken by hand
constexpr int samplesOfDownload = 1000;
constexpr int socketsHeader = 20;
constexpr int plainHeader = 18;
constexpr int packetFrame = 7;

} // namespace

void TembrinData::setupPacketTimer()
{
    packetTimer.setSingleShot(true);
    connect(&packetTimer, &QTimer::timeout, this, &TembrinData::timeoutWaitingPacket);
}

void TembrinData::startDownload()
{
    lastPacket = -1;
    expectedPackets = 1; // until packet 0 tells
    dataBuffer.clear();
    actSamples = 0;
    actRate = 0;
    storedBytesPerSample = 0;
    packetRepeats = 0;
    downloadOpen = true;
    packetTimer.start(packetTimeout);
    Q_EMIT donePacket(0, 1);
    Q_EMIT needNextPacket();
}

void TembrinData::handleDataPacket(unsigned char* udata, int len)
{
    const auto packet = Packets::parseStoredData(udata, len);
    if (!packet)
        return;
    qCDebug(lcProtocol) << "logger" << index << *packet;
    if (!packet->sumGood) {
        qCInfo(lcProtocol) << "logger" << index << "Packet" << packet->number << "wrong CS";
        return;
    }
    if (!downloadOpen || packet->number != lastPacket + 1) {
        qCInfo(lcProtocol) << "logger" << index << "Expected a different packet than" << packet->number;
        return;
    }
    lastPacket = packet->number;
    packetRepeats = 0;
    if (packet->number == 0)
        takeDownloadHeader(*packet);
    std::copy(packet->samples, packet->samples + packet->samplesSize, std::back_inserter(dataBuffer));
    // Not later than the signals: a receiver that pumps events must find the timer as it belongs.
    packetTimer.start(isAllReceived() ? endTimeout : packetTimeout);
    Q_EMIT needNextPacket();
    Q_EMIT donePacket(lastPacket + 1, expectedPackets);
}

void TembrinData::takeDownloadHeader(const Packets::StoredData& packet)
{
    if (packet.withSockets) {
        replaceSensor(true, Sensor::codeToID(packet.externalCode1));
        replaceSensor(false, Sensor::codeToID(packet.externalCode2));
    }
    actRate = fixedRate(static_cast<short>(packet.rateCode));
    actSamples = static_cast<short>(packet.sampleCount);
    lastRate = actRate;
    lastMask = static_cast<short>(packet.mask);
    lastSamples = samplesOfDownload;
    for (int i = 0; i < sensors.size(); ++i)
        sensors.at(i)->downloadActive = packet.mask >> i & 1;
    storedBytesPerSample = bytesPerSample(packet.mask);

    const int header = packet.withSockets ? socketsHeader : plainHeader;
    const double bytes = header - dataPacketSize + double(actSamples) * storedBytesPerSample;
    expectedPackets = std::max(1, static_cast<int>(std::ceil(bytes / (dataPacketSize - packetFrame))) + 1);
}

void TembrinData::timeoutWaitingPacket()
{
    if (!downloadOpen)
        return;
    if (isAllReceived()) {
        // Only the logger's last word was lost.
        endDownload(true);
        return;
    }
    qCInfo(lcProtocol) << "logger" << index << "timed out waiting for stored packet" << lastPacket + 1;
    if (packetRepeats >= mostRepeats) {
        endDownload(false);
        return;
    }
    ++packetRepeats;
    packetTimer.start(packetTimeout);
    Q_EMIT needNextPacket();
}

void TembrinData::noPacketLeft()
{
    if (!downloadOpen)
        return;
    // Samples taken by hand fill more packets than are expected for their values alone.
    const bool isByHand = actRate == 0 && isAllReceived();
    endDownload(lastPacket + 1 == expectedPackets || isByHand);
}

void TembrinData::endDownload(bool success)
{
    downloadOpen = false;
    packetTimer.stop();
    Q_EMIT downloadComplete(index, success);
    Q_EMIT commandAccepted(index, CMD_DOWNLOAD_STORED_DATA);
}

void TembrinData::cancelDownload()
{
    downloadOpen = false;
    packetTimer.stop();
    Q_EMIT stopTransmission();
}

int TembrinData::storedSampleSize() const
{
    return storedBytesPerSample + (actRate == 0 ? manualHeader : 0);
}

bool TembrinData::isAllReceived() const
{
    return lastPacket >= 0 && dataBuffer.size() >= actSamples * storedSampleSize();
}

TembrinData::SampleBlock TembrinData::getSamplesVector()
{
    SensorList channels;
    int columnCount = 0;
    for (const SensorPtr& sensor : qAsConst(sensors)) {
        if (!sensor->downloadActive)
            continue;
        channels.append(sensor);
        columnCount += sensor->lastValue.size();
    }
    SampleBlock columns(columnCount);
    const int sampleSize = storedSampleSize();
    const int reached = sampleSize > 0 ? dataBuffer.size() / sampleSize : 0;
    const int count = std::clamp<int>(actSamples, 0, reached);
    for (QVector<double>& column : columns)
        column.reserve(count);

    const unsigned char* at = dataBuffer.constData();
    for (int n = 0; n < count; ++n) {
        if (actRate == 0)
            at += manualHeader;
        int column = 0;
        for (const SensorPtr& sensor : qAsConst(channels)) {
            sensor->setLastValue(at, sensor->numBytes);
            at += sensor->numBytes;
            for (const double value : qAsConst(sensor->lastValue))
                columns[column++].append(value);
        }
    }
    return columns;
}

void TembrinData::forgetExperimentTable()
{
    if (numExperiments > 0)
        expList.clear();
}

void TembrinData::rejectExperimentTable(const char* why)
{
    qCInfo(lcProtocol) << "logger" << index << why;
    Q_EMIT stopTransmission();
    expList.clear();
}

void TembrinData::handleInfoPacket(unsigned char* udata, int len)
{
    const auto packet = Packets::parseInfo(udata, len);
    if (!packet)
        return;
    qCDebug(lcProtocol) << "logger" << index << *packet;
    if (!packet->sumGood) {
        rejectExperimentTable("bad CS in info for exp");
        return;
    }
    if (packet->number != expList.size() + 1) {
        rejectExperimentTable("got wrong exp info packet");
        return;
    }
    expList.append(experimentRow(*packet));
    if (expList.size() == numExperiments)
        Q_EMIT gotExperimentInfo();
}

expInfo TembrinData::experimentRow(const Packets::Info& packet) const
{
    expInfo row;
    row.expNum = packet.number;
    row.samples = packet.sampleCount;
    row.rate = RateNames[fixedRate(static_cast<short>(packet.rateCode))];
    row.datetime = packet.dateTime.toLocalTime();
    if (packet.withSockets) {
        row.ext1ID = Sensor::codeToID(packet.externalCode1);
        row.ext2ID = Sensor::codeToID(packet.externalCode2);
    }
    QStringList names;
    for (int i = 0; i < sensors.size(); ++i) {
        if (!(packet.mask >> i & 1))
            continue;
        const Sensor& sensor = *sensors.at(i);
        names.append(sensor.name);
        if (isExtSens1(i) || isExtSens2(i))
            row.iconNames.append(Sensor::vestrelIconForID(isExtSens1(i) ? row.ext1ID : row.ext2ID));
        else
            row.iconNames.append(sensor.iconNameColor);
    }
    row.sensNames = names.join(QStringLiteral(", "));
    return row;
}

void TembrinData::handleProgMem(unsigned char* udata, int len)
{
    const auto page = Packets::parseProgMem(udata, len);
    if (!page)
        return;
    qCDebug(lcProtocol) << "logger" << index << *page;
    if (page->sumGood)
        Q_EMIT gotBootloaderMem(page->address, page->data);
    else
        Q_EMIT gotBootloaderMem(-1, QByteArray());
}

void TembrinData::handleEEPROM(unsigned char* udata, int len)
{
    const auto page = Packets::parseEeprom(udata, len);
    if (!page)
        return;
    qCDebug(lcProtocol) << "logger" << index << *page;
    if (page->sumGood)
        Q_EMIT gotBootloaderMem(page->address, page->data);
}

void TembrinData::HandleBLCS(unsigned char* udata, int len)
{
    const auto sums = Packets::parseLoaderSums(udata, len);
    if (!sums)
        return;
    qCDebug(lcProtocol) << "logger" << index << *sums;
    Q_EMIT gotBootloaderCS(sums->eeprom, sums->flash);
}
