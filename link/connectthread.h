#pragma once

#include <QThread>

/// What a ConnectThread runs: an opening that may block for seconds.
class PortOpener
{
public:
    virtual ~PortOpener() = default;

    /// Opens a port and reports by its own means; nobody uses the result.
    virtual int open() = 0;
};

/// One attempt to open one logger's port off the GUI thread. Made on the GUI thread, started, and forgotten:
/// it deletes itself when it is finished. The opener must outlive it.
class ConnectThread : public QThread
{
    Q_OBJECT

public:
    explicit ConnectThread(PortOpener* opener, QObject* parent = nullptr);

protected:
    void run() override;

private:
    PortOpener* opener;
};
