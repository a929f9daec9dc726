#include "app/runpicture.h"

#include "graph/colorscale.h"
#include "graph/graphdesign.h"
#include "persistence/lesson.h"

#include <QHash>
#include <QPainter>
#include <QPair>

#include <algorithm>
#include <cmath>

namespace {

using Range = QPair<double, double>;

const StoredExperiment* pictured(const LessonRun& run)
{
    const StoredExperiment* found = nullptr;
    for (const Lesson::Part& part : run.parts) {
        const bool isAny = part.isStored && !part.experiment.times.isEmpty();
        if (isAny && (!found || part.isClass))
            found = &part.experiment;
    }
    return found;
}

/// Of all channels of a kind together.
QHash<int, Range> rangesOf(const StoredExperiment& experiment)
{
    QHash<int, Range> ranges;
    for (const StoredExperiment::Channel& channel : experiment.channels) {
        for (const double value : channel.samples) {
            if (!std::isfinite(value))
                continue;
            const auto range = ranges.find(channel.sensorID);
            if (range == ranges.end())
                ranges.insert(channel.sensorID, {value, value});
            else
                *range = {std::min(range->first, value), std::max(range->second, value)};
        }
    }
    return ranges;
}

/// From the lowest to the highest value of each column of pixels.
void drawChannel(QPainter* painter, const QVector<double>& times, const QVector<double>& samples, Range range,
                 const QSize& size)
{
    const int count = std::min(times.size(), samples.size());
    const double span = times.constLast() - times.constFirst();
    const double height = range.second > range.first ? range.second - range.first : 1;
    const auto columnOf = [&](int i) {
        return span > 0 ? int((times.at(i) - times.constFirst()) / span * (size.width() - 1)) : 0;
    };
    const auto rowOf = [&](double value) {
        return int(std::lround((range.second - value) / height * (size.height() - 3))) + 1;
    };
    double before = qQNaN();
    for (int i = 0; i < count;) {
        const int column = columnOf(i);
        double low = before;
        double high = before;
        for (; i < count && columnOf(i) == column; ++i) {
            const double value = samples.at(i);
            if (std::isfinite(value)) {
                low = std::isnan(low) ? value : std::min(low, value);
                high = std::isnan(high) ? value : std::max(high, value);
                before = value;
            }
        }
        if (!std::isnan(low))
            painter->drawLine(column, rowOf(high), column, rowOf(low));
    }
}

} // namespace

QImage RunPicture::of(const LessonRun& run, const QSize& size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(GraphDesign::background);
    const StoredExperiment* const experiment = pictured(run);
    if (!experiment)
        return image;
    QPainter painter(&image);
    const QHash<int, Range> ranges = rangesOf(*experiment);
    for (int i = 0; i < experiment->channels.size(); ++i) {
        const StoredExperiment::Channel& channel = experiment->channels.at(i);
        painter.setPen(ColorScale::myColors(i));
        drawChannel(&painter, experiment->times, channel.samples, ranges.value(channel.sensorID), size);
    }
    return image;
}
