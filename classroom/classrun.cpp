#include "classroom/classrun.h"

#include "classroom/classlog.h"
#include "classroom/commandqueue.h"
#include "classroom/multiconnectionsmanager.h"
#include "classroom/replay.h"
#include "data/expdata.h"
#include "protocol/rundecoder.h"
#include "protocol/storeddownload.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {
constexpr int msOfLateSamples = 1000;
constexpr int msOfOlderRun = 500; // by which a run is older than that of the class; less is the clocks' doing
constexpr int biggestGap = 3;     // sample numbers; in a run that was begun on the logger more is another run
} // namespace

ClassRun::ClassRun(multiConnectionsManager* manager)
    : QObject(manager)
    , manager(manager)
    , set(manager)
{
    clock.start();
    for (int slot = 0; slot < manager->nMaxTembrins(); ++slot)
        connectLogger(slot);
}

void ClassRun::connectLogger(int slot)
{
    const TembrinData* logger = state(slot);
    connect(logger, qOverload<int, short, QVector<QVector<double>>, int>(&TembrinData::onlineReceived), this,
            &ClassRun::takeSamples);
    connect(logger, &TembrinData::statusReceived, this, [this, slot] { takeStatus(slot); });
    connect(logger, qOverload<int, bool>(&TembrinData::runTerminated), this, [this](int index) {
        if (!isOfEarlierStop(index))
            takeEnd(index);
    });
    connect(logger, qOverload<int, int>(&TembrinData::runTerminated), this, [this](int index) {
        if (places[index].phase == Phase::Ordered)
            places[index].isStored = false; // it refused
        takeEnd(index);
    });
    connect(manager->tembrinAt(slot), &TembrinProtocol::loggerDisconnected, this, &ClassRun::takeLoss);
}

TembrinData* ClassRun::state(int slot) const
{
    return manager->tembrinDataAt(slot);
}

ExpData* ClassRun::data(int slot) const
{
    return manager->dataAt(slot);
}

// --- The state of the run ---

bool ClassRun::isRunning(int slot) const
{
    if (!manager->isTembrinConnect(slot) || places[slot].isGivenUp)
        return false;
    const Phase phase = places[slot].phase;
    return phase == Phase::Ordered || phase == Phase::Running ||
           (manager->isRecognized(slot) && !state(slot)->isIdle());
}

bool ClassRun::isAnyRunning() const
{
    for (int slot = 0; slot < manager->nDefTembrins(); ++slot) {
        if (isRunning(slot))
            return true;
    }
    return false;
}

QDateTime ClassRun::lostSince(int slot) const
{
    const bool isAway = slot < manager->nDefTembrins() && places[slot].phase == Phase::Lost;
    return isAway ? places[slot].lost : QDateTime();
}

qint64 ClassRun::elapsed() const
{
    if (isPlayed) // its own time, which pauses
        return qRound64(data(0)->getMaxX() * 1000);
    return isOn ? clock.elapsed() - begunAt : duration;
}

int ClassRun::samples() const
{
    return taken;
}

void ClassRun::setPhase(int slot, Phase phase)
{
    if (places[slot].phase == phase)
        return;
    places[slot].phase = phase;
    Q_EMIT phaseChanged(slot);
}

void ClassRun::beginRun()
{
    endSimulation();
    isOn = true;
    begunAt = clock.elapsed();
    taken = 0;
    isStopped = false;
    storedRuns = gaps = 0;
    Q_EMIT begun();
}

void ClassRun::forget()
{
    for (Place& place : places) {
        const bool isGivenUp = place.isGivenUp;
        place = Place();
        place.isGivenUp = isGivenUp;
    }
    isOn = isStopped = false;
    storedRuns = gaps = 0;
    duration = 0;
    taken = 0;
    if (std::exchange(isPlayed, false))
        Q_EMIT simulationEnded();
}

/// Who is not in a run shows nothing in it: what was there is of the run before.
void ClassRun::clearPast(int slot)
{
    if (!data(slot) || data(slot)->getXSize() == 0)
        return;
    data(slot)->setDataNewEmpty(planned(slot), state(slot)->samplePeriod(), manager->groupName(slot));
    Q_EMIT channelsPlanned(slot);
}

