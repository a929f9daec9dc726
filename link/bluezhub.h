#pragma once

#include <QThread>

#include <chrono>
#include <functional>
#include <memory>

#include "link/portdiscovery.h"
#include "link/radiolink.h"

class BluezAnswers;
class BluezClient;

/// How long the hub waits for what.
struct BluezTimes
{
    std::chrono::milliseconds page{20000};  ///< one call of a device; calls over one adapter queue up
    std::chrono::milliseconds grace{500};   ///< from a connect's success to its link
    std::chrono::milliseconds retry{300};   ///< until a busy adapter is asked again
    std::chrono::milliseconds recent{2000}; ///< how long an ended link may still be about
    std::chrono::milliseconds life{5000};   ///< for the service to show that it lives
    std::chrono::milliseconds bus{3000};    ///< until a lost bus is looked for again
};

/// The program's one client of BlueZ, the system's Bluetooth service, on a thread of its own: nobody ever
/// waits for the bus or the service but for pairedDevices() and state(), which wait half a second at most.
/// May be used from any thread; must outlive the wishes for links.
class BluezHub : public std::enable_shared_from_this<BluezHub>
{
public:
    explicit BluezHub(const BluezTimes& times = {});
    ~BluezHub();

    /// The loggers among the paired devices; none without a service.
    QVector<possibleDevice> pairedDevices() const;
    BluetoothState state() const;
    /// As PortDiscovery::watch.
    void watch(QObject* context, const std::function<void()>& changed) const;
    /// As RadioDial, to the device of this address of 12 digits. What is returned keeps the hub.
    std::shared_ptr<void> dial(const QString& address, QObject* context,
                               const std::function<void(const RadioAnswer&)>& answer);

private:
    void askAndWait() const;

    std::shared_ptr<BluezAnswers> answers;
    BluezClient* client; // on the thread, and deleted there
    QThread thread;
};
