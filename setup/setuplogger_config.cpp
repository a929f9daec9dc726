#include "setup/setuplogger.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QRadioButton>

#include "classroom/multiconnectionsmanager.h"
#include "common/settings.h"
#include "data/expdata.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"

namespace {
constexpr short rangeOff = 0xFF;
}

void setupLogger::connectConfiguration()
{
    connect(boxSound, &QCheckBox::clicked, this, &setupLogger::sendConf);
    connect(boxGPS, &QCheckBox::clicked, this, &setupLogger::sendConf);
    connect(comboLanguage, qOverload<int>(&QComboBox::currentIndexChanged), this, &setupLogger::sendConf);

    // A click counts also where the choice stays the same; what a group unticks by itself does not.
    for (QRadioButton* unit : {unitsCelsius, unitsFahrenheit})
        connect(unit, &QRadioButton::clicked, this, &setupLogger::storeCelsius);
    for (QRadioButton* unit : {unitsBaro_mBar, unitsBaro_hPa, unitsKPA, unitsPSI, unitsMeters, unitsFeet,
                               unitsKMH, unitsMPH, unitsMS})
        connect(unit, &QRadioButton::clicked, this, &setupLogger::storeUnits);
    for (QRadioButton* unit : {unitsBaro_mBar, unitsBaro_hPa})
        connect(unit, &QRadioButton::clicked, this, &setupLogger::sendConf);
}

void setupLogger::connectSetup()
{
    connect(smootSpinBox, qOverload<int>(&QSpinBox::valueChanged), this, &setupLogger::kernelChanged);
    for (QComboBox* list : {comboTrigSens, comboTrigType, comboDynamicSensor})
        connect(list, qOverload<int>(&QComboBox::currentIndexChanged), this, &setupLogger::somethingChanged);
    for (QDoubleSpinBox* field : {spinTrigLevel, spinTrigSamples, spinRangeMin})
        connect(field, &QDoubleSpinBox::editingFinished, this, &setupLogger::editingFinished);
    connect(boxDynamicActive, &QCheckBox::clicked, this, &setupLogger::somethingChanged);
    connect(comboBox, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] { socketChanged(true); });
    connect(comboBox_2, qOverload<int>(&QComboBox::currentIndexChanged), this,
            [this] { socketChanged(false); });
    connect(this, &setupLogger::externalSet, tembrinData, &TembrinData::handleQuellmarkSensors);
}

void setupLogger::sendConf()
{
    if (!isReady || isFilling)
        return;
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
        TembrinData* logger = mTembrin->tembrinDataAt(i);
        logger->confSound = boxSound->isChecked();
        logger->confGPSEnabled = boxGPS->isChecked();
        if (comboLanguage->currentIndex() >= 0)
            logger->confLanguage = comboLanguage->currentIndex();
        logger->confFarenheit = unitsFahrenheit->isChecked();
        logger->confHPA = unitsBaro_hPa->isChecked();
    }
    mTembrin->sendCommandToFirstLogger(CMD_CONFIGURE_TEMBRIN);
    needToUpdateAll = true;
}

void setupLogger::storeCelsius()
{
    Settings::mainStore().setValue(QLatin1String(Settings::unitsCelsius), unitsCelsius->isChecked());
    sendConf();
}

void setupLogger::storeUnits()
{
    const std::pair<const char*, QRadioButton*> units[] = {
        {Settings::unitsCelsius, unitsCelsius}, {Settings::unitsBaroHpa, unitsBaro_hPa},
        {Settings::unitsAirKpa, unitsKPA},      {Settings::unitsMeter, unitsMeters},
        {Settings::unitsKmh, unitsKMH},         {Settings::unitsMph, unitsMPH},
    };
    QSettings store = Settings::mainStore();
    for (const auto& [key, unit] : units)
        store.setValue(QLatin1String(key), unit->isChecked());
    unitChanged = true;
}

void setupLogger::kernelChanged()
{
    const int size = smootSpinBox->value();
    // Only an odd number of samples has a middle one; somebody may type another.
    if (size % 2 == 0)
        smootSpinBox->setValue(size + 1);
    else
        somethingChanged();
}

void setupLogger::editingFinished()
{
    if (edited() != lastEdited) // and not only left
        somethingChanged();
}

QVector<double> setupLogger::edited() const
{
    return {spinTrigLevel->value(), spinTrigSamples->value(), spinRangeMin->value()};
}

std::pair<int, int> setupLogger::trigger() const
{
    return {comboTrigSens->currentIndex(), comboTrigType->currentIndex()};
}

void setupLogger::somethingChanged()
{
    if (!isReady || isFilling)
        return;
    lastEdited = edited();
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
        TembrinData* logger = mTembrin->tembrinDataAt(i);
        // A list without a choice has nothing to say.
        if (comboTrigSens->currentIndex() >= 0)
            logger->trigSens = short(comboTrigSens->currentIndex());
        if (comboTrigType->currentIndex() >= 0)
            logger->trigType = short(comboTrigType->currentIndex());
        logger->trigLevel = short(spinTrigLevel->value());
        logger->rangeMin = short(spinRangeMin->value());
        const bool isRanged = boxDynamicActive->isChecked() && comboDynamicSensor->currentIndex() >= 0;
        logger->rangeSens = isRanged ? short(comboDynamicSensor->currentIndex()) : rangeOff;
        if (ExpData* data = mTembrin->dataAt(i))
            data->smoothKernel = smootSpinBox->value();
    }
    mTembrin->sendCmdToAll(CMD_TEMBRIN_LOGGING_SETUP);
}

/// The logger hears of it too: its next status would take the choice back otherwise.
void setupLogger::socketChanged(bool first)
{
    if (!isReady || isFilling)
        return;
    const int id = (first ? comboBox : comboBox_2)->currentData().toInt();
    // The other socket is named where it holds one of the family, and left alone where it does not.
    const int other = (first ? comboBox_2 : comboBox)->currentData().toInt();
    const int unchanged = other > 0 ? other : -1;
    Q_EMIT externalSet(first ? id : unchanged, first ? unchanged : id);
    tembrin->sendCommand(CMD_TEMBRIN_LOGGING_SETUP);
}
