#include "data/expdata.h"

#include <QLoggingCategory>

#include <algorithm>
#include <cmath>
#include <limits>

#include "data/fftdata.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

namespace {

Q_LOGGING_CATEGORY(lcData, "pellandra.data", QtInfoMsg)

struct FirstChannels
{
    int tembrinType;
    int first;
    int second;
};

constexpr FirstChannels firstChannels[] = {
    {LOGGER_BIRCH_OLD, SENSOR_AMB_TEMP, SENSOR_PH},
    {LOGGER_BIRCH, SENSOR_AMB_TEMP, SENSOR_PH},
    {LOGGER_BIRCH_DEMO, SENSOR_AMB_TEMP, SENSOR_PH},
    {LOGGER_BIRCH_2, SENSOR_AMB_TEMP, SENSOR_PH},
    {LOGGER_AMBER_OLD, SENSOR_AMB_TEMP_NTC, SENSOR_LIGHT},
    {LOGGER_AMBER, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT},
    {LOGGER_AMBER_UI, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT},
    {LOGGER_CEDAR, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT},
    {LOGGER_DUNE, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT},
    {LOGGER_EMBER, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT},
    {LOGGER_EMBER_INT, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT},
    {LOGGER_FJORD, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT},
    {LOGGER_GROVE_INT, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT},
    {LOGGER_GROVE_INT_2, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT},
    {LOGGER_SORREL_BASIC, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_LIGHT},
    {LOGGER_HEATH_INT, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_ION},
    {LOGGER_HEATH_INT_2, SENSOR_AMB_TEMP_NTC_CALC, SENSOR_PH},
    {LOGGER_VORTA, SENSOR_VORTA_FORCE50, SENSOR_VORTA_ACC_X},
};

} // namespace

ExpData::ExpData(const Units& units)
    : fftData(std::make_unique<FFTData>())
    , units(units)
{
    // GCC 12 warns of uninitialised memory, wrongly, when a list of temporaries is assigned at -O3.
    sensors.append(ownChannel(SENSOR_VOLTAGE));
    sensors.append(ownChannel(SENSOR_VOLTAGE));
    emptyChannels(sensors.size());
    setSelectedSensor(0);
}

ExpData::~ExpData() = default;

ExpData::ExpData(TembrinProtocol* tembrin)
    : fftData(std::make_unique<FFTData>())
    , cardWidth(tembrin->photoObjW)
    , units(tembrin->units)
{
    TembrinData* logger = tembrin->tembrinData;
    setDummySensors(logger->tembrinType());
    for (const SensorPtr& sensor : qAsConst(sensors))
        sensor->inLoggerIndex = logger->getIndexByID(sensor->ID);
    emptyChannels(sensors.size());
    setSelectedSensor(0);
    logger->setActiveSensors(sensors);
}

void ExpData::setDummySensors(int tembrinType)
{
    sensors.clear();
    const auto* row = std::find_if(std::begin(firstChannels), std::end(firstChannels),
                                   [&](const FirstChannels& r) { return r.tembrinType == tembrinType; });
    if (row == std::end(firstChannels)) {
        qCInfo(lcData, "no first channels for logger type 0x%x", unsigned(tembrinType));
    } else {
        for (const int ID : {row->first, row->second})
            sensors.append(ownChannel(ID));
    }
    nSens = sensors.size();
}

/// Every entry becomes a channel and keeps its place. What the user set on a view ends with its experiment.
void ExpData::copyChannels(const SensorList& channels)
{
    SensorList list;
    list.reserve(channels.size());
    for (const SensorPtr& channel : channels) {
        const SensorPtr copy = ownCopy(channel);
        copy->readSetMinMax = copy->readClassMinMax = copy->readClassSetMinMax = false;
        list.append(copy);
    }
    list = withCalculated(list);
    rightIndex = rightIn(list);
    sensors = list;
    nSens = sensors.size();
}

/// Where the channel on the right is among others: at its place, or the first of its kind; -1 for nowhere.
int ExpData::rightIn(const SensorList& channels) const
{
    const SensorPtr& right = getSens(rightIndex);
    if (!right)
        return -1;
    const auto isIt = [&](const SensorPtr& sensor) { return sensor && sensor->ID == right->ID; };
    if (isIt(channels.value(rightIndex)))
        return rightIndex;
    const auto found = std::find_if(channels.cbegin(), channels.cend(), isIt);
    return found == channels.cend() ? -1 : int(found - channels.cbegin());
}

