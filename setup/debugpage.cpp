#include "setup/debugpage.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "setup/dialogtools.h"

using DialogTools::addRow;
using DialogTools::button;
using DialogTools::counter;
using DialogTools::named;

DebugPage::DebugPage(QWidget* parent)
    : QWidget(parent)
    , button_setTimeDate(button(tr("Set Time\nand Date"), "button_setTimeDate"))
    , button_getStatus(button(tr("Get Status"), "button_getStatus"))
    , buttonSensorsID(button(tr("Get sensors ID"), "buttonSensorsID"))
    , VortaRunButton(button(tr("Run"), "VortaRunButton"))
    , VortaStopButton(button(tr("Stop"), "VortaStopButton"))
    , VortaStatusButton(button(tr("Get Status"), "VortaStatusButton"))
    , VortaSnapButton(button(tr("Snapshot"), "VortaSnapButton"))
{
    auto* layout = new QVBoxLayout(this);
    for (QPushButton* ask : {button_setTimeDate, button_getStatus, buttonSensorsID})
        layout->addWidget(ask);
    createVortaGroup(layout);
    layout->addStretch(1);
    connectButtons();
}

void DebugPage::createVortaGroup(QVBoxLayout* layout)
{
    auto* group = named(new QGroupBox(tr("Vorta")), "groupVorta");
    QFormLayout* form = DialogTools::formIn(group);
    rateSpinBox = addRow(form, tr("rate code"), counter(1, 5, 1), "rateSpinBox");
    SampleSpinBox_2 = addRow(form, tr("samples"), counter(1, 30000, 10), "SampleSpinBox_2");
    auto* buttons = new QGridLayout;
    buttons->addWidget(VortaRunButton, 0, 0);
    buttons->addWidget(VortaStopButton, 0, 1);
    buttons->addWidget(VortaStatusButton, 1, 0);
    buttons->addWidget(VortaSnapButton, 1, 1);
    form->addRow(buttons);
    drawGraphCheckBox = named(new QCheckBox(tr("Draw graph online")), "drawGraphCheckBox");
    form->addRow(drawGraphCheckBox);
    layout->addWidget(group);
}

void DebugPage::connectButtons()
{
    const std::pair<QPushButton*, commandType> commands[] = {
        {button_setTimeDate, CMD_SET_DATE_AND_TIME},
        {button_getStatus, CMD_GET_TEMBRIN_STATUS},
        {buttonSensorsID, CMD_GET_ALL_SENSORS_ID},
    };
    for (const auto& [pressed, cmd] : commands)
        connect(pressed, &QPushButton::clicked, this, [this, cmd = cmd] { Q_EMIT command(cmd); });
    const std::pair<QPushButton*, commandType> vortaCommands[] = {
        {VortaStopButton, CMD_VORTA_STOP},
        {VortaStatusButton, CMD_VORTA_GET_STATUS},
        {VortaSnapButton, CMD_VORTA_GET_ALL_SENS_VALUES},
    };
    for (const auto& [pressed, cmd] : vortaCommands)
        connect(pressed, &QPushButton::clicked, this, [this, cmd = cmd] { Q_EMIT vortaCommand(cmd); });
    connect(VortaRunButton, &QPushButton::clicked, this,
            [this] { Q_EMIT vortaRun(rateSpinBox->value(), SampleSpinBox_2->value()); });
    connect(drawGraphCheckBox, &QCheckBox::clicked, this, &DebugPage::drawOnline);
}

void DebugPage::show(const LoggerSettings& settings, bool isDrawnOnline)
{
    rateSpinBox->setValue(settings.vortaRate);
    SampleSpinBox_2->setValue(settings.vortaSamples);
    drawGraphCheckBox->setChecked(isDrawnOnline);
}
