#include "app/graphtools.h"

#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "protocol/tembrindata.h"

#include <QEvent>

#include <algorithm>
#include <utility>

namespace {
constexpr int fewestForSlope = 3; // samples
}

GraphTools::GraphTools(multiConnectionsManager* manager, QObject* parent)
    : QObject(parent)
    , manager(manager)
{
}

void GraphTools::watch(Plot* plot)
{
    plot->canvas()->installEventFilter(this);
    connect(plot, &Plot::told, this, &GraphTools::told);
    connect(plot, &Plot::pointedAt, this, [this, plot](const QPointF& pos) { Q_EMIT pointedAt(plot, pos); });
    connect(plot, &Plot::predictionDrawn, this,
            [this, plot](const Prediction& drawn) { Q_EMIT predictionDrawn(plot->getIndex(), drawn); });
    connect(plot, &Plot::twoMarkersUpdated, this, [this, plot](const QString& text) {
        distances[plot] = text;
        tellDistance();
    });
    if (present != Mode::Slope)
        turn(plot, present, true);
}

bool GraphTools::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        if (auto* const plot = qobject_cast<Plot*>(object->parent())) {
            lastPressed = plot;
            Q_EMIT pressed(plot->getIndex());
        }
    }
    return QObject::eventFilter(object, event);
}

void GraphTools::tellDistance()
{
    Q_EMIT distanceTold(distances.value(seen()));
}

// --- The graph that is meant ---

QList<Plot*> GraphTools::shownPlots() const
{
    QList<Plot*> shown;
    for (int i = -1; i < manager->nMaxTembrins(); ++i) {
        for (Plot* plot : manager->graphsOf(i)) {
            if (plot->isVisibleTo(plot->window()))
                shown.append(plot);
        }
    }
    return shown;
}

bool GraphTools::isSpectrum(const Plot* plot) const
{
    return plot == manager->spectrumAt(plot->getIndex());
}

Plot* GraphTools::seen() const
{
    QList<Plot*> shown = shownPlots();
    // A spectrum is meant when it was pressed in; else what stands above it.
    if (lastPressed && shown.contains(lastPressed) && isSpectrum(lastPressed))
        return lastPressed;
    shown.erase(
        std::remove_if(shown.begin(), shown.end(), [this](const Plot* plot) { return isSpectrum(plot); }),
        shown.end());
    if (shown.size() == 1)
        return shown.first();
    for (Plot* plot : shown) {
        if (plot->getIndex() >= 0 && manager->isActive(plot->getIndex()))
            return plot;
    }
    const bool isPressedShown = lastPressed && shown.contains(lastPressed);
    if (isPressedShown && !lastPressed->curveMarker.isEmpty())
        return lastPressed;
    for (Plot* plot : shown) {
        if (!plot->curveMarker.isEmpty())
            return plot;
    }
    return isPressedShown ? lastPressed.data() : nullptr;
}

Plot* GraphTools::target()
{
    Plot* const plot = seen();
    if (!plot)
        Q_EMIT told(tr("Click in the graph that is meant first."));
    return plot;
}

ExpData* GraphTools::dataOf(const Plot* plot) const
{
    return plot->getIndex() < 0 ? manager->dataC() : manager->dataAt(plot->getIndex());
}

ExpData* GraphTools::targetData()
{
    const Plot* const plot = target();
    return plot ? dataOf(plot) : nullptr;
}

// --- Modes ---

void GraphTools::forEachPlot(const std::function<void(Plot*)>& visit) const
{
    for (int i = -1; i < manager->nMaxTembrins(); ++i) {
        for (Plot* plot : manager->graphsOf(i))
            visit(plot);
    }
}

/// How long the next run takes, of the class the longest of a group, s. At the rate Manual samples are
/// counted instead.
double GraphTools::plannedLength(int index) const
{
    double longest = 0;
    for (int i = 0; i < manager->nDefTembrins(); ++i) {
        if (index >= 0 && i != index)
            continue;
        const TembrinData& state = *manager->tembrinDataAt(i);
        const LoggerSettings& settings = state.reported();
        const int samples =
            state.isVorta() ? settings.vortaSamples : state.samplesNames().value(settings.samples).toInt();
        const double period = state.samplePeriod() > 0 ? state.samplePeriod() : 1;
        longest = std::max(longest, samples * period);
    }
    constexpr double anyLength = 10; // s, of a logger that goes on until it is stopped
    return longest > 0 ? longest : anyLength;
}

