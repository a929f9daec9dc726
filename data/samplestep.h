#pragma once

#include "data/calculation.h"

/// A step of analysis that changed the samples of a set, told so that it can be made again.
struct SampleStep
{
    enum class Kind
    {
        Smooth,
        Derivative,
        Crop,
        Edit,    ///< a value that a person typed
        Formula, ///< a channel that a formula gives
        Remove   ///< the last channel, which was derived
    };
    /// It only put a channel behind the others.
    bool isAppended() const { return kind == Kind::Derivative || kind == Kind::Formula; }

    Kind kind = Kind::Smooth;
    int channel = 0; ///< of all but a crop
    int window = 0;  ///< the samples that a value was made of
    int first = 0;   ///< of a crop: the rows that it left; of an edit: its row
    int rows = 0;
    double value = 0; ///< of an edit, base unit
    Calculation::Recipe recipe;
};
