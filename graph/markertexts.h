#pragma once

#include <QCoreApplication>
#include <QString>

#include <optional>

class ExpData;
class PinnedCurves;
class TimeScaleDraw;
class myPlotMarker;

/// What a graph's crosses are about.
enum class MarkerForm
{
    Curve,    ///< values over time or over a sensor
    Frequency ///< peaks of a spectrum
};

/// Words what markers tell, from the data and the unit of the time axis.
class MarkerTexts
{
    Q_DECLARE_TR_FUNCTIONS(MarkerTexts)

public:
    /// What a photogate told: the time, what was measured with it, and the result.
    struct Gate
    {
        double dt = 0;
        double measured = 0;
        double result = 0;
    };

    /// Neither is owned. Those of the class name the group with each sensor.
    MarkerTexts(const ExpData& data, const TimeScaleDraw& time, MarkerForm form, bool isClass);

    /// Runs behind the curves, which crosses are compared with; not owned.
    void setPinned(const PinnedCurves* behind) { pinned = behind; }
    /// The text beside a cross, tangent, fit or integral; empty for other kinds. `apart` are the seconds to
    /// another cross, which a time is told from.
    QString of(const myPlotMarker& marker, double apart) const;
    /// The distance of two crosses in words; empty over frequencies.
    QString distance(const myPlotMarker& first, const myPlotMarker& second) const;
    /// The same and the slope, in lines to stand between the two.
    QString span(const myPlotMarker& first, const myPlotMarker& second) const;
    /// With as many decimals as tell it from another `apart` Hz away.
    static QString frequency(double hertz, double apart);
    /// A line of a spectrum.
    static QString level(double value);
    static QString speed(const Gate& gate);
    static QString acceleration(const Gate& gate);

    /// The translated name of a kind of marker, empty for those that have none.
    static QString kindName(int type);
    /// The same in the form that fits into a sentence.
    static QString kindNameInSentence(int type);

private:
    struct Distance
    {
        QString x;
        QString y;     ///< empty for unlike sensors
        QString slope; ///< empty without one
    };

    std::optional<Distance> between(const myPlotMarker& first, const myPlotMarker& second) const;
    QString ofCross(const myPlotMarker& cross, double apart) const;
    QString ofFit(const myPlotMarker& fit) const;
    QString ofIntegral(const myPlotMarker& area) const;
    QString ofTangent(const myPlotMarker& tangent) const;
    QString nameOf(int iSens) const;
    QString valueText(int iSens, double value) const;
    QString unitOf(int iSens) const;

    const ExpData& data;
    const TimeScaleDraw& time;
    const MarkerForm form;
    const bool isClass;
    const PinnedCurves* pinned = nullptr;
};
