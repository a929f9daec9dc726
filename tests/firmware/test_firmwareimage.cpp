#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include "firmware/firmwareimage.h"
#include "tests/common/testsupport.h"

namespace {

/// A record with its right sum.
QByteArray record(int address, int type, const QByteArray& data)
{
    QByteArray bytes;
    bytes.append(char(data.size()));
    bytes.append(char(address >> 8));
    bytes.append(char(address));
    bytes.append(char(type));
    bytes += data;
    int sum = 0;
    for (const char byte : bytes)
        sum += uchar(byte);
    return ':' + bytes.append(char(-sum)).toHex().toUpper() + '\n';
}

const QByteArray endRecord = ":00000001FF\n";

QByteArray offsetRecord(int bank)
{
    return record(0, 4, QByteArray(1, 0) + char(bank));
}

QByteArray dataLine(int address, char byte)
{
    QByteArray text = ": ";
    text += QByteArray::number(address >> 8, 16) + ' ' + QByteArray::number(address & 0xFF, 16);
    for (int i = 0; i < 32; ++i)
        text += ' ' + QByteArray::number(uchar(byte), 16);
    return text + " sum end\n";
}

} // namespace

class TestFirmwareImage : public GuardedTest
{
    Q_OBJECT

    QString write(const QByteArray& bytes, const QString& name = QStringLiteral("image.hex"))
    {
        QFile file(folder.filePath(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(bytes);
        return file.fileName();
    }
    QTemporaryDir folder;
    FirmwareImage image;

private Q_SLOTS:
    /// Two other programs write the files; one of them tells what is in them.
    void imagesOfOtherProgramsAreReadExactly()
    {
        QProcess maker;
        maker.start(QStringLiteral(SYSTEM_PYTHON), {QStringLiteral(MAKE_IMAGES), folder.path()});
        QVERIFY(maker.waitForFinished(60000));
        QVERIFY2(maker.exitCode() == 0, maker.readAllStandardError());
        const QStringList names = QDir(folder.path()).entryList({QStringLiteral("*.pages")});
        QVERIFY(names.size() > 15);
        for (const QString& name : names) {
            const QString base = folder.filePath(name.section(QLatin1Char('.'), 0, 0));
            QVERIFY2(image.open(base + QStringLiteral(".hex"), true) == 0, qPrintable(name + image.label));
            QStringList lines;
            const auto add = [&lines](const char* kind, const QVector<dataPacket>& packets) {
                for (const dataPacket& packet : packets)
                    lines.append(QStringLiteral("%1 %2 %3")
                                     .arg(QLatin1String(kind), QString::number(packet.start, 16),
                                          QString(packet.data.toHex())));
            };
            add("E", image.eepromPackets);
            add("F", image.flashPackets);
            lines.append(QStringLiteral("S %1 %2").arg(image.flashCS).arg(image.eepromCS));
            QFile told(base + QStringLiteral(".pages"));
            QVERIFY(told.open(QIODevice::ReadOnly));
            QStringList expected =
                QString::fromLatin1(told.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
            expected.sort();
            lines.sort();
            QVERIFY2(lines == expected, qPrintable(name));
        }
    }

    void realImagesAreReadOrRefusedForAReason()
    {
        int files = 0;
        for (const char* root : {"/usr/share/arduino/hardware", "/usr/share/firmware-microbit-micropython"}) {
            QDirIterator found(QLatin1String(root), {QStringLiteral("*.hex")}, QDir::Files,
                               QDirIterator::Subdirectories);
            for (; found.hasNext(); ++files) {
                const QString file = found.next();
                const int result = image.open(file, true);
                QVERIFY2(image.fileOK == (result == 0) && !image.label.isEmpty(), qPrintable(file));
                QVERIFY2(image.fileOK || image.label.contains(QLatin1Char('0')),
                         qPrintable(file + image.label));
                QVERIFY2(image.fileOK || image.flashPackets.isEmpty(), qPrintable(file));
            }
        }
        if (files == 0)
            QSKIP("no other images on this machine");
    }

    void whatCantBeReadExactlyIsRefused_data()
    {
        columns<QByteArray, QString>({"file", "label"});
        const QByteArray two(2, 5);
        const QByteArray good = record(0x1000, 0, two);
        QByteArray wrongSum = good;
        wrongSum[10] = wrongSum[10] == '0' ? '1' : '0';
        row("empty", QByteArray(), QStringLiteral("empty"));
        row("wrong sum in the first line", wrongSum + endRecord, QStringLiteral("Wrong CS in line 0"));
        row("wrong sum where nothing is read", offsetRecord(0x30) + wrongSum + endRecord,
            QStringLiteral("Wrong CS in line 1"));
        row("end in the middle", endRecord + good, QStringLiteral("Premature EOF in line 0"));
        row("no end", good, QStringLiteral("no end"));
        row("cut end", good + ":00000001F", QStringLiteral("Line 1"));
        row("shorter than it says", QByteArray(":1010000005DB\n") + endRecord, QStringLiteral("shorter"));
        row("half a byte", QByteArray(":021000000505E\n") + endRecord, QStringLiteral("half"));
        row("no digit", QByteArray(":02100000050G4E\n") + endRecord, QStringLiteral("no digit"));
        row("boot loader", record(0x0FFF, 0, two) + endRecord, QStringLiteral("0x0fff belongs"));
        row("behind the flash", offsetRecord(1) + record(0xFFFF, 0, two) + endRecord,
            QStringLiteral("behind"));
        row("behind the EEPROM", offsetRecord(0xF0) + record(0x3F1, 0, two) + endRecord,
            QStringLiteral("behind"));
        row("over the end of the EEPROM",
            offsetRecord(0xF0) + record(0x3F0, 0, QByteArray(17, 1)) + endRecord, QStringLiteral("behind"));
        row("two bytes for one place", good + record(0x1001, 0, QByteArray(1, 6)) + endRecord,
            QStringLiteral("Line 1 writes other bytes"));
    }
    void whatCantBeReadExactlyIsRefused()
    {
        const auto [file, label] = fetched<QByteArray, QString>({"file", "label"});
        QCOMPARE(image.open(write(record(0x1000, 0, "ab") + endRecord), true), 0);
        QCOMPARE(image.open(write(file), true), -1);
        QVERIFY2(image.label.contains(label), qPrintable(image.label));
        QVERIFY(!image.fileOK && image.flashPackets.isEmpty() && image.eepromPackets.isEmpty());
    }

    void aMissingFileIsRefused()
    {
        QCOMPARE(image.open(folder.filePath(QStringLiteral("nothing.hex")), true), -1);
        QVERIFY(image.label.contains(QStringLiteral("can't be read")));
    }

    void pagesAreInTheFilesOrderAndSumsCountWhatIsErased()
    {
        QCOMPARE(image.open(write(endRecord), true), 0);
        QCOMPARE(image.flashCS, 0x1EE1000);
        QCOMPARE(image.eepromCS, 0);
        const QByteArray across(16, 0x11);
        QCOMPARE(
            image.open(write(record(0x2078, 0, across) + record(0x1000, 0, "a") + record(0x1000, 0, "a") +
                             offsetRecord(0x31) + record(0, 0, "zz") + endRecord),
                       true),
            0);
        QCOMPARE(image.flashPackets.size(), 3);
        QCOMPARE(image.flashPackets[0].start, 0x2000);
        QCOMPARE(image.flashPackets[0].data, QByteArray(120, char(0xFF)) + across.left(8));
        QCOMPARE(image.flashPackets[1].data, across.left(8) + QByteArray(120, char(0xFF)));
        QCOMPARE(image.flashPackets[2].start, 0x1000);
        QCOMPARE(image.flashCS, 0x1EE1000 - 16 * (0xFF - 0x11) - (0xFF - 'a'));
    }

    void anImageOfABrevikLeavesOutWhatIsNotItsOwn()
    {
        const QString path =
            write(record(0x3000, 0, "early") + offsetRecord(0) + record(0x1FFF, 0, "ab") +
                      record(0x2000, 0, "cd") + offsetRecord(2) + record(0xA701, 0, "ef") + endRecord,
                  QStringLiteral("my BREVIK 2.hex"));
        QCOMPARE(image.open(path, true), 0);
        QVERIFY(image.brevikFile);
        // Before the first offset the records are for a logger's memory, which this device has not.
        QCOMPARE(image.flashPackets.size(), 1);
        QCOMPARE(image.flashPackets[0].start, 0x2000);
        QCOMPARE(image.flashPackets[0].data.left(9), QByteArray("cd\xff\xff\0\xff\xff\xff\0", 9));
        QCOMPARE(image.filename, QStringLiteral("my BREVIK 2"));
    }

    void aDataFileBecomesLongStrings()
    {
        const QString path = write("a comment\n" + dataLine(0x102, 2) + dataLine(0x100, 0) +
                                       dataLine(0x104, 4) + ": 1 2 3\n" + dataLine(0xFFFF, 7),
                                   QStringLiteral("colours.txt"));
        QCOMPARE(image.open(path, false), 0);
        QCOMPARE(image.brevikData.size(), 4);
        QCOMPARE(image.brevikLongData.size(), 3);
        const QByteArray none(32, char(0xFF));
        QByteArray first("\x01\x02", 2);
        first += QByteArray(32, 2) + none + QByteArray(32, 4);
        for (int i = 3; i < 8; ++i)
            first += none;
        QCOMPARE(image.brevikLongData[0], first);
        QCOMPARE(image.brevikLongData[1].size(), 258);
        QCOMPARE(image.brevikLongData[1].mid(2, 32), QByteArray(32, 0));
        QCOMPARE(image.open(write(dataLine(5, 1) + dataLine(5, 1)), false), -1);
        QVERIFY(image.label.contains(QStringLiteral("0x0005")));
        QCOMPARE(image.open(write("nothing\n"), false), -1);
    }

    void aMegabyteIsReadAtOnce()
    {
        QByteArray text = offsetRecord(0x31);
        while (text.size() < 1024 * 1024)
            text += record(0, 0, QByteArray(16, 3));
        text += offsetRecord(0);
        for (int address = 0x1000; address < 0xFFF0; address += 16)
            text += record(address, 0, QByteArray(16, char(address)));
        const QString path = write(text + endRecord);
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(image.open(path, true), 0);
        const qint64 ms = clock.elapsed();
        QVERIFY2(ms < 500, qPrintable(QString::number(ms))); // 50 on an idle machine
        qInfo("1 MB in %lld ms", ms);
    }
};

QTEST_GUILESS_MAIN(TestFirmwareImage)
#include "test_firmwareimage.moc"
