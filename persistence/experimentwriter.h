#pragma once

#include <functional>

#include "data/storedexperiment.h"

/// Writes an experiment as XML in UTF-16, in the form that QDomDocument gives it, without a tree in memory.
class ExperimentWriter
{
public:
    /// Takes the next bytes; false for good when it can't.
    using Sink = std::function<bool(const char* bytes, qint64 size)>;
    /// False when `sink` failed. Any thread.
    static bool write(const Sink& sink, const StoredExperiment& experiment);
};
