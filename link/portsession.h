#pragma once

#include "link/serialport.h"

#include <QByteArray>
#include <QSerialPort>
#include <QString>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

class PortSession;
class PortWorker;
class QEventLoop;

struct PortSettings
{
    qint32 baud = QSerialPort::Baud115200;
    QSerialPort::DataBits dataBits = QSerialPort::Data8;
    QSerialPort::Parity parity = QSerialPort::NoParity;
    QSerialPort::StopBits stopBits = QSerialPort::OneStop;
    QSerialPort::FlowControl flow = QSerialPort::NoFlowControl;
};

/// What a port opens: how its device is made, on the thread of the session that it is handed, and how long an
/// opening may take.
struct PortKind
{
    std::function<std::unique_ptr<PortWorker>(PortSession* session)> makeWorker;
    std::chrono::milliseconds openPatience;
};

/// One open line and its thread, from open to close; a port that is opened again gets a new one. Owned
/// together by port and thread, so that a thread stuck in the system can be left behind and ends by itself.
class PortSession : public std::enable_shared_from_this<PortSession>
{
public:
    /// The signals of `owner` are sent from the session's thread, readyRead() only with `signalBytes`.
    PortSession(SerialPort* owner, bool signalBytes);

    // The port's side, from any thread but the session's own.
    /// Starts the thread and waits until the device is open (true), has failed, takes too long, or the
    /// opening is cancelled.
    bool start(const PortKind& kind, const PortSettings& settings);
    /// Ends the wait of start(), which gives false; the device may still be busy. Nothing once that is over.
    void cancel();
    /// Ends the session, at any stage: after writing out what goes at once, with `flush`. Waits for the
    /// thread a moment at most. Must be called before the owner lets go.
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
    PortFailure failure() const;

    // The worker's side, on the session's thread.
    /// The device is open, with these lines up.
    void opened(unsigned lines);
    /// The device could not be opened, or its link has ended: the session is over and its thread leaves.
    /// False if it was over before.
    bool end(PortFailure why, const QString& text);
    void setLines(unsigned lines);
    void addReceived(const QByteArray& bytes);
    /// Bytes may have come before anybody listened.
    void tellAgain();
    QByteArray takeToWrite();
    void tellOwner(const std::function<void(SerialPort*)>& tell);

private:
    enum class Stage
    {
        Opening,
        Open,
        Over
    };

    void run(const PortKind& kind, const PortSettings& settings);
    void onWorker(const std::function<void(PortWorker*)>& call); // with `mutex` held
    void endWith(PortFailure why, const QString& text);          // with `mutex` held

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
    PortFailure reason = PortFailure::None;
    QString error;

    QEventLoop* loop = nullptr; // of the session's thread, and used there only
    std::mutex ownerMutex;      // held while a signal is sent
    SerialPort* owner;
    const bool signalBytes;
};
