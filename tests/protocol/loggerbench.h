#pragma once

#include <QObject>
#include <QStringList>
#include <QTest>

#include "common/settings.h"
#include "link/portlistener.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "tests/common/testsupport.h"
#include "tests/link/fakeport.h"

inline QByteArray bytes(const char* hex)
{
    return QByteArray::fromHex(hex);
}

/// The bytes and the checksum that they ask for.
inline QByteArray summed(QByteArray packet)
{
    char sum = 0;
    for (const char byte : packet)
        sum += byte;
    return packet.append(static_cast<char>(-sum));
}

inline QByteArray summed(const char* hex)
{
    return summed(bytes(hex));
}

// Sensors: UV, pH, barometer, GPS (12 bytes), two sockets.
constexpr const char* sensorListHex = "2E6982 01 02 04 07 20 27 00000000000000000000 00 92";
// Event 10, type 35, firmware 4.05, 3 stored, sensors 0 and 2, rate code 3, samples 2, 2026-11-22 21:47:58.
constexpr const char* statusHex =
    "2E6983 10 23 04 05 00 03 0005 03 02 22 11 26 21 47 58 0000 01 02 012C 00 00 "
    "FF 0032 15 02 0C";

/// A status with some bytes changed, and its checksum made good again.
inline QByteArray status(std::initializer_list<std::pair<int, int>> changes)
{
    QByteArray packet = bytes(statusHex);
    packet.chop(1);
    for (const auto& [offset, value] : changes)
        packet[offset] = static_cast<char>(value);
    return summed(packet);
}

/// A logger slot on a fake port, connected, and a record of what its data told.
class LoggerBench : public QObject
{
public:
    FakePorts ports;
    TembrinProtocol protocol{3};
    TembrinData& data = *protocol.tembrinData;
    QStringList told;

    LoggerBench()
    {
        Settings::mainStore().setValue(Settings::loggerKey(3), QStringLiteral("fake"));
        protocol.setPortFactory(ports.factory());
        record();
        protocol.open();
        protocol.init();
    }

    FakePort& port() { return *ports.port(QStringLiteral("fake")); }
    void feed(const QByteArray& packet) { port().feed(packet); }
    /// As far as a logger gets by itself: its sensors and its state are known. The record starts here.
    void recognise(const char* sensors = sensorListHex)
    {
        feed(bytes(sensors));
        feed(bytes(statusHex));
        told.clear();
        port().writes.clear();
    }

private:
    template<typename Signal> void note(Signal signal, const char* word)
    {
        connect(&data, signal, this, [this, word] { told.append(QLatin1String(word)); });
    }

    void record()
    {
        const auto add = [this](const char* word) {
            return
                [this, word](int, auto value) { told.append(QStringLiteral("%1 %2").arg(word).arg(value)); };
        };
        note(&TembrinData::newSnapReceived, "snapshot");
        note(&TembrinData::statusReceived, "status");
        note(&TembrinData::needNextPacket, "next");
        note(&TembrinData::needLoggerType, "type?");
        note(&TembrinData::gotExperimentInfo, "table");
        note(&TembrinData::gotBrevikString, "string");
        note(&TembrinData::loggerTypeChanged, "type changed");
        note(&TembrinData::recognizedVorta, "vorta");
        note(&TembrinData::loggerMode, "mode");
        note(&TembrinData::communicationEstablished, "established");
        note(&TembrinData::temperatureChangeWarning, "temperature");
        note(&TembrinData::offlineRunStarted, "offline");
        connect(&data, qOverload<int, int>(&TembrinData::runTerminated), this, add("terminated"));
        connect(&data, qOverload<int, bool>(&TembrinData::runTerminated), this, add("stopped"));
        connect(&data, &TembrinData::commandAccepted, this, add("accepted"));
        connect(&data, &TembrinData::downloadComplete, this, add("complete"));
        connect(&data, &TembrinData::donePacket, this, [this](int packet, int of) {
            told.append(QStringLiteral("packet %1/%2").arg(packet).arg(of));
        });
        connect(&data, &TembrinData::calibrationResult, this,
                [this](int result) { told.append(QStringLiteral("calibration %1").arg(result)); });
        connect(&data, qOverload<int, short, QVector<QVector<double>>, int>(&TembrinData::onlineReceived),
                this, [this](int, short sample, const QVector<QVector<double>>& block, int waiting) {
                    told.append(QStringLiteral("online %1+%2").arg(sample).arg(waiting));
                    lastBlock = block;
                });
    }

public:
    QVector<QVector<double>> lastBlock;
};

/// A test on a bench that is new for each function.
class BenchTest : public GuardedTest
{
    Q_OBJECT

protected:
    void begin() override { bench.reset(new LoggerBench); }
    void finish() override { bench.reset(); }

    QScopedPointer<LoggerBench> bench;
};
