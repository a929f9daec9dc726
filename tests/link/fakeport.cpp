#include "tests/link/fakeport.h"

#include <QCoreApplication>
#include <QMutexLocker>
#include <QThread>

FakePort::FakePort(const QString& name, QueryMode mode)
    : name(name)
    , mode(mode)
{
    clock.start();
    if (QCoreApplication::instance())
        moveToThread(QCoreApplication::instance()->thread());
}

void FakePort::feed(const QByteArray& bytes)
{
    bool tell = false;
    {
        const QMutexLocker lock(&mutex);
        incoming.append(bytes);
        tell = opened && !stalled && mode == QueryMode::EventDriven;
    }
    if (tell)
        Q_EMIT readyRead();
}

void FakePort::setStalled(bool stall)
{
    {
        const QMutexLocker lock(&mutex);
        stalled = stall;
    }
    if (bytesAvailable() > 0)
        feed({});
}

void FakePort::setLines(unsigned newLines)
{
    const unsigned changed = newLines ^ lines;
    lines = newLines;
    if (isOpen() && (changed & LineDsr))
        Q_EMIT dsrChanged(newLines & LineDsr);
}

void FakePort::hangUp()
{
    if (!isOpen())
        return;
    {
        const QMutexLocker lock(&mutex);
        opened = false;
    }
    Q_EMIT dsrChanged(false);
}

void FakePort::failOpen(const QString& reason, PortFailure kind)
{
    const QMutexLocker lock(&mutex);
    openFailure = reason;
    kindOfFailure = kind;
}

QByteArray FakePort::written() const
{
    QByteArray all;
    for (const Write& one : writes)
        all.append(one.bytes);
    return all;
}

bool FakePort::open(OpenMode)
{
    while (calling && !cancelled)
        QThread::msleep(5);
    const QMutexLocker lock(&mutex);
    opened = openFailure.isEmpty() && !calling;
    return opened;
}

void FakePort::close()
{
    if (!isOpen())
        return;
    Q_EMIT aboutToClose();
    const QMutexLocker lock(&mutex);
    opened = false;
    incoming.clear();
}

bool FakePort::isOpen() const
{
    const QMutexLocker lock(&mutex);
    return opened;
}

qint64 FakePort::bytesAvailable() const
{
    const QMutexLocker lock(&mutex);
    return stalled ? 0 : incoming.size();
}

QByteArray FakePort::read(qint64 maxSize)
{
    const QMutexLocker lock(&mutex);
    const int size = stalled ? 0 : static_cast<int>(qMin<qint64>(maxSize, incoming.size()));
    const QByteArray bytes = incoming.left(size);
    incoming.remove(0, size);
    return bytes;
}

qint64 FakePort::write(const QByteArray& bytes)
{
    if (!isOpen())
        return -1;
    writes.append({clock.elapsed(), bytes});
    if (onWrite)
        onWrite(bytes);
    return bytes.size();
}

SerialPortFactory FakePorts::factory()
{
    return [this](const QString& name, SerialPort::QueryMode mode) -> std::unique_ptr<SerialPort> {
        auto port = std::make_unique<FakePort>(name, mode);
        const QMutexLocker lock(&mutex);
        port->failOpen(refusals.value(name));
        // One that does not open is deleted on the thread that tried, so the test never sees it.
        if (refusals.value(name).isEmpty())
            ports.insert(name, port.get());
        ++counts[name];
        return port;
    };
}

FakePort* FakePorts::port(const QString& name) const
{
    const QMutexLocker lock(&mutex);
    return ports.value(name);
}

void FakePorts::refuse(const QString& name, const QString& reason)
{
    const QMutexLocker lock(&mutex);
    refusals.insert(name, reason);
    if (FakePort* port = ports.value(name))
        port->failOpen(reason);
}

int FakePorts::made(const QString& name) const
{
    const QMutexLocker lock(&mutex);
    return counts.value(name);
}
