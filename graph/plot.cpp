#include "graph/plot.h"

#include <algorithm>

#include <qwt_plot_canvas.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_text_label.h>

#include "common/settings.h"
#include "data/expdata.h"
#include "graph/barkind.h"
#include "graph/curveanalysis.h"
#include "graph/graphaxes.h"
#include "graph/graphcurves.h"
#include "graph/graphdialogs.h"
#include "graph/graphlayout.h"
#include "graph/graphlegend.h"
#include "graph/graphmouse.h"
#include "graph/linekind.h"
#include "graph/markereditor.h"
#include "graph/markerlayer.h"
#include "graph/markermouse.h"
#include "graph/pinnedcurves.h"
#include "graph/predictedcurves.h"
#include "graph/readingline.h"
#include "graph/scalemanager.h"
#include "graph/slopetool.h"
#include "graph/spectrumkind.h"

namespace {

const KindTraits& traitsOf(graphtype type)
{
    switch (type) {
    case GRAPH_BAR:
        return BarKind::traits;
    case GRAPH_FFT:
        return SpectrumKind::traits;
    case GRAPH_LINE:
        break;
    }
    return LineKind::traits;
}

} // namespace

Plot::Plot(ExpData* data, graphtype type, bool /*isJunior*/, int index, QWidget* parent)
    : QwtPlot(parent)
    , scaler(std::make_unique<scaleManager>())
    , data(*data)
    , index(index)
    , traits(traitsOf(type))
    , axes(std::make_unique<GraphAxes>(*this, traits.isTimeInUnit))
    , curves(std::make_unique<GraphCurves>(*this, *data, *scaler, *axes, index))
    , parts(new GraphParts{*this, *data, *scaler, *axes, *curves, index})
    , layer(std::make_unique<MarkerLayer>(*parts, traits))
    , slope(std::make_unique<SlopeTool>(*parts, *layer))
    , editor(std::make_unique<MarkerEditor>(*this, *data, *layer))
    , markerMouse(std::make_unique<MarkerMouse>(*parts, *layer, *editor))
    , dialogs(std::make_unique<GraphDialogs>(*this, *data))
    , markers(layer->all())
    , curveMarker(layer->movable())
    , titleFont(titleLabel()->font())
{
    const QString& group = data->getGroupName();
    updateTitle(group.isEmpty() ? tr("New experiment") : group);
    createCanvas();
    createGrid();
    if (traits.hasLegend)
        connectLegend();
    createKind(type);
    if (traits.markers == MarkerForm::Curve) {
        predicted = std::make_unique<PredictedCurves>(*parts);
        predicted->attach(this);
    }
    connectMouse();
    connectDialogs();
    connect(layer.get(), &MarkerLayer::distanceTold, this, &Plot::twoMarkersUpdated);
    connect(layer.get(), &MarkerLayer::refused, this, &Plot::told);
    connect(layer.get(), &MarkerLayer::changing, this, &Plot::changing);
    connect(layer.get(), &MarkerLayer::changed, this, &Plot::changed);
    applyDesign();
    kind->setData();
}

Plot::~Plot() = default;

// Without a frame and a backing store of its own a repaint of the canvas is one pass over its pixels.
void Plot::createCanvas()
{
    auto* plain = new QwtPlotCanvas(this);
    plain->setObjectName(QStringLiteral("canvas"));
    plain->setFrameStyle(QFrame::NoFrame);
    plain->setPaintAttribute(QwtPlotCanvas::BackingStore, false);
    setCanvas(plain);
    setAutoReplot(false);
    setPlotLayout(new GraphLayout);
    plotLayout()->setAlignCanvasToScales(true);
}

void Plot::createGrid()
{
    grid = new QwtPlotGrid;
    grid->enableX(traits.hasTimeGrid);
    grid->enableXMin(traits.hasTimeGrid);
    grid->enableYMin(true);
    grid->setVisible(!Settings::mainStore().value(Settings::hideGrid, false).toBool());
    grid->attach(this);
}

