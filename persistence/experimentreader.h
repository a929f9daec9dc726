#pragma once

#include <QCoreApplication>
#include <QString>

#include "data/storedexperiment.h"

class QIODevice;

/// Reads an experiment file in one pass. What it keeps is bounded by the size of the file.
class ExperimentReader
{
    Q_DECLARE_TR_FUNCTIONS(ExperimentReader)

public:
    /// False, with the reason, for what is no experiment at all; `experiment` is then of no use. Any thread.
    static bool read(QIODevice* device, StoredExperiment* experiment, QString* reason);

    static constexpr int maxChannels = 512;
    static constexpr int maxMarkers = 1000;
};
