#pragma once

#include <QHash>
#include <QObject>
#include <QSet>
#include <QTimer>

class ClickableLabel;
class Plot;
class QWidget;
class SpectrumPane;
class Table;
class ThermoMeter;
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

    /// What a cell shows in place of a graph or beside it: for VIEW_TABLE or VIEW_THERMO.
    QWidget* make(int view, int index);
    void setTitle(int index, const QString& group);
    /// -1 for none.
    void setActive(int index);
    void setDesign();

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
    /// A press on the title of what stands in a cell.
    void titleClicked(int index);
    /// Another sensor of a group is to be shown.
    void sensorChosen(int index, int iSens);
    /// The set of a logger, or of the class (-1), has other samples.
    void edited(int index);

private:
    SpectrumPane* paneUnder(Plot* graph);
    static void makeRoom(Plot* graph, bool isOpen);
    QWidget* titled(ClickableLabel* title, QWidget* view);
    QWidget* makeTable(int index);
    QWidget* makeThermometer(int index);
    void edit(int index, int iSens, int row, double value);
    void showCrosses(int index);
    void showValue(int index);
    void openPalette(int index, const QPoint& at);
    void renewDue();
    bool renewNow(int index);

    multiConnectionsManager* const manager;
    QHash<int, SpectrumPane*> spectra; ///< owned by the splitters that they stand in
    QHash<int, Table*> tables;         ///< the cells own what stands in them
    QHash<int, ThermoMeter*> thermometers;
    QHash<int, ClickableLabel*> thermoTitles;
    QSet<int> due;
    QTimer timer;
    double cost = 0; ///< of the last renewal, ms
};
