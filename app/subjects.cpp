#include "app/subjects.h"

#include "app/graphtools.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/common.h"
#include "data/expdata.h"
#include "graph/plot.h"

#include <QCoreApplication>

#include <algorithm>

bool operator==(const Subject& a, const Subject& b)
{
    return a.slot == b.slot && a.group == b.group && a.channel == b.channel &&
           a.stretch.iSens == b.stretch.iSens && a.stretch.from == b.stretch.from &&
           a.stretch.to == b.stretch.to && a.stretch.x == b.stretch.x && a.stretch.y == b.stretch.y;
}

/// What is on the screen may have come from another class than the present one.
QString Subjects::groupOf(int slot) const
{
    const QString own = manager->dataAt(slot)->getGroupName();
    return own.isEmpty() ? manager->groupName(slot) : own;
}

QVector<Subject> Subjects::meant() const
{
    const Plot* const plot = tools->seen();
    if (!plot)
        return {};
    Subject subject;
    subject.slot = plot->getIndex();
    subject.stretch = plot->stretch();
    const SensorPtr& sensor = tools->dataOf(plot)->getSens(subject.stretch.iSens);
    subject.channel = sensor ? sensor->nameForLegend(subject.slot < 0) : QString();
    subject.group = subject.slot < 0 ? QString() : groupOf(subject.slot);
    return {subject};
}

QVector<Subject> Subjects::groups() const
{
    const Plot* const plot = tools->seen();
    const Stretch wanted = plot ? plot->stretch() : Stretch();
    QVector<Subject> subjects;
    for (int i = 0; i < manager->nDefTembrins(); ++i) {
        const ExpData& set = *manager->dataAt(i);
        const int chosen = std::max(0, set.getSelectedSensor());
        Subject subject;
        subject.slot = i;
        subject.group = groupOf(i);
        if (wanted.isEmpty() || wanted.isWhole)
            subject.stretch = Stretch::whole(set, chosen);
        else if (plot->getIndex() == i)
            subject.stretch = wanted;
        else
            subject.stretch = Stretch::between(set, chosen, wanted.from, wanted.to);
        if (const SensorPtr& sensor = set.getSens(subject.stretch.iSens))
            subject.channel = sensor->name;
        subjects.append(subject);
    }
    return subjects;
}

QString Subjects::range() const
{
    const Plot* const plot = tools->seen();
    return rangeOf(plot ? plot->stretch() : Stretch());
}

QString Subjects::rangeOf(const Stretch& stretch)
{
    const auto end = [&stretch](double at) {
        return QStringLiteral("%1 %2").arg(Common::toSignificant(at), stretch.xUnit.name).trimmed();
    };
    return stretch.isWhole
               ? QString()
               : QCoreApplication::translate("Subjects", "Between the two markers, from %1 to %2.")
                     .arg(end(stretch.from), end(stretch.to));
}
