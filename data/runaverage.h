#pragma once

#include <QStringList>

#include "data/storedexperiment.h"

/// The mean of two runs of the same graph.
namespace RunAverage {

/// Of each channel of `first` that `second` has too: the same sensor, in the class of the same group. It has
/// the times of `first` as far as both go; between samples of `second` a value lies on a straight line. Where
/// either has a gap the mean has one. Without marks, and without times where no channel is the same.
StoredExperiment of(const StoredExperiment& first, const StoredExperiment& second);

/// The value of a channel at a time, base unit: linear between two samples that are no more than a missing
/// one apart; else not a number.
double valueAt(const StoredExperiment& run, const StoredExperiment::Channel& channel, double time);

/// For each channel of `run` its place in a list of keys that are the same in two runs of one graph: the
/// sensor, how it was derived, in the class the group, and which of the channels of that kind it is.
QStringList keysOf(const StoredExperiment& run);

} // namespace RunAverage
