#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <QVector>

#include "graph/myplotmarker.h"

class QIODevice;

/// What an experiment file says, in base units, before anything of the program is changed by it.
struct StoredExperiment
{
    struct Channel
    {
        int sensorID = 0;
        int originID = 0;  ///< of a derived channel: the kind it came from, 0 for all others
        int derivedBy = 0; ///< an ExpData::specialCurve, 0 for what is not derived
        bool isRate = false;
        QString unit; ///< in base units; empty: that of the kind
        bool isNamed = false;
        QString name;
        double minView = 0;
        double maxView = 0;
        bool barUseScale = false;
        double barMinView = 0;
        double barMaxView = 0;
        int curveMode = -1;
        int leftPad = 0;
        QVector<double> samples;
    };

    struct Marker
    {
        markerType type = MARKER_ANNOTATE;
        int iSens = 0;
        double x = 0;
        double y = 0;
        int xOffset = 0;
        int yOffset = 0;
        double linX0 = 0;
        double linX1 = 0;
        double a = 0;
        double b = 0;
        double c = 0;
        double r = 0;
        QString text;
        bool isBubble = false;
        bool isLocked = false;
        bool isPic = false;
        QByteArray picture;        ///< the bytes of a picture file
        bool isCompressed = false; ///< JPEG, else PNG
    };

    QString title;
    bool isTitled = false;
    QString view;
    double rate = 0;
    int activeSens = 0;
    int xyIndex = -1;
    int appendIndex = 0;
    QVector<double> times;
    QVector<Channel> channels; ///< those that could be read, in the order of their places in the file
    QVector<Marker> lineMarkers;
    QVector<Marker> barMarkers;
    QString leftOut; ///< one line on what could not be read, empty if nothing
};

/// Reads an experiment file in one pass. What it keeps is bounded by the size of the file.
class ExperimentReader
{
    Q_DECLARE_TR_FUNCTIONS(ExperimentReader)

public:
    /// False, with the reason, for what is no experiment at all; `experiment` is then of no use.
    static bool read(QIODevice* device, StoredExperiment* experiment, QString* reason);

    static constexpr int maxChannels = 512;
    static constexpr int maxMarkers = 1000;
};
