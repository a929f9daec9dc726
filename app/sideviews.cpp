#include "app/sideviews.h"

#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "instruments/spectrumpane.h"

#include <QElapsedTimer>
#include <QSplitter>

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
    const int at = column->indexOf(graph);
    column->insertWidget(at + 1, pane);
    // The two share what the graph had.
    connect(pane, &SpectrumPane::appeared, this, [this, column, graph, pane] {
        QList<int> sizes = column->sizes();
        const int i = column->indexOf(graph);
        const int both = sizes.at(i) + sizes.at(i + 1);
        sizes[i] = sizes[i + 1] = both / 2;
        column->setSizes(sizes);
        disconnect(pane, &SpectrumPane::appeared, this, nullptr);
    });
    return pane;
}

// --- At their own pace ---

void SideViews::mark(int index)
{
    due.insert(index);
    if (!timer.isActive())
        timer.start(period(cost));
}

void SideViews::renew(int index)
{
    due.remove(index);
    renewNow(index);
}

bool SideViews::renewNow(int index)
{
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
