#include "graph/storedmarks.h"

#include <QBuffer>
#include <QImageReader>

#include "data/expdata.h"
#include "graph/myplotmarker.h"

namespace {

using Stored = StoredExperiment::Marker;

class PictureReader
{
public:
    explicit PictureReader(qint64 fileSize)
        : pixelsLeft(qMax(minPixels, fileSize * 2)) // of 4 bytes each
    {
    }

    QPixmap read(const Stored& marker);

private:
    static constexpr qint64 minPixels = 4 << 20;
    qint64 pixelsLeft;
};

/// One that is too large comes smaller where its format can, else not at all.
QPixmap PictureReader::read(const Stored& marker)
{
    QBuffer buffer;
    buffer.setData(marker.picture);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, marker.isCompressed ? "JPG" : "PNG");
    QSize size = reader.size();
    if (size.isEmpty())
        return {};
    while (qint64(size.width()) * size.height() > pixelsLeft) {
        size /= 2;
        if (!marker.isCompressed || size.isEmpty())
            return {};
        reader.setScaledSize(size);
    }
    const QImage image = reader.read();
    pixelsLeft -= qint64(image.width()) * image.height();
    return QPixmap::fromImage(image);
}

bool isStored(const myPlotMarker& marker, bool isPart)
{
    switch (marker.type) {
    case MARKER_ANNOTATE:
    case MARKER_X:
    case MARKER_REGRESSION:
        return true;
    case MARKER_INTEGRAL:
        return isPart;
    case MARKER_FLOATING_TEXT:
        return marker.connectTo && marker.connectTo->type != MARKER_FLOATING_TEXT &&
               isStored(*marker.connectTo, isPart);
    case MARKER_X_GHOST:
    case MARKER_TANGENT:
    case MARKER_BUBBLE_TIP:
    case MARKER_FFT:
    case MARKER_LAST:
        return false;
    }
    return false;
}

/// The JPEG that the picture came from; made once, since each time costs detail.
QByteArray pictureBytes(myPlotMarker* marker)
{
    if (marker->pictureFile.isEmpty()) {
        QBuffer buffer(&marker->pictureFile);
        buffer.open(QIODevice::WriteOnly);
        marker->getPic().save(&buffer, "JPG");
    }
    return marker->pictureFile;
}

Stored storedMark(myPlotMarker* marker, const ExpData& data)
{
    const SensorPtr& sensor = data.getSens(marker->iSens);
    Stored to;
    to.type = marker->type;
    to.iSens = marker->iSens;
    to.x = marker->xValue();
    to.y = BaseUnit::of(sensor, marker->yValue());
    to.xOffset = marker->xOffset;
    to.yOffset = marker->yOffset;
    to.linX0 = marker->linX0;
    to.linX1 = marker->linX1;
    // The fitted curve, too, is one of base units: y = a x² + b x + c.
    to.a = BaseUnit::of(sensor, marker->a, true);
    to.b = BaseUnit::of(sensor, marker->b, true);
    to.c = marker->type == MARKER_REGRESSION ? BaseUnit::of(sensor, marker->c) : marker->c;
    to.r = marker->r;
    to.fit = marker->fit;
    if (!marker->fit.isNone()) {
        to.x = marker->fit.x.from(marker->fitX, to.x);
        to.linX0 = marker->fit.x.from(marker->fitX, to.linX0);
        to.linX1 = marker->fit.x.from(marker->fitX, to.linX1);
    }
    to.text = marker->label().text();
    to.isBubble = marker->isBubble();
    to.isLocked = marker->isLocked();
    to.isPic = marker->isPic();
    to.isCompressed = true;
    if (to.isPic)
        to.picture = pictureBytes(marker);
    return to;
}

/// What an experiment file has no place for. A text stands at a distance in pixels from its subject.
void tellPart(const myPlotMarker& marker, const QList<myPlotMarker*>& all, const QList<myPlotMarker*>& kept,
              Stored* to)
{
    to->xSensor = marker.xSensor;
    to->onFit = marker.type == MARKER_X ? kept.indexOf(all.value(marker.iReg)) : -1;
    if (marker.type != MARKER_FLOATING_TEXT)
        return;
    to->isPlacedByProgram = !marker.isPlacedByHand;
    if (to->isPlacedByProgram) {
        to->xOffset = myPlotMarker::textDistance;
        to->yOffset = -myPlotMarker::textDistance;
    }
}

} // namespace

QVector<Stored> StoredMarks::of(const QList<myPlotMarker*>& list, const ExpData& data, bool isPart)
{
    QList<myPlotMarker*> kept;
    for (myPlotMarker* marker : list) {
        // An experiment file has one x axis, and says of no mark that it belongs to another.
        if (isStored(*marker, isPart) && (isPart || marker->xSensor == data.getXYIndex()))
            kept.append(marker);
    }
    QVector<Stored> stored;
    for (myPlotMarker* marker : qAsConst(kept)) {
        stored.append(storedMark(marker, data));
        if (isPart)
            tellPart(*marker, list, kept, &stored.last());
    }
    return stored;
}

QList<myPlotMarker*> StoredMarks::made(const QVector<Stored>& stored, const StoredExperiment& from,
                                       qint64 fileSize, int* lostPictures)
{
    PictureReader pictures(fileSize);
    QList<myPlotMarker*> markers;
    for (const Stored& mark : stored) {
        auto* marker = new myPlotMarker(mark.iSens, markerType(mark.type));
        marker->setValue(mark.isPlacedByProgram ? myPlotMarker::notPlaced : mark.x, mark.y);
        marker->xOffset = mark.xOffset;
        marker->yOffset = mark.yOffset;
        marker->linX0 = mark.linX0;
        marker->linX1 = mark.linX1;
        marker->a = mark.a;
        marker->b = mark.b;
        marker->c = mark.c;
        marker->r = mark.r;
        marker->fit = mark.fit;
        marker->setText(mark.text);
        marker->setBubble(mark.isBubble);
        marker->xSensor = from.isPart ? mark.xSensor : from.xyIndex;
        if (mark.isPic) {
            marker->setPic(pictures.read(mark));
            if (mark.isCompressed)
                marker->pictureFile = mark.picture;
            *lostPictures += marker->isPic() ? 0 : 1;
        }
        if (mark.isLocked)
            marker->lock();
        markers.append(marker);
    }
    for (int i = 0; i < stored.size(); ++i) {
        myPlotMarker* const line = markers.value(stored.at(i).onFit);
        if (line && line->type == MARKER_REGRESSION)
            markers[i]->iReg = stored.at(i).onFit;
    }
    return markers;
}
