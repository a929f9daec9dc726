#include "setup/loggerbasicsetup.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QStyle>

#include "classroom/multiconnectionsmanager.h"
#include "common/userprompt.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/dialogtools.h"
#include "setup/ratechoice.h"

namespace {

constexpr int voltageEntry = VERNIER_VOLTAGE - VERNIER_FIRST;
constexpr int vortaFastest = RateTables::vortaCount - 1; ///< carries the channels 0, 2 and 4 only

bool isMissingAtFastest(int sensor)
{
    return sensor == 1 || sensor == 3;
}

} // namespace

bool loggerBasicSetup::isBusy() const
{
    return mTembrin->isTembrinConnect(0) && !tembrinData->isIdle();
}

void loggerBasicSetup::refuse()
{
    modifyAll();
    dontOpenFlag = true;
    // A dialog that is not shown goes at once, and with it what stands on it.
    QWidget* shown = isVisible() ? this : parentWidget();
    prompt->warning(shown, tr("Can't perform setup"),
                    tr("Please stop logging before changing the logger SETUP."));
}

bool loggerBasicSetup::isSocket(int i) const
{
    return tembrinData->isExtSens1(i) || tembrinData->isExtSens2(i);
}

/// The entry of the socket's list: what the socket holds, else what the logger last told, else a voltage.
int loggerBasicSetup::socketEntry(int i) const
{
    if (Sensor::isIDVernier(sensors[i]->ID))
        return sensors[i]->ID - VERNIER_FIRST;
    const int told =
        (tembrinData->isExtSens1(i) ? tembrinData->getExtSensID1() : tembrinData->getExtSensID2()) - 1;
    return told >= 0 && told <= voltageEntry ? told : voltageEntry;
}

// --- From logger 0 to the dialog ---

void loggerBasicSetup::updateStatus()
{
    modifyAll();
}

void loggerBasicSetup::modifyAll()
{
    const QScopedValueRollback<bool> own(isFilling, true);
    if (sensors != tembrinData->getSensors())
        fillSensors();
    if (isVortaShown != tembrinData->isVorta() || rates != RateChoice::offered(*tembrinData) ||
        comboSamples->itemText(3) != tembrinData->SamplesNames[3])
        fillLists();
    showPhotogate();
    takePhotogate();
    showSensors();
    if (isVortaShown)
        showVorta();
    else
        showRate();
    showRunLength();
    showHint();
}

void loggerBasicSetup::showPhotogate()
{
    photogateGroupBox->setVisible(tembrinData->hasPhotogateCompatibleSensor || tembrinData->hasPhotogate);
    if (photogateGroupBox->isCheckable() == tembrinData->hasPhotogate) {
        photogateGroupBox->setCheckable(!tembrinData->hasPhotogate);
        photogateGroupBox->setChecked(tembrinData->hasPhotogate); // else the toolkit ticks it by itself
    }
    for (QLabel* picture : {diagram, gateIcon})
        picture->setMinimumSize(iconDim, iconDim);
}

void loggerBasicSetup::showSensors()
{
    for (int i = 0; i < sensors.size(); ++i) {
        sensBoxes[i]->setChecked(sensors[i]->active);
        sensBoxes[i]->setAccessibleName(sensors[i]->name);
        if (isSocket(i))
            showSocket(i);
    }
}

/// A sensor that names itself is named by its box, any other by the list.
void loggerBasicSetup::showSocket(int i)
{
    const Sensor& sensor = *sensors[i];
    QCheckBox* box = sensBoxes[i];
    QComboBox* list = comboBoxes[tembrinData->isExtSens1(i) ? 0 : 1];
    const bool isNamed = Sensor::isIDVestrel(sensor.ID);
    box->setText(isNamed ? sensor.name : QString());
    box->setIcon(QIcon(sensor.iconNameColor));
    list->setVisible(!isNamed);
    list->setCurrentIndex(socketEntry(i));
}

void loggerBasicSetup::showRate()
{
    comboRate->setCurrentIndex(rates.indexOf(tembrinData->rate));
    comboSamples->setCurrentIndex(tembrinData->samples < comboSamples->count() ? tembrinData->samples : -1);
}

void loggerBasicSetup::showVorta()
{
    invertForceBox->setChecked(tembrinData->Vorta_invertForce);
    comboRate->setCurrentIndex(tembrinData->Vorta_rate - 1);
    int entry = comboSamples->count() - 1;
    while (entry > 0 && comboSamples->itemText(entry).toInt() != tembrinData->Vorta_samples)
        --entry;
    comboSamples->setCurrentIndex(entry);
}

void loggerBasicSetup::showRunLength()
{
    const int samples = comboSamples->currentText().toInt();
    const double period = isVortaShown ? tembrinData->VortaRates[tembrinData->Vorta_rate]
                                       : tembrinData->Rates[tembrinData->rate];
    QString text = period > 0 ? tr("The run takes %1.").arg(RateChoice::duration(samples * period))
                              : tr("Each sample is taken by hand, with the key of the logger.");
    if (!isVortaShown && tembrinData->isFastRate())
        text += QLatin1Char(' ') + tr("The loggers store it, and the graphs show it when it has ended.");
    runLength->setText(text);
}

void loggerBasicSetup::showHint()
{
    int connected = 0;
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i)
        connected += mTembrin->isTembrinConnect(i) ? 1 : 0;
    if (connected == 0)
        hint->setText(tr("No logger is connected, so nothing can be sent."));
    else if (connected == 1)
        hint->setText(tr("A change is sent to the logger at once."));
    else
        hint->setText(
            tr("A change is sent to the first logger at once and to all others when you press Exit."));
}

