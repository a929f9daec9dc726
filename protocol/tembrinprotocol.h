#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include <memory>
#include <optional>

#include "link/commandtype.h"
#include "link/connectthread.h"
#include "link/openingport.h"
#include "link/portdiscovery.h"
#include "link/possibledevice.h"
#include "link/serialport.h"
#include "protocol/loggersettings.h"
#include "sensors/units.h"

class MyPortTalker;
class PortListener;
class SerialMonitorThread;
class TembrinData;

/// The session with the logger of one slot: its port, what goes out and when. All but open() runs on the GUI
/// thread. A command is written and forgotten; what came of it is told by signals of `tembrinData`. Sends to
/// a logger that is not connected do nothing.
class TembrinProtocol : public QObject, public PortOpener
{
    Q_OBJECT

public:
    enum PortMode
    {
        Polling = 0,
        EventDriven = 1
    };

    explicit TembrinProtocol(int index, const Units& units = {}, QObject* parent = nullptr);
    ~TembrinProtocol() override;

    const int index;                ///< logger slot, 0 to 7
    const Units units;              ///< in which the program shows what it measures
    TembrinData* const tembrinData; ///< child of this object

    // --- The connection ----------------------------------------------------------------------------------
    QString portName;
    int portMode = EventDriven;
    bool isConnect = false; ///< the port is open and its lines are up
    bool isBT = false;
    PortFailure failure = PortFailure::None; ///< why the last open() failed, or how the connection ended
    QString loggerKey;                       ///< settings keys of this slot
    QString groupKey;
    QString groupName;                ///< shown to the user, read by open()
    QVector<possibleDevice> devices;  ///< paired loggers, as the last discovery found them
    SerialPort* port = nullptr;       ///< child of this object while a connection lasts, as are the next two
    PortListener* listener = nullptr; ///< made by init()
    MyPortTalker* talker = nullptr;   ///< made by init()

    // --- What the user chose for this slot, and the logger needn't know ------------------------------------
    bool photogateEnabled = false; ///< a card through a gate tells speeds
    double photoObjW = 0.05;       ///< width of the card, m
    bool Vorta_drawOnline = true;  ///< a Vorta run is drawn while it goes on

    // --- The firmware loader -----------------------------------------------------------------------------
    bool isBootLoader = false; ///< the loader answered, not the firmware
    bool ignoreOneBootLoaderReady = false;
    int blVersion = 0; ///< version of the loader, 0 if none was seen

    /// Replaces the maker of ports; before the first open().
    void setPortFactory(SerialPortFactory factory) { portFactory = std::move(factory); }
    /// Replaces the way of finding ports that may lead to loggers; before the first open().
    void setPortDiscovery(PortDiscovery way) { discovery = std::move(way); }

    /// Looks for the paired loggers of this computer, half a second at most, and gives them.
    QVector<possibleDevice> getPairedDevices();
    /// The loggers on USB converters that are not among `devices`, each named after its port.
    QVector<possibleDevice> getUSBDevices();

    /// What is known of the radio as a whole; nothing hinders where there is no service to ask.
    BluetoothState bluetooth() const
    {
        return discovery.bluetooth ? discovery.bluetooth() : BluetoothState();
    }
    /// Calls `changed` on the thread of `context` each time the two above may have come to another answer.
    void watchPorts(QObject* context, const std::function<void()>& changed) const;

    /// Opens the port that the settings name for this slot, or the one that leads to the device whose address
    /// they hold. Blocks, so it runs on a ConnectThread; whatever it found is taken over on this object's
    /// thread, where openDone() follows in every case.
    int open() override;
    /// Ends the open() that is under way on its thread, which then fails as Cancelled; openDone() follows.
    void cancelOpening() { opening.cancel(); }
    /// Wires a freshly opened port to the listener, the talker and `tembrinData`. 0 in every case.
    int init();
    /// Closes the port and lets go of it. Always ends in loggerDisconnected().
    void release();

    /// The address of the Bluetooth device that the settings choose for this slot, also where they name a
    /// port that the system has bound to it; empty for any other.
    QString storedAddress() const;
    /// The name of the paired device whose port is this slot's, empty if there is none.
    QString loggerName() const;
    QString getGroupName() const { return groupName; }
    void setGroupName(const QString& name) { groupName = name; }
    /// Until a connection has brought a name, that of the settings.
    void takeStoredName();