/// A channel of this set's own: no setup of the logger can take it away.
SensorPtr ExpData::ownChannel(int ID) const
{
    return SensorPtr::create(ID, units);
}

void ExpData::setDataNewEmpty()
{
    appendIndex = 0;
    x.clear();
    sensors.clear();
    rightIndex = -1;
    emptyChannels(0);
    updateXExtent();
    needSave = false;
}

void ExpData::setDataNewEmpty(const SensorList& channels, double dt, const QString& name)
{
    appendIndex = 0;
    this->dt = dt;
    copyChannels(channels);
    x.clear();
    updateXExtent();
    emptyChannels(nSens);
    keepSelectionInside();
    finalData = false;
    needSave = false;
    groupName = name;
}

void ExpData::setDataNew(int nSens, const QVector<double>& t, double dt)
{
    appendIndex = 0;
    needSave = false;
    finalData = true;
    this->dt = dt;
    sensors = SensorList(qMax(0, nSens));
    rightIndex = -1;
    emptyChannels(sensors.size());
    keepSelectionInside();
    x = t;
    updateXExtent();
}

void ExpData::takeExperiment(const SensorList& channels, double dt, const QVector<QVector<double>>& columns)
{
    // A download that lost its end has fewer samples than it announced.
    int samples = 0;
    for (const QVector<double>& channel : columns)
        samples = qMax(samples, channel.size());
    QVector<double> times(samples);
    for (int i = 0; i < samples; ++i)
        times[i] = i * (dt > 0 ? dt : 1.0);
    takeExperiment(channels, dt, times, columns);
}

void ExpData::takeExperiment(const SensorList& channels, double dt, const QVector<double>& times,
                             const QVector<QVector<double>>& columns)
{
    if (times.isEmpty())
        return;
    setDataNewEmpty(channels, dt, groupName);
    y = columns;
    y.resize(nSens);
    x = times;
    updateXExtent();
    for (int c = 0; c < nSens; ++c) {
        findMinMax(y.at(c), minY[c], maxY[c]);
        updateMapRange(c);
        if (Sensor::fixedView(sensors.at(c)->ID))
            viewExtremes(c);
    }
    followOrigins(0, x.size() - 1);
    finalData = true;
    needSave = true;
}

void ExpData::addSensorData(int dataIndex, int masterID, const QVector<double>& v, int curveModeHint,
                            bool appendMode)
{
    if (!hasSlot(dataIndex))
        return;
    const SensorPtr sensor = ownChannel(masterID);
    if (appendMode) {
        sensor->name = adaptSensorName(sensor->name);
        sensor->appendIndex = appendIndex;
    }
    sensors[dataIndex] = sensor;
    y[dataIndex] = v;
    this->curveModeHint[dataIndex] = curveModeHint;
    findMinMax(v, minY[dataIndex], maxY[dataIndex]);
    updateMapRange(dataIndex);
    setDefaultView(dataIndex);
}

void ExpData::addSpecialSensorData(const QString& name, const QString& unit, int dataIndex,
                                   const QVector<double>& v)
{
    if (!hasSlot(dataIndex))
        return;
    const SensorPtr sensor = ownChannel(SENSOR_SPECIAL);
    sensor->name = name;
    sensor->unitName = unit;
    sensors[dataIndex] = sensor;
    y[dataIndex] = v;
    findMinMax(v, minY[dataIndex], maxY[dataIndex]);
    updateMapRange(dataIndex);
    const auto isLess = [](double a, double b) { return a < b || (std::isnan(b) && !std::isnan(a)); };
    const auto isMore = [](double a, double b) { return a > b || (std::isnan(b) && !std::isnan(a)); };
    const auto lowest = std::min_element(v.cbegin(), v.cend(), isLess);
    if (lowest == v.cend() || std::isnan(*lowest))
        return;
    sensor->min = sensor->minView = *lowest;
    sensor->max = sensor->maxView = *std::min_element(v.cbegin(), v.cend(), isMore);
}

void ExpData::setSensorSpecialName(int dataIndex, const QString& name)
{
    if (getSens(dataIndex))
        getSens(dataIndex)->name = name;
}

