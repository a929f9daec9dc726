#include "common/waits.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

#include <memory>

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

void whileWorking(const std::function<void()>& work)
{
    const std::unique_ptr<QThread> thread(QThread::create(work));
    QEventLoop loop;
    QObject::connect(thread.get(), &QThread::finished, &loop, &QEventLoop::quit);
    thread->start();
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    thread->wait();
}

} // namespace Waits
