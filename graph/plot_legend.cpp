// Legend, colours and styles of the curves.

#include "graph/plot.h"

#include <QColor>
#include <QLayout>
#include <QMenu>
#include <QMouseEvent>
#include <QPen>

#include <qwt_legend.h>
#include <qwt_legend_label.h>
#include <qwt_symbol.h>

#include "common/userprompt.h"
#include "data/expdata.h"
#include "graph/colorscale.h"
#include "graph/myplotcurve.h"

namespace {

constexpr int symbolSize = 10;
constexpr QSize iconSize(22, 10);
constexpr int itemMargin = 1;

} // namespace

void Plot::createLegend()
{
    legendView = new QwtLegend(this);
    legendView->setObjectName(QStringLiteral("legend"));
    legendView->setDefaultItemMode(QwtLegendData::Clickable);
    legendView->contentsWidget()->layout()->setSpacing(0);
    insertLegend(legendView, RightLegend);
    connect(legendView, &QwtLegend::clicked, this, &Plot::handleLegend);
    if (type == GRAPH_LINE)
        legendView->contentsWidget()->installEventFilter(this);
}

void Plot::watchLegendItem(myPlotCurve* curve)
{
    curve->setLegendIconSize(iconSize);
    auto* const item = qobject_cast<QwtLegendLabel*>(legendView->legendWidget(itemToInfo(curve)));
    if (!item)
        return;
    item->setMargin(itemMargin);
    if (type != GRAPH_LINE)
        return;
    item->installEventFilter(this);
    item->setToolTip(tr("Right click: line, points or hidden. With Shift: more."));
    legendItems.append(item);
}

QString Plot::legendName(int i) const
{
    const SensorPtr& sensor = data->getSens(i);
    QString name = sensor ? sensor->nameForLegend(index < 0) : QString();
    // The channels of a file have no groups; only the class at work has an average that can lack some.
    if (index >= 0 || i != data->meanIndex() || !sensor || sensor->groupName.isEmpty())
        return name;
    const int groups = data->groupsInAverage();
    return groups > 0 && groups < i ? tr("%1 (%2)").arg(name).arg(groups) : name;
}

// Groups come and go in a run.
void Plot::renewAverageName()
{
    const int mean = data->meanIndex();
    if (mean < 0 || mean >= curves.size() || curves[mean]->title().text() == legendName(mean))
        return;
    setCurvePen(mean);
    axesChanged = true;
}

// In repeat mode the second half of the curves is the present run and takes the colours of the first.
QColor Plot::curveColor(int i) const
{
    const int half = nSens / 2;
    if (data->isRepeatMode() && half > 0 && i >= half)
        return curveColor(i - half);
    if (hasColorimeter >= 0)
        return ColorScale::myColorsForColorimeter(i, hasColorimeter);
    return curves[i]->isUserColor() ? curves[i]->getColor() : ColorScale::myColors(i);
}

QColor Plot::legendColor(int i) const
{
    return curves[i]->isVisible() ? textColor : QColor(Qt::gray);
}

void Plot::setCurvePen(int i)
{
    myPlotCurve* const curve = curves[i];
    QwtText title(legendName(i));
    title.setColor(legendColor(i));
    if (curve->isVisible()) {
        curve->setColor(curveColor(i));
        QPen pen(curve->getColor(), i == activeSens ? curveWidthAct : curveWidth);
        if (data->isRepeatMode() && i < nSens / 2)
            pen.setDashPattern({4, 4});
        curve->setPen(pen);
    } else {
        curve->setPen(QPen(Qt::transparent, 0));
    }
    curve->setTitle(title);
    curve->setLegendIconSize(iconSize); // pen and symbol set a size of their own
}

