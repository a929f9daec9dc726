#include "app/valuepoll.h"

#include "classroom/commandqueue.h"
#include "classroom/multiconnectionsmanager.h"

namespace {
constexpr int msBetweenAnswers = 2000; // of one logger
}

ValuePoll::ValuePoll(multiConnectionsManager* manager, std::function<bool()> mayAsk, QObject* parent)
    : QObject(parent)
    , manager(manager)
    , mayAsk(std::move(mayAsk))
{
    timer.setObjectName(QStringLiteral("valuePoll"));
    connect(&timer, &QTimer::timeout, this, &ValuePoll::askNext);
}

void ValuePoll::setOn(bool isOn)
{
    if (isOn)
        timer.start(msBetweenAnswers);
    else
        timer.stop();
}

void ValuePoll::askNext()
{
    const int count = qMax(1, manager->nDefTembrins());
    timer.setInterval(msBetweenAnswers / count);
    next = (next + 1) % count;
    if (mayAsk() && !manager->isMeasuring())
        manager->queue().askValues(next);
}