void Plot::createKind(graphtype type)
{
    switch (type) {
    case GRAPH_LINE:
        kind = std::make_unique<LineKind>(*parts, *legendPart, *layer);
        break;
    case GRAPH_BAR: {
        auto made = std::make_unique<BarKind>(*parts, *legendPart, *layer);
        bars = made.get();
        kind = std::move(made);
        break;
    }
    case GRAPH_FFT:
        kind = std::make_unique<SpectrumKind>(*parts, *layer);
        break;
    }
}

void Plot::connectLegend()
{
    legendPart = std::make_unique<GraphLegend>(*this, data, *curves, traits.isStyled);
    connect(legendPart.get(), &GraphLegend::picked, this, &Plot::pickCurve);
    connect(legendPart.get(), &GraphLegend::shownForAll, this, &Plot::shownForAll);
    connect(legendPart.get(), &GraphLegend::countChosen, this, &Plot::count);
    connect(legendPart.get(), &GraphLegend::rightChosen, this,
            [this](int i, bool tf) { setRight(tf ? i : -1); });
    connect(legendPart.get(), &GraphLegend::pressedRight, this, [this](int i) {
        if (curves->at(i))
            rotateMode(i);
    });
}

void Plot::rotateMode(int i)
{
    Q_EMIT changing();
    curves->rotateMode(i);
    layer->renew();
    slope->renew(); // with its curve the tangent goes
    const myPlotCurve& curve = *curves->at(i);
    if (i == getActiveSens() && !curve.isShown())
        showAnyCurve();
    if (i == data.getRightIndex())
        kind->update(); // its axis comes and goes
    replot();
    const QString step = curve.isLine()     ? tr("Show %1")
                         : curve.isSymbol() ? tr("Points for %1")
                                            : tr("Hide %1");
    Q_EMIT changed(step.arg(curves->name(i)));
}

void Plot::count(int i, bool tf)
{
    const SensorPtr& sensor = data.getSens(i);
    if (!sensor)
        return;
    const QString group = sensor->groupName.isEmpty() ? curves->name(i) : sensor->groupName;
    change(tf ? tr("Count %1 in the average").arg(group) : tr("Leave %1 out of the average").arg(group), [&] {
        data.setOut(i, !tf);
        showCounted();
    });
}

void Plot::showCounted()
{
    curves->designPens();
    curves->renewAverage();
    if (legendPart)
        legendPart->fit();
    axes->setDue();
    Update();
}

void Plot::change(const QString& step, const std::function<void()>& how)
{
    Q_EMIT changing();
    how();
    Q_EMIT changed(step);
}

// The axis is that of a curve in sight. Of this graph alone: the class keeps its sensor.
void Plot::showAnyCurve()
{
    for (int i = 0; i < curves->size(); ++i) {
        if (curves->at(i)->isVisible()) {
            kind->showSensor(i);
            return;
        }
    }
}

void Plot::connectMouse()
{
    mouse = std::make_unique<GraphMouse>(*this, traits, *markerMouse, *slope);
    const GraphMouse* from = mouse.get();
    connect(from, &GraphMouse::titlePressed, this, &Plot::toggleChosen);
    connect(from, &GraphMouse::groundDoubleClicked, this, [this] { Q_EMIT enlargeAsked(index); });
    connect(from, &GraphMouse::titleDoubleClicked, this, [this] {
        if (index >= 0)
            toggleChosen();
        else
            dialogs->askForTitle(title().text());
    });
    connect(from, &GraphMouse::titlePressedRight, this, [this] {
        if (traits.hidesByTitle)
            Q_EMIT putAway();
    });
    connect(from, &GraphMouse::rangeAsked, this, [this](int axisID) {
        const int i = axisID == yRight ? data.getRightIndex() : getActiveSens();
        dialogs->askForRange(i, kind->range(i));
    });
    connect(from, &GraphMouse::xAsked, dialogs.get(), &GraphDialogs::askForX);
    connect(from, &GraphMouse::colorAsked, this, [this](const QPointF& pos) {
        if (traits.markers == MarkerForm::Frequency)
            Q_EMIT choiceAsked(canvas()->mapToGlobal(pos.toPoint()));
        const int i = kind->sensorAt(pos);
        if (getCurve(i))
            dialogs->askForColor(i, getCurvePen(i).color());
    });
    connect(from, &GraphMouse::crossRefused, this, &Plot::refuseAnalysis);
    connect(from, &GraphMouse::noteAsked, this, &Plot::newAnnotation);
    connect(from, &GraphMouse::pointedAt, this, &Plot::pointedAt);
    connectPen();
    connect(from, &GraphMouse::zoomedIn, this, [this](const QRectF& rect) { kind->zoomIn(rect); });
    connect(from, &GraphMouse::zoomedOut, this, [this] { kind->zoomOut(); });
}

