#include "app/groupranking.h"

#include "classroom/multiconnectionsmanager.h"
#include "common/common.h"
#include "data/expdata.h"
#include "data/fittexts.h"
#include "data/novalue.h"
#include "data/rangestatistics.h"
#include "graph/graphdesign.h"
#include "graph/plot.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int msBetweenOrders = 250; // digits that change faster can't be read
constexpr int gap = 10;              // pixels

} // namespace

bool operator==(const RankedGroup& a, const RankedGroup& b)
{
    return a.group == b.group && a.channel == b.channel && a.text == b.text && a.color == b.color;
}

// --- Bars ---

RankingBars::RankingBars(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("rankingBars"));
    setAccessibleName(tr("Groups in order"));
}

void RankingBars::setGroups(const QVector<RankedGroup>& groups)
{
    ranked = groups;
    QStringList lines;
    for (const RankedGroup& one : groups)
        lines.append(QStringLiteral("%1: %2").arg(one.group, one.text));
    setAccessibleDescription(lines.join(QLatin1Char('\n')));
    updateGeometry();
    update();
}

int RankingBars::rowHeight() const
{
    constexpr double lines = 1.8;
    return int(lines * fontMetrics().height());
}

QSize RankingBars::sizeHint() const
{
    constexpr int usual = 460;
    return {usual, minimumSizeHint().height()};
}

QSize RankingBars::minimumSizeHint() const
{
    constexpr int narrow = 260;
    return {narrow, rowHeight() * qMax(1, ranked.size())};
}

void RankingBars::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QColor ink = palette().color(QPalette::WindowText);
    int nameWidth = 0;
    int textWidth = 0;
    for (const RankedGroup& one : qAsConst(ranked)) {
        nameWidth = qMax(nameWidth, fontMetrics().horizontalAdvance(one.group));
        textWidth = qMax(textWidth, fontMetrics().horizontalAdvance(one.text) + gap);
    }
    nameWidth = qMin(nameWidth, width() / 3);
    const QRect all(nameWidth + gap, 0, qMax(1, width() - nameWidth - textWidth - 2 * gap), height());
    const int row = qBound(rowHeight(), height() / qMax(1, ranked.size()), 2 * rowHeight());
    for (int i = 0; i < ranked.size(); ++i) {
        const RankedGroup& one = ranked.at(i);
        double low = 0;
        double high = 0;
        for (const RankedGroup& other : qAsConst(ranked)) {
            const bool isOnScale = other.unit == one.unit && std::isfinite(other.value);
            low = isOnScale ? std::min(low, other.value) : low;
            high = isOnScale ? std::max(high, other.value) : high;
        }
        const QRect line(0, i * row, width(), row);
        painter.setPen(ink);
        painter.drawText(line.adjusted(0, 0, nameWidth - width(), 0), Qt::AlignVCenter | Qt::AlignRight,
                         fontMetrics().elidedText(one.group, Qt::ElideRight, nameWidth));
        int right = all.left();
        if (std::isfinite(one.value) && high > low) {
            const auto place = [&](double value) {
                return all.left() + int(std::lround((value - low) / (high - low) * all.width()));
            };
            const auto ends = std::minmax({place(0), place(one.value)});
            const QRect bar(ends.first, line.top() + row / 6, qMax(2, ends.second - ends.first), row * 2 / 3);
            painter.fillRect(bar, one.color);
            painter.fillRect(place(0), line.top(), 1, row, ink);
            right = ends.second;
        }
        painter.drawText(line.adjusted(right + gap, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, one.text);
    }
}

// --- The dialog ---

GroupRanking::GroupRanking(const GraphTools* tools, multiConnectionsManager* manager, UserPrompt* prompt,
                           QWidget* parent)
    : QDialog(parent)
    , subjects(tools, manager)
    , manager(manager)
    , prompt(prompt)
{
    setObjectName(QStringLiteral("groupRanking"));
    setWindowTitle(tr("Sort the groups"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    new QVBoxLayout(this);
    createChoice();
    bars = new RankingBars;
    auto* const scroll = new QScrollArea;
    scroll->setObjectName(QStringLiteral("rankingScroll"));
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setWidget(bars);
    layout()->addWidget(scroll);
    createButtons();
    again.setInterval(msBetweenOrders);
    connect(&again, &QTimer::timeout, this, &GroupRanking::look);
    connect(&runner, &FitRunner::done, this, &GroupRanking::take);
    constexpr QSize usual(520, 440);
    resize(usual);
}

void GroupRanking::createChoice()
{
    what = new QComboBox;
    what->setObjectName(QStringLiteral("rankBy"));
    what->setAccessibleName(tr("Sorted by"));
    what->addItems({tr("Newest value"), tr("Mean"), tr("Number of a fit")});
    models = new QComboBox;
    models->setObjectName(QStringLiteral("rankModel"));
    models->setAccessibleName(tr("Kind of curve"));
    for (int i = 0; i < CurveFit::nModels; ++i) {
        const auto model = CurveFit::Model(i);
        if (model != CurveFit::Model::Formula)
            models->addItem(
                QStringLiteral("%1:  %2").arg(CurveFit::modelName(model), CurveFit::modelFormula(model)), i);
    }
    parameters = new QComboBox;
    parameters->setObjectName(QStringLiteral("rankParameter"));
    parameters->setAccessibleName(tr("Number of the fit"));
    range = new QLabel;
    range->setObjectName(QStringLiteral("range"));
    range->setWordWrap(true);
    auto* const row = new QHBoxLayout;
    row->addWidget(what);
    row->addWidget(models, 1);
    row->addWidget(parameters);
    row->addStretch();
    static_cast<QVBoxLayout*>(layout())->addLayout(row);
    layout()->addWidget(range);
    connect(what, qOverload<int>(&QComboBox::currentIndexChanged), this, &GroupRanking::choose);
    connect(models, qOverload<int>(&QComboBox::currentIndexChanged), this, &GroupRanking::choose);
    connect(parameters, qOverload<int>(&QComboBox::activated), this, &GroupRanking::choose);
}

void GroupRanking::createButtons()
{
    auto* const row = new QHBoxLayout;
    row->addStretch();
    const auto add = [&](const char* name, const QString& text, auto slot) {
        auto* const button = new QPushButton(text);
        button->setObjectName(QLatin1String(name));
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, slot);
        row->addWidget(button);
    };
    add("copy", tr("Copy"), [this] { numbers().copy(); });
    add("export", tr("Export..."), [this] { numbers().save(this, prompt, tr("Groups.csv")); });
    add("close", tr("Close"), [this] { close(); });
    static_cast<QVBoxLayout*>(layout())->addLayout(row);
}

GroupRanking::By GroupRanking::by() const
{
    return By(qMax(0, what->currentIndex()));
}

void GroupRanking::choose()
{
    const bool isFit = by() == By::Fit;
    models->setVisible(isFit);
    parameters->setVisible(isFit);
    const QStringList names = CurveFit::parameterNames(CurveFit::Model(models->currentData().toInt()));
    if (names.size() != parameters->count()) {
        parameters->clear();
        parameters->addItems(names);
    }
    asked.clear();
    runner.drop();
    if (isFit)
        showRanked({});
    look();
}

void GroupRanking::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    again.start();
    choose();
}

