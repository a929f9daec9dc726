#include <QTest>

#include "sensors/sensor.h"
#include "sensors/sensorids.h"
#include "tests/common/testsupport.h"
#include "virtual/faultyline.h"
#include "virtual/lessonsignals.h"
#include "virtual/models.h"
#include "virtual/samplewriter.h"
#include "virtual/virtualoptions.h"

namespace {

constexpr qint64 ms = 1000000;

LoggerPacket samplePacket(int number)
{
    const QByteArray data(4, char(number));
    return {Wire::packet(Wire::OnlinePacket, "\x0D" + data), 1, number, data};
}

/// Everything that comes out of a line until it is empty, and how often it wrote.
QByteArray drain(FaultyLine& line, QVector<qint64>* times = nullptr, LoggerPackets* completed = nullptr)
{
    QByteArray bytes;
    for (qint64 due = line.nextDue(); due >= 0; due = line.nextDue()) {
        for (const LineWrite& write : line.take(due)) {
            if (write.isLost)
                continue;
            bytes += write.bytes;
            if (times)
                times->append(due / ms);
            if (completed)
                *completed += write.completed;
        }
    }
    return bytes;
}

QVector<int> channelsOf(int id)
{
    const Sensor sensor(id);
    return sensor.hasVirtual ? sensor.virtualSensorIDs : QVector<int>{id};
}

} // namespace

