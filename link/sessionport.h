#pragma once

#include "link/portsession.h"
#include "link/serialport.h"

#include <memory>
#include <mutex>

/// A port of the system, of any kind. The device lives on a thread of its own from open() to close(), so that
/// bytes are taken off the line however busy the reader is, and a stalled line holds up nobody.
///
/// The object belongs to the application's thread whichever thread makes it. A line can die before anybody
/// has connected to dsrChanged(), so look at isOpen() once after connecting.
class SessionPort : public SerialPort
{
    Q_OBJECT

public:
    SessionPort(const QString& portName, QueryMode mode, PortKind kind);
    ~SessionPort() override;

    QString portName() const override;
    QueryMode queryMode() const override;
    /// Gives up after a while on a device that does not answer; close() from another thread ends the wait.
    bool open(OpenMode mode) override;
    void cancelOpening() override;
    void close() override;
    void closeWithoutFlush() override;
    bool isOpen() const override;
    void setBaudRate(int baud) override;
    void setDataBits(int bits) override;
    void setParity(Parity parity) override;
    void setStopBits(StopBits bits) override;
    void setFlowControl(FlowControl flow) override;
    qint64 bytesAvailable() const override;
    QByteArray read(qint64 maxSize) override;
    qint64 write(const QByteArray& bytes) override;
    unsigned lineStatus() const override;
    QString errorString() const override;
    PortFailure failure() const override;

private:
    std::shared_ptr<PortSession> current() const;
    void end(bool flush);
    template<typename Change> void changeSettings(Change change);

    const QString name;
    const QueryMode mode;
    const PortKind kind;
    PortSettings settings;
    mutable std::mutex mutex; // guards the settings and the session
    std::shared_ptr<PortSession> session;
};
