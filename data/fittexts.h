#pragma once

#include <QCoreApplication>
#include <QStringList>

struct FittedCurve;

/// Puts a fit into words; what stands on a graph, in a dialog and in a report is the same.
class FitTexts
{
    Q_DECLARE_TR_FUNCTIONS(FitTexts)

public:
    /// "a·exp(b·t) + c"; `isTime`: what is measured over, which a formula calls x.
    static QString formula(const FittedCurve& fit, bool isTime);
    /// "55.23 ± 0.12 °C".
    static QString parameter(const FittedCurve& fit, int i);
    /// With as many digits as tell it from 1.
    static QString r2(const FittedCurve& fit);
    static QString rmse(const FittedCurve& fit);
    /// All of it in lines; `name` is that of the channel.
    static QString lines(const FittedCurve& fit, const QString& name, bool isTime);
    /// "3.22 °C", or the number alone.
    static QString withUnit(const QString& number, const QString& unit);
    /// A formula as a person typed it, for the reader: where the language has a comma in numbers it may stand
    /// for the point, and over the time t means the same as x.
    static QString typed(const QString& text, bool isTime);
};
