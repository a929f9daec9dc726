#pragma once

#include <qwt_scale_draw.h>

/// An axis that leaves out labels, evenly, where they would lie on each other.
class SparseScaleDraw : public QwtScaleDraw
{
protected:
    void drawLabel(QPainter* painter, double value) const override;
};
