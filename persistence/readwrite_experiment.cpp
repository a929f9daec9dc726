#include "persistence/readwrite.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QPixmap>

#include "data/expdata.h"
#include "graph/plot.h"
#include "persistence/experimentwriter.h"
#include "persistence/safefile.h"
#include "persistence/storeddigits.h"
#include "persistence/storedexperiment.h"
#include "sensors/sensorsmaster.h"

#include <algorithm>

namespace {

/// Decodes the pictures of a file. Few bytes can ask for very many pixels, so all pictures together get a
/// limited number; one that is too large comes smaller where its format can, else not at all.
class PictureReader
{
public:
    explicit PictureReader(qint64 fileSize)
        : pixelsLeft(qMax(minPixels, fileSize * 2)) // of 4 bytes each
    {
    }

    QPixmap read(const StoredExperiment::Marker& marker);

private:
    static constexpr qint64 minPixels = 4 << 20;
    qint64 pixelsLeft;
};

QPixmap PictureReader::read(const StoredExperiment::Marker& marker)
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

QList<myPlotMarker*> madeMarkers(const QVector<StoredExperiment::Marker>& stored, PictureReader* pictures,
                                 int* lostPictures)
{
    QList<myPlotMarker*> markers;
    for (const StoredExperiment::Marker& from : stored) {
        auto* marker = new myPlotMarker(from.iSens, from.type);
        marker->setValue(from.x, from.y);
        marker->xOffset = from.xOffset;
        marker->yOffset = from.yOffset;
        marker->linX0 = from.linX0;
        marker->linX1 = from.linX1;
        marker->a = from.a;
        marker->b = from.b;
        marker->c = from.c;
        marker->r = from.r;
        marker->setText(from.text);
        marker->setBubble(from.isBubble);
        if (from.isPic) {
            marker->setPic(pictures->read(from));
            *lostPictures += marker->isPic() ? 0 : 1;
        }
        if (from.isLocked)
            marker->lock();
        markers.append(marker);
    }
    return markers;
}

/// What the catalogue does not know of a derived or imported channel: unit and digits.
void describeSpecial(Sensor* sensor, const StoredExperiment::Channel& channel, bool isDerived)
{
    constexpr int digitsOnDisplay = 5;
    sensor->ID = channel.sensorID;
    sensor->isRate = channel.isRate;
    sensor->specialType = channel.derivedBy; // it stands behind the average of a class
    if (isDerived)
        sensor->unitName += channel.unit.mid(Sensor(channel.originID).unitName.size());
    else
        sensor->unitName = channel.unit;
    const int decimals = StoredDigits::decimals(channel.samples, digitsOnDisplay);
    sensor->precision = std::max(sensor->precision, double(decimals));
}

void fillChannel(ExpData* data, int i, const StoredExperiment::Channel& channel, bool append)
{
    const bool isDerived = channel.originID != SENSOR_SPECIAL && sensorRow(channel.originID);
    data->addSensorData(i, isDerived ? channel.originID : channel.sensorID, channel.samples,
                        channel.curveMode, append);
    if (channel.sensorID == SENSOR_SPECIAL)
        describeSpecial(data->getSens(i).data(), channel, isDerived);
    data->setSensorScale(i, channel.minView, channel.maxView);
    if (channel.barUseScale)
        data->setSensorScaleBar(i, channel.barMinView, channel.barMaxView);
    if (channel.isNamed)
        data->setSensorSpecialName(i, channel.name);
    data->setLeftPad(i, channel.leftPad);
}

/// False, with nothing changed, where the experiment can't be appended.
bool fillData(ExpData* data, const StoredExperiment& stored, bool append)
{
    const int before = append ? data->getNSens() : 0;
    const int n = stored.channels.size();
    if (append) {
        if (!data->mergeDataFromNewOpen(n, stored.times, stored.rate))
            return false;
    } else {
        data->setDataNew(n, stored.times, stored.rate);
        data->setAppendIndex(stored.appendIndex);
    }
    for (int i = 0; i < n; ++i)
        fillChannel(data, before + i, stored.channels.at(i), append);
    if (append)
        data->makeUniformScales();
    data->setSelectedSensor(stored.activeSens);
    if (stored.xyIndex >= 0)
        data->setXYIndex(stored.xyIndex);
    return true;
}

/// Gives how many pictures could not be shown.
int showOn(const QList<Plot*>& graphs, const StoredExperiment& stored, const QString& title, bool append,
           qint64 fileSize)
{
    PictureReader pictures(fileSize);
    int lostPictures = 0;
    for (int i = 0; i < graphs.size(); ++i) {
        if (!graphs[i])
            continue;
        if (!append)
            graphs[i]->updateTitle(title);
        const auto& markers = i == 0 ? stored.lineMarkers : stored.barMarkers;
        graphs[i]->setMarkers(madeMarkers(markers, &pictures, &lostPictures));
    }
    return lostPictures;
}

void tell(QString* reason, const QString& text)
{
    if (reason)
        *reason = text;
}

} // namespace

bool ReadWrite::write(const QString& filename, const QString& title, const ExpData* data,
                      const QVector<QSharedPointer<oneScale>>& scales, const QList<myPlotMarker*>& markers,
                      const QList<myPlotMarker*>& barMarkers, const QString& defView, QString* reason)
{
    SafeFile file(filename);
    const bool isWritten =
        ExperimentWriter::write(&file, {title, data, scales, markers, barMarkers, defView}) && file.commit();
    tell(reason, file.reason());
    return isWritten;
}

QString ReadWrite::read(const QString& filename, ExpData* data, Plot* graph, Plot* bar, bool append,
                        QString* reason)
{
    tell(reason, QString());
    const QFileInfo info(filename);
    const QString cannot = tr("%1 can't be opened: %2").arg(info.fileName());
    QFile file(filename);
    if (!file.open(QIODevice::ReadOnly)) {
        tell(reason, cannot.arg(file.errorString()));
        return QStringLiteral("");
    }
    StoredExperiment stored;
    QString cause;
    if (!ExperimentReader::read(&file, &stored, &cause)) {
        tell(reason, cannot.arg(file.error() == QFileDevice::NoError ? cause : file.errorString()));
        return QStringLiteral("");
    }
    if (!fillData(data, stored, append)) {
        tell(reason, cannot.arg(tr("its rate or its first time is another one")));
        return QString::fromLatin1(appendMisfit);
    }
    const QString title = stored.isTitled ? stored.title : info.completeBaseName();
    const int lostPictures = showOn({graph, bar}, stored, title, append, file.size());
    if (lostPictures > 0)
        stored.leftOut += (stored.leftOut.isEmpty() ? QString() : QStringLiteral(", ")) +
                          tr("pictures: %1").arg(lostPictures);
    if (!stored.leftOut.isEmpty())
        tell(reason,
             tr("%1 was read but for what can't be used of it: %2").arg(info.fileName(), stored.leftOut));
    return stored.view.isEmpty() ? QStringLiteral("Line") : stored.view;
}
