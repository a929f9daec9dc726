#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QVector>

/// A channel of a group as the journal of a run keeps it: all that makes the same channel again.
struct JournalChannel
{
    int sensorID = 0;
    int inLoggerIndex = -1; ///< as in Sensor, as the next
    int virtualIndex = -1;
};

/// What the rows of one group mean.
struct JournalGroup
{
    int slot = 0;
    int loggerType = 0; ///< model code
    QString group;
    QString logger;
    double period = 0;    ///< seconds between two samples, 0 for those taken by hand
    double cardWidth = 0; ///< m
    QVector<JournalChannel> channels;
};

/// Some rows of one group, one behind the other: the time in seconds (or the sample's number) and a value in
/// base units for each channel; a value that is not a number is a gap.
struct JournalRows
{
    int slot = 0;
    int channels = 0;
    QVector<double> values;

    int count() const { return values.size() / (channels + 1); }
};

/// The bytes of a journal: a signature, and blocks of which each has its length and a sum in front. See
/// docs/journal-format.md.
namespace JournalFormat {

enum class Kind : quint8
{
    Run = 1,
    Group = 2,
    Rows = 3
};

/// A block whose sum is right.
struct Block
{
    Kind kind = Kind::Run;
    const uchar* payload = nullptr; ///< behind the kind
    int size = 0;
};

/// What stands at the beginning of the file: the signature and when the run began.
QByteArray head(const QDateTime& begun);
/// From here on the rows of this slot mean this; those before are void.
QByteArray block(const JournalGroup& group);
QByteArray block(const JournalRows& rows);

/// The bytes begin with a whole signature of this version.
bool isJournal(const uchar* bytes, qint64 size);
/// The next whole block behind `*position`, which moves on; false at the end and at the first broken one.
bool next(const uchar* bytes, qint64 size, qint64* position, Block* block);

/// False for a payload that says something impossible.
bool read(const Block& block, QDateTime* begun);
bool read(const Block& block, JournalGroup* group);

/// A block of rows without a copy: column 0 has the times.
class RowsView
{
public:
    /// False for a payload that says something impossible.
    bool read(const Block& block);
    int slot() const { return ownSlot; }
    int channels() const { return ownChannels; }
    int count() const { return rows; }
    void copyColumn(int column, double* into) const;

private:
    const uchar* first = nullptr;
    int ownSlot = 0;
    int ownChannels = 0;
    int rows = 0;
};

constexpr int signatureSize = 8;
constexpr int mostChannels = 512;

} // namespace JournalFormat
