#include "graph/plot.h"

#include <algorithm>

#include <QFontMetrics>
#include <QResizeEvent>

#include <qwt_legend.h>
#include <qwt_picker_machine.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_plot_picker.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_widget.h>
#include <qwt_text_label.h>

#include "app/common/common.h"
#include "app/common/settings.h"
#include "data/expdata.h"
#include "graph/curvepainter.h"
#include "graph/myplotcurve.h"
#include "graph/myplothistogram.h"
#include "graph/scalemanager.h"
#include "graph/timescaledraw.h"
#include "graph/timescaleengine.h"

namespace {

constexpr int axisFontSize = 11;
constexpr int leastTitleSize = 8;
constexpr int leastLegendSize = 8;
constexpr int greatestLegendSize = 13;
constexpr int pixelsPerLegendPoint = 64; // of the graph's width

// The title font of the language, or the next smaller one whose text has room.
QFont fitted(QFont font, const QString& text, int room)
{
    while (font.pointSize() > leastTitleSize && QFontMetrics(font).horizontalAdvance(text) > room)
        font.setPointSize(font.pointSize() - 1);
    return font;
}

QString busyTitle()
{
    return Plot::tr("Kormelin is busy with data collection, please wait");
}

} // namespace

QColor Plot::majGridColor(52, 52, 52);
QColor Plot::minGridColor(233, 233, 233);
QColor Plot::backgroundColor(Qt::white);
QColor Plot::backgroundColorActive(200, 200, 200);
double Plot::majGridW = 1;
double Plot::minGridW = 1;

Plot::Plot(ExpData* data, graphtype type, bool /*isJunior*/, int index, QWidget* parent)
    : QwtPlot(parent)
    , scaler(std::make_unique<scaleManager>())
    , data(data)
    , type(type)
    , index(index)
    , columnPainter(std::make_unique<CurvePainter>())
    , titleFont(titleLabel()->font())
    , axisTitleFont(axisTitle(yLeft).font())
{
    const QString group = data->getGroupName();
    updateTitle(group.isEmpty() ? tr("New experiment") : group);
    createCanvas();
    createGrid();
    const QSettings store = Settings::mainStore();
    setGridShown(!store.value(Settings::hideGrid, false).toBool());
    curveWidth = store.value(Settings::curveWidth, 2).toInt();
    curveWidthAct = store.value(Settings::curveWidthActive, 4).toInt();
    createAxes();
    if (type != GRAPH_FFT)
        createLegend();
    createZoomer();
    watchMouse();
    applyDesign();
    if (type == GRAPH_LINE)
        setData();
    else if (type == GRAPH_BAR)
        setBarData();
}

// Curves and markers draw from members of this class, so they go first.
Plot::~Plot()
{
    dropDeriv();
    clearMarkers();
    dropCurves();
}

// Without a frame and a backing store of its own a repaint of the canvas is one pass over its pixels.
void Plot::createCanvas()
{
    auto* plain = new QwtPlotCanvas(this);
    plain->setObjectName(QStringLiteral("canvas"));
    plain->setFrameStyle(QFrame::NoFrame);
    plain->setPaintAttribute(QwtPlotCanvas::BackingStore, false);
    setCanvas(plain);
    setAutoReplot(false);
    plotLayout()->setAlignCanvasToScales(true);
    setContentsMargins(3, 3, 8, 3);
}

void Plot::createGrid()
{
    grid = new QwtPlotGrid;
    grid->enableX(type != GRAPH_BAR);
    grid->enableXMin(type != GRAPH_BAR);
    grid->enableYMin(true);
    grid->attach(this);
}

void Plot::createAxes()
{
    if (type == GRAPH_LINE)
        setAxisRange(yLeft, 0, 1);
    QFont font;
    font.setPointSize(axisFontSize);
    setAxisFont(xBottom, font);
    setAxisFont(yLeft, font);
    for (int axisID : {xBottom, yLeft})
        axisWidget(axisID)->setMargin(0);
    myTimeScale = new TimeScaleDraw(type == GRAPH_BAR);
    setAxisScaleEngine(xBottom, new TimeScaleEngine(myTimeScale));
    setAxisScaleDraw(xBottom, myTimeScale);
}

