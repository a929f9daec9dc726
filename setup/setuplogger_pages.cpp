#include "setup/setuplogger.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QTabWidget>

#include "setup/dialogtools.h"

using DialogTools::named;

namespace {

const char* const languages[] = {
    QT_TRANSLATE_NOOP("setupLogger", "English"),
    QT_TRANSLATE_NOOP("setupLogger", "Spanish"),
    QT_TRANSLATE_NOOP("setupLogger", "Russian"),
    QT_TRANSLATE_NOOP("setupLogger", "Portuguese"),
};

/// A label and its control in one row; the label is what a screen reader says of the control.
template<typename Control>
Control* addRow(QFormLayout* form, const QString& label, Control* control, const char* name)
{
    named(control, name, label);
    form->addRow(label, control);
    return control;
}

QFormLayout* formIn(QWidget* parent)
{
    auto* form = new QFormLayout(parent);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    return form;
}

QDoubleSpinBox* wholeNumbers(int least, int most, int step)
{
    auto* spin = new QDoubleSpinBox;
    spin->setDecimals(0);
    spin->setRange(least, most);
    spin->setSingleStep(step);
    return spin;
}

QSpinBox* counter(int least, int most, int start)
{
    auto* spin = new QSpinBox;
    spin->setRange(least, most);
    spin->setValue(start);
    return spin;
}

QPushButton* button(const QString& text, const char* name)
{
    auto* made = named(new QPushButton(text), name);
    made->setAutoDefault(false);
    return made;
}

/// A text that answers appear in.
QLabel* resultLabel(const char* name, const QString& spoken)
{
    auto* label = named(new QLabel, name, spoken);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

} // namespace

/// A page that is scrolled where large text or a small screen leaves no room for all of it.
QScrollArea* setupLogger::addPage(const char* name, const QString& title, QWidget* content)
{
    QScrollArea* page = named(DialogTools::scrolled(content), name, title);
    DialogTools::keepFromWheel(content);
    tabs->addTab(page, title);
    return page;
}

void setupLogger::createAdvancedPage()
{
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    for (QGroupBox* group : {createTriggerGroup(), createRangeGroup(), createSocketGroup()})
        layout->addWidget(group);
    layout->addStretch(1);
    tabAdvanced = addPage("tabAdvanced", tr("Advanced setup"), content);
}

QGroupBox* setupLogger::createTriggerGroup()
{
    auto* group = named(new QGroupBox(tr("Trigger")), "groupTrigger");
    QFormLayout* form = formIn(group);
    comboTrigSens = addRow(form, tr("Sensor"), new QComboBox, "comboTrigSens");
    comboTrigType = addRow(form, tr("Type"), new QComboBox, "comboTrigType");
    spinTrigLevel = addRow(form, tr("Level"), wholeNumbers(-1000, 10000, 1), "spinTrigLevel");
    spinTrigSamples =
        addRow(form, tr("pretrigger samples"), wholeNumbers(-1000, 1000, 10), "spinTrigSamples");
    return group;
}

QGroupBox* setupLogger::createRangeGroup()
{
    auto* group = named(new QGroupBox(tr("Dynamic Range")), "groupDynamicRange");
    QFormLayout* form = formIn(group);
    comboDynamicSensor = addRow(form, tr("Sensor"), new QComboBox, "comboDynamicSensor");
    spinRangeMin = addRow(form, tr("minimum value"), wholeNumbers(-1000, 1000, 10), "spinRangeMin");
    boxDynamicActive = named(new QCheckBox(tr("Active")), "boxDynamicActive");
    form->addRow(boxDynamicActive);
    return group;
}

QGroupBox* setupLogger::createSocketGroup()
{
    auto* group = named(new QGroupBox(tr("Sensors in the sockets")), "groupSockets");
    QFormLayout* form = formIn(group);
    comboBox = addRow(form, tr("Socket 1"), new QComboBox, "comboBox");
    comboBox_2 = addRow(form, tr("Socket 2"), new QComboBox, "comboBox_2");
    for (QComboBox* list : {comboBox, comboBox_2}) {
        list->addItem(tr("None"), 0);
        for (int id = QUELLMARK_FIRST; id <= QUELLMARK_LAST; ++id)
            list->addItem(Sensor(id).name, id);
    }
    return group;
}

void setupLogger::createConfigPage()
{
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->addWidget(createLoggerGroup());
    layout->addWidget(createUnitGroups());
    layout->addWidget(createSmoothing());
    layout->addStretch(1);
    tabConfig = addPage("tabConfig", tr("Configuraton"), content);
}

QGroupBox* setupLogger::createLoggerGroup()
{
    auto* group = named(new QGroupBox(tr("All loggers")), "groupLoggers");
    QFormLayout* form = formIn(group);
    boxSound = named(new QCheckBox(tr("Sound enabled")), "boxSound");
    boxGPS = named(new QCheckBox(tr("GPS enabled")), "boxGPS");
    form->addRow(boxSound);
    form->addRow(boxGPS);
    comboLanguage = addRow(form, tr("Interface Language"), new QComboBox, "comboLanguage");
    for (const char* language : languages)
        comboLanguage->addItem(tr(language));
    return group;
}

QWidget* setupLogger::createUnitGroups()
{
    struct Choice
    {
        QRadioButton* setupLogger::*button;
        const char* name;
        QString text;
    };
    struct Group
    {
        const char* name;
        QString title;
        QVector<Choice> choices;
    };
    const Group groups[] = {
        {"groupTemperature",
         tr("Temperature"),
         {{&setupLogger::unitsCelsius, "unitsCelsius", tr("Celsius")},
          {&setupLogger::unitsFahrenheit, "unitsFahrenheit", tr("Fahrenheit")}}},
        {"groupBarometer",
         tr("Barometer"),
         {{&setupLogger::unitsBaro_mBar, "unitsBaro_mBar", tr("mBar")},
          {&setupLogger::unitsBaro_hPa, "unitsBaro_hPa", tr("hPa")}}},
        {"groupAirPressure",
         tr("Air pressure"),
         {{&setupLogger::unitsKPA, "unitsKPA", tr("kPa")}, {&setupLogger::unitsPSI, "unitsPSI", tr("PSI")}}},
        {"groupDistance",
         tr("Distance"),
         {{&setupLogger::unitsMeters, "unitsMeters", tr("meters")},
          {&setupLogger::unitsFeet, "unitsFeet", tr("feet")}}},
        {"groupSpeed",
         tr("Speed"),
         {{&setupLogger::unitsKMH, "unitsKMH", tr("Km/h")},
          {&setupLogger::unitsMPH, "unitsMPH", tr("mph")},
          {&setupLogger::unitsMS, "unitsMS", tr("m/s")}}},
    };
    auto* all = new QWidget;
    auto* grid = new QGridLayout(all);
    grid->setContentsMargins(0, 0, 0, 0);
    const int columns = 2;
    int place = 0;
    for (const Group& group : groups) {
        auto* box = named(new QGroupBox(group.title), group.name);
        auto* row = new QHBoxLayout(box);
        for (const Choice& choice : group.choices) {
            auto* radio = named(new QRadioButton(choice.text), choice.name);
            radio->setAccessibleDescription(group.title);
            this->*choice.button = radio;
            row->addWidget(radio);
        }
        row->addStretch(1);
        const bool isWide = group.choices.size() > columns;
        grid->addWidget(box, place / columns, place % columns, 1, isWide ? columns : 1);
        ++place;
    }
    return all;
}

QWidget* setupLogger::createSmoothing()
{
    auto* row = new QWidget;
    QFormLayout* form = formIn(row);
    form->setContentsMargins(0, 0, 0, 0);
    smootSpinBox = addRow(form, tr("Smooth kernel size"), counter(3, 11, 3), "smootSpinBox");
    smootSpinBox->setSingleStep(2);
    smootSpinBox->setKeyboardTracking(false);
    return row;
}

void setupLogger::createDebugPage()
{
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    button_setTimeDate = button(tr("Set Time\nand Date"), "button_setTimeDate");
    button_getStatus = button(tr("Get Status"), "button_getStatus");
    buttonSensorsID = button(tr("Get sensors ID"), "buttonSensorsID");
    for (QPushButton* ask : {button_setTimeDate, button_getStatus, buttonSensorsID})
        layout->addWidget(ask);

    auto* group = named(new QGroupBox(tr("Vorta")), "groupVorta");
    QFormLayout* form = formIn(group);
    rateSpinBox = addRow(form, tr("rate code"), counter(1, 5, 1), "rateSpinBox");
    SampleSpinBox_2 = addRow(form, tr("samples"), counter(1, 30000, 10), "SampleSpinBox_2");
    VortaRunButton = button(tr("Run"), "VortaRunButton");
    VortaStopButton = button(tr("Stop"), "VortaStopButton");
    VortaStatusButton = button(tr("Get Status"), "VortaStatusButton");
    VortaSnapButton = button(tr("Snapshot"), "VortaSnapButton");
    auto* buttons = new QGridLayout;
    buttons->addWidget(VortaRunButton, 0, 0);
    buttons->addWidget(VortaStopButton, 0, 1);
    buttons->addWidget(VortaStatusButton, 1, 0);
    buttons->addWidget(VortaSnapButton, 1, 1);
    form->addRow(buttons);
    drawGraphCheckBox = named(new QCheckBox(tr("Draw graph online")), "drawGraphCheckBox");
    form->addRow(drawGraphCheckBox);
    layout->addWidget(group);
    layout->addStretch(1);
    tabDebug = addPage("tabDebug", tr("Debug"), content);
}

void setupLogger::createCalibrationPage()
{
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    currentTemperatureLabel = named(new QLabel(tr("Current temperature (°C)")), "currentTemperatureLabel");
    if (!isCelsius) {
        QString text = currentTemperatureLabel->text();
        text.chop(2);
        currentTemperatureLabel->setText(text + QStringLiteral("F)"));
    }
    currentTemperatureLineEdit =
        named(new QLineEdit, "currentTemperatureLineEdit", currentTemperatureLabel->text());
    currentTemperatureLabel->setBuddy(currentTemperatureLineEdit);
    buttonCalibTemp = button(tr("Send"), "buttonCalibTemp");
    buttonTempBackDef = button(tr("Back to default"), "buttonTempBackDef");
    calibrationResultText = resultLabel("calibrationResultText", tr("Result of the calibration"));
    vortaTestButton = button(tr("Vorta calib. + test"), "vortaTestButton");

    auto* entry = new QHBoxLayout;
    entry->addWidget(currentTemperatureLineEdit, 1);
    entry->addWidget(buttonCalibTemp);
    layout->addWidget(currentTemperatureLabel);
    layout->addLayout(entry);
    layout->addWidget(buttonTempBackDef);
    layout->addWidget(calibrationResultText);
    createSelfTest();
    layout->addWidget(groupSeltTest);
    layout->addWidget(vortaTestButton);
    layout->addStretch(1);
    tabCalibration = addPage("tabCalibration", tr("Calibration"), content);
}

void setupLogger::createSelfTest()
{
    groupSeltTest = named(new QGroupBox(tr("Self Test")), "groupSeltTest");
    auto* layout = new QVBoxLayout(groupSeltTest);
    buttonGetTestDataq = button(tr("Get Data"), "buttonGetTestDataq");
    testResult = resultLabel("testResult", tr("Result of the self test"));
    layout->addWidget(buttonGetTestDataq);
    layout->addWidget(testResult);
}
