#pragma once

#include "virtual/lessonsignals.h"
#include "virtual/samplewriter.h"
#include "virtual/virtualloader.h"
#include "virtual/wire.h"

#include <QByteArray>
#include <QDateTime>
#include <QVector>

#include <functional>

struct LoggerModel;

/// What a logger is and how it stands when it is switched on.
struct LoggerIdentity
{
    /// What a request for the next packet does that comes so late that the packet before it must be lost.
    enum Resend
    {
        ResendSame, ///< sends that packet once more
        ResendNext  ///< goes on, as an unaware firmware would
    };

    const LoggerModel* model = nullptr;
    QString name;
    int firmwareMajor = 4;
    int firmwareMinor = 5;
    quint32 seed = 1;
    quint16 mask = 0;
    int rate = 3;
    int samplesIndex = 2;
    int plugged[2] = {0, 0}; ///< Quellmark sensor IDs in the sockets, 0 for nothing
    int stored = 0;          ///< experiments in the memory
    bool isBatteryEmpty = false;
    bool isMemoryFull = false;
    Resend resend = ResendSame;
};

/// One packet of the logger. A sample of a run also says which one it is.
struct LoggerPacket
{
    QByteArray bytes;
    int run = 0; ///< from 1, 0 when this is no sample
    int sample = 0;
    QByteArray sampleBytes = {};
};
using LoggerPackets = QVector<LoggerPacket>;

/// A logger's firmware as far as the wire shows it: frames go in, packets come out, and the time is what the
/// caller says it is (nanoseconds of a clock that never goes back). It knows no port and no event loop.
class VirtualLogger
{
public:
    /// `now` is the time that belongs to `utc`.
    VirtualLogger(const LoggerIdentity& identity, qint64 now, const QDateTime& utc);

    /// Takes bytes of the program and gives the answers.
    LoggerPackets receive(const QByteArray& bytes, qint64 now);
    /// Whatever has become due: samples, the end of a run, packets of a table.
    LoggerPackets advance(qint64 now);
    /// When advance() has something to do; -1 for never.
    qint64 nextDue() const;
    /// Is called with each frame or run of junk that receive() cuts.
    void setListener(std::function<void(const QByteArray&)> listener) { heard = std::move(listener); }

    // What a person does to the logger.
    LoggerPackets pressStart(qint64 now);
    LoggerPackets pressStop(qint64 now);
    /// One sample of a run at the Manual rate.
    LoggerPackets pressSample(qint64 now);
    /// Puts a Quellmark sensor (0: none) into socket 0 or 1. Nothing comes out if there is no such socket.
    LoggerPackets plug(int socket, int sensorId);
    LoggerPackets setBatteryEmpty(bool isEmpty, qint64 now);
    LoggerPackets setMemoryFull(bool isFull, qint64 now);
    LoggerPackets setRate(int rate, qint64 now);
    LoggerPackets setSamplesIndex(int index, qint64 now);

    void setLoaderFaults(const LoaderFaults& faults) { loader.faults = faults; }

    const LoggerIdentity& identity() const { return self; }
    const VirtualLoader& bootLoader() const { return loader; }
    /// The long strings that were sent to the running device.
    const QVector<QByteArray>& strings() const { return longStrings; }
    bool hasSocket(int socket) const;
    bool isRunning() const { return run.isOn; }
    /// The sensors that a sample of the present run, or else the last one, holds, in order.
    QVector<int> sampleIds() const;
    /// One line on what the logger is doing.
    QString summary() const;

private:
    struct Run
    {
        bool isOn = false;
        bool isArmed = false; ///< waits for its trigger
        int number = 0;
        qint64 start = 0; ///< time of sample 0; while armed, of the next look
        int rate = 0;
        int limit = 0;
        int taken = 0;
        double lastLevel = 0;
    };
    /// A stored run. Its bytes were kept as they were streamed, or follow from the signals.
    struct Experiment
    {
        QVector<int> ids; ///< sensors in the slots at its start
        quint16 mask = 0;
        int rate = 0;
        int samples = 0;
        int run = 0;
        quint8 codes[2] = {0, 0};
        QDateTime begun;
        QByteArray data;
        bool isKept = false;
    };
    struct Download
    {
        bool isOn = false;
        int repeats = 0; ///< of the packet sent last
        Experiment experiment;
        QByteArray data;
        int nextPacket = 0;
        qint64 lastSent = 0;
    };

