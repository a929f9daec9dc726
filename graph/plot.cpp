#include "graph/plot.h"

#include <algorithm>

#include <QFontInfo>
#include <QFontMetrics>
#include <QResizeEvent>

#include <qwt_legend.h>
#include <qwt_legend_label.h>
#include <qwt_picker_machine.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_plot_picker.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_widget.h>
#include <qwt_text_label.h>

#include "common/common.h"
#include "common/settings.h"
#include "data/expdata.h"
#include "graph/curvepainter.h"
#include "graph/myplotcurve.h"
#include "graph/myplothistogram.h"
#include "graph/scalemanager.h"
#include "graph/timescaledraw.h"
#include "graph/timescaleengine.h"

namespace {

constexpr int axisFontSize = 11;
constexpr int greatestLegendSize = 13;
constexpr int pixelsPerLegendPoint = 45; // of the graph's width
constexpr int leastLegendSize = 8;

// In a small cell the texts leave most of the room to the curves, whatever size they have elsewhere.
constexpr int leastPixels = 8;
constexpr int titlesPerHeight = 12;
constexpr int axisTitlesPerHeight = 15;
constexpr int axisLabelsPerHeight = 16;
constexpr int axisLabelsPerWidth = 25;
constexpr int pixelsPerTickX = 55; // of the graph's width
constexpr int pixelsPerTickY = 28;
constexpr int leastTicks = 2;
constexpr int mostTicks = 8;
constexpr double legendPart = 0.36;  // of the width
constexpr int besideLegendText = 34; // symbol and margins

int pixelsOf(const QFont& font)
{
    return QFontInfo(font).pixelSize();
}

QFont atMost(QFont font, int pixels)
{
    if (pixelsOf(font) > pixels)
        font.setPixelSize(std::max(leastPixels, pixels));
    return font;
}

// The font, or the next smaller one whose text has room.
QFont fitted(QFont font, const QString& text, int room)
{
    for (int pixels = pixelsOf(font);
         pixels > leastPixels && QFontMetrics(font).horizontalAdvance(text) > room;)
        font.setPixelSize(--pixels);
    return font;
}

QString busyTitle()
{
    return Plot::tr("Kormelin is busy with data collection, please wait");
}

QColor inkOn(const QColor& ground)
{
    return Plot::isDark(ground) ? QColor(0xf4, 0xf6, 0xf8) : QColor(0x1b, 0x27, 0x33);
}

} // namespace

QColor Plot::majGridColor(52, 52, 52);
QColor Plot::minGridColor(233, 233, 233);
QColor Plot::surroundings(0xf0, 0xf0, 0xf0);
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
    const QString& group = data->getGroupName();
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
    const QSize size = canvas() ? canvas()->size() : this->size();
    const int room = axisID == xBottom ? size.width() : size.height();
    font = fitted(atMost(font, height() / axisTitlesPerHeight), text, room);
    // One more: widths are rounded when a font is chosen and are not when a text is elided.
    const QString shown = QFontMetrics(font).elidedText(text, Qt::ElideRight, room + 1);
    QwtText title(shown);
    title.setFont(font);
    setAxisTitle(axisID, title);
    axisWidget(axisID)->setToolTip(shown == text ? QString() : text);
    axisTexts[axisID] = text;
}

void Plot::updateTitle(const QString& text)
{
    QwtText newTitle(text);
    const int room = canvas() ? canvas()->width() : width();
    newTitle.setFont(fitted(atMost(titleFont, height() / titlesPerHeight), text, room));
    setTitle(newTitle);
}

// A cell of a class of eight is small, a graph on the wall is large.
void Plot::resizeEvent(QResizeEvent* event)
{
    QwtPlot::resizeEvent(event);
    fitTexts();
    replot(); // with as many ticks as there is room for now
}

// The room for the titles is what labels and legend leave.
void Plot::fitTexts()
{
    QFont labels;
    labels.setPointSize(axisFontSize);
    labels = atMost(labels, std::min(height() / axisLabelsPerHeight, width() / axisLabelsPerWidth));
    for (int axisID : {xBottom, yLeft})
        setAxisFont(axisID, labels);
    setAxisMaxMajor(xBottom, qBound(leastTicks, width() / pixelsPerTickX, mostTicks));
    setAxisMaxMajor(yLeft, qBound(leastTicks, height() / pixelsPerTickY, mostTicks));
    fitLegend();
    updateLayout();
    for (int axisID : {xBottom, yLeft})
        setAxisTitleAndSize(axisID, QString(axisTexts[axisID]), 0);
    updateTitle(title().text());
    axesChanged = true;
}

void Plot::fitLegend()
{
    if (!legendView)
        return;
    QFont font;
    font.setPointSize(qBound(leastLegendSize, width() / pixelsPerLegendPoint, greatestLegendSize));
    QString longest;
    for (int i = 0; i < curves.size(); ++i) {
        const QString name = legendName(i);
        if (QFontMetrics(font).horizontalAdvance(name) > QFontMetrics(font).horizontalAdvance(longest))
            longest = name;
    }
    const int lines = std::max(curves.size(), 1);
    font = atMost(font, int(height() / (1.5 * lines)));
    font = fitted(font, longest, int(legendPart * width()) - besideLegendText);
    for (QwtLegendLabel* item : legendView->findChildren<QwtLegendLabel*>())
        item->setFont(font);
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
    setTextsForPaper(false);
}

bool Plot::isDark(const QColor& ground)
{
    constexpr int evenContrast = 118; // to black and to white
    return qGray(ground.rgb()) < evenContrast;
}

void Plot::setTextsForPaper(bool tf)
{
    textColor = tf ? inkOn(Qt::white) : inkOn(surroundings);
    // Under a style sheet the palette of the graph does not reach its parts.
    for (QWidget* part : {static_cast<QWidget*>(titleLabel()), static_cast<QWidget*>(axisWidget(xBottom)),
                          static_cast<QWidget*>(axisWidget(yLeft))}) {
        QPalette colors = part->palette();
        for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text})
            colors.setColor(role, textColor);
        part->setPalette(colors);
    }
    for (int i = 0; i < curves.size(); ++i) {
        QwtText name = curves[i]->title();
        name.setColor(legendColor(i));
        curves[i]->setTitle(name);
    }
    // A page has room for the titles that a small cell had not.
    for (int axisID : {xBottom, yLeft}) {
        if (tf) {
            QwtText whole(axisTexts[axisID]);
            whole.setFont(axisTitleFont);
            setAxisTitle(axisID, whole);
        } else {
            setAxisTitleAndSize(axisID, QString(axisTexts[axisID]), 0);
        }
    }
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
    setTextsForPaper(tf);
}

void Plot::alignGraphs(QwtPlot* main, QwtPlot* fft)
{
    QwtScaleWidget* const upper = main->axisWidget(yLeft);
    QwtScaleWidget* const lower = fft->axisWidget(yLeft);
    QwtScaleWidget* const narrower = upper->width() < lower->width() ? upper : lower;
    narrower->scaleDraw()->setMinimumExtent(std::max(upper->width(), lower->width()));
    fft->canvas()->setMaximumWidth(main->canvas()->width());
}
