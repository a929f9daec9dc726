#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QHash>
#include <QString>
#include <QVector>

/// What records go to, and what a burn is at.
enum bootLoaderMode
{
    MODE_FLASH = 0,
    MODE_EEPROM = 1,
    MODE_IGNORE = 2, ///< records are skipped; nothing is under way
    MODE_W_FLASH = 3,
    MODE_W_EEPROM = 4,
    MODE_V_FLASH = 5,
    MODE_V_EEPROM = 6,
    MODE_BREVIK_FLASH = 7
};

constexpr int SIZE_FLASH = 128; ///< bytes of a page
constexpr int SIZE_EEPROM = 16;
constexpr int SIZE_BREVIK_FLASH = 256;

/// One page, the unit that a boot loader writes. What no record covers is as erased memory reads.
class dataPacket
{
public:
    /// `type` is MODE_FLASH, MODE_EEPROM or MODE_BREVIK_FLASH; `start` a multiple of its page size.
    dataPacket(int start, bootLoaderMode type);

    /// Puts in as many of the bytes as fit, and gives their number; −1, with nothing changed, for an address
    /// that is not in the page.
    int addData(int address, const QByteArray& bytes);
    /// 0 if the page begins at `address` and holds just these bytes, else −1.
    int compare(int address, const QByteArray& bytes) const;
    /// Of all bytes, as unsigned values.
    int sum() const;
    /// Whether a record put another byte where one of these would go.
    bool differs(int address, const QByteArray& bytes) const;

    int start;
    int end; ///< behind its last byte
    QByteArray data;

private:
    QByteArray written; ///< 1 for each byte that a record put in
};

/// The content of a firmware file as pages: an Intel HEX image of a logger or of a Brevik device, or a data
/// file of the latter. What can't be read exactly is refused, with the line and the reason, and leaves no
/// page.
class FirmwareImage
{
    Q_DECLARE_TR_FUNCTIONS(FirmwareImage)

public:
    /// Chooses the reader: `isHex` as the user's filter tells it, a Brevik image by "brevik" in the file's
    /// name. 0, or −1 for a file that is refused.
    int open(const QString& path, bool isHex);

    /// The same with what a file holds.
    int take(const QByteArray& text, bool isHex, bool isBrevik);

    /// An image of a logger: flash from 0x1000 to 0x1FFFF, below which its boot loader lives, and EEPROM, in
    /// the file at 0xF00000 to 0xF003FF; what lies elsewhere is left out. Fills the two sums.
    int readFile(const QString& path);
    /// An image of a Brevik device: from 0x2000 to 0x2A700; the rest is left out. It has no sums.
    int readFileBrevik(const QString& path);
    /// Lines of ":", a two-byte address, 32 data bytes and at least two words more, hexadecimal between
    /// blanks; other lines are left out. They become long strings of eight lines each.
    int readDataFile(const QString& path);

    bool fileOK = false;
    bool hexFormat = true;
    bool brevikFile = false;
    QString filename;                 ///< without folder and suffix
    QString label;                    ///< how the reading ended
    QVector<dataPacket> flashPackets; ///< in the order in which the file first names them
    QVector<dataPacket> eepromPackets;
    QVector<QByteArray> brevikData;     ///< the lines: address and 32 bytes
    QVector<QByteArray> brevikLongData; ///< 2 + 8 × 32 bytes
    /// Of the whole memories as they are after a burn, pages that are not in the file read as erased: of the
    /// flash from 0x1000 on, and of the EEPROM the low eight bits.
    int flashCS = 0;
    int eepromCS = 0;

private:
    struct Record
    {
        int line = 0; ///< from 0
        int address = 0;
        int type = 0;
        QByteArray data;
    };
    int takeFile(const QString& path);
    bool splitLines(const QByteArray& text, QStringList* lines);
    bool readRecord(const QString& text, int line, Record* record);
    int readHex(const QByteArray& text);
    int readData(const QByteArray& text);
    bool takeRecord(const Record& record);
    bool takeOffset(const Record& record);
    bool takeData(const Record& record);
    bool addData(int line, int address, const QByteArray& bytes);
    dataPacket& locatePacket(int address);
    bool readDataLine(const QString& text, int line);
    void joinDataLines();
    void calculateCS();
    void clear();
    bool refuse(const QString& reason);

    bootLoaderMode mode = MODE_FLASH;
    int offset = 0;
    QHash<int, int> flashPlaces; ///< of pages, by their start
    QHash<int, int> eepromPlaces;
    QHash<int, int> dataPlaces; ///< of the lines, by their address
};
