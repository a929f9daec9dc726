#include "app/fitrunner.h"

#include <QRunnable>

#include <functional>

namespace {

class Work : public QRunnable
{
public:
    explicit Work(std::function<void()> what)
        : what(std::move(what))
    {
    }
    void run() override { what(); }

private:
    const std::function<void()> what;
};

} // namespace

FitRunner::FitRunner(QObject* parent)
    : QObject(parent)
{
    pool.setMaxThreadCount(1);
}

FitRunner::~FitRunner()
{
    drop();
    pool.waitForDone(); // what is stopped ends within a pass over the points
}

void FitRunner::drop()
{
    if (stop)
        *stop = true;
    stop.reset();
}

void FitRunner::ask(const Task& task)
{
    drop();
    const auto own = std::make_shared<std::atomic_bool>(false);
    stop = own;
    pool.start(new Work([this, task, own] {
        QVector<CurveFit::Fit> fits;
        for (const Stretch& stretch : task.stretches)
            fits.append(CurveFit::fit(task.model, stretch.x, stretch.y, task.expression, {}, own.get()));
        QMetaObject::invokeMethod(
            this, [this, own, fits] { take(own, fits); }, Qt::QueuedConnection);
    }));
}

void FitRunner::take(const Stop& of, const QVector<CurveFit::Fit>& fits)
{
    if (of != stop)
        return;
    stop.reset();
    Q_EMIT done(fits);
}