class TestVirtualLesson : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    /// What the program converts is what the lesson meant, for every sensor that a logger can have.
    void wordsConvertBackToTheLesson()
    {
        SampleWriter writer;
        int channels = 0;
        for (int id = SENSOR_UV; id <= VERNIER_LAST; ++id) {
            if (writer.width(id) == 0 || id == SENSOR_GPS || id == SENSOR_SPECIAL || (id >= 200 && id < 250))
                continue;
            for (const int channel : channelsOf(id)) {
                if (channel >= SENSOR_GPS_LAT && channel <= SENSOR_GPS_ANGLE)
                    continue;
                ++channels;
                const Sensor sensor(channel);
                const bool isVorta = channel >= SENSOR_VORTA_FORCE50 && channel <= SENSOR_VORTA_ACC_Z;
                double least = sensor.max;
                double most = sensor.min;
                for (int i = 0; i < 400 && !isVorta; ++i) {
                    const double wanted = LessonSignals(quint32(i % 8)).value(channel, i * 0.31);
                    const double value = SensorKind(channel).convert(writer.word(channel, wanted));
                    const QByteArray place = QByteArray::number(channel) + " " + QByteArray::number(wanted);
                    QVERIFY2(qAbs(value - wanted) <= 0.02 * (sensor.max - sensor.min), place.constData());
                    QVERIFY2(value >= sensor.min && value <= sensor.max, place.constData());
                    least = qMin(least, value);
                    most = qMax(most, value);
                }
                QVERIFY2(isVorta || most > least, qPrintable(sensor.name));
            }
        }
        QVERIFY(channels > 90);
    }

    void aLineDoesToPacketsWhatItsFaultsSay_data()
    {
        // written: bytes of 20 answers of 33 and 20 samples of 9, -1: more than all
        columns<QString, double, int, int>({"fault", "value", "written", "completed"});
        row("none", "late", 0.0, 840, 20);
        row("late", "late", 250.0, 840, 20);
        row("no answers", "silent", 100.0, 180, 20);
        row("all lost", "lose", 100.0, 0, 0);
        row("garbage", "garbage", 100.0, -1, 20);
        row("cut", "cut", 100.0, 840, 20);
        row("burst", "burst", 200.0, 840, 20);
        row("wrong sums", "badsum", 100.0, 840, 20);
    }

    void aLineDoesToPacketsWhatItsFaultsSay()
    {
        const auto [fault, value, written] = fetched<QString, double, int>({"fault", "value", "written"});
        FaultyLine line(1);
        QString error;
        QVERIFY(line.faults.set(fault, value, &error));
        QByteArray sent;
        for (int i = 0; i < 20; ++i) {
            const LoggerPackets packets{{Wire::packet(Wire::StatusPacket, QByteArray(29, char(i)))},
                                        samplePacket(i)};
            for (const LoggerPacket& packet : packets)
                sent += packet.bytes;
            line.send(packets, 1000 * ms + i * ms);
        }
        QVector<qint64> times;
        LoggerPackets completed;
        const QByteArray bytes = drain(line, &times, &completed);
        if (written < 0)
            QVERIFY(bytes.size() > sent.size() + 20);
        else
            QCOMPARE(bytes.size(), written);
        QTEST(completed.size(), "completed");
        for (int i = 0; i < completed.size(); ++i)
            QCOMPARE(completed[i].sample, i);
        if (fault == QLatin1String("cut"))
            QCOMPARE(times.size(), 80);
        if (fault == QLatin1String("late"))
            QCOMPARE(times.constFirst(), qint64(1000 + value));
        if (fault == QLatin1String("burst"))
            QCOMPARE(times, (QVector<qint64>{1000, 1200}).mid(0, 2));
        if (fault == QLatin1String("cut") || fault == QLatin1String("burst") ||
            fault == QLatin1String("late"))
            QCOMPARE(bytes, sent);
        if (fault == QLatin1String("badsum")) {
            for (int at = 0; at < bytes.size(); at += 42)
                QVERIFY(!Wire::isSumGood(bytes.mid(at, 33)) && !Wire::isSumGood(bytes.mid(at + 33, 9)));
        }
    }

    void theCommandLineIsRead()
    {
        VirtualOptions options;
        QString error;
        QVERIFY2(options.read({"x",          "--count",   "3",          "--model",       "Ember_int,0x66",
                               "--firmware", "4.12",      "--rate",     "100/sec",       "--samples",
                               "100",        "--sensors", "26,7",       "--plug",        "1:2=112",
                               "--fault",    "2:late=30", "--names",    "A,B",           "--stored",
                               "2",          "--at",      "1.5:pull 2", "--resend-mode", "next"},
                              &error),
                 qPrintable(error));
        QCOMPARE(options.loggers.size(), 3);
        const LoggerIdentity& first = options.loggers[0];
        QCOMPARE(first.model->code, 86);
        QCOMPARE(options.loggers[1].model->code, 102);
        QCOMPARE(options.loggers[2].model->code, 86);
        QCOMPARE(first.firmwareMajor * 100 + first.firmwareMinor, 412);
        QCOMPARE(first.rate, 5);
        QCOMPARE(first.samplesIndex, 1);
        QCOMPARE(first.mask, quint16(0x0801));
        QCOMPARE(first.plugged[1], int(QUELLMARK_PHOTOGATE));
        QCOMPARE(options.loggers[2].plugged[1], 0);
        QCOMPARE(first.name, QStringLiteral("A"));
        QVERIFY(options.loggers[2].name.startsWith(QStringLiteral("Tembrin_")));
        QCOMPARE(options.faults[0].logger, 1);
        QCOMPARE(options.script[0].second, QStringLiteral("pull 2"));
    }

    void aWrongCommandLineIsExplained_data()
    {
        columns<QStringList, QString>({"arguments", "reason"});
        const auto row = [](const char* arguments, const char* reason) {
            QTest::newRow(arguments) << QString::fromLatin1(arguments).split(QLatin1Char(' '))
                                     << QString::fromLatin1(reason);
        };
        row("--count 9", "from 1 to 8");
        row("--firmware 4", "such as 4.05");
        row("--rate 1000/Sec", "no rate \"1000/Sec\"");
        row("--rate x --firmware 4.02", "10/Sec, 25/Sec, 100/Sec, 1000/Sec, 100000/Sec");
        row("--rate x --firmware 1.30 --model 17", "1/Sec, 10/Sec, 100/Sec, 1000/Sec, 25000/Sec");
        row("--rate x --model Vorta", "rates are 1/Sec, 10/Sec, 25/Sec, 100/Sec, 500/Sec");
        row("--plug 1=99", "101 to 114");
        row("--model Birch --plug 1:1=101", "no socket 1");
        row("--fault 5:late=3", "[LOGGER:]NAME=VALUE");
        row("--fault slow=3", "no fault is called");
        row("--at pull", "SECONDS:COMMAND");
        row("--resend-mode never", "same or next");
        row("--turbo", "turbo");
    }

    void aWrongCommandLineIsExplained()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, reason);
        VirtualOptions options;
        QString error;
        QVERIFY(!options.read(QStringList{"x"} + arguments, &error));
        QVERIFY2(error.contains(reason), qPrintable(error));
    }
};

QTEST_GUILESS_MAIN(TestVirtualLesson)

#include "test_virtuallesson.moc"