void ClassRun::order(quint8 which)
{
    if (!manager->dataC())
        return;
    beginRun();
    for (int slot = 0; slot < manager->nDefTembrins(); ++slot) {
        Place& place = places[slot];
        place = Place();
        if (!(which >> slot & 1)) {
            clearPast(slot);
            continue;
        }
        place.isOrdered = true;
        place.isStored = state(slot)->isFastRate();
        place.storedBefore = state(slot)->numExperiments();
        data(slot)->setDataNewEmpty(planned(slot), state(slot)->samplePeriod(), manager->groupName(slot));
        setPhase(slot, Phase::Ordered);
        Q_EMIT experimentBegun(slot);
    }
    set.rebuild(which);
    Q_EMIT classBegun();
}

void ClassRun::takeStatus(int slot)
{
    Place& place = places[slot];
    const bool wasGivenUp = std::exchange(place.isGivenUp, false);
    const bool isIdle = state(slot)->isIdle();
    if (!isIdle)
        place.isStored = state(slot)->isFastRate();
    // One that was away tells how it stands; the word of an end may have been lost on the way.
    if (place.phase == Phase::Lost || place.phase == Phase::Running) {
        if (isIdle)
            takeEnd(slot);
        else
            goOn(slot);
    } else if (!isIdle && (place.phase == Phase::Ordered || place.isStored)) {
        if (!isOn) // begun with its own key, and no sample tells so
            beginExperiment(slot, 0, planned(slot));
        goOn(slot);
    }
    if (gaps != 0 && !isAnyRunning())
        tellGaps();
    showPlanned(slot);
    Q_EMIT phaseChanged(slot);
    if (std::exchange(place.owesStop, false) && !isIdle)
        Q_EMIT stopOwed(slot);
    if (wasGivenUp)
        Q_EMIT heardAgain(slot);
}

/// The logger runs, or runs again after it was away.
void ClassRun::goOn(int slot)
{
    if (!isOn) {
        isOn = true;
        if (places[slot].phase != Phase::Lost)
            beginRun();
    }
    places[slot].isSeen = true;
    setPhase(slot, Phase::Running);
}

/// It has told that it runs, or there is more in its memory than at the order.
bool ClassRun::wasSeen(int slot) const
{
    return places[slot].isSeen || state(slot)->numExperiments() > places[slot].storedBefore;
}

/// What is still to start has not ended: the word is the late answer to a stop of the run before.
bool ClassRun::isOfEarlierStop(int slot) const
{
    return places[slot].phase == Phase::Ordered && !wasSeen(slot) && !state(slot)->isVorta() &&
           manager->queue().isOpen(ClassJob::Task::Start, slot);
}

void ClassRun::takeEnd(int slot)
{
    Place& place = places[slot];
    if (place.phase == Phase::Idle || place.phase == Phase::Ended) {
        Q_EMIT phaseChanged(slot); // it may have run unseen
        return;
    }
    // One that was never seen to run has perhaps nothing new to fetch.
    if (place.isStored && wasSeen(slot))
        storedRuns |= quint8(1u << slot);
    if (!place.isStored && (place.hasGap || place.isAway)) // it may have gone on after the loss
        gaps |= quint8(1u << slot);
    place.endedAt = clock.elapsed();
    if (data(slot))
        data(slot)->finalData = true;
    setPhase(slot, Phase::Ended);
    endIfNobodyRuns();
}

void ClassRun::giveUp(int slot)
{
    places[slot].isGivenUp = true;
    takeLoss(slot);
    Q_EMIT phaseChanged(slot);
}

void ClassRun::takeLoss(int slot)
{
    Place& place = places[slot];
    if (place.phase != Phase::Ordered && place.phase != Phase::Running)
        return;
    place.lost = QDateTime::currentDateTime();
    if (data(slot))
        data(slot)->finalData = true;
    place.isAway = true;
    setPhase(slot, Phase::Lost);
    endIfNobodyRuns();
}

void ClassRun::endIfNobodyRuns()
{
    if (isAnyRunning())
        return;
    if (std::exchange(isOn, false))
        endRun();
    // Also when the run was over before the logger came back and told that its own is.
    if (const quint8 stored = std::exchange(storedRuns, 0))
        Q_EMIT storedRunsEnded(stored);
    tellGaps();
}

