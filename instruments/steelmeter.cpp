#include "instruments/steelmeter.h"

#include "common/common.h"
#include "instruments/meterselect.h"
#include "protocol/tembrindata.h"

#include <cmath>

namespace {

const QStringList meterTypesNames = {
    QStringLiteral("radial"),  QStringLiteral("gauge"),    QStringLiteral("linear"), QStringLiteral("bar"),
    QStringLiteral("redbulb"), QStringLiteral("bluebulb"), QStringLiteral("display")};

QString pageOfMeters()
{
    return Common::isCommaSeparator() ? QStringLiteral("html/steel/MeterArrayComma.html")
                                      : QStringLiteral("html/steel/MeterArray.html");
}

constexpr int ofAllGroups = 0; // in place of a sensor

} // namespace

SteelMeter::SteelMeter(const TembrinData* tembrinData, ValueOf valueOf, QWidget* parent)
    : PageView(pageOfMeters(), parent)
    , tembrinData(tembrinData)
    , valueOf(std::move(valueOf))
{
    if (const auto stored = MeterStore::load(MeterStore::keyOfGroups(ofAllGroups)))
        groupType = stored->type;
    setInitialSettingForTembrinType(tembrinData->tembrinType());
    connect(this, &PageView::pageLoaded, this, &SteelMeter::htmlLoaded);
    connect(this, &PageView::titleChanged, this, &SteelMeter::htmlMessage);
}

void SteelMeter::setTembrinData(const TembrinData* data)
{
    tembrinData = data;
    setInitialSettingForTembrinType(data->tembrinType());
}

void SteelMeter::setInitialSettingForTembrinType(int tembrinType)
{
    if (dialog)
        dialog->reject();
    model = tembrinType;
    choices = initialMeters(tembrinType);
    for (int i = 0; i < MAX_METERS; ++i) {
        if (const auto stored = MeterStore::load(MeterStore::keyOf(model, i)))
            choices[i] = *stored;
    }
    describe();
}

// --- What is shown ---

/// The sensor of a meter; a logger that lacks it shows its first one.
SensorPtr SteelMeter::sensorOf(const MeterChoice& choice) const
{
    if (SensorPtr sensor = tembrinData->channel(choice.sensorID))
        return sensor;
    const SensorList all = tembrinData->channels();
    return all.isEmpty() ? SensorPtr() : all.first();
}

SteelMeter::Meter SteelMeter::meterOf(int slot, const MeterChoice& choice, const SensorPtr& sensor) const
{
    Meter meter;
    meter.slot = slot;
    meter.type = choice.type;
    meter.sensor = sensor;
    if (!sensor)
        return meter;
    meter.range = {sensor->min, sensor->max};
    if (choice.range && choice.sensorID == sensor->ID)
        meter.range = {sensor->convertToAltUnit(choice.range->first),
                       sensor->convertToAltUnit(choice.range->second)};
    return meter;
}

const MeterChoice& SteelMeter::choiceForGroups(int sensorID)
{
    auto found = groupChoices.find(sensorID);
    if (found == groupChoices.end())
        found = groupChoices.insert(
            sensorID, MeterStore::load(MeterStore::keyOfGroups(sensorID)).value_or(MeterChoice()));
    return *found;
}

QVector<SteelMeter::Meter> SteelMeter::metersNow()
{
    QVector<Meter> all;
    for (int i = 0; !areGroups && i < MAX_METERS; ++i)
        all.append(meterOf(tembrinData->index, choices[i], sensorOf(choices[i])));
    for (int i = 0; areGroups && i < groups.size(); ++i) {
        const SensorPtr& sensor = groups.at(i).sensor;
        all.append(meterOf(groups.at(i).slot, sensor ? choiceForGroups(sensor->ID) : MeterChoice(), sensor));
        all.last().type = groupType;
        all.last().caption = groups.at(i).name;
    }
    return all;
}

QJsonArray SteelMeter::descriptionOf(const Meter& meter)
{
    const Sensor* const sensor = meter.sensor.data();
    return {meterTypesNames.value(meter.type),
            sensor ? sensor->name : QString(),
            sensor ? sensor->unitName : QString(),
            sensor ? sensor->precision : 0,
            meter.range.first,
            meter.range.second,
            sensor ? sensor->demoVal : 0};
}

QJsonArray SteelMeter::description(const QVector<Meter>& all)
{
    QJsonArray list;
    for (const Meter& meter : all) {
        const QJsonArray one = descriptionOf(meter);
        for (const auto& value : one)
            list.append(value);
    }
    return list;
}

void SteelMeter::describe()
{
    if (!isLoaded())
        return;
    shown = metersNow();
    QStringList captions;
    for (const Meter& meter : qAsConst(shown))
        captions.append(meter.caption);
    const QJsonArray now = description(shown);
    if (now == told && captions == captionsTold)
        return;
    told = now;
    captionsTold = captions;
    call(QStringLiteral("setAllMeters"), now);
    call(QStringLiteral("setCaptions"), QJsonArray::fromStringList(captions));
    call(QStringLiteral("setMetersNumber"), {areGroups ? qMax(1, shown.size()) : lastN});
    setNewValues();
}

void SteelMeter::setNewValues()
{
    if (!isLoaded())
        return;
    QJsonArray values;
    for (const Meter& meter : qAsConst(shown)) {
        const double base = meter.sensor ? valueOf(meter.slot, meter.sensor->ID) : qQNaN();
        values.append(std::isfinite(base) ? QJsonValue(meter.sensor->shownValue(base, false)) : QJsonValue());
    }
    call(QStringLiteral("setValues"), values);
}

