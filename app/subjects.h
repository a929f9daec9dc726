#pragma once

#include <QString>
#include <QVector>

#include "data/stretch.h"

class GraphTools;
class multiConnectionsManager;

/// A stretch of one channel, and whose it is.
struct Subject
{
    int slot = -1; ///< below 0: that of the class
    QString group;
    QString channel;
    Stretch stretch;
};
bool operator==(const Subject& a, const Subject& b);

/// What an analysis is about: the curve of the graph that the tools mean, or the chosen sensor of each group
/// over the same range.
class Subjects
{
public:
    /// Neither is owned.
    Subjects(const GraphTools* tools, multiConnectionsManager* manager)
        : tools(tools)
        , manager(manager)
    {
    }

    /// One; none if it cannot be told which graph is meant. Its stretch has no channel where the graph has no
    /// curves.
    QVector<Subject> meant() const;
    /// One for each group in use, also for one without samples.
    QVector<Subject> groups() const;
    /// In words, from where to where; empty for all of it.
    QString range() const;
    static QString rangeOf(const Stretch& stretch);

private:
    QString groupOf(int slot) const;

    const GraphTools* tools;
    multiConnectionsManager* manager;
};