void ClassRun::endRun()
{
    duration = clock.elapsed() - begunAt;
    if (manager->dataC())
        manager->dataC()->setXRange();
    Q_EMIT ended();
}

bool ClassRun::isSought(int slot) const
{
    const Place& place = places[slot];
    return place.phase == Phase::Lost && !manager->isTembrinConnect(slot) && !isStopped;
}

bool ClassRun::isAwaited() const
{
    if (isAnyRunning())
        return false;
    for (int slot = 0; slot < manager->nDefTembrins(); ++slot) {
        if (places[slot].isOrdered && isSought(slot))
            return true;
    }
    return false;
}

void ClassRun::noteStop()
{
    isStopped = true;
    for (int slot = 0; slot < mostLoggers; ++slot) {
        if (places[slot].phase != Phase::Lost || manager->isTembrinConnect(slot))
            continue;
        places[slot].owesStop = true;
        Q_EMIT phaseChanged(slot);
    }
}

// --- Gaps ---

/// Those that can be asked. The others may come back.
void ClassRun::tellGaps()
{
    quint8 which = 0;
    for (int slot = 0; slot < manager->nDefTembrins(); ++slot) {
        const bool hasMore = state(slot)->numExperiments() > places[slot].storedBefore;
        if (gaps >> slot & 1 && manager->isRecognized(slot) && !state(slot)->isVorta() && hasMore)
            which |= quint8(1u << slot);
    }
    gaps &= quint8(~which);
    if (which != 0)
        Q_EMIT gapsLeft(which);
}

int ClassRun::fillGaps(int slot, const StoredRun& stored)
{
    const Place& place = places[slot];
    ExpData* own = data(slot);
    const QVector<int> origins = originsOf(*own, stored.channels);
    if (own->getXSize() == 0 || stored.dt != own->dt || origins.count(-1) == origins.size())
        return -1;
    int count = 0;
    for (const QVector<double>& column : stored.columns)
        count = qMax(count, column.size());
    const double step = own->dt > 0 ? own->dt : 1;
    // Nobody asked for what was before the run, or before this program was there.
    const double earliest = place.isOrdered ? 0 : own->getXAt(0);
    const int first = qMax(0, int(qRound64(earliest / step) - place.shift));
    QVector<double> times;
    for (int i = first; i < count; ++i)
        times.append(step * double(place.shift + i));
    QVector<QVector<double>> columns;
    for (const int origin : origins)
        columns.append(stored.columns.value(origin).mid(first));
    const int filled = own->fillRows(times, columns);
    if (filled > 0)
        set.join(slot);
    return filled;
}

// --- Channels before the first sample ---

/// What a logger would record as it is set now.
SensorList ClassRun::planned(int slot) const
{
    const TembrinData* logger = state(slot);
    // A Vorta logger is told with the start what else a logger tells by itself.
    const quint16 mask =
        logger->isVorta() ? manager->tembrinAt(slot)->wanted().mask : logger->reported().mask;
    return RunDecoder(logger->getSensors(), mask, manager->tembrinAt(slot)->units).channels();
}

/// Before a group has measured anything its graph names the sensors that its logger is set to.
void ClassRun::showPlanned(int slot)
{
    ExpData* own = data(slot);
    if (!own || own->getXSize() > 0 || slot >= manager->nDefTembrins() || places[slot].phase != Phase::Idle ||
        (isPlayed && slot == 0) || manager->replay().isOn()) // which may not have come to its first sample
        return;
    const SensorList channels = planned(slot);
    const SensorList& shown = own->getSensors();
    const int recorded = own->meanIndex() + 1; // a formula may give more
    const bool isSame =
        own->dt == state(slot)->samplePeriod() &&
        std::equal(shown.begin(), shown.begin() + recorded, channels.begin(), channels.end(),
                   [](const SensorPtr& a, const SensorPtr& b) { return a && a->ID == b->ID; });
    if (isSame || channels.isEmpty())
        return;
    own->setDataNewEmpty(channels, state(slot)->samplePeriod(), manager->groupName(slot));
    if (!isOn && set.memberBits() == 0 && manager->dataC() && manager->dataC()->getXSize() == 0)
        set.begin(state(slot)->samplePeriod());
    Q_EMIT channelsPlanned(slot);
}

