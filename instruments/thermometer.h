#pragma once

#include <qwt_thermo.h>

#include "instruments/abstractmeter.h"
#include "sensors/sensor.h"

/// A large thermometer; for what is no temperature, a plain bar.
class ThermoMeter : public AbstractMeter
{
    Q_OBJECT

public:
    explicit ThermoMeter(bool junior, QWidget* parent = nullptr);

    /// What `sensor` measures, in the unit on display, with its range; a null one leaves everything.
    void showSensor(const SensorPtr& sensor);

    void setPrecision(int decimals);
    /// A thermometer shape, else a bar.
    void setHeat(bool tf);
    /// Above the scale, for the junior look; copied.
    void setPixmap(const QPixmap* picture);
    /// Numbers of many digits get a smaller font.
    void setDigitSmall(bool tf);
    QString valueText() const override;
    /// How far the column reaches, 5 to 241 of its space.
    double fillHeight() const;

protected:
    void paintBackground(QPainter& painter) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void toMeterSpace(QPainter& painter) const;
    void paintGlass(QPainter& painter) const;
    void paintTicks(QPainter& painter) const;
    void paintColumn(QPainter& painter) const;
    void paintValue(QPainter& painter) const;
    QColor ink() const;

    const bool isJunior;
    bool isHeat = true;
    QPixmap picture;
    int precision = 1;
    bool isDigitSmall = false;
};

enum thermoType
{
    THERMO_TYPE_JUNIOR = 1,
    THERMO_TYPE_LAB = 2
};

/// A small thermometer beside other controls.
class Thermo : public QwtThermo
{
    Q_OBJECT

public:
    /// `sensor` gives the range.
    Thermo(int type, const SensorPtr& sensor, QWidget* parent = nullptr);
    void updateSens(const SensorPtr& sensor);

public Q_SLOTS:
    void Update(double value) { setValue(value); }
};
