#include "setup/unitgroups.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QRadioButton>

#include "common/settings.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/dialogtools.h"

using DialogTools::named;

UnitGroups::UnitGroups(QWidget* parent)
    : QWidget(parent)
{
    struct Choice
    {
        QRadioButton** button;
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
         {{&unitsCelsius, "unitsCelsius", tr("Celsius")},
          {&unitsFahrenheit, "unitsFahrenheit", tr("Fahrenheit")}}},
        {"groupBarometer",
         tr("Barometer"),
         {{&unitsBaro_mBar, "unitsBaro_mBar", tr("mBar")}, {&unitsBaro_hPa, "unitsBaro_hPa", tr("hPa")}}},
        {"groupAirPressure",
         tr("Air pressure"),
         {{&unitsKPA, "unitsKPA", tr("kPa")}, {&unitsPSI, "unitsPSI", tr("PSI")}}},
        {"groupDistance",
         tr("Distance"),
         {{&unitsMeters, "unitsMeters", tr("meters")}, {&unitsFeet, "unitsFeet", tr("feet")}}},
        {"groupSpeed",
         tr("Speed"),
         {{&unitsKMH, "unitsKMH", tr("Km/h")},
          {&unitsMPH, "unitsMPH", tr("mph")},
          {&unitsMS, "unitsMS", tr("m/s")}}},
    };
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    const int columns = 2;
    int place = 0;
    for (const Group& group : groups) {
        auto* box = named(new QGroupBox(group.title), group.name);
        auto* row = new QHBoxLayout(box);
        for (const Choice& choice : group.choices) {
            auto* radio = named(new QRadioButton(choice.text), choice.name);
            radio->setAccessibleDescription(group.title);
            *choice.button = radio;
            row->addWidget(radio);
        }
        row->addStretch(1);
        const bool isWide = group.choices.size() > columns;
        grid->addWidget(box, place / columns, place % columns, 1, isWide ? columns : 1);
        ++place;
    }

    // A click counts also where the choice stays the same; what a group unticks by itself does not.
    for (QRadioButton* unit : {unitsCelsius, unitsFahrenheit})
        connect(unit, &QRadioButton::clicked, this, &UnitGroups::storeCelsius);
    for (QRadioButton* unit : {unitsBaro_mBar, unitsBaro_hPa})
        connect(unit, &QRadioButton::clicked, this, [this] { storeAll(true); });
    for (QRadioButton* unit : {unitsKPA, unitsPSI, unitsMeters, unitsFeet, unitsKMH, unitsMPH, unitsMS})
        connect(unit, &QRadioButton::clicked, this, [this] { storeAll(false); });
}

void UnitGroups::load()
{
    const QSettings store = Settings::mainStore();
    const auto isOn = [&store](const char* key, bool preset) {
        return store.value(QLatin1String(key), preset).toBool();
    };
    const bool isKmh = isOn(Settings::unitsKmh, true);
    const bool isMph = isOn(Settings::unitsMph, true);
    (isOn(Settings::unitsCelsius, true) ? unitsCelsius : unitsFahrenheit)->setChecked(true);
    (isOn(Settings::unitsBaroHpa, false) ? unitsBaro_hPa : unitsBaro_mBar)->setChecked(true);
    (isOn(Settings::unitsAirKpa, true) ? unitsKPA : unitsPSI)->setChecked(true);
    (isOn(Settings::unitsMeter, true) ? unitsMeters : unitsFeet)->setChecked(true);
    (isKmh ? unitsKMH : isMph ? unitsMPH : unitsMS)->setChecked(true);
}

bool UnitGroups::isFahrenheit() const
{
    return unitsFahrenheit->isChecked();
}

bool UnitGroups::isHpa() const
{
    return unitsBaro_hPa->isChecked();
}

void UnitGroups::storeCelsius()
{
    Settings::mainStore().setValue(QLatin1String(Settings::unitsCelsius), unitsCelsius->isChecked());
    Q_EMIT chosen(true);
}

void UnitGroups::storeAll(bool isOfLoggers)
{
    const std::pair<const char*, QRadioButton*> units[] = {
        {Settings::unitsCelsius, unitsCelsius}, {Settings::unitsBaroHpa, unitsBaro_hPa},
        {Settings::unitsAirKpa, unitsKPA},      {Settings::unitsMeter, unitsMeters},
        {Settings::unitsKmh, unitsKMH},         {Settings::unitsMph, unitsMPH},
    };
    QSettings store = Settings::mainStore();
    for (const auto& [key, unit] : units)
        store.setValue(QLatin1String(key), unit->isChecked());
    Q_EMIT chosen(isOfLoggers);
}

void UnitGroups::agreeWith(const TembrinProtocol& logger)
{
    // A Vorta logger is never recognised by a status with a unit.
    if (!logger.isConnect || !logger.tembrinData->isLoggerRecognized())
        return;
    Settings::mainStore().setValue(QLatin1String(Settings::unitsCelsius), !logger.wanted().fahrenheit);
}
