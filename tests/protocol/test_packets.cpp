#include "tests/protocol/loggerbench.h"

namespace {

struct Row
{
    const char* name;
    PacketKind kind;
    QByteArray packet;
    const char* gates; ///< of new, listed, recognised, Vorta, downloading: 1 where it passes
};

QByteArray filled(const char* hex, int size)
{
    return summed(bytes(hex).leftJustified(size - 1, '\x2E'));
}

// The packet of sensors 0, 1 and 3 has 2 + 2 + 12 bytes of values, a snapshot 2 + 2 + 2 + 12 + 2 + 2.
QVector<Row> allPackets()
{
    return {
        {"sensor list", PacketKind::Packet, bytes(sensorListHex), "10111"},
        {"status", PacketKind::Status, bytes(statusHex), "01101"},
        {"snapshot", PacketKind::Packet, filled("2E6981 1B", 27), "00101"},
        {"online", PacketKind::Sample, filled("2E6984 19 000B 0001", 25), "00101"},
        {"stored data", PacketKind::Packet, filled("2E6944", 767), "00001"},
        {"stored data, sockets", PacketKind::Packet, filled("2E6954", 767), "00001"},
        {"experiment", PacketKind::Packet, filled("2E6945", 16), "00101"},
        {"experiment, sockets", PacketKind::Packet, filled("2E6955", 18), "00101"},
        {"plugged in", PacketKind::Packet, filled("2E6985", 6), "00101"},
        {"self test", PacketKind::Packet, filled("2E69A8", 12), "00101"},
        {"vorta status", PacketKind::Packet, filled("3E7983", 16), "11111"},
        {"vorta status, gain", PacketKind::Packet, filled("3E7A84", 18), "11111"},
        {"vorta snapshot", PacketKind::Packet, filled("3E7981", 14), "00010"},
        {"vorta 1", PacketKind::Packet, filled("3E7AF0", 12), "00010"},
        {"vorta 4", PacketKind::Packet, filled("3E79F1", 36), "00010"},
        {"vorta 10", PacketKind::Packet, filled("3E79F2", 84), "00010"},
        {"vorta 50", PacketKind::Packet, filled("3E79F3", 254), "00010"},
        {"loader", PacketKind::BootloadReady, filled("4C7911", 5), "11111"},
        {"loader of a vorta", PacketKind::BootloadReadyVorta, filled("4C7912", 5), "11111"},
        {"loader ok", PacketKind::BootloadCommandOK, filled("4C7914", 4), "11111"},
        {"loader bad", PacketKind::BootloadCommandBad, filled("4C7915", 4), "11111"},
        {"loader erased", PacketKind::BootloadEraseOK, filled("4C7920", 4), "11111"},
        {"loader memory", PacketKind::Packet, filled("4C7923", 136), "11111"},
        {"loader eeprom", PacketKind::Packet, filled("4C7924", 22), "11111"},
        {"loader sums", PacketKind::Packet, filled("4C7927", 9), "11111"},
    };
}

constexpr int states = 5;

// The states of the gates, on a logger with the sensors of the list.
void setState(TembrinData* data, int state)
{
    const bool isSession = state == 2 || state == 4;
    data->forgetConnection();
    data->setGotSensorList(state == 1 || isSession);
    data->setLoggerRecognized(isSession);
    data->setVorta(state == 3);
    QByteArray begun = status({{3, 0x44}});
    if (state == 4)
        data->handlePacket(reinterpret_cast<unsigned char*>(begun.data()), begun.size());
}

} // namespace

class TestPackets : public BenchTest
{
    Q_OBJECT

private:
    void begin() override
    {
        BenchTest::begin();
        bench->recognise();
    }

private Q_SLOTS:
    void everyPacketIsKnownAtItsEndAndNotBefore()
    {
        for (const Row& row : allPackets()) {
            setState(&bench->data, int(QByteArray(row.gates).lastIndexOf('1')));
            const QByteArray stream = row.packet + row.packet.left(2);
            for (int size = 1; size <= stream.size(); ++size) {
                int length = -1;
                const PacketKind kind = bench->data.identifyPacket(stream.constData(), size, &length);
                const QByteArray where = QByteArray(row.name) + " at " + QByteArray::number(size);
                const bool whole = size >= row.packet.size();
                // A cut answer of the loader is thrown away, not waited for.
                const bool dropped = row.kind == PacketKind::BootloadReady && !whole && size > 2;
                const PacketKind expected = whole     ? row.kind
                                            : dropped ? PacketKind::Junk
                                                      : PacketKind::Incomplete;
                QVERIFY2(kind == expected, where);
                QVERIFY2(length == (whole ? row.packet.size() : dropped ? 3 : 0), where);
            }
        }
    }

    void gatesLetThroughWhatFitsTheSession()
    {
        for (const Row& row : allPackets()) {
            for (int state = 0; state < states; ++state) {
                setState(&bench->data, state);
                int length = 0;
                const PacketKind kind =
                    bench->data.identifyPacket(row.packet.constData(), row.packet.size(), &length);
                const QByteArray where = QByteArray(row.name) + " in state " + QByteArray::number(state);
                QVERIFY2(kind == (row.gates[state] == '1' ? row.kind : PacketKind::Junk), where);
            }
        }
    }

    void junkEndsAtTheNextStartByte_data()
    {
        columns<QByteArray, int>({"stream", "length"});
        row("no start byte at all", bytes("00112233"), 4);
        row("up to a start byte", bytes("00114C79"), 2);
        row("wrong second byte", bytes("2E79833E"), 3);
        row("other family's second byte", bytes("4C7A11"), 3);
        row("unknown type", bytes("2E69992E69"), 3);
        row("snapshot of no size", bytes("2E69810000"), 5);
        row("snapshot of its header alone", bytes("2E698105FF"), 5);
        row("snapshot of other sensors", bytes("2E69811A2E"), 4);
        row("sample that does not fit its mask", bytes("2E69841A000B0001"), 8);
    }

