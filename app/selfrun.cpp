#include "app/selfrun.h"

#include "app/selfrundialog.h"
#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "classroom/loggerconnector.h"
#include "classroom/multiconnectionsmanager.h"
#include "classroom/newestvalues.h"
#include "data/novalue.h"
#include "protocol/tembrindata.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QToolBar>

#include <utility>

namespace {

constexpr int msTick = 100;
constexpr int msBetweenQuestions = 1000;

} // namespace

SelfRun::SelfRun(multiConnectionsManager* manager, const std::function<void()>& start,
                 const std::function<void()>& stop, const std::function<bool()>& mayBegin,
                 QMainWindow* window)
    : QObject(window)
    , manager(manager)
    , window(window)
    , start(start)
    , mayBegin(mayBegin)
    , logic(worldOf(start, stop))
{
    clock.start();
    ticks.setInterval(msTick);
    asking.setInterval(msBetweenQuestions);
    connect(&ticks, &QTimer::timeout, this, [this] { logic.tick(clock.elapsed()); });
    connect(&asking, &QTimer::timeout, this, &SelfRun::askValues);
    connect(&logic, &AutoRun::changed, this, &SelfRun::takeChange);
    connect(&logic, &AutoRun::told, this, &SelfRun::told);
    const ClassRun* const run = &manager->run();
    connect(run, &ClassRun::begun, this, [this] { logic.noteBegun(clock.elapsed()); });
    connect(run, &ClassRun::rowTaken, this, [this] { logic.noteSample(clock.elapsed()); });
    connect(run, &ClassRun::ended, this, [this] { logic.noteEnded(clock.elapsed(), isEmptyRun()); });
}

AutoRun::World SelfRun::worldOf(const std::function<void()>& start, const std::function<void()>& stop)
{
    AutoRun::World world;
    world.isFree = [this] { return isFree(); };
    world.isAnyoneThere = [this] {
        for (int i = 0; i < manager->nDefTembrins(); ++i) {
            if (manager->isTembrinConnect(i) || isComing(i))
                return true;
        }
        return false;
    };
    world.value = [this](int slot) {
        return newest && slot < manager->nDefTembrins() ? newest->value(slot, sensor) : noValue;
    };
    world.start = start;
    world.stop = stop;
    return world;
}

/// It is being connected, or will be in a moment.
bool SelfRun::isComing(int slot) const
{
    using State = LoggerConnector::State;
    const State state = manager->connector().state(slot);
    return state == State::Opening || state == State::Waiting || state == State::Open;
}

/// Nothing begins behind a dialog that waits for an answer or beside a file on its way, and who is looked for
/// or being connected has its time.
bool SelfRun::isFree() const
{
    for (int i = 0; i < manager->nDefTembrins(); ++i) {
        if (isComing(i))
            return false;
    }
    return mayBegin() && manager->queue().isIdle() && !manager->isAnyRunning() &&
           !manager->run().isAwaited() && !QApplication::activeModalWidget();
}

/// A run at a fast rate comes out of the memories afterwards.
bool SelfRun::isEmptyRun() const
{
    for (int i = 0; i < manager->nDefTembrins(); ++i) {
        if (manager->isTembrinConnect(i) && manager->tembrinDataAt(i)->isFastRate())
            return false;
    }
    return manager->run().samples() == 0;
}

void SelfRun::ask()
{
    auto* const dialog = new SelfRunDialog(manager, window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog] { arm(dialog->plan(), dialog->sensorID()); });
    dialog->open();
}

void SelfRun::arm(const AutoRunPlan& plan, int sensorID)
{
    sensor = sensorID;
    if (!newest && plan.begin == AutoRunPlan::Begin::Level)
        newest = new NewestValues(manager, this);
    logic.arm(plan, clock.elapsed());
    askValues();
}

void SelfRun::askValues()
{
    for (int i = 0; logic.isLevelWatched() && i < manager->nDefTembrins(); ++i)
        manager->queue().askValues(i);
}

void SelfRun::takeChange()
{
    if (logic.isOn() && !line)
        createLine();
    const auto run = [](QTimer* timer, bool tf) {
        if (tf != timer->isActive())
            tf ? timer->start() : timer->stop();
    };
    run(&ticks, logic.isOn());
    run(&asking, logic.isLevelWatched());
    if (line) {
        words->setText(logic.text());
        runNow->setVisible(isWaiting());
        stop->setText(isWaiting() ? tr("Give up (Esc)") : tr("Stop (Esc)"));
        line->setVisible(logic.isOn());
    }
    if (std::exchange(wasWaiting, isWaiting()) != isWaiting())
        Q_EMIT changed();
}

/// At the bottom, in every layout; it takes no room while there is nothing to say.
void SelfRun::createLine()
{
    line = new QToolBar(tr("Run by itself"));
    line->setObjectName(QStringLiteral("selfRunLine"));
    line->setMovable(false);
    line->setContextMenuPolicy(Qt::PreventContextMenu);
    auto* const row = new QWidget; // a bar would put a long text behind an arrow
    row->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    auto* const layout = new QHBoxLayout(row);
    words = new QLabel;
    words->setObjectName(QStringLiteral("selfRunWords"));
    QFont font = words->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.6);
    words->setFont(font);
    words->setWordWrap(true);
    runNow = new QPushButton(tr("Run now (F5)"));
    runNow->setObjectName(QStringLiteral("selfRunNow"));
    runNow->setShortcut(Qt::Key_F5); // that of Run, in whose place Stop stands meanwhile
    connect(runNow, &QPushButton::clicked, this, [this] { start(); });
    stop = new QPushButton;
    stop->setObjectName(QStringLiteral("selfRunStop"));
    connect(stop, &QPushButton::clicked, this, &SelfRun::stopWanted);
    layout->addWidget(words, 1);
    layout->addWidget(runNow);
    layout->addWidget(stop);
    line->addWidget(row);
    window->addToolBar(Qt::BottomToolBarArea, line);
}
