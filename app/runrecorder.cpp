#include "app/runrecorder.h"

#include "classroom/classrun.h"
#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "persistence/journalfolder.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

#include <utility>

namespace {

constexpr int msToKeep = 250;

/// Those that were recorded; what was derived from them follows by itself.
QVector<JournalChannel> recordedChannels(const ExpData& set)
{
    QVector<JournalChannel> channels;
    for (const SensorPtr& sensor : set.getSensors()) {
        if (!sensor || sensor->specialOriginIndex >= 0)
            break;
        channels.append({sensor->ID, sensor->inLoggerIndex, sensor->virtualIndex});
    }
    return channels;
}

void append(JournalRows* rows, double time, const QVector<double>& values)
{
    rows->values.append(time);
    for (int channel = 0; channel < rows->channels; ++channel)
        rows->values.append(values.value(channel, qQNaN()));
}

} // namespace

RunRecorder::RunRecorder(multiConnectionsManager* manager, QObject* parent)
    : QObject(parent)
    , manager(manager)
    , waiting(mostLoggers)
{
    timer.setSingleShot(true);
    timer.setInterval(msToKeep);
    connect(&timer, &QTimer::timeout, this, &RunRecorder::handOver);
    const ClassRun* run = &manager->run();
    connect(run, &ClassRun::experimentBegun, this, &RunRecorder::beginGroup);
    connect(run, &ClassRun::rowTaken, this, &RunRecorder::takeRow);
    connect(&writer, &JournalWriter::failed, this, [this](const QString& reason) {
        Q_EMIT failed(tr("This run is not kept for the case of a crash: %1").arg(reason));
    });
}

RunRecorder::~RunRecorder()
{
    handOver();
    writer.end();
}

void RunRecorder::setAside()
{
    handOver();
    if (isOpen)
        writer.refuse();
    forget();
}

void RunRecorder::forget()
{
    isOpen = false;
    written = inRun = 0;
    timer.stop();
    waiting = QVector<JournalRows>(mostLoggers);
}

/// It is written with the first row: until then it is planned and may change.
void RunRecorder::beginGroup(int slot)
{
    handOver();
    written &= quint8(~(1u << slot));
}

void RunRecorder::takeRow(int slot, double time, const QVector<double>& values)
{
    if (!isOpen) {
        const QDateTime now = QDateTime::currentDateTime();
        path = JournalFolder::nameFor(now);
        writer.begin(path, now);
        isOpen = true;
        sinceHandOver.start();
    }
    const quint8 bit = quint8(1u << slot);
    if (written & bit)
        append(&waiting[slot], time, values);
    else
        writeGroup(slot);
    if (sinceHandOver.elapsed() > msToKeep) // the timer waits as long as the thread is busy
        handOver();
    else if (!timer.isActive())
        timer.start();
}

/// What the group is, and all that it has.
void RunRecorder::writeGroup(int slot)
{
    const ExpData& set = *manager->dataAt(slot);
    JournalGroup head;
    head.slot = slot;
    head.loggerType = manager->tembrinDataAt(slot)->tembrinType();
    head.group = set.getGroupName();
    head.logger = manager->loggerName(slot);
    head.period = set.dt;
    head.cardWidth = manager->tembrinAt(slot)->photoObjW;
    head.channels = recordedChannels(set);
    handOver();
    writer.add(head);
    JournalRows& rows = waiting[slot];
    rows.slot = slot;
    rows.channels = head.channels.size();
    QVector<double> values(rows.channels);
    for (int row = 0; row < set.getXSize(); ++row) {
        for (int channel = 0; channel < rows.channels; ++channel)
            values[channel] = set.getYNoConv(channel).value(row, qQNaN());
        append(&rows, set.getXAt(row), values);
    }
    written |= quint8(1u << slot);
    inRun |= quint8(1u << slot);
}

void RunRecorder::handOver()
{
    timer.stop();
    sinceHandOver.start();
    QVector<JournalRows> rows;
    for (JournalRows& some : waiting) {
        if (some.values.isEmpty())
            continue;
        const int size = some.values.size();
        rows.append(some);
        some.values = QVector<double>();
        some.values.reserve(size);
    }
    if (!rows.isEmpty())
        writer.add(rows);
}

bool RunRecorder::isSaved() const
{
    for (int slot = 0; slot < manager->nMaxTembrins(); ++slot) {
        if (inRun >> slot & 1 && manager->dataAt(slot)->isNeedSave())
            return false;
    }
    return true;
}

void RunRecorder::noteSaved()
{
    handOver();
    if (!isOpen || manager->isAnyRunning() || !isSaved())
        return;
    writer.remove();
    forget();
}

void RunRecorder::rewrite(int slot)
{
    if (isOpen && written >> slot & 1) {
        waiting[slot].values.clear();
        writeGroup(slot);
        handOver();
    }
}

/// While others run they go on in it.
void RunRecorder::replace(int slot)
{
    if (inRun >> slot & 1 && !manager->isAnyRunning())
        setAside();
}

void RunRecorder::adopt(const FoundJournal& journal, quint8 groups)
{
    setAside();
    writer.adopt(journal.path, journal.lock);
    path = journal.path;
    isOpen = true;
    inRun = groups;
}

QString RunRecorder::keep()
{
    handOver();
    if (!isOpen)
        return {};
    writer.keep();
    forget();
    return path;
}

void RunRecorder::takeKept(const QString& journal, quint8 groups)
{
    setAside();
    if (journal.isEmpty())
        return;
    writer.takeKept(journal);
    path = journal;
    isOpen = true;
    inRun = groups;
}

void RunRecorder::removeKept(const QString& journal)
{
    if (!journal.isEmpty())
        writer.removeKept(journal);
}

void RunRecorder::refuseKept(const QString& journal)
{
    if (!journal.isEmpty())
        writer.refuseKept(journal);
}

void RunRecorder::leave()
{
    setAside();
    writer.refuseAllKept();
    writer.finish();
}
