#include "link/qtserialportadapter.h"

#include "link/portsession.h"

#include <QCoreApplication>

QtSerialPortAdapter::QtSerialPortAdapter(const QString& portName, QueryMode mode)
    : name(portName)
    , mode(mode)
    , settings(std::make_unique<PortSettings>())
{
    // Made on a thread that ends after the opening; deleteLater() needs one that runs on.
    if (QCoreApplication::instance())
        moveToThread(QCoreApplication::instance()->thread());
}

QtSerialPortAdapter::~QtSerialPortAdapter()
{
    if (const auto old = current()) {
        old->forgetOwner();
        old->finish(true);
    }
}

QString QtSerialPortAdapter::portName() const
{
    return name;
}

SerialPort::QueryMode QtSerialPortAdapter::queryMode() const
{
    return mode;
}

/// Both open modes are the same here: bytes leave as soon as the line takes them.
bool QtSerialPortAdapter::open(OpenMode)
{
    if (isOpen())
        return false;
    end(false);
    const auto fresh = std::make_shared<PortSession>(this, mode == QueryMode::EventDriven);
    PortSettings atStart;
    {
        const std::lock_guard lock(mutex);
        session = fresh;
        atStart = *settings;
    }
    if (fresh->start(name, atStart))
        return true;
    fresh->finish(false);
    return false;
}

void QtSerialPortAdapter::cancelOpening()
{
    if (const auto line = current())
        line->cancel();
}

void QtSerialPortAdapter::close()
{
    end(true);
}

void QtSerialPortAdapter::closeWithoutFlush()
{
    end(false);
}

void QtSerialPortAdapter::end(bool flush)
{
    const auto old = current();
    if (!old)
        return;
    if (old->isOpen())
        Q_EMIT aboutToClose();
    old->finish(flush);
    old->read(old->bytesAvailable());
}

bool QtSerialPortAdapter::isOpen() const
{
    const auto line = current();
    return line && line->isOpen();
}

template<typename Change> void QtSerialPortAdapter::changeSettings(Change change)
{
    const std::lock_guard lock(mutex);
    change(*settings);
    if (session)
        session->apply(*settings);
}

void QtSerialPortAdapter::setBaudRate(int baud)
{
    changeSettings([baud](PortSettings& s) { s.baud = baud; });
}

void QtSerialPortAdapter::setDataBits(int bits)
{
    changeSettings([bits](PortSettings& s) { s.dataBits = static_cast<QSerialPort::DataBits>(bits); });
}

void QtSerialPortAdapter::setParity(Parity parity)
{
    changeSettings([parity](PortSettings& s) {
        switch (parity) {
        case Parity::None:
            s.parity = QSerialPort::NoParity;
            break;
        case Parity::Even:
            s.parity = QSerialPort::EvenParity;
            break;
        case Parity::Odd:
            s.parity = QSerialPort::OddParity;
            break;
        }
    });
}

void QtSerialPortAdapter::setStopBits(StopBits bits)
{
    changeSettings([bits](PortSettings& s) {
        s.stopBits = bits == StopBits::One ? QSerialPort::OneStop : QSerialPort::TwoStop;
    });
}

void QtSerialPortAdapter::setFlowControl(FlowControl flow)
{
    changeSettings([flow](PortSettings& s) {
        s.flow = flow == FlowControl::None ? QSerialPort::NoFlowControl : QSerialPort::HardwareControl;
    });
}

qint64 QtSerialPortAdapter::bytesAvailable() const
{
    const auto line = current();
    return line ? line->bytesAvailable() : 0;
}

QByteArray QtSerialPortAdapter::read(qint64 maxSize)
{
    const auto line = current();
    return line ? line->read(maxSize) : QByteArray();
}

qint64 QtSerialPortAdapter::write(const QByteArray& bytes)
{
    const auto line = current();
    return line ? line->write(bytes) : -1;
}

unsigned QtSerialPortAdapter::lineStatus() const
{
    const auto line = current();
    return line ? line->lineStatus() : 0;
}

QString QtSerialPortAdapter::errorString() const
{
    const auto line = current();
    return line ? line->errorString() : QString();
}

std::shared_ptr<PortSession> QtSerialPortAdapter::current() const
{
    const std::lock_guard lock(mutex);
    return session;
}

SerialPortFactory systemPortFactory()
{
    return [](const QString& name, SerialPort::QueryMode mode) -> std::unique_ptr<SerialPort> {
        return std::make_unique<QtSerialPortAdapter>(name, mode);
    };
}
