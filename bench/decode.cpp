// Bytes a second from the port to the sensors' values, clean and with garbage between the packets.

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <QVector>
#include <QtEndian>

#include "link/portlistener.h"
#include "protocol/tembrindata.h"
#include "sensors/sensorids.h"
#include "tests/link/fakeport.h"

#include <algorithm>
#include <cstdio>
#include <random>

namespace {

constexpr int packets = 1000000;
constexpr int rounds = 5;
constexpr int portion = 2500; // bytes that arrive at a time

struct Load
{
    const char* name;
    QVector<int> sensors;
    double garbage; // share of the bytes
};

struct Result
{
    double bytesPerSecond;
    double packetsPerSecond;
    int lost; // undamaged packets
};

QByteArray withSum(QByteArray packet)
{
    unsigned sum = 0;
    for (char byte : qAsConst(packet))
        sum += static_cast<unsigned char>(byte);
    return packet + static_cast<char>(0u - sum);
}

QByteArray sensorList(const QVector<int>& ids)
{
    QByteArray packet = QByteArray::fromHex("2E6982");
    for (int slot = 0; slot < 16; ++slot)
        packet.append(static_cast<char>(ids.value(slot)));
    return withSum(packet + '\0');
}

QByteArray status(quint16 mask)
{
    QByteArray packet = QByteArray::fromHex("2E69831023021000") + QByteArray(24, '\0');
    qToBigEndian(mask, packet.data() + 9);
    packet.replace(13, 6, QByteArray::fromHex("010126080000"));
    return withSum(packet);
}

/// Random bytes without the two that a packet begins with: such a pair takes what follows for its body, and
/// no receiver could know better.
QByteArray garbageRun(std::mt19937& random)
{
    QByteArray run(1 + static_cast<int>(random() % 8), 0);
    for (char& byte : run) {
        do
            byte = static_cast<char>(random());
        while (byte == 0x69 || byte == 0x79 || byte == 0x7A);
    }
    return run;
}

QByteArray stream(const Load& load, int sampleBytes)
{
    std::mt19937 random(7);
    const quint16 mask = static_cast<quint16>((1u << load.sensors.size()) - 1);
    const double garbagePerPacket = load.garbage * (sampleBytes + 9);
    QByteArray all;
    all.reserve(static_cast<int>(packets * (sampleBytes + 10)));
    double owed = 0;
    for (int i = 0; i < packets; ++i) {
        QByteArray packet =
            QByteArray::fromHex("2E6984") + static_cast<char>(sampleBytes + 9) + QByteArray(4, 0);
        qToBigEndian(mask, packet.data() + 4);
        qToBigEndian(static_cast<quint16>(i & 0x7FFF), packet.data() + 6);
        for (int byte = 0; byte < sampleBytes; ++byte)
            packet.append(static_cast<char>(random()));
        all.append(withSum(packet));
        for (owed += garbagePerPacket; owed >= 8;) {
            const QByteArray run = garbageRun(random);
            owed -= run.size();
            all.append(run);
        }
    }
    return all;
}

Result decode(const Load& load)
{
    FakePort port;
    port.open(SerialPort::OpenMode::ReadWrite);
    TembrinData logger(0);
    PortListener listener(&port, &logger, 0);
    QObject::connect(&port, &SerialPort::readyRead, &listener, &PortListener::receive);
    int next = 0;
    int delivered = 0;
    int gaps = 0; // a false packet may hide a lost one, but not in the numbers
    QObject::connect(&logger,
                     QOverload<int, short, QVector<QVector<double>>, int>::of(&TembrinData::onlineReceived),
                     &logger, [&](int, short sample, const QVector<QVector<double>>&, int) {
                         ++delivered;
                         gaps += (sample - next) & 0x7FFF;
                         next = sample + 1;
                     });
    port.feed(sensorList(load.sensors) + status(static_cast<quint16>((1u << load.sensors.size()) - 1)));
    int sampleBytes = 0;
    for (const SensorPtr& sensor : logger.getSensors())
        sampleBytes += sensor->numBytes;

    const QByteArray bytes = stream(load, sampleBytes);
    QVector<qint64> times;
    int lost = 0;
    for (int round = 0; round < rounds; ++round) {
        next = 0;
        delivered = 0;
        gaps = 0;
        QElapsedTimer clock;
        clock.start();
        for (int at = 0; at < bytes.size(); at += portion)
            port.feed(bytes.mid(at, portion));
        times.append(clock.nsecsElapsed());
        lost = std::max({lost, gaps, packets - delivered});
    }
    std::sort(times.begin(), times.end());
    const double seconds = static_cast<double>(times.at(rounds / 2)) / 1e9;
    return {bytes.size() / seconds, packets / seconds, lost};
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication app(argc, argv);
    QStandardPaths::setTestModeEnabled(true);
    QLoggingCategory::setFilterRules(QStringLiteral("pellandra.*=false"));
    const QVector<int> four = {SENSOR_AMB_TEMP_NTC, SENSOR_LIGHT, SENSOR_SOUND, SENSOR_VOLTAGE};
    const QVector<int> ten = {SENSOR_AMB_TEMP_NTC, SENSOR_LIGHT,      SENSOR_SOUND,     SENSOR_VOLTAGE,
                              SENSOR_GPS,          SENSOR_EXT_TEMP,   SENSOR_HEARTRATE, SENSOR_ACCELERATION,
                              SENSOR_AIRPRESSURE,  SENSOR_COLORIMETER};
    std::printf("Decode, median of %d rounds of %d packets\n", rounds, packets);
    std::printf("%-42s %10s %12s %6s\n", "", "MB/s", "packets/s", "lost");
    for (const Load& load :
         {Load{"4 sensors, clean", four, 0}, Load{"4 sensors, 1 % garbage between packets", four, 0.01},
          Load{"10 sensors, clean", ten, 0}, Load{"10 sensors, 1 % garbage between packets", ten, 0.01}}) {
        const Result result = decode(load);
        std::printf("%-42s %10.1f %12.0f %6d\n", load.name, result.bytesPerSecond / 1e6,
                    result.packetsPerSecond, result.lost);
    }
    return 0;
}
