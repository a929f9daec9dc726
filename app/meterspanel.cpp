#include "app/meterspanel.h"

#include "classroom/classrun.h"
#include "classroom/commandqueue.h"
#include "classroom/multiconnectionsmanager.h"
#include "classroom/newestvalues.h"
#include "graph/graphdesign.h"
#include "protocol/tembrindata.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QToolButton>

namespace {

constexpr int msBetweenFetches = 1000;
constexpr int msBetweenValues = 250; // digits that change faster can't be read
constexpr int eachGroup = 0;         // instead of a number of meters

} // namespace

MetersPanel::MetersPanel(multiConnectionsManager* manager, int iconDim, std::function<bool()> mayAsk,
                         QWidget* parent)
    : QSplitter(Qt::Vertical, parent)
    , manager(manager)
    , mayAsk(std::move(mayAsk))
    , values(new NewestValues(manager, this))
    , newMeters(
          new SteelMeter(manager->tembrinDataAt(0), [this](int of, int id) { return values->value(of, id); }))
{
    setObjectName(QStringLiteral("newMetersW"));
    setChildrenCollapsible(false);
    newMeters->setObjectName(QStringLiteral("newMeters"));
    addWidget(newMeters);
    addWidget(createToolBar(iconDim));
    setStretchFactor(0, 1);
    values->setObjectName(QStringLiteral("newestValues"));
    fetchTimer.setObjectName(QStringLiteral("fetchTimer"));
    fetchTimer.setInterval(msBetweenFetches);
    connect(&fetchTimer, &QTimer::timeout, this, &MetersPanel::doFetch);
    valuesTimer.setSingleShot(true);
    valuesTimer.setInterval(msBetweenValues);
    connect(&valuesTimer, &QTimer::timeout, this, &MetersPanel::showValues);
    connect(values, &NewestValues::changed, this, &MetersPanel::noteValues);
    for (int i = 0; i < manager->nMaxTembrins(); ++i) {
        connect(manager->tembrinDataAt(i), &TembrinData::loggerTypeChanged, this, [this, i] {
            if (i == slot)
                newMeters->setTembrinData(this->manager->tembrinDataAt(i));
        });
    }
    useDesignValues();
}

QWidget* MetersPanel::createToolBar(int iconDim)
{
    auto* bar = new QWidget;
    bar->setObjectName(QStringLiteral("meterToolBar"));
    auto* layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    group = new QComboBox;
    group->setObjectName(QStringLiteral("meterGroup"));
    group->setAccessibleName(tr("Group whose meters are shown"));
    group->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    connect(group, qOverload<int>(&QComboBox::activated), this, &MetersPanel::groupChosen);
    layout->addStretch();
    layout->addWidget(group);
    numbers = new QButtonGroup(this);
    addButton(layout, iconDim, 6, QStringLiteral(":/icons/6meters.png"), tr("Six meters"));
    addButton(layout, iconDim, 4, QStringLiteral(":/icons/4meters.png"), tr("Four meters"));
    addButton(layout, iconDim, 2, QStringLiteral(":/icons/2meters.png"), tr("Two meters"));
    addButton(layout, iconDim, 1, QStringLiteral(":/icons/1meters.png"), tr("One meter"));
    addButton(layout, iconDim, eachGroup, QStringLiteral(":/icons/groupMeters.png"),
              tr("One meter for each group"));
    layout->addStretch();
    numbers->button(MAX_METERS)->setChecked(true);
    connect(numbers, &QButtonGroup::idClicked, this, &MetersPanel::choose);
    bar->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    return bar;
}

void MetersPanel::addButton(QHBoxLayout* layout, int iconDim, int number, const QString& icon,
                            const QString& text)
{
    const int side = iconDim * 2 / 3; // the meters need the height more
    auto* button = new QToolButton;
    button->setObjectName(number == eachGroup ? QStringLiteral("groupMeters")
                                              : QStringLiteral("%1meters").arg(number));
    button->setAccessibleName(text);
    button->setToolTip(text);
    button->setIcon(QIcon(icon));
    button->setIconSize(QSize(side, side));
    button->setCheckable(true);
    numbers->addButton(button, number);
    layout->addWidget(button);
}