bool GraphTools::turn(Plot* plot, Mode mode, bool tf)
{
    switch (mode) {
    case Mode::None:
        return false;
    case Mode::Zoom:
        plot->enableZoom(tf);
        return true;
    case Mode::Marker:
        plot->enableMarker(tf);
        return true;
    case Mode::Annotate:
        plot->enableAnnotate(tf);
        return true;
    case Mode::Read:
        plot->enableReading(tf);
        return true;
    case Mode::Predict:
        plot->enablePredicting(tf, plannedLength(plot->getIndex()));
        return true;
    case Mode::Slope:
        plot->enableSlope(tf);
        return true;
    }
    return false;
}

void GraphTools::setMode(Mode mode, bool tf)
{
    const Mode wanted = tf ? mode : present == mode ? Mode::None : present;
    if (wanted == Mode::Slope) {
        const ExpData* const set = present == Mode::Slope ? nullptr : targetData();
        if (set && set->getXSize() < fewestForSlope)
            Q_EMIT told(tr("A slope needs at least three samples."));
        if (!set || set->getXSize() < fewestForSlope) {
            Q_EMIT modeChanged(); // a button that was pressed for it comes up again
            return;
        }
    }
    if (Plot* const before = std::exchange(sloped, nullptr))
        turn(before, Mode::Slope, false);
    if (present != Mode::Slope)
        forEachPlot([this](Plot* plot) { turn(plot, present, false); });
    present = wanted;
    if (present != Mode::Slope)
        forEachPlot([this](Plot* plot) { turn(plot, present, true); });
    follow();
    Q_EMIT modeChanged();
}

void GraphTools::follow()
{
    tellDistance();
    if (present != Mode::Slope)
        return;
    Plot* const plot = seen();
    if (plot == sloped)
        return;
    if (sloped)
        sloped->enableSlope(false);
    sloped = plot;
    if (sloped)
        sloped->enableSlope(true);
}

// --- Analyses ---

void GraphTools::crop()
{
    const QPointer<Plot> plot = target();
    if (!plot)
        return;
    if (manager->isMeasuring()) {
        Q_EMIT told(manager->isAnyRunning()
                        ? tr("A graph can be cropped when no logger is running.")
                        : tr("A graph can be cropped when the simulation has been restarted."));
        return;
    }
    if (plot->curveMarker.size() < 2) {
        Q_EMIT told(tr("Put two markers on a curve first: what lies outside them is cut off."));
        return;
    }
    const int index = plot->getIndex();
    plot->doCrop();
    Q_EMIT edited(index);
}

void GraphTools::fit(int degree)
{
    if (Plot* const plot = target())
        plot->doRegression(degree);
}

void GraphTools::addIntegral()
{
    if (Plot* const plot = target())
        plot->doIntegral();
}

void GraphTools::smooth()
{
    const QPointer<Plot> plot = target();
    if (!plot)
        return;
    if (manager->isMeasuring()) {
        Q_EMIT told(manager->isAnyRunning()
                        ? tr("A curve can be smoothed when no logger is running.")
                        : tr("A curve can be smoothed when the simulation has been restarted."));
        return;
    }
    Q_EMIT plot->changing(true);
    dataOf(plot)->smoothCurve();
    Q_EMIT edited(plot->getIndex());
    Q_EMIT plot->changed(tr("Smooth"));
}

void GraphTools::addDerivative()
{
    const QPointer<Plot> plot = target();
    if (!plot)
        return;
    ExpData* const set = dataOf(plot);
    const int before = set->getNSens();
    Q_EMIT plot->changing(true);
    set->addSpecialCurve(ExpData::CURVE_DERIV);
    if (set->getNSens() == before)
        Q_EMIT told(set->dt > 0 ? tr("A derivative needs at least two samples.")
                                : tr("A derivative needs times; these samples were taken by hand."));
    else
        Q_EMIT edited(plot->getIndex());
    Q_EMIT plot->changed(tr("Derivative"));
}

bool GraphTools::addCalculated(int index, const Calculation::Recipe& recipe)
{
    Plot* const plot = index < 0 ? manager->plotC() : manager->plotAt(index);
    ExpData* const set = dataOf(plot);
    const auto placed = Calculation::placed(recipe, set->getSensors());
    if (!placed)
        return false;
    Q_EMIT plot->changing(true);
    const bool isAdded = set->addCalculated(*placed);
    if (isAdded)
        Q_EMIT edited(index);
    Q_EMIT plot->changed(recipe.name);
    return isAdded;
}

void GraphTools::removeCalculated(int index)
{
    Plot* const plot = index < 0 ? manager->plotC() : manager->plotAt(index);
    ExpData* const set = dataOf(plot);
    const SensorPtr last = set->getSens(set->getNSens() - 1);
    if (!last || !last->calculation)
        return;
    Q_EMIT plot->changing(true);
    set->dropDerived(set->getNSens() - 1);
    Q_EMIT edited(index);
    Q_EMIT plot->changed(tr("Remove %1").arg(last->name));
}
