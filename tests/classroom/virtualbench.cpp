#include "tests/classroom/virtualbench.h"

#include "common/settings.h"
#include "sensors/sensor.h"
#include "sensors/sensorids.h"
#include "virtual/models.h"
#include "virtual/rates.h"

namespace {

constexpr qint64 nsPerMs = 1000000;
constexpr int code = 2; // where a frame has it

} // namespace

LoggerIdentity VirtualBench::identity(const char* model, const char* rate, int samples, int stored,
                                      int firmware)
{
    LoggerIdentity identity;
    identity.model = LoggerModels::find(QLatin1String(model));
    Q_ASSERT(identity.model);
    const int type = identity.model->code;
    identity.firmwareMajor = firmware / 100;
    identity.firmwareMinor = firmware % 100;
    identity.name = identity.model->displayName();
    identity.rate =
        LoggerRates::find(QLatin1String(rate), type, identity.firmwareMajor, identity.firmwareMinor);
    identity.samplesIndex = LoggerRates::sampleIndex(QString::number(samples), type);
    Q_ASSERT(identity.rate >= 0 && identity.samplesIndex >= 0);
    identity.mask = identity.model->lessonMask();
    identity.stored = stored;
    return identity;
}

VirtualBench::VirtualBench(const QVector<LoggerIdentity>& loggers)
{
    QSettings store = Settings::mainStore();
    store.clear();
    store.setValue(QLatin1String(Settings::numDefined), loggers.size());
    clock.start();
    for (int i = 0; i < loggers.size(); ++i) {
        store.setValue(Settings::loggerKey(i), portName(i));
        store.setValue(Settings::groupKey(i), group(i));
        LoggerIdentity self = loggers[i];
        self.seed += quint32(i);
        auto place = std::make_unique<Place>();
        place->logger = std::make_unique<VirtualLogger>(self, 0, QDateTime::currentDateTimeUtc());
        place->logger->setListener([heard = &place->heard](const QByteArray& frame) { *heard += frame; });
        places.push_back(std::move(place));
    }
    store.sync();
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &VirtualBench::work);
}

VirtualBench::~VirtualBench() = default;

SerialPortFactory VirtualBench::factory()
{
    return [this, make = ports.factory()](const QString& name, SerialPort::QueryMode mode) {
        auto port = make(name, mode);
        for (int i = 0; i < count(); ++i) {
            if (name == portName(i))
                static_cast<FakePort*>(port.get())->onWrite = [this, i](const QByteArray& bytes) {
                    take(i, bytes);
                };
        }
        return port;
    };
}

// --- The air between ---

void VirtualBench::pull(int i)
{
    ports.refuse(portName(i), QStringLiteral("the logger is out of reach"));
    places[size_t(i)]->said.clear();
    if (port(i))
        port(i)->hangUp();
}

void VirtualBench::putBack(int i)
{
    ports.refuse(portName(i), {});
}

void VirtualBench::setDead(int i, bool isDead)
{
    places[size_t(i)]->isDead = isDead;
}

void VirtualBench::dropAnswers(int i, int number)
{
    places[size_t(i)]->answersToDrop = number;
}

void VirtualBench::delay(int i, int ms)
{
    places[size_t(i)]->delay = ms * nsPerMs;
}

void VirtualBench::loseSamples(int i, int from, int to)
{
    places[size_t(i)]->lostFrom = from;
    places[size_t(i)]->lostTo = to;
}

void VirtualBench::pass(int ms)
{
    passed += ms * nsPerMs;
    setTimer();
}

// --- Somebody at the logger ---

void VirtualBench::act(int i, const std::function<LoggerPackets(VirtualLogger&, qint64)>& action)
{
    Place& place = *places[size_t(i)];
    say(place, action(*place.logger, now()));
    setTimer();
}

void VirtualBench::pressStart(int i)
{
    act(i, [](VirtualLogger& logger, qint64 now) { return logger.pressStart(now); });
}

void VirtualBench::pressStop(int i)
{
    act(i, [](VirtualLogger& logger, qint64 now) { return logger.pressStop(now); });
}

void VirtualBench::pressSample(int i)
{
    act(i, [](VirtualLogger& logger, qint64 now) { return logger.pressSample(now); });
}

void VirtualBench::plug(int i, int socket, int id)
{
    Q_ASSERT(logger(i).hasSocket(socket));
    act(i, [=](VirtualLogger& logger, qint64) { return logger.plug(socket, id); });
}

void VirtualBench::chooseRate(int i, const char* name)
{
    act(i, [name](VirtualLogger& logger, qint64 now) {
        const LoggerIdentity& self = logger.identity();
        return logger.setRate(
            LoggerRates::find(QLatin1String(name), self.model->code, self.firmwareMajor, self.firmwareMinor),
            now);
    });
}

void VirtualBench::setBatteryEmpty(int i, bool isEmpty)
{
    act(i, [=](VirtualLogger& logger, qint64 now) { return logger.setBatteryEmpty(isEmpty, now); });
}