void Plot::connectDialogs()
{
    const GraphDialogs* from = dialogs.get();
    connect(from, &GraphDialogs::titleChosen, this, [this](const QString& text) {
        updateTitle(text);
        Q_EMIT titleChanged(text);
    });
    connect(from, &GraphDialogs::colorChosen, this, [this](int iSens, const QColor& color) {
        if (!getCurve(iSens))
            return;
        otherColorChanged(iSens, color);
        Q_EMIT colorChanged(iSens, color);
    });
    connect(from, &GraphDialogs::rangeChosen, this, [this](const SensorPtr& sensor, double min, double max) {
        change(tr("Range of %1").arg(sensor->name), [&] { kind->setUserRange(sensor, min, max); });
    });
    connect(from, &GraphDialogs::rangeReleased, this, [this](const SensorPtr& sensor) {
        change(tr("Automatic range of %1").arg(sensor->name), [&] { kind->setAutomaticRange(sensor); });
    });
    connect(from, &GraphDialogs::xChosen, this,
            [this](int iSens) { change(tr("X axis"), [&] { setXSensor(iSens); }); });
}

// The active curve that goes to the x axis comes back with the next choice. Of this graph alone: the class
// keeps its sensor.
void Plot::setXSensor(int iSens)
{
    const int active = getActiveSens();
    const int own = data.isXYPlot() && active == standIn ? stoodInFor : active;
    standIn = -1;
    if (iSens == own) {
        stoodInFor = own;
        standIn = own != 0 ? 0 : 1;
        kind->showSensor(standIn);
    } else if (own != active) {
        kind->showSensor(own);
    }
    kind->setXSensor(iSens);
}

void Plot::setUserPrompt(UserPrompt* prompt)
{
    editor->setPrompt(prompt);
    dialogs->setPrompt(prompt);
}

// --- Curves ---

void Plot::setData()
{
    if (predicted)
        predicted->renew();
    kind->setData();
    if (legendPart) // other names take another room
        fitTexts();
    slope->renew();
}

void Plot::Update()
{
    kind->update();
}

void Plot::updateSens(int iSens)
{
    kind->showSensor(iSens);
    slope->renew();
}

int Plot::getActiveSens() const
{
    return curves->activeIndex();
}

QVector<int> Plot::getShownSensIDs() const
{
    return curves->shownIDs();
}

myPlotCurve* Plot::getCurve(int iSens) const
{
    return curves->at(iSens);
}

QPen Plot::getCurvePen(int iSens) const
{
    return curves->pen(iSens);
}

void Plot::keepCurveModesInData() const
{
    curves->keepModesInData();
}

void Plot::forceDefaultSetScale()
{
    Update();
}

void Plot::followAnew()
{
    kind->follow();
    slope->renew();
}

void Plot::setPinned(const QVector<PinnedRun>& runs, const QString& present)
{
    if (traits.markers != MarkerForm::Curve || (!pinned && runs.isEmpty()))
        return;
    if (!pinned) {
        pinned = std::make_unique<PinnedCurves>(*parts);
        pinned->attach(this);
        layer->setPinned(pinned.get());
    }
    pinned->setRuns(runs, present);
    layer->renew();
    replot();
}

void Plot::connectPen()
{
    connect(mouse.get(), &GraphMouse::penDown, this, [this](const QPointF& pos) {
        predicted->begin(pos);
        if (!predicted->isDrawing())
            Q_EMIT told(tr("A prediction is drawn over the time, for a sensor."));
        replot();
    });
    connect(mouse.get(), &GraphMouse::penMoved, this, [this](const QPointF& pos) {
        predicted->move(pos);
        axes->repaint();
    });
    connect(mouse.get(), &GraphMouse::penUp, this, [this](bool isKept) {
        const std::optional<Prediction> drawn = predicted->end();
        if (drawn && isKept)
            Q_EMIT predictionDrawn(*drawn);
        else if (drawn)
            replot();
    });
}