void GroupRanking::hideEvent(QHideEvent* event)
{
    QDialog::hideEvent(event);
    again.stop();
    runner.drop();
}

/// What has changed since, whoever changed it.
void GroupRanking::look()
{
    if (!isVisible() || runner.isBusy())
        return;
    const QVector<Subject> groups = subjects.groups();
    const QString part = subjects.range();
    range->setText(by() == By::Newest || part.isEmpty() ? QString() : part);
    range->setVisible(!range->text().isEmpty());
    if (by() != By::Fit) {
        showRanked(rankedByValue(groups));
        return;
    }
    if (asked == groups && !asked.isEmpty())
        return;
    asked = groups;
    FitRunner::Task task;
    task.model = CurveFit::Model(models->currentData().toInt());
    for (const Subject& subject : groups)
        task.stretches.append(subject.stretch);
    runner.ask(task);
}

QVector<RankedGroup> GroupRanking::rankedByValue(const QVector<Subject>& groups) const
{
    QVector<RankedGroup> ranked;
    for (const Subject& subject : groups) {
        const ExpData& set = *manager->dataAt(subject.slot);
        const SensorPtr& sensor = set.getSens(subject.stretch.iSens);
        RankedGroup one{subject.group, subject.channel, noValue, QString(), QString(), colorOf(subject.slot)};
        if (sensor) {
            one.unit = sensor->unitName;
            const RangeStatistics of = RangeStatistics::of(set, subject.stretch);
            one.value = of.n == 0          ? noValue
                        : by() == By::Mean ? of.mean
                                           : Stretch::whole(set, subject.stretch.iSens).y.constLast();
            one.text = FitTexts::withUnit(by() == By::Mean ? Common::toSignificant(one.value)
                                                           : sensor->valueToString(one.value),
                                          one.unit);
        }
        ranked.append(one);
    }
    return ranked;
}

void GroupRanking::take(const QVector<CurveFit::Fit>& fits)
{
    QVector<RankedGroup> ranked;
    const int number = qMax(0, parameters->currentIndex());
    for (int i = 0; i < fits.size() && i < asked.size(); ++i) {
        const FitResult result{asked.at(i), fits.at(i)};
        RankedGroup one{result.group, result.channel, noValue, QString(), QString(), colorOf(result.slot)};
        if (result.isGood() && number < result.fit.curve.parameters.size()) {
            one.value = result.fit.curve.parameters.at(number);
            one.unit = result.curve().unitOf(number);
            one.text = FitTexts::parameter(result.curve(), number);
        }
        ranked.append(one);
    }
    showRanked(ranked);
}

void GroupRanking::sort(QVector<RankedGroup>* groups)
{
    QStringList units;
    for (RankedGroup& one : *groups) {
        if (!std::isfinite(one.value))
            one.text = QStringLiteral("–");
        else if (!units.contains(one.unit))
            units.append(one.unit);
    }
    const auto place = [&](const RankedGroup& one) {
        return std::isfinite(one.value) ? units.indexOf(one.unit) : units.size();
    };
    std::stable_sort(groups->begin(), groups->end(), [&](const RankedGroup& a, const RankedGroup& b) {
        return place(a) != place(b) ? place(a) < place(b)
                                    : std::isfinite(a.value) && std::isfinite(b.value) && a.value > b.value;
    });
}

void GroupRanking::showRanked(QVector<RankedGroup> groups)
{
    sort(&groups);
    if (groups == shown)
        return;
    shown = std::move(groups);
    bars->setGroups(shown);
}

/// As the class shows the group.
QColor GroupRanking::colorOf(int slot) const
{
    const Plot* const plot = manager->plotC();
    return plot && plot->getCurve(slot) ? plot->getCurvePen(slot).color() : GraphDesign::majGrid;
}

ResultTable GroupRanking::numbers() const
{
    const QString value = by() == By::Fit ? parameters->currentText() : what->currentText();
    ResultTable table{{tr("Group"), tr("Sensor"), value, tr("Unit")}, {}};
    for (const RankedGroup& one : shown)
        table.rows.append({one.group, one.channel, ResultTable::number(one.value), one.unit});
    return table;
}
