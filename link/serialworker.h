#pragma once

#include "link/portsession.h"
#include "link/portworker.h"

#include <QSerialPort>
#include <QTimer>

/// A serial port of the system, a terminal. Any name under /dev or an absolute path is one, a pseudo terminal
/// or a link to one as well.
class SerialWorker : public PortWorker
{
public:
    SerialWorker(PortSession* session, const QString& name);
    static PortKind kind(const QString& name);

    void open(const PortSettings& settings) override;
    void apply(const PortSettings& settings) override;
    void writePending() override;
    void close(bool flush) override;

private:
    void takeReceived();
    void onError(QSerialPort::SerialPortError error);
    void hangUp();
    void pollLines();
    bool readLines();
    void tellDsr(bool up);

    QSerialPort port;
    QTimer linePoll;
    unsigned lines = 0;
    bool hasLines = true;
    bool readingLines = false;
    bool lost = false;
    bool endTold = false; // dsrChanged(false) was the last word
};
