#pragma once

#include "link/portsession.h"

#include <QEventLoop>
#include <QObject>
#include <QSerialPort>
#include <QTimer>

/// The device itself, on the thread of its session.
class PortWorker : public QObject
{
public:
    PortWorker(PortSession* session, QEventLoop* loop);

    /// False with the reason in errorString().
    bool open(const QString& name, const PortSettings& settings);
    void apply(const PortSettings& settings);
    void writePending();
    /// Closes the device and ends the loop.
    void close(bool flush);
    QString errorString() const { return port.errorString(); }

private:
    void takeReceived();
    void onError(QSerialPort::SerialPortError error);
    void hangUp();
    void pollLines();
    bool readLines();
    void publishLines();
    void tellDsr(bool up);

    PortSession* session;
    QEventLoop* loop;
    QSerialPort port;
    QTimer linePoll;
    unsigned lines = 0;
    bool hasLines = true;
    bool readingLines = false;
    bool lost = false;
    bool endTold = false; // dsrChanged(false) was the last word
};
