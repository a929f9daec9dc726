#pragma once

#include <QList>
#include <QVector>

#include "data/storedexperiment.h"

class ExpData;
class myPlotMarker;

/// Marks of a graph as files hold them, and back. GUI thread: pictures are those of the screen.
namespace StoredMarks {

/// Those of `list`, in its order, that a file keeps. A part of a lesson keeps all that a person placed, those
/// of the other x axis too.
QVector<StoredExperiment::Marker> of(const QList<myPlotMarker*>& list, const ExpData& data, bool isPart);

/// For Plot::setMarkers(), which takes them. Few bytes can ask for very many pixels, so all pictures together
/// get about as many as `fileSize` bytes; `lostPictures` counts those that could not be shown.
QList<myPlotMarker*> made(const QVector<StoredExperiment::Marker>& stored, const StoredExperiment& from,
                          qint64 fileSize, int* lostPictures);

} // namespace StoredMarks