    void junkEndsAtTheNextStartByte()
    {
        QFETCH(QByteArray, stream);
        QFETCH(int, length);
        int found = -1;
        QCOMPARE(int(bench->data.identifyPacket(stream.constData(), stream.size(), &found)),
                 int(PacketKind::Junk));
        QCOMPARE(found, length);
    }

    void samplesReachTheSensorsThroughGarbage()
    {
        const QByteArray first = summed("2E6984 0F 0007 0000 1234 2E69 3E79");
        const QByteArray second = summed("2E6984 0F 0007 0001 0001 0002 0003");
        bench->feed(bytes("0011") + first + second + bytes("2E6999") + bytes(statusHex) + second.left(7));
        // What waits is counted by size alone.
        QCOMPARE(bench->told, (QStringList{"online 0+3", "online 1+2", "status", "mode"}));
        QCOMPARE(bench->lastBlock, rows({{SENSOR_UV, 1}, {SENSOR_PH, 2}, {SENSOR_BAROMETER, 3}}));
        bench->feed(second.mid(7));
        QCOMPARE(bench->told.last(), QStringLiteral("online 1+0"));
    }

    void aRunIsReadByWhatItsFirstSampleFound()
    {
        const auto& block = bench->lastBlock;
        bench->feed(summed("2E6984 0D 0012 0000 0400 0500")); // pH and the first socket, by now a voltage
        QCOMPARE(block, rows({{SENSOR_PH, 0x400}, {VERNIER_VOLTAGE, 0x500}}));
        const SensorList channels = bench->data.runChannels();
        // A plug, a key of the logger and a new plug again: nothing of it is this run's.
        bench->feed(summed("2E6985 6500") + status({{3, 0}, {10, 0x05}, {25, 107}}));
        QCOMPARE(bench->data.getSensors().at(4)->ID, int(QUELLMARK_TEMPERATURE));
        bench->feed(summed("2E6984 0D 0012 0001 0401 0501"));
        QCOMPARE(block, rows({{SENSOR_PH, 0x401}, {VERNIER_VOLTAGE, 0x501}}));
        QCOMPARE(channels.at(1)->ID, int(VERNIER_VOLTAGE));
        QCOMPARE(bench->data.runChannels().at(1)->ID, int(VERNIER_VOLTAGE));
        QVERIFY(channels.at(1) != bench->data.runChannels().at(1));
        // Another mask is another run; so is what comes over a new line.
        bench->feed(summed("2E6984 0B 0010 0002 0502"));
        QCOMPARE(block, rows({{QUELLMARK_TEMPERATURE, 0x502}}));
        bench->protocol.open();
        bench->protocol.init();
        bench->recognise();
        bench->feed(summed("2E6985 6600"));
        bench->feed(summed("2E6984 0B 0010 FFFF 0503"));
        QCOMPARE(bench->told.last(), QStringLiteral("online -1+0"));
        QCOMPARE(block, rows({{QUELLMARK_RESPIRATION, 0x503}}));
    }

    void aLateHeadOfStoredDataHidesNothing()
    {
        // The rest of the packet never comes; thirty statuses would be taken for it.
        QByteArray all = bytes("2E6944 00 0003");
        for (int i = 0; i < 30; ++i)
            all.append(status({}));
        bench->feed(all);
        QCOMPARE(bench->told.count("status"), 30);
    }

    void aCompositeIsItsChildren()
    {
        bench->feed(summed("2E6984 17 000A 0000 0400 22 7530 53 23 7530 57 00FB 0E10"));
        QVector<int> ids;
        for (const SensorPtr& channel : bench->data.runChannels())
            ids.append(channel->ID);
        QCOMPARE(ids, (QVector<int>{SENSOR_PH, SENSOR_GPS_LAT, SENSOR_GPS_LONG, SENSOR_GPS_SPEED,
                                    SENSOR_GPS_ANGLE}));
        QCOMPARE(bench->lastBlock.at(0).mid(1), (QVector<double>{-34.5, -35.5, 25.1, 360}));
    }

    void bytesPerSampleAreCountedAnewForANewList()
    {
        bench->feed(summed("2E6984 0B 0001 0000 1234"));
        bench->feed(summed("2E6982 07 0000000000000000000000000000 00 00")); // GPS alone, 12 bytes
        bench->feed(status({{10, 0x01}}));
        bench->told.clear();
        bench->feed(summed("2E6984 15 0001 0000 00 11 22 33 44 55 66 77 88 99 AA BB"));
        QCOMPARE(bench->told, QStringList{"online 0+0"});
    }

    void snapshotReadsEverySensor()
    {
        bench->feed(summed("2E6981 1B 0101 0202 0303 000000000000000000000000 0404 0505"));
        QCOMPARE(bench->told, QStringList{"snapshot"});
        const auto& values = bench->data.snapshot();
        QCOMPARE(values.at(0), QVector<double>{SensorKind(SENSOR_UV).convert(0x101)});
        QCOMPARE(values.at(3).size(), 4);
        QCOMPARE(values.at(4), QVector<double>{SensorKind(VERNIER_VOLTAGE).convert(0x404)});
    }

private:
    /// One row, of the values of these words.
    static QVector<QVector<double>> rows(std::initializer_list<std::pair<int, int>> words)
    {
        QVector<double> row;
        for (const auto& [id, word] : words)
            row.append(SensorKind(id).convert(quint16(word)));
        return {row};
    }
};

QTEST_GUILESS_MAIN(TestPackets)
#include "test_packets.moc"
