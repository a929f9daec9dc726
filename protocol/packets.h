#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QDebug>
#include <QLoggingCategory>

#include <array>
#include <optional>

/// What is worth knowing of a connection; each packet as a debug message.
Q_DECLARE_LOGGING_CATEGORY(lcProtocol)

/// Whole packets of a logger, taken apart. A parse function gives nothing for a packet that is too short; it
/// looks at no state and changes none. Pointers into a packet live as long as its bytes.
namespace Packets {

/// The sum of all bytes, the checksum included, is 0.
bool isSumGood(const unsigned char* bytes, int len);

struct SensorList
{
    std::array<unsigned char, 16> ids; ///< 0: no sensor in this slot
    int external1;                     ///< ID of what is in the first socket, 0 if not identified
    int external2;
    bool sumGood;
};
std::optional<SensorList> parseSensorList(const unsigned char* bytes, int len);

struct Status
{
    int eventCode;
    int type;
    int firmware;
    int smallFirmware;
    int runState;
    int numExperiments;
    quint16 mask;
    int rateCode;
    int samples;
    QDateTime dateTime; ///< UTC
    int trigType;
    int trigSens;
    quint16 trigLevel;
    int externalCode1;
    int externalCode2;
    int rangeSens;
    quint16 rangeMin;
    unsigned options; ///< bits 0 to 4: sound, Fahrenheit, Bluetooth, position, hPa
    int language;
    bool sumGood;
};
std::optional<Status> parseStatus(const unsigned char* bytes, int len);

struct Online
{
    quint16 mask;
    qint16 sample;
    const unsigned char* data;
    int dataSize;
};
std::optional<Online> parseOnline(const unsigned char* bytes, int len);

struct Snapshot
{
    const unsigned char* data;
    int dataSize;
    bool sumGood;
};
std::optional<Snapshot> parseSnapshot(const unsigned char* bytes, int len);

struct ExternalEvent
{
    int first; ///< ID of what was plugged in, 0 for nothing
    int second;
    bool sumGood;
};
std::optional<ExternalEvent> parseExternalEvent(const unsigned char* bytes, int len);

struct SelfTest
{
    const unsigned char* results;
    int count;
    bool sumGood;
};
std::optional<SelfTest> parseSelfTest(const unsigned char* bytes, int len);

/// One packet of a stored experiment; the first one carries a header.
struct StoredData
{
    int number;
    const unsigned char* samples;
    int samplesSize;
    bool sumGood;
    bool withSockets; ///< what is plugged in belongs to the experiment

    // In packet 0 only.
    quint16 mask;
    int rateCode;
    quint16 sampleCount;
    int externalCode1;
    int externalCode2;
};
std::optional<StoredData> parseStoredData(const unsigned char* bytes, int len);

/// One row of the table of stored experiments.
struct Info
{
    int number; ///< from 1
    quint16 mask;
    int rateCode;
    quint16 sampleCount;
    QDateTime dateTime; ///< UTC
    bool withSockets;
    int externalCode1;
    int externalCode2;
    bool sumGood;
};
std::optional<Info> parseInfo(const unsigned char* bytes, int len);

/// A page that the firmware loader read back.
struct LoaderPage
{
    int address;
    QByteArray data;
    bool sumGood;
};
std::optional<LoaderPage> parseProgMem(const unsigned char* bytes, int len);
std::optional<LoaderPage> parseEeprom(const unsigned char* bytes, int len);

struct LoaderSums
{
    int eeprom;
    int flash;
};
std::optional<LoaderSums> parseLoaderSums(const unsigned char* bytes, int len);

struct VortaStatus
{
    int eventCode;
    int hardware;
    int software;
    int runState;
    int rate;
    quint16 samples;
    quint16 gain;
    quint16 offset1;
    quint16 offset2;
    bool sumGood;
};
std::optional<VortaStatus> parseVortaStatus(const unsigned char* bytes, int len);

struct VortaSnapshot
{
    std::array<quint16, 5> words;
    bool sumGood;
};
std::optional<VortaSnapshot> parseVortaSnapshot(const unsigned char* bytes, int len);

/// The words of one sample by sensor, force right-aligned and acceleration left-aligned in 16 bits.
using VortaWords = std::array<quint16, 5>;
constexpr int vortaFastSampleSize = 5;
constexpr int vortaSlowSampleSize = 8;
/// Five bytes; the words 1 and 3 are 0.
VortaWords vortaFastWords(const unsigned char* bytes);
/// Eight bytes.
VortaWords vortaSlowWords(const unsigned char* bytes);

QDebug operator<<(QDebug debug, const SensorList& packet);
QDebug operator<<(QDebug debug, const Status& packet);
QDebug operator<<(QDebug debug, const Online& packet);
QDebug operator<<(QDebug debug, const Snapshot& packet);
QDebug operator<<(QDebug debug, const ExternalEvent& packet);
QDebug operator<<(QDebug debug, const SelfTest& packet);
QDebug operator<<(QDebug debug, const StoredData& packet);
QDebug operator<<(QDebug debug, const Info& packet);
QDebug operator<<(QDebug debug, const LoaderPage& packet);
QDebug operator<<(QDebug debug, const LoaderSums& packet);
QDebug operator<<(QDebug debug, const VortaStatus& packet);
QDebug operator<<(QDebug debug, const VortaSnapshot& packet);

} // namespace Packets
