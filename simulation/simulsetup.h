#pragma once

#include <QStackedWidget>

#include <functional>

class QAbstractButton;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QSlider;
class QSplitter;
class simulations;

/// The controls of the two experiments, which also work while they run. It starts, pauses and begins anew,
/// and shares the window out between the controls, the picture, the pages and the graphs.
class simulSetup : public QStackedWidget
{
    Q_OBJECT

public:
    /// `vLayout` has this panel at place 0, the picture at 1 and the pages at 2 to 6;
    /// `graph` the graphs, which make room for a page. Neither is owned.
    simulSetup(simulations* simScene, QSplitter* vLayout, QSplitter* graph, QWidget* parent = nullptr);

    /// Asked before another set of samples begins; without one it always may.
    void setMayStart(const std::function<bool()>& may) { mayStart = may; }
    /// Reads all controls and brings texts and the length of the pendulum up to them.
    void setValues();
    void setStartIcon();
    /// Takes the settings over and sets time to 0; `newGraph` as in simulations::setupSimulation().
    void FFReset(bool newGraph);
    void PNDReset(bool newGraph);
    /// Back to the beginning; the graph stays until the next start.
    void restart();
    /// Shows experiment 0 or 1, or a page, 2 to 6.
    void setCurrentSimul(int index);
    /// Before the end of the program: the pages go before their views.
    void destroyViews();
    /// Height of the texts in pixels; buttons follow.
    void setTextHeight(int pixels);
    /// A set of samples has been begun and goes on, maybe after a pause.
    bool hasStarted() const { return isRunning; }

Q_SIGNALS:
    /// The samples since the last start are all there are.
    void ended();

private:
    struct Slider
    {
        QSlider* slider = nullptr;
        QLineEdit* text = nullptr;
    };
    struct Planet
    {
        QRadioButton* button = nullptr;
        QLabel* value = nullptr;
        double gravity = 0;
    };
    QWidget* createFreeFall();
    QWidget* createPendulum();
    Slider addSlider(QGridLayout* grid, const char* slider, const char* edit, const QString& label, int least,
                     int most, int start, const QString& unit);
    QLineEdit* addText(QGridLayout* grid, int row, const char* name, const QString& label,
                       const QString& unit);
    void addPlanets(QGridLayout* grid, const char* prefix, const QStringList& names,
                    QVector<Planet>* planets);
    void addButtons(QGridLayout* grid, const char* start, const char* restart);
    void startOrPause();
    double gravityOf(const QVector<Planet>& planets) const;
    void share(int index);
    void listen();
    void end();

    simulations* scene;
    QSplitter* vLayout;
    QSplitter* graph;
    std::function<bool()> mayStart;
    bool isRunning = false;
    double FFV0 = 0;
    double FFEnergyRatio = 0;
    double FFGravity = 0;
    double PNDMass = 0;
    double PNDLength = 0;
    double PNDGravity = 0;
    double PNDDamp = 0;
    Slider speed; ///< at the start of the fall
    Slider energy;
    Slider length;
    Slider mass;
    Slider damping;
    QVector<Planet> fallPlanets;
    QVector<Planet> pendulumPlanets;
    QVector<QPushButton*> startButtons; ///< one for each experiment
    QVector<QPushButton*> restartButtons;
};
