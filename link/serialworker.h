#pragma once

#include "link/portsession.h"
#include "link/portworker.h"

#include <QDeadlineTimer>
#include <QSerialPort>
#include <QTimer>

/// A serial port of the system, a terminal. Any name under /dev or an absolute path is one, a pseudo terminal
/// or a link to one as well. It counts as open when one of its modem lines is up, or at once if it has none,
/// and its link ends when DSR falls.
class SerialWorker : public PortWorker
{
public:
    /// The lines of a radio link come up when the device has answered; they get `linePatience` for that.
    SerialWorker(PortSession* session, const QString& name, std::chrono::milliseconds linePatience);
    static PortKind kind(const QString& name,
                         std::chrono::milliseconds linePatience = std::chrono::seconds(30));

    void open(const PortSettings& settings) override;
    void apply(const PortSettings& settings) override;
    void writePending() override;
    void close(bool flush) override;

private:
    enum class Lines
    {
        Known,
        Unsupported, ///< the port has none
        Failed
    };

    void takeReceived();
    void onError(QSerialPort::SerialPortError error);
    void lookAtLines();
    void awaitLine();
    void pollLines();
    Lines readLines();
    bool end(const QString& text);
    void letBytesLeave();
    void tellDsr(bool up);

    QSerialPort port;
    QTimer linePoll;
    const std::chrono::milliseconds linePatience;
    QDeadlineTimer lineDeadline;
    unsigned lines = 0;
    bool isAwaited = false; // no line has been up yet
    bool hasLines = true;
    bool readingLines = false;
    bool lost = false;
};
