#include "common/waits.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

namespace Waits {

void pump(int ms)
{
    QEventLoop loop;
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    timer.start(ms);
    loop.exec();
}

void pumpPending(UserEvents userEvents)
{
    QCoreApplication::processEvents(userEvents == UserEvents::Later ? QEventLoop::ExcludeUserInputEvents
                                                                    : QEventLoop::AllEvents);
}

} // namespace Waits
