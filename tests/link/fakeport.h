#pragma once

#include "link/serialport.h"

#include <QElapsedTimer>
#include <QHash>
#include <QMutex>
#include <QPointer>
#include <QVector>

#include <atomic>

/// A port without a line: tests feed it, stall it, make it fail, hang it up, and look at what was written.
/// It may be opened on a ConnectThread; everything else belongs on the test's thread.
class FakePort : public SerialPort
{
    Q_OBJECT

public:
    struct Write
    {
        qint64 ms; // since the port was made
        QByteArray bytes;
    };

    explicit FakePort(const QString& name = QStringLiteral("fake"), QueryMode mode = QueryMode::EventDriven);

    // The test's side.
    /// Bytes arrive; readyRead() follows if the port is open and neither stalled nor polled.
    void feed(const QByteArray& bytes);
    /// A stalled port keeps what arrives to itself until the stall ends.
    void setStalled(bool stalled);
    /// The modem lines; dsrChanged() follows a change of DSR on an open port.
    void setLines(unsigned lines);
    /// The other end is gone: closed, and dsrChanged(false) if it was open.
    void hangUp();
    /// open() fails with this reason until an empty one is given.
    void failOpen(const QString& reason, PortFailure kind = PortFailure::Other);
    /// open() calls and calls, as a radio does, until it is cancelled.
    void callInVain() { calling = true; }

    /// Every write() in order, and the bytes of all of them.
    QVector<Write> writes;
    QByteArray written() const;
    /// Called after each write, for answers.
    std::function<void(const QByteArray&)> onWrite;
    int baud = 0;

    // The program's side.
    QString portName() const override { return name; }
    QueryMode queryMode() const override { return mode; }
    bool open(OpenMode mode) override;
    void cancelOpening() override { cancelled = true; }
    PortFailure failure() const override { return isOpen() ? PortFailure::None : kindOfFailure; }
    void close() override;
    void closeWithoutFlush() override { close(); }
    bool isOpen() const override;
    void setBaudRate(int baudRate) override { baud = baudRate; }
    void setDataBits(int) override {}
    void setParity(Parity) override {}
    void setStopBits(StopBits) override {}
    void setFlowControl(FlowControl) override {}
    qint64 bytesAvailable() const override;
    QByteArray read(qint64 maxSize) override;
    qint64 write(const QByteArray& bytes) override;
    unsigned lineStatus() const override { return isOpen() ? lines : 0; }
    QString errorString() const override { return openFailure; }

private:
    const QString name;
    const QueryMode mode;
    mutable QMutex mutex; // guards what a ConnectThread and a monitor share with the test
    bool opened = false;
    bool stalled = false;
    unsigned lines = LineCts | LineDsr;
    QString openFailure;
    PortFailure kindOfFailure = PortFailure::Other;
    std::atomic_bool calling{false};
    std::atomic_bool cancelled{false};
    QByteArray incoming;
    QElapsedTimer clock;
};

/// Gives out fake ports by name and remembers them, since the program owns the ports it asked for. Must
/// outlive the factories it made.
class FakePorts
{
public:
    SerialPortFactory factory();
    /// The port last made with this name, null before that and after its end.
    FakePort* port(const QString& name) const;
    /// Ports of this name fail to open, with this reason, until an empty one is given.
    void refuse(const QString& name, const QString& reason);
    /// How many ports of this name were made.
    int made(const QString& name) const;

private:
    mutable QMutex mutex;
    QHash<QString, QPointer<FakePort>> ports;
    QHash<QString, QString> refusals;
    QHash<QString, int> counts;
};
