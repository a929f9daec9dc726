#include <QSignalSpy>
#include <QTest>

#include <random>

#include "common/settings.h"
#include "firmware/burnsession.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "tests/classroom/virtualbench.h"
#include "tests/common/testsupport.h"
#include "virtual/faultyline.h"

namespace {

constexpr int wholeFlash = 453; // pages
constexpr int wholeEeprom = 4;

QVector<dataPacket> randomPages(int count, int begin, bootLoaderMode type)
{
    std::mt19937 random(quint32(count + begin));
    QVector<dataPacket> pages;
    for (int at = begin; pages.size() < count; at = pages.last().end) {
        pages.append(dataPacket(at, type));
        for (char& byte : pages.last().data)
            byte = char(random());
    }
    return pages;
}

/// The image as a file of these pages, read by the program.
FirmwareImage imageOf(const QVector<dataPacket>& flash, const QVector<dataPacket>& eeprom, bool isBrevik)
{
    QByteArray text;
    const auto add = [&text](int address, int type, const QByteArray& data) {
        QByteArray bytes(1, char(data.size()));
        bytes += char(address >> 8);
        bytes += char(address);
        bytes += char(type) + data;
        int sum = 0;
        for (const char byte : qAsConst(bytes))
            sum += uchar(byte);
        text += ':' + (bytes + char(-sum)).toHex() + '\n';
    };
    const auto addPages = [&add](const QVector<dataPacket>& pages, int begin) {
        for (const dataPacket& page : pages) {
            const int address = begin + page.start;
            add(0, 4, QByteArray(1, 0) + char(address >> 16));
            for (int at = 0; at < page.data.size(); at += 128)
                add((address + at) & 0xFFFF, 0, page.data.mid(at, 128));
        }
    };
    addPages(flash, 0);
    addPages(eeprom, 0xF00000);
    add(0, 1, {});
    FirmwareImage image;
    image.take(text, true, isBrevik);
    return image;
}

/// A logger on a line, a session, and what it ends with.
struct BurnBench : VirtualBench
{
    explicit BurnBench(const char* model = "Birch")
        : VirtualBench({identity(model)})
    {
        protocol.setPortFactory(factory());
        connectLogger();
        session.setPatience(60, 200, 200, 300);
        connect(&session, &BurnSession::ended, this, [this](bool isGood, const QString& text) {
            ends += 1;
            good = isGood;
            words = text;
        });
    }

    void connectLogger()
    {
        putBack(0);
        protocol.open();
        protocol.init();
    }
    void setFault(const QString& name, double value)
    {
        LineFaults faults;
        QString error;
        if (!name.isEmpty() && !faults.set(name, value, &error))
            qWarning() << error;
        if (name != QLatin1String("loader"))
            faults.loader = loaderFaults.loader;
        loaderFaults = faults;
        act(0, [&faults](VirtualLogger& logger, qint64) {
            logger.setLoaderFaults(faults);
            return LoggerPackets();
        });
    }
    /// Waits for the one end of what was begun.
    bool end()
    {
        if (ends == 0)
            QSignalSpy(&session, &BurnSession::ended).wait(20000);
        QTest::qWait(2);
        return std::exchange(ends, 0) == 1 && !session.isBusy();
    }
    /// Its memory by what a program reads in its dump.
    bool holds(const FirmwareImage& image) const
    {
        FirmwareImage dump;
        dump.take(logger(0).bootLoader().hex(), true, image.brevikFile);
        const auto has = [](const QVector<dataPacket>& pages, const QVector<dataPacket>& wanted) {
            return std::all_of(wanted.begin(), wanted.end(), [&pages](const dataPacket& page) {
                return std::any_of(pages.begin(), pages.end(), [&page](const dataPacket& other) {
                    return page.compare(other.start, other.data) == 0;
                });
            });
        };
        return dump.fileOK && has(dump.flashPackets, image.flashPackets) &&
               has(dump.eepromPackets, image.eepromPackets) &&
               (!session.hasSums() || dump.flashCS == image.flashCS);
    }

    TembrinProtocol protocol{0};
    BurnSession session{&protocol};
    LineFaults loaderFaults;
    int ends = 0;
    bool good = false;
    QString words;
};

} // namespace

class TestBurn : public GuardedTest
{
    Q_OBJECT

    const FirmwareImage whole =
        imageOf(randomPages(wholeFlash, 0x1000, MODE_FLASH), randomPages(wholeEeprom, 0, MODE_EEPROM), false);
    const FirmwareImage small =
        imageOf(randomPages(12, 0x1000, MODE_FLASH), randomPages(3, 0, MODE_EEPROM), false);
    const FirmwareImage brevik = imageOf(randomPages(600, 0x2000, MODE_BREVIK_FLASH), {}, true);

private Q_SLOTS:
    void aBurnFillsTheMemoryOfEveryKind_data()
    {
        // damage: percent of the answers
        columns<QString, int, double, bool>({"model", "loader", "damage", "isBrevik"});
        row("whole", QString("Birch"), 2, 0.0, false);
        row("version 1", QString("Birch"), 1, 0.0, false);
        row("Vorta", QString("Vorta"), 0, 0.0, false);
        row("Brevik", QString("Sorrel"), 2, 0.0, true);
        row("damaged", QString("Birch"), 2, 1.0, false);
        row("damaged, version 1", QString("Birch"), 1, 1.0, false);
        row("damaged, Brevik", QString("Sorrel"), 2, 1.0, true);
    }

