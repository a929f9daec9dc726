#include "classroom/classset.h"

#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"

#include <algorithm>
#include <map>

ClassSet::ClassSet(multiConnectionsManager* manager)
    : manager(manager)
{
    std::fill(std::begin(shown), std::end(shown), 0);
}

void ClassSet::begin(double period)
{
    members = others = 0;
    isReleased = false;
    classPeriod = period;
    channelCount = manager->nDefTembrins();
    manager->dataC()->setDataNewEmpty(manager->getSensorsC(), period);
}

/// By their names: their places may be others in a class that was chosen again.
QStringList ClassSet::namesOut() const
{
    QStringList names;
    for (const int channel : manager->dataC()->out()) {
        if (const SensorPtr& sensor = manager->dataC()->getSens(channel))
            names.append(sensor->groupName);
    }
    return names;
}

void ClassSet::takeOut(const QStringList& names)
{
    ExpData* const set = manager->dataC();
    for (int channel = 0; channel < channelCount; ++channel) {
        const SensorPtr& sensor = set->getSens(channel);
        if (sensor && names.contains(sensor->groupName))
            set->setOut(channel, true);
    }
}

void ClassSet::rebuild(quint8 which)
{
    const QStringList names = namesOut();
    begin(periodOf(which));
    for (int slot = 0; slot < manager->nDefTembrins(); ++slot) {
        if (which >> slot & 1)
            join(slot);
    }
    takeOut(names);
}

void ClassSet::restore(quint8 which)
{
    const ExpData* const set = manager->dataC();
    members = which;
    others = 0;
    isReleased = false;
    classPeriod = set->dt;
    channelCount = set->meanIndex();
    for (int slot = 0; slot < manager->nMaxTembrins(); ++slot)
        shown[slot] = qMax(0, manager->dataAt(slot)->getSelectedSensor());
}

/// Of most of them; among equals that of the first.
double ClassSet::periodOf(quint8 which) const
{
    std::map<double, int> counts;
    double best = manager->dataAt(0)->dt;
    int most = 0;
    for (int slot = 0; slot < manager->nDefTembrins(); ++slot) {
        if (which >> slot & 1)
            ++counts[manager->dataAt(slot)->dt];
    }
    for (int slot = 0; slot < manager->nDefTembrins(); ++slot) {
        const double period = manager->dataAt(slot)->dt;
        if (which >> slot & 1 && counts[period] > most) {
            most = counts[period];
            best = period;
        }
    }
    return best;
}

bool ClassSet::fits(int slot) const
{
    return manager->dataAt(slot)->dt == classPeriod;
}

void ClassSet::join(int slot)
{
    const quint8 bit = quint8(1u << slot);
    if (slot >= manager->nDefTembrins() || isReleased)
        return;
    if (!fits(slot)) {
        others |= bit;
        return;
    }
    if (slot >= channelCount)
        grow();
    members |= bit;
    others &= quint8(~bit);
    const ExpData* set = manager->dataAt(slot);
    shown[slot] = qMax(0, set->getSelectedSensor());
    manager->dataC()->joinChannel(slot, manager->classChannel(slot), *set);
}

/// A channel more for each logger that was chosen since.
void ClassSet::grow()
{
    const quint8 before = members;
    const quint8 out = others;
    const QStringList names = namesOut();
    begin(classPeriod);
    others = out;
    for (int slot = 0; slot < channelCount; ++slot) {
        if (before >> slot & 1)
            join(slot);
    }
    takeOut(names);
}

void ClassSet::take(int slot)
{
    if (!isMember(slot))
        return;
    const ExpData* set = manager->dataAt(slot);
    const int last = set->getXSize() - 1;
    manager->dataC()->joinSample(slot, set->getXAt(last), set->getYNoConvAt(shown[slot], last));
}

void ClassSet::follow(int slot)
{
    if (!isMember(slot) || shown[slot] == qMax(0, manager->dataAt(slot)->getSelectedSensor()))
        return;
    // Another view of what there is: nothing new to save.
    const bool isUnsaved = manager->dataC()->isNeedSave();
    join(slot);
    manager->dataC()->setNeedSave(isUnsaved);
}

void ClassSet::release()
{
    if (!isReleased)
        released = members;
    members = others = 0;
    isReleased = true;
}

QVector<int> ClassSet::leftOut() const
{
    QVector<int> slotsOut;
    for (int slot = 0; slot < manager->nDefTembrins(); ++slot) {
        if (others >> slot & 1)
            slotsOut.append(slot);
    }
    return slotsOut;
}