void Plot::createZoomer()
{
    zoomer = new QwtPlotPicker(xBottom, yLeft, QwtPicker::RectRubberBand, QwtPicker::AlwaysOff, canvas());
    zoomer->setStateMachine(new QwtPickerDragRectMachine);
    zoomer->setEnabled(false);
    connect(zoomer, QOverload<const QRectF&>::of(&QwtPlotPicker::selected), this, &Plot::zoomIn);
}

void Plot::watchMouse()
{
    titleLabel()->installEventFilter(this);
    canvas()->installEventFilter(this);
    axisWidget(yLeft)->installEventFilter(this);
    axisWidget(xBottom)->installEventFilter(this);
}

void Plot::setGridShown(bool shown)
{
    grid->setVisible(shown);
}

void Plot::setGrid(bool shown)
{
    setGridShown(shown);
    replot();
}

void Plot::setAxisTitleAndSize(int axisID, const QString& text, int /*size*/)
{
    QFont font = axisTitleFont;
    if (Common::isLocale(QStringLiteral("he"))) {
        font = QFont(QStringLiteral("Arial"), 16, QFont::Bold);
        font.setLetterSpacing(QFont::AbsoluteSpacing, 1);
    }
    const QSize room = axisWidget(axisID)->size();
    QwtText title(text);
    title.setFont(fitted(font, text, axisID == xBottom ? room.width() : room.height()));
    setAxisTitle(axisID, title);
}

void Plot::updateTitle(const QString& text)
{
    QwtText newTitle(text);
    newTitle.setFont(fitted(titleFont, text, width()));
    setTitle(newTitle);
}

// A cell of a class of eight is small, a graph on the wall is large.
void Plot::resizeEvent(QResizeEvent* event)
{
    QwtPlot::resizeEvent(event);
    updateTitle(title().text());
    for (int axisID : {xBottom, yLeft})
        setAxisTitleAndSize(axisID, axisTitle(axisID).text(), 0);
    if (legendView) {
        QFont font = legendView->font();
        font.setPointSize(qBound(leastLegendSize, width() / pixelsPerLegendPoint, greatestLegendSize));
        legendView->setFont(font);
    }
    axesChanged = true;
}

void Plot::setTempTitle()
{
    if (title().text() == busyTitle())
        return;
    realTitle = title().text();
    updateTitle(busyTitle());
    Q_EMIT titleChanged(busyTitle());
}

void Plot::restoreTitle()
{
    if (title().text() != busyTitle())
        return;
    updateTitle(realTitle);
    Q_EMIT titleChanged(realTitle);
}

void Plot::otherTitleChanged(const QString& text)
{
    updateTitle(text);
}

void Plot::updateXAxisVisibility(bool shown)
{
    enableAxis(xBottom, shown);
}

void Plot::setActivePlot(int chosen)
{
    isActive = chosen == index;
    doUseDesignValues();
}

void Plot::doActivePlotIndicator()
{
    if (index >= 0)
        setCanvasBackground(isActive ? backgroundColorActive : backgroundColor);
}

void Plot::applyDesign()
{
    grid->setMajorPen(majGridColor, majGridW);
    grid->setMinorPen(minGridColor, minGridW);
    setCanvasBackground(backgroundColor);
    doActivePlotIndicator();
}

void Plot::doUseDesignValues()
{
    applyDesign();
    replot();
}

void Plot::setDesign()
{
    doUseDesignValues();
}

// The chosen graph's own canvas colour is for the screen only.
void Plot::setForPrint(bool tf)
{
    isActive = !tf;
    doActivePlotIndicator();
}

void Plot::alignGraphs(QwtPlot* main, QwtPlot* fft)
{
    QwtScaleWidget* const upper = main->axisWidget(yLeft);
    QwtScaleWidget* const lower = fft->axisWidget(yLeft);
    QwtScaleWidget* const narrower = upper->width() < lower->width() ? upper : lower;
    narrower->scaleDraw()->setMinimumExtent(std::max(upper->width(), lower->width()));
    fft->canvas()->setMaximumWidth(main->canvas()->width());
}
