#include "classroom/classplan.h"

#include <algorithm>

#include "classroom/ratechoice.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

namespace {

constexpr int sockets = 2;
constexpr short vortaFastest = RateTables::vortaCount - 1; ///< carries the channels 0, 2 and 4 only
constexpr short vortaLeastSamples = 10;
constexpr quint16 missingAtFastest = 1U << 1 | 1U << 3;

ClassPlan::Field socketField(int socket)
{
    return socket == 0 ? ClassPlan::Socket1 : ClassPlan::Socket2;
}

int placeOf(const TembrinData& logger, int socket)
{
    const int place = logger.socketPlace(socket);
    return place < logger.getSensors().size() ? place : -1;
}

int socketAt(const TembrinData& logger, int place)
{
    return logger.isExtSens1(place) ? 0 : logger.isExtSens2(place) ? 1 : -1;
}

bool isPulse(int id)
{
    return id == QUELLMARK_HEARTRATE_WAVE || id == QUELLMARK_PHOTOGATE_HEART;
}

/// What the wire can say of a socket's sensor.
int known(int id)
{
    return Sensor::isIDVernier(id) || Sensor::isIDVestrel(id) ? id : 0;
}

} // namespace

// --- From the leader ---

void ClassPlan::follow(const TembrinData& leader, const LoggerSettings& now)
{
    vorta = leader.isVorta();
    const SensorList& sensors = leader.getSensors();
    QVector<Channel> list;
    for (int i = 0; i < sensors.size(); ++i) {
        Channel row{sensors[i]->ID, socketAt(leader, i), bool(now.mask >> i & 1), false};
        if (const Channel* before = like(row); before && before->isChosen) {
            row.isTicked = before->isTicked;
            row.isChosen = true;
        }
        list.append(row);
    }
    rows = list;

    LoggerSettings next = now;
    if (next.vortaSamples <= 0) // as one that was never started says
        next.vortaSamples = vortaLeastSamples;
    if (has(Rate)) {
        next.rate = shown.rate;
        next.vortaRate = shown.vortaRate;
    }
    if (has(Samples)) {
        next.samples = shown.samples;
        next.vortaSamples = shown.vortaSamples;
    }
    for (int i = 0; i < sockets; ++i) {
        if (has(socketField(i)))
            next.external[i] = shown.external[i];
    }
    if (has(InvertForce))
        next.vortaInvertForce = shown.vortaInvertForce;
    const LoggerSettings before = shown;
    shown = next;
    if (has(Trigger))
        chooseTrigger(before);
    for (const Field field : {Sound, Gps, Language}) {
        if (has(field))
            chooseConfiguration(field, before);
    }
    setUnits(before.fahrenheit, before.hpa);
    nameSockets(leader);
    shown.mask = ticks();
}

void ClassPlan::followSensors(const TembrinData& leader)
{
    LoggerSettings now = shown;
    now.mask = 0;
    const SensorList& sensors = leader.getSensors();
    for (int i = 0; i < sensors.size(); ++i) {
        const Channel* before = like({sensors[i]->ID, socketAt(leader, i)});
        now.mask |= quint16(before && before->isTicked ? 1U << i : 0U);
    }
    follow(leader, now);
}

/// The row of the same sensor, or of the same socket, as it was.
ClassPlan::Channel* ClassPlan::like(const Channel& row)
{
    const auto found = std::find_if(rows.begin(), rows.end(), [&row](const Channel& other) {
        return other.socket == row.socket && (row.socket >= 0 || other.id == row.id);
    });
    return found == rows.end() ? nullptr : &*found;
}

void ClassPlan::nameSockets(const TembrinData& leader)
{
    bool isAnyGate = false;
    for (Channel& row : rows) {
        if (row.socket < 0)
            continue;
        row.id = socketSensor(leader, row.socket);
        isAnyGate = isAnyGate || Sensor::isPhotoGate(row.id);
        if (!has(socketField(row.socket)))
            shown.external[row.socket] = known(row.id);
    }
    if (!has(Gate))
        gate = isAnyGate;
}

bool ClassPlan::canBeGate() const
{
    return std::any_of(rows.begin(), rows.end(),
                       [](const Channel& row) { return row.socket >= 0 && isPulse(row.id); });
}

quint16 ClassPlan::ticks() const
{
    quint16 mask = 0;
    for (int i = 0; i < rows.size(); ++i)
        mask |= quint16(rows[i].isTicked ? 1U << i : 0U);
    return mask;
}

// --- Choices ---

void ClassPlan::tick(int row, bool isOn)
{
    if (row < 0 || row >= rows.size())
        return;
    const quint16 before = ticks();
    rows[row].isTicked = isOn;
    rows[row].isChosen = true;
    if (vorta)
        keepVortaSensors(before);
    shown.mask = ticks();
}

void ClassPlan::chooseRate(short rate)
{
    chosen |= Rate;
    if (!vorta) {
        shown.rate = rate;
        return;
    }
    shown.vortaRate = rate;
    keepVortaSensors(ticks());
    shown.mask = ticks();
}

void ClassPlan::chooseSamples(short samples)
{
    chosen |= Samples;
    (vorta ? shown.vortaSamples : shown.samples) = samples;
}

void ClassPlan::plug(int socket, int id)
{
    shown.external[socket] = id;
    chosen |= socketField(socket);
    for (Channel& row : rows) {
        if (row.socket == socket && !Sensor::isIDVestrel(row.id))
            row.id = id;
    }
}

