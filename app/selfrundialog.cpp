#include "app/selfrundialog.h"

#include "classroom/multiconnectionsmanager.h"
#include "common/common.h"
#include "common/settings.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "sensors/sensor.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {

// What was chosen last, in the main store.
constexpr const char* beginKey = "autorun/begin";         // int, an AutoRunPlan::Begin
constexpr const char* countdownKey = "autorun/countdown"; // int, s
constexpr const char* sensorKey = "autorun/sensor";       // int, ID
constexpr const char* levelKey = "autorun/level";         // double, base unit
constexpr const char* risingKey = "autorun/rising";       // bool
constexpr const char* stopsKey = "autorun/stops";         // bool
constexpr const char* stopAfterKey = "autorun/stopAfter"; // double, s
constexpr const char* timesKey = "autorun/times";         // int

constexpr int longestCountdown = 3600;
constexpr double longestRun = 86400; // s
constexpr int mostTimes = 99;

template<class W> W* named(W* widget, const char* name, const QString& accessibleName)
{
    widget->setObjectName(QLatin1String(name));
    widget->setAccessibleName(accessibleName);
    return widget;
}

QHBoxLayout* rowOf(const QVector<QWidget*>& widgets)
{
    auto* const row = new QHBoxLayout;
    for (QWidget* widget : widgets)
        row->addWidget(widget);
    row->addStretch();
    return row;
}

} // namespace

