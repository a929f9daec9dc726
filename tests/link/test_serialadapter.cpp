#include <QElapsedTimer>
#include <QTest>

#include "common/waits.h"
#include "link/serialmonitorthread.h"
#include "link/systemports.h"
#include "tests/common/testsupport.h"
#include "tests/link/ptypair.h"

#include <thread>

class TestSerialAdapter : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        pty.reset(new PtyPair);
        received.clear();
        drops = 0;
        makePort(SerialPort::QueryMode::EventDriven);
    }

    void finish() override
    {
        port.reset();
        pty.reset();
    }

private Q_SLOTS:
    void bytesPassBothWays()
    {
        QVERIFY2(port->open(SerialPort::OpenMode::ReadWrite), qPrintable(port->errorString()));
        QCOMPARE(port->lineStatus(), 0xFu); // no modem lines: all count as up
        const QByteArray all = QByteArray::fromHex("00030411130D0A7F80FF1A"); // what a cooked line would eat
        QCOMPARE(port->write(all), qint64(all.size()));
        QCOMPARE(pty->read(all.size()), all);
        QVERIFY(pty->write(all));
        QTRY_COMPARE(received, all);
        port->write("last words");
        port->close();
        QCOMPARE(pty->read(10), QByteArray("last words"));
        QCOMPARE(port->write("x"), qint64(-1));
        QCOMPARE(port->lineStatus(), 0u);
        Waits::pump(50);
        QCOMPARE(drops, 0);
    }

    void aMissingDeviceSaysWhy()
    {
        pty->hangUp();
        QVERIFY(!port->open(SerialPort::OpenMode::ReadWrite));
        QVERIFY(!port->errorString().isEmpty());
        QCOMPARE(port->lineStatus(), 0u);
    }

    void aBusyReaderNeitherLosesBytesNorHoldsTheLine()
    {
        QVERIFY(port->open(SerialPort::OpenMode::ReadWrite));
        QByteArray sent;
        for (int i = 0; i < 100000; ++i)
            sent.append(static_cast<char>(i * 7 + i / 256));
        std::atomic<int> writerMs{-1};
        QElapsedTimer clock;
        clock.start();
        std::thread writer([&] {
            if (pty->write(sent))
                writerMs = static_cast<int>(clock.elapsed());
        });
        while (clock.elapsed() < 300 || (writerMs < 0 && clock.elapsed() < 5000))
            QThread::msleep(10); // busy: no event is handled here
        const int writtenWhileBusy = writerMs;
        if (writtenWhileBusy < 0)
            port->close(); // the writer gives up
        writer.join();
        QVERIFY2(writtenWhileBusy >= 0, "the writer waited for the reader");
        QCOMPARE(signalsOfBytes, 0);
        QTRY_COMPARE(received.size(), sent.size());
        QCOMPARE(received, sent);
        QVERIFY2(signalsOfBytes < 10, qPrintable(QString::number(signalsOfBytes)));
    }

    void aHangUpIsToldOnceAndThePortCanBeOpenedAgain()
    {
        for (int time = 1; time <= 2; ++time) {
            QVERIFY2(port->open(SerialPort::OpenMode::ReadWrite), qPrintable(port->errorString()));
            pty->hangUp();
            QTRY_COMPARE(drops, time);
            QVERIFY(!port->isOpen());
            Waits::pump(300);
            QCOMPARE(drops, time);
            port->closeWithoutFlush();
            pty->plugIn();
        }
        QVERIFY(port->open(SerialPort::OpenMode::ReadWrite));
        QVERIFY(pty->write("again"));
        QTRY_COMPARE(received, QByteArray("again"));
    }

    void aStalledLineHoldsUpNobody()
    {
        QVERIFY(port->open(SerialPort::OpenMode::ReadWrite));
        port->write(QByteArray(1000000, 'x')); // nobody reads it
        Waits::pump(100);
        QVERIFY(port->isOpen());
        QElapsedTimer clock;
        clock.start();
        port->close();
        QVERIFY2(clock.elapsed() < 700, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(drops, 0);
    }

    void aPolledPortIsWatchedByItsMonitor()
    {
        makePort(SerialPort::QueryMode::Polling);
        QVERIFY(port->open(SerialPort::OpenMode::ReadWriteUnbuffered));
        SerialMonitorThread monitor(port.get(), true);
        int lost = 0;
        connect(&monitor, &SerialMonitorThread::readyRead, this,
                [this] { received += port->read(port->bytesAvailable()); });
        connect(&monitor, &SerialMonitorThread::loggerDisconnected, this, [&lost] { ++lost; });
        monitor.start();
        QVERIFY(pty->write("not looked at"));
        Waits::pump(50);
        QCOMPARE(received, QByteArray()); // no name yet
        monitor.setPortName(pty->name());
        QTRY_COMPARE(received, QByteArray("not looked at"));
        QCOMPARE(signalsOfBytes, 0);

        QVERIFY(QFile::remove(pty->name()));
        QTRY_COMPARE(lost, 1);
        Waits::pump(50);
        QVERIFY(monitor.isRunning());
        monitor.stop();
        QVERIFY(pty->write("later"));
        monitor.set(port.get(), false);
        monitor.setPortName(QStringLiteral("null"));
        QTRY_COMPARE(received, QByteArray("not looked atlater"));
        QCOMPARE(lost, 1);
    }

private:
    void makePort(SerialPort::QueryMode mode)
    {
        port = systemPortFactory()(pty->name(), mode);
        signalsOfBytes = 0;
        connect(port.get(), &SerialPort::readyRead, this, [this] {
            ++signalsOfBytes;
            received += port->read(port->bytesAvailable());
        });
        connect(port.get(), &SerialPort::dsrChanged, this, [this](bool up) { drops += up ? 100 : 1; });
    }

    QScopedPointer<PtyPair> pty;
    std::unique_ptr<SerialPort> port;
    QByteArray received;
    int drops = 0;
    int signalsOfBytes = 0;
};

QTEST_GUILESS_MAIN(TestSerialAdapter)
#include "test_serialadapter.moc"
