#include "setup/plankeeper.h"

#include "classroom/multiconnectionsmanager.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

void PlanKeeper::keep(const ClassPlan& plan, const QVector<int>& away, multiConnectionsManager* manager)
{
    auto* keeper = manager->findChild<PlanKeeper*>(QString(), Qt::FindDirectChildrenOnly);
    if (!keeper)
        keeper = new PlanKeeper(manager);
    keeper->plan = plan;
    keeper->away = away;
}

PlanKeeper::PlanKeeper(multiConnectionsManager* manager)
    : QObject(manager)
    , manager(manager)
{
    for (int i = 0; i < multiConnectionsManager::nMaxTembrins(); ++i)
        connect(manager->tembrinDataAt(i), &TembrinData::statusReceived, this, [this, i] { handOver(i); });
}

void PlanKeeper::handOver(int slot)
{
    TembrinProtocol* session = manager->tembrinAt(slot);
    const bool isIn = slot < manager->nDefTembrins() && session->tembrinData->isVorta() == plan.isVorta();
    if (away.removeOne(slot) && isIn)
        session->wantSetup(plan.settingsFor(*session));
}
