#pragma once

#include "link/serialport.h"

#include <QByteArray>
#include <QSerialPort>
#include <QString>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

class PortWorker;

struct PortSettings
{
    qint32 baud = QSerialPort::Baud115200;
    QSerialPort::DataBits dataBits = QSerialPort::Data8;
    QSerialPort::Parity parity = QSerialPort::NoParity;
    QSerialPort::StopBits stopBits = QSerialPort::OneStop;
    QSerialPort::FlowControl flow = QSerialPort::NoFlowControl;
};

/// One open line and its thread, from open to close; a port that is opened again gets a new one. Owned
/// together by port and thread, so that a thread stuck in the system can be left behind and ends by itself.
/// Everything public may be called from any thread but the session's own.
class PortSession : public std::enable_shared_from_this<PortSession>
{
public:
    /// The signals of `owner` are sent from the session's thread, readyRead() only with `signalBytes`.
    PortSession(SerialPort* owner, bool signalBytes);

    /// Starts the thread and waits until the device is open (true), has failed, or takes too long.
    bool start(const QString& name, const PortSettings& settings);
    /// Ends the wait of start(), which gives false; the device may still be busy. Nothing once that is over.
    void cancel();
    /// Ends the session: after writing out what goes at once, with `flush`. Waits for the thread a moment at
    /// most. Must be called before the owner lets go.
    void finish(bool flush);
    /// No signal is sent for the owner after this.
    void forgetOwner();

    void apply(const PortSettings& settings);
    qint64 write(const QByteArray& bytes);
    QByteArray read(qint64 maxSize);
    qint64 bytesAvailable() const;
    unsigned lineStatus() const;
    bool isOpen() const;
    QString errorString() const;

private:
    friend class PortWorker;

    enum class Stage
    {
        Opening,
        Open,
        Over
    };

    void run(const QString& name, const PortSettings& settings);
    void onWorker(const std::function<void(PortWorker*)>& call); // with `mutex` held
    void tellOwner(const std::function<void(SerialPort*)>& tell);
    void addReceived(const QByteArray& bytes);
    void tellAgain();

    mutable std::mutex mutex; // guards what follows, up to the owner
    std::condition_variable changed;
    Stage stage = Stage::Opening;
    bool ended = false;
    std::thread thread;
    PortWorker* worker = nullptr;
    QByteArray received;
    int readPosition = 0;
    bool told = false; // readyRead() was sent and nothing read since
    QByteArray toWrite;
    unsigned lines = 0;
    QString error;

    std::mutex ownerMutex; // held while a signal is sent
    SerialPort* owner;
    const bool signalBytes;
};
