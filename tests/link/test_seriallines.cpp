#include <QElapsedTimer>
#include <QTest>

#include "common/waits.h"
#include "link/serialworker.h"
#include "link/sessionport.h"
#include "tests/common/testsupport.h"
#include "tests/link/playedterminal.h"
#include "tests/link/ptypair.h"

#include <cerrno>
#include <future>
#include <sys/ioctl.h>

Q_DECLARE_METATYPE(PortFailure)
Q_DECLARE_METATYPE(std::function<void()>)

namespace {
constexpr int up = TIOCM_DSR | TIOCM_CTS;
}

class TestSerialLines : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        pty.reset(new PtyPair);
        terminal.play(QFile::encodeName(pty->name()));
        told.clear();
        makePort(std::chrono::seconds(30));
    }

    void finish() override
    {
        port.reset();
        pty.reset();
    }

private Q_SLOTS:
    void linesThatComeUpLateConnectAtTheFirstTry()
    {
        auto opening = openAside();
        QElapsedTimer clock;
        clock.start();
        QTRY_VERIFY(terminal.asked >= 35);
        QVERIFY2(clock.elapsed() > 1500, "asked too often");
        QVERIFY(!port->isOpen());
        QVERIFY(pty->write("early"));
        clock.restart();
        terminal.lines = up;
        QVERIFY(opening.get());
        QVERIFY2(clock.elapsed() < 500, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(port->lineStatus(), unsigned(SerialPort::LineDsr | SerialPort::LineCts));
        QCOMPARE(port->failure(), PortFailure::None);
        connectPort();
        QTRY_COMPARE(port->bytesAvailable(), qint64(5));
        clock.restart();
        QTRY_VERIFY(terminal.asked >= 40);
        QVERIFY2(clock.elapsed() > 600, "asked too often once open");
        QCOMPARE(told, QStringList());
    }

    void anOpeningThatFailsTellsWhy_data()
    {
        QTest::addColumn<int>("openError");
        QTest::addColumn<PortFailure>("failure");
        QTest::newRow("no such device") << ENOENT << PortFailure::NoPort;
        QTest::newRow("no right") << EACCES << PortFailure::NoRight;
        QTest::newRow("no right at all") << EPERM << PortFailure::NoRight;
        QTest::newRow("exclusive") << EBUSY << PortFailure::Held;
        QTest::newRow("the radio calls in vain") << EHOSTDOWN << PortFailure::OutOfReach;
        QTest::newRow("anything") << ENOMEM << PortFailure::Other;
    }
    void anOpeningThatFailsTellsWhy()
    {
        QFETCH(int, openError);
        terminal.openError = openError;
        QVERIFY(!openInTime(1000));
        QTEST(port->failure(), "failure");
        QVERIFY(!port->errorString().isEmpty());
    }

    void aPortInUseIsHeld()
    {
        terminal.lines = up;
        QVERIFY(openInTime(1000));
        const std::unique_ptr<SerialPort> first = std::move(port);
        makePort(std::chrono::seconds(30));
        QVERIFY(!openInTime(1000));
        QCOMPARE(port->failure(), PortFailure::Held);
        QVERIFY(first->isOpen());
    }

    void aWaitForLinesEnds_data()
    {
        QTest::addColumn<std::function<void()>>("event");
        QTest::addColumn<PortFailure>("failure");
        const auto row = [](const char* name, const std::function<void()>& event, PortFailure failure) {
            QTest::newRow(name) << event << failure;
        };
        row(
            "after its patience", [] {}, PortFailure::OutOfReach);
        row(
            "at a hang-up", [this] { pty->hangUp(); }, PortFailure::OutOfReach);
        row(
            "at an error", [this] { terminal.linesError = EIO; }, PortFailure::OutOfReach);
        row(
            "when it is cancelled", [this] { port->cancelOpening(); }, PortFailure::Cancelled);
        row(
            "when the port is closed", [this] { port->close(); }, PortFailure::Cancelled);
    }
    void aWaitForLinesEnds()
    {
        QFETCH(std::function<void()>, event);
        const bool isPatient = QTest::currentDataTag() != QByteArray("after its patience");
        makePort(std::chrono::milliseconds(isPatient ? 30000 : 300));
        auto opening = openAside();
        QTRY_VERIFY(terminal.asked >= 2);
        QElapsedTimer clock;
        clock.start();
        event();
        QVERIFY(!opening.get());
        QVERIFY2(clock.elapsed() < (isPatient ? 200 : 500), qPrintable(QString::number(clock.elapsed())));
        QTEST(port->failure(), "failure");
        if (!QFile::exists(pty->name()))
            pty->plugIn();
        terminal.linesError = 0;
        terminal.lines = up;
        QVERIFY(openInTime(500)); // nobody has the device any more
    }

    void anOpenLineEndsOnce_data()
    {
        QTest::addColumn<int>("lines");
        QTest::addColumn<int>("linesError");
        QTest::addColumn<QStringList>("words");
        QTest::newRow("DSR falls") << int(TIOCM_CTS) << 0 << QStringList{"DSR 0"};
        QTest::newRow("it can't be asked") << up << EIO << QStringList{"fault 2"};
    }
    void anOpenLineEndsOnce()
    {
        QFETCH(int, lines);
        QFETCH(int, linesError);
        QFETCH(QStringList, words);
        for (const bool isHeard : {true, false}) {
            terminal.lines = up;
            terminal.linesError = 0;
            told.clear();
            makePort(std::chrono::seconds(30));
            QVERIFY(openInTime(1000));
            if (isHeard)
                connectPort();
            terminal.lines = lines;
            terminal.linesError = linesError;
            QTRY_VERIFY_WITH_TIMEOUT(!port->isOpen(), 600);
            QCOMPARE(port->failure(), PortFailure::Lost);
            QCOMPARE(port->lineStatus(), 0u);
            terminal.linesError = 0;
            terminal.lines = up;
            Waits::pump(300);
            QCOMPARE(told, isHeard ? words : QStringList());
        }
    }

    void aLineThatComesAndGoesWithoutDsrStaysOpen()
    {
        terminal.lines = TIOCM_CTS;
        QVERIFY(openInTime(1000));
        connectPort();
        terminal.lines = up;
        QTRY_COMPARE(told, QStringList{"DSR 1"});
        terminal.lines = TIOCM_DSR;
        QTRY_COMPARE(port->lineStatus(), unsigned(SerialPort::LineDsr));
        QVERIFY(port->isOpen());
    }

    void closingWaitsForNoStalledByte_data()
    {
        QTest::addColumn<int>("unsent");
        QTest::addColumn<bool>("stalls");
        QTest::newRow("a megabyte") << 1000000 << true;
        QTest::newRow("the last command") << 8 << false;
    }
    void closingWaitsForNoStalledByte()
    {
        QFETCH(int, unsent);
        QFETCH(bool, stalls);
        terminal.lines = up;
        QVERIFY(openInTime(1000));
        terminal.stalls = stalls;
        terminal.unsent = unsent;
        QElapsedTimer clock;
        clock.start();
        port->close();
        QVERIFY2(clock.elapsed() < 200, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(int(terminal.descriptor), -1);
        QCOMPARE(int(terminal.thrownAway), stalls ? unsent : 0);
    }

private:
    void makePort(std::chrono::milliseconds patience)
    {
        const QString name = pty->name();
        port = std::make_unique<SessionPort>(name, SerialPort::QueryMode::EventDriven,
                                             SerialWorker::kind(name, patience));
    }

    void connectPort()
    {
        connect(port.get(), &SerialPort::dsrChanged, this,
                [this](bool isUp) { told << QStringLiteral("DSR %1").arg(isUp); });
        connect(port.get(), &SerialPort::test, this,
                [this](int code) { told << QStringLiteral("fault %1").arg(code); });
    }

    std::future<bool> openAside()
    {
        return std::async(std::launch::async, [this] { return port->open(SerialPort::OpenMode::ReadWrite); });
    }

    bool openInTime(int ms)
    {
        QElapsedTimer clock;
        clock.start();
        const bool isOpen = port->open(SerialPort::OpenMode::ReadWrite);
        if (clock.elapsed() >= ms)
            QTest::qFail(qPrintable(QString::number(clock.elapsed())), __FILE__, __LINE__);
        return isOpen;
    }

    QScopedPointer<PtyPair> pty;
    PlayedTerminal& terminal = PlayedTerminal::instance();
    std::unique_ptr<SerialPort> port;
    QStringList told;
};

QTEST_GUILESS_MAIN(TestSerialLines)
#include "test_seriallines.moc"
