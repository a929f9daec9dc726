// The report of the lesson.

#include "app/mainwindow.h"

#include "app/keptruns.h"
#include "app/report.h"
#include "classroom/multiconnectionsmanager.h"
#include "data/expdata.h"
#include "graph/plot.h"
#include "instruments/statusline.h"

#include <QLabel>

namespace {

/// What is on the screen may be from a time when nobody was connected.
QString groupTitle(const QString& known, const ExpData& set, int index)
{
    const QString& own = set.getGroupName();
    if (!own.isEmpty() || !known.isEmpty())
        return own.isEmpty() ? known : own;
    return MainWindow::tr("Group %1").arg(index + 1);
}

} // namespace

void MainWindow::doReport()
{
    const ReportSource now = reportSource();
    if (now.graphs.isEmpty()) {
        statusLine->setAdvice(tr("There is nothing to report yet: run first, or open a file."));
        return;
    }
    if (report && report->isBusy()) {
        statusLine->setAdvice(tr("The report before is still being made."));
        return;
    }
    if (!report) {
        report = new Report(
            prompt, [this](double dt) { return rateName(dt); }, this);
        connect(report, &Report::told, statusLine, &StatusLine::setAdvice);
    }
    report->ask(now.title, [this] { return reportSource(); });
}

/// As it is now. In a file of a class the groups are what they were before it.
ReportSource MainWindow::reportSource()
{
    endReplay();
    ReportSource source;
    const KeptRun* const shown = keptRuns->find(keptRuns->shown());
    source.title = shown ? shown->outline.name : keptName();
    source.begun = runBegun;
    source.note = leftOutLine->isHidden() ? QString() : leftOutLine->text();
    for (int i = -1; i < (isOnlyStaticClassMode ? 0 : mTembrin->nDefTembrins()); ++i) {
        const Plot* const plot = i < 0 ? graph : mTembrin->plotAt(i);
        GraphCopy copy = GraphCopy::of(*plot, i < 0 ? *mTembrin->dataC() : *mTembrin->dataAt(i));
        if (i >= 0)
            copy.title = groupTitle(titleName(i), *mTembrin->dataAt(i), i);
        copy.pinned = pinsOf(i);
        copy.present = shown ? shown->outline.name : QString();
        if (!copy.isEmpty())
            source.graphs.append(copy);
    }
    return source;
}
