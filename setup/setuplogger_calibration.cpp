#include "setup/setuplogger.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include <limits>

#include "classroom/multiconnectionsmanager.h"
#include "common/common.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/dialogtools.h"

namespace {

constexpr short calibrationOfTheMaker = -1; ///< 0xFFFF on the wire

QString decimals(double value)
{
    return Common::myToString(value, 'f', 2);
}

} // namespace

void setupLogger::connectCalibration()
{
    connect(buttonCalibTemp, &QPushButton::clicked, this, &setupLogger::on_buttonCalibTemp_clicked);
    connect(buttonTempBackDef, &QPushButton::clicked, this,
            [this] { tembrin->sendCommand(CMD_CALIBRATE_TEMP, calibrationOfTheMaker); });
    connect(buttonGetTestDataq, &QPushButton::clicked, this,
            [this] { tembrin->sendCommand(CMD_GET_TEST_DATA); });
    connect(vortaTestButton, &QPushButton::clicked, this,
            [this] { tembrin->sendVortaCommand(CMD_VORTA_CALIBRATE_AND_TEST); });
}

void setupLogger::on_buttonCalibTemp_clicked()
{
    bool isNumber = false;
    double celsius = DialogTools::typedNumber(currentTemperatureLineEdit->text(), &isNumber);
    if (!isCelsius)
        celsius = (celsius - 32) * 5 / 9;
    const double tenths = celsius * 10 + 0.5;
    // On the wire nothing above 0 would reset the calibration, and beyond a short it would be another number.
    if (!isNumber || tenths < 1 || tenths > std::numeric_limits<short>::max()) {
        calib_result(CALIBRATION_RANGE);
        return;
    }
    calibrationResultText->clear();
    tembrin->sendCommand(CMD_CALIBRATE_TEMP, short(tenths));
}

void setupLogger::calib_result(int reason)
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

void setupLogger::test_data_result(const QVector<unsigned char>& results)
{
    const QString names[] = {tr("RAM"), tr("GPS"), tr("amb. temp"), tr("ext. temp"), tr("sound")};
    const int passed = results.isEmpty() ? 0 : results.first();
    QString text;
    for (int i = 0; i < int(std::size(names)); ++i)
        text +=
            names[i] + QLatin1Char('\t') + (passed >> i & 1 ? tr("PASS") : tr("FAIL")) + QLatin1Char('\n');
    testResult->setText(text);
}

void setupLogger::test_vorta_show_results()
{
    const SensorList& list = tembrinData->getSensors();
    if (!tembrinData->isVorta() || list.size() < 5)
        return;
    const auto value = [&list](int i) { return decimals(list[i]->getLastValue(0, true)); };
    const auto offset = [&list](int i) { return QString::number(list[i]->forceOffset); };
    const auto gain = [&list](int i) { return decimals(double(list[i]->forceGain)); };
    QString text = tr("F50=%1 off=%2 gain=%3\n").arg(value(0), offset(0), gain(0));
    text += tr("F5=%1 ").arg(value(1)) + tr("off=%1 ").arg(offset(1)) + tr("gain=%1\n").arg(gain(1));
    text +=
        tr("AccX = %1\n").arg(value(2)) + tr("AccY = %1\n").arg(value(3)) + tr("AccZ = %1\n").arg(value(4));
    calibrationResultText->setText(text);
}

void setupLogger::connectDebug()
{
    const std::pair<QPushButton*, commandType> commands[] = {
        {button_setTimeDate, CMD_SET_DATE_AND_TIME},
        {button_getStatus, CMD_GET_TEMBRIN_STATUS},
        {buttonSensorsID, CMD_GET_ALL_SENSORS_ID},
    };
    for (const auto& [button, command] : commands)
        connect(button, &QPushButton::clicked, this, [this, cmd = command] { tembrin->sendCommand(cmd); });

    const std::pair<QPushButton*, commandType> vortaCommands[] = {
        {VortaStopButton, CMD_VORTA_STOP},
        {VortaStatusButton, CMD_VORTA_GET_STATUS},
        {VortaSnapButton, CMD_VORTA_GET_ALL_SENS_VALUES},
    };
    for (const auto& [button, command] : vortaCommands)
        connect(button, &QPushButton::clicked, this,
                [this, cmd = command] { tembrin->sendVortaCommand(cmd); });
    connect(VortaRunButton, &QPushButton::clicked, this, &setupLogger::startVorta);
    connect(drawGraphCheckBox, &QCheckBox::clicked, this,
            [this](bool isOn) { tembrinData->Vorta_drawOnline = isOn; });
}

void setupLogger::startVorta()
{
    tembrinData->Vorta_rate = short(rateSpinBox->value());
    tembrinData->Vorta_samples = short(SampleSpinBox_2->value());
    tembrin->sendVortaCommand(CMD_VORTA_START);
}
