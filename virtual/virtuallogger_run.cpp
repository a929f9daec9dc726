#include "virtual/virtuallogger.h"

#include "virtual/models.h"
#include "virtual/rates.h"

#include <cmath>

namespace {

constexpr int mostExperiments = 255;
constexpr qint64 nsPerSecond = 1000000000;
constexpr qint64 tableStep = 4000000; // about the time of an info packet on the line
constexpr double triggerLook = 0.01;

enum TriggerType
{
    TriggerNone,
    TriggerRising,
    TriggerFalling
};

} // namespace

void VirtualLogger::start(qint64 now, LoggerPackets& out)
{
    if (run.isOn) { // the first answer got lost
        out.append(status(Wire::Start, now));
        return;
    }
    if (const quint8 refusal = whyNoRun()) {
        out.append(status(refusal, now));
        return;
    }
    download.isOn = false;
    run.isOn = true;
    run.isArmed = trigger.at(0) != TriggerNone;
    run.number += 1;
    run.start = now;
    run.rate = self.rate;
    run.limit = LoggerRates::sampleCount(self.samplesIndex, self.model->code);
    run.taken = 0;
    run.lastLevel = std::nan("");

    recording = Experiment();
    recording.ids = slotIds();
    recording.mask = self.mask;
    recording.rate = run.rate;
    recording.run = run.number;
    recording.codes[0] = socketCode(0);
    recording.codes[1] = socketCode(1);
    recording.begun = clock(now);
    recording.isKept = run.rate < LoggerRates::FirstStoredOnly;
    out.append(status(Wire::Start, now));
    const LoggerPackets first = advance(now);
    out += first;
}

/// The event that says so; 0 if a run can begin. A Vorta logger has no memory and no choice of sensors.
quint8 VirtualLogger::whyNoRun() const
{
    if (self.isBatteryEmpty)
        return Wire::NoBattery;
    if (isVorta())
        return 0;
    if (self.mask == 0)
        return Wire::NoSensor;
    return self.isMemoryFull || experiments.size() >= mostExperiments ? Wire::NoMemory : 0;
}

/// Ends a run, if there is one, and says so.
void VirtualLogger::finish(quint8 event, qint64 now, LoggerPackets& out)
{
    if (run.isOn) {
        if (!recording.isKept && !run.isArmed && !isVorta()) {
            const double period = LoggerRates::period(run.rate, self.model->code);
            run.taken = qMin(run.limit, int(double(now - run.start) / nsPerSecond / period) + 1);
        }
        recording.samples = run.taken;
        run.isOn = false;
        if (run.taken > 0 && !isVorta())
            experiments.append(recording);
    }
    out.append(status(event, now));
}

LoggerPackets VirtualLogger::pressStart(qint64 now)
{
    LoggerPackets out = advance(now);
    if (!loader.isOn())
        start(now, out);
    return out;
}

LoggerPackets VirtualLogger::pressStop(qint64 now)
{
    LoggerPackets out = advance(now);
    if (run.isOn)
        finish(Wire::Stop, now, out);
    return out;
}

LoggerPackets VirtualLogger::pressSample(qint64 now)
{
    LoggerPackets out = advance(now);
    if (!run.isOn || run.rate != LoggerRates::Manual)
        return out;
    recording.data += Wire::bcdDate(clock(now));
    takeSample(double(now - run.start) / nsPerSecond, now, out);
    return out;
}

qint64 VirtualLogger::sampleDue(int sample) const
{
    return run.start +
           qint64(std::llround(sample * LoggerRates::period(run.rate, self.model->code) * nsPerSecond));
}

qint64 VirtualLogger::nextDue() const
{
    qint64 due = -1;
    if (run.isOn && run.isArmed)
        due = run.start;
    else if (run.isOn && isVorta())
        due = sampleDue(run.taken + blockLength() - 1);
    else if (run.isOn && run.rate != LoggerRates::Manual)
        due = sampleDue(recording.isKept ? run.taken : run.limit - 1);
    if (tableNext > 0 && (due < 0 || tableDue < due))
        due = tableDue;
    return due;
}

LoggerPackets VirtualLogger::advance(qint64 now)
{
    LoggerPackets out;
    while (tableNext > 0 && tableDue <= now) {
        out.append(infoPacket(tableNext));
        tableNext = tableNext < experiments.size() ? tableNext + 1 : 0;
        tableDue += tableStep;
    }
    while (run.isOn && run.isArmed && run.start <= now)
        lookForTrigger();
    while (isVorta() && run.isOn && sampleDue(run.taken + blockLength() - 1) <= now)
        takeBlock(now, out);
    if (isVorta() || !run.isOn || run.isArmed || run.rate == LoggerRates::Manual)
        return out;
    const double period = LoggerRates::period(run.rate, self.model->code);
    if (recording.isKept) {
        while (run.isOn && sampleDue(run.taken) <= now)
            takeSample(run.taken * period, now, out);
    } else if (sampleDue(run.limit - 1) <= now) {
        finish(Wire::Stop, now, out);
    }
    return out;
}

/// The run begins where the trigger's sensor passes the level; the sensor is looked at every few ms.
void VirtualLogger::lookForTrigger()
{
    const int slot = quint8(trigger.at(1));
    const double level = Wire::readSplit(trigger, 2);
    if (slot >= recording.ids.size()) {
        run.isArmed = false;
        return;
    }
    const double seconds = double(run.start - switchedOn) / nsPerSecond;
    const double value = runSignals(run.number).value(recording.ids[slot], seconds);
    const bool isRising = trigger.at(0) == TriggerRising;
    const bool hasPassed =
        isRising ? run.lastLevel < level && value >= level : run.lastLevel > level && value <= level;
    run.lastLevel = value;
    if (hasPassed)
        run.isArmed = false;
    else
        run.start += qint64(triggerLook * nsPerSecond);
}

void VirtualLogger::takeSample(double seconds, qint64 now, LoggerPackets& out)
{
    LoggerPacket packet;
    packet.run = run.number;
    packet.sample = run.taken;
    packet.sampleBytes = sampleBytes(recording, seconds);
    recording.data += packet.sampleBytes;

    QByteArray body;
    body += char(packet.sampleBytes.size() + 9);
    Wire::append16(body, recording.mask);
    Wire::append16(body, packet.sample);
    packet.bytes = Wire::packet(Wire::OnlinePacket, body + packet.sampleBytes);
    out.append(packet);
    run.taken += 1;
    if (run.taken >= run.limit)
        finish(Wire::Stop, now, out);
}

QByteArray VirtualLogger::sampleBytes(const Experiment& experiment, double seconds) const
{
    const LessonSignals signal = runSignals(experiment.run);
    const double time =
        LessonSignals::lessonTime(seconds, LoggerRates::period(experiment.rate, self.model->code));
    QByteArray bytes;
    for (int slot = 0; slot < experiment.ids.size(); ++slot) {
        if (experiment.mask & (1U << slot))
            bytes += writer.block(experiment.ids[slot], signal, time, calibration);
    }
    return bytes;
}

QVector<int> VirtualLogger::sampleIds() const
{
    QVector<int> ids;
    for (int slot = 0; slot < recording.ids.size(); ++slot) {
        if (recording.mask & (1U << slot))
            ids.append(recording.ids[slot]);
    }
    return ids;
}

LessonSignals VirtualLogger::runSignals(int number) const
{
    return LessonSignals(self.seed + quint32(number) * 7919U);
}
