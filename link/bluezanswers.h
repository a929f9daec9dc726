#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "link/portdiscovery.h"

/// What is known of paired devices and adapters at this moment, for all threads.
class BluezAnswers
{
public:
    enum class Stage
    {
        Asking, // the bus or the service owes us an answer
        NoBus,
        Known
    };

    /// True if the devices or the state are others than before.
    bool set(Stage newStage, const QVector<possibleDevice>& newDevices, const BluetoothState& newState);
    /// True if there was no bus, which is then Asking again.
    bool askAgain();
    /// Waits until nothing is owed, for a while.
    void wait(std::chrono::milliseconds patience);
    QVector<possibleDevice> devices() const;
    BluetoothState state() const;

private:
    mutable std::mutex mutex;
    std::condition_variable changed;
    Stage stage = Stage::NoBus;
    QVector<possibleDevice> loggers;
    BluetoothState bluetooth{PortFailure::NoService, {}};
};