// --- Samples ---

/// Still under way when the logger had said that it stopped.
bool ClassRun::isLate(const Place& place, int current) const
{
    return place.phase == Phase::Ended && current > 0 && clock.elapsed() - place.endedAt < msOfLateSamples;
}

bool ClassRun::isSecondPart(const Place& place, int number) const
{
    if (!place.isOrdered || place.last < 0)
        return false;
    switch (place.phase) {
    case Phase::Idle:
    case Phase::Ordered:
        return false;
    case Phase::Running:
    case Phase::Lost:
        return number <= place.last;
    case Phase::Ended:
        return isOn;
    }
    return false;
}

bool ClassRun::isNew(int slot, int number) const
{
    const Place& place = places[slot];
    switch (place.phase) {
    case Phase::Idle:
    case Phase::Ordered:
    case Phase::Ended:
        return true;
    case Phase::Lost:
        return place.last < 0 || number <= place.last;
    case Phase::Running:
        if (place.last < 0) // it was known to run before its first sample
            return true;
        return number <= place.last ||
               (!place.isOrdered && number - place.last > biggestGap && !isBackInTime(slot, number));
    }
    return true;
}

/// It was away, and its number is that of a run that has gone on meanwhile.
bool ClassRun::isBackInTime(int slot, int number) const
{
    constexpr double mostLate = 2; // s, of a packet
    const Place& place = places[slot];
    const double dt = data(slot)->dt;
    const double due = double(clock.elapsed() - place.zero) / 1000 - dt * double(place.shift);
    return place.isAway && dt > 0 && std::abs(dt * number - due) <= mostLate + biggestGap * dt;
}

void ClassRun::takeSamples(int slot, short current, const QVector<QVector<double>>& rows, int samplesWaiting)
{
    Place& place = places[slot];
    if (current < 0) {
        Q_EMIT tooSlow(slot);
        return;
    }
    if (!data(slot) || rows.isEmpty() || isLate(place, current))
        return;
    place.isGivenUp = false;
    const int number = current * rows.size();
    if (isSecondPart(place, number))
        beginSecondPart(slot, number);
    else if (isNew(slot, number))
        beginExperiment(slot, number, state(slot)->runChannels());
    goOn(slot);
    data(slot)->finalData = false;

    const double dt = data(slot)->dt;
    // Single samples that a noisy line loses are not worth a download.
    if (std::exchange(place.isAway, false)) {
        place.hasGap = place.hasGap || number > place.last + 1;
        const double unit = dt > 0 ? dt : 1;
        showGap(slot, unit * double(place.shift + number), arranged(slot, rows.constFirst()).size());
    }
    for (int i = 0; i < rows.size(); ++i) {
        const double n = double(place.shift + number + i);
        const double time = dt > 0 ? dt * n : n;
        const QVector<double> values = arranged(slot, rows.at(i));
        data(slot)->addSample(time, values);
        set.take(slot);
        Q_EMIT rowTaken(slot, time, values);
    }
    place.last = number + rows.size() - 1;
    taken += rows.size();
    Q_EMIT samplesTaken(slot, samplesWaiting);
}

/// The curve does not go straight on from where it broke off.
void ClassRun::showGap(int slot, double time, int channels)
{
    ExpData* own = data(slot);
    const double step = own->dt > 0 ? own->dt : 1;
    if (own->getXSize() == 0 || time < own->getX().constLast() + 1.5 * step)
        return;
    const double from = own->getX().constLast() + step;
    const QVector<double> nothing(channels, qQNaN());
    own->addSample(from, nothing);
    Q_EMIT rowTaken(slot, from, nothing);
}

/// No other logger is in a run.
bool ClassRun::isAlone(int slot) const
{
    for (int other = 0; other < manager->nDefTembrins(); ++other) {
        const Phase phase = places[other].phase;
        if (other != slot && phase != Phase::Idle && phase != Phase::Ended)
            return false;
    }
    return true;
}