SelfRunDialog::SelfRunDialog(multiConnectionsManager* manager, QWidget* parent)
    : QDialog(parent)
    , manager(manager)
    , units(manager->tembrinAt(0)->units)
{
    setObjectName(QStringLiteral("selfRunDialog"));
    setWindowTitle(tr("Run by itself"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(createBegin());
    layout->addWidget(createEnd());
    auto* const words = new QLabel(
        tr("While it waits a line at the bottom says for what. Esc or Stop gives up, F5 begins at once."));
    words->setWordWrap(true);
    layout->addWidget(words);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    go = buttons->button(QDialogButtonBox::Ok);
    go->setText(tr("Go"));
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        keep();
        accept();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    fillSensors();
    load();
    for (QRadioButton* choice : {atOnce, afterCountdown, atLevel})
        connect(choice, &QRadioButton::toggled, this, &SelfRunDialog::showState);
    connect(stops, &QCheckBox::toggled, this, &SelfRunDialog::showState);
    connect(level, &QLineEdit::textChanged, this, &SelfRunDialog::showState);
    connect(sensors, qOverload<int>(&QComboBox::currentIndexChanged), this, &SelfRunDialog::showState);
    showState();
}

QGroupBox* SelfRunDialog::createBegin()
{
    auto* const box = new QGroupBox(tr("The run begins"));
    atOnce = named(new QRadioButton(tr("at once")), "atOnce", {});
    afterCountdown = named(new QRadioButton(tr("after")), "afterCountdown", {});
    atLevel = named(new QRadioButton(tr("when")), "atLevel", {});
    countdown = named(new QSpinBox, "countdown", tr("Seconds before the run"));
    countdown->setRange(1, longestCountdown);
    auto* const layout = new QVBoxLayout(box);
    layout->addWidget(atOnce);
    layout->addLayout(rowOf({afterCountdown, countdown, new QLabel(tr("seconds"))}));
    layout->addLayout(rowOf({atLevel, createLevel()}));
    return box;
}

QWidget* SelfRunDialog::createLevel()
{
    levelRow = new QWidget;
    sensors = named(new QComboBox, "sensor", tr("Sensor"));
    groups = named(new QComboBox, "group", tr("Group"));
    groups->addItem(tr("of any group"), AutoRunPlan::anyGroup);
    groups->addItem(tr("of all groups"), AutoRunPlan::allGroups);
    for (int i = 0; i < manager->nDefTembrins(); ++i)
        groups->addItem(tr("of %1").arg(manager->groupName(i)), i);
    direction = named(new QComboBox, "direction", tr("Direction"));
    direction->addItem(tr("rises above"), true);
    direction->addItem(tr("falls below"), false);
    level = named(new QLineEdit, "level", tr("Level"));
    level->setMinimumWidth(90);
    unit = named(new QLabel, "unit", {});
    auto* const row = rowOf({sensors, groups, direction, level, unit});
    row->setContentsMargins(0, 0, 0, 0);
    levelRow->setLayout(row);
    return levelRow;
}

QGroupBox* SelfRunDialog::createEnd()
{
    auto* const box = new QGroupBox(tr("It ends, and goes on"));
    stops = named(new QCheckBox(tr("Stop after")), "stops", {});
    stopAfter = named(new QDoubleSpinBox, "stopAfter", tr("Seconds of the run"));
    stopAfter->setRange(0.5, longestRun);
    stopAfter->setDecimals(1);
    times = named(new QSpinBox, "times", tr("Number of runs"));
    times->setRange(1, mostTimes);
    auto* const layout = new QVBoxLayout(box);
    layout->addLayout(rowOf({stops, stopAfter, new QLabel(tr("seconds, else as it is set up"))}));
    layout->addLayout(rowOf({new QLabel(tr("Number of runs:")), times,
                             new QLabel(tr("each begins as above and is kept in the list of runs"))}));
    return box;
}

/// Those that the loggers have on at present.
void SelfRunDialog::fillSensors()
{
    const auto add = [this](int id) {
        const Sensor sensor(id, units);
        if (!sensor.name.isEmpty() && sensors->findData(id) < 0)
            sensors->addItem(sensor.name, id);
    };
    for (int i = 0; i < manager->nDefTembrins(); ++i) {
        for (const SensorPtr& sensor : manager->tembrinDataAt(i)->getSensors()) {
            if (!sensor)
                continue;
            if (!sensor->hasVirtual)
                add(sensor->ID);
            for (const int id : sensor->hasVirtual ? sensor->virtualSensorIDs : QVector<int>())
                add(id);
        }
    }
}

void SelfRunDialog::load()
{
    const QSettings store = Settings::mainStore();
    const auto value = [&store](const char* key, const QVariant& none) {
        return store.value(QLatin1String(key), none);
    };
    sensors->setCurrentIndex(qMax(0, sensors->findData(value(sensorKey, 0))));
    const bool hasSensor = sensors->count() > 0;
    atLevel->setEnabled(hasSensor);
    auto begin = AutoRunPlan::Begin(value(beginKey, int(AutoRunPlan::Begin::Countdown)).toInt());
    if (begin == AutoRunPlan::Begin::Level && !hasSensor)
        begin = AutoRunPlan::Begin::Countdown;
    atOnce->setChecked(begin == AutoRunPlan::Begin::AtOnce);
    atLevel->setChecked(begin == AutoRunPlan::Begin::Level);
    afterCountdown->setChecked(!atOnce->isChecked() && !atLevel->isChecked());
    countdown->setValue(value(countdownKey, AutoRunPlan().countdown).toInt());
    direction->setCurrentIndex(value(risingKey, true).toBool() ? 0 : 1);
    if (hasSensor && store.contains(QLatin1String(levelKey))) {
        const Sensor::AltUnit shown = Sensor(sensorID(), units).altUnit();
        level->setText(Common::toSignificant(value(levelKey, 0).toDouble() * shown.factor + shown.offset));
    }
    stops->setChecked(value(stopsKey, false).toBool());
    stopAfter->setValue(value(stopAfterKey, 10).toDouble());
    times->setValue(value(timesKey, 1).toInt());
}

void SelfRunDialog::keep() const
{
    const AutoRunPlan chosen = plan();
    QSettings store = Settings::mainStore();
    const auto set = [&store](const char* key, const QVariant& value) {
        store.setValue(QLatin1String(key), value);
    };
    set(beginKey, int(chosen.begin));
    set(countdownKey, chosen.countdown);
    set(stopsKey, stops->isChecked());
    set(stopAfterKey, stopAfter->value());
    set(timesKey, chosen.times);
    if (chosen.begin != AutoRunPlan::Begin::Level)
        return;
    set(sensorKey, sensorID());
    set(levelKey, chosen.level);
    set(risingKey, chosen.isRising);
}

bool SelfRunDialog::isLevelGood() const
{
    bool isNumber = false;
    Common::typedNumber(level->text(), &isNumber);
    return isNumber && sensorID() > 0;
}

void SelfRunDialog::showState()
{
    countdown->setEnabled(afterCountdown->isChecked());
    levelRow->setEnabled(atLevel->isChecked());
    stopAfter->setEnabled(stops->isChecked());
    unit->setText(sensorID() > 0 ? Sensor(sensorID(), units).unitName : QString());
    go->setEnabled(!atLevel->isChecked() || isLevelGood());
}

int SelfRunDialog::sensorID() const
{
    return sensors->currentData().toInt();
}

AutoRunPlan SelfRunDialog::plan() const
{
    AutoRunPlan plan;
    plan.begin = atOnce->isChecked()           ? AutoRunPlan::Begin::AtOnce
                 : afterCountdown->isChecked() ? AutoRunPlan::Begin::Countdown
                                               : AutoRunPlan::Begin::Level;
    plan.countdown = countdown->value();
    plan.stopAfter = stops->isChecked() ? stopAfter->value() : 0;
    plan.times = times->value();
    if (plan.begin != AutoRunPlan::Begin::Level)
        return plan;
    bool isNumber = false;
    const Sensor sensor(sensorID(), units);
    plan.level =
        (Common::typedNumber(level->text(), &isNumber) - sensor.altUnit().offset) / sensor.altUnit().factor;
    plan.group = groups->currentData().toInt();
    plan.isRising = direction->currentData().toBool();
    plan.condition = QStringList{sensor.name, groups->currentText(), direction->currentText(),
                                 level->text().trimmed(), sensor.unitName}
                         .join(QLatin1Char(' '))
                         .trimmed();
    return plan;
}
