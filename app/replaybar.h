#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QToolBar>

#include <functional>
#include <optional>

class QAction;
class QHBoxLayout;
class QLabel;
class QPushButton;
class QSlider;
class Replay;

/// The line below the graphs by which a person plays a run again, and the clock that it is played by.
class ReplayBar : public QToolBar
{
    Q_OBJECT

public:
    /// `replay` is not owned.
    explicit ReplayBar(Replay* replay, QWidget* parent = nullptr);

    /// Plays from the beginning. `run` is its number among the kept ones, 0 if it is none of them.
    void begin(int run, const QString& name);
    int run() const { return number; }
    /// Its key is given by who knows what else the key means.
    QAction* endAction() const { return endAct; }
    /// Who tells the time, in ms, instead of the computer's clock.
    void setClock(const std::function<qint64()>& newClock) { clock = newClock; }
    /// Brings the run up to the clock and the slider; comes by itself while there is something to do.
    void step();

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    QWidget* createRow();
    void addSpeeds(QHBoxLayout* layout);
    void createSlider();
    void play(bool tf);
    void seek(int place);
    void showTime();
    void showEnd();
    QString timeText(double time) const;

    Replay* const replay;
    QElapsedTimer sinceMade;
    std::function<qint64()> clock;
    QTimer timer;
    QAction* endAct = nullptr;
    QLabel* words = nullptr;
    QPushButton* playButton = nullptr;
    QSlider* slider = nullptr;
    QLabel* times = nullptr;
    int number = 0;
    int speed = 1;
    bool isPlaying = false;
    qint64 steppedAt = 0;
    std::optional<double> sought; ///< by the slider, since the last step
};
