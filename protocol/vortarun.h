#pragma once

#include <QElapsedTimer>
#include <QVector>

#include <array>

#include "protocol/packets.h"
#include "protocol/rundecoder.h"

/// The run of a force logger. It sends blocks of samples without a number and can't be told its channels, so
/// the program decides which of them count, and tells by the clock where a run goes on after a lost line.
class VortaRun
{
public:
    using Block = QVector<QVector<double>>;
    static constexpr quint16 fastChannels = 0x15; ///< the only three that the fast packets carry

    explicit VortaRun(const Units& units)
        : units(units)
    {
    }

    /// The channels, and the sign of the forces, of the runs that begin from now on.
    void choose(quint16 mask, bool invertForce);
    /// Of the two force channels, as a status tells.
    void calibrate(const Packets::VortaStatus& status);
    const ForceCalibration& calibration(int forceChannel) const { return force[forceChannel]; }

    /// A run was asked for: what comes now is no late block of the one before.
    void expect(double samplePeriod);
    /// The logger says that a run began.
    void begin(double samplePeriod);
    /// The logger says that it ended. Blocks that were still under way belong to no run.
    void end();
    /// The line is lost; the run may go on behind it.
    void interrupt() { isInterrupted = isOpen; }
    /// Another logger may hang on the port by now.
    void forget();
    bool isRunning() const { return isOpen; }
    /// Seconds between two samples of the present run or the last one; 0 before any.
    double period() const { return ownPeriod; }

    /// Takes a block of `count` samples; false for a late one. `usualPeriod` is for a run that was joined
    /// late.
    bool take(const unsigned char* samples, int count, bool isFast, double usualPeriod);
    /// What was taken last: its values, good until the next one, and its number.
    const Block& block() const { return rows; }
    int number() const { return next - 1; }
    /// Of the present run or the last one; before any as they were chosen.
    SensorList channels() const;

    /// The values of a snapshot, by channel.
    Block snapshot(const Packets::VortaWords& words) const;

private:
    static constexpr int channelCount = 5;
    using Kinds = std::array<SensorKind, channelCount>;

    Kinds kindsNow() const;
    RunDecoder layoutOf(quint16 mask) const;
    void freeze(bool isFast);
    bool isLate() const;
    void findNumber(double blockPeriod);
    void decode(const Packets::VortaWords& words, QVector<double>* row) const;

    Units units;
    quint16 chosen = 0x02;
    bool isForceInverted = false;
    ForceCalibration force[2];

    bool isOpen = false;
    bool isExpected = false;
    bool isInterrupted = false;
    bool isFrozen = false;
    bool isFastRun = false;
    double ownPeriod = 0;
    int next = 0;          ///< number of the next block
    QElapsedTimer begun;   ///< since the first sample, as well as the arrival of the first block tells
    double beforehand = 0; ///< seconds to be added to it
    QElapsedTimer ended;
    Kinds kinds;
    RunDecoder layout;
    Block rows;
};
