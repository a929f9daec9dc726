#include "app/sideviews.h"

#include "classroom/classrun.h"
#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "data/novalue.h"
#include "graph/plot.h"
#include "instruments/juniorsensorpallete.h"
#include "instruments/spectrumpane.h"
#include "instruments/table.h"
#include "instruments/thermometer.h"

#include <QElapsedTimer>
#include <QGridLayout>
#include <QSplitter>
#include <QVBoxLayout>

#include <cmath>

#include <utility>

namespace {
constexpr int quickestRenewal = 250; // ms
constexpr double partOfTime = 0.05;  // that renewing takes of the thread at most
} // namespace

SideViews::SideViews(multiConnectionsManager* manager, QObject* parent)
    : QObject(parent)
    , manager(manager)
{
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, &SideViews::renewDue);
}

int SideViews::period(double costMs)
{
    return qMax(quickestRenewal, int(costMs / partOfTime));
}

// --- Spectra ---

void SideViews::toggleSpectrum(Plot* target)
{
    const int index = target->getIndex();
    SpectrumPane* const known = spectra.value(index);
    if (known && known->isOpen() && known->isVisible()) {
        known->setOpen(false);
        return;
    }
    const bool isOfCurves = target == (index < 0 ? manager->plotC() : manager->plotAt(index));
    const ExpData* const set = index < 0 ? manager->dataC() : manager->dataAt(index);
    if (!isOfCurves)
        Q_EMIT told(tr("A spectrum needs curves: choose the graph view for this group."));
    else if (set->dt <= 0)
        Q_EMIT told(tr("A spectrum needs times; these samples were taken by hand."));
    else if (set->getYSize(target->getActiveSens()) < SpectrumPane::fewestSamples)
        Q_EMIT told(tr("A spectrum needs at least %n samples.", nullptr, SpectrumPane::fewestSamples));
    else
        paneUnder(target)->setOpen(true);
}

SpectrumPane* SideViews::paneUnder(Plot* graph)
{
    const int index = graph->getIndex();
    if (SpectrumPane* const known = spectra.value(index))
        return known;
    auto* const column = qobject_cast<QSplitter*>(graph->parentWidget());
    auto* const pane = new SpectrumPane(graph, index < 0 ? manager->dataC() : manager->dataAt(index));
    spectra.insert(index, pane);
    manager->setSpectrumAt(index, pane->plot());
    Q_EMIT graphMade(pane->plot());
    for (Plot* plot : {graph, pane->plot()})
        plot->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    const int at = column->indexOf(graph);
    column->insertWidget(at + 1, pane);
    connect(pane, &SpectrumPane::appeared, this, [graph](bool tf) { makeRoom(graph, tf); });
    return pane;
}

/// The graph and its spectrum share what the graph had, and their row of cells gets more of the window.
void SideViews::makeRoom(Plot* graph, bool isOpen)
{
    auto* const column = qobject_cast<QSplitter*>(graph->parentWidget());
    QList<int> sizes = column->sizes();
    const int i = column->indexOf(graph);
    if (isOpen && sizes.at(i + 1) == 0) {
        const int both = sizes.at(i);
        sizes[i] = sizes[i + 1] = both / 2;
        column->setSizes(sizes);
    }
    QWidget* const frame = graph->getIndex() < 0 ? nullptr : column->parentWidget()->parentWidget();
    auto* const grid = frame ? qobject_cast<QGridLayout*>(frame->parentWidget()->layout()) : nullptr;
    const int place = grid ? grid->indexOf(frame) : -1;
    if (place < 0)
        return;
    int row = 0;
    int other = 0;
    grid->getItemPosition(place, &row, &other, &other, &other);
    if (grid->rowStretch(row) > 0)
        grid->setRowStretch(row, isOpen ? 2 : 1);
}

// --- Tables and thermometers ---

QWidget* SideViews::make(int view, int index)
{
    return view == VIEW_TABLE ? makeTable(index) : makeThermometer(index);
}

QWidget* SideViews::titled(ClickableLabel* title, QWidget* view)
{
    constexpr int titlePoints = 14;
    QFont font = title->font();
    font.setPointSize(titlePoints);
    font.setWeight(QFont::Bold);
    title->setFont(font);
    title->setAlignment(Qt::AlignHCenter);
    title->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Minimum);
    connect(title, &ClickableLabel::clicked, this, &SideViews::titleClicked);
    auto* const both = new QWidget;
    auto* const column = new QVBoxLayout(both);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(title);
    column->addWidget(view, 1);
    return both;
}

QWidget* SideViews::makeTable(int index)
{
    auto* const table = new Table(manager->dataAt(index), index);
    auto* const title = new ClickableLabel(index, tr("Table"));
    title->setObjectName(QStringLiteral("tableTitle"));
    table->setTitle(title);
    tables.insert(index, table);
    connect(table, &Table::refused, this, &SideViews::told);
    connect(table, &Table::typed, this, &SideViews::edit);
    Plot* const graph = manager->plotAt(index);
    connect(graph, &Plot::changed, table, [this, index] { showCrosses(index); });
    connect(graph, &Plot::twoMarkersUpdated, table, [this, index] { showCrosses(index); });
    setTitle(index, manager->groupName(index));
    table->setActiveTable(manager->activeGraph());
    showCrosses(index);
    return titled(title, table);
}

