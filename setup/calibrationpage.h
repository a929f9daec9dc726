#pragma once

#include <QVector>
#include <QWidget>

class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QVBoxLayout;
class TembrinData;

/// Calibration and self test of one logger.
class CalibrationPage : public QWidget
{
    Q_OBJECT

public:
    explicit CalibrationPage(QWidget* parent = nullptr);

    /// In which unit a temperature is typed; degrees Celsius before.
    void setFahrenheit(bool tf);

    void showSelfTest(bool isOn);
    /// A `calibrationReason`.
    void showResult(int reason);
    void showTest(const QVector<unsigned char>& results);
    void showVorta(const TembrinData& logger);

Q_SIGNALS:
    /// Tenths of a degree Celsius, or -1 for the calibration of the maker.
    void calibrate(short tenths);
    void testAsked();
    void vortaTestAsked();

private:
    void createTemperature(QVBoxLayout* layout);
    void createSelfTest();
    void takeTemperature();

    bool isCelsius = true;
    QLabel* currentTemperatureLabel = nullptr;
    QLineEdit* currentTemperatureLineEdit = nullptr;
    QPushButton* buttonCalibTemp = nullptr;
    QPushButton* buttonTempBackDef = nullptr;
    QLabel* calibrationResultText = nullptr;
    QGroupBox* groupSeltTest = nullptr;
    QPushButton* buttonGetTestDataq = nullptr;
    QLabel* testResult = nullptr;
    QPushButton* vortaTestButton = nullptr;
};
