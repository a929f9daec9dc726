#include "link/portworker.h"

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

PortWorker::PortWorker(PortSession* session, QEventLoop* loop)
    : session(session)
    , loop(loop)
{
    connect(&port, &QSerialPort::readyRead, this, &PortWorker::takeReceived);
    connect(&port, &QSerialPort::errorOccurred, this, &PortWorker::onError);
    connect(&linePoll, &QTimer::timeout, this, &PortWorker::pollLines);
}

bool PortWorker::open(const QString& name, const PortSettings& settings)
{
    port.setPortName(name);
    apply(settings);
    if (!port.open(QIODevice::ReadWrite))
        return false;
    hasLines = readLines();
    if (!hasLines)
        lines = allLines;
    publishLines();
    linePoll.start(linePollInterval);
    return true;
}

void PortWorker::apply(const PortSettings& settings)
{
    port.setBaudRate(settings.baud);
    port.setDataBits(settings.dataBits);
    port.setParity(settings.parity);
    port.setStopBits(settings.stopBits);
    port.setFlowControl(settings.flow);
}

void PortWorker::writePending()
{
    QByteArray bytes;
    {
        const std::lock_guard lock(session->mutex);
        bytes.swap(session->toWrite);
    }
    if (!lost && !bytes.isEmpty())
        port.write(bytes);
}

void PortWorker::close(bool flush)
{
    if (flush && !lost) {
        writePending();
        port.flush(); // what the device takes without waiting
    }
    lost = true;
    port.close();
    loop->quit();
}

void PortWorker::takeReceived()
{
    if (port.isOpen())
        session->addReceived(port.readAll());
}

/// A dead line reports its error again and again until it is closed, and closing must wait until the notifier
/// that reports has returned.
void PortWorker::onError(QSerialPort::SerialPortError error)
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

void PortWorker::hangUp()
{
    linePoll.stop();
    takeReceived();
    port.close();
    {
        const std::lock_guard lock(session->mutex);
        if (session->stage == PortSession::Stage::Over)
            return; // closed meanwhile, the order to end is on its way
        session->stage = PortSession::Stage::Over;
        session->error = QStringLiteral("the line was lost");
    }
    if (!endTold)
        tellDsr(false);
    loop->quit();
}

void PortWorker::pollLines()
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
    publishLines();
    if ((before ^ lines) & SerialPort::LineDsr)
        tellDsr(lines & SerialPort::LineDsr);
}

bool PortWorker::readLines()
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

void PortWorker::publishLines()
{
    const std::lock_guard lock(session->mutex);
    session->lines = lines;
}

void PortWorker::tellDsr(bool up)
{
    endTold = !up;
    session->tellOwner([up](SerialPort* owner) { Q_EMIT owner->dsrChanged(up); });
}