void Plot::showPredictions()
{
    if (predicted && predicted->renew())
        kind->follow();
}

void Plot::renewDeviations()
{
    const QRect part = predicted ? predicted->renewTexts() : QRect();
    if (!part.isEmpty())
        axes->repaint(part);
}

// Two sensors of one name resolve to the first.
void Plot::pickCurve(const QString& name)
{
    int i = 0;
    while (i < curves->size() && curves->name(i) != name)
        ++i;
    if (i < curves->size() && (bars ? i != getActiveSens() : getCurve(i)->isVisible()))
        Q_EMIT changedActiveCurve(index, i);
}

void Plot::otherColorChanged(int iSens, const QColor& color)
{
    if (!getCurve(iSens))
        return;
    curves->setColor(iSens, color);
    kind->showColor(iSens);
}

void Plot::replot()
{
    if (kind && kind->isBusy()) {
        updateAxes();
        return;
    }
    axes->settle();
    QwtPlot::replot();
    layer->placeTexts(); // the picture follows when the canvas paints
    if (reader)
        reader->place();
}

// What the axes leave to the canvas is known only when they have been laid out.
bool Plot::eventFilter(QObject* object, QEvent* event)
{
    const bool isTaken = QwtPlot::eventFilter(object, event);
    if (object == canvas() && event->type() == QEvent::Resize) {
        layer->placeTexts();
        if (reader)
            reader->place();
    }
    return isTaken;
}

void Plot::drawItems(QPainter* painter, const QRectF& canvasRect, const QwtScaleMap maps[axisCnt]) const
{
    curves->forgetColumns();
    QwtPlot::drawItems(painter, canvasRect, maps);
    curves->forgetColumns();
}

// --- Bars ---

void Plot::setBarData()
{
    if (bars)
        bars->setData();
}

void Plot::setBarColor()
{
    if (bars)
        bars->showColor();
}

void Plot::updateBarData(bool isRun)
{
    if (bars)
        bars->update(isRun);
}

void Plot::updateBarSens(int iSens, bool isRun)
{
    if (bars)
        bars->showSensor(iSens, isRun);
}

// --- Mouse modes ---

void Plot::enableZoom(bool tf)
{
    mouse->enableZoom(tf);
}

void Plot::enableAnnotate(bool tf)
{
    mouse->enableAnnotate(tf);
}

void Plot::enableMarker(bool tf)
{
    mouse->enableMarker(tf);
}

void Plot::enableSlope(bool tf)
{
    if (tf && !traits.takesAnalyses)
        refuseAnalysis();
    mouse->enableSlope(tf);
}

void Plot::enableReading(bool tf)
{
    const bool isRead = tf && (traits.markers == MarkerForm::Frequency || traits.takesAnalyses);
    mouse->enableReading(isRead);
    if (!isRead)
        reader.reset();
    else if (!reader)
        reader = std::make_unique<ReadingLine>(*parts, traits.markers);
}

void Plot::enablePredicting(bool tf, double length)
{
    if (!predicted)
        return;
    mouse->enablePen(tf);
    kind->makeRoom(tf ? length : 0);
}

QVector<Reading> Plot::readings(double x, double pixelY) const
{
    return reader ? reader->readings(x, pixelY, pinned.get()) : QVector<Reading>();
}

void Plot::refuseAnalysis()
{
    Q_EMIT told(tr("Markers and analyses need curves: choose the graph view for this group."));
}

// --- Markers ---

void Plot::setMarkers()
{
    Q_EMIT begunAnew();
    slope->hide();
    kind->startAnew();
    layer->clear();
}

void Plot::setMarkers(const QList<myPlotMarker*>& list)
{
    Q_EMIT begunAnew();
    slope->hide();
    kind->startAnew();
    layer->install(list);
}

