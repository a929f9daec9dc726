#include "link/serialmonitorthread.h"

#include "link/serialport.h"

#include <QFileInfo>
#include <QMutexLocker>

namespace {
constexpr unsigned long lookInterval = 5; // ms, well below a packet timer
constexpr int looksPerFileCheck = 200;    // looking at the device file is a system call
} // namespace

SerialMonitorThread::SerialMonitorThread(SerialPort* port, bool checkFile, QObject* parent)
    : QThread(parent)
    , port(port)
    , checkFile(checkFile)
{
}

SerialMonitorThread::~SerialMonitorThread()
{
    {
        const QMutexLocker lock(&mutex);
        terminate = true;
        changed.wakeAll();
    }
    wait();
}

void SerialMonitorThread::set(SerialPort* newPort, bool newCheckFile)
{
    const QMutexLocker lock(&mutex);
    port = newPort;
    checkFile = newCheckFile;
    terminate = false;
    running = true;
    changed.wakeAll();
}

void SerialMonitorThread::setPortName(const QString& name)
{
    const QMutexLocker lock(&mutex);
    deviceFile = name.startsWith(QLatin1Char('/')) ? name : QStringLiteral("/dev/") + name;
    changed.wakeAll();
}

void SerialMonitorThread::stop()
{
    const QMutexLocker lock(&mutex);
    running = false;
    deviceFile.clear();
    port = nullptr;
}

void SerialMonitorThread::run()
{
    QMutexLocker lock(&mutex);
    while (!terminate) {
        if (!running || deviceFile.isEmpty() || !port) {
            changed.wait(&mutex);
            continue;
        }
        const Found found = look();
        lock.unlock(); // a receiver may call back
        if (found == Found::FileGone)
            Q_EMIT loggerDisconnected();
        else if (found == Found::Bytes)
            Q_EMIT readyRead();
        lock.relock();
        if (!terminate)
            changed.wait(&mutex, lookInterval);
    }
}

SerialMonitorThread::Found SerialMonitorThread::look()
{
    looks = (looks + 1) % looksPerFileCheck;
    if (looks == 0 && checkFile && !QFileInfo::exists(deviceFile)) {
        running = false;
        return Found::FileGone;
    }
    return port->bytesAvailable() > 0 ? Found::Bytes : Found::Nothing;
}
