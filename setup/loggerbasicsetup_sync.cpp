#include "setup/loggerbasicsetup.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QStyle>

#include "classroom/multiconnectionsmanager.h"
#include "classroom/ratechoice.h"
#include "common/common.h"
#include "common/userprompt.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/classlink.h"
#include "setup/dialogtools.h"

namespace {

constexpr int voltageEntry = VERNIER_VOLTAGE - VERNIER_FIRST;
constexpr int samplesOffered = 4; ///< to all but Vorta loggers

} // namespace

/// The last question before anything is changed: a run that is on must not be disturbed.
bool loggerBasicSetup::isRefused()
{
    const QStringList running = link->running();
    if (running.isEmpty())
        return false;
    modifyAll();
    // A dialog that is not shown goes at once, and with it what stands on it.
    QWidget* on = isVisible() ? this : parentWidget();
    prompt->warning(on, tr("Can't perform setup"),
                    tr("Please stop logging before changing the logger SETUP.") + QLatin1Char('\n') +
                        tr("Running: %1.").arg(running.join(QStringLiteral(", "))));
    return true;
}

// --- From the plan to the dialog ---

void loggerBasicSetup::updateStatus()
{
    link->follow();
    modifyAll();
}

void loggerBasicSetup::modifyAll()
{
    const QScopedValueRollback<bool> own(isFilling, true);
    QVector<int> list;
    for (const ClassPlan::Channel& channel : link->plan.channels())
        list.append(channel.socket >= 0 ? -1 - channel.socket : channel.id);
    if (list != shownSensors) {
        shownSensors = list;
        fillSensors();
    }
    showPhotogate();
    takePhotogate();
    showSensors();
    showLists();
    showRunLength();
    showHint();
}

void loggerBasicSetup::showPhotogate()
{
    const TembrinData& leader = link->leaderState();
    const bool isReal = leader.hasPhotogate();
    photogateGroupBox->setVisible(leader.hasPhotogateCompatibleSensor() || isReal || link->plan.canBeGate());
    photogateGroupBox->setCheckable(!isReal);
    if (!isReal)
        photogateGroupBox->setChecked(link->plan.isGate());
    for (QLabel* picture : {diagram, gateIcon})
        picture->setMinimumSize(iconDim, iconDim);
}

void loggerBasicSetup::showSensors()
{
    const QVector<ClassPlan::Channel>& channels = link->plan.channels();
    for (int i = 0; i < channels.size(); ++i) {
        sensBoxes[i]->setChecked(channels[i].isTicked);
        if (channels[i].socket >= 0)
            showSocket(i);
        else
            sensBoxes[i]->setAccessibleName(sensBoxes[i]->text());
    }
}

/// A sensor that names itself is named by its box, any other by the list.
void loggerBasicSetup::showSocket(int i)
{
    const ClassPlan::Channel& channel = link->plan.channels()[i];
    const Sensor sensor(channel.id);
    QCheckBox* box = sensBoxes[i];
    QComboBox* list = comboBoxes[channel.socket];
    const bool isNamed = Sensor::isIDVestrel(sensor.ID);
    box->setText(isNamed ? sensor.name : QString());
    box->setAccessibleName(sensor.name);
    box->setIcon(QIcon(sensor.iconNameColor));
    list->setVisible(!isNamed);
    list->setCurrentIndex(socketEntry(channel.id));
}

int loggerBasicSetup::socketEntry(int id) const
{
    return Sensor::isIDVernier(id) ? id - VERNIER_FIRST : voltageEntry;
}

bool loggerBasicSetup::Entry::operator==(const Entry& other) const
{
    return value == other.value && text == other.text && tip == other.tip;
}

void loggerBasicSetup::showLists()
{
    const LoggerSettings& shown = link->plan.settings();
    const bool isVorta = link->plan.isVorta();
    fillList(comboRate, &rates, rateEntries(), isVorta ? shown.vortaRate : shown.rate);
    fillList(comboSamples, &sampleCounts, sampleEntries(), isVorta ? shown.vortaSamples : shown.samples);
    invertForceBox->setVisible(isVorta);
    invertForceBox->setChecked(shown.vortaInvertForce);
}

void loggerBasicSetup::fillList(QComboBox* list, Entries* present, const Entries& wanted, int value)
{
    if (*present != wanted) {
        *present = wanted;
        list->clear();
        for (const Entry& entry : wanted) {
            list->addItem(entry.text, entry.value);
            if (entry.tip.isEmpty())
                continue;
            list->setItemData(list->count() - 1, entry.tip, Qt::ToolTipRole);
            list->setItemData(list->count() - 1, entry.text + QLatin1String(". ") + entry.tip,
                              Qt::AccessibleTextRole);
        }
    }
    list->setCurrentIndex(list->findData(value));
    list->setToolTip(list->currentData(Qt::ToolTipRole).toString());
}

