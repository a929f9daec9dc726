#include "setup/setuplogger.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTabBar>
#include <QTabWidget>

#include "classroom/multiconnectionsmanager.h"
#include "common/settings.h"
#include "common/userprompt.h"
#include "data/expdata.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/bootloader.h"
#include "setup/calibrationpage.h"
#include "setup/classlink.h"
#include "setup/configpage.h"
#include "setup/debugpage.h"
#include "setup/designpage.h"
#include "setup/dialogtools.h"
#include "setup/triggerpage.h"

using DialogTools::named;

namespace {
const QSize setupDialogSize(427, 512);
}

setupLogger::setupLogger(UserPrompt* prompt, QWidget* parent)
    : QDialog(parent)
    , prompt(prompt)
{
    named(this, "setupLogger");
    setWindowTitle(tr("Configuration"));
    DialogTools::applyLook(this);
    tabs = named(new QTabWidget, "tabs", tr("Pages"));
    createPages();
    createLayout();
    hidePages();
}

void setupLogger::createPages()
{
    const QSettings store = Settings::mainStore();
    trigger = new TriggerPage;
    config = new ConfigPage;
    debug = new DebugPage;
    design = new DesignPage(prompt);
    calibration = new CalibrationPage;
    calibration->showSelfTest(store.value(QLatin1String(Settings::selfTest), false).toBool());
    advancedPages.append(addPage("tabAdvanced", tr("Advanced setup"), trigger));
    addPage("tabConfig", tr("Configuraton"), config);
    advancedPages.append(addPage("tabDebug", tr("Debug"), debug));
    addPage("tabDesign", tr("Design"), design);
    advancedPages.append(addPage("tabCalibration", tr("Calibration"), calibration));
}

/// A page that is scrolled where large text or a small screen leaves no room for all of it.
QScrollArea* setupLogger::addPage(const char* name, const QString& title, QWidget* content)
{
    QScrollArea* page = named(DialogTools::scrolled(content), name, title);
    DialogTools::keepFromWheel(content);
    tabs->addTab(page, title);
    return page;
}

void setupLogger::createLayout()
{
    labelVersions = named(new QLabel, "labelVersions");
    labelVersions->setWordWrap(true);
    Exit = DialogTools::button(tr("Exit"), "Exit");
    auto* below = new QHBoxLayout;
    below->addWidget(labelVersions, 1);
    below->addWidget(Exit);
    auto* all = new QVBoxLayout(this);
    all->addWidget(tabs, 1);
    all->addLayout(below);
}