void VirtualBench::setMemoryFull(int i, bool isFull)
{
    act(i, [=](VirtualLogger& logger, qint64 now) { return logger.setMemoryFull(isFull, now); });
}

// --- What the logger has heard ---

int VirtualBench::heard(int i, int wanted) const
{
    int number = 0;
    for (const QByteArray& frame : heard(i))
        number += frame.size() > code && quint8(frame[code]) == wanted;
    return number;
}

QByteArray VirtualBench::lastHeard(int i, int wanted) const
{
    const QVector<QByteArray> frames = heard(i);
    for (int at = frames.size() - 1; at >= 0; --at) {
        if (frames[at].size() > code && quint8(frames[at][code]) == wanted)
            return frames[at];
    }
    return {};
}

VirtualBench::Setup VirtualBench::setup(int i) const
{
    const QByteArray frame = lastHeard(i, Wire::LoggingSetup);
    if (frame.isEmpty())
        return {};
    return {Wire::read16(frame, 3),
            quint8(frame[5]),
            quint8(frame[6]),
            frame.mid(7, 4),
            {quint8(frame[11]), quint8(frame[12])},
            frame.mid(13, 3)};
}

VirtualBench::Configuration VirtualBench::configuration(int i) const
{
    const QByteArray frame = lastHeard(i, Wire::Configure);
    if (frame.isEmpty())
        return {};
    return {quint8(frame[3]), quint8(frame[4])};
}

void VirtualBench::forgetHeard()
{
    for (const auto& place : places)
        place->heard.clear();
}

// --- What the logger has said ---

bool VirtualBench::isRunning(int i) const
{
    return logger(i).isRunning();
}

void VirtualBench::keep(const Said& said, Rows* rows)
{
    constexpr int vortaSample = 8; // bytes; the fastest rate has fewer, and no test
    const bool isVorta = said.ids.contains(SENSOR_VORTA_FORCE5);
    const int number = isVorta ? said.packet.sampleBytes.size() / vortaSample : 1;
    for (int i = 0; i < number; ++i)
        rows->insert(said.packet.sample * number + i, isVorta ? QVector<double>() : values(said));
}

QVector<double> VirtualBench::values(const Said& said)
{
    QVector<double> row;
    int offset = 0;
    for (const int id : said.ids) {
        const SensorKind kind(id);
        const QByteArray block =
            said.packet.sampleBytes.mid(offset, kind.numBytes()).leftJustified(kind.numBytes());
        QVector<double> values(kind.valueCount());
        kind.decode(reinterpret_cast<const unsigned char*>(block.constData()), values.data());
        row += values;
        offset += kind.numBytes();
    }
    return row;
}

// --- The machinery ---

// Answers go out from the event loop: a program that writes is never interrupted by what it reads.
void VirtualBench::take(int i, const QByteArray& bytes)
{
    Place& place = *places[size_t(i)];
    if (place.isDead)
        return;
    say(place, place.logger->receive(bytes, now()));
    setTimer();
}

void VirtualBench::say(Place& place, const LoggerPackets& packets)
{
    const qint64 due = now() + place.delay;
    for (const LoggerPacket& packet : packets) {
        const bool isSample = packet.run > 0;
        const Said said{due, packet, isSample ? place.logger->sampleIds() : QVector<int>()};
        if (isSample) {
            place.runs = packet.run;
            keep(said, &place.taken[packet.run]);
        }
        if (isSample ? packet.sample >= place.lostFrom && packet.sample <= place.lostTo
                     : place.answersToDrop > 0) {
            place.answersToDrop -= isSample ? 0 : 1;
            continue;
        }
        place.said.push_back(said);
    }
}

void VirtualBench::deliver(int i)
{
    Place& place = *places[size_t(i)];
    while (!place.said.empty() && place.said.front().due <= now()) {
        const Said said = place.said.front();
        place.said.pop_front();
        FakePort* line = port(i);
        if (place.isDead || !line || !line->isOpen())
            continue;
        if (said.packet.run > 0)
            keep(said, &place.arrived[said.packet.run]);
        const QByteArray bytes = place.damage ? place.damage(said.packet.bytes) : said.packet.bytes;
        if (!bytes.isEmpty())
            line->feed(bytes);
    }
}

void VirtualBench::work()
{
    for (int i = 0; i < count(); ++i) {
        say(*places[size_t(i)], places[size_t(i)]->logger->advance(now()));
        deliver(i);
    }
    setTimer();
}

void VirtualBench::setTimer()
{
    qint64 due = -1;
    const auto consider = [&due](qint64 other) {
        if (other >= 0 && (due < 0 || other < due))
            due = other;
    };
    for (const auto& place : places) {
        consider(place->logger->nextDue());
        if (!place->said.empty())
            consider(place->said.front().due);
    }
    if (due < 0)
        timer.stop();
    else
        timer.start(int(qMax<qint64>(0, (due - now() + nsPerMs - 1) / nsPerMs)));
}
