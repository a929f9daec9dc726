#include <QElapsedTimer>
#include <QSignalSpy>

#include "tests/protocol/loggerbench.h"

namespace {

/// A stored-data packet with these samples, filled to its size with rubbish.
QByteArray stored(int number, const QByteArray& header, const QByteArray& samples)
{
    QByteArray packet = bytes("2E694400");
    packet.append(char(number >> 8)).append(char(number)).append(header).append(samples);
    return summed(packet.leftJustified(766, '\x55', true));
}

/// Header of packet 0: the mask, the rate code, the number of samples, six bytes for nobody.
QByteArray header(const char* mask, int rateCode, int samples)
{
    return bytes(mask).append(char(rateCode)).append(char(samples >> 8)).append(char(samples)) +
           QByteArray(6, '\0');
}

/// Two words a sample, 100 + n and 200 + n.
QByteArray samples(int from, int count)
{
    QByteArray all;
    for (int n = from; n < from + count; ++n)
        all.append(char((100 + n) >> 8))
            .append(char(100 + n))
            .append(char((200 + n) >> 8))
            .append(char(200 + n));
    return all;
}

const QByteArray begun = status({{3, 0x44}});
const QByteArray noneLeft = status({{3, 0x46}});

} // namespace

class TestDownload : public BenchTest
{
    Q_OBJECT

private:
    void begin() override
    {
        BenchTest::begin();
        bench->recognise();
    }

private Q_SLOTS:
    void anExperimentComesThroughLossAndDamage()
    {
        const QByteArray all = samples(0, 400);
        const QByteArray first = stored(0, header("0005", 3, 400), all.left(749));
        const QByteArray second = stored(1, {}, all.mid(749, 760));
        const QByteArray third = stored(2, {}, all.mid(1509));
        QByteArray damaged = second;
        damaged[300] = damaged[300] + 1;
        bench->feed(begun);
        bench->feed(first);
        bench->feed(damaged);
        bench->feed(third); // out of order
        bench->feed(first); // once more
        bench->port().writes.clear();
        QTRY_COMPARE(bench->port().written(), summed("471446")); // asked for again by itself
        bench->feed(second);
        bench->feed(third);
        QCOMPARE(bench->told, (QStringList{"status", "packet 0/1", "next", "next", "packet 1/3", "next",
                                           "next", "packet 2/3", "next", "packet 3/3"}));
        bench->told.clear();
        bench->feed(noneLeft);
        QCOMPARE(bench->told, (QStringList{"status", "complete 1", "accepted 5"}));
        bench->feed(noneLeft);
        QCOMPARE(bench->told.count("complete 1"), 1);

        const auto& columns = bench->data.storedRun().columns;
        QCOMPARE(bench->data.storedRun().dt, 0.1024);
        QCOMPARE(columns.size(), 2);
        QCOMPARE(columns[0].size(), 400);
        for (int n : {0, 187, 188, 399}) { // the words of sample 187 lie in two packets
            QCOMPARE(columns[0][n], SensorKind(SENSOR_UV).convert(quint16(100 + n)));
            QCOMPARE(columns[1][n], SensorKind(SENSOR_BAROMETER).convert(quint16(200 + n)));
        }
    }

    void packetsAreCountedBeforehand()
    {
        // Samples of four bytes; the first packet holds 749 bytes of them.
        const QMap<int, int> packetsOf{{0, 1}, {100, 1}, {187, 1}, {188, 2}, {1000, 6}};
        for (auto row = packetsOf.begin(); row != packetsOf.end(); ++row) {
            bench->feed(begun + stored(0, header("0003", 3, row.key()), {}));
            QCOMPARE(bench->told.last(), QStringLiteral("packet 1/%1").arg(row.value()));
        }
    }

    void aStalledDownloadGivesUp()
    {
        bench->feed(begun);
        for (int i = 0; i < 10; ++i)
            bench->data.timeoutWaitingPacket();
        QCOMPARE(bench->told.count("next"), 11);
        bench->told.clear();
        bench->data.timeoutWaitingPacket();
        QCOMPARE(bench->told, (QStringList{"complete 0", "accepted 5"}));
        bench->feed(stored(0, header("0003", 3, 10), samples(0, 10))); // too late
        QVERIFY(bench->data.storedRun().columns.isEmpty());
    }