PlotState Plot::state() const
{
    PlotState state;
    state.marks = Placed::of(markers);
    for (int i = 0; i < curves->size(); ++i)
        state.modes.append(curves->at(i)->getMode());
    state.outs = data.out();
    std::sort(state.outs.begin(), state.outs.end());
    state.activeSens = getActiveSens();
    state.xSensor = data.getXYIndex();
    state.right = data.getRightIndex();
    state.standIn = standIn;
    state.stoodInFor = stoodInFor;
    state.texts = layer->textLayout();
    return state;
}

void Plot::setState(const PlotState& present, const PlotState& wanted)
{
    for (int i = 0; i < std::min({wanted.modes.size(), present.modes.size(), curves->size()}); ++i) {
        if (wanted.modes[i] != present.modes[i])
            curves->setMode(i, wanted.modes[i]);
    }
    if (wanted.outs != present.outs) {
        for (const int i : present.outs)
            data.setOut(i, wanted.outs.contains(i));
        for (const int i : wanted.outs)
            data.setOut(i, true);
        showCounted();
    }
    if (wanted.xSensor != present.xSensor) {
        kind->setXSensor(wanted.xSensor);
        standIn = wanted.standIn;
        stoodInFor = wanted.stoodInFor;
    }
    if (wanted.activeSens != present.activeSens)
        kind->showSensor(wanted.activeSens);
    if (wanted.right != present.right)
        data.setRightIndex(wanted.right);
    kind->update();
    fitTexts(); // texts keep their places on axes that stand
    replot();
    if (!wanted.marks.isEmpty() || !present.marks.isEmpty())
        layer->place(wanted.marks, wanted.texts);
    slope->renew();
    replot();
}

void Plot::newAnnotation(const QPointF pos)
{
    editor->editNew(pos);
}

void Plot::newMarker(int iSens, int iReg, double xVal, double yVal)
{
    layer->addCross(iSens, iReg, xVal, yVal);
}

void Plot::removeMarker(myPlotMarker* marker)
{
    layer->remove(marker);
}

void Plot::verifyAndRemoveMarker(int mark)
{
    editor->askToRemove(markers.value(mark));
}

void Plot::lockMarker(myPlotMarker* marker, bool needConfirm)
{
    editor->lock(marker, needConfirm);
}

QString Plot::markerName(int type, bool translate)
{
    return translate ? MarkerTexts::kindName(type) : markerTypeName(type);
}

QString Plot::markerNameComp(int type)
{
    return MarkerTexts::kindNameInSentence(type);
}

int Plot::markerIndex(const QString& name, bool translate)
{
    for (int type = 0; type < MARKER_LAST; ++type) {
        if (!name.isEmpty() && markerName(type, translate) == name)
            return type;
    }
    return -1;
}

void Plot::doCrop()
{
    if (traits.markers == MarkerForm::Frequency) {
        refuseAnalysis();
        return;
    }
    editor->askToCrop();
}

void Plot::doRegression(int degree)
{
    if (!traits.takesAnalyses) {
        refuseAnalysis();
        return;
    }
    change(degree == 1 ? tr("Linear regression") : tr("Quadratic regression"),
           [&] { layer->addResult(CurveAnalysis::fit(*parts, degree, curveMarker)); });
}

void Plot::doIntegral()
{
    if (!traits.takesAnalyses) {
        refuseAnalysis();
        return;
    }
    change(tr("Integral"), [&] { layer->addResult(CurveAnalysis::integral(*parts, curveMarker)); });
}

Stretch Plot::stretch() const
{
    return traits.takesAnalyses ? CurveAnalysis::stretch(data, curveMarker, getActiveSens()) : Stretch();
}

void Plot::previewFit(const FittedCurve& fit, int iSens, double from, double to)
{
    const bool isShown = traits.takesAnalyses && !fit.isNone();
    layer->preview(isShown ? CurveAnalysis::placed(*parts, fit, iSens, from, to) : CurveAnalysis::Result());
}

void Plot::addFit(const FittedCurve& fit, int iSens, double from, double to)
{
    if (!traits.takesAnalyses)
        refuseAnalysis();
    else if (!fit.isNone())
        change(tr("Fit"), [&] { layer->addResult(CurveAnalysis::placed(*parts, fit, iSens, from, to)); });
}