    void aBurnFillsTheMemoryOfEveryKind()
    {
        const auto [model, loader, damage, isBrevik] =
            fetched<QString, int, double, bool>({"model", "loader", "damage", "isBrevik"});
        const FirmwareImage& image = isBrevik ? brevik : whole;
        BurnBench bench(qPrintable(model));
        bench.setFault(QStringLiteral("loader"), loader);
        bench.protocol.sendVortaCommand(CMD_VORTA_GET_STATUS);
        QTRY_VERIFY(bench.protocol.tembrinData->isVorta() == (model == QLatin1String("Vorta")));
        FaultyLine line(3);
        line.faults.lose = line.faults.garbage = line.faults.badsum = damage / 3;
        bench.damage(0, [&line](const QByteArray& bytes) {
            line.send({LoggerPacket{bytes}}, 0);
            QByteArray arrived;
            for (const LineWrite& write : line.take(0))
                arrived += write.isLost ? QByteArray() : write.bytes;
            return arrived;
        });
        bench.session.burn(image);
        QVERIFY(bench.end());
        QCOMPARE(bench.words, QStringLiteral("burn successful"));
        QVERIFY(bench.good && bench.holds(image));
        QTRY_VERIFY(!bench.logger(0).bootLoader().isOn());
    }

    void aLostLinkIsToldAndTheNextBurnSucceeds()
    {
        std::mt19937 random(11);
        BurnBench bench;
        int pullAt = 0;
        connect(&bench.session, &BurnSession::progressed, this, [&] {
            if (pullAt > 0 && bench.session.isBusy() && bench.session.page() >= pullAt) {
                pullAt = 0;
                bench.pull(0);
            }
        });
        for (int i = 0; i < 50; ++i) {
            const int at = 1 + int(random() % (wholeFlash + wholeEeprom));
            pullAt = at;
            bench.session.burn(whole);
            QVERIFY(bench.end());
            QVERIFY2(!bench.good &&
                         bench.words.startsWith(QStringLiteral("interrupted at page %1 of 457").arg(at)),
                     qPrintable(bench.words));
            bench.connectLogger();
            bench.session.burn(whole);
            QVERIFY(bench.end());
            QVERIFY2(bench.good && bench.holds(whole), qPrintable(bench.words));
        }
    }

    void noFaultEndsInSilenceOrFalseSuccess_data()
    {
        // words: the beginning of what is told; empty for a burn that succeeds after all
        columns<QString, int, int, QString, QString>({"fault", "value", "loader", "words", "then"});
        const auto add = [](const char* fault, int value, int loader, const char* words,
                            const char* then = "") {
            row(qPrintable(QStringLiteral("%1=%2, version %3").arg(fault).arg(value).arg(loader)),
                QString(fault), value, loader, QString(words), QString(then));
        };
        for (const int loader : {1, 2}) {
            add("badpage", 5, loader, "write command failed at page 5 of 15");
            add("badpage", 14, loader, "write command failed at page 14 of 15");
            add("silentpage", 1, loader, "No answer at page 1 of 15");
            add("silentpage", 15, loader, "No answer at page 15 of 15");
            add("restartpage", 1, loader, "No answer at page 1 of 15");
            add("restartpage", 7, loader, "The logger has started anew at page 7 of 15");
        }
        add("badbyte", 0x1085, 1, "PROG MEM 0x1080 is not what the file says");
        add("badbyte", 0x1085, 2, "The logger's memory is not what the file says");
        add("badbyte", 0x1F000, 2, "The logger's memory is not what the file says");
    }

    void noFaultEndsInSilenceOrFalseSuccess()
    {
        const auto [fault, value, loader, words] =
            fetched<QString, int, int, QString>({"fault", "value", "loader", "words"});
        BurnBench bench;
        bench.setFault(QStringLiteral("loader"), loader);
        bench.setFault(fault, value);
        bench.session.burn(small);
        QVERIFY(bench.end());
        QVERIFY2(!bench.good && bench.words.startsWith(words), qPrintable(bench.words));
        QVERIFY(bench.logger(0).bootLoader().isOn());
        bench.setFault({}, 0);
        bench.session.burn(small);
        QVERIFY(bench.end());
        QVERIFY2(bench.good && bench.holds(small), qPrintable(bench.words));
    }

    void lostAnswersAreAskedForAgainOrMissed_data()
    {
        // type: of the answers that are lost; how many of them; words: as above
        columns<int, int, int, QString>({"type", "lost", "loader", "words"});
        const QString good = QStringLiteral("burn successful");
        row("one ready", 0x11, 1, 2, good);
        row("no ready", 0x11, 1000, 2, QString("The boot loader does not answer"));
        row("one erased", 0x20, 1, 2, good);
        row("none erased", 0x20, 1000, 2, QString("The logger does not say that its memory is erased"));
        row("two pages done", 0x14, 2, 2, good);
        row("one sum", 0x27, 1, 2, good);
        row("no sum", 0x27, 1000, 2, QString("The logger does not tell what its memory holds"));
        row("two pages read", 0x23, 2, 1, good);
        row("no EEPROM page read", 0x24, 1000, 1, QString("No answer at page 13 of 15"));
        row("no page read", 0x23, 1000, 1, QString("burn finished; this logger does not let"));
    }

