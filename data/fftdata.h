#pragma once

#include <QPointF>
#include <QRectF>
#include <QVector>

#include <qwt_series_data.h>

/// The spectrum of a channel, or of a stretch of it. As curve data it gives the cosine part: the magnitude of
/// the real part of each bin over the number of samples, so a sine stays near zero. lines() has what is
/// shown.
class FFTData : public QwtSeriesData<QPointF>
{
public:
    int bridged = 0; ///< samples that were not there, on straight lines between those that were

    /// What is told of each frequency.
    enum class Kind
    {
        Amplitude, ///< of the oscillation, 2|X|/N
        Cosine,
        Power ///< of the amplitude, in dB over that of 1 of the unit
    };

    /// Takes a transform's output: `nSamp` values, the real parts first. `gain` is the mean of the window
    /// that the samples were multiplied by, `dt` the seconds between them.
    void setData(const QVector<double>& values, int nSamp, double dt, double gain = 1);

    /// The range of frequencies and the top of the amplitudes for the axes.
    void getBounds(double* minF, double* maxF, double* maxVal) const;
    /// At a frequency, linear between two bins and beyond the outermost; 0 with fewer than two bins.
    double interpolate(double freq) const;

    /// The values of all bins from the first above the mean. Without any amplitude, power ends 150 dB below
    /// the highest line.
    QVector<double> lines(Kind kind) const;
    QVector<double> frequencies() const;
    /// The bin with the greatest amplitude as an entry of lines(); -1 where there is none.
    int peak() const;
    /// Hz from one bin to the next.
    double resolution() const { return 1 / T; }
    int transformSize() const { return 2 * nFreq; }
    size_t size() const override { return size_t(data.size()); }
    QPointF sample(size_t i) const override;
    QRectF boundingRect() const override;

private:
    QVector<double> data;       ///< the cosine part of bins 1 to nFreq − 1
    QVector<double> amplitudes; ///< of the same
    int nFreq = 0;              ///< half the size of the transform; 0: empty
    double T = 1;               ///< seconds that the transform was over
    double minF = 0;
    double maxF = 0;
    double maxVal = 0;
};
