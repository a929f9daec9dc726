#include "classroom/commandqueue.h"

#include "classroom/classlog.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

#include <algorithm>
#include <utility>

Q_LOGGING_CATEGORY(classLog, "pellandra.class", QtInfoMsg)

using Task = ClassJob::Task;
using Progress = ClassJob::Progress;
using Reason = ClassJob::Reason;

namespace {
constexpr int msForValues = 2000; // after which an answer about the values is not awaited any more
}

CommandQueue::CommandQueue(const ClassLoggers& loggers, QObject* parent)
    : QObject(parent)
    , loggers(loggers)
    , work(loggers)
    , stop(loggers)
{
    connectRunner(&work);
    connectRunner(&stop);
    // A job never begins inside the signal that ends the one before.
    goOnTimer.setSingleShot(true);
    connect(&goOnTimer, &QTimer::timeout, this, &CommandQueue::goOn);
    for (int slot = 0; slot < mostLoggers; ++slot) {
        connect(loggers[slot]->tembrinData, &TembrinData::communicationEstablished, this,
                &CommandQueue::noteKnown);
        connect(loggers[slot]->tembrinData, &TembrinData::newSnapReceived, this,
                [this, slot] { asked[slot].invalidate(); });
    }
}

void CommandQueue::connectRunner(JobRunner* runner)
{
    connect(runner, &JobRunner::working, this, [this](int slot, bool tf) {
        Q_EMIT working(slot, tf);
        Q_EMIT changed();
    });
    connect(runner, &JobRunner::stepEnded, this, &CommandQueue::stepEnded);
    connect(runner, &JobRunner::ended, this, &CommandQueue::takeEnd);
}

void CommandQueue::setPacing(const JobPacing& newPacing)
{
    work.setPacing(newPacing);
    stop.setPacing(newPacing);
}

bool CommandQueue::isFor(Task task, int slot) const
{
    if (!loggers[slot]->isConnect)
        return known >> slot & 1 && task != Task::Download; // its absence is told
    const TembrinData* state = loggers[slot]->tembrinData;
    switch (task) {
    case Task::Start:
    case Task::Stop:
        return true;
    case Task::Setup:
    case Task::Configure:
        return !state->isVorta();
    case Task::Download:
        return !state->isVorta() && state->numExperiments() > 0;
    }
    return false;
}

bool CommandQueue::add(Task task)
{
    return add(task, 0xFF);
}

bool CommandQueue::add(Task task, quint8 which)
{
    ClassJob job;
    job.task = task;
    bool isAnyThere = false;
    for (int slot = 0; slot < inUse; ++slot) {
        if (!(which >> slot & 1) || !isFor(task, slot))
            continue;
        ClassJob::Step step;
        step.slot = slot;
        step.reason = loggers[slot]->isConnect ? Reason::None : Reason::Lost;
        job.steps.append(step);
        isAnyThere = isAnyThere || loggers[slot]->isConnect;
    }
    if (!isAnyThere) {
        qCInfo(classLog, "task %d: there is no logger for it", int(task));
        return false;
    }
    if (task == Task::Stop)
        beginStop(job);
    else
        enqueue(job);
    return true;
}

bool CommandQueue::addDownload(int slot, int number)
{
    if (slot >= inUse || !loggers[slot]->isConnect)
        return false;
    ClassJob::Step step;
    step.slot = slot;
    step.experiment = number;
    enqueue({Task::Download, {step}});
    return true;
}

bool CommandQueue::askValues(int slot)
{
    const TembrinProtocol* logger = loggers[slot];
    const TembrinData* state = logger->tembrinData;
    const bool isKnown = state->isLoggerRecognized() || state->isVorta();
    if (slot >= inUse || !logger->isConnect || !isKnown || !state->isIdle() || !isIdle() ||
        (asked[slot].isValid() && asked[slot].elapsed() < msForValues))
        return false;
    asked[slot].start();
    loggers[slot]->sendCommand(CMD_GET_ALL_SENSORS_VALUES);
    return true;
}

void CommandQueue::enqueue(const ClassJob& job)
{
    const auto same = std::find_if(waiting.begin(), waiting.end(),
                                   [&](const ClassJob& other) { return other.task == job.task; });
    if (same == waiting.end()) {
        waiting.append(job);
    } else {
        for (const ClassJob::Step& step : job.steps) {
            const auto isSame = [&](const ClassJob::Step& other) {
                return other.slot == step.slot && other.experiment == step.experiment;
            };
            if (std::none_of(same->steps.begin(), same->steps.end(), isSame))
                same->steps.append(step);
        }
    }
    if (!work.isBusy() && !stop.isBusy() && !goOnTimer.isActive())
        goOn();
    Q_EMIT changed();
}

void CommandQueue::beginStop(const ClassJob& job)
{
    cancel(Task::Start);
    if (stop.isBusy()) {
        stop.repeatNow();
        // Who was away at its turn and is back now is told when this job is through.
        for (const ClassJob::Step& step : job.steps) {
            const ClassJob::Step* present = stop.job().step(step.slot);
            if (loggers[step.slot]->isConnect && (!present || present->progress == Progress::PassedOver))
                stopAgain |= quint8(1u << step.slot);
        }
        return;
    }
    Q_EMIT begun(Task::Stop);
    stop.begin(job);
    Q_EMIT changed();
}

void CommandQueue::goOn()
{
    if (stopAgain != 0 && !stop.isBusy())
        add(Task::Stop, std::exchange(stopAgain, quint8(0)));
    if (work.isBusy() || stop.isBusy() || waiting.isEmpty())
        return;
    const ClassJob next = waiting.takeFirst();
    Q_EMIT begun(next.task);
    work.begin(next);
    Q_EMIT changed();
}

void CommandQueue::takeEnd(const ClassJob& job)
{
    goOnTimer.start(0);
    Q_EMIT ended(job);
    Q_EMIT changed();
}

void CommandQueue::cancel(Task task)
{
    QVector<ClassJob> cancelled;
    for (int i = waiting.size() - 1; i >= 0; --i) {
        if (waiting.at(i).task == task)
            cancelled.prepend(waiting.takeAt(i));
    }
    if (work.isBusy() && work.job().task == task)
        work.cancel();
    for (ClassJob& job : cancelled) {
        for (ClassJob::Step& step : job.steps) {
            step.progress = Progress::PassedOver;
            step.reason = Reason::Cancelled;
        }
        Q_EMIT ended(job);
    }
    if (!cancelled.isEmpty())
        Q_EMIT changed();
}

bool CommandQueue::isIdle() const
{
    return !work.isBusy() && !stop.isBusy() && waiting.isEmpty() && stopAgain == 0;
}

bool CommandQueue::has(Task task) const
{
    const QVector<ClassJob> all = jobs();
    return std::any_of(all.begin(), all.end(), [task](const ClassJob& job) { return job.task == task; });
}

bool CommandQueue::isOpen(Task task, int slot) const
{
    const QVector<ClassJob> all = jobs();
    return std::any_of(all.begin(), all.end(), [=](const ClassJob& job) {
        const ClassJob::Step* step = job.task == task ? job.step(slot) : nullptr;
        return step && (step->progress == Progress::Waiting || step->progress == Progress::Working);
    });
}

bool CommandQueue::isWorking(Task task) const
{
    const JobRunner& runner = task == Task::Stop ? stop : work;
    return runner.isBusy() && runner.job().task == task;
}

QVector<ClassJob> CommandQueue::jobs() const
{
    QVector<ClassJob> all;
    if (stop.isBusy())
        all.append(stop.job());
    if (work.isBusy())
        all.append(work.job());
    return all + waiting;
}