    // Commands
    void obey(const QByteArray& frame, qint64 now, LoggerPackets& out);
    void takeSetup(const QByteArray& frame, qint64 now, LoggerPackets& out);
    void takeSocketCode(int socket, quint8 code);
    void setClock(const QDateTime& utc, qint64 now);
    void configure(const QByteArray& frame);
    quint8 calibrate(int tenths, qint64 now);
    LoggerPacket status(quint8 event, qint64 now) const;
    LoggerPacket sensorIds() const;
    LoggerPacket snapshot(qint64 now);
    LoggerPacket selfTest() const;
    LoggerPacket externalEvent() const;
    QVector<int> slotIds() const;
    quint8 socketCode(int socket) const;
    int rateCode(int rate) const;
    QDateTime clock(qint64 now) const;

    // The boot loader
    void enterLoader(LoggerPackets& out);
    void obeyLoader(const QByteArray& frame, bool isWhole, LoggerPackets& out);

    // Runs
    void start(qint64 now, LoggerPackets& out);
    quint8 whyNoRun() const;
    void finish(quint8 event, qint64 now, LoggerPackets& out);
    void lookForTrigger();
    qint64 sampleDue(int sample) const;
    void takeSample(double seconds, qint64 now, LoggerPackets& out);
    QByteArray sampleBytes(const Experiment& experiment, double seconds) const;
    LessonSignals runSignals(int run) const;

    // The Vorta variant
    bool isVorta() const;
    void obeyVorta(const QByteArray& frame, qint64 now, LoggerPackets& out);
    LoggerPacket vortaStatus(quint8 event) const;
    LoggerPacket vortaSnapshot(qint64 now) const;
    int blockLength() const;
    void takeBlock(qint64 now, LoggerPackets& out);
    QVector<quint16> vortaWords(const LessonSignals& signal, double seconds) const;

    // Memory
    void storeInitialExperiments(qint64 now);
    QByteArray storedBytes(const Experiment& experiment) const;
    void beginDownload(int number, qint64 now, LoggerPackets& out);
    void sendNextPacket(qint64 now, LoggerPackets& out);
    LoggerPacket dataPacket(int number) const;
    LoggerPacket infoPacket(int number) const;

    // Calibration of the force channels; the gain is in tenths for the first one.
    static constexpr int forceGain = 285;
    static constexpr int forceOffset50 = 2051;
    static constexpr int forceOffset5 = 2043;

    LoggerIdentity self;
    Wire::CommandCutter cutter;
    VirtualLoader loader;
    QVector<QByteArray> longStrings;
    qint64 lastHeard = 0;
    std::function<void(const QByteArray&)> heard;
    mutable SampleWriter writer;

    qint64 switchedOn;
    QDateTime clockBase; ///< the logger's date at `clockSet`
    qint64 clockSet;

    QByteArray trigger;            ///< type, sensor, level as they came
    QByteArray range;              ///< sensor and minimum of the dynamic range
    quint8 typedCodes[2] = {0, 0}; ///< Vernier codes that the program gave to the sockets
    quint8 flags;
    quint8 language = 0;
    double calibration = 0;
    bool isCalibrated = false;

    Run run;
    Experiment recording;
    QVector<Experiment> experiments;
    Download download;
    int tableNext = 0; ///< next entry of the table to send, 0 when none
    qint64 tableDue = 0;
};
