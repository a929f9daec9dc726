#pragma once

#include <QPoint>
#include <QPointF>
#include <QString>
#include <QVector>

class ExpData;

/// What the photogates of an experiment saw pass.
namespace Photogates {

struct Told
{
    int iSens;
    QPointF at;    ///< the value that the text points at
    QPoint offset; ///< pixels of the text from there
    QString words;
};

/// A speed for each gate and, with exactly two, the acceleration between them; nothing where nothing passed.
QVector<Told> read(const ExpData& data);

} // namespace Photogates