    void onlyTheLastWordIsMissing()
    {
        bench->feed(begun + stored(0, header("0003", 3, 10), samples(0, 10)));
        bench->told.clear();
        bench->data.timeoutWaitingPacket();
        QCOMPARE(bench->told, (QStringList{"complete 1", "accepted 5"}));
    }

    void aShortDownloadFailsAndChangesNothing()
    {
        const auto& columns = bench->data.storedRun().columns;
        bench->feed(begun + stored(0, header("0003", 0xFF, 10), samples(0, 10)) + noneLeft);
        QCOMPARE(bench->data.storedRun().dt, TembrinData::Rates[9]); // brought back into the table
        bench->feed(begun + stored(0, header("0001", 3, 1000), samples(0, 187)) + noneLeft);
        QCOMPARE(bench->told.count("complete 0"), 1);
        QCOMPARE(columns.size(), 2);
        QCOMPARE(columns.at(1).size(), 10);
        bench->feed(begun + noneLeft);
        QCOMPARE(bench->told.count("complete 0"), 2);
    }

    void samplesByHandCarrySixBytesMore()
    {
        // 100 samples of 10 bytes: two packets, where the values alone would fit in one.
        QByteArray all;
        for (int n = 0; n < 100; ++n)
            all.append("\x55\x55\x55\x55\x55\x55", 6).append(samples(n, 1));
        bench->feed(begun + stored(0, header("0003", 0, 100), all.left(749)) + stored(1, {}, all.mid(749)) +
                    noneLeft);
        QVERIFY(bench->told.contains("complete 1") && bench->told.contains("packet 2/2"));
        QCOMPARE(bench->data.storedRun().columns[1][99], SensorKind(SENSOR_PH).convert(299));
        QCOMPARE(bench->data.storedRun().dt, 0.0);
    }

    void anExperimentIsReadByItsOwnHeader_data()
    {
        columns<QByteArray>({"between"});
        row("nothing between", QByteArray());
        row("a plug", summed("2E6985 6700"));
        row("a key", status({{3, 0}, {9, 0xFF}, {11, 1}, {25, 107}}));
    }

    void anExperimentIsReadByItsOwnHeader()
    {
        QFETCH(QByteArray, between);
        // Two samples of 14 bytes in the first packet of 767, and 52 more in the second.
        QByteArray all;
        for (int n = 0; n < 54; ++n)
            all.append(bytes("00000001 00000002 0003 0004 0123"));
        QByteArray first = bytes("2E6954 00 0000 0018 03 0036 000000000000 65 00") + all.left(747);
        const QByteArray packet0 = summed(first);
        bench->feed(begun + packet0 + between + stored(1, {}, all.mid(747)) + between + noneLeft);
        QVERIFY(bench->told.contains("complete 1"));
        const StoredRun& run = bench->data.storedRun();
        QCOMPARE(run.columns.size(), 5);
        QCOMPARE(run.channels.at(0)->ID, int(SENSOR_GPS_LAT));
        QCOMPARE(run.channels.at(4)->ID, int(QUELLMARK_CURRENT));
        QCOMPARE(run.columns.at(4), QVector<double>(54, SensorKind(QUELLMARK_CURRENT).convert(0x123)));
        // What the experiment says of its sockets is not what is plugged in now.
        QVERIFY(bench->data.getSensors().at(4)->ID != QUELLMARK_CURRENT);
    }

    void theTableOfExperiments()
    {
        const QByteArray one = summed("2E6945 01 0003 05 03E8 22 11 26 10 20 30");
        const QByteArray two = summed("2E6955 02 0010 FF 0064 22 11 26 10 20 30 65 00");
        const QByteArray three = summed("2E6945 03 0001 00 000A 22 11 26 10 20 30");
        const short rate = bench->data.reported().rate;
        bench->feed(status({{3, 0x45}}) + one + two + three);
        QCOMPARE(bench->told, (QStringList{"status", "table"}));
        QCOMPARE(bench->data.reported().rate, rate);
        const auto& list = bench->data.expList();
        QCOMPARE(list[0].sensNames, QStringLiteral("UV, pH"));
        QCOMPARE(list[0].rate, QStringLiteral("100/Sec"));
        QCOMPARE(list[0].samples, 1000);
        QCOMPARE(list[0].datetime.toUTC(), QDateTime({2026, 11, 22}, {10, 20, 30}, Qt::UTC));
        QCOMPARE(list[1].rate, QStringLiteral("100000/Sec")); // brought back into the table
        QCOMPARE(list[1].ext1ID, int(QUELLMARK_CURRENT));
        QCOMPARE(list[1].sensNames, QStringLiteral("Current")); // not what is plugged in now
        QCOMPARE(list[1].iconNames, QStringList{Sensor::vestrelIconForID(QUELLMARK_CURRENT)});

        bench->feed(status({{3, 0xDD}, {8, 0}}));
        QCOMPARE(list.size(), 3); // nothing stored, nothing forgotten
        bench->port().writes.clear();
        bench->feed(status({{3, 0x45}}) + one + three + two);
        QVERIFY(list.isEmpty()); // and the number two now comes out of order
        QCOMPARE(bench->port().written().left(4), summed("471448"));
    }

