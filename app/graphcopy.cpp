#include "app/graphcopy.h"

#include "graph/myplotcurve.h"

#include <algorithm>

GraphCopy GraphCopy::of(const Plot& plot, const ExpData& set)
{
    GraphCopy copy;
    copy.index = plot.getIndex();
    copy.title = plot.title().text();
    copy.content = set.content();
    copy.predictions = set.predictions;
    copy.xSensor = set.getXYIndex();
    copy.selected = set.getSelectedSensor();
    copy.state = plot.state();
    for (int i = 0; i < copy.state.modes.size(); ++i) {
        const myPlotCurve* const curve = plot.getCurve(i);
        copy.colors.append(curve && curve->isUserColor() ? curve->getColor() : QColor());
    }
    return copy;
}

std::unique_ptr<Plot> GraphCopy::made(ExpData* set, const QSize& size) const
{
    set->setContent(content);
    set->predictions = predictions;
    set->setGroupName(title);
    set->setSelectedSensor(std::max(0, selected));
    set->setXYIndex(xSensor);
    auto plot = std::make_unique<Plot>(set, GRAPH_LINE, false, index);
    plot->resize(size);
    plot->updateTitle(title);
    plot->updateSens(std::max(0, selected));
    for (int i = 0; i < colors.size(); ++i) {
        if (colors[i].isValid())
            plot->otherColorChanged(i, colors[i]);
    }
    plot->setPinned(pinned, present);
    plot->showPredictions();
    plot->setThinned(true);
    plot->setAttribute(Qt::WA_DontShowOnScreen);
    plot->setAttribute(Qt::WA_ShowWithoutActivating);
    plot->show(); // else neither its parts nor its texts are given places
    PlotState wanted = state;
    wanted.texts.ground.clear(); // is that of another size
    plot->setState(plot->state(), wanted);
    return plot;
}
