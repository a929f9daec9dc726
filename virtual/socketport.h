#pragma once

#include "virtual/virtualport.h"

/// A listening UNIX stream socket, to which the fake Bluetooth service leads one partner at a time.
class SocketPort : public VirtualPort
{
    Q_OBJECT

public:
    explicit SocketPort(const QString& path, QObject* parent = nullptr);
    ~SocketPort() override;

    bool open(QString* error) override;
    void close() override;
    bool isOpen() const override { return listener >= 0; }

protected:
    void setPartner(bool isThere) override;
    qint64 put(const char* bytes, qint64 count) override;

private:
    void accept();

    int listener = -1;
    std::unique_ptr<QSocketNotifier> callNotifier;
};