    void lostAnswersAreAskedForAgainOrMissed()
    {
        const auto [type, lost, loader, words] =
            fetched<int, int, int, QString>({"type", "lost", "loader", "words"});
        BurnBench bench;
        bench.setFault(QStringLiteral("loader"), loader);
        int left = lost;
        bench.damage(0, [&left, type = type](const QByteArray& bytes) {
            return uchar(bytes[2]) == type && left-- > 0 ? QByteArray() : bytes;
        });
        bench.session.burn(small);
        QVERIFY(bench.end());
        QVERIFY2(bench.words.startsWith(words), qPrintable(bench.words));
        QVERIFY(!bench.good || bench.holds(small));
    }

    void pagesAreVerified()
    {
        BurnBench bench;
        QStringList labels;
        connect(&bench.session, &BurnSession::verifyLabel, this,
                [&](const QString& text) { labels += text; });
        bench.session.startLoader();
        QTRY_COMPARE(bench.session.loaderVersion(), 2);
        bench.session.write(small);
        QVERIFY(bench.end() && bench.good && bench.session.isWritten());
        bench.session.verify(small);
        QVERIFY(bench.end() && bench.good && bench.session.isVerified());
        QCOMPARE(labels.mid(11, 2), (QStringList{"PROG MEM 0x1580", "EEPROM MEM 0x0"}));
        QCOMPARE(labels.constLast(), QStringLiteral("OK"));
        bench.setFault(QStringLiteral("badbyte"), 0x1101);
        bench.session.verify(small);
        QVERIFY(bench.end() && !bench.good);
        QCOMPARE(labels.constLast(), QStringLiteral("PROG MEM 0x1100 Fail"));
        bench.damage(0, [](QByteArray bytes) { return bytes.replace(20, 1, "?"); });
        bench.session.verify(small);
        QVERIFY(bench.end() && !bench.good);
        QCOMPARE(labels.constLast(), QStringLiteral("got bad CS"));
        QVERIFY(!bench.session.isVerified() && bench.logger(0).bootLoader().isOn());
    }

    void stringsOfADataFileReachTheRunningDevice()
    {
        QByteArray text;
        for (int line = 0; line < 100; line += line == 41 ? 5 : 1) {
            text += ": 0 " + QByteArray::number(line, 16);
            for (int i = 0; i < 32; ++i)
                text += ' ' + QByteArray::number((line * 37 + i * 11) & 0xFF, 16);
            text += " sum end\n";
        }
        FirmwareImage image;
        QCOMPARE(image.take(text, false, false), 0);
        BurnBench bench;
        bench.protocol.sendCommand(CMD_GET_ALL_SENSORS_ID);
        QTRY_VERIFY(bench.protocol.tembrinData->isLoggerRecognized());
        bench.session.burn(image);
        QVERIFY(bench.end());
        QCOMPARE(bench.words, QStringLiteral("Done! %1 lines sent").arg(image.brevikLongData.size()));
        QVERIFY(bench.good);
        QCOMPARE(bench.logger(0).strings(), image.brevikLongData);
        bench.setDead(0);
        bench.session.burn(image);
        QVERIFY(bench.end() && !bench.good);
    }

    void whatCannotBeginSaysSo()
    {
        BurnBench bench;
        const FirmwareImage none;
        const FirmwareImage empty = imageOf({}, {}, false);
        const auto endsBadly = [&bench] { return bench.end() && !bench.good && !bench.words.isEmpty(); };
        for (const FirmwareImage* image : {&none, &empty}) {
            for (auto step : {&BurnSession::burn, &BurnSession::write, &BurnSession::verify}) {
                (bench.session.*step)(*image);
                QVERIFY(endsBadly());
            }
        }
        bench.session.verify(brevik);
        QVERIFY(endsBadly());
        bench.pull(0);
        bench.session.burn(small);
        QVERIFY(endsBadly());
        QVERIFY(!bench.logger(0).bootLoader().isOn());
    }

    /// The answer to what was given up begins nothing.
    void anAnswerThatComesLateIsNotHeard()
    {
        BurnBench bench;
        connect(&bench.session, &BurnSession::progressed, this, [&bench] {
            if (bench.session.state() == BurnSession::State::Erasing)
                bench.session.cancel();
        });
        bench.session.burn(small);
        QVERIFY(bench.end() && !bench.good);
        QVERIFY(QTest::qWaitFor([&bench] { return bench.heard(0, 0x19) == 1; }));
        QTest::qWait(50);
        QCOMPARE(bench.heard(0, 0x12), 0);
        QCOMPARE(bench.ends, 0);
    }
};

QTEST_GUILESS_MAIN(TestBurn)

#include "test_burn.moc"
