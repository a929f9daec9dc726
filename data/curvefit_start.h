#pragma once

#include "data/curvefit.h"
#include "data/formula.h"

namespace CurveFit {

/// Parameters from which a fit to these points, all finite and where the model has a value, is likely to find
/// its lowest minimum; best first, at least one. `formula` is that of Model::Formula.
QVector<QVector<double>> startValues(Model model, const ::Formula& formula, const QVector<double>& x,
                                     const QVector<double>& y);

} // namespace CurveFit
