#include "setup/classlink.h"

#include "classroom/multiconnectionsmanager.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/plankeeper.h"

namespace {
constexpr int msForAnswer = 5000; ///< after that what the leader says counts again
}

ClassLink::ClassLink(multiConnectionsManager* manager, QObject* parent)
    : QObject(parent)
    , manager(manager)
    , first(manager->tembrinAt(0))
{
    const QVector<int> answering = known();
    if (!answering.isEmpty())
        first = manager->tembrinAt(answering.first());
    answerTimer.setSingleShot(true);
    answerTimer.setInterval(msForAnswer);
    connect(&answerTimer, &QTimer::timeout, this, [this] {
        if (first->isConnect)
            follow();
        Q_EMIT changed();
    });
    for (int i = 0; i < multiConnectionsManager::nMaxTembrins(); ++i)
        watch(i);
    isSetupDue = !first->isSetupConfirmed();
    isConfigurationDue = !first->isConfigurationConfirmed();
    if (isSetupDue || isConfigurationDue)
        answerTimer.start();
    plan.follow(leaderState(), first->wanted());
}

void ClassLink::watch(int slot)
{
    const TembrinProtocol* session = manager->tembrinAt(slot);
    const TembrinData* state = session->tembrinData;
    const auto look = [this, session] {
        if (session == first)
            follow();
        Q_EMIT changed();
    };
    connect(state, &TembrinData::statusReceived, this, look);
    connect(state, &TembrinData::loggerTypeChanged, this, look);
    connect(state, &TembrinData::commandAccepted, this, look); // the status of an answer comes before it
    connect(session, &TembrinProtocol::openDone, this, look);
    connect(session, &TembrinProtocol::loggerDisconnected, this, look);
}

TembrinData& ClassLink::leaderState() const
{
    return *first->tembrinData;
}

void ClassLink::follow()
{
    const bool isDue = (isSetupDue && !first->isSetupConfirmed()) ||
                       (isConfigurationDue && !first->isConfigurationConfirmed());
    if (!isDue)
        answerTimer.stop();
    const TembrinData& state = leaderState();
    if (answerTimer.isActive()) {
        plan.followSensors(state);
        return;
    }
    isSetupDue = isConfigurationDue = false;
    // What a Vorta logger is to record it hears with the start of a run, and says nothing of before.
    const bool isTelling = first->isConnect && !state.isVorta();
    LoggerSettings now = first->wanted();
    if (isTelling)
        now = state.reported();
    plan.follow(state, now);
}

// --- To the loggers ---

void ClassLink::want(int slot, ClassPlan::Parts parts)
{
    TembrinProtocol* session = manager->tembrinAt(slot);
    session->wantSetup(plan.settingsFor(*session, parts));
}

void ClassLink::sendSetupToLeader(ClassPlan::Parts parts)
{
    want(first->index, parts);
    isSetupDue = true;
    answerTimer.start();
    first->sendCommand(CMD_TEMBRIN_LOGGING_SETUP);
}

void ClassLink::sendConfigurationToLeader()
{
    first->wantConfiguration(plan.settingsFor(*first, ClassPlan::ConfigurationPart));
    isConfigurationDue = true;
    answerTimer.start();
    first->sendCommand(CMD_CONFIGURE_TEMBRIN);
}

void ClassLink::sendSetupToAll(ClassPlan::Parts parts)
{
    QVector<int> away;
    for (int i = 0; i < manager->nDefTembrins(); ++i) {
        if (!isKnown(i))
            away.append(i);
        if (isInPlan(i))
            want(i, parts);
    }
    if (parts.testFlag(ClassPlan::RunPart))
        PlanKeeper::keep(plan, away, manager);
    if (!plan.isVorta())
        manager->sendCmdToAll(CMD_TEMBRIN_LOGGING_SETUP);
}

void ClassLink::sendConfigurationToAll()
{
    for (int i = 0; i < manager->nDefTembrins(); ++i) {
        TembrinProtocol* session = manager->tembrinAt(i);
        if (!session->tembrinData->isVorta())
            session->wantConfiguration(plan.settingsFor(*session, ClassPlan::ConfigurationPart));
    }
    manager->sendCmdToAll(CMD_CONFIGURE_TEMBRIN);
}

// --- What the class says to the plan ---

bool ClassLink::isKnown(int slot) const
{
    return manager->isRecognized(slot);
}

/// A setup for one kind of logger says nothing to the other.
bool ClassLink::isInPlan(int slot) const
{
    return manager->tembrinDataAt(slot)->isVorta() == plan.isVorta();
}

QVector<int> ClassLink::known() const
{
    QVector<int> answering;
    for (int i = 0; i < manager->nDefTembrins(); ++i) {
        if (isKnown(i))
            answering.append(i);
    }
    return answering;
}

int ClassLink::connectedCount() const
{
    int count = 0;
    for (int i = 0; i < manager->nDefTembrins(); ++i)
        count += manager->isTembrinConnect(i) ? 1 : 0;
    return count;
}

QString ClassLink::groupName(int slot) const
{
    const QString name = manager->groupName(slot);
    return name.isEmpty() ? tr("Logger %1").arg(slot + 1) : name;
}

template<typename Test> QStringList ClassLink::namesOf(Test test) const
{
    QStringList names;
    for (int i = 0; i < manager->nDefTembrins(); ++i) {
        if (test(i))
            names.append(groupName(i));
    }
    return names;
}

QStringList ClassLink::running() const
{
    return namesOf([this](int i) { return manager->isRunning(i); });
}

QStringList ClassLink::silent() const
{
    return namesOf([this](int i) { return manager->isTembrinConnect(i) && !isKnown(i); });
}

QStringList ClassLink::lackingRate(short rate) const
{
    return namesOf([=](int i) { return isKnown(i) && plan.lacksRate(*manager->tembrinDataAt(i), rate); });
}

QStringList ClassLink::lackingSensors() const
{
    return namesOf([this](int i) { return isKnown(i) && plan.lacksSensors(*manager->tembrinDataAt(i)); });
}
