#include "protocol/tembrinprotocol.h"

#include "common/settings.h"
#include "link/myporttalker.h"
#include "link/portlistener.h"
#include "link/serialmonitorthread.h"
#include "protocol/packets.h"
#include "protocol/tembrindata.h"

#include <QThread>

namespace {

constexpr int baudRate = 115200;
constexpr int dataBits = 8;

/// The name under which the system opens a port: from COM10 on Windows wants its device prefix.
QString systemName(const QString& portName)
{
#ifdef Q_OS_WIN
    if (portName.mid(3).toInt() >= 10)
        return QStringLiteral("\\\\.\\") + portName;
#endif
    return portName;
}

void applySettings(SerialPort* port)
{
    port->setBaudRate(baudRate);
    port->setDataBits(dataBits);
    port->setParity(SerialPort::Parity::None);
    port->setStopBits(SerialPort::StopBits::One);
    port->setFlowControl(SerialPort::FlowControl::None);
}

/// Nobody hears it any more; it may be at work further up the stack, so it is deleted when that is over.
void discard(QObject* object)
{
    if (!object)
        return;
    object->disconnect();
    object->deleteLater();
}

} // namespace

int TembrinProtocol::open()
{
    // Nothing of this object is written here: the result goes to its own thread, in one piece.
    auto opened = std::make_shared<Opened>(openPort());
    if (QThread::currentThread() == thread())
        takeOpened(opened.get());
    else
        QMetaObject::invokeMethod(
            this, [this, opened] { takeOpened(opened.get()); }, Qt::QueuedConnection);
    return 0;
}

QString TembrinProtocol::storedPort() const
{
    return Settings::mainStore().value(loggerKey, QStringLiteral("COMxx")).toString();
}

void TembrinProtocol::takeStoredName()
{
    if (groupName.isEmpty())
        groupName = Settings::mainStore().value(groupKey, tr("Group %1").arg(index)).toString();
}

QString TembrinProtocol::storedAddress() const
{
    const QString address = Settings::mainStore().value(Settings::addressKey(index)).toString();
    return address.isEmpty() && discovery.boundAddress ? discovery.boundAddress(storedPort()) : address;
}

/// The system may have counted its ports anew, and a Bluetooth device needs none at all: what stays is its
/// address.
QString TembrinProtocol::presentPort(const QString& stored, const QVector<possibleDevice>& paired) const
{
    const QString address = storedAddress();
    for (const possibleDevice& device : paired) {
        if (!address.isEmpty() && device.address == address && !device.portName.isEmpty())
            return device.portName;
    }
    return stored;
}

TembrinProtocol::Opened TembrinProtocol::openPort()
{
    Opened opened;
    opened.devices = discovery.pairedDevices();
    opened.storedPort = storedPort();
    opened.portName = presentPort(opened.storedPort, opened.devices);
    opened.groupName = Settings::mainStore().value(groupKey, tr("Group %1").arg(index)).toString();

    const bool polling = portMode == Polling;
    opened.port = portFactory(systemName(opened.portName),
                              polling ? SerialPort::QueryMode::Polling : SerialPort::QueryMode::EventDriven);
    SerialPort* port = opened.port.get();
    if (!port) {
        opened.failure = PortFailure::NoPort;
        return opened;
    }
    if (!opening.open(port, polling ? SerialPort::OpenMode::ReadWriteUnbuffered
                                    : SerialPort::OpenMode::ReadWrite)) {
        qCInfo(lcProtocol).noquote() << "logger" << index << opened.portName
                                     << "open failed. reason=" << port->errorString();
    }
    applySettings(port);
    opened.failure = opening.isCancelled() ? PortFailure::Cancelled : port->failure();
    // The lines are the sole sign of the link; a port without one that is up goes at once, so that the next
    // attempt finds the device free.
    if (opened.failure == PortFailure::None && port->lineStatus() == 0)
        opened.failure = PortFailure::OutOfReach;
    if (opened.failure != PortFailure::None)
        opened.port.reset();
    else if (port->thread() == QThread::currentThread())
        port->moveToThread(thread());
    return opened;
}

void TembrinProtocol::takeOpened(Opened* opened)
{
    // The slot was given another port while this one was being opened: then it is no connection.
    if (opening.isCancelled() || (opened->port && opened->storedPort != storedPort())) {
        opened->port.reset();
        opened->failure = PortFailure::Cancelled;
    }
    opening.allow();
    failure = opened->failure;
    devices = opened->devices;
    portName = opened->portName;
    groupName = opened->groupName;
    isBT = true;
    if (opened->port) {
        endConnection(true);
        port = opened->port.release();
        port->setParent(this);
        isConnect = true;
        qCInfo(lcProtocol).noquote() << "logger" << index << "connected on" << portName;
        isBootLoader = false;
        usbTimer.reset();
        rememberAddress();
    }
    Q_EMIT openDone(index);
}

