#include "setup/loggerbasicsetup.h"

#include <QLabel>
#include <QMap>

#include <algorithm>

#include "classroom/multiconnectionsmanager.h"
#include "classroom/ratechoice.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/classlink.h"

namespace {
const QString comma = QStringLiteral(", ");
}

/// How long a run of this logger takes; empty at the rate Manual.
QString loggerBasicSetup::runLengthOf(int slot) const
{
    const TembrinData& state = *mTembrin->tembrinDataAt(slot);
    const LoggerSettings settings = link->plan.settingsFor(*mTembrin->tembrinAt(slot));
    const bool isVorta = state.isVorta();
    const double period =
        isVorta ? TembrinData::VortaRates[settings.vortaRate] : TembrinData::Rates[settings.rate];
    const int samples = isVorta ? settings.vortaSamples : state.samplesNames()[settings.samples].toInt();
    return period > 0 ? RateChoice::duration(samples * period) : QString();
}

void loggerBasicSetup::showRunLength()
{
    const int first = link->leader()->index;
    const QString usual = runLengthOf(first);
    QString text = usual.isEmpty() ? tr("Each sample is taken by hand, with the key of the logger.")
                                   : tr("The run takes %1.").arg(usual);
    QVector<int> loggers = link->known();
    if (!loggers.contains(first))
        loggers.prepend(first);
    QMap<QString, QStringList> others;
    for (const int slot : qAsConst(loggers)) {
        const QString own = runLengthOf(slot);
        if (own != usual && !own.isEmpty())
            others[own].append(link->groupName(slot));
    }
    for (auto other = others.cbegin(); other != others.cend(); ++other)
        text += QLatin1Char(' ') + tr("%1 with %2.").arg(other.key(), other.value().join(comma));
    runLength->setText(text + fastNote(loggers));
}

/// Which of the loggers show nothing before the end of their run.
QString loggerBasicSetup::fastNote(const QVector<int>& loggers) const
{
    QStringList fast;
    for (const int slot : loggers) {
        const TembrinProtocol& session = *mTembrin->tembrinAt(slot);
        if (!session.tembrinData->isVorta() && link->plan.settingsFor(session).rate >= RateTables::firstFast)
            fast.append(link->groupName(slot));
    }
    if (fast.isEmpty())
        return {};
    return QLatin1Char(' ') +
           (fast.size() == loggers.size()
                ? tr("The loggers store it, and the graphs show it when it has ended.")
                : tr("%1 will store it, and the graphs show it when it has ended.").arg(fast.join(comma)));
}

void loggerBasicSetup::showHint()
{
    QStringList lines;
    const QStringList noRate = link->lackingRate(link->plan.settings().rate);
    if (!noRate.isEmpty()) {
        QStringList own;
        for (const int slot : link->known()) {
            const TembrinData& state = *mTembrin->tembrinDataAt(slot);
            if (link->plan.lacksRate(state)) {
                const short rate = RateChoice::counterpart(state, link->plan.settings().rate);
                own.append(tr("%1: %2", "group: rate").arg(link->groupName(slot), state.RateNames[rate]));
            }
        }
        lines.append(tr("Not all can record at this rate (%1). Such a curve is left out of the class graph.")
                         .arg(own.join(comma)));
    }
    const QStringList noSensor = link->lackingSensors();
    if (!noSensor.isEmpty())
        lines.append(tr("Without any of the chosen sensors: %1.").arg(noSensor.join(comma)));
    const QStringList silent = link->silent();
    if (!silent.isEmpty())
        lines.append(tr("Connected, but without an answer: %1.").arg(silent.join(comma)));
    warnings->setText(lines.join(QLatin1Char('\n')));
    warnings->setVisible(!lines.isEmpty());

    const int connected = link->connectedCount();
    if (connected == 0)
        hint->setText(tr("No logger is connected, so nothing can be sent."));
    else if (connected == 1)
        hint->setText(tr("A change is sent to the logger at once."));
    else
        hint->setText(
            tr("A change is sent to the first logger at once and to all others when you press Exit."));
}
