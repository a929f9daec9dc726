#pragma once

#include <QDateTime>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include "link/commandtype.h"
#include "link/packetidentifier.h"
#include "protocol/expinfo.h"
#include "protocol/loggermodels.h"
#include "protocol/loggersettings.h"
#include "protocol/ratetables.h"
#include "protocol/rundecoder.h"
#include "protocol/storeddownload.h"
#include "protocol/vortarun.h"
#include "sensors/sensor.h"

namespace Packets {
struct Info;
struct Status;
struct StoredData;
struct VortaStatus;
} // namespace Packets

/// Reasons of runTerminated(int, int).
enum terminateReason
{
    TERMINATE_BATTERY = 2,
    TERMINATE_MEMORY = 3,
    TERMINATE_MAXEXP = 4,
    TERMINATE_NOSENS = 5
};

/// Results of calibrationResult(int).
enum calibrationReason
{
    CALIBRATION_OK = 1,
    CALIBRATION_ALLREADY = 2,
    CALIBRATION_FAR = 3,
    CALIBRATION_RANGE = 4,
    CALIBRATION_MODE = 5
};

/// The program's picture of one logger: what it is, which sensors it has, what it is set to do, and what its
/// last packets said. Everything runs on the GUI thread; packet slots use the bytes only during the call and
/// ignore a packet that is too short.
class TembrinData : public QObject, public PacketIdentifier
{
    Q_OBJECT

public:
    using SampleBlock = QVector<QVector<double>>;
    using StoredRun = ::StoredRun;

    explicit TembrinData(int index, const Units& units = {}, QObject* parent = nullptr);
    ~TembrinData() override;

    const int index; ///< logger slot, 0 to 7

    // --- Names shown to the user -------------------------------------------------------------------------
    const QStringList RateNames;      ///< by index into Rates
    const QStringList VortaRateNames; ///< by index into VortaRates; entry 0 is empty
    const QStringList TrigTypeNames;
    /// Numbers of samples; entry 3 depends on the logger type.
    QStringList samplesNames() const;
    static constexpr const auto& Rates = RateTables::seconds;           ///< seconds per sample
    static constexpr const auto& VortaRates = RateTables::vortaSeconds; ///< the same from 1 to 5

    // --- What the logger is set to do --------------------------------------------------------------------
    /// As its packets said; what is wanted of it stands in TembrinProtocol.
    const LoggerSettings& reported() const { return settings; }
    /// Seconds between two samples of a run as reported, 0 at the rate Manual; of a Vorta logger as it was
    /// started.
    double samplePeriod() const;
    bool isIdle() const { return identity.runState == 0; }
    /// A run of this logger is stored, and not streamed, at the rate that it reported.
    bool isFastRate() const { return !vorta && settings.rate >= RateTables::firstFast; }
    int numExperiments() const { return identity.stored; }
    /// UTC, of the last good status.
    const QDateTime& loggerDateTime() const { return identity.dateTime; }

    // --- What it is (tembrindata.cpp, tembrindata_status.cpp) --------------------------------------------
    /// Of the last good status, LOGGER_BIRCH before any, 0 between a sensor list and the next status.
    int tembrinType() const { return identity.type; }
    bool isTypeKnown() const { return identity.type != 0; }
    bool isVorta() const { return vorta; }
    void setVorta(bool tf) { vorta = tf; }
    /// A status, and a sensor list, has come since the last loss.
    bool isLoggerRecognized() const { return loggerRecognized; }
    void setLoggerRecognized(bool tf) { loggerRecognized = tf; }
    void setGotSensorList(bool tf) { gotSensorList = tf; }
    /// The port has gone or is a new one: what was held of the stream and of an open download is void, and
    /// the logger is to be recognised anew.
    void forgetConnection();

    /// A rate code from the wire to an index into Rates, by the present type and firmware.
    short fixedRate(short code) const;
    /// The inverse of fixedRate().
    short fixedRateDecrease(short rate) const;
    /// True when this logger offers the rate.
    bool isIncludedInRateMenu(short rate) const;
    /// The model, its versions, in one translated line.
    QString versionLine() const;
    /// The translated name of a model; a code without one gives "Tembrin 0x" and the code.
    static QString modelName(int type);