    // --- What is wanted of the logger --------------------------------------------------------------------
    /// What a setup or a configuration sends: the wanted parts that the logger has not confirmed yet, and for
    /// the rest what it reported.
    LoggerSettings wanted() const;
    /// Wants mask, rate, samples, sockets, trigger, range and the Vorta parts of `settings`. Nothing is sent.
    /// A mask is of the sensors of one list: another list of sensors ends the want.
    void wantSetup(const LoggerSettings& settings);
    /// Wants the configuration flags and the language of `settings`. Nothing is sent.
    void wantConfiguration(const LoggerSettings& settings);
    /// No wanted setup is open: the logger answered one with this mask, rate, number of samples and sockets.
    /// For a Vorta logger nothing is ever open: the wanted setup lasts, and each start of a run carries it.
    bool isSetupConfirmed() const;
    bool isConfigurationConfirmed() const { return !wantedConfiguration; }
    /// The logger takes the choice in its own way: what it reports holds from now on.
    void settleForReported()
    {
        wantedSetup.reset();
        wantedConfiguration.reset();
    }

    /// The main way of sending: a setup, a configuration and the start of a Vorta logger carry wanted().
    /// Translates or drops the command for a Vorta logger.
    void sendCommand(commandType cmd);
    /// With one argument and without translation.
    void sendCommand(commandType cmd, short argument);
    /// A long command, once.
    void sendCommand(commandType cmd, const QByteArray& data);
    /// A long command, again every `ms` milliseconds until stopCmdTimer(), at most six times in all.
    void sendCommandWithTimeout(commandType cmd, const QByteArray& data, int ms);
    void sendVortaCommand(commandType cmd);
    void sendBLCommand(commandType cmd);
    /// Repeated once after a second unless stopBLTimer() comes first.
    void sendBLCommand(commandType cmd, int address);
    void sendBLCommand(commandType cmd, int address, const QByteArray& data);
    void stopBLTimer();
    void stopCmdTimer();

public Q_SLOTS:
    void sendNextPacket();
    void requestLoggerType();
    void detectedVorta();
    void stopTransmission();
    void deleteFromLogger(bool all);
    void sendIDTimeout();
    void BLTimeout();
    void cmdTimeout();
    /// A fault on the port, or its device is gone.
    void test(int code);
    void test();
    void BTChangeStatus(bool tf);
    /// Looks for the paired loggers and publishes their names.
    void requestForBTList();
    /// Lets go of the port and takes that of paired logger `i` instead; below 0 of none.
    void gotBTMenu(int i);
    /// Looks for a logger on a USB converter, unless the present one is busy.
    void checkUSB();

Q_SIGNALS:
    void openDone(int index);
    void loggerDisconnected(int index);
    void foundUSB();
    void tryBT();
    void publishBTList(QStringList list, bool isBT);
    /// The driver of a USB converter is one that is known to fail.
    void wrongDriver();

private:
    /// What open() brings back from its thread.
    struct Opened
    {
        QVector<possibleDevice> devices;
        QString storedPort; ///< as the settings name it
        QString portName;   ///< where it is at present
        QString groupName;
        PortFailure failure = PortFailure::None;
        std::unique_ptr<SerialPort> port; ///< null unless its lines are up
    };

    Opened openPort();
    void takeOpened(Opened* opened);
    QString storedPort() const;
    QString presentPort(const QString& stored, const QVector<possibleDevice>& paired) const;
    void rememberAddress();
    UsbScan scanUSB();
    void connectPort();
    void watchPort();
    void connectListener();
    /// Closes the port and lets go of it and of what stands on it.
    void endConnection(bool flush);
    void loseConnection();
    void repeatStatusQuestion();
    QVector<short> loggingSetup() const;
    QVector<short> configuration() const;
    void noteAnswer(commandType cmd);
    void settle(std::optional<LoggerSettings>* want, bool isConfirmed, const char* what);
    bool isReportedAs(const LoggerSettings& setup) const;
    void noteNewSensors();
    QVector<int> fixedSensors() const;

    std::optional<LoggerSettings> wantedSetup;
    std::optional<LoggerSettings> wantedConfiguration;
    QVector<int> wantedSensors; ///< the list that the wanted mask speaks of

    SerialPortFactory portFactory;
    PortDiscovery discovery;
    std::unique_ptr<QTimer> usbTimer;             ///< asks for checkUSB() while it is there; not made so far
    std::unique_ptr<SerialMonitorThread> monitor; ///< polling mode only, made at first need
    OpeningPort opening;
    int connection = 0; ///< counts the ports, so that what an old one still has to say is known as such
    QTimer sendIDTimer;
    QTimer statusTimer; ///< from the question for the type until it is known
    QTimer blTimer;
    QTimer cmdTimer;
    int sendIDTries = 0;
    int cmdTries = 0;
    commandType lastCommand = CMD_GET_TEMBRIN_STATUS;
    int lastAddress = 0;
    QByteArray lastData;
    int lastTimeout = 0;
};
