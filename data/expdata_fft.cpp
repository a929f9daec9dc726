// The spectrum of a channel.

#include "data/expdata.h"

#include <QLoggingCategory>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "data/fftdata.h"
#include "data/qfouriertransformer.h"

namespace {

Q_LOGGING_CATEGORY(lcSpectrum, "pellandra.data.spectrum", QtInfoMsg)

/// The stretch at the times of an unbroken sampling, first to last value. What is missing lies on straight
/// lines.
struct EvenSamples
{
    QVector<double> values;
    int bridged = 0;
};

bool isEven(const QVector<QPointF>& points, double dt)
{
    return std::abs(points.constLast().x() - points.constFirst().x() - (points.size() - 1) * dt) < dt / 2;
}

EvenSamples evened(const QVector<QPointF>& points, double dt)
{
    EvenSamples even;
    if (points.isEmpty())
        return even;
    const double first = points.constFirst().x();
    const double steps = std::round((points.constLast().x() - first) / dt);
    // A stretch with more holes than samples says nothing about frequencies.
    if (!(steps < 2.0 * points.size()))
        return even;
    const int n = int(steps) + 1;
    even.values.reserve(n);
    even.bridged = std::max(0, n - points.size());
    int k = 1;
    for (int i = 0; i < n; ++i) {
        const double t = first + i * dt;
        while (k < points.size() - 1 && points.at(k).x() < t)
            ++k;
        const QPointF left = points.at(std::max(0, k - 1));
        const QPointF right = points.at(std::min(k, points.size() - 1));
        const double width = right.x() - left.x();
        const double part = width > 0 ? std::clamp((t - left.x()) / width, 0.0, 1.0) : 0.0;
        even.values.append(left.y() + part * (right.y() - left.y()));
    }
    return even;
}

int floorToPowerOfTwo(int n)
{
    int power = n > 0 ? 1 : 0;
    while (power > 0 && power <= n / 2)
        power *= 2;
    return power;
}

} // namespace

bool ExpData::fft(int iSens, double x1, double x2, const QString& window)
{
    const int n = timedSamples(iSens);
    if (n == 0 || dt <= 0)
        return false;
    const bool isWhole = x1 == x2;
    QVector<QPointF> points;
    const auto from = std::lower_bound(x.cbegin(), x.cbegin() + n, isWhole ? x.constFirst() : x1);
    for (int i = int(from - x.cbegin()); i < n && (isWhole || x.at(i) <= x2); ++i) {
        const double value = getYAt(iSens, i);
        if (std::isfinite(value))
            points.append({x.at(i), value});
    }
    EvenSamples even;
    if (!points.isEmpty() && isEven(points, dt)) {
        for (const QPointF& point : qAsConst(points))
            even.values.append(point.y());
    } else {
        even = evened(points, dt);
    }
    const int size = floorToPowerOfTwo(even.values.size());
    QFourierTransformer transformer(window);
    switch (transformer.setSize(size)) {
    case QFourierTransformer::VariableSize:
        qCInfo(lcSpectrum,
               "This size is not a default fixed size of QRealFourier. Using a variable size instead");
        break;
    case QFourierTransformer::FixedSize:
        break;
    case QFourierTransformer::InvalidSize:
        qCWarning(lcSpectrum, "Invalid FFT size");
        return false;
    }
    // Without the mean, which a window would spread over the lowest bins. No other bin changes.
    QVector<double> samples = even.values.mid((even.values.size() - size) / 2, size);
    const double mean = std::accumulate(samples.cbegin(), samples.cend(), 0.0) / size;
    const bool isConstant = std::all_of(samples.cbegin(), samples.cend(),
                                        [&](double value) { return value == samples.constFirst(); });
    for (double& value : samples)
        value = isConstant ? 0 : value - mean;
    fftData->setData(transformer.forwardTransform(samples), size, dt, transformer.windowGain());
    fftData->bridged = even.bridged;
    return true;
}
