#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>
#include <QVector>

#include "app/fitresult.h"
#include "app/resulttable.h"

class ExpData;
class Plot;
struct GraphCopy;

/// What a report tells of one graph beside its picture, in the words and digits that the screen has.
class ReportPage
{
    Q_DECLARE_TR_FUNCTIONS(ReportPage)

public:
    struct Section
    {
        QString heading;
        QStringList texts; ///< a paragraph each, maybe of several lines
        QVector<ResultTable> tables;
    };

    /// `set` is that of `plot`, `group` whose it is; empty for the class. `rate` is the rate in words.
    static ReportPage of(const Plot& plot, const ExpData& set, const QString& group, const QString& rate);
    /// The fits of a graph, which is that of `group`.
    static QVector<FitResult> fitsOf(const GraphCopy& graph, const QString& group);
    /// One curve of all groups side by side: a table for each formula that at least two of them have.
    void addGroups(const QVector<FitResult>& fits);

    QString title;
    QStringList facts;
    QVector<Section> sections; ///< none is empty

private:
    void addMarks(const Plot& plot);
    void addStatistics(const Plot& plot, const ExpData& set, const QString& group);
    void add(const Section& section);
};
