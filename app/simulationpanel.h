#pragma once

#include <QPointer>
#include <QSplitter>

#include <functional>

class multiConnectionsManager;
class simulSetup;
class simulations;

/// The place of the simulations beside the graphs: their controls and their picture, or a page. What an
/// experiment gives goes the way of a logger's samples, into the set of the first logger and the class.
class SimulationPanel : public QSplitter
{
    Q_OBJECT

public:
    /// `manager` has the run, and `graphs` what makes room for a page; neither is owned.
    SimulationPanel(multiConnectionsManager* manager, QSplitter* graphs, QWidget* parent = nullptr);
    ~SimulationPanel() override;

    /// Shows an experiment, 0 or 1, or a page, 2 to 6; what ran before ends.
    void choose(int simulation);
    /// Ends what runs and hides; the graphs are back.
    void closeSimulation();
    /// Who is asked before an experiment takes the place of the first group's samples; false to leave those.
    void setAsk(const std::function<bool()>& question) { mayReplace = question; }
    /// A page has the place of the graphs.
    bool isPage() const { return !isHidden() && current >= firstPage; }

Q_SIGNALS:
    /// Why an experiment did not start.
    void told(const QString& text);
    /// An experiment of this name has the place of the first group.
    void begun(const QString& name);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    static constexpr int firstPage = 2;

    void createParts(QSplitter* graphs);
    void connectRun();
    bool mayStart();
    void simDataFirst(const QVector<int>& sensorIDs);
    void simDataReceived(float currentT, const QVector<double>& data);
    void fitTexts();
    QString nameOfExperiment() const;

    multiConnectionsManager* manager;
    std::function<bool()> mayReplace;
    simulations* scene;
    QSplitter* column = nullptr;
    QPointer<simulSetup> setup;
    int current = 0;
};
