#include "persistence/journalreader.h"

#include "common/classsize.h"

#include <QFile>

#include <cmath>

namespace {

constexpr double latest = 1e12; // seconds; no run lasts longer, and an axis can show it

/// What the blocks say, one after the other.
class JournalScan
{
public:
    explicit JournalScan(JournalReader::What what)
        : what(what)
    {
        for (bool& isKnown : known)
            isKnown = false;
    }

    /// False for a block that can't be true.
    bool take(const JournalFormat::Block& block, QDateTime* begun)
    {
        switch (block.kind) {
        case JournalFormat::Kind::Run:
            return JournalFormat::read(block, begun);
        case JournalFormat::Kind::Group:
            return takeGroup(block);
        case JournalFormat::Kind::Rows:
            return takeRows(block);
        }
        return false;
    }

    QVector<JournalExperiment> experiments()
    {
        QVector<JournalExperiment> list;
        for (JournalExperiment& place : places) {
            if (place.rows > 0)
                list.append(std::move(place));
        }
        return list;
    }

private:
    bool takeGroup(const JournalFormat::Block& block)
    {
        JournalGroup head;
        if (!JournalFormat::read(block, &head))
            return false;
        JournalExperiment& place = places[head.slot];
        place = JournalExperiment();
        place.head = head;
        place.columns.resize(what == JournalReader::What::Samples ? head.channels.size() : 0);
        known[head.slot] = true;
        return true;
    }

    bool takeRows(const JournalFormat::Block& block)
    {
        JournalFormat::RowsView view;
        if (!view.read(block) || !known[view.slot()])
            return false;
        JournalExperiment& place = places[view.slot()];
        if (view.channels() != place.head.channels.size())
            return false;
        times.resize(view.count());
        view.copyColumn(0, times.data());
        if (!isInOrder(place))
            return false;
        if (place.rows == 0 && !times.isEmpty())
            place.first = times.constFirst();
        if (!times.isEmpty())
            place.last = times.constLast();
        const int before = place.rows;
        place.rows += view.count();
        if (what == JournalReader::What::Extent)
            return true;
        place.times += times;
        for (int channel = 0; channel < view.channels(); ++channel) {
            QVector<double>& column = place.columns[channel];
            column.resize(place.rows);
            view.copyColumn(channel + 1, column.data() + before);
        }
        return true;
    }

    bool isInOrder(const JournalExperiment& place) const
    {
        double before = place.rows > 0 ? place.last : -latest;
        for (const double t : times) {
            if (!(t >= before && t <= latest)) // also what is not a number
                return false;
            before = t;
        }
        return true;
    }

    const JournalReader::What what;
    JournalExperiment places[mostLoggers];
    bool known[mostLoggers];
    QVector<double> times;
};

} // namespace

double JournalRun::seconds() const
{
    double longest = 0;
    for (const JournalExperiment& experiment : experiments) {
        if (experiment.head.period > 0)
            longest = qMax(longest, experiment.last - experiment.first + experiment.head.period);
    }
    return longest;
}

bool JournalReader::read(const uchar* bytes, qint64 size, What what, JournalRun* run)
{
    *run = JournalRun();
    if (!JournalFormat::isJournal(bytes, size))
        return false;
    JournalScan scan(what);
    qint64 position = JournalFormat::signatureSize;
    JournalFormat::Block block;
    bool isGood = true;
    qint64 read = position;
    while (isGood && JournalFormat::next(bytes, size, &position, &block)) {
        isGood = scan.take(block, &run->begun);
        read = isGood ? position : read;
    }
    run->isWhole = read == size;
    run->experiments = scan.experiments();
    return true;
}

bool JournalReader::read(const QString& path, What what, JournalRun* run, QString* reason)
{
    QFile file(path);
    const uchar* const bytes =
        file.open(QIODevice::ReadOnly) && file.size() > 0 ? file.map(0, file.size()) : nullptr;
    if (bytes && read(bytes, file.size(), what, run))
        return true;
    *reason =
        bytes || file.error() == QFileDevice::NoError ? tr("It is no journal of a run.") : file.errorString();
    return false;
}
