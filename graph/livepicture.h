#pragma once

#include <QPair>
#include <QRect>
#include <QVector>

struct GraphParts;

/// Knows what a line graph over time shows of a run, so that a frame paints the pixel columns that the new
/// samples reach and no others: most frames of a run add a few columns to a picture that stands.
class LivePicture
{
public:
    /// The part of the canvas to paint again, with nothing but samples added since the last call. Null if
    /// something else changed, or nothing that this knows of: then it is the whole canvas.
    QRect grown(const GraphParts& parts);

private:
    struct State
    {
        int rows = 0;
        double firstX = 0;
        double lastX = 0;
        QVector<QPair<double, double>> scales; ///< of all curves, and of the x axis
    };

    State known;
};
