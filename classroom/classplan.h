#pragma once

#include <QFlags>
#include <QVector>

#include "protocol/loggersettings.h"

class TembrinData;
class TembrinProtocol;

/// What the loggers of a class are to record and how they are to behave, as a value that a dialog edits and
/// hands over. It starts from one logger, its leader, and speaks of that logger's sensors and rates;
/// settingsFor() says what it means for any other. What a person has chosen stays as it is; all else follows
/// the leader.
class ClassPlan
{
public:
    /// A sensor of the leader's list.
    struct Channel
    {
        int id = 0;      ///< what it will be, where it stands in a socket
        int socket = -1; ///< 0 or 1
        bool isTicked = false;
        bool isChosen = false;
    };
    enum Field
    {
        Rate = 1,
        Samples = 2,
        Socket1 = 4,
        Socket2 = 8,
        Gate = 0x10,
        Trigger = 0x20,
        Sound = 0x40,
        Gps = 0x80,
        Language = 0x100,
        InvertForce = 0x200
    };
    Q_DECLARE_FLAGS(Fields, Field)
    /// What of the plan a command is to carry.
    enum Part
    {
        SocketPart = 1, ///< sensors in the sockets
        RunPart = 3,    ///< these, which sensors are recorded, how fast and how often
        TriggerPart = 4,
        ConfigurationPart = 8
    };
    Q_DECLARE_FLAGS(Parts, Part)

    /// What was not chosen becomes what `now` says of the leader.
    void follow(const TembrinData& leader, const LoggerSettings& now);
    /// Only the sensors that the leader has, and what names itself in its sockets, are taken anew.
    void followSensors(const TembrinData& leader);

    /// The settings shown; the mask, the sockets' sensors and the list indices are those of the leader.
    const LoggerSettings& settings() const { return shown; }
    const QVector<Channel>& channels() const { return rows; }
    bool isVorta() const { return vorta; }
    /// The pulse sensor of a socket stands in for a photogate.
    bool isGate() const { return gate; }
    /// A socket holds the sensor that can stand in for a photogate.
    bool canBeGate() const;

    // What a person chooses.
    void tick(int row, bool isOn);
    /// Indices into TembrinData::Rates and samplesNames(); of a Vorta leader into VortaRates, and a number.
    void chooseRate(short rate);
    void chooseSamples(short samples);
    /// The sensor `id` is, or will be, in socket 0 or 1; 0 for nothing.
    void plug(int socket, int id);
    void chooseGate(bool isOn);
    void chooseInvertForce(bool isOn);
    /// The parts of trigger and range are taken; they stay where `isLasting`.
    void chooseTrigger(const LoggerSettings& trigger, bool isLasting = true);
    /// Sound, Gps or Language is taken from `conf`.
    void chooseConfiguration(Field field, const LoggerSettings& conf);
    /// The units that the loggers show are always the program's.
    void setUnits(bool fahrenheit, bool hpa);

    /// What a logger has to be sent: its own wanted settings, with what these parts of the plan say of such a
    /// logger. A Vorta logger and the others take nothing of a setup that was made for the other kind.
    LoggerSettings settingsFor(const TembrinProtocol& logger,
                               Parts parts = Parts(RunPart) | ConfigurationPart) const;
    /// The logger takes part in the setup, but at another rate than the one shown.
    bool lacksRate(const TembrinData& logger) const { return lacksRate(logger, shown.rate); }
    bool lacksRate(const TembrinData& logger, short rate) const;
    /// None of the sensors that are ticked is on this logger.
    bool lacksSensors(const TembrinData& logger) const;

private:
    Channel* like(const Channel& row);
    void takeRun(const TembrinData& logger, LoggerSettings* settings) const;
    void takeTrigger(LoggerSettings* settings) const;
    bool has(Field field) const { return chosen.testFlag(field); }
    void nameSockets(const TembrinData& leader);
    void keepVortaSensors(quint16 before);
    quint16 ticks() const;
    int socketSensor(const TembrinData& logger, int socket) const;
    bool isTickedOn(int id, int socket) const;
    quint16 maskFor(const TembrinData& logger) const;

    LoggerSettings shown;
    QVector<Channel> rows;
    Fields chosen;
    bool vorta = false;
    bool gate = false;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(ClassPlan::Fields)
Q_DECLARE_OPERATORS_FOR_FLAGS(ClassPlan::Parts)
