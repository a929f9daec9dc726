#include "data/expdata.h"

#include "common/common.h"
#include "data/timeaxis.h"

const SensorPtr& ExpData::getSens(int i) const
{
    static const SensorPtr none;
    return hasSlot(i) ? sensors.at(i) : none;
}

const QVector<double>& ExpData::getYNoConv(int iSens) const
{
    static const QVector<double> none;
    return iSens >= 0 && iSens < y.size() ? y.at(iSens) : none;
}

double ExpData::getYNoConvAt(int iSens, int k) const
{
    const QVector<double>& v = getYNoConv(iSens);
    return k >= 0 && k < v.size() ? v.at(k) : 0.0;
}

double ExpData::shown(int iSens, double value) const
{
    const SensorPtr& sensor = getSens(iSens);
    return sensor ? sensor->convertToAltUnit(value) : value;
}

double ExpData::getYAt(int iSens, int k) const
{
    return shown(iSens, getYNoConvAt(iSens, k));
}

QVector<double> ExpData::getY(int iSens) const
{
    QVector<double> values = getYNoConv(iSens);
    const SensorPtr& sensor = getSens(iSens);
    if (sensor && sensor->needAltUnit()) {
        for (double& value : values)
            value = sensor->convertToAltUnit(value);
    }
    return values;
}

double ExpData::getMinY(int i) const
{
    return shown(i, minY.value(i));
}

double ExpData::getMaxY(int i) const
{
    return shown(i, maxY.value(i));
}

double ExpData::firstX() const
{
    return size() > 0 ? getXAt(0) : 0.0;
}

double ExpData::getLastXForIndex(int i) const
{
    return getXAt(qMin(getYSize(i), x.size()) - 1);
}

int ExpData::locateSensByID(int ID) const
{
    for (int i = 0; i < sensors.size(); ++i) {
        if (sensors.at(i) && sensors.at(i)->ID == ID)
            return i;
    }
    return -1;
}

bool ExpData::hasGPS() const
{
    return sensors.size() >= 2 && locateSensByID(SENSOR_GPS_LAT) >= 0;
}

double ExpData::getTimeScaledT() const
{
    return timeScale ? timeScale->getdT() : 1.0;
}

QString ExpData::getTimeScaleUnitName() const
{
    return timeScale ? timeScale->getUnitName() : QCoreApplication::translate("time unit", "s");
}

QString ExpData::getTimeScaleString(int iSamp) const
{
    return timeScale ? timeScale->getTimeString(getXAt(iSamp)) : Common::myToString(getXAt(iSamp), 'g', 6);
}

size_t ExpData::size() const
{
    return size_t(getYSize(iSensorToDraw));
}

QPointF ExpData::sample(size_t i) const
{
    const QVector<double>& values = getYNoConv(iSensorToDraw);
    const int last = qMin(values.size(), x.size()) - 1;
    if (last < 0)
        return {};
    const int k = int(qMin(i, size_t(last)));
    if (!isXYPlot())
        return {x.at(k), shown(iSensorToDraw, values.at(k))};
    const int lastOfX = qMin(k, getYSize(xySensIndex) - 1);
    return {getYAt(xySensIndex, lastOfX), shown(iSensorToDraw, values.at(k))};
}

QRectF ExpData::boundingRect() const
{
    if (x.isEmpty())
        return {};
    const double left = isXYPlot() ? minY.value(xySensIndex) : minX;
    const double right = isXYPlot() ? maxY.value(xySensIndex) : maxX;
    const double top = minY.value(iSensorToDraw);
    return {left, top, right - left, maxY.value(iSensorToDraw) - top};
}
