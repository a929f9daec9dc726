#pragma once

#include "tests/link/fakeport.h"
#include "virtual/virtuallogger.h"

#include <QElapsedTimer>
#include <QMap>
#include <QTimer>

#include <deque>
#include <memory>
#include <vector>

/// A class of virtual loggers inside the test: the firmware's behaviour on fake ports, in real time, with
/// everything in the test's hand. It fills the settings: slot i is port(i) and "Group A", "Group B" and so
/// on.
class VirtualBench : public QObject
{
    Q_OBJECT

public:
    /// What a command to set up said.
    struct Setup
    {
        int mask = -1;
        int rateCode = -1;
        int samples = -1;
        QByteArray trigger; ///< type, sensor and level
        int sockets[2] = {-1, -1};
        QByteArray range;
    };
    /// What a command to configure said.
    struct Configuration
    {
        bool operator==(const Configuration& other) const
        {
            return flags == other.flags && language == other.language;
        }
        int flags = -1; ///< sound, Fahrenheit, Bluetooth, GPS, hectopascal from bit 0 up
        int language = -1;
    };
    using Rows = QMap<int, QVector<double>>; ///< what a sample said, by its number

    /// A logger of that model with its usual sensors on, for example {"Birch", "10/Sec", 100}.
    static LoggerIdentity identity(const char* model = "Birch", const char* rate = "10/Sec",
                                   int samples = 1000, int stored = 0, int firmware = 405);
    explicit VirtualBench(const QVector<LoggerIdentity>& loggers);
    ~VirtualBench() override;

    int count() const { return int(places.size()); }
    SerialPortFactory factory();
    static QString portName(int i) { return QStringLiteral("port%1").arg(i); }
    static QString group(int i) { return QStringLiteral("Group %1").arg(QChar('A' + i)); }
    /// The port that the program has made for the logger last; null if there is none any more.
    FakePort* port(int i) const { return ports.port(portName(i)); }
    const VirtualLogger& logger(int i) const { return *places[size_t(i)]->logger; }

    // The air between

    /// The logger is gone: its connection is lost, and its port does not open until it is put back.
    void pull(int i);
    void putBack(int i);
    /// The port opens, and that is all: nothing that is sent reaches the logger, and it says nothing.
    void setDead(int i, bool isDead = true);
    bool isDead(int i) const { return places[size_t(i)]->isDead; }
    /// The next `number` answers of the logger are lost; it has heard the questions. Samples are not counted.
    void dropAnswers(int i, int number);
    /// What the logger says arrives as this makes it.
    void damage(int i, std::function<QByteArray(const QByteArray&)> how) { places[size_t(i)]->damage = how; }
    /// Everything that the logger says takes this long from now on.
    void delay(int i, int ms);
    /// Samples with these numbers are lost, in each run.
    void loseSamples(int i, int from, int to);

    /// Time goes by for all loggers at once, and nobody has to wait for it.
    void pass(int ms);

    // Somebody at the logger

    void act(int i, const std::function<LoggerPackets(VirtualLogger&, qint64)>& action);
    void pressStart(int i);
    void pressStop(int i);
    void pressSample(int i);
    /// The Quellmark sensor `id` is put into socket 0 or 1; with 0 it is pulled out.
    void plug(int i, int socket, int id);
    void chooseRate(int i, const char* name);
    void setBatteryEmpty(int i, bool isEmpty = true);
    void setMemoryFull(int i, bool isFull = true);

    // What the logger has heard

    QVector<QByteArray> heard(int i) const { return places[size_t(i)]->heard; }
    /// How many commands of this code (Wire::Code) there were.
    int heard(int i, int code) const;
    Setup setup(int i) const;
    Configuration configuration(int i) const;
    /// Forgets what was heard so far, of all loggers.
    void forgetHeard();

    // What the logger has said

    bool isRunning(int i) const;
    /// The runs that it began, by whatever means.
    int runs(int i) const { return places[size_t(i)]->runs; }
    /// The samples of a run, from 1 (0: of the last one), that reached the program, by values that do not go
    /// through its decoder; of a Vorta logger by number alone.
    Rows samples(int i, int run = 0) const { return places[size_t(i)]->arrived.value(run ? run : runs(i)); }
    /// The samples of the last run that it took, whether they reached anybody or not.
    Rows taken(int i) const { return places[size_t(i)]->taken.value(runs(i)); }

private:
    struct Said
    {
        qint64 due; ///< ns
        LoggerPacket packet;
        QVector<int> ids; ///< of the sensors in a sample
    };
    struct Place
    {
        std::unique_ptr<VirtualLogger> logger;
        QVector<QByteArray> heard;
        std::deque<Said> said;
        QMap<int, Rows> arrived; ///< by run
        QMap<int, Rows> taken;
        int runs = 0;
        std::function<QByteArray(const QByteArray&)> damage;
        int answersToDrop = 0;
        qint64 delay = 0; ///< ns
        int lostFrom = -1;
        int lostTo = -1;
        bool isDead = false;
    };

    void take(int i, const QByteArray& bytes);
    void say(Place& place, const LoggerPackets& packets);
    void deliver(int i);
    void work();
    void setTimer();
    QByteArray lastHeard(int i, int code) const;
    static void keep(const Said& said, Rows* rows);
    static QVector<double> values(const Said& said);

    FakePorts ports;
    std::vector<std::unique_ptr<Place>> places;
    qint64 now() const { return clock.nsecsElapsed() + passed; }

    QElapsedTimer clock;
    qint64 passed = 0; ///< ns
    QTimer timer;
};
