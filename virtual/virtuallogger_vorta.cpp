#include "virtual/virtuallogger.h"

#include "sensors/sensorids.h"
#include "virtual/models.h"
#include "virtual/rates.h"

namespace {

constexpr int hardwareVersion = 2;
constexpr int runStateOn = 1;
constexpr int uprightWord = 231; ///< 0.9 g along x
constexpr int greatestAcceleration = 0x7FF;
constexpr double weight = 1.9; ///< N, which pulls at the sensors of an upright logger

/// How a rate packs its samples.
struct Block
{
    Wire::VortaPacket type;
    int samples;
};

constexpr Block blocks[] = {
    {Wire::VortaBlock1, 1}, // no rate has this number
    {Wire::VortaBlock1, 1},   {Wire::VortaBlock1, 1},   {Wire::VortaBlock4, 4},
    {Wire::VortaBlock10, 10}, {Wire::VortaBlock50, 50},
};
constexpr int fastestRate = 5;

/// Twelve bits a word, the first one alone in the first two bytes.
QByteArray packWords(const QVector<quint16>& words)
{
    QByteArray bytes;
    Wire::append16(bytes, words[0]);
    for (int i = 1; i < words.size(); i += 2) {
        bytes += char(words[i] >> 4);
        bytes += char(((words[i] & 0x0F) << 4) | (words[i + 1] >> 8));
        bytes += char(words[i + 1]);
    }
    return bytes;
}

} // namespace

bool VirtualLogger::isVorta() const
{
    return self.model->code == LoggerModel::Vorta;
}

void VirtualLogger::obeyVorta(const QByteArray& frame, qint64 now, LoggerPackets& out)
{
    if (quint8(frame[0]) != 0x67 || quint8(frame[1]) != 0x24)
        return;
    switch (Wire::VortaCode(quint8(frame[2]))) {
    case Wire::VortaGetStatus:
        out.append(vortaStatus(Wire::GetStatus));
        break;
    case Wire::VortaStart:
        if (!run.isOn) {
            self.rate = qBound(1, int(quint8(frame[3])), fastestRate);
            self.samplesIndex = Wire::read16(frame, 4);
        }
        start(now, out);
        break;
    case Wire::VortaStop:
        finish(Wire::Stop, now, out);
        break;
    case Wire::VortaSnapshot:
    case Wire::VortaCalibrate: // the values that it calibrated are its answer
        out.append(vortaSnapshot(now));
        break;
    }
}

LoggerPacket VirtualLogger::vortaStatus(quint8 event) const
{
    QByteArray body;
    body += char(event);
    body += char(Wire::toBcd(hardwareVersion));
    body += char(Wire::toBcd(self.firmwareMajor * 10 + self.firmwareMinor % 10));
    body += char(run.isOn ? runStateOn : 0);
    body += char(self.rate);
    Wire::append16(body, self.samplesIndex);
    Wire::append16(body, forceGain);
    Wire::append16(body, forceOffset50);
    Wire::append16(body, forceOffset5);
    body += '\0';
    return {Wire::vortaPacket(Wire::VortaStatusPacket, body)};
}

LoggerPacket VirtualLogger::vortaSnapshot(qint64 now) const
{
    QByteArray body;
    for (const quint16 word : vortaWords(runSignals(0), double(now - switchedOn) / 1e9))
        Wire::append16(body, word);
    return {Wire::vortaPacket(Wire::VortaSnapshotPacket, body)};
}

/// One word of 12 bits for each sensor, as the converter gives it.
QVector<quint16> VirtualLogger::vortaWords(const LessonSignals& signal, double seconds) const
{
    const auto acceleration = [&](int id) { return writer.word(id, signal.value(id, seconds)) >> 4; };
    const int x = acceleration(SENSOR_VORTA_ACC_X);
    const double pull = x >= uprightWord && x <= greatestAcceleration ? weight : 0;
    QVector<quint16> words;
    for (const int id : self.model->sensorIds()) {
        const bool isForce = id == SENSOR_VORTA_FORCE50 || id == SENSOR_VORTA_FORCE5;
        words.append(quint16(isForce ? writer.word(id, signal.value(id, seconds) - pull) : acceleration(id)));
    }
    return words;
}

int VirtualLogger::blockLength() const
{
    return blocks[run.rate].samples;
}

/// A block goes out when its last sample is taken; at the fastest rate it holds the channels 0, 2 and 4 only.
/// Its number stands for the sample's in the record.
void VirtualLogger::takeBlock(qint64 now, LoggerPackets& out)
{
    const Block block = blocks[run.rate];
    const LessonSignals signal = runSignals(run.number);
    LoggerPacket packet;
    packet.run = run.number;
    packet.sample = run.taken / block.samples;
    for (int i = 0; i < block.samples; ++i) {
        QVector<quint16> words =
            vortaWords(signal, (run.taken + i) * LoggerRates::period(run.rate, self.model->code));
        if (run.rate == fastestRate)
            words = {words[0], words[2], words[4]};
        packet.sampleBytes += packWords(words);
    }
    packet.bytes = Wire::vortaPacket(block.type, packet.sampleBytes);
    out.append(packet);
    run.taken += block.samples;
    if (run.limit > 0 && run.taken >= run.limit)
        finish(Wire::Stop, now, out);
}