QString ExpData::adaptSensorName(const QString& name) const
{
    return appendIndex > 0 ? name + QStringLiteral("[%1]").arg(appendIndex + 1) : name;
}

void ExpData::setXRange()
{
    updateXExtent();
    finalData = true;
}

void ExpData::replaceYVal(int iSens, int iSamp, double value)
{
    if (iSens < 0 || iSens >= y.size() || iSamp < 0 || iSamp >= y.at(iSens).size())
        return;
    y[iSens][iSamp] = value;
    deviations.clear();
    minY[iSens] = maxY[iSens] = 0.0;
    findMinMax(y.at(iSens), minY[iSens], maxY[iSens]);
    updateMapRange(iSens);
    followOrigins(iSamp, iSamp);
    needSave = true;
}

void ExpData::removeSamples(int from, int to)
{
    from = qMax(0, from);
    if (from <= qMin(to, x.size() - 1))
        cuts.add(x.at(from), x.at(qMin(to, x.size() - 1)), samplePeriod() / 2);
    const auto cut = [from, to](QVector<double>& v) {
        const int n = qMin(to, v.size() - 1) - from + 1;
        if (n > 0)
            v.remove(from, n);
        return qMax(0, n);
    };
    cut(x);
    deviations.clear();
    for (int c = 0; c < y.size(); ++c) {
        if (cut(y[c]) > 0)
            leftPad[c] -= qBound(0, leftPad.at(c) - from, to - from + 1);
    }
    needSave = true;
}

void ExpData::doCrop(double x0, double x1)
{
    const auto notBefore = [this](int from, double time) {
        const auto reached = [time](double t) { return t >= time; };
        return int(std::find_if(x.cbegin() + from, x.cend(), reached) - x.cbegin());
    };
    const int left = notBefore(0, x0);
    if (left >= x.size())
        return;
    const int n = notBefore(left + 1, x1) - left;
    if (left > 0)
        cuts.add(std::numeric_limits<double>::lowest(), x.at(left - 1), samplePeriod() / 2);
    if (left + n < x.size())
        cuts.add(x.at(left + n), x.constLast(), samplePeriod() / 2);
    x = x.mid(left, n);
    deviations.clear();
    for (int c = 0; c < y.size(); ++c) {
        y[c] = y.at(c).mid(left, n);
        leftPad[c] = qBound(0, leftPad.at(c) - left, y.at(c).size());
        findMinMax(y.at(c), minY[c], maxY[c]);
    }
    updateXExtent();
    needSave = true;
}

void ExpData::setLeftPad(int i, int pad)
{
    if (i >= 0 && i < leftPad.size())
        leftPad[i] = pad;
}

void ExpData::setSelectedSensor(int i)
{
    if (i >= sensors.size())
        return;
    iSelectedSensor = i;
    if (const SensorPtr& sensor = getSens(i)) {
        sensRange = sensor->max - sensor->min;
        minLimit = sensor->min;
    }
}

void ExpData::keepSelectionInside()
{
    setSelectedSensor(iSelectedSensor < sensors.size() ? iSelectedSensor : 0);
    if (xySensIndex >= sensors.size())
        xySensIndex = -1;
    if (rightIndex >= sensors.size())
        rightIndex = -1;
    if (iSensorToDraw >= sensors.size())
        iSensorToDraw = 0;
}

void ExpData::resizeChannels(int n)
{
    const int before = curveModeHint.size();
    y.resize(n);
    minY.resize(n);
    maxY.resize(n);
    leftPad.resize(n);
    curveModeHint.resize(n);
    for (int c = before; c < n; ++c)
        curveModeHint[c] = -1;
    nSens = n;
}

void ExpData::emptyChannels(int n)
{
    isAveraged = false;
    outs.clear();
    deviations.clear();
    firstLive = 0;
    cuts.clear();
    y.clear();
    minY.clear();
    maxY.clear();
    leftPad.clear();
    curveModeHint.clear();
    resizeChannels(n);
}

SensorPtr ExpData::ownCopy(const SensorPtr& sensor) const
{
    return sensor ? SensorPtr::create(*sensor) : ownChannel(0);
}

void ExpData::updateXExtent()
{
    const auto range = std::minmax_element(x.cbegin(), x.cend());
    minX = x.isEmpty() ? 0.0 : *range.first;
    maxX = x.isEmpty() ? 0.0 : *range.second;
}