void Plot::designCurve(int i)
{
    if (i < 0 || i >= curves.size())
        return;
    myPlotCurve* const curve = curves[i];
    const bool isXSensor = data->isXYPlot() && data->getXYIndex() == i;
    const bool isSymbol = curve->isSymbol() && !isXSensor;
    const bool isLine = curve->isLine() && !isXSensor;
    curve->setVisible(curve->isShown() && !isXSensor);
    curve->setLegendAttribute(QwtPlotCurve::LegendShowSymbol, isSymbol);
    curve->setLegendAttribute(QwtPlotCurve::LegendShowLine, isLine);
    setCurvePen(i); // gives the symbol its colour
    if (isSymbol) {
        curve->setSymbol(new QwtSymbol(QwtSymbol::Diamond, curve->getColor(), QPen(curve->getColor(), 1),
                                       QSize(symbolSize, symbolSize)));
        curve->setStyle(QwtPlotCurve::NoCurve);
    } else {
        curve->setSymbol(nullptr);
    }
    if (isLine)
        curve->setStyle(QwtPlotCurve::Lines);
    axesChanged = true;
}

// Two sensors of one name resolve to the first.
void Plot::handleLegend(const QVariant& itemInfo, int /*pos*/)
{
    const QwtPlotItem* const item = infoToItem(itemInfo);
    if (!item)
        return;
    int i = 0;
    while (i < curves.size() && legendName(i) != item->title().text())
        ++i;
    if (i == curves.size())
        return;
    if (type == GRAPH_BAR ? i != activeSens : curves[i]->isVisible())
        Q_EMIT changedActiveCurve(index, i);
}

void Plot::handleLegendRight(int item)
{
    if (item < 0 || item >= curves.size())
        return;
    const int mode = curves[item]->rotateMode();
    if (data->curveModeHint.value(item, -1) >= 0)
        data->curveModeHint[item] = mode; // what the file said is no longer so
    designCurve(item);
    showMarkersWithCurves();
    replot();
}

// On an entry a right press changes the curve, so its menu takes Shift; beside the entries it is that of the
// shown sensor.
void Plot::rightPressLegend(QObject* object, const QMouseEvent* event)
{
    const int item = legendItems.indexOf(qobject_cast<QWidget*>(object));
    const QWidget* const beside = legendView->contentsWidget();
    if (item >= 0 && !(event->modifiers() & Qt::ShiftModifier))
        handleLegendRight(item);
    else if (item >= 0 || (object == beside && !beside->childAt(event->pos())))
        openLegendMenu(item >= 0 ? item : activeSens, event->globalPos());
}

void Plot::openLegendMenu(int item, const QPoint& globalPos)
{
    const SensorPtr& sensor = data->getSens(item);
    if (!sensor)
        return;
    auto* menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("legendMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addSection(sensor->name);
    const int id = sensor->ID;
    QAction* const all =
        menu->addAction(tr("Show for all groups"), this, [this, id] { Q_EMIT shownForAll(id); });
    all->setObjectName(QStringLiteral("showForAllAct"));
    menu->popup(globalPos);
}

void Plot::selectColor(int iSens)
{
    const SensorPtr& sensor = data->getSens(iSens);
    if (type == GRAPH_FFT || !sensor || !userPrompt || iSens >= curves.size())
        return;
    const QPointer<Plot> alive(this);
    const auto answer = userPrompt->color(this, tr("Select color for %1").arg(sensor->name),
                                          getCurvePen(iSens).color().rgba());
    if (!answer || !alive || iSens >= curves.size())
        return;
    const QColor color = QColor::fromRgba(*answer);
    data->setNeedSave(true);
    otherColorChanged(iSens, color);
    Q_EMIT colorChanged(iSens, color);
}

void Plot::otherColorChanged(int iSens, const QColor& color)
{
    if (iSens < 0 || iSens >= curves.size())
        return;
    curves[iSens]->setColor(color);
    if (type == GRAPH_BAR) {
        setBarEntryPen(iSens);
        setBarColor();
    } else {
        designCurve(iSens);
    }
    replot();
}