    // --- Sensors and sockets (tembrindata_sensors.cpp) ---------------------------------------------------
    /// The logger's own list; what is plugged in or out gets a new entry.
    const SensorList& getSensors() const { return sensors; }
    /// Place in the list, -1 when absent.
    int getIndexByID(int id) const;
    /// A sensor of the list, or a child of a composite in it as a new object; both sockets for temperature
    /// are one, and a composite's own ID means its first child. Null when absent.
    SensorPtr channel(int id) const;
    /// All of them, in order.
    SensorList channels() const;
    /// Until a logger has told what it records: the sensors whose ID occurs in `list`.
    void setActiveSensors(const SensorList& list);
    /// Place in the list of socket 0 or 1, -1 if the logger has none.
    int socketPlace(int socket) const { return sockets.place[socket]; }
    bool isExtSens1(int i) const { return i == sockets.place[0]; }
    bool isExtSens2(int i) const { return i == sockets.place[1]; }
    /// What the logger last said is plugged in, -1 before it did.
    int getExtSensID1() const { return sockets.told[0]; }
    int getExtSensID2() const { return sockets.told[1]; }
    bool hasPhotogateCompatibleSensor() const { return sockets.hasHeartSensor; }
    bool hasPhotogate() const { return sockets.hasGate; }

    // --- Byte stream (tembrindata_identify.cpp) ----------------------------------------------------------
    PacketKind identifyPacket(const char* bytes, int size, int* length) override;
    void handlePacket(unsigned char* data, int length) override;

    // --- Samples (tembrindata_online.cpp, tembrindata_vorta.cpp) -----------------------------------------
    /// The channels of the run that samples come from: new objects, composites as their children, as they
    /// were at the run's first sample. Before any run those that the logger is set to record.
    SensorList runChannels() const;
    /// The last snapshot: an entry for each sensor of the list, with a value for each child of a composite.
    const SampleBlock& snapshot() const { return snapshotValues; }
    /// Of a Vorta logger: what its next run is read by.
    void chooseVortaRun(const LoggerSettings& setup);
    /// The start of a Vorta run was sent.
    void expectVortaRun(const LoggerSettings& setup);
    const ForceCalibration& forceCalibration(int channel) const { return vortaRun.calibration(channel); }

    // --- Download (tembrindata_download.cpp) -------------------------------------------------------------
    /// The last download that ended well, by the identities of its own header.
    const StoredRun& storedRun() const { return download.result(); }
    /// A download was begun and has not ended.
    bool isDownloading() const { return download.isOpen(); }
    /// Ends a download without a result, and the logger's part in it too.
    void cancelDownload();
    /// One was asked for: the head that comes is not that of a cancelled one.
    void expectDownload() { isDownloadRefused = false; }
    /// The table of stored experiments, as far as it was received.
    const QVector<expInfo>& expList() const { return experiments; }

public Q_SLOTS:
    void handleStatus(unsigned char* udata, int len);
    void handleTestData(unsigned char* udata, int len);
    void handleSensID(unsigned char* udata, int len);
    void handleExtEvent(unsigned char* udata, int len);
    /// What the user says is plugged in; -1 leaves a socket unchanged, 0 is nothing.
    void handleQuellmarkSensors(int ext1, int ext2);
    void handleOnline(unsigned char* udata, int len);
    void handleTelemetry(unsigned char* udata, int len);
    void tooSlowSignal();

    void handleDataPacket(unsigned char* udata, int len);
    void handleInfoPacket(unsigned char* udata, int len);
    void timeoutWaitingPacket();
    void handleProgMem(unsigned char* udata, int len);
    void handleEEPROM(unsigned char* udata, int len);
    void HandleBLCS(unsigned char* udata, int len);

