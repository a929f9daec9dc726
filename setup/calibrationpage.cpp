#include "setup/calibrationpage.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <limits>

#include "common/common.h"
#include "protocol/tembrindata.h"
#include "setup/dialogtools.h"

using DialogTools::button;
using DialogTools::named;

namespace {

constexpr short calibrationOfTheMaker = -1; ///< 0xFFFF on the wire

QString decimals(double value)
{
    return Common::myToString(value, 'f', 2);
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

CalibrationPage::CalibrationPage(QWidget* parent)
    : QWidget(parent)
{
    auto* layout = new QVBoxLayout(this);
    createTemperature(layout);
    createSelfTest();
    vortaTestButton = button(tr("Vorta calib. + test"), "vortaTestButton");
    layout->addWidget(groupSeltTest);
    layout->addWidget(vortaTestButton);
    layout->addStretch(1);
    connect(buttonCalibTemp, &QPushButton::clicked, this, &CalibrationPage::takeTemperature);
    connect(buttonTempBackDef, &QPushButton::clicked, this,
            [this] { Q_EMIT calibrate(calibrationOfTheMaker); });
    connect(buttonGetTestDataq, &QPushButton::clicked, this, &CalibrationPage::testAsked);
    connect(vortaTestButton, &QPushButton::clicked, this, &CalibrationPage::vortaTestAsked);
}

void CalibrationPage::createTemperature(QVBoxLayout* layout)
{
    currentTemperatureLabel = named(new QLabel(tr("Current temperature (°C)")), "currentTemperatureLabel");
    currentTemperatureLineEdit =
        named(new QLineEdit, "currentTemperatureLineEdit", currentTemperatureLabel->text());
    currentTemperatureLabel->setBuddy(currentTemperatureLineEdit);
    buttonCalibTemp = button(tr("Send"), "buttonCalibTemp");
    buttonTempBackDef = button(tr("Back to default"), "buttonTempBackDef");
    calibrationResultText = resultLabel("calibrationResultText", tr("Result of the calibration"));

    auto* entry = new QHBoxLayout;
    entry->addWidget(currentTemperatureLineEdit, 1);
    entry->addWidget(buttonCalibTemp);
    layout->addWidget(currentTemperatureLabel);
    layout->addLayout(entry);
    layout->addWidget(buttonTempBackDef);
    layout->addWidget(calibrationResultText);
}

void CalibrationPage::createSelfTest()
{
    groupSeltTest = named(new QGroupBox(tr("Self Test")), "groupSeltTest");
    auto* layout = new QVBoxLayout(groupSeltTest);
    buttonGetTestDataq = button(tr("Get Data"), "buttonGetTestDataq");
    testResult = resultLabel("testResult", tr("Result of the self test"));
    layout->addWidget(buttonGetTestDataq);
    layout->addWidget(testResult);
}

void CalibrationPage::setFahrenheit(bool tf)
{
    isCelsius = !tf;
    currentTemperatureLabel->setText(isCelsius ? tr("Current temperature (°C)")
                                               : tr("Current temperature (°F)"));
    currentTemperatureLineEdit->setAccessibleName(currentTemperatureLabel->text());
}

void CalibrationPage::showSelfTest(bool isOn)
{
    groupSeltTest->setVisible(isOn);
}

void CalibrationPage::takeTemperature()
{
    bool isNumber = false;
    double celsius = Common::typedNumber(currentTemperatureLineEdit->text(), &isNumber);
    if (!isCelsius)
        celsius = (celsius - 32) * 5 / 9;
    const double tenths = celsius * 10 + 0.5;
    // On the wire nothing above 0 would reset the calibration, and beyond a short it would be another number.
    if (!isNumber || tenths < 1 || tenths > std::numeric_limits<short>::max()) {
        showResult(CALIBRATION_RANGE);
        return;
    }
    calibrationResultText->clear();
    Q_EMIT calibrate(short(tenths));
}

void CalibrationPage::showResult(int reason)
{
    QString text;
    switch (reason) {
    case CALIBRATION_OK:
        text = tr("Calibration successful");
        break;
    case CALIBRATION_ALLREADY:
        text = tr("Calibration aborted\nTemperature sensor already calibrated");
        break;
    case CALIBRATION_FAR:
        text = tr("Calibration aborted\nCalibration value too far from current readings");
        break;
    case CALIBRATION_RANGE:
        text = isCelsius ? tr("Calibration aborted\nCalibration can be done only between 0°C and 40°C")
                         : tr("Calibration aborted\nCalibration can be done only between 32°F and 104°F");
        break;
    case CALIBRATION_MODE:
        text = tr("Calibration aborted\nTembrin is not idle");
        break;
    }
    calibrationResultText->setText(text);
}

void CalibrationPage::showTest(const QVector<unsigned char>& results)
{
    const QString names[] = {tr("RAM"), tr("GPS"), tr("amb. temp"), tr("ext. temp"), tr("sound")};
    const int passed = results.isEmpty() ? 0 : results.first();
    QString text;
    for (int i = 0; i < int(std::size(names)); ++i)
        text +=
            names[i] + QLatin1Char('\t') + (passed >> i & 1 ? tr("PASS") : tr("FAIL")) + QLatin1Char('\n');
    testResult->setText(text);
}

void CalibrationPage::showVorta(const TembrinData& logger)
{
    const SensorList& list = logger.getSensors();
    const TembrinData::SampleBlock& values = logger.snapshot();
    if (!logger.isVorta() || list.size() < 5 || values.size() < list.size())
        return;
    const auto value = [&](int i) { return decimals(list[i]->shownValue(values[i].value(0), true)); };
    const auto offset = [&](int i) { return QString::number(logger.forceCalibration(i).offset); };
    const auto gain = [&](int i) { return decimals(double(logger.forceCalibration(i).gain)); };
    QString text = tr("F50=%1 off=%2 gain=%3\n").arg(value(0), offset(0), gain(0));
    text += tr("F5=%1 ").arg(value(1)) + tr("off=%1 ").arg(offset(1)) + tr("gain=%1\n").arg(gain(1));
    text +=
        tr("AccX = %1\n").arg(value(2)) + tr("AccY = %1\n").arg(value(3)) + tr("AccZ = %1\n").arg(value(4));
    calibrationResultText->setText(text);
}