void MetersPanel::choose(int number)
{
    areGroups = number == eachGroup;
    group->setEnabled(!areGroups);
    switch (number) {
    case 1:
        newMeters->set1Meter();
        break;
    case 2:
        newMeters->set2Meter();
        break;
    case 4:
        newMeters->set4Meter();
        break;
    case 6:
        newMeters->set6Meter();
        break;
    default:
        newMeters->showGroups(groups());
    }
    doFetch();
}

void MetersPanel::follow(int chosen)
{
    const int wanted = qMax(0, chosen);
    if (wanted != slot) {
        slot = wanted;
        newMeters->setTembrinData(manager->tembrinDataAt(slot));
    }
    fillGroups();
    if (isVisible())
        doFetch();
}

void MetersPanel::useDesignValues()
{
    const QColor paper = GraphDesign::surroundings;
    const QColor ink = GraphDesign::inkOn(paper);
    const QColor sheet =
        GraphDesign::isDark(paper) ? GraphDesign::mixed(paper, Qt::white, 0.1) : QColor(Qt::white);
    newMeters->setColors(
        {{QStringLiteral("--paper"), paper},
         {QStringLiteral("--sheet"), sheet},
         {QStringLiteral("--ink"), ink},
         {QStringLiteral("--faint"), GraphDesign::mixed(ink, paper, 0.25)},
         {QStringLiteral("--line"), GraphDesign::mixed(ink, paper, 0.6)},
         {QStringLiteral("--accent"), GraphDesign::readableOn(QColor(0x1f, 0x6f, 0xc4), sheet)},
         {QStringLiteral("--warm"), GraphDesign::readableOn(QColor(0xd4, 0, 0), sheet)}});
}

void MetersPanel::showEvent(QShowEvent* event)
{
    QSplitter::showEvent(event);
    fillGroups();
    fetchTimer.start();
    doFetch();
}

void MetersPanel::hideEvent(QHideEvent* event)
{
    fetchTimer.stop();
    valuesTimer.stop();
    QSplitter::hideEvent(event);
}

/// Each second: sensors may have been plugged, groups renamed, others chosen.
void MetersPanel::doFetch()
{
    for (int i = 0; mayAsk() && i < manager->nDefTembrins(); ++i) {
        if ((areGroups || i == slot) && !manager->isRunning(i))
            manager->queue().askValues(i);
    }
    fillGroups();
    if (areGroups)
        newMeters->showGroups(groups());
    else
        newMeters->describe();
    newMeters->setNewValues();
}

void MetersPanel::noteValues(int of)
{
    if (fetchTimer.isActive() && !valuesTimer.isActive() && (areGroups || of == slot))
        valuesTimer.start();
}

void MetersPanel::showValues()
{
    newMeters->setNewValues();
}

void MetersPanel::fillGroups()
{
    const QSignalBlocker nothingIsChosen(group);
    const int count = manager->nDefTembrins();
    while (group->count() > count)
        group->removeItem(group->count() - 1);
    for (int i = 0; i < count; ++i) {
        if (i >= group->count())
            group->addItem(manager->groupName(i));
        else if (group->itemText(i) != manager->groupName(i))
            group->setItemText(i, manager->groupName(i));
    }
    group->setCurrentIndex(slot < count ? slot : -1);
    group->setVisible(count > 0);
}

QVector<SteelMeter::Group> MetersPanel::groups() const
{
    QVector<SteelMeter::Group> all;
    for (int i = 0; i < manager->nDefTembrins(); ++i)
        all.append({i, manager->groupName(i), manager->classChannel(i)});
    return all;
}
