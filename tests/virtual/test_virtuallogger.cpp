#include <QTest>

#include "sensors/sensorids.h"
#include "tests/common/testsupport.h"
#include "virtual/models.h"
#include "virtual/rates.h"
#include "virtual/virtuallogger.h"

namespace {

constexpr qint64 ms = 1000000;

/// A command with its checksum.
QByteArray command(const QByteArray& hex)
{
    QByteArray frame = QByteArray::fromHex(hex);
    int sum = 0;
    for (const char byte : frame)
        sum += quint8(byte);
    return frame + char(-sum);
}

QByteArray joined(const LoggerPackets& packets)
{
    QByteArray bytes;
    for (const LoggerPacket& packet : packets)
        bytes += packet.bytes;
    return bytes;
}

/// The event codes of the status packets among these.
QByteArray events(const LoggerPackets& packets)
{
    QByteArray codes;
    for (const LoggerPacket& packet : packets) {
        if (quint8(packet.bytes[2]) == 0x83)
            codes += packet.bytes[3];
    }
    return codes.toHex();
}

LoggerPackets samplesOf(const LoggerPackets& packets)
{
    LoggerPackets samples;
    for (const LoggerPacket& packet : packets) {
        if (packet.run > 0)
            samples.append(packet);
    }
    return samples;
}

int word(const QByteArray& bytes, int at)
{
    return quint8(bytes[at]) * 256 + quint8(bytes[at + 1]);
}

LoggerIdentity identityOf(const char* model, quint16 mask = 0)
{
    LoggerIdentity identity;
    identity.model = LoggerModels::find(QString::fromLatin1(model));
    identity.mask = mask ? mask : identity.model->lessonMask();
    identity.name = QStringLiteral("Tembrin_0421");
    identity.seed = 0;
    return identity;
}

/// A logger with a clock that only the test moves.
struct Bench
{
    explicit Bench(const LoggerIdentity& identity)
        : logger(identity, 0, QDateTime(QDate(2026, 12, 31), QTime(12, 0), Qt::UTC))
    {
    }

    LoggerPackets tell(const QByteArray& hex) { return logger.receive(command(hex), now); }
    LoggerPackets wait(qint64 milliseconds)
    {
        now += milliseconds * ms;
        return logger.advance(now);
    }

    VirtualLogger logger;
    qint64 now = 0;
};

} // namespace