    void loaderPages()
    {
        QVector<int> addresses;
        connect(&bench->data, &TembrinData::gotBootloaderMem, this, [&](int address, const QByteArray& data) {
            addresses.append(address);
            addresses.append(data.size());
        });
        const QByteArray memory = summed(bytes("4C7923 00012345").leftJustified(135, '\x01'));
        const QByteArray eeprom = summed(bytes("4C7924 0140").leftJustified(21, '\x01'));
        QByteArray badMemory = memory, badEeprom = eeprom;
        badMemory[50] = badEeprom[10] = 0;
        bench->feed(memory + badMemory + eeprom + badEeprom);
        QCOMPARE(addresses, (QVector<int>{0x12345, 128, -1, 0, 0x140, 16}));
        QSignalSpy sums(&bench->data, &TembrinData::gotBootloaderCS);
        bench->feed(bytes("4C7927 11 00012345 00"));
        QCOMPARE(sums.value(0), (QVariantList{0x11, 0x12345}));
    }

    void aVortaIsKnownByItsStatus()
    {
        bench->feed(summed("3E7983 10 12 34 03 05 0100 FFFE 0003 00"));
        TembrinData& data = bench->data;
        QCOMPARE(bench->told.join(','), QStringLiteral("type changed,established,vorta,status,mode"));
        QCOMPARE(data.versionLine(), QStringLiteral("Vorta, Hardware 12, firmware 34"));
        QVERIFY(data.isIdle());
        QCOMPARE(data.reported().mask, quint16(0x15));
        QCOMPARE(data.forceCalibration(0).offset, -2);
        QCOMPARE(data.forceCalibration(0).gain, 28.5f);
        QCOMPARE(data.forceCalibration(1).gain, 285.0f);
        bench->feed(summed("3E7A84 33 12 34 01 09 0100 0000 0001 0003 00"));
        QCOMPARE(data.reported().vortaRate, short(5)); // the last there is
        QCOMPARE(bench->told.mid(5).join(','), QStringLiteral("status,stopped 0"));
    }

    void vortaBlocksCarryTheirValues()
    {
        bench->feed(idleVorta);
        const auto value = [&](int id, quint16 word) { return SensorKind(id, {}, {0, 28.5F}).convert(word); };
        const auto value5 = [&](quint16 word) {
            return SensorKind(SENSOR_VORTA_FORCE5, {}, {0, 285}).convert(word);
        };
        start(0x1F);
        bench->feed(summed("3E79F0 F1 23 45 6A BC DE F1 23"));
        QCOMPARE(bench->told.last(), QStringLiteral("online 0+0"));
        QCOMPARE(bench->lastBlock,
                 (QVector<QVector<double>>{
                     {value(SENSOR_VORTA_FORCE50, 0x123), value5(0x456), value(SENSOR_VORTA_ACC_X, 0xABC0),
                      value(SENSOR_VORTA_ACC_Y, 0xDEF0), value(SENSOR_VORTA_ACC_Z, 0x1230)}}));
        want(0x01); // for the next run
        bench->feed(summed("3E79F0 F1 23 45 6A BC DE F1 23"));
        QCOMPARE(bench->told.last(), QStringLiteral("online 1+0"));
        QCOMPARE(bench->lastBlock.at(0).size(), 5);
        want(0x01, 1, true);
        bench->protocol.sendCommand(CMD_START_LOGGING);
        bench->feed(runningVorta(1) + summed("3E79F0 F1 23 45 6A BC DE F1 23"));
        QCOMPARE(bench->lastBlock.at(0), QVector<double>{-value(SENSOR_VORTA_FORCE50, 0x123)});
        start(0x07);
        bench->feed(summed(bytes("3E79F3") + bytes("0123456789").repeated(50)));
        QCOMPARE(bench->told.last(), QStringLiteral("online 0+0"));
        QCOMPARE(bench->lastBlock.size(), 50);
        QCOMPARE(bench->lastBlock.last().size(), 2); // the fast packets carry no word of the second channel
        QCOMPARE(bench->lastBlock.last()[1], value(SENSOR_VORTA_ACC_X, 0x4560));
        QCOMPARE(bench->data.runChannels().at(1)->ID, int(SENSOR_VORTA_ACC_X));
        start(0);
        bench->feed(summed(bytes("3E79F2") + QByteArray(80, '\0')));
        QCOMPARE(bench->lastBlock, QVector<QVector<double>>(10));
    }

