#pragma once

#include <QHash>
#include <QObject>
#include <QSet>
#include <QTimer>

class Plot;
class SpectrumPane;
class multiConnectionsManager;

/// What stands beside the graphs of the groups and of the class. It is renewed at a pace of its own, so that
/// a run paints its graphs as fast as without it, and only while it is in sight. Groups go by their index,
/// the class by -1.
class SideViews : public QObject
{
    Q_OBJECT

public:
    explicit SideViews(multiConnectionsManager* manager, QObject* parent = nullptr);

    /// Opens the spectrum under a graph, or puts it away; `target` may be the spectrum itself.
    void toggleSpectrum(Plot* target);

    /// Samples have come.
    void mark(int index);
    /// Other samples, channels or another choice of the curve.
    void renew(int index);

    /// Milliseconds to the next renewal, when the last one took `costMs`.
    static int period(double costMs);

Q_SIGNALS:
    /// A graph that nobody has seen before.
    void graphMade(Plot* plot);
    void told(const QString& text);

private:
    SpectrumPane* paneUnder(Plot* graph);
    void renewDue();
    bool renewNow(int index);

    multiConnectionsManager* const manager;
    QHash<int, SpectrumPane*> spectra; ///< owned by the splitters that they stand in
    QSet<int> due;
    QTimer timer;
    double cost = 0; ///< of the last renewal, ms
};