void ClassPlan::chooseGate(bool isOn)
{
    gate = isOn;
    chosen |= Gate;
    for (Channel& row : rows) {
        if (row.socket < 0 || !isPulse(row.id))
            continue;
        row.id = isOn ? QUELLMARK_PHOTOGATE_HEART : QUELLMARK_HEARTRATE_WAVE;
        shown.external[row.socket] = row.id;
    }
}

void ClassPlan::chooseInvertForce(bool isOn)
{
    shown.vortaInvertForce = isOn;
    chosen |= InvertForce;
}

/// One sensor always stays, and the fastest rate has no room for all.
void ClassPlan::keepVortaSensors(quint16 before)
{
    const quint16 carried = shown.vortaRate == vortaFastest ? quint16(~missingAtFastest) : quint16(0xFFFF);
    quint16 mask = ticks() & carried;
    if (mask == 0) {
        for (int i = 0; i < rows.size(); ++i) {
            const quint16 bit = quint16(1U << i);
            if (before & bit)
                mask = carried & bit ? bit : 1; // the last one, or the first sensor in its stead
        }
    }
    for (int i = 0; i < rows.size(); ++i) {
        rows[i].isTicked = mask >> i & 1;
        rows[i].isChosen = true;
    }
}

void ClassPlan::chooseTrigger(const LoggerSettings& trigger, bool isLasting)
{
    shown.trigType = trigger.trigType;
    shown.trigSens = trigger.trigSens;
    shown.trigLevel = trigger.trigLevel;
    shown.rangeSens = trigger.rangeSens;
    shown.rangeMin = trigger.rangeMin;
    if (isLasting)
        chosen |= Trigger;
}

void ClassPlan::chooseConfiguration(Field field, const LoggerSettings& conf)
{
    if (field == Sound)
        shown.sound = conf.sound;
    else if (field == Gps)
        shown.gps = conf.gps;
    else if (field == Language)
        shown.language = conf.language;
    chosen |= field;
}

void ClassPlan::setUnits(bool fahrenheit, bool hpa)
{
    shown.fahrenheit = fahrenheit;
    shown.hpa = hpa;
}

// --- For any logger ---

LoggerSettings ClassPlan::settingsFor(const TembrinProtocol& logger, Parts parts) const
{
    const TembrinData& state = *logger.tembrinData;
    LoggerSettings settings = logger.wanted();
    if (parts.testFlag(RunPart) && state.isVorta() == vorta)
        takeRun(state, &settings);
    if (state.isVorta())
        return settings;
    for (int i = 0; i < sockets; ++i) {
        if (parts.testFlag(SocketPart) && !vorta && placeOf(state, i) >= 0)
            settings.external[i] = known(socketSensor(state, i));
    }
    if (parts.testFlag(TriggerPart))
        takeTrigger(&settings);
    if (parts.testFlag(ConfigurationPart)) {
        const bool bluetooth = settings.bluetooth; // each logger's own
        settings.takeConfiguration(shown);
        settings.bluetooth = bluetooth;
    }
    return settings;
}

void ClassPlan::takeRun(const TembrinData& logger, LoggerSettings* settings) const
{
    settings->mask = maskFor(logger);
    if (vorta) {
        settings->vortaRate = shown.vortaRate;
        settings->vortaSamples = shown.vortaSamples;
        settings->vortaInvertForce = shown.vortaInvertForce;
    } else {
        settings->rate = RateChoice::counterpart(logger, shown.rate);
        settings->samples = shown.samples;
    }
}

void ClassPlan::takeTrigger(LoggerSettings* settings) const
{
    settings->trigType = shown.trigType;
    settings->trigSens = shown.trigSens;
    settings->trigLevel = shown.trigLevel;
    settings->rangeSens = shown.rangeSens;
    settings->rangeMin = shown.rangeMin;
}

/// What will be in a socket of this logger: a sensor that names itself stays, and the class shares the rest.
int ClassPlan::socketSensor(const TembrinData& logger, int socket) const
{
    const int place = placeOf(logger, socket);
    if (place < 0)
        return 0;
    const int own = logger.getSensors()[place]->ID;
    if (has(Gate) && isPulse(own))
        return gate ? QUELLMARK_PHOTOGATE_HEART : QUELLMARK_HEARTRATE_WAVE;
    const int planned = shown.external[socket];
    const bool isFamily = Sensor::isIDVestrel(planned);
    if (planned == 0 || (Sensor::isIDVestrel(own) && !isFamily))
        return own;
    return has(socketField(socket)) || !isFamily ? planned : own;
}

bool ClassPlan::isTickedOn(int id, int socket) const
{
    for (const Channel& row : rows) {
        if (socket >= 0 && row.socket == socket && row.id == id)
            return row.isTicked;
    }
    return std::any_of(rows.begin(), rows.end(),
                       [id](const Channel& row) { return row.id == id && row.isTicked; });
}

quint16 ClassPlan::maskFor(const TembrinData& logger) const
{
    quint16 mask = 0;
    const SensorList& sensors = logger.getSensors();
    for (int i = 0; i < sensors.size(); ++i) {
        const int socket = socketAt(logger, i);
        const int id = socket >= 0 ? socketSensor(logger, socket) : sensors[i]->ID;
        mask |= quint16(isTickedOn(id, socket) ? 1U << i : 0U);
    }
    return mask;
}

bool ClassPlan::lacksRate(const TembrinData& logger, short rate) const
{
    if (vorta || logger.isVorta())
        return false;
    return RateChoice::counterpart(logger, rate) != rate;
}

bool ClassPlan::lacksSensors(const TembrinData& logger) const
{
    return ticks() != 0 && (logger.isVorta() != vorta || maskFor(logger) == 0);
}