    void aVortaRunHasOneBeginningAndOneEnd()
    {
        const QByteArray block = summed(bytes("3E79F3") + QByteArray(250, '\0'));
        constexpr double blockPeriod = 0.1024;
        bench->feed(idleVorta);
        start(0x01, 5);
        bench->feed(block + block + summed("3E7983 33 12 34 00 05 0100 0000 0000 00"));
        bench->told.clear();
        bench->feed(block); // was under way
        QCOMPARE(bench->told, QStringList());
        bench->protocol.sendCommand(CMD_START_LOGGING);
        bench->feed(block); // the word that it has started was lost
        QCOMPARE(bench->told, QStringList{"online 0+0"});

        // Lost in the run and back: the clock says how many blocks there were.
        QElapsedTimer clock;
        clock.start();
        bench->protocol.release();
        while (clock.elapsed() < 4 * 1000 * blockPeriod)
            QTest::qWait(1);
        bench->protocol.open();
        bench->protocol.init();
        bench->feed(summed("3E7983 10 12 34 01 05 0100 0000 0000 00"));
        bench->told.clear();
        bench->feed(block);
        const int number = bench->told.constFirst().mid(7).split('+').constFirst().toInt();
        QVERIFY2(qAbs(number - clock.elapsed() / 1000.0 / blockPeriod) < 0.6,
                 qPrintable(QString::number(number)));
        bench->feed(block);
        QCOMPARE(bench->told.last(), QStringLiteral("online %1+0").arg(number + 1));
        // Stopped by a key in the meantime.
        bench->protocol.release();
        bench->protocol.open();
        bench->protocol.init();
        bench->feed(idleVorta + summed("3E7983 22 12 34 01 05 0100 0000 0000 00") + block);
        QCOMPARE(bench->told.last(), QStringLiteral("online 0+0"));
    }

    void anUprightVortaCarriesItsOwnWeight()
    {
        bench->feed(idleVorta);
        start(0x07);
        bench->feed(summed("3E79F0 05 FF 00 04 00 00 00 00")); // 4 g along x, full force on the first channel
        QCOMPARE(bench->lastBlock.at(0).mid(0, 2), (QVector<double>{50, 1.9}));
        bench->feed(summed("3E7981 05FF 0000 0400 0000 0000"));
        QCOMPARE(bench->told.last(), QStringLiteral("snapshot"));
        const auto& values = bench->data.snapshot();
        QCOMPARE(values.at(0), QVector<double>{50});
        QCOMPARE(values.at(1), QVector<double>{1.9});
        QCOMPARE(values.at(2), QVector<double>{SensorKind(SENSOR_VORTA_ACC_X).convert(0x4000)});
        bench->feed(summed("3E7981 0000 0000 F000 0000 0000"));
        QCOMPARE(values.at(1), QVector<double>{0});
    }

private:
    const QByteArray idleVorta = summed("3E7983 10 12 34 00 01 0100 0000 0000 00");

    static QByteArray runningVorta(short rate)
    {
        return summed(bytes("3E7983 22 12 34 01") + char(rate) + bytes("0100 0000 0000 00"));
    }
    void want(quint16 mask, short rate = 1, bool invertForce = false)
    {
        LoggerSettings setup = bench->protocol.wanted();
        setup.mask = mask;
        setup.vortaRate = rate;
        setup.vortaInvertForce = invertForce;
        bench->protocol.wantSetup(setup);
    }
    void start(quint16 mask, short rate = 1)
    {
        want(mask, rate);
        bench->protocol.sendCommand(CMD_START_LOGGING);
        bench->feed(runningVorta(rate));
    }
};

QTEST_GUILESS_MAIN(TestDownload)
#include "test_download.moc"
