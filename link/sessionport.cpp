#include "link/sessionport.h"

#include <QCoreApplication>

#include <utility>

SessionPort::SessionPort(const QString& portName, QueryMode mode, PortKind portKind)
    : name(portName)
    , mode(mode)
    , kind(std::move(portKind))
{
    // Made on a thread that ends after the opening; deleteLater() needs one that runs on.
    if (QCoreApplication::instance())
        moveToThread(QCoreApplication::instance()->thread());
}

SessionPort::~SessionPort()
{
    if (const auto old = current()) {
        old->forgetOwner();
        old->finish(true);
    }
}

QString SessionPort::portName() const
{
    return name;
}

SerialPort::QueryMode SessionPort::queryMode() const
{
    return mode;
}

/// Both open modes are the same here: bytes leave as soon as the line takes them.
bool SessionPort::open(OpenMode)
{
    if (isOpen())
        return false;
    end(false);
    const auto fresh = std::make_shared<PortSession>(this, mode == QueryMode::EventDriven);
    PortSettings atStart;
    {
        const std::lock_guard lock(mutex);
        session = fresh;
        atStart = settings;
    }
    if (fresh->start(kind, atStart))
        return true;
    fresh->finish(false);
    return false;
}

void SessionPort::cancelOpening()
{
    if (const auto line = current())
        line->cancel();
}

void SessionPort::close()
{
    end(true);
}

void SessionPort::closeWithoutFlush()
{
    end(false);
}

void SessionPort::end(bool flush)
{
    const auto old = current();
    if (!old)
        return;
    if (old->isOpen())
        Q_EMIT aboutToClose();
    old->finish(flush);
    old->read(old->bytesAvailable());
}

bool SessionPort::isOpen() const
{
    const auto line = current();
    return line && line->isOpen();
}

template<typename Change> void SessionPort::changeSettings(Change change)
{
    const std::lock_guard lock(mutex);
    change(settings);
    if (session)
        session->apply(settings);
}

void SessionPort::setBaudRate(int baud)
{
    changeSettings([baud](PortSettings& s) { s.baud = baud; });
}

void SessionPort::setDataBits(int bits)
{
    changeSettings([bits](PortSettings& s) { s.dataBits = static_cast<QSerialPort::DataBits>(bits); });
}

void SessionPort::setParity(Parity parity)
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

void SessionPort::setStopBits(StopBits bits)
{
    changeSettings([bits](PortSettings& s) {
        s.stopBits = bits == StopBits::One ? QSerialPort::OneStop : QSerialPort::TwoStop;
    });
}

void SessionPort::setFlowControl(FlowControl flow)
{
    changeSettings([flow](PortSettings& s) {
        s.flow = flow == FlowControl::None ? QSerialPort::NoFlowControl : QSerialPort::HardwareControl;
    });
}

qint64 SessionPort::bytesAvailable() const
{
    const auto line = current();
    return line ? line->bytesAvailable() : 0;
}

QByteArray SessionPort::read(qint64 maxSize)
{
    const auto line = current();
    return line ? line->read(maxSize) : QByteArray();
}

qint64 SessionPort::write(const QByteArray& bytes)
{
    const auto line = current();
    return line ? line->write(bytes) : -1;
}

unsigned SessionPort::lineStatus() const
{
    const auto line = current();
    return line ? line->lineStatus() : 0;
}

QString SessionPort::errorString() const
{
    const auto line = current();
    return line ? line->errorString() : QString();
}

PortFailure SessionPort::failure() const
{
    const auto line = current();
    return line ? line->failure() : PortFailure::None;
}

std::shared_ptr<PortSession> SessionPort::current() const
{
    const std::lock_guard lock(mutex);
    return session;
}
