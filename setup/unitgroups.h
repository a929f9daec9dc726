#pragma once

#include <QWidget>

class QRadioButton;
class TembrinProtocol;

/// The units of the program, chosen for its next start and kept in the settings.
class UnitGroups : public QWidget
{
    Q_OBJECT

public:
    explicit UnitGroups(QWidget* parent = nullptr);

    /// From the settings to the buttons.
    void load();
    bool isFahrenheit() const;
    bool isHpa() const;

    /// As the program is left: the next start agrees on the unit of temperature with a logger that has one.
    /// One that is not there, or was never heard of, decides nothing.
    static void agreeWith(const TembrinProtocol& logger);

Q_SIGNALS:
    /// A unit was stored; `isOfLoggers` where the loggers show it too.
    void chosen(bool isOfLoggers);

private:
    void storeCelsius();
    void storeAll(bool isOfLoggers);

    QRadioButton* unitsCelsius = nullptr;
    QRadioButton* unitsFahrenheit = nullptr;
    QRadioButton* unitsBaro_mBar = nullptr;
    QRadioButton* unitsBaro_hPa = nullptr;
    QRadioButton* unitsKPA = nullptr;
    QRadioButton* unitsPSI = nullptr;
    QRadioButton* unitsMeters = nullptr;
    QRadioButton* unitsFeet = nullptr;
    QRadioButton* unitsKMH = nullptr;
    QRadioButton* unitsMPH = nullptr;
    QRadioButton* unitsMS = nullptr;
};