QPair<int, int> loggerBasicSetup::selection() const
{
    return {comboRate->currentIndex(), comboSamples->currentIndex()};
}

// --- From the dialog to the loggers ---

void loggerBasicSetup::takePhotogate()
{
    bool isGood = false;
    const double width = DialogTools::typedNumber(cardWidthLineEdit->text(), &isGood);
    isGood = isGood && width > 0;
    for (int i = 0; i < qMax(1, mTembrin->nDefTembrins()); ++i) {
        TembrinData* logger = mTembrin->tembrinDataAt(i);
        logger->photogateEnabled = !photogateGroupBox->isCheckable() || photogateGroupBox->isChecked();
        if (isGood)
            logger->photoObjW = width;
    }
    cardWidthHint->setVisible(!isGood);
    cardWidthLineEdit->setProperty("isWrong", !isGood);
    cardWidthLineEdit->setAccessibleDescription(isGood ? QString() : cardWidthHint->text());
    cardWidthLineEdit->style()->unpolish(cardWidthLineEdit);
    cardWidthLineEdit->style()->polish(cardWidthLineEdit);
}

void loggerBasicSetup::somethingChanged(int)
{
    somethingChanged();
}

void loggerBasicSetup::somethingChanged()
{
    if (isFilling)
        return;
    if (isBusy()) {
        refuse();
        return;
    }
    if (!isReady)
        return;
    if (isVortaShown)
        takeVorta();
    else
        takeSetup();
    showRunLength();
}

void loggerBasicSetup::takeSetup()
{
    for (int i = 0; i < sensors.size(); ++i)
        sensors[i]->active = sensBoxes[i]->isChecked();
    // Without a choice in the list the logger keeps the rate that it has.
    tembrinData->rate = rates.value(comboRate->currentIndex(), tembrinData->rate);
    if (comboSamples->currentIndex() >= 0)
        tembrinData->samples = short(comboSamples->currentIndex());
    for (int i = 1; i < mTembrin->nDefTembrins(); ++i) {
        TembrinData* other = mTembrin->tembrinDataAt(i);
        if (other->isVorta())
            continue;
        other->rate = RateChoice::counterpart(*other, tembrinData->rate);
        other->samples = tembrinData->samples;
        for (const SensorPtr& sensor : other->getSensors()) {
            const int same = tembrinData->getIndexByID(sensor->ID);
            sensor->active = same >= 0 && sensors[same]->active;
        }
    }
    mTembrin->sendCommandToFirstLogger(CMD_TEMBRIN_LOGGING_SETUP);
    needToUpdateAll = true;
}

/// Nothing is sent: the start of a run carries rate and samples.
void loggerBasicSetup::takeVorta()
{
    tembrinData->Vorta_rate = short(comboRate->currentIndex() + 1);
    tembrinData->Vorta_samples = comboSamples->currentText().toShort();
    tembrinData->Vorta_invertForce = invertForceBox->isChecked();
    Sensor::setInvertForce(tembrinData->Vorta_invertForce);
    keepVortaSensors();
    for (int i = 1; i < mTembrin->nDefTembrins(); ++i) {
        TembrinData* other = mTembrin->tembrinDataAt(i);
        if (!other->isVorta())
            continue;
        other->Vorta_rate = tembrinData->Vorta_rate;
        other->Vorta_samples = tembrinData->Vorta_samples;
        other->Vorta_invertForce = tembrinData->Vorta_invertForce;
        other->setActiveFromMask(tembrinData->activeMask());
    }
    modifyAll();
}

/// The boxes decide, but one sensor always stays, and the fastest rate has no room for all.
void loggerBasicSetup::keepVortaSensors()
{
    const bool isFastest = tembrinData->Vorta_rate == vortaFastest;
    int lastActive = -1;
    int count = 0;
    for (int i = 0; i < sensors.size(); ++i) {
        if (sensors[i]->active)
            lastActive = i;
        sensors[i]->active = sensBoxes[i]->isChecked() && !(isFastest && isMissingAtFastest(i));
        count += sensors[i]->active ? 1 : 0;
    }
    if (count == 0 && lastActive >= 0)
        sensors[isFastest && isMissingAtFastest(lastActive) ? 0 : lastActive]->active = true;
    // What the packets of a run are read by.
    tembrinData->setActiveFromMask(tembrinData->activeMask());
}

void loggerBasicSetup::vernierChanged(int index)
{
    plugVernier(true, index);
}

void loggerBasicSetup::vernierChanged2(int index)
{
    plugVernier(false, index);
}

void loggerBasicSetup::plugVernier(bool first, int index)
{
    if (isFilling)
        return;
    if (isBusy()) {
        refuse();
        return;
    }
    tembrinData->replaceSensor(first, index + VERNIER_FIRST);
    tembrin->sendCommand(CMD_TEMBRIN_LOGGING_SETUP);
}

/// The heart sensor can stand in for a gate; which of the two its channel is follows the tick.
void loggerBasicSetup::photoGateChanged()
{
    if (isBusy()) {
        photogateGroupBox->setChecked(!photogateGroupBox->isChecked());
        refuse();
        return;
    }
    const int id = photogateGroupBox->isChecked() ? QUELLMARK_PHOTOGATE_HEART : QUELLMARK_HEARTRATE_WAVE;
    tembrinData->replaceSensor(true, id);
    takePhotogate();
    showSensors();
    somethingChanged();
}

void loggerBasicSetup::reject()
{
    on_Exit_clicked();
}

void loggerBasicSetup::on_Exit_clicked()
{
    if (needToUpdateAll)
        mTembrin->sendCmdToAll(CMD_TEMBRIN_LOGGING_SETUP);
    done(0);
}
