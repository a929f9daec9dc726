#include <QFile>
#include <QLoggingCategory>
#include <QTest>

#include "link/portlistener.h"
#include "protocol/tembrindata.h"
#include "tests/link/fakeport.h"

#include <cstring>
#include <random>
#include <unistd.h>

namespace {

constexpr int blockSize = 64 * 1024;
#ifdef __SANITIZE_ADDRESS__
constexpr qint64 tolerated = 1000000000; // freed memory is kept here, and a leak is found anyway
#else
constexpr qint64 tolerated = 4000000;
#endif
constexpr int blocks = 100000000 / blockSize;

/// Random bytes, with the heads of packets strewn in so that random bodies reach every handler.
void fill(QByteArray* block, std::mt19937_64& random)
{
    static const QByteArrayList families = {QByteArray::fromHex("2E69"), QByteArray::fromHex("3E79"),
                                            QByteArray::fromHex("4C79")};
    static const QByteArray types =
        QByteArray::fromHex("8283818444544555 85A8838481F0F1F2F311121415202324278384");
    for (int i = 0; i < block->size(); i += 8) {
        const quint64 bytes = random();
        std::memcpy(block->data() + i, &bytes, 8);
    }
    for (int i = 0; i < 20; ++i) {
        const auto& family = families.at(static_cast<int>(random() % 3));
        block->replace(static_cast<int>(random() % (blockSize - 3)), 3,
                       family + types.at(static_cast<int>(random() % static_cast<unsigned>(types.size()))));
    }
}

qint64 residentBytes()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    return statm.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

} // namespace

class TestRandomBytes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anyStreamIsSurvived()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("pellandra.*=false"));
        FakePort port;
        port.open(SerialPort::OpenMode::ReadWrite);
        TembrinData logger(0);
        PortListener listener(&port, &logger, 0);
        connect(&port, &SerialPort::readyRead, &listener, &PortListener::receive);
        qint64 packets = 0;
        connect(&logger, &TembrinData::statusReceived, this, [&packets] { ++packets; });
        connect(&logger, &TembrinData::newSnapReceived, this, [&packets] { ++packets; });
        connect(&logger, &TembrinData::testDataReceived, this, [&packets] { ++packets; });

        std::mt19937_64 random(20260421);
        QByteArray block(blockSize, 0);
        qint64 before = 0;
        for (int i = 0; i < blocks; ++i) {
            if (i == blocks / 4)
                before = residentBytes(); // buffers have their size by now
            fill(&block, random);
            logger.setGotSensorList(true); // all gates open
            logger.setLoggerRecognized(true);
            logger.setVorta(true);
            port.feed(block);
            QCoreApplication::processEvents();
            QTRY_COMPARE(port.bytesAvailable(), qint64(0));
        }
        QVERIFY(packets > blocks / 4);
        const qint64 growth = residentBytes() - before;
        QVERIFY2(growth < tolerated, qPrintable(QStringLiteral("grew by %1 bytes").arg(growth)));
    }
};

QTEST_GUILESS_MAIN(TestRandomBytes)
#include "test_randombytes.moc"
