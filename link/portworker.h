#pragma once

#include <QObject>

class PortSession;
struct PortSettings;

/// The device of one session, made, used and deleted on the session's thread, whose event loop runs from
/// open() until the session ends. What happens to it is told to the session by opened() and end().
class PortWorker : public QObject
{
public:
    explicit PortWorker(PortSession* session)
        : session(session)
    {
    }

    /// Begins to open the device; sooner or later the session's opened() or end() is called, unless close()
    /// comes before.
    virtual void open(const PortSettings& settings) = 0;
    virtual void apply(const PortSettings& settings) = 0;
    /// Takes what the session has to write.
    virtual void writePending() = 0;
    /// Closes the device, at any stage, without waiting for anything; with `flush` what it takes at once is
    /// written out first. Nothing is told to the session any more. May be called again.
    virtual void close(bool flush) = 0;

protected:
    PortSession* const session;
};
