#include "virtual/virtuallogger.h"

#include "sensors/sensorids.h"
#include "virtual/models.h"
#include "virtual/rates.h"

namespace {

constexpr int packetSize = 767;
constexpr int mostRepeats = 3;            // then it was the program that is slow
constexpr qint64 lateRequest = 350000000; // the program asks again after 400 ms without a packet

} // namespace

/// Runs of former lessons, one an hour.
void VirtualLogger::storeInitialExperiments(qint64 now)
{
    for (int i = 0; i < self.stored && !isVorta(); ++i) {
        Experiment experiment;
        experiment.ids = slotIds();
        experiment.mask = self.model->lessonMask();
        experiment.rate = self.rate == LoggerRates::Manual ? 3 : self.rate;
        experiment.samples = LoggerRates::sampleCount(1 + i % 2, self.model->code);
        experiment.run = -1 - i;
        experiment.codes[0] = socketCode(0);
        experiment.codes[1] = socketCode(1);
        experiment.begun = clock(now).addSecs(-3600 * qint64(self.stored - i));
        experiments.append(experiment);
    }
}

QByteArray VirtualLogger::storedBytes(const Experiment& experiment) const
{
    if (experiment.isKept)
        return experiment.data;
    QByteArray data;
    const double period = LoggerRates::period(experiment.rate, self.model->code);
    for (int sample = 0; sample < experiment.samples; ++sample)
        data += sampleBytes(experiment, sample * period);
    return data;
}

void VirtualLogger::beginDownload(int number, qint64 now, LoggerPackets& out)
{
    download = Download();
    if (!run.isOn && number >= 1 && number <= experiments.size()) {
        download.isOn = true;
        download.experiment = experiments[number - 1];
        download.data = storedBytes(download.experiment);
    }
    out.append(status(Wire::Download, now));
}

void VirtualLogger::sendNextPacket(qint64 now, LoggerPackets& out)
{
    const bool isLate = download.nextPacket > 0 && now - download.lastSent >= lateRequest;
    if (download.isOn && isLate && download.repeats < mostRepeats &&
        self.resend == LoggerIdentity::ResendSame) {
        download.repeats += 1;
        download.lastSent = now;
        out.append(dataPacket(download.nextPacket - 1));
        return;
    }
    LoggerPacket packet;
    if (download.isOn)
        packet = dataPacket(download.nextPacket);
    if (packet.bytes.isEmpty()) {
        download.isOn = false;
        out.append(status(Wire::NextPacket, now));
        return;
    }
    download.repeats = 0;
    download.nextPacket += 1;
    download.lastSent = now;
    out.append(packet);
}

/// Empty behind the last one. Packet 0 begins with what the experiment is; the rest is its bytes, without
/// regard to where a sample ends.
LoggerPacket VirtualLogger::dataPacket(int number) const
{
    const Experiment& from = download.experiment;
    bool hasExternal = false;
    const QVector<int> ids = self.model->sensorIds();
    for (int slot = 0; slot < ids.size(); ++slot) {
        const bool isSocket = ids[slot] == SENSOR_EXTERNAL || ids[slot] == SENSOR_EXTERNAL_B;
        hasExternal = hasExternal || (isSocket && (from.mask & (1U << slot)));
    }
    QByteArray body(1, '\0');
    Wire::append16(body, number);
    constexpr int plainHeader = 17;
    const int room0 = packetSize - plainHeader - 1 - (hasExternal ? 2 : 0);
    const int room = packetSize - 7;
    const int begin = number == 0 ? 0 : room0 + (number - 1) * room;
    if (number > 0 && begin >= download.data.size())
        return {};
    if (number == 0) {
        Wire::append16(body, from.mask);
        body += char(rateCode(from.rate));
        Wire::append16(body, from.samples);
        body += Wire::bcdDate(from.begun);
        if (hasExternal) {
            body += char(from.codes[0]);
            body += char(from.codes[1]);
        }
    }
    body += download.data.mid(begin, number == 0 ? room0 : room);
    body += QByteArray(packetSize - 4 - body.size(), '\0');
    return {Wire::packet(hasExternal ? Wire::DataExternal : Wire::DataPlain, body)};
}

LoggerPacket VirtualLogger::infoPacket(int number) const
{
    const Experiment& from = experiments[number - 1];
    const QVector<int> ids = self.model->sensorIds();
    const bool hasSocket = ids.contains(SENSOR_EXTERNAL) || ids.contains(SENSOR_EXTERNAL_B);
    QByteArray body;
    body += char(number);
    Wire::append16(body, from.mask);
    body += char(rateCode(from.rate));
    Wire::append16(body, from.samples);
    body += Wire::bcdDate(from.begun);
    if (hasSocket) {
        body += char(from.codes[0]);
        body += char(from.codes[1]);
    }
    return {Wire::packet(hasSocket ? Wire::InfoExternal : Wire::InfoPlain, body)};
}