/// Of a device that was chosen by a port, so that it is found again by what it is.
void TembrinProtocol::rememberAddress()
{
    QSettings store = Settings::mainStore();
    const QString key = Settings::addressKey(index);
    if (!store.value(key).toString().isEmpty())
        return;
    for (const possibleDevice& device : devices) {
        if (device.portName == portName && !device.address.isEmpty())
            store.setValue(key, device.address);
    }
}

int TembrinProtocol::init()
{
    sendIDTries = 0;
    tembrinData->forgetConnection();
    tembrinData->setVorta(false);
    if (!port)
        return 0;
    if (listener)
        listener->end();
    discard(listener);
    discard(talker);
    listener = new PortListener(port, tembrinData, index, this);
    talker = new MyPortTalker(port, index, this);
    if (portMode == Polling)
        watchPort();
    else
        connectPort();
    connectListener();
    return 0;
}

void TembrinProtocol::connectPort()
{
    connect(port, &SerialPort::readyRead, listener, &PortListener::receive);
    connect(port, &SerialPort::aboutToClose, listener, &PortListener::reportClose);
    connect(port, &SerialPort::dsrChanged, listener, &PortListener::reportDsr);
    // Bytes, or the end of the line, that came before anybody listened.
    QMetaObject::invokeMethod(listener, &PortListener::receive, Qt::QueuedConnection);
}

void TembrinProtocol::watchPort()
{
    const bool isNew = !monitor;
    if (isNew)
        monitor = std::make_unique<SerialMonitorThread>(port, !isBT);
    else
        monitor->set(port, !isBT);
    disconnect(monitor.get(), nullptr, nullptr, nullptr);
    connect(monitor.get(), &SerialMonitorThread::readyRead, listener, &PortListener::receive);
    connect(monitor.get(), &SerialMonitorThread::loggerDisconnected, this, [this, present = connection] {
        if (present == connection)
            test();
    });
    monitor->setPortName(portName);
    if (isNew)
        monitor->start();
}

void TembrinProtocol::connectListener()
{
    connect(listener, &PortListener::tooSlowSignal, tembrinData, &TembrinData::tooSlowSignal);
    // A word of an earlier port may still be queued; it says nothing about this one.
    connect(port, &SerialPort::test, this, [this, present = connection](int code) {
        if (present == connection)
            test(code);
    });
    connect(port, &SerialPort::dsrChanged, this, [this, present = connection](bool up) {
        if (present == connection)
            BTChangeStatus(up);
    });
    if (!port->isOpen()) {
        // Gone between the opening and now, when nobody heard it yet.
        QTimer::singleShot(0, listener, [this, present = connection] {
            if (present == connection)
                BTChangeStatus(false);
        });
    }
}

void TembrinProtocol::release()
{
    endConnection(true);
    failure = PortFailure::None;
    Q_EMIT loggerDisconnected(index);
}

void TembrinProtocol::endConnection(bool flush)
{
    ++connection;
    isConnect = false;
    for (QTimer* timer : {&sendIDTimer, &statusTimer, &blTimer})
        timer->stop();
    stopCmdTimer();
    tembrinData->forgetConnection();
    if (monitor)
        monitor->stop();
    if (port && port->isOpen()) {
        if (flush)
            port->close();
        else
            port->closeWithoutFlush();
    }
    if (listener)
        listener->end();
    discard(listener);
    discard(talker);
    discard(port);
    listener = nullptr;
    talker = nullptr;
    port = nullptr;
}

void TembrinProtocol::loseConnection()
{
    endConnection(false);
    failure = PortFailure::Lost;
    Q_EMIT loggerDisconnected(index);
}

void TembrinProtocol::BTChangeStatus(bool tf)
{
    if (tf) {
        qCDebug(lcProtocol) << "logger" << index << "BT lineStatus = true?!";
        return;
    }
    qCInfo(lcProtocol) << "logger" << index << "BT was disconnected";
    loseConnection();
}

void TembrinProtocol::test(int code)
{
    qCInfo(lcProtocol) << "logger" << index << "port fault, code" << code;
    loseConnection();
}

void TembrinProtocol::test()
{
    qCInfo(lcProtocol) << "logger" << index << "the device of its port has gone";
    loseConnection();
}
