#pragma once

#include <QObject>
#include <QThreadPool>

#include <atomic>
#include <memory>

#include "data/curvefit.h"
#include "data/stretch.h"

/// Fits curves off the GUI thread: many points with a formula take seconds.
class FitRunner : public QObject
{
    Q_OBJECT

public:
    struct Task
    {
        CurveFit::Model model = CurveFit::Model::Line;
        QString expression;
        QVector<Stretch> stretches;
    };

    explicit FitRunner(QObject* parent = nullptr);
    ~FitRunner() override;

    /// In place of what was asked before, whose answer never comes.
    void ask(const Task& task);
    /// Nobody waits for the answer any more.
    void drop();
    bool isBusy() const { return stop != nullptr; }

Q_SIGNALS:
    /// A fit for each stretch of the last task.
    void done(const QVector<CurveFit::Fit>& fits);

private:
    using Stop = std::shared_ptr<std::atomic_bool>;
    void take(const Stop& of, const QVector<CurveFit::Fit>& fits);

    QThreadPool pool; ///< of one thread
    Stop stop;        ///< of the task that is under way, null without one
};
