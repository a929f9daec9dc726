// Any bytes that may stand in the journal of a run. Sums that only chance would get right are set right, so
// that what is behind them is read too.
#include <QtEndian>

#include <algorithm>
#include <zlib.h>

#include "persistence/journalreader.h"

namespace {

void check(bool isTrue)
{
    if (!isTrue)
        abort();
}

void readBoth(const QByteArray& file)
{
    const auto* const bytes = reinterpret_cast<const uchar*>(file.constData());
    JournalRun run;
    JournalRun extent;
    const bool isRead = JournalReader::read(bytes, file.size(), JournalReader::What::Samples, &run);
    check(isRead == JournalReader::read(bytes, file.size(), JournalReader::What::Extent, &extent));
    check(run.experiments.size() == extent.experiments.size() && run.isWhole == extent.isWhole);
    for (int i = 0; i < run.experiments.size(); ++i) {
        const JournalExperiment& experiment = run.experiments.at(i);
        check(experiment.rows > 0 && experiment.rows == extent.experiments.at(i).rows);
        check(experiment.times.size() == experiment.rows);
        check(std::is_sorted(experiment.times.cbegin(), experiment.times.cend()));
        check(experiment.columns.size() == experiment.head.channels.size());
        for (const QVector<double>& column : experiment.columns)
            check(column.size() == experiment.rows);
    }
}

QByteArray withRightSums(QByteArray file)
{
    auto* const bytes = reinterpret_cast<uchar*>(file.data());
    qint64 at = JournalFormat::signatureSize;
    while (file.size() - at > 8) {
        const qint64 length = qMin<qint64>(qFromLittleEndian<quint32>(bytes + at), file.size() - at - 8);
        qToLittleEndian(quint32(length), bytes + at);
        qToLittleEndian(quint32(crc32(0, bytes + at + 8, uInt(length))), bytes + at + 4);
        at += 8 + length;
    }
    return file;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, size_t size)
{
    const QByteArray file(reinterpret_cast<const char*>(bytes), int(size));
    readBoth(file);
    readBoth(withRightSums(file));
    return 0;
}
