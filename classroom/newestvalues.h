#pragma once

#include <QElapsedTimer>
#include <QObject>

#include "common/classsize.h"

class multiConnectionsManager;

/// What each logger measured last: while it runs that of its run, else that of its last snapshot. What is no
/// longer so, because a logger is away or silent, is not known. In a replay: what it had measured then.
class NewestValues : public QObject
{
    Q_OBJECT

public:
    /// `manager` has the sessions and data sets; not owned.
    explicit NewestValues(multiConnectionsManager* manager, QObject* parent = nullptr);

    /// Of a sensor of logger `slot`, or of a composite's child, in the base unit; not a number where nothing
    /// is known.
    double value(int slot, int sensorID) const;
    /// The same of the last snapshot alone.
    double ofSnapshot(int slot, int sensorID) const;

Q_SIGNALS:
    /// Of logger `slot`; some may be.
    void changed(int slot);

private:
    double ofRun(int slot, int sensorID) const;

    multiConnectionsManager* manager;
    QElapsedTimer snapshots[mostLoggers]; ///< since the last one of each
};
