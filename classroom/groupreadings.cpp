#include "classroom/groupreadings.h"

#include "classroom/classrun.h"
#include "classroom/loggerconnector.h"
#include "classroom/multiconnectionsmanager.h"
#include "classroom/replay.h"
#include "data/expdata.h"
#include "data/novalue.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace {

constexpr int msBetweenMarks = 500;
constexpr int msOfMarks = 5000;
constexpr int msUntilOld = 5000;
constexpr double periodsUntilOld = 2.5;
constexpr double nearNominal = 0.04; // packets come in bunches

bool isEmptyRow(const QVector<double>& values)
{
    return std::all_of(values.begin(), values.end(), [](double value) { return std::isnan(value); });
}

const QString& longer(const QString& a, const QString& b)
{
    return b.size() > a.size() ? b : a;
}

} // namespace

bool GroupReading::operator==(const GroupReading& other) const
{
    const auto parts = [](const GroupReading& r) {
        return std::tie(r.group, r.channel, r.unit, r.digits, r.widest, r.age, r.isOld, r.perSecond, r.lost,
                        r.link, r.isBatteryLow);
    };
    return parts(*this) == parts(other);
}

GroupReadings::GroupReadings(multiConnectionsManager* manager, QObject* parent)
    : QObject(parent)
    , manager(manager)
    , snapshots(manager)
{
    clock.start();
    const ClassRun* const run = &manager->run();
    connect(run, &ClassRun::rowTaken, this, &GroupReadings::takeRow);
    connect(run, &ClassRun::experimentBegun, this, [this](int slot) {
        Place& place = places[slot];
        place.rowAt = -1;
        place.number = -1;
        place.lost = 0;
        place.marks.clear();
        Q_EMIT changed(slot);
    });
    const auto forgetReplay = [this] {
        for (int slot = 0; slot < mostLoggers; ++slot) {
            replayPlaces[slot] = Place();
            Q_EMIT changed(slot);
        }
    };
    connect(&manager->replay(), &Replay::begun, this, forgetReplay);
    connect(&manager->replay(), &Replay::ended, this, forgetReplay);
    for (int slot = 0; slot < mostLoggers; ++slot)
        connectLogger(slot);
}

void GroupReadings::connectLogger(int slot)
{
    const TembrinData* const state = manager->tembrinDataAt(slot);
    connect(state, &TembrinData::newSnapReceived, this, [this, slot] {
        places[slot].snapshotAt = clock.elapsed();
        Q_EMIT changed(slot);
    });
    connect(state, qOverload<int, int>(&TembrinData::runTerminated), this, [this](int index, int reason) {
        places[index].isBatteryLow = reason == TERMINATE_BATTERY;
        Q_EMIT changed(index);
    });
}

/// Comes for each sample of the class, so it only counts.
void GroupReadings::takeRow(int slot, double time, const QVector<double>& values)
{
    Place& place = places[slot];
    const ExpData* const set = manager->dataAt(slot);
    place.size = set->getXSize();
    if (isEmptyRow(values))
        return; // stands behind a gap
    place.isBatteryLow = false;
    place.rowAt = clock.elapsed();
    ++place.rows;
    const qint64 number = set->dt > 0 ? qRound64(time / set->dt) : place.number + 1;
    if (place.number >= 0 && number > place.number + 1)
        place.lost += int(number - place.number - 1);
    place.number = number;
    if (!place.marks.isEmpty() && place.rowAt - place.marks.constLast().at < msBetweenMarks)
        return;
    place.marks.append({place.rowAt, place.rows});
    while (place.marks.size() > 2 && place.rowAt - place.marks.at(1).at >= msOfMarks)
        place.marks.removeFirst();
}

/// The newest value of a channel that is known to be of this logger, in base units.
double GroupReadings::newest(int slot, const Sensor& channel, qint64* at) const
{
    const Place& place = places[slot];
    const ExpData* const set = manager->dataAt(slot);
    if (place.rowAt >= place.snapshotAt) {
        *at = place.rowAt;
        const QVector<double>& column = set->getYNoConv(qMax(0, set->getSelectedSensor()));
        const bool isOfRun = place.rowAt >= 0 && place.size == set->getXSize();
        return isOfRun && !column.isEmpty() ? column.constLast() : noValue;
    }
    *at = place.snapshotAt;
    return snapshots.ofSnapshot(slot, channel.ID);
}

void GroupReadings::takeValue(Place* place, const Sensor& channel, double value, qint64 at) const
{
    if (place->channel != channel.ID || place->group != channel.groupName) {
        place->channel = channel.ID;
        place->group = channel.groupName;
        place->digits.clear();
        place->measuredAt = -1;
        place->widest =
            longer(channel.valueToString(channel.minView), channel.valueToString(channel.maxView));
    }
    if (std::isnan(value))
        return;
    place->digits = channel.valueToString(channel.shownValue(value, false));
    place->widest = longer(place->widest, place->digits);
    place->measuredAt = at;
}

