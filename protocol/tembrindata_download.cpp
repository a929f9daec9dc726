#include "protocol/tembrindata.h"

#include "protocol/packets.h"

#include <algorithm>

namespace {

constexpr int socketsHeader = 20; ///< bytes of packet 0 that are no samples
constexpr int plainHeader = 18;

} // namespace

void TembrinData::connectDownload()
{
    connect(&download, &StoredDownload::needNextPacket, this, &TembrinData::needNextPacket);
    connect(&download, &StoredDownload::donePacket, this, &TembrinData::donePacket);
    connect(&download, &StoredDownload::ended, this, [this](bool success) {
        Q_EMIT downloadComplete(index, success);
        Q_EMIT commandAccepted(index, CMD_DOWNLOAD_STORED_DATA);
    });
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
    if (!download.isNext(packet->number)) {
        qCInfo(lcProtocol) << "logger" << index << "Expected a different packet than" << packet->number;
        return;
    }
    if (packet->number == 0)
        download.setHeader(downloadHeader(*packet));
    download.take(*packet);
}

StoredDownload::Header TembrinData::downloadHeader(const Packets::StoredData& packet) const
{
    StoredDownload::Header header;
    header.decoder = RunDecoder(sensors, packet.mask, units);
    header.rate = fixedRate(static_cast<short>(packet.rateCode));
    header.samples = packet.sampleCount;
    header.size = packet.withSockets ? socketsHeader : plainHeader;
    if (packet.withSockets) {
        const int codes[] = {packet.externalCode1, packet.externalCode2};
        for (int i = 0; i < 2; ++i) {
            if (const int id = Sensor::socketID(Sensor::codeToID(codes[i])))
                header.decoder.replace(sockets.place[i], SensorKind(id, units));
        }
    }
    return header;
}

void TembrinData::timeoutWaitingPacket()
{
    download.ask();
}

void TembrinData::cancelDownload()
{
    isDownloadRefused = !download.isOpen();
    download.cancel();
    Q_EMIT stopTransmission();
}

void TembrinData::forgetExperimentTable()
{
    if (identity.stored > 0)
        experiments.clear();
}

void TembrinData::rejectExperimentTable(const char* why)
{
    qCInfo(lcProtocol) << "logger" << index << why;
    Q_EMIT stopTransmission();
    experiments.clear();
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
    if (packet->number != experiments.size() + 1) {
        rejectExperimentTable("got wrong exp info packet");
        return;
    }
    experiments.append(experimentRow(*packet));
    if (experiments.size() == identity.stored)
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
        if (isExtSens1(i) || isExtSens2(i)) {
            const int recorded = isExtSens1(i) ? row.ext1ID : row.ext2ID;
            const int id = Sensor::socketID(recorded);
            names.append(recorded != 0 && id != 0 ? Sensor(id, units).name : sensor.name);
            row.iconNames.append(Sensor::vestrelIconForID(recorded));
        } else {
            names.append(sensor.name);
            row.iconNames.append(sensor.iconNameColor);
        }
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
