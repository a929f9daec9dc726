// What the mouse does on a graph, and the dialogs it opens. Events are observed and passed on.

#include "graph/plot.h"

#include <QAction>
#include <QMenu>
#include <QMouseEvent>

#include <qwt_legend.h>
#include <qwt_plot_picker.h>
#include <qwt_scale_widget.h>
#include <qwt_text_label.h>

#include "common/userprompt.h"
#include "data/expdata.h"
#include "graph/scalemanager.h"
#include "graph/setrange.h"

namespace {

constexpr double colourReach = 20; // how near a curve a right press picks its colour

bool isPress(const QEvent* event, Qt::MouseButton button)
{
    return event->type() == QEvent::MouseButtonPress &&
           static_cast<const QMouseEvent*>(event)->button() == button;
}

} // namespace

void Plot::enableZoom(bool tf)
{
    isZoom = tf;
    zoomer->setEnabled(tf);
    if (tf)
        isAnnotate = isMarker = false;
}

void Plot::enableAnnotate(bool tf)
{
    if (tf) {
        enableZoom(false);
        isMarker = false;
        enableSlope(false);
    }
    isAnnotate = tf;
}

void Plot::enableMarker(bool tf)
{
    if (tf) {
        enableZoom(false);
        isAnnotate = false;
        enableSlope(false);
    }
    isMarker = tf;
}

void Plot::enableSlope(bool tf)
{
    if (tf) {
        enableZoom(false);
        isAnnotate = isMarker = false;
    }
    isSlope = tf;
    canvas()->setMouseTracking(tf);
    if (tf)
        newDeriv();
    else
        dropDeriv();
}

bool Plot::eventFilter(QObject* object, QEvent* event)
{
    auto* const widget = qobject_cast<QWidget*>(object);
    if (legendView && widget && (widget == legendView->contentsWidget() || legendItems.contains(widget))) {
        if (isPress(event, Qt::RightButton))
            rightPressLegend(object, static_cast<const QMouseEvent*>(event));
        return false;
    }
    if (object == axisWidget(yLeft)) {
        if (type != GRAPH_FFT && isPress(event, Qt::RightButton))
            setScale();
    } else if (object == axisWidget(xBottom)) {
        if (type == GRAPH_LINE && isPress(event, Qt::RightButton))
            setXYGraph(static_cast<QMouseEvent*>(event)->globalPos());
    } else if (object == titleLabel()) {
        mouseOnTitle(event);
    } else if (object == canvas()) {
        mouseOnCanvas(event);
    }
    return QwtPlot::eventFilter(object, event);
}

void Plot::mouseOnTitle(QEvent* event)
{
    if (isPress(event, Qt::LeftButton)) {
        toggleChosen();
    } else if (event->type() == QEvent::MouseButtonDblClick) {
        if (index >= 0)
            toggleChosen();
        else
            changeTitle();
    } else if (type == GRAPH_FFT && isPress(event, Qt::RightButton)) {
        hide();
    }
}

void Plot::mouseOnCanvas(QEvent* event)
{
    // Events of every kind pass here; only those of the mouse have a place and a button.
    const auto* mouse = dynamic_cast<const QMouseEvent*>(event);
    if (!mouse)
        return;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        if (mouse->button() == Qt::LeftButton)
            pressMarker(mouse->pos());
        else if (mouse->button() == Qt::RightButton && !rightPressMarker(mouse))
            selectColorAt(mouse->pos());
        break;
    case QEvent::MouseButtonDblClick:
        doubleClickMarker(mouse->pos());
        break;
    case QEvent::MouseMove:
        dragMarker(mouse->pos());
        break;
    case QEvent::MouseButtonRelease:
        if (mouse->button() == Qt::LeftButton)
            releaseMarker();
        else if (mouse->button() == Qt::RightButton && isZoom)
            zoomOut();
        break;
    default:
        break;
    }
}

void Plot::selectColorAt(const QPointF& pos)
{
    constexpr int fewSamples = 2;
    if (type == GRAPH_BAR) {
        selectColor(activeSens);
    } else if (data->getXSize() > fewSamples) {
        const NearPoint near = isNearCurve(pos, false);
        if (near.iSens >= 0 && near.dist < colourReach)
            selectColor(near.iSens);
    }
}

void Plot::toggleChosen()
{
    Q_EMIT changedActivePlot(isActive ? -1 : index);
}

void Plot::changeTitle()
{
    if (!userPrompt)
        return;
    const QPointer<Plot> alive(this);
    const auto answer = userPrompt->text(this, tr("Edit graph title"), tr("Graph title:"), title().text());
    if (!alive || !answer || answer->isEmpty())
        return;
    data->setNeedSave(true);
    updateTitle(*answer);
    Q_EMIT titleChanged(*answer);
}

void Plot::setScale()
{
    const SensorPtr sensor = data->getSens(activeSens);
    if (!sensor)
        return;
    double newMin = 0;
    double newMax = 0;
    const QPointer<Plot> alive(this);
    const QPointer<SetRange> dialog = new SetRange(this);
    dialog->sensName(tr("%1 Sensor").arg(sensor->name));
    dialog->Params(sensor->minView, sensor->maxView, sensor->min, sensor->max, &newMin, &newMax);
    const bool accepted = dialog->exec() == QDialog::Accepted;
    if (dialog)
        dialog->deleteLater();
    if (!alive || !accepted)
        return;
    data->setNeedSave(true);
    applyUserScale(sensor, newMin, newMax);
}

// On the graph of the class the range goes to all sensors of the kind.
void Plot::applyUserScale(const SensorPtr& sensor, double newMin, double newMax)
{
    if (type == GRAPH_BAR) {
        sensor->barUserMin = newMin;
        sensor->barUserMax = newMax;
        sensor->barUserScale = true;
    } else if (index >= 0) {
        const int i = data->getSensors().indexOf(sensor);
        if (i < 0 || i >= scaler->scales.size())
            return;
        sensor->readSetMinMax = true;
        scaler->scales[i]->calcScales();
        scaler->scales[i]->setUserScales(newMin, newMax, false);
    } else {
        for (const SensorPtr& other : data->getSensors()) {
            if (!other || other->ID != sensor->ID)
                continue;
            other->classMinView = newMin;
            other->classMaxView = newMax;
            other->readClassMinMax = false;
            other->readClassSetMinMax = true;
        }
    }
    Update();
}

void Plot::setXYGraph(const QPoint& globalPos)
{
    if (data->getNSens() < 2)
        return;
    auto* menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("xAxisMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const auto addChoice = [&](const QString& text, int sel) {
        QAction* const choice = menu->addAction(text);
        choice->setData(sel);
        choice->setCheckable(true);
        choice->setChecked(data->getXYIndex() == sel);
    };
    addChoice(tr("Time"), -1);
    menu->addSeparator();
    for (int i = 0; i < data->getNSens(); ++i)
        addChoice(data->getSens(i)->name, i);
    connect(menu, &QMenu::triggered, this,
            [this](const QAction* choice) { chooseXSensor(choice->data().toInt()); });
    menu->popup(globalPos);
}

// The data can have changed while the menu stood open.
void Plot::chooseXSensor(int sel)
{
    if (sel >= data->getNSens())
        return;
    if (sel == activeSens)
        Q_EMIT changedActiveCurve(index, sel != 0 ? 0 : 1);
    setXYIndex(sel);
}
