#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

/// The bytes of the wire as the firmware writes and reads them. Numbers are big-endian, dates are packed
/// decimal, and the sum of a whole frame is 0 modulo 256.
namespace Wire {

/// Commands of the program, by their third byte; a status that answers one carries the same code.
enum Code : quint8
{
    UserChange = 0x00,
    GetStatus = 0x10,
    LoggingSetup = 0x11,
    Start = 0x22,
    NoBattery = 0x23,
    NoMemory = 0x24,
    NoSensor = 0x25,
    Stop = 0x33,
    Download = 0x44,
    ExperimentsTable = 0x45,
    NextPacket = 0x46,
    ResendPacket = 0x47,
    StopTransmission = 0x48,
    Snapshot = 0x55,
    DeleteLast = 0x88,
    LongCommand = 0x91,
    DeleteAll = 0x99,
    SelfTest = 0xA8,
    Reserved = 0xA9,
    SensorIds = 0xAA,
    SetClock = 0xCC,
    Configure = 0xDD,
    Calibrate = 0xE0,
};

/// Packets of the logger, by their third byte.
enum Packet : quint8
{
    DataPlain = 0x44,
    InfoPlain = 0x45,
    DataExternal = 0x54,
    InfoExternal = 0x55,
    SnapshotPacket = 0x81,
    SensorIdPacket = 0x82,
    StatusPacket = 0x83,
    OnlinePacket = 0x84,
    ExternalEvent = 0x85,
    SelfTestPacket = 0xA8,
};

/// The same of the Vorta loggers.
enum VortaCode : quint8
{
    VortaGetStatus = 0x10,
    VortaStart = 0x22,
    VortaStop = 0x33,
    VortaSnapshot = 0x55,
    VortaCalibrate = 0x66,
};
enum VortaPacket : quint8
{
    VortaSnapshotPacket = 0x81,
    VortaStatusPacket = 0x84,
    VortaBlock1 = 0xF0,
    VortaBlock4 = 0xF1,
    VortaBlock10 = 0xF2,
    VortaBlock50 = 0xF3,
};

/// The same of the boot loaders.
enum LoaderCode : quint8
{
    LoaderReply = 0x10,
    LoaderWrite = 0x12,
    LoaderRead = 0x13,
    LoaderWriteEeprom = 0x17,
    LoaderReadEeprom = 0x18,
    LoaderErase = 0x19,
    LoaderConfirm = 0x21,
    LoaderSums = 0x27,
};
enum LoaderPacket : quint8
{
    LoaderReady = 0x11,
    LoaderReadyVorta = 0x12,
    LoaderOk = 0x14,
    LoaderBad = 0x15,
    LoaderErased = 0x20,
    LoaderPage = 0x23,
    LoaderEepromPage = 0x24,
    LoaderSumsPacket = 0x27,
};

/// The packet of the ordinary loggers: start bytes, type, `body`, checksum.
QByteArray packet(Packet type, const QByteArray& body);
QByteArray vortaPacket(VortaPacket type, const QByteArray& body);
QByteArray loaderPacket(LoaderPacket type, const QByteArray& body = {});
/// The commands that start the boot loader.
bool isLoaderEntry(const QByteArray& frame, bool isVorta);
bool isSumGood(const QByteArray& frame);

void append16(QByteArray& bytes, int value);
quint16 read16(const QByteArray& bytes, int at);
quint32 read32(const QByteArray& bytes, int at);
quint8 toBcd(int value);
int fromBcd(quint8 byte);
/// Day, month, year since 2000, hour, minute, second.
QByteArray bcdDate(const QDateTime& utc);
/// The date of six such bytes, invalid where they make none.
QDateTime fromBcdDate(const QByteArray& bytes);

/// A number that was sent as x / 256 and x % 256 with the sign of x in both. -1 to -255 can't be told from
/// 1 to 255 then and count as positive.
int readSplit(const QByteArray& bytes, int at);

constexpr int shortPageFrame = 136; ///< of most loaders
constexpr int longPageFrame = 265;  ///< of a Brevik; its sum has 16 bits

/// What a frame of either direction says, for the log.
QString describe(const QByteArray& frame, bool isFromLogger);

/// Cuts the byte stream of the program into frames.
class CommandCutter
{
public:
    enum Kind
    {
        Command, ///< a whole frame with a good sum
        Junk     ///< bytes that are no frame
    };

    /// The length of a frame that writes a page of program memory, which the device knows.
    void setPageFrame(int length) { pageFrame = length; }
    void add(const QByteArray& bytes) { buffer += bytes; }
    /// What waits for more is given up: nothing has come for long.
    void clear() { buffer.clear(); }
    /// The next frame or run of junk; false when more bytes are needed.
    bool next(QByteArray* frame, Kind* kind);

private:
    QByteArray buffer;
    int pageFrame = shortPageFrame;
};

} // namespace Wire
