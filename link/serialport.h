#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

#include "link/portfailure.h"

/// The port the link knows: a serial line, its modem lines, and how it tells of bytes and of its end. Signals
/// may come from another thread than the port's own; receivers connect queued (the default does that).
class SerialPort : public QObject
{
    Q_OBJECT

public:
    enum class QueryMode
    {
        Polling,
        EventDriven
    };
    enum class OpenMode
    {
        ReadWrite,
        ReadWriteUnbuffered
    };
    enum class Parity
    {
        None,
        Even,
        Odd
    };
    enum class StopBits
    {
        One,
        Two
    };
    enum class FlowControl
    {
        None,
        Hardware
    };

    /// Bits of lineStatus().
    enum Line : unsigned
    {
        LineCts = 0x1,
        LineDsr = 0x2,
        LineDcd = 0x4,
        LineRi = 0x8
    };

    using QObject::QObject;

    virtual QString portName() const = 0;
    virtual QueryMode queryMode() const = 0;

    /// Opens the line; blocks until it is open or has failed, so it is called off the GUI thread. False on
    /// failure, with the reason in errorString().
    virtual bool open(OpenMode mode) = 0;
    /// Ends an open() that is under way on another thread, without waiting for it; it fails as Cancelled.
    /// Safe from any thread. Nothing on a port that is open.
    virtual void cancelOpening() {}
    /// Writes out what is pending, as far as that does not block, and closes. Emits aboutToClose().
    virtual void close() = 0;
    /// Closes without writing out: for a line that has already gone.
    virtual void closeWithoutFlush() = 0;
    virtual bool isOpen() const = 0;

    virtual void setBaudRate(int baud) = 0;
    virtual void setDataBits(int bits) = 0;
    virtual void setParity(Parity parity) = 0;
    virtual void setStopBits(StopBits bits) = 0;
    virtual void setFlowControl(FlowControl flow) = 0;

    /// Bytes received and not yet read. Safe from any thread.
    virtual qint64 bytesAvailable() const = 0;
    /// At most `maxSize` received bytes, without waiting.
    virtual QByteArray read(qint64 maxSize) = 0;
    /// Hands the bytes to the port's thread and returns at once: their number, or -1 on a closed port.
    virtual qint64 write(const QByteArray& bytes) = 0;

    /// The modem lines that are up, bits of Line. A port without modem lines counts as all lines up; a closed
    /// one has none up.
    virtual unsigned lineStatus() const = 0;
    /// What the system said of the last failure, for the log; the person is told failure().
    virtual QString errorString() const = 0;
    /// Why open() failed or the link ended, None while it is open. Safe from any thread.
    virtual PortFailure failure() const { return isOpen() ? PortFailure::None : PortFailure::Other; }

Q_SIGNALS:
    /// Bytes wait. Sent once until they are read, not once per byte.
    void readyRead();
    void aboutToClose();
    /// The DSR line rose or fell; false also when the other end hung up or reading failed, then once per
    /// open.
    void dsrChanged(bool up);
    /// Waiting for (1) or collecting (2) a line event failed.
    void test(int code);
};

/// Makes the port of a name: the only place that knows which kind of port it is.
using SerialPortFactory =
    std::function<std::unique_ptr<SerialPort>(const QString& portName, SerialPort::QueryMode mode)>;
