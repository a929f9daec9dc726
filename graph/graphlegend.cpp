#include "graph/graphlegend.h"

#include <QAction>
#include <QFontMetrics>
#include <QLayout>
#include <QMenu>
#include <QMouseEvent>

#include <qwt_legend.h>
#include <qwt_legend_label.h>
#include <qwt_plot.h>

#include "data/expdata.h"
#include "graph/graphcurves.h"
#include "graph/graphdesign.h"
#include "graph/myplotcurve.h"

namespace {

constexpr int itemMargin = 1;
constexpr int besideText = 34; // symbol and margins

} // namespace

GraphLegend::GraphLegend(QwtPlot& plot, const ExpData& data, const GraphCurves& curves, bool isStyled)
    : plot(plot)
    , data(data)
    , curves(curves)
    , isStyled(isStyled)
    , view(new QwtLegend(&plot))
{
    view->setObjectName(QStringLiteral("legend"));
    view->setDefaultItemMode(QwtLegendData::Clickable);
    view->contentsWidget()->layout()->setSpacing(0);
    plot.insertLegend(view, QwtPlot::RightLegend);
    connect(view, &QwtLegend::clicked, this, [this](const QVariant& info) {
        if (const QwtPlotItem* item = this->plot.infoToItem(info))
            Q_EMIT picked(item->title().text());
    });
    if (isStyled)
        view->contentsWidget()->installEventFilter(this);
}

void GraphLegend::watchEntries()
{
    items.clear();
    for (int i = 0; i < curves.size(); ++i) {
        auto* const item = qobject_cast<QwtLegendLabel*>(view->legendWidget(plot.itemToInfo(curves.at(i))));
        if (!item)
            continue;
        if (!isStyled)
            continue;
        item->installEventFilter(this);
        item->setToolTip(tr("Right click: line, points or hidden. With Shift: more."));
        items.append(item);
    }
    fit();
}

// An entry wider than the graph is the only one that shrinks.
void GraphLegend::fit()
{
    QFont font = GraphFonts::inPixels(QFont(), GraphFonts::textPixels(plot.height()));
    QString longest;
    for (int i = 0; i < curves.size(); ++i) {
        const QString name = curves.name(i);
        if (QFontMetrics(font).horizontalAdvance(name) > QFontMetrics(font).horizontalAdvance(longest))
            longest = name;
    }
    font = GraphFonts::fitted(font, longest, plot.width() - besideText);
    const int margin = GraphFonts::isLow(plot.height()) ? 0 : itemMargin;
    for (QwtLegendLabel* item : view->findChildren<QwtLegendLabel*>()) {
        font.setStrikeOut(data.isOut(items.indexOf(item)));
        item->setFont(font);
        item->setMargin(margin);
        item->setIcon(item->icon()); // works out its indent with the margin
    }
}

bool GraphLegend::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        const auto* mouse = static_cast<const QMouseEvent*>(event);
        if (mouse->button() == Qt::RightButton)
            rightPress(object, mouse);
    }
    return false;
}

// On an entry a right press changes the curve, so its menu takes Shift; beside the entries it is that of the
// shown sensor.
void GraphLegend::rightPress(QObject* object, const QMouseEvent* event)
{
    const int item = items.indexOf(qobject_cast<QWidget*>(object));
    const QWidget* const beside = view->contentsWidget();
    if (item >= 0 && !(event->modifiers() & Qt::ShiftModifier))
        Q_EMIT pressedRight(item);
    else if (item >= 0 || (object == beside && !beside->childAt(event->pos())))
        openMenu(item >= 0 ? item : curves.activeIndex(), event->globalPos());
}

void GraphLegend::openMenu(int i, const QPoint& globalPos)
{
    const SensorPtr& sensor = data.getSens(i);
    if (!sensor)
        return;
    auto* menu = new QMenu(&plot);
    menu->setObjectName(QStringLiteral("legendMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addSection(sensor->name);
    const int id = sensor->ID;
    QAction* const all =
        menu->addAction(tr("Show for all groups"), this, [this, id] { Q_EMIT shownForAll(id); });
    all->setObjectName(QStringLiteral("showForAllAct"));
    if (isStyled && curves.hasOwnScale(i)) {
        QAction* const right = menu->addAction(tr("Scale on the right"));
        right->setObjectName(QStringLiteral("rightAct"));
        right->setCheckable(true);
        right->setChecked(data.getRightIndex() == i);
        connect(right, &QAction::triggered, this, [this, i](bool tf) { Q_EMIT rightChosen(i, tf); });
    }
    if (data.isAverage(data.meanIndex()) && i < data.meanIndex()) {
        QAction* const count = menu->addAction(tr("Count in the average"));
        count->setObjectName(QStringLiteral("countAct"));
        count->setCheckable(true);
        count->setChecked(!data.isOut(i));
        connect(count, &QAction::triggered, this, [this, i](bool tf) { Q_EMIT countChosen(i, tf); });
    }
    menu->popup(globalPos);
}