void ClassRun::beginExperiment(int slot, int number, const SensorList& channels)
{
    Place& place = places[slot];
    // What was ordered together stays together, also when the others have ended before this one's first.
    const bool isFirst = !isOn || (!place.isOrdered && isAlone(slot));
    if (isFirst) {
        for (Place& other : places) {
            if (&other != &place && other.phase != Phase::Running && other.phase != Phase::Ordered)
                other = Place();
        }
        beginRun();
    }
    const double dt = state(slot)->samplePeriod();
    if (isFirst) // one that has been running for a while, as after a crash of the program, has not begun now
        begunAt -= qint64(dt * number * 1000);
    const bool isAsPlanned = data(slot)->dt == dt;
    place.last = -1;
    place.hasGap = false;
    if (!place.isOrdered)
        place.storedBefore = state(slot)->numExperiments();
    place.origins.clear();
    place.isOrdered = place.isOrdered && !isFirst;
    place.shift = isFirst ? 0 : shiftOfOlderRun(place, number, dt);
    place.zero = clock.elapsed() - qint64(dt * double(place.shift + number) * 1000);
    if (!isFirst && data(slot)->getXSize() > 0)
        Q_EMIT groupReplaced(slot);
    data(slot)->setDataNewEmpty(channels, dt, manager->groupName(slot));
    data(slot)->setCardWidth(manager->tembrinAt(slot)->photoObjW);
    Q_EMIT experimentBegun(slot);
    if (isFirst) {
        set.rebuild(quint8(1u << slot));
        Q_EMIT classBegun();
    } else if (!isAsPlanned && place.isOrdered && manager->dataC()->getXSize() == 0) {
        set.rebuild(set.memberBits() | quint8(1u << slot));
    } else {
        const int before = set.channels();
        set.join(slot);
        if (set.channels() != before)
            Q_EMIT classBegun();
    }
}

/// One that was away when the run was ordered may still be in an older run of its own: its samples stand at
/// their true time in this one.
qint64 ClassRun::shiftOfOlderRun(const Place& place, int number, double dt) const
{
    if (place.isOrdered || dt <= 0 || dt * number * 1000 <= double(elapsed() + msOfOlderRun))
        return 0;
    return qRound64(double(elapsed()) / 1000 / dt) - number;
}

/// A logger that was stopped and started in the middle of a run of the class, with its own keys: what comes
/// follows what there is, at its true time.
void ClassRun::beginSecondPart(int slot, int number)
{
    Place& place = places[slot];
    const ExpData* own = data(slot);
    const double unit = own->dt > 0 ? own->dt : 1;
    const qint64 next = own->getXSize() > 0 ? qRound64(own->getX().constLast() / unit) + 1 : 0;
    const qint64 now = own->dt > 0 ? qRound64(double(clock.elapsed() - place.zero) / 1000 / unit) : next;
    place.shift = qMax(next, now) - number;
    place.last = -1;
    place.storedBefore = state(slot)->numExperiments();
    followSensors(slot);
    qCInfo(classLog, "logger %d runs again in this run, from %g on", slot,
           double(place.shift + number) * unit);
}

/// A channel goes on with the sensor that it began with, wherever that stands now; without it, it has a gap.
void ClassRun::followSensors(int slot)
{
    QVector<int>& origins = places[slot].origins;
    const SensorList now = state(slot)->runChannels();
    origins = originsOf(*data(slot), now);
    if (origins.size() != now.size() || origins.contains(-1))
        Q_EMIT sensorsChanged(slot);
}

/// The place in `channels` of each recorded channel of a set; -1 for one that is not there.
QVector<int> ClassRun::originsOf(const ExpData& own, const SensorList& channels)
{
    QVector<int> origins;
    for (const SensorPtr& channel : own.getSensors()) {
        if (!channel || channel->specialOriginIndex >= 0)
            break; // derived ones follow by themselves
        const auto same = std::find_if(channels.begin(), channels.end(), [&](const SensorPtr& other) {
            return other->ID == channel->ID && other->inLoggerIndex == channel->inLoggerIndex &&
                   other->virtualIndex == channel->virtualIndex;
        });
        origins.append(same == channels.end() ? -1 : int(same - channels.begin()));
    }
    return origins;
}

QVector<double> ClassRun::arranged(int slot, const QVector<double>& row) const
{
    const QVector<int>& origins = places[slot].origins;
    if (origins.isEmpty())
        return row;
    QVector<double> values;
    values.reserve(origins.size());
    for (const int origin : origins)
        values.append(row.value(origin, qQNaN()));
    return values;
}
