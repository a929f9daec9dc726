#include "link/serialworker.h"

#include "link/linklog.h"

namespace {

constexpr int linePollInterval = 250; // ms; the system does not signal modem lines
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

PortKind SerialWorker::kind(const QString& name)
{
    return {[name](PortSession* session) { return std::make_unique<SerialWorker>(session, name); },
            std::chrono::seconds(15)}; // a terminal of a radio link may take several
}

SerialWorker::SerialWorker(PortSession* session, const QString& name)
    : PortWorker(session)
{
    port.setPortName(name);
    connect(&port, &QSerialPort::readyRead, this, &SerialWorker::takeReceived);
    connect(&port, &QSerialPort::errorOccurred, this, &SerialWorker::onError);
    connect(&linePoll, &QTimer::timeout, this, &SerialWorker::pollLines);
}

void SerialWorker::open(const PortSettings& settings)
{
    apply(settings);
    if (!port.open(QIODevice::ReadWrite)) {
        session->end(PortFailure::Other, port.errorString());
        return;
    }
    hasLines = readLines();
    if (!hasLines)
        lines = allLines;
    session->opened(lines);
    linePoll.start(linePollInterval);
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
    }
    lost = true;
    linePoll.stop();
    port.close();
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
    if (lost || readingLines)
        return;
    if (error == QSerialPort::ReadError || error == QSerialPort::ResourceError) {
        lost = true;
        qCInfo(linkLog) << port.portName() << ": line lost, code" << error;
        QMetaObject::invokeMethod(
            this, [this] { hangUp(); }, Qt::QueuedConnection);
    }
}

void SerialWorker::hangUp()
{
    linePoll.stop();
    takeReceived();
    port.close();
    if (session->end(PortFailure::Lost, QStringLiteral("the line was lost")) && !endTold)
        tellDsr(false);
}

void SerialWorker::pollLines()
{
    session->tellAgain();
    if (!hasLines || lost)
        return;
    const unsigned before = lines;
    hasLines = readLines();
    if (!hasLines) {
        session->tellOwner([](SerialPort* owner) { Q_EMIT owner->test(2); });
        return;
    }
    session->setLines(lines);
    if ((before ^ lines) & SerialPort::LineDsr)
        tellDsr(lines & SerialPort::LineDsr);
}

bool SerialWorker::readLines()
{
    readingLines = true;
    port.clearError();
    const QSerialPort::PinoutSignals pins = port.pinoutSignals();
    readingLines = false;
    if (port.error() != QSerialPort::NoError)
        return false;
    lines = linesOf(pins);
    return true;
}

void SerialWorker::tellDsr(bool up)
{
    endTold = !up;
    session->tellOwner([up](SerialPort* owner) { Q_EMIT owner->dsrChanged(up); });
}