/// A rate that a group lacks names it. One that the logger reports and does not offer stands last.
loggerBasicSetup::Entries loggerBasicSetup::rateEntries() const
{
    const TembrinData& leader = link->leaderState();
    Entries entries;
    if (link->plan.isVorta()) {
        for (int i = 1; i < RateTables::vortaCount; ++i)
            entries.append({i, leader.VortaRateNames[i], {}});
        return entries;
    }
    QVector<short> offered = RateChoice::offered(leader);
    if (!offered.contains(link->plan.settings().rate))
        offered.append(link->plan.settings().rate);
    for (const short rate : qAsConst(offered)) {
        Entry entry{rate, leader.RateNames[rate], {}};
        const QStringList lacking = link->lackingRate(rate);
        if (!lacking.isEmpty()) {
            const QString names = lacking.join(QStringLiteral(", "));
            constexpr int namesInLine = 2;
            entry.text += QLatin1Char(' ') + (lacking.size() <= namesInLine
                                                  ? tr("(not %1)").arg(names)
                                                  : tr("(not %n groups)", nullptr, lacking.size()));
            entry.tip = tr("%1 can't record at this rate and gets the nearest of its own.").arg(names);
        }
        entries.append(entry);
    }
    return entries;
}

/// The usual numbers, and the logger's own where it has another.
loggerBasicSetup::Entries loggerBasicSetup::sampleEntries() const
{
    const TembrinData& leader = link->leaderState();
    const LoggerSettings& shown = link->plan.settings();
    const bool isVorta = link->plan.isVorta();
    Entries entries;
    for (int i = 0; i < (isVorta ? int(std::size(leader.samplesNames())) : samplesOffered); ++i)
        entries.append({isVorta ? leader.samplesNames()[i].toInt() : i, leader.samplesNames()[i], {}});
    if (!isVorta && shown.samples >= samplesOffered)
        entries.append({shown.samples, leader.samplesNames()[shown.samples], {}});
    const auto isOwn = [&shown](const Entry& entry) { return entry.value == shown.vortaSamples; };
    if (isVorta && std::none_of(entries.begin(), entries.end(), isOwn))
        entries.append({shown.vortaSamples, QString::number(shown.vortaSamples), {}});
    return entries;
}

// --- From the dialog to the plan ---

void loggerBasicSetup::ticked(int i, bool isOn)
{
    if (isRefused())
        return;
    link->plan.tick(i, isOn);
    planChanged();
}

void loggerBasicSetup::rateChosen(int index)
{
    if (isFilling || index < 0 || isRefused())
        return;
    link->plan.chooseRate(short(rates[index].value));
    planChanged();
}

void loggerBasicSetup::samplesChosen(int index)
{
    if (isFilling || index < 0 || isRefused())
        return;
    link->plan.chooseSamples(short(sampleCounts[index].value));
    planChanged();
}

void loggerBasicSetup::invertForceChosen(bool isOn)
{
    if (isRefused())
        return;
    link->plan.chooseInvertForce(isOn);
    planChanged();
}

void loggerBasicSetup::plugVernier(int socket, int index)
{
    if (isFilling || isRefused())
        return;
    link->plan.plug(socket, index + VERNIER_FIRST);
    planChanged();
}

/// The pulse sensor can stand in for a gate; which of the two its channel is follows the tick.
void loggerBasicSetup::photoGateChanged()
{
    if (isRefused())
        return;
    link->plan.chooseGate(photogateGroupBox->isChecked());
    planChanged();
}

void loggerBasicSetup::takePhotogate()
{
    bool isGood = false;
    const double width = Common::typedNumber(cardWidthLineEdit->text(), &isGood);
    isGood = isGood && width > 0;
    const bool isGate = !photogateGroupBox->isCheckable() || photogateGroupBox->isChecked();
    for (int i = 0; i < qMax(1, mTembrin->nDefTembrins()); ++i) {
        TembrinProtocol* logger = mTembrin->tembrinAt(i);
        logger->photogateEnabled = isGate;
        if (isGood)
            logger->photoObjW = width;
    }
    cardWidthHint->setVisible(!isGood);
    cardWidthLineEdit->setProperty("isWrong", !isGood);
    cardWidthLineEdit->setAccessibleDescription(isGood ? QString() : cardWidthHint->text());
    cardWidthLineEdit->style()->unpolish(cardWidthLineEdit);
    cardWidthLineEdit->style()->polish(cardWidthLineEdit);
}

void loggerBasicSetup::planChanged()
{
    needToUpdateAll = true;
    link->sendSetupToLeader();
    modifyAll();
}

void loggerBasicSetup::reject()
{
    on_Exit_clicked();
}

void loggerBasicSetup::on_Exit_clicked()
{
    if (needToUpdateAll)
        link->sendSetupToAll();
    done(0);
}
