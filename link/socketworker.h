#pragma once

#include <QByteArray>
#include <QScopedPointer>
#include <QSocketNotifier>
#include <QTimer>

#include "link/portsession.h"
#include "link/portworker.h"
#include "link/radiolink.h"

/// A radio link as a port. It is open when the link stands, with all lines up, and lost when the stream ends.
class SocketWorker : public PortWorker
{
public:
    SocketWorker(PortSession* session, RadioDial dial);
    static PortKind kind(const RadioDial& dial);

    void open(const PortSettings& settings) override;
    void apply(const PortSettings&) override {} // the radio has no speed to choose
    void writePending() override;
    void close(bool flush) override;

private:
    void take(const RadioAnswer& answer);
    void takeReceived();
    void send();
    void hangUp(const QString& text);
    void drop();

    const RadioDial dial;
    std::shared_ptr<void> wish;
    std::shared_ptr<RadioLink> link;
    QScopedPointer<QSocketNotifier> readable;
    QScopedPointer<QSocketNotifier> writable;
    QTimer reminder;
    QByteArray unsent;
    bool closed = false;
};
