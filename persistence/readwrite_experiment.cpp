#include "persistence/readwrite.h"

#include <QFile>
#include <QFileInfo>

#include "data/expdata.h"
#include "graph/plot.h"
#include "graph/scalemanager.h"
#include "graph/storedmarks.h"
#include "persistence/experimentreader.h"
#include "persistence/experimentwriter.h"
#include "persistence/safefile.h"

namespace {

/// An experiment file has the ranges of the graph.
void takeScales(StoredExperiment* stored, const ExpData& data,
                const QVector<QSharedPointer<oneScale>>& scales)
{
    for (StoredExperiment::Channel& channel : stored->channels) {
        const auto scale = scales.value(channel.place);
        if (!scale)
            continue;
        const SensorPtr& sensor = data.getSens(channel.place);
        channel.minView = BaseUnit::of(sensor, scale->scaleFullMin);
        channel.maxView = BaseUnit::of(sensor, scale->scaleFullMax);
    }
}

/// Gives how many pictures could not be shown.
int showOn(const QList<Plot*>& graphs, const StoredExperiment& stored, const QString& title, bool append,
           qint64 fileSize)
{
    int lostPictures = 0;
    for (int i = 0; i < graphs.size(); ++i) {
        if (!graphs[i])
            continue;
        if (!append)
            graphs[i]->updateTitle(title);
        const auto& markers = i == 0 ? stored.lineMarkers : stored.barMarkers;
        graphs[i]->setMarkers(StoredMarks::made(markers, stored, fileSize, &lostPictures));
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
    StoredExperiment stored = StoredExperiment::of(*data, false);
    takeScales(&stored, *data, scales);
    stored.title = title;
    stored.view = defView;
    stored.lineMarkers = StoredMarks::of(markers, *data, false);
    stored.barMarkers = StoredMarks::of(barMarkers, *data, false);
    SafeFile file(filename);
    const auto sink = [&file](const char* bytes, qint64 size) { return file.write(bytes, size); };
    const bool isWritten = ExperimentWriter::write(sink, stored) && file.commit();
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
    if (!stored.fill(data, append)) {
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
