#pragma once

#include <QObject>
#include <QPair>
#include <QPointer>
#include <QVector>

#include <functional>

#include "data/expdata.h"
#include "graph/plot.h"

class multiConnectionsManager;

/// Plays what is on the graphs again. While it is on, the sets of the groups and of the class hold what they
/// held at one moment of their run, so that whoever reads them shows that moment; the whole is kept here and
/// comes back to the bit. Each group goes by its own times. Marks are away meanwhile.
class Replay : public QObject
{
    Q_OBJECT

public:
    /// `manager` has the sets and graphs; not owned.
    explicit Replay(multiConnectionsManager* manager);

    /// From its first moment; false if nothing on the graphs has more than one.
    bool begin();
    bool isOn() const { return !parts.isEmpty(); }
    /// Seconds, or numbers of samples of what has no times.
    double first() const { return from; }
    double last() const { return to; }
    double now() const { return at; }
    bool isTimed() const { return hasTimes; }
    /// How many samples the group with the most has up to now.
    int rows() const;
    /// The same of the whole run.
    int most() const;
    void moveTo(double time);
    /// All is as it was.
    void end();
    /// Does with the whole run what changes the choice of channels, and goes on where it was.
    void aside(const std::function<void()>& change);

Q_SIGNALS:
    void begun();
    /// The set of a logger, or of the class (-1), has more samples, or else others.
    void moved(int index, bool isLonger);
    void ended();

private:
    struct Part
    {
        int index = 0;
        ExpData::Content whole;
        QVector<double> times; ///< ascending
        bool isFinal = false;
        int rows = 0;
        QVector<QPair<QPointer<Plot>, PlotState>> marks;
    };

    ExpData* setOf(const Part& part) const;
    static void take(const ExpData& set, Part* part);
    bool isOurs(const Part& part) const;
    void hideMarks(Part* part);
    static void showMarks(const Part& part);
    void showUntil(Part* part, double time);
    void showWhole(const Part& part);

    multiConnectionsManager* const manager;
    QVector<Part> parts;
    double from = 0;
    double to = 0;
    double at = 0;
    bool hasTimes = false;
};
