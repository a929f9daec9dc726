#pragma once

#include <QVector>

/// How many digits numbers need in a file so that they come back as they were.
namespace StoredDigits {

/// The fewest decimals that give `values` to `significant` digits of the largest of them.
int decimals(const QVector<double>& values, int significant);

/// The fewest decimals, from those of the file's layout on, with which restored() gives `times` again.
int decimalsOfTimes(const QVector<double>& times, double rate);
/// Rounded times of samples that were taken every `rate` seconds: where each is the rounding, to `decimals`,
/// of a multiple of the rate or of the first time and multiples of it, those are the times. Else as they are.
QVector<double> restored(const QVector<double>& stored, double rate, int decimals);

} // namespace StoredDigits
