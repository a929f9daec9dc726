#include "data/fftdata.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double highestShown = 2000; // Hz
constexpr double headroom = 1.05;
constexpr double depth = 150; // dB that a line without any amplitude lies below the highest

double decibels(double amplitude)
{
    constexpr double perDecade = 20;
    return perDecade * std::log10(amplitude);
}

} // namespace

void FFTData::setData(const QVector<double>& values, int nSamp, double dt, double gain)
{
    data.clear();
    amplitudes.clear();
    nFreq = nSamp / 2;
    T = dt * nSamp;
    maxVal = 0;
    for (int i = 1; i < nFreq; ++i) {
        data.append(std::fabs(values.at(i)) / nSamp);
        amplitudes.append(2 * std::hypot(values.at(i), values.at(nFreq + i)) / (nSamp * gain));
        maxVal = std::max(maxVal, data.constLast());
    }
    maxVal *= headroom;
    minF = 0;
    maxF = std::min(highestShown, std::max(0, data.size() - 1) / T);
}

void FFTData::getBounds(double* min, double* max, double* top) const
{
    *min = minF;
    *max = maxF;
    *top = maxVal;
}

double FFTData::interpolate(double freq) const
{
    if (data.size() < 2)
        return 0;
    const int i = int(std::clamp(std::floor(freq * T), 1.0, double(data.size() - 1)));
    const QPointF left = sample(size_t(i - 1));
    const QPointF right = sample(size_t(i));
    return left.y() + (freq - left.x()) / (right.x() - left.x()) * (right.y() - left.y());
}

QVector<double> FFTData::lines(Kind kind) const
{
    if (kind == Kind::Cosine)
        return data;
    if (kind == Kind::Amplitude || amplitudes.isEmpty())
        return amplitudes;
    const double highest = amplitudes.at(peak());
    const double floor = (highest > 0 ? decibels(highest) : 0) - depth;
    QVector<double> power;
    power.reserve(amplitudes.size());
    for (const double amplitude : amplitudes)
        power.append(std::max(floor, decibels(amplitude)));
    return power;
}

QVector<double> FFTData::frequencies() const
{
    QVector<double> list;
    list.reserve(data.size());
    for (int i = 0; i < data.size(); ++i)
        list.append((i + 1) / T);
    return list;
}

int FFTData::peak() const
{
    const auto highest = std::max_element(amplitudes.cbegin(), amplitudes.cend());
    return highest == amplitudes.cend() ? -1 : int(highest - amplitudes.cbegin());
}

QPointF FFTData::sample(size_t i) const
{
    const int at = std::min(int(i), data.size() - 1);
    return at < 0 ? QPointF() : QPointF((at + 1) / T, data.at(at));
}

QRectF FFTData::boundingRect() const
{
    if (data.isEmpty())
        return {};
    return {1 / T, data.constFirst(), (nFreq - 1) / T, data.constLast() - data.constFirst()};
}
