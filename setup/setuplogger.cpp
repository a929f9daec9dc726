#include "setup/setuplogger.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QTabBar>
#include <QTabWidget>

#include "classroom/multiconnectionsmanager.h"
#include "common/settings.h"
#include "common/userprompt.h"
#include "data/expdata.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/dialogtools.h"

using DialogTools::named;

namespace {
const QSize setupDialogSize(427, 512);
}

setupLogger::setupLogger(UserPrompt* prompt, QWidget* parent)
    : QDialog(parent)
    , prompt(prompt)
    , isCelsius(Settings::mainStore().value(QLatin1String(Settings::unitsCelsius), true).toBool())
{
    named(this, "setupLogger");
    setWindowTitle(tr("Configuration"));
    DialogTools::applyLook(this);
    tabs = named(new QTabWidget, "tabs", tr("Pages"));
    createAdvancedPage();
    createConfigPage();
    createDebugPage();
    createDesignPage();
    createCalibrationPage();
    createLayout();
    hidePages();
    modifyDesignDialog();
}

void setupLogger::createLayout()
{
    labelVersions = named(new QLabel, "labelVersions");
    labelVersions->setWordWrap(true);
    Exit = named(new QPushButton(tr("Exit")), "Exit");
    Exit->setAutoDefault(false);
    auto* below = new QHBoxLayout;
    below->addWidget(labelVersions, 1);
    below->addWidget(Exit);
    auto* all = new QVBoxLayout(this);
    all->addWidget(tabs, 1);
    all->addLayout(below);
}

void setupLogger::hidePages()
{
    const QSettings store = Settings::mainStore();
    groupSeltTest->setVisible(store.value(QLatin1String(Settings::selfTest), false).toBool());
    if (!store.value(QLatin1String(Settings::advanced), false).toBool()) {
        for (QScrollArea* page : {tabDebug, tabCalibration, tabAdvanced}) {
            tabs->removeTab(tabs->indexOf(page));
            page->setParent(this);
            page->hide();
        }
    }
    tabs->setCurrentIndex(0);
}

void setupLogger::createAll(multiConnectionsManager* manager)
{
    mTembrin = manager;
    tembrin = manager->tembrinAt(0);
    tembrinData = tembrin->tembrinData;
    for (const QString& type : tembrinData->TrigTypeNames)
        comboTrigType->addItem(type);
    connectControls();
    modifyAll();
    lastEdited = edited();
    isReady = true;
    QVector<QScrollArea*> pages;
    for (int i = 0; i < tabs->count(); ++i)
        pages.append(qobject_cast<QScrollArea*>(tabs->widget(i)));
    const int margin = 2 * layout()->contentsMargins().left();
    DialogTools::fitToScreen(
        this, setupDialogSize.expandedTo({tabs->tabBar()->sizeHint().width() + margin, 0}), pages);
}

void setupLogger::connectControls()
{
    connectConfiguration();
    connectSetup();
    connectCalibration();
    connectDebug();
    connect(Exit, &QPushButton::clicked, this, &setupLogger::on_Exit_clicked);
}

void setupLogger::fillLists()
{
    sensors = tembrinData->getSensors();
    for (QComboBox* list : {comboTrigSens, comboDynamicSensor}) {
        list->clear();
        for (const SensorPtr& sensor : qAsConst(sensors))
            list->addItem(sensor->name);
    }
}

void setupLogger::updateStatus()
{
    modifyAll();
}

void setupLogger::modifyAll()
{
    const auto before = trigger();
    const bool isSameList = sensors == tembrinData->getSensors();
    {
        const QScopedValueRollback<bool> own(isFilling, true);
        if (!isSameList)
            fillLists();
        showTrigger();
        showConfiguration();
        showUnits();
        showSockets();
        showVorta();
    }
    labelVersions->setText(tembrinData->versionLine());
    // The class shares the trigger that was chosen on the first logger.
    if (isSameList && trigger() != before)
        somethingChanged();
}

void setupLogger::showTrigger()
{
    if (tembrinData->rangeSens < sensors.size())
        comboDynamicSensor->setCurrentIndex(tembrinData->rangeSens);
    comboTrigSens->setCurrentIndex(tembrinData->trigSens < sensors.size() ? tembrinData->trigSens : -1);
    comboTrigType->setCurrentIndex(tembrinData->trigType);
    // What a person is typing stays.
    if (!spinRangeMin->hasFocus())
        spinRangeMin->setValue(tembrinData->rangeMin);
    if (!spinTrigLevel->hasFocus())
        spinTrigLevel->setValue(tembrinData->trigLevel);
}

void setupLogger::showConfiguration()
{
    const bool isBasic = tembrinData->tembrinType == LOGGER_SORREL_BASIC;
    boxSound->setVisible(!isBasic);
    boxGPS->setVisible(!isBasic);
    boxSound->setChecked(tembrinData->confSound);
    boxGPS->setChecked(tembrinData->confGPSEnabled);
    comboLanguage->setCurrentIndex(
        tembrinData->confLanguage < comboLanguage->count() ? tembrinData->confLanguage : -1);
    if (const ExpData* data = mTembrin->dataAt(0))
        smootSpinBox->setValue(data->smoothKernel);
}

void setupLogger::showUnits()
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

void setupLogger::showSockets()
{
    const int slots[] = {tembrinData->ext1Index, tembrinData->ext2Index};
    QComboBox* const lists[] = {comboBox, comboBox_2};
    for (int i = 0; i < 2; ++i) {
        const bool hasSocket = slots[i] >= 0 && slots[i] < sensors.size();
        lists[i]->setEnabled(hasSocket);
        const int id = hasSocket && Sensor::isIDVestrel(sensors[slots[i]]->ID) ? sensors[slots[i]]->ID : 0;
        lists[i]->setCurrentIndex(lists[i]->findData(id));
    }
}

void setupLogger::showVorta()
{
    rateSpinBox->setValue(tembrinData->Vorta_rate);
    SampleSpinBox_2->setValue(tembrinData->Vorta_samples);
    drawGraphCheckBox->setChecked(tembrinData->Vorta_drawOnline);
}

void setupLogger::reject()
{
    on_Exit_clicked();
}

void setupLogger::on_Exit_clicked()
{
    if (needToUpdateAll)
        mTembrin->sendCmdToAll(CMD_CONFIGURE_TEMBRIN);
    if (unitChanged) {
        // On the window behind: this one goes, and with it what stands on it.
        prompt->information(parentWidget(), tr("Change of units"),
                            tr("Please restart Kormelin for the change to take effect."));
    }
    done(0);
}