void SteelMeter::showGroups(const QVector<Group>& newGroups)
{
    if (!areGroups && dialog)
        dialog->reject();
    groups = newGroups;
    areGroups = true;
    describe();
}

void SteelMeter::setMeters(int n)
{
    if (areGroups && dialog)
        dialog->reject();
    lastN = n;
    areGroups = false;
    if (isLoaded())
        call(QStringLiteral("setMetersNumber"), {n});
    describe();
}

void SteelMeter::setColumn(bool tf)
{
    isColumn = tf;
    if (!isLoaded())
        return;
    if (tf)
        call(QStringLiteral("setMetersColumn"));
    else
        call(QStringLiteral("setMetersNoColumn"), {lastN});
}

void SteelMeter::doResize()
{
    if (isLoaded())
        call(QStringLiteral("doResize"));
}

void SteelMeter::setColors(const QVector<QPair<QString, QColor>>& colors)
{
    pageColors = colors;
    for (const auto& [name, color] : colors) {
        if (isLoaded())
            call(QStringLiteral("document.documentElement.style.setProperty"), {name, color.name()});
    }
}

/// Also when the page was loaded again: it knows nothing then.
void SteelMeter::htmlLoaded()
{
    told = QJsonArray();
    setColors(pageColors);
    if (isColumn)
        setColumn(true);
    describe();
}

// --- What a person chooses ---

void SteelMeter::htmlMessage(const QString& title)
{
    const QStringList fields = title.split(QLatin1Char(','));
    bool isNumber = false;
    const int i = fields.value(1).toInt(&isNumber);
    if (!fields.first().contains(QLatin1String("meterTapped")) || !isNumber)
        return;
    ask(i, QPoint(int(fields.value(2).toDouble()), int(fields.value(3).toDouble())));
}

void SteelMeter::ask(int i, const QPoint& at)
{
    if (dialog || i < 0 || i >= shown.size() || !shown.at(i).sensor)
        return;
    const Meter meter = shown.at(i);
    dialog = new meterSelect(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    if (areGroups) // what a group shows is chosen at its graph
        dialog->setData(i, meter.type, 0, 0, {meter.sensor});
    else if (meter.sensor->isVirtual)
        dialog->setData(i, meter.type, meter.sensor->inLoggerIndex, meter.sensor->virtualIndex,
                        tembrinData->getSensors());
    else
        dialog->setData(i, meter.type, tembrinData->getSensors().indexOf(meter.sensor), 0,
                        tembrinData->getSensors());
    dialog->setRangeInForce(meter.range.first, meter.range.second);
    connect(dialog, &QDialog::accepted, this,
            [this, chosen = dialog.data()] { areGroups ? takeForGroups(*chosen) : take(*chosen); });
    connect(this, &PageView::failed, dialog, &QDialog::reject); // it would stand over the words
    dialog->move(at);
    dialog->open();
}

void SteelMeter::take(const meterSelect& chosen)
{
    const SensorPtr master = tembrinData->getSensors().value(chosen.sensMasterIndex);
    if (!master)
        return; // its socket is another one's meanwhile
    MeterChoice choice;
    choice.type = chosen.meterType;
    choice.sensorID = master->hasVirtual ? master->ID + chosen.sensVirtNum + 1 : master->ID;
    const SensorPtr sensor = tembrinData->channel(choice.sensorID);
    if (!sensor)
        return;
    MeterChoice& present = choices[chosen.meter];
    const bool isSensorKept = sensor->ID == sensorOf(present)->ID;
    const bool isRange = chosen.newmin != chosen.newmax;
    if (isRange && (chosen.newmin != sensor->min || chosen.newmax != sensor->max))
        choice.range = {sensor->convertFromAltUnit(chosen.newmin), sensor->convertFromAltUnit(chosen.newmax)};
    else if (isSensorKept && !isRange)
        choice.range = present.range;
    const bool isTypeOnly = isSensorKept && !isRange;
    if (isTypeOnly && choice.type == present.type)
        return;
    present = choice;
    MeterStore::save(MeterStore::keyOf(model, chosen.meter), choice);
    if (!isLoaded())
        return;
    const Meter meter = meterOf(tembrinData->index, choice, sensor);
    QJsonArray arguments = isTypeOnly ? QJsonArray{meterTypesNames.value(choice.type)} : descriptionOf(meter);
    arguments.prepend(chosen.meter);
    call(isTypeOnly ? QStringLiteral("setMeterType") : QStringLiteral("setMeterSensor"), arguments);
    shown = metersNow();
    told = description(shown);
    setNewValues();
}

/// The kind of meter is that of all groups, and the range that of all who measure the same: they are there to
/// be compared.
void SteelMeter::takeForGroups(const meterSelect& chosen)
{
    const SensorPtr sensor = groups.value(chosen.meter).sensor;
    if (!sensor || sensor->name != chosen.sensActualName)
        return; // the group has chosen another one meanwhile
    MeterChoice choice;
    groupType = choice.type = chosen.meterType;
    MeterStore::save(MeterStore::keyOfGroups(ofAllGroups), choice);
    if (chosen.newmin != chosen.newmax) {
        choice.sensorID = sensor->ID;
        choice.range = {sensor->convertFromAltUnit(chosen.newmin), sensor->convertFromAltUnit(chosen.newmax)};
        MeterStore::save(MeterStore::keyOfGroups(sensor->ID), choice);
        groupChoices.insert(sensor->ID, choice);
    }
    describe();
}
