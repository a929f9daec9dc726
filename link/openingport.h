#pragma once

#include <mutex>

#include "link/serialport.h"

/// The port that one thread is opening, so that another can end its wait.
class OpeningPort
{
public:
    /// Opens `port`. False without trying if cancel() came first.
    bool open(SerialPort* port, SerialPort::OpenMode mode);
    /// Ends the open() under way; one that has not begun fails at once. Stays so until allow().
    void cancel();
    void allow();
    bool isCancelled() const;

private:
    mutable std::mutex mutex;
    SerialPort* port = nullptr;
    bool cancelled = false;
};