    void handleVortaStatus(unsigned char* udata, int len);
    void handleVortaFetch(unsigned char* udata, int len);
    void handleVortaOnlineFast(unsigned char* udata, int len);
    void handleVortaOnlineSlow(unsigned char* udata, int len);

Q_SIGNALS:
    void newSnapReceived();
    /// A sample, or a block of them from a Vorta logger. A row has one value for each of runChannels(), in
    /// order; the number of the first row is currentSample * rows.size(). A negative sample says that the
    /// computer is too slow, and has no rows. A direct receiver that keeps no copy costs no allocation.
    void onlineReceived(int index, short currentSample, QVector<QVector<double>> rows, int samplesWaiting);
    void statusReceived();
    void testDataReceived(QVector<unsigned char> results);
    void needNextPacket();
    void needLoggerType();
    void downloadComplete(int index, bool success);
    void gotExperimentInfo();
    void donePacket(int packNum, int expPack);
    void stopTransmission();
    /// The logger did not start or gave up, see terminateReason.
    void runTerminated(int index, int reason);
    /// A run has stopped.
    void runTerminated(int index, bool user);
    void calibrationResult(int reason);
    void offlineRunStarted(bool tf);
    /// A page of the loader; address -1 for a damaged one.
    void gotBootloaderMem(int address, QByteArray data);
    void gotBootloaderCS(int eepromCS, int flashCS);
    void gotBrevikString();
    void loggerTypeChanged();
    void recognizedVorta();
    void loggerMode();
    void commandAccepted(int index, commandType cmd);
    void communicationEstablished(int index);
    void temperatureChangeWarning(int index);

private:
    /// What it last said of itself.
    struct Identity
    {
        int type = 0;
        int firmware = 0;
        int smallFirmware = 0; ///< 0 to 99
        int hardware = 0;      ///< of a Vorta logger, as the next
        int software = 0;
        int runState = -1; ///< 0 is idle
        int stored = 0;    ///< experiments
        QDateTime dateTime;
    };

    struct Sockets
    {
        int place[2] = {-1, -1};
        int told[2] = {-1, -1};
        bool hasHeartSensor = false; ///< which can stand in for a gate
        bool hasGate = false;
    };

    /// For the cutting of the byte stream.
    struct Stream
    {
        int mask = -1; ///< that sampleBytes was counted for, -1 for none
        int sampleBytes = 0;
        int samplesWaiting = 0; ///< whole packets behind the present one
        int dataPacketSize = 767;
    };

    // Identity and sensors
    void setupSensorsForType(int type);
    void clearSensors();
    void appendFromSlot(int id, const int (&external)[2]);
    void noteGates(int first, int second);
    void plugIn(int socket, int id);
    void replaceSensor(int socket, int id);
    void replaceEntry(int place, int id);
    void noteSockets();
    /// Whenever the list or the width of an entry changes.
    void forgetOnlineMask() { stream.mask = -1; }

    // Status
    void takeStatusFields(const Packets::Status& status);
    void followExternalTemperature();
    void checkTemperatureUnit();
    void takeModel(int type);
    void reactToStatus(int eventCode);

    // Byte stream
    struct PacketRow;
    enum class Known;
    static const PacketRow packetRows[];
    static const PacketRow* rowOf(unsigned char family, unsigned char type);
    bool isKnown(Known when) const;
    int packetSizeAt(const unsigned char* head, int size, int rowSize);
    void countOnlineBytes(quint16 mask);
    int bytesPerSample(quint16 mask) const;

    // Samples
    void freezeRun(quint16 mask);

    // Download
    void connectDownload();
    StoredDownload::Header downloadHeader(const Packets::StoredData& packet) const;
    void forgetExperimentTable();
    void rejectExperimentTable(const char* why);
    expInfo experimentRow(const Packets::Info& packet) const;

    // Vorta
    void takeVortaFields(const Packets::VortaStatus& status);
    void becomeVorta();
    void reactToVortaStatus(int eventCode);
    void takeVortaBlock(const unsigned char* bytes, int len, int sampleCount);

    const Units units;
    LoggerSettings settings;
    Identity identity;
    bool vorta = false;
    bool loggerRecognized = false;
    bool gotSensorList = false;
    bool isUnitTold = false; ///< that the logger's temperature unit differs

    SensorList sensors;
    int extTempIndex = -1;
    Sockets sockets;
    Stream stream;

    RunDecoder run; ///< of a usual logger
    VortaRun vortaRun{units};
    SampleBlock rows{1}; ///< one row, used again for each sample
    SampleBlock snapshotValues;

    StoredDownload download;
    bool isDownloadRefused = false; ///< cancelled before its head came, which may still be under way
    QVector<expInfo> experiments;
};