void setupLogger::hidePages()
{
    if (!Settings::mainStore().value(QLatin1String(Settings::advanced), false).toBool()) {
        for (QScrollArea* page : qAsConst(advancedPages)) {
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
    link = new ClassLink(manager, this);
    calibration->setFahrenheit(link->leader()->units.fahrenheit);
    if (Settings::mainStore().value(QLatin1String(Settings::advanced), false).toBool()) {
        firmware = new bootLoader(manager, prompt);
        addPage("tabBootLoader", tr("Firmware"), firmware);
    }
    modifyAll();
    connectPages();
    connectLogger();
    QVector<QScrollArea*> pages;
    for (int i = 0; i < tabs->count(); ++i)
        pages.append(qobject_cast<QScrollArea*>(tabs->widget(i)));
    const int margin = 2 * layout()->contentsMargins().left();
    DialogTools::fitToScreen(
        this, setupDialogSize.expandedTo({tabs->tabBar()->sizeHint().width() + margin, 0}), pages);
}

void setupLogger::connectPages()
{
    connect(link, &ClassLink::changed, this, &setupLogger::modifyAll);
    connect(config, &ConfigPage::chosen, this, &setupLogger::configurationChosen);
    connect(config, &ConfigPage::unitChosen, this, &setupLogger::unitChosen);
    connect(config, &ConfigPage::kernelChosen, this, &setupLogger::kernelChosen);
    connect(config, &ConfigPage::windowChosen, this, &setupLogger::windowChosen);
    connect(trigger, &TriggerPage::triggerChosen, this, &setupLogger::triggerChosen);
    connect(trigger, &TriggerPage::socketChosen, this, &setupLogger::socketChosen);
    connect(design, &DesignPage::mainChanged, this, &setupLogger::useMainDesignValues);
    connect(design, &DesignPage::graphChanged, this, &setupLogger::useGraphDesignValues);
    connect(design, &DesignPage::tableChanged, this, &setupLogger::useTableDesignValues);
    connect(Exit, &QPushButton::clicked, this, &setupLogger::on_Exit_clicked);
}

void setupLogger::connectLogger()
{
    TembrinProtocol* logger = link->leader();
    TembrinData* state = logger->tembrinData;
    connect(calibration, &CalibrationPage::calibrate, logger,
            [logger](short tenths) { logger->sendCommand(CMD_CALIBRATE_TEMP, tenths); });
    connect(calibration, &CalibrationPage::testAsked, logger,
            [logger] { logger->sendCommand(CMD_GET_TEST_DATA); });
    connect(calibration, &CalibrationPage::vortaTestAsked, logger,
            [logger] { logger->sendVortaCommand(CMD_VORTA_CALIBRATE_AND_TEST); });
    connect(debug, &DebugPage::command, logger, [logger](commandType cmd) { logger->sendCommand(cmd); });
    connect(debug, &DebugPage::vortaCommand, logger, &TembrinProtocol::sendVortaCommand);
    connect(debug, &DebugPage::vortaRun, this, &setupLogger::startVorta);
    connect(debug, &DebugPage::drawOnline, logger, [logger](bool isOn) { logger->Vorta_drawOnline = isOn; });
    connect(state, &TembrinData::calibrationResult, this, &setupLogger::calib_result);
    connect(state, &TembrinData::testDataReceived, this, &setupLogger::test_data_result);
    connect(state, &TembrinData::newSnapReceived, this, &setupLogger::test_vorta_show_results);
    connect(this, &setupLogger::externalSet, state, &TembrinData::handleQuellmarkSensors);
}

void setupLogger::updateStatus()
{
    link->follow();
    modifyAll();
}

void setupLogger::modifyAll()
{
    const TembrinData& state = link->leaderState();
    const bool isOtherTrigger = trigger->show(link->plan, state);
    const ExpData* data = mTembrin->dataAt(0);
    config->show(link->plan, state.tembrinType() == LOGGER_SORREL_BASIC, data ? data->smoothKernel : 3,
                 data ? data->derivWindow : 3);
    debug->show(link->plan.settings(), link->leader()->Vorta_drawOnline);
    labelVersions->setText(state.versionLine());
    // The class shares the trigger that was chosen on the first logger.
    if (isOtherTrigger && link->running().isEmpty()) {
        link->plan.chooseTrigger(trigger->trigger(link->plan.settings()), false);
        link->sendSetupToAll(ClassPlan::TriggerPart);
    }
}

// --- What a person chooses ---

bool setupLogger::isRefused()
{
    const QStringList running = link->running();
    if (running.isEmpty())
        return false;
    modifyAll();
    prompt->warning(this, tr("Can't perform setup"),
                    tr("Please stop logging before changing the logger SETUP.") + QLatin1Char('\n') +
                        tr("Running: %1.").arg(running.join(QStringLiteral(", "))));
    return true;
}

void setupLogger::configurationChosen(ClassPlan::Field field)
{
    link->plan.chooseConfiguration(field, config->shown(link->plan.settings()));
    sendConf();
}

void setupLogger::sendConf()
{
    const LoggerSettings shown = config->shown(link->plan.settings());
    link->plan.setUnits(shown.fahrenheit, shown.hpa);
    link->sendConfigurationToLeader();
    needToUpdateAll = true;
}

void setupLogger::unitChosen(bool isOfLoggers)
{
    unitChanged = true;
    if (isOfLoggers)
        sendConf();
}

/// Smoothing is the program's own; no logger hears of it.
void setupLogger::kernelChosen(int size)
{
    forAllData([size](ExpData* data) { data->smoothKernel = size; });
}

void setupLogger::windowChosen(int size)
{
    Settings::mainStore().setValue(Settings::derivWindow, size);
    forAllData([size](ExpData* data) { data->derivWindow = size; });
}

void setupLogger::forAllData(const std::function<void(ExpData*)>& act)
{
    for (int i = 0; i < mTembrin->nDefTembrins(); ++i) {
        if (ExpData* data = mTembrin->dataAt(i))
            act(data);
    }
    if (ExpData* data = mTembrin->dataC())
        act(data);
}

void setupLogger::triggerChosen()
{
    const LoggerSettings chosen = trigger->trigger(link->plan.settings());
    if (isRefused())
        return;
    link->plan.chooseTrigger(chosen);
    link->sendSetupToAll(ClassPlan::TriggerPart);
}

void setupLogger::socketChosen(int socket)
{
    const int id = trigger->socketSensor(socket);
    if (isRefused())
        return;
    // The other socket is named where it holds one of the family, and left alone where it does not.
    const int other = trigger->socketSensor(1 - socket);
    const int unchanged = other > 0 ? other : -1;
    Q_EMIT externalSet(socket == 0 ? id : unchanged, socket == 0 ? unchanged : id);
    link->plan.plug(socket, id);
    link->sendSetupToLeader(ClassPlan::SocketPart);
    needSocketsAtAll = true;
}

void setupLogger::startVorta(int rate, int samples)
{
    TembrinProtocol* logger = link->leader();
    LoggerSettings settings = logger->wanted();
    settings.vortaRate = short(rate);
    settings.vortaSamples = short(samples);
    logger->wantSetup(settings);
    logger->sendVortaCommand(CMD_VORTA_START);
}

// --- Answers of the logger ---

void setupLogger::calib_result(int reason)
{
    calibration->showResult(reason);
}

void setupLogger::test_data_result(const QVector<unsigned char>& results)
{
    calibration->showTest(results);
}

void setupLogger::test_vorta_show_results()
{
    calibration->showVorta(link->leaderState());
}

void setupLogger::reject()
{
    on_Exit_clicked();
}

bool setupLogger::showBootLoader(int slot)
{
    if (!firmware)
        return false;
    firmware->choose(slot);
    tabs->setCurrentWidget(findChild<QScrollArea*>(QStringLiteral("tabBootLoader")));
    return true;
}

void setupLogger::on_Exit_clicked()
{
    if (firmware && firmware->isBusy()) {
        if (!prompt->confirm(this, tr("Firmware is being written"),
                             tr("The logger can't be used until its firmware is whole. Stop all the same?")))
            return;
        firmware->cancel();
    }
    if (needSocketsAtAll)
        link->sendSetupToAll(ClassPlan::SocketPart);
    if (needToUpdateAll)
        link->sendConfigurationToAll();
    if (unitChanged) {
        // On the window behind: this one goes, and with it what stands on it.
        prompt->information(parentWidget(), tr("Change of units"),
                            tr("Please restart Kormelin for the change to take effect."));
    }
    done(0);
}
