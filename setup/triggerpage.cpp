#include "setup/triggerpage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QScopedValueRollback>
#include <QVBoxLayout>

#include "protocol/tembrindata.h"
#include "setup/dialogtools.h"

using DialogTools::addRow;
using DialogTools::named;
using DialogTools::wholeNumbers;

namespace {
constexpr short rangeOff = 0xFF;
}

TriggerPage::TriggerPage(QWidget* parent)
    : QWidget(parent)
{
    auto* layout = new QVBoxLayout(this);
    for (QGroupBox* group : {createTriggerGroup(), createRangeGroup(), createSocketGroup()})
        layout->addWidget(group);
    layout->addStretch(1);
    lastEdited = edited();

    for (QComboBox* list : {comboTrigSens, comboTrigType, comboDynamicSensor})
        connect(list, qOverload<int>(&QComboBox::currentIndexChanged), this, &TriggerPage::tellTrigger);
    for (QDoubleSpinBox* field : {spinTrigLevel, spinTrigSamples, spinRangeMin})
        connect(field, &QDoubleSpinBox::editingFinished, this, &TriggerPage::takeEdited);
    connect(boxDynamicActive, &QCheckBox::clicked, this, &TriggerPage::tellTrigger);
    QComboBox* const lists[] = {comboBox, comboBox_2};
    for (int i = 0; i < 2; ++i) {
        connect(lists[i], qOverload<int>(&QComboBox::currentIndexChanged), this, [this, i] {
            if (!isFilling)
                Q_EMIT socketChosen(i);
        });
    }
}

QGroupBox* TriggerPage::createTriggerGroup()
{
    auto* group = named(new QGroupBox(tr("Trigger")), "groupTrigger");
    QFormLayout* form = DialogTools::formIn(group);
    comboTrigSens = addRow(form, tr("Sensor"), new QComboBox, "comboTrigSens");
    comboTrigType = addRow(form, tr("Type"), new QComboBox, "comboTrigType");
    spinTrigLevel = addRow(form, tr("Level"), wholeNumbers(-1000, 10000, 1), "spinTrigLevel");
    spinTrigSamples =
        addRow(form, tr("pretrigger samples"), wholeNumbers(-1000, 1000, 10), "spinTrigSamples");
    return group;
}

QGroupBox* TriggerPage::createRangeGroup()
{
    auto* group = named(new QGroupBox(tr("Dynamic Range")), "groupDynamicRange");
    QFormLayout* form = DialogTools::formIn(group);
    comboDynamicSensor = addRow(form, tr("Sensor"), new QComboBox, "comboDynamicSensor");
    spinRangeMin = addRow(form, tr("minimum value"), wholeNumbers(-1000, 1000, 10), "spinRangeMin");
    boxDynamicActive = named(new QCheckBox(tr("Active")), "boxDynamicActive");
    form->addRow(boxDynamicActive);
    return group;
}

QGroupBox* TriggerPage::createSocketGroup()
{
    auto* group = named(new QGroupBox(tr("Sensors in the sockets")), "groupSockets");
    QFormLayout* form = DialogTools::formIn(group);
    comboBox = addRow(form, tr("Socket 1"), new QComboBox, "comboBox");
    comboBox_2 = addRow(form, tr("Socket 2"), new QComboBox, "comboBox_2");
    for (QComboBox* list : {comboBox, comboBox_2}) {
        list->addItem(tr("None"), 0);
        for (int id = QUELLMARK_FIRST; id <= QUELLMARK_LAST; ++id)
            list->addItem(Sensor(id).name, id);
    }
    return group;
}

bool TriggerPage::show(const ClassPlan& plan, const TembrinData& logger)
{
    const QScopedValueRollback<bool> own(isFilling, true);
    const LoggerSettings& shown = plan.settings();
    const auto before = std::pair(comboTrigSens->currentIndex(), comboTrigType->currentIndex());
    if (comboTrigType->count() == 0) {
        for (const QString& type : logger.TrigTypeNames)
            comboTrigType->addItem(type);
    }
    QStringList names;
    for (const SensorPtr& sensor : logger.getSensors())
        names.append(sensor->name);
    const bool isSameList = names == sensors;
    if (!isSameList) {
        sensors = names;
        for (QComboBox* list : {comboTrigSens, comboDynamicSensor}) {
            list->clear();
            list->addItems(names);
        }
    }
    if (shown.rangeSens < sensors.size())
        comboDynamicSensor->setCurrentIndex(shown.rangeSens);
    comboTrigSens->setCurrentIndex(shown.trigSens < sensors.size() ? shown.trigSens : -1);
    comboTrigType->setCurrentIndex(shown.trigType);
    // What a person is typing stays.
    if (!spinRangeMin->hasFocus())
        spinRangeMin->setValue(shown.rangeMin);
    if (!spinTrigLevel->hasFocus())
        spinTrigLevel->setValue(shown.trigLevel);
    if (!spinRangeMin->hasFocus() && !spinTrigLevel->hasFocus())
        lastEdited = edited();

    QComboBox* const lists[] = {comboBox, comboBox_2};
    for (QComboBox* list : lists)
        list->setEnabled(false);
    for (const ClassPlan::Channel& channel : plan.channels()) {
        if (channel.socket < 0)
            continue;
        QComboBox* list = lists[channel.socket];
        list->setEnabled(true);
        list->setCurrentIndex(list->findData(Sensor::isIDVestrel(channel.id) ? channel.id : 0));
    }
    return isSameList && before != std::pair(comboTrigSens->currentIndex(), comboTrigType->currentIndex());
}

LoggerSettings TriggerPage::trigger(LoggerSettings before) const
{
    if (comboTrigSens->currentIndex() >= 0)
        before.trigSens = short(comboTrigSens->currentIndex());
    if (comboTrigType->currentIndex() >= 0)
        before.trigType = short(comboTrigType->currentIndex());
    before.trigLevel = short(spinTrigLevel->value());
    before.rangeMin = short(spinRangeMin->value());
    const bool isRanged = boxDynamicActive->isChecked() && comboDynamicSensor->currentIndex() >= 0;
    before.rangeSens = isRanged ? short(comboDynamicSensor->currentIndex()) : rangeOff;
    return before;
}

int TriggerPage::socketSensor(int socket) const
{
    return (socket == 0 ? comboBox : comboBox_2)->currentData().toInt();
}

void TriggerPage::takeEdited()
{
    if (edited() != lastEdited) // and not only left
        tellTrigger();
}

void TriggerPage::tellTrigger()
{
    if (isFilling)
        return;
    lastEdited = edited();
    Q_EMIT triggerChosen();
}

QVector<double> TriggerPage::edited() const
{
    return {spinTrigLevel->value(), spinTrigSamples->value(), spinRangeMin->value()};
}
