#pragma once

#include <QObject>
#include <QVector>

#include "classroom/classplan.h"

class multiConnectionsManager;

/// Keeps the plan of the last setup for the loggers that were away when it was handed over. Only when one
/// comes is it known what it has, and so what the plan means for it: that becomes what is wanted of it.
class PlanKeeper : public QObject
{
    Q_OBJECT

public:
    /// Takes the place of the one kept for this class before. It lives as long as the manager.
    static void keep(const ClassPlan& plan, const QVector<int>& away, multiConnectionsManager* manager);

private:
    explicit PlanKeeper(multiConnectionsManager* manager);
    void handOver(int slot);

    multiConnectionsManager* manager;
    ClassPlan plan;
    QVector<int> away; ///< slots
};
