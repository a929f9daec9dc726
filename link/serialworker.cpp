#include "link/serialworker.h"

#include "link/linklog.h"
#include "link/serialsystem.h"

#include <QThread>

namespace {

// The system does not signal modem lines.
constexpr std::chrono::milliseconds awaitInterval(50);
constexpr std::chrono::milliseconds pollInterval(250);
/// For an opening that the system itself holds up.
constexpr std::chrono::seconds systemPatience(2);
/// What the last command of a session takes to leave, and less than who closes waits.
constexpr std::chrono::milliseconds leavePatience(50);
constexpr unsigned allLines =
    SerialPort::LineCts | SerialPort::LineDsr | SerialPort::LineDcd | SerialPort::LineRi;

unsigned linesOf(QSerialPort::PinoutSignals pins)
{
    return (pins & QSerialPort::ClearToSendSignal ? SerialPort::LineCts : 0u) |
           (pins & QSerialPort::DataSetReadySignal ? SerialPort::LineDsr : 0u) |
           (pins & QSerialPort::DataCarrierDetectSignal ? SerialPort::LineDcd : 0u) |
           (pins & QSerialPort::RingIndicatorSignal ? SerialPort::LineRi : 0u);
}

} // namespace

PortKind SerialWorker::kind(const QString& name, std::chrono::milliseconds linePatience)
{
    return {[name, linePatience](PortSession* session) {
                return std::make_unique<SerialWorker>(session, name, linePatience);
            },
            linePatience + systemPatience};
}

SerialWorker::SerialWorker(PortSession* session, const QString& name, std::chrono::milliseconds linePatience)
    : PortWorker(session)
    , linePatience(linePatience)
{
    port.setPortName(name);
    connect(&port, &QSerialPort::readyRead, this, &SerialWorker::takeReceived);
    connect(&port, &QSerialPort::errorOccurred, this, &SerialWorker::onError);
    connect(&linePoll, &QTimer::timeout, this, &SerialWorker::lookAtLines);
}

void SerialWorker::open(const PortSettings& settings)
{
    apply(settings);
    if (!port.open(QIODevice::ReadWrite)) {
        session->end(openingFailure(port), port.errorString());
        return;
    }
    isAwaited = true;
    lineDeadline.setRemainingTime(linePatience);
    linePoll.start(awaitInterval);
    lookAtLines();
}

void SerialWorker::apply(const PortSettings& settings)
{
    port.setBaudRate(settings.baud);
    port.setDataBits(settings.dataBits);
    port.setParity(settings.parity);
    port.setStopBits(settings.stopBits);
    port.setFlowControl(settings.flow);
}

void SerialWorker::writePending()
{
    const QByteArray bytes = session->takeToWrite();
    if (!lost && !bytes.isEmpty())
        port.write(bytes);
}

void SerialWorker::close(bool flush)
{
    if (flush && !lost) {
        writePending();
        port.flush(); // what the device takes without waiting
        letBytesLeave();
    }
    lost = true;
    linePoll.stop();
    if (port.isOpen() && unsentBytes(port) > 0)
        port.clear(QSerialPort::Output); // the system would wait half a minute for a line that stalls
    port.close();
}

/// What the device took is on its way, unless the line stalls.
void SerialWorker::letBytesLeave()
{
    const QDeadlineTimer deadline(leavePatience);
    while (port.bytesToWrite() == 0 && unsentBytes(port) > 0 && !deadline.hasExpired())
        QThread::msleep(1);
}

void SerialWorker::takeReceived()
{
    if (port.isOpen())
        session->addReceived(port.readAll());
}

/// A dead line reports its error again and again until it is closed, and closing must wait until the notifier
/// that reports has returned.
void SerialWorker::onError(QSerialPort::SerialPortError error)
{
    if (lost || readingLines || !port.isOpen())
        return;
    if (error == QSerialPort::ReadError || error == QSerialPort::WriteError ||
        error == QSerialPort::ResourceError) {
        lost = true;
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (end(QStringLiteral("the other end hung up")))
                    tellDsr(false);
            },
            Qt::QueuedConnection);
    }
}

/// True if the session did not know yet.
bool SerialWorker::end(const QString& text)
{
    takeReceived();
    close(false);
    qCInfo(linkLog) << port.portName() << (isAwaited ? ": no line came up," : ": line lost,") << text;
    return session->end(isAwaited ? PortFailure::OutOfReach : PortFailure::Lost, text);
}

void SerialWorker::lookAtLines()
{
    if (lost)
        return;
    if (isAwaited)
        awaitLine();
    else
        pollLines();
}

void SerialWorker::awaitLine()
{
    const Lines found = readLines();
    if (found == Lines::Failed) {
        end(port.errorString());
        return;
    }
    hasLines = found == Lines::Known;
    if (!hasLines)
        lines = allLines;
    if (lines != 0) {
        isAwaited = false;
        linePoll.start(pollInterval);
        session->opened(lines);
    } else if (lineDeadline.hasExpired()) {
        end(QStringLiteral("no line of the port is up"));
    }
}

void SerialWorker::pollLines()
{
    session->tellAgain();
    if (!hasLines)
        return;
    const unsigned before = lines;
    if (readLines() != Lines::Known) {
        if (end(port.errorString()))
            session->tellOwner([](SerialPort* owner) { Q_EMIT owner->test(2); });
        return;
    }
    session->setLines(lines);
    if (before & ~lines & SerialPort::LineDsr) {
        // Whoever has not connected yet finds the port closed.
        if (end(QStringLiteral("DSR fell")))
            tellDsr(false);
    } else if (lines & ~before & SerialPort::LineDsr) {
        tellDsr(true);
    }
}

SerialWorker::Lines SerialWorker::readLines()
{
    readingLines = true;
    port.clearError();
    const QSerialPort::PinoutSignals pins = port.pinoutSignals();
    readingLines = false;
    if (port.error() == QSerialPort::UnsupportedOperationError)
        return Lines::Unsupported;
    if (port.error() != QSerialPort::NoError)
        return Lines::Failed;
    lines = linesOf(pins);
    return Lines::Known;
}

void SerialWorker::tellDsr(bool up)
{
    session->tellOwner([up](SerialPort* owner) { Q_EMIT owner->dsrChanged(up); });
}