class TestVirtualLogger : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void theOpeningOfASession()
    {
        Bench bench(identityOf("Heath"));
        QCOMPARE(joined(bench.tell("4714AA")).toHex(),
                 QByteArray("2e69821a302829202a271e13070e00000000000095"));
        QCOMPARE(joined(bench.tell("672410")), QByteArray());
        QCOMPARE(joined(bench.tell("471410")).toHex(),
                 QByteArray("2e6983108804050000012803023112261158000000000700190000ff00000c001a"));
        QCOMPARE(joined(bench.tell("4714CC311226235958")).toHex(),
                 QByteArray("2e6983cc8804050000012803023112262359580000000700190000ff00000c00f3"));
        bench.wait(3000);
        QCOMPARE(joined(bench.tell("471410")).mid(13, 6).toHex(), QByteArray("010127000001"));
    }

    void aSetupComesBackInTheStatus_data()
    {
        columns<QString, int, QByteArray, QByteArray, int>({"model", "firmware", "setup", "echo", "rate"});
        const QByteArray fast = "00010700000000000000ff0000";
        const QByteArray all = "01230503010300c80506070011";
        row("every field", "HEATH_INT", 405, all, all, 5);
        row("no slots beyond the list", "HEATH_INT", 405, QByteArray("ffff0201000000000000ff0000"),
            QByteArray("07ff0201000000000000ff0000"), 2);
        row("socket codes only for Vernier sensors", "HEATH_INT", 405,
            QByteArray("000102010000000065ffff0000"), QByteArray("00010201000000000000ff0000"), 2);
        row("code 7 of new firmware", "BIRCH", 403, fast, fast, 9);
        row("code 7 of middle firmware", "BIRCH", 402, fast, fast, 9);
        row("code 7 of old firmware", "BIRCH", 399, fast, fast, 7);
        row("a type without 25/Sec", "AMBER_OLD", 200, QByteArray("00010400000000000000ff0000"),
            QByteArray("00010400000000000000ff0000"), 5);
    }

    void aSetupComesBackInTheStatus()
    {
        const auto [model, firmware, setup] =
            fetched<QString, int, QByteArray>({"model", "firmware", "setup"});
        LoggerIdentity identity = identityOf(qPrintable(model));
        identity.firmwareMajor = firmware / 100;
        identity.firmwareMinor = firmware % 100;
        Bench bench(identity);
        const QByteArray status = joined(bench.tell("471411" + setup));
        QCOMPARE(status.size(), 33);
        QCOMPARE(quint8(status[3]), quint8(0x11));
        QTEST((status.mid(9, 4) + status.mid(21, 9)).toHex(), "echo");
        QTEST(bench.logger.identity().rate, "rate");
    }

    void samplesComeInTimeAndWithoutDrift()
    {
        LoggerIdentity identity = identityOf("BIRCH", 0x07FF);
        identity.rate = 5; // 100/Sec, 10.24 ms
        identity.samplesIndex = 1;
        Bench bench(identity);
        LoggerPackets packets = bench.tell("471422");
        QCOMPARE(samplesOf(packets).size(), 1);
        QCOMPARE(bench.logger.nextDue(), qint64(10240000));
        bench.now = 10239999;
        QVERIFY(bench.logger.advance(bench.now).isEmpty());
        bench.now = 500 * ms; // a stall is caught up
        packets += bench.logger.advance(bench.now);
        QCOMPARE(samplesOf(packets).size(), 49);
        packets += bench.wait(1000);
        QCOMPARE(events(packets), QByteArray("2233"));
        QCOMPARE(bench.logger.nextDue(), qint64(-1));
        QCOMPARE(samplesOf(packets).size(), 100);
    }

    void aRunIsRefusedOrEnds_data()
    {
        // steps: b battery, m memory, s start, S stop, k own keys, w wait
        columns<QByteArray, quint16, QByteArray, int>({"steps", "mask", "answers", "stored"});
        row("battery", QByteArray("bs"), quint16(1), QByteArray("23"), 0);
        row("memory", QByteArray("ms"), quint16(1), QByteArray("24"), 0);
        row("no sensor", QByteArray("s"), quint16(0), QByteArray("25"), 0);
        row("battery dies", QByteArray("swb"), quint16(1), QByteArray("2223"), 1);
        row("memory fills", QByteArray("swm"), quint16(1), QByteArray("2224"), 1);
        row("second start goes on", QByteArray("swswS"), quint16(1), QByteArray("222233"), 1);
        row("own keys, then a stop of nothing", QByteArray("kwKS"), quint16(1), QByteArray("223333"), 1);
        row("two runs", QByteArray("swSswS"), quint16(1), QByteArray("22332233"), 2);
    }

    void aRunIsRefusedOrEnds()
    {
        const auto [steps, mask] = fetched<QByteArray, quint16>({"steps", "mask"});
        LoggerIdentity identity = identityOf("BIRCH");
        identity.mask = mask;
        Bench bench(identity);
        VirtualLogger& logger = bench.logger;
        const QMap<char, std::function<LoggerPackets()>> doings{
            {'b', [&] { return logger.setBatteryEmpty(true, bench.now); }},
            {'m', [&] { return logger.setMemoryFull(true, bench.now); }},
            {'s', [&] { return bench.tell("471422"); }},
            {'S', [&] { return bench.tell("471433"); }},
            {'k', [&] { return logger.pressStart(bench.now); }},
            {'K', [&] { return logger.pressStop(bench.now); }},
            {'w', [&] { return bench.wait(300); }}};
        LoggerPackets packets;
        for (const char step : steps)
            packets += doings[step]();
        QTEST(events(packets), "answers");
        const QByteArray status = joined(bench.tell("471410"));
        QCOMPARE(quint8(status[7]), quint8(0));
        QTEST(int(quint8(status[8])), "stored");
    }

    void aLateRequestMeansALostPacket_data()
    {
        columns<int, QVector<int>>({"mode", "numbers"});
        row("same", int(LoggerIdentity::ResendSame), QVector<int>{0, 1, 1, 1, 1, 2, 2});
        row("next", int(LoggerIdentity::ResendNext), QVector<int>{0, 1, 2, 3, 4, 5, 5});
    }

    void aLateRequestMeansALostPacket()
    {
        QFETCH(int, mode);
        LoggerIdentity identity = identityOf("BIRCH", 0x0040);
        identity.resend = LoggerIdentity::Resend(mode);
        identity.stored = 2;
        Bench bench(identity);
        bench.tell("47144402");
        QVector<int> numbers;
        for (const int delay : {0, 1, 400, 800, 400, 400}) {
            bench.wait(delay);
            numbers.append(word(joined(bench.tell("471446")), 4));
        }
        numbers.append(word(joined(bench.tell("471447")), 4));
        QTEST(numbers, "numbers");
    }

    void experimentsAreForgotten()
    {
        LoggerIdentity identity = identityOf("HEATH_INT");
        identity.stored = 3;
        Bench bench(identity);
        QCOMPARE(int(joined(bench.tell("471488"))[8]), 2);
        QCOMPARE(int(joined(bench.tell("471499"))[8]), 0);
        QCOMPARE(bench.tell("471445").size(), 1);
        QVERIFY(bench.wait(50).isEmpty());
    }

    void theManualRateTakesASampleAPress()
    {
        LoggerIdentity identity = identityOf("BIRCH", 0x0002);
        identity.rate = LoggerRates::Manual;
        Bench bench(identity);
        bench.tell("471422");
        QVERIFY(bench.wait(60000).isEmpty());
        QByteArray first;
        for (int i = 0; i < 3; ++i) {
            bench.wait(1000);
            const LoggerPackets samples = samplesOf(bench.logger.pressSample(bench.now));
            QCOMPARE(samples.size(), 1);
            QCOMPARE(samples[0].sample, i);
            if (i == 0)
                first = samples[0].sampleBytes;
        }
        bench.tell("471433");
        bench.tell("47144401");
        QCOMPARE(joined(bench.tell("471446")).mid(17, 8).toHex(), "311226115901" + first.toHex());
    }

    void aVortaSpeaksItsOwnLanguage()
    {
        Bench bench(identityOf("VORTA"));
        QVERIFY(bench.tell("4714AA").isEmpty());
        QCOMPARE(joined(bench.tell("672410")).toHex(), QByteArray("3e798410024500030002011d080307fb003e"));
        const QByteArray snapshot = joined(bench.tell("672455"));
        QCOMPARE(snapshot.size(), 14);
        QCOMPARE(snapshot.left(3).toHex(), QByteArray("3e7981"));
        bench.logger.setBatteryEmpty(true, 0);
        QCOMPARE(quint8(joined(bench.tell("672422010000"))[3]), quint8(0x23));
    }

    void theBootLoaderSpeaksForItself_data()
    {
        // said: commands without their sums; answers: what they begin with
        columns<QString, int, QString, QString>({"model", "version", "said", "answers"});
        const auto add = [](const char* name, const char* model, int version, const char* said,
                            const char* answers) {
            row(name, QString(model), version, QString(said), QString(answers));
        };
        add("in and out", "BIRCH", 0, "471609 471410 471422 571610 571621 571610 471410",
            "4c791102 - - 4c791102 4c791102 - 2e698310");
        add("erases and sums", "BIRCH", 2, "571619 471609 571619 571627",
            "- 4c791102 4c7920 4c79270001ee1000");
        add("version 1 does neither", "BIRCH", 1, "471609 571619 571627", "4c791101 4c7915 4c7915");
        add("Vorta", "VORTA", 0, "471609 672609 571619 571621 672410", "- 4c791200 4c7915 4c791200 3e798410");
        add("pages that are not there", "BIRCH", 0, "471609 5716130001ff81 57161300020000 57161803f1",
            "4c791102 4c7915 4c7915 4c7915");
        add("erased pages", "BIRCH", 0, "471609 571619 57161300001080 57161803f0",
            "4c791102 4c7920 4c792300001080ff 4c792403f0ff");
    }

    void theBootLoaderSpeaksForItself()
    {
        const auto [model, version, said, answers] =
            fetched<QString, int, QString, QString>({"model", "version", "said", "answers"});
        Bench bench(identityOf(qPrintable(model)));
        LoaderFaults faults;
        faults.loader = version;
        bench.logger.setLoaderFaults(faults);
        const QStringList wanted = answers.split(' ');
        const QStringList commands = said.split(' ');
        QCOMPARE(commands.size(), wanted.size());
        for (int i = 0; i < wanted.size(); ++i) {
            const QByteArray answer = joined(bench.tell(commands[i].toLatin1())).toHex();
            QVERIFY2(wanted[i] == "-" ? answer.isEmpty() : answer.startsWith(wanted[i].toLatin1()), answer);
        }
    }

    void theBootLoaderHoldsWhatIsWritten()
    {
        Bench bench(identityOf("BIRCH"));
        const QByteArray ok = "4c791427";
        const QByteArray bad = "4c791526";
        const QByteArray page(256, '5'); // as digits
        const QByteArray line(32, '7');
        const auto read = [&bench] { return joined(bench.tell("57161300001000")).mid(7, 128).toHex(); };
        bench.tell("471609");
        bench.tell("571619");
        QCOMPARE(joined(bench.tell("57161200001000" + page)).toHex(), ok);
        QCOMPARE(joined(bench.tell("57161200000f80" + page)).toHex(), bad);
        QCOMPARE(joined(bench.logger.receive(command("57161200001080" + page).replace(9, 1, "!"), 0)).toHex(),
                 bad);
        bench.wait(1000);
        QCOMPARE(joined(bench.tell("5716170010" + line)).toHex(), ok);
        QCOMPARE(read(), page);
        bench.tell("57161200001000" + QByteArray(256, 'f')); // writing clears bits, no more
        QCOMPARE(read(), page);
        QCOMPARE(joined(bench.tell("5716180010")).mid(5, 16).toHex(), line);
        const QByteArray hex = bench.logger.bootLoader().hex();
        QVERIFY(hex.startsWith(":020000040000FA\n:10100000" + page.left(32)));
        QVERIFY(hex.contains("\n:0200000400F00A\n:10001000" + line) && hex.endsWith(":00000001FF\n"));
        bench.tell("571621");
        bench.tell("471609");
        QCOMPARE(read(), page);
    }

    void aBreviksPagesAreLongAndCountWords()
    {
        Bench bench(identityOf("SORREL_BASIC"));
        bench.tell("471609");
        bench.tell("571619");
        QByteArray frame = QByteArray::fromHex("57161200001080") + QByteArray(256, '\x5A');
        quint16 sum = 0;
        for (const char byte : qAsConst(frame))
            sum += quint8(byte);
        frame += QByteArray::fromHex(QByteArray::number(0x10000 - sum, 16));
        LoggerPackets answers;
        for (const char byte : qAsConst(frame))
            answers += bench.logger.receive(QByteArray(1, byte), 0);
        QCOMPARE(joined(answers).toHex(), QByteArray("4c791427"));
        QCOMPARE(bench.logger.bootLoader().programMemory().mid(0x20FF, 258),
                 '\xFF' + QByteArray(256, '\x5A') + '\xFF');
    }

    void framesAreCutFromAnyStream()
    {
        const QByteArray status = command("471410");
        const QByteArray stream = QByteArray::fromHex("00ff47") + status + command("672410") +
                                  QByteArray::fromHex("47141096") + command("4714CC311226235958") + "G\x57" +
                                  QByteArray::fromHex("471491414243") + QByteArray::fromHex("fe4e") + status;
        for (int at = 0; at <= stream.size(); ++at) {
            Bench bench(identityOf("BIRCH"));
            QStringList heard;
            bench.logger.setListener(
                [&heard](const QByteArray& frame) { heard.append(Wire::describe(frame, false)); });
            LoggerPackets packets = bench.logger.receive(stream.left(at), 0);
            packets += bench.logger.receive(stream.mid(at), 0);
            heard.removeAll(QStringLiteral("junk"));
            QCOMPARE(heard, QStringList({"get status", "Vorta: get status", "set clock", "long command",
                                         "get status"}));
            QCOMPARE(events(packets), QByteArray("10cc9110"));
        }
    }
};

QTEST_GUILESS_MAIN(TestVirtualLogger)

#include "test_virtuallogger.moc"
