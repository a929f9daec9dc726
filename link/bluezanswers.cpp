#include "link/bluezanswers.h"

#include <algorithm>

bool BluezAnswers::set(Stage newStage, const QVector<possibleDevice>& newDevices,
                       const BluetoothState& newState)
{
    const std::lock_guard lock(mutex);
    const bool isSame = bluetooth.hindrance == newState.hindrance &&
                        bluetooth.adaptersOf == newState.adaptersOf &&
                        std::equal(loggers.cbegin(), loggers.cend(), newDevices.cbegin(), newDevices.cend(),
                                   [](const possibleDevice& a, const possibleDevice& b) {
                                       return a.address == b.address && a.name == b.name;
                                   });
    stage = newStage;
    loggers = newDevices;
    bluetooth = newState;
    changed.notify_all();
    return !isSame;
}

bool BluezAnswers::askAgain()
{
    const std::lock_guard lock(mutex);
    if (stage != Stage::NoBus)
        return false;
    stage = Stage::Asking;
    return true;
}

void BluezAnswers::wait(std::chrono::milliseconds patience)
{
    std::unique_lock lock(mutex);
    changed.wait_for(lock, patience, [this] { return stage != Stage::Asking; });
}

QVector<possibleDevice> BluezAnswers::devices() const
{
    const std::lock_guard lock(mutex);
    return loggers;
}

BluetoothState BluezAnswers::state() const
{
    const std::lock_guard lock(mutex);
    return bluetooth;
}