QWidget* SideViews::makeThermometer(int index)
{
    auto* const meter = new ThermoMeter(false);
    thermometers.insert(index, meter);
    auto* const title = new ClickableLabel(index);
    title->setObjectName(QStringLiteral("thermometerTitle"));
    thermoTitles.insert(index, title);
    meter->setContextMenuPolicy(Qt::CustomContextMenu);
    meter->setToolTip(tr("A right click chooses the sensor."));
    connect(meter, &QWidget::customContextMenuRequested, this,
            [this, index, meter](const QPoint& at) { openPalette(index, meter->mapToGlobal(at)); });
    showValue(index);
    return titled(title, meter);
}

void SideViews::setTitle(int index, const QString& group)
{
    if (Table* const table = tables.value(index)) {
        table->getTitle()->setText(tr("Table: %1").arg(group));
        table->setTitle(table->getTitle()); // with the mark of the chosen one
    }
    showValue(index);
}

void SideViews::setActive(int index)
{
    for (Table* table : qAsConst(tables))
        table->setActiveTable(index);
}

void SideViews::setDesign()
{
    for (Table* table : qAsConst(tables))
        table->setDesign();
    for (ThermoMeter* meter : qAsConst(thermometers))
        meter->updateWithBackground();
}

void SideViews::showCrosses(int index)
{
    QVector<double> times;
    if (!manager->dataAt(index)->isXYPlot()) {
        for (const myPlotMarker* cross : manager->plotAt(index)->curveMarker)
            times.append(cross->xValue());
    }
    tables.value(index)->markTimes(times);
}

/// A step that can be taken back, of the group and of what the class shows of it.
void SideViews::edit(int index, int iSens, int row, double value)
{
    if (manager->isAnyRunning()) {
        Q_EMIT told(tr("A value can be changed when no logger is running."));
        return;
    }
    Plot* const graph = manager->plotAt(index);
    Q_EMIT graph->changing(true);
    manager->dataAt(index)->replaceYVal(iSens, row, value);
    Q_EMIT edited(index);
    ClassSet& classSet = manager->run().classSet();
    if (classSet.isMember(index)) {
        classSet.join(index);
        Q_EMIT edited(-1);
    }
    Q_EMIT graph->changed(tr("Value"));
}

/// The newest value of the chosen sensor.
void SideViews::showValue(int index)
{
    ThermoMeter* const meter = thermometers.value(index);
    if (!meter)
        return;
    const ExpData& set = *manager->dataAt(index);
    const int iSens = qMax(0, set.getSelectedSensor());
    meter->showSensor(set.getSens(iSens));
    int last = set.getYSize(iSens) - 1;
    while (last >= 0 && std::isnan(set.getYNoConvAt(iSens, last)))
        --last;
    meter->setValue(last < 0 ? noValue : set.getYAt(iSens, last));
    const SensorPtr& sensor = set.getSens(iSens);
    thermoTitles.value(index)->setText(
        QStringLiteral("%1: %2").arg(manager->groupName(index), sensor ? sensor->name : QString()));
}

void SideViews::openPalette(int index, const QPoint& at)
{
    const ExpData& set = *manager->dataAt(index);
    QVector<bool> active(set.getNSens(), false);
    const int chosen = set.getSelectedSensor();
    if (chosen >= 0 && chosen < active.size())
        active[chosen] = true;
    auto* const palette = new JuniorSensorPallete(set.getSensors(), active, thermometers.value(index));
    palette->setAttribute(Qt::WA_DeleteOnClose);
    palette->setMainButtonRect(QRect(at, QSize(1, 1)));
    palette->move(at);
    // One at a time; pressing the one that is shown leaves it.
    connect(palette, &JuniorSensorPallete::toggled, this, [this, index, palette](int iSens, bool) {
        Q_EMIT sensorChosen(index, iSens);
        palette->close();
    });
    palette->show();
}

// --- At their own pace ---

void SideViews::mark(int index)
{
    if (Table* const table = tables.value(index))
        table->follow();
    due.insert(index);
    if (!timer.isActive())
        timer.start(period(cost));
}

void SideViews::renew(int index)
{
    due.remove(index);
    if (Table* const table = tables.value(index))
        table->setData();
    renewNow(index);
}

bool SideViews::renewNow(int index)
{
    showValue(index);
    SpectrumPane* const spectrum = spectra.value(index);
    if (!spectrum || !spectrum->isVisible())
        return false; // it does so when it comes into sight
    spectrum->renew();
    return true;
}

void SideViews::renewDue()
{
    QElapsedTimer watch;
    watch.start();
    bool isAny = false;
    for (const int index : std::exchange(due, {}))
        isAny = renewNow(index) || isAny;
    if (isAny)
        cost = double(watch.nsecsElapsed()) * 1e-6;
}
