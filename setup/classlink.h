#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include "classroom/classplan.h"
#include "link/commandtype.h"

class TembrinData;
class TembrinProtocol;
class multiConnectionsManager;

/// The way between a dialog's plan and the loggers of the class. It keeps the plan in step with the leader,
/// except while an answer to what the plan itself has sent is due, and takes the plan to the loggers.
class ClassLink : public QObject
{
    Q_OBJECT

public:
    ClassLink(multiConnectionsManager* manager, QObject* parent);

    ClassPlan plan;

    /// The logger that the plan speaks of: the first in use that answers, or else slot 0.
    TembrinProtocol* leader() const { return first; }
    TembrinData& leaderState() const;
    /// What the leader says is taken into the plan, unless an answer is due.
    void follow();

    /// The plan becomes what is wanted of the leader, which hears of it now.
    void sendSetupToLeader(ClassPlan::Parts parts = ClassPlan::RunPart);
    void sendConfigurationToLeader();
    /// The plan becomes what is wanted of every logger in use, and those that are connected hear of it in
    /// turn.
    void sendSetupToAll(ClassPlan::Parts parts = ClassPlan::RunPart);
    void sendConfigurationToAll();

    /// Slots in use whose logger is connected and has told what it is.
    QVector<int> known() const;
    int connectedCount() const;
    // Names of groups, in the order of the slots.
    QStringList running() const;
    /// Connected, and nothing was ever heard of them.
    QStringList silent() const;
    QStringList lackingRate(short rate) const;
    QStringList lackingSensors() const;
    QString groupName(int slot) const;

Q_SIGNALS:
    /// The plan, or what is known of a logger in use, may be another one now.
    void changed();

private:
    bool isKnown(int slot) const;
    bool isInPlan(int slot) const;
    void watch(int slot);
    void want(int slot, ClassPlan::Parts parts);
    template<typename Test> QStringList namesOf(Test test) const;

    multiConnectionsManager* manager;
    TembrinProtocol* first;
    QTimer answerTimer; ///< runs while an answer of the leader is due
    bool isSetupDue = false;
    bool isConfigurationDue = false;
};
