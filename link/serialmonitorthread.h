#pragma once

#include <QMutex>
#include <QString>
#include <QThread>
#include <QWaitCondition>

class SerialPort;

/// Watches a port that does not signal by itself: looks for bytes every few milliseconds and, about once a
/// second, whether the device file is still there. Idle (asleep) until set() and a port name were given.
class SerialMonitorThread : public QThread
{
    Q_OBJECT

public:
    /// The port is not owned. With `checkFile` a vanished device file counts as a lost logger.
    SerialMonitorThread(SerialPort* port, bool checkFile, QObject* parent = nullptr);
    /// Ends the thread and waits for it.
    ~SerialMonitorThread() override;

    /// Watches this port from now on, as soon as its name is known.
    void set(SerialPort* port, bool checkFile);
    /// A name under /dev or an absolute path.
    void setPortName(const QString& name);
    /// Stops watching and forgets the name; the thread stays for a later set(). When it returns the port is
    /// not looked at any more and may be deleted.
    void stop();

Q_SIGNALS:
    /// Bytes wait; sent at every look until they are read.
    void readyRead();
    /// The device file vanished. The watch is off then.
    void loggerDisconnected();

protected:
    void run() override;

private:
    enum class Found
    {
        Nothing,
        Bytes,
        FileGone
    };
    Found look();

    QMutex mutex; // guards what follows
    QWaitCondition changed;
    SerialPort* port;
    bool checkFile;
    bool terminate = false;
    bool running = true;
    QString deviceFile;
    int looks = 0;
};
