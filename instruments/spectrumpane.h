#pragma once

#include <QWidget>

#include <memory>
#include <optional>

#include "data/fftdata.h"

class ExpData;
class Plot;
class QLabel;
class QMenu;
class QPushButton;

/// The spectrum of what a graph shows: of the stretch between its two crosses, else of its active curve. What
/// is told of the frequencies, and through which window, is chosen from a menu; a button puts it away.
class SpectrumPane : public QWidget
{
    Q_OBJECT

public:
    static constexpr int fewestSamples = 8;

    /// Neither is owned; both outlive the pane.
    SpectrumPane(Plot* graph, ExpData* source, QWidget* parent = nullptr);
    ~SpectrumPane() override;

    Plot* plot() const { return shown; }
    /// Anew from the samples.
    void renew();
    /// With the graph it goes and comes back until it is put away.
    void setOpen(bool tf);
    bool isOpen() const { return isWanted; }

Q_SIGNALS:
    /// It came into sight, or went.
    void appeared(bool tf);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    struct Stretch
    {
        int iSens = 0;
        double from = 0; ///< both 0 for the whole curve
        double to = 0;
    };

    void createHeader();
    void createMenu();
    std::optional<Stretch> stretch() const;
    void showLines(const Stretch& of);
    void showNothing();
    QString noteOf(const Stretch& of) const;
    QString kindName(FFTData::Kind of) const;
    QString unitOf(const QString& unit) const;

    Plot* const graph;
    ExpData* const source;
    const std::unique_ptr<ExpData> lines; ///< a value for each frequency
    Plot* const shown;                    ///< of the lines
    QLabel* note = nullptr;
    QMenu* menu = nullptr;
    QPushButton* choice = nullptr;
    FFTData::Kind kind = FFTData::Kind::Amplitude;
    QString window; ///< its name, empty for none
    bool isWanted = false;
};