GroupReading GroupReadings::readingOf(const Place& place, const Sensor& channel) const
{
    GroupReading reading;
    reading.group = channel.groupName;
    reading.channel = channel.name;
    reading.unit = channel.unitName;
    reading.digits = place.digits;
    reading.widest = place.widest;
    return reading;
}

/// What the group had measured by then. What had failed then is no more than a hole in its curve.
GroupReading GroupReadings::replayed(int slot)
{
    const SensorPtr channel = manager->classChannel(slot);
    const ExpData* const set = manager->dataAt(slot);
    const QVector<double>& column = set->getYNoConv(qMax(0, set->getSelectedSensor()));
    int last = qMin(column.size(), set->getXSize()) - 1;
    while (last >= 0 && std::isnan(column.at(last)))
        --last;
    const double now = manager->replay().now();
    Place& place = replayPlaces[slot];
    if (last < 0)
        place.channel = -1; // the slider went back: nothing is known any more
    takeValue(&place, *channel, last < 0 ? noValue : column.at(last), last);
    GroupReading reading = readingOf(place, *channel);
    reading.link = GroupReading::Link::Replayed;
    if (last < 0)
        return reading;
    reading.lost = lostOfReplay(slot);
    if (set->dt <= 0)
        return reading;
    const double age = now - set->getXAt(last);
    reading.age = int(age);
    reading.isOld = age > std::max(msUntilOld / 1000.0, set->dt * periodsUntilOld);
    reading.perSecond = reading.isOld || last == 0 ? 0 : 1 / set->dt;
    return reading;
}

/// A row without values stands for a gap.
int GroupReadings::lostOfReplay(int slot) const
{
    const ExpData* const set = manager->dataAt(slot);
    if (set->getXSize() == 0 || set->dt <= 0)
        return 0;
    const QVector<QVector<double>>& columns = set->getData();
    int there = 0;
    for (int row = 0; row < set->getXSize(); ++row) {
        there += std::any_of(columns.cbegin(), columns.cend(), [row](const QVector<double>& column) {
            return row < column.size() && !std::isnan(column.at(row));
        });
    }
    const qint64 span = qRound64((set->getX().constLast() - set->getX().constFirst()) / set->dt) + 1;
    return int(std::max<qint64>(0, span - there));
}

void GroupReadings::takeValue(int slot, const SensorPtr& channel)
{
    qint64 at = -1;
    const double value = newest(slot, *channel, &at);
    takeValue(&places[slot], *channel, value, at);
}

GroupReading GroupReadings::reading(int slot)
{
    if (manager->replay().isOn())
        return replayed(slot);
    const SensorPtr channel = manager->classChannel(slot);
    const QString port = manager->tembrinAt(slot)->portName;
    const QString before = std::exchange(places[slot].port, port);
    if (!before.isEmpty() && before != port) {
        places[slot] = Place(); // another logger has measured nothing yet
        places[slot].port = port;
    }
    takeValue(slot, channel);
    const Place& place = places[slot];
    GroupReading reading = readingOf(place, *channel);
    reading.link = linkOf(slot);
    reading.isBatteryLow = place.isBatteryLow;
    reading.lost = lostOf(slot);
    if (place.measuredAt < 0)
        return reading;
    const qint64 age = clock.elapsed() - place.measuredAt;
    const double period = place.measuredAt == place.rowAt ? manager->dataAt(slot)->dt * 1000 : 0;
    reading.age = int(age / 1000);
    reading.isOld = double(age) > std::max<double>(msUntilOld, period * periodsUntilOld);
    reading.perSecond = !reading.isOld && place.measuredAt == place.rowAt ? perSecond(slot) : 0;
    return reading;
}

double GroupReadings::perSecond(int slot) const
{
    const QVector<Mark>& marks = places[slot].marks;
    const bool isMeasured = marks.size() > 1 && (manager->isRunning(slot) || manager->run().isSimulation());
    if (!isMeasured)
        return 0;
    const double ms = double(marks.constLast().at - marks.constFirst().at);
    const double measured = 1000.0 * (marks.constLast().rows - marks.constFirst().rows) / ms;
    const double dt = manager->dataAt(slot)->dt;
    return dt > 0 && std::abs(measured * dt - 1) < nearNominal ? 1 / dt : measured;
}

/// What the logger's memory has filled in since is not lost.
int GroupReadings::lostOf(int slot) const
{
    const ExpData* const set = manager->dataAt(slot);
    if (places[slot].lost == 0 || set->getXSize() == 0 || set->dt <= 0)
        return 0;
    const qint64 span = qRound64((set->getX().constLast() - set->getX().constFirst()) / set->dt) + 1;
    return span > set->getXSize() ? places[slot].lost : 0;
}

GroupReading::Link GroupReadings::linkOf(int slot) const
{
    if (manager->isTembrinConnect(slot))
        return GroupReading::Link::On;
    const LoggerConnector& connector = manager->connector();
    if (connector.isSought(slot))
        return GroupReading::Link::Sought;
    const LoggerConnector::State state = connector.state(slot);
    const bool isTried = state == LoggerConnector::State::Opening || state == LoggerConnector::State::Waiting;
    return isTried ? GroupReading::Link::Connecting : GroupReading::Link::Off;
}
