#pragma once

#include <QMetaType>
#include <QVector>

/// One task for some of the loggers of a class, and what has become of it. A value: who is told of a job
/// keeps it as it was then.
struct ClassJob
{
    enum class Task
    {
        Start,
        Stop,
        Setup,
        Configure,
        Download
    };

    enum class Progress
    {
        Waiting, ///< its turn has not come
        Working, ///< was told, and has not confirmed
        Confirmed,
        PassedOver
    };

    enum class Reason
    {
        None,
        NotConnected,
        Silent,  ///< connected, but it never told what it is, or did not answer any more
        Lost,    ///< the connection broke before it had confirmed
        Running, ///< what a running logger can't be told
        Battery, ///< the logger's own reasons not to run
        Memory,
        NoSensor,
        Failed, ///< it answered, but not well enough
        Cancelled
    };

    struct Step
    {
        int slot = 0;
        int experiment = 0; ///< to download, from 1; 0 is the newest
        Progress progress = Progress::Waiting;
        Reason reason = Reason::None;
        int tries = 0;
        int storedBefore = 0; ///< experiments in its memory when its turn came
    };

    Task task = Task::Stop;
    QVector<Step> steps;

    const Step* step(int slot) const
    {
        for (const Step& step : steps) {
            if (step.slot == slot)
                return &step;
        }
        return nullptr;
    }
    bool isOpen() const
    {
        for (const Step& step : steps) {
            if (step.progress == Progress::Waiting || step.progress == Progress::Working)
                return true;
        }
        return false;
    }
};

Q_DECLARE_METATYPE(ClassJob)
