#include "app/reportpage.h"

#include "app/graphcopy.h"
#include "app/statistics.h"
#include "app/subjects.h"
#include "data/expdata.h"
#include "data/fittexts.h"
#include "data/rangestatistics.h"
#include "graph/myplotcurve.h"
#include "graph/myplotmarker.h"
#include "graph/plot.h"

namespace {

bool isSeen(const Plot& plot, int channel)
{
    const myPlotCurve* const curve = plot.getCurve(channel);
    return curve && curve->isShown();
}

/// "a = 3 °C" in two cells, any other line in one.
ResultTable cellsOf(const QString& text)
{
    const QString is = QStringLiteral(" = ");
    ResultTable table;
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        const int at = line.indexOf(is);
        table.rows.append(at < 0 ? QStringList{line} : QStringList{line.left(at), line.mid(at + is.size())});
    }
    return table;
}

} // namespace

ReportPage ReportPage::of(const Plot& plot, const ExpData& set, const QString& group, const QString& rate)
{
    ReportPage page;
    page.title = group.isEmpty() ? tr("The class: %1").arg(plot.title().text()) : group;
    if (set.getXSize() > 0)
        page.facts << tr("%n samples", nullptr, set.getXSize()) << tr("Sampling rate: %1").arg(rate);
    QStringList hidden;
    for (int i = 0; i < set.getNSens(); ++i) {
        if (set.getSens(i) && set.getYSize(i) > 0 && !isSeen(plot, i))
            hidden << set.getSens(i)->nameForLegend(group.isEmpty());
    }
    if (!hidden.isEmpty())
        page.facts << tr("Hidden: %1").arg(hidden.join(QStringLiteral(", ")));
    page.addMarks(plot);
    page.addStatistics(plot, set, group);
    return page;
}

void ReportPage::add(const Section& section)
{
    if (!section.texts.isEmpty() || !section.tables.isEmpty())
        sections.append(section);
}

void ReportPage::addMarks(const Plot& plot)
{
    Section notes{tr("Notes"), {}, {}};
    Section curves{tr("Fits"), {}, {}};
    Section values{tr("Values"), {}, {}};
    for (const myPlotMarker* marker : plot.markers) {
        const QString text = marker->label().text().trimmed();
        const myPlotMarker* const subject = marker->connectTo;
        if (text.isEmpty())
            continue;
        if (marker->type == MARKER_ANNOTATE)
            notes.texts << text;
        else if (marker->type == MARKER_FLOATING_TEXT && subject && subject->type == MARKER_REGRESSION)
            curves.tables << cellsOf(text);
        else if (marker->type == MARKER_FLOATING_TEXT)
            values.texts << text;
    }
    for (const Section& section : {notes, curves, values})
        add(section);
}

QVector<FitResult> ReportPage::fitsOf(const GraphCopy& graph, const QString& group)
{
    QVector<FitResult> fits;
    for (const PlacedMark& mark : graph.state.marks) {
        const SensorPtr sensor = graph.content.sensors.value(mark.iSens);
        if (mark.type != MARKER_REGRESSION || mark.fit.isNone() || !sensor)
            continue;
        const FittedCurve curve = mark.fit.in(mark.fitY);
        FitResult result;
        result.slot = graph.index;
        result.group = group;
        result.channel = sensor->name;
        result.stretch.xUnit = curve.x;
        result.stretch.yUnit = curve.y;
        result.stretch.isTime = mark.xSensor < 0;
        result.fit.curve = curve.curve;
        result.fit.names = curve.names();
        result.fit.errors = curve.errors;
        result.fit.n = curve.n;
        result.fit.r2 = curve.r2;
        result.fit.rmse = curve.rmse;
        fits << result;
    }
    return fits;
}

void ReportPage::addStatistics(const Plot& plot, const ExpData& set, const QString& group)
{
    const Stretch meant = plot.stretch();
    QVector<Subject> subjects;
    QVector<RangeStatistics> values;
    for (int i = 0; i < set.getNSens(); ++i) {
        const SensorPtr& sensor = set.getSens(i);
        if (!sensor || set.getYSize(i) == 0 || !isSeen(plot, i) || set.isMeaningless(i))
            continue;
        Subject subject;
        subject.slot = plot.getIndex();
        subject.group = group.isEmpty() ? sensor->groupName : group;
        subject.channel = sensor->name;
        subject.stretch = i == meant.iSens                   ? meant
                          : meant.isEmpty() || meant.isWhole ? Stretch::whole(set, i)
                                                             : Stretch::between(set, i, meant.from, meant.to);
        values << RangeStatistics::of(set, subject.stretch);
        subjects << subject;
    }
    if (subjects.isEmpty())
        return;
    Section section{tr("Statistics"), {}, {statistics::told(subjects, values)}};
    const QString range = Subjects::rangeOf(meant);
    if (!range.isEmpty())
        section.texts << range;
    if (!group.isEmpty()) { // its name stands above
        section.tables.last().header.removeFirst();
        for (QStringList& row : section.tables.last().rows)
            row.removeFirst();
    }
    add(section);
}

void ReportPage::addGroups(const QVector<FitResult>& results)
{
    QStringList told;
    for (const FitResult& first : results) {
        const QString formula = FitTexts::formula(first.curve(), first.stretch.isTime);
        if (told.contains(formula))
            continue;
        told << formula;
        QVector<FitResult> equal;
        bool isOfSeveral = false;
        for (const FitResult& other : results) {
            if (FitTexts::formula(other.curve(), other.stretch.isTime) != formula)
                continue;
            equal << other;
            isOfSeveral = isOfSeveral || other.slot != first.slot;
        }
        if (isOfSeveral)
            sections.append({tr("Fits of the groups: %1").arg(formula), {}, {FitTables::told(equal)}});
    }
}
