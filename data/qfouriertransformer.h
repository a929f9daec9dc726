#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// A discrete Fourier transform of real samples, forward and without scaling: X[k] = Σ x[n] e^(−2πikn/N). The
/// sizes are powers of two. The samples can be multiplied by a window on the way.
class QFourierTransformer
{
public:
    enum Initialization
    {
        VariableSize, ///< any other power of two
        FixedSize,    ///< 8 to 16384
        InvalidSize   ///< refused; the size before stays
    };

    /// `windowFunction` is one of windowFunctions(), in any case and maybe with the word "function" behind
    /// it; any other name is no window.
    explicit QFourierTransformer(const QString& windowFunction = QString());

    static QStringList windowFunctions();

    Initialization setSize(int size);
    int getSize() const { return window.size(); }
    /// The mean of the window: what it leaves of an amplitude.
    double windowGain() const;
    /// Of as many samples as the size: the real parts of X[0] to X[N/2], then the imaginary parts of X[1] to
    /// X[N/2 − 1].
    QVector<double> forwardTransform(const QVector<double>& samples) const;

private:
    enum class Window
    {
        Rectangular,
        Hann,
        Hamming
    };

    static Window windowOf(const QString& name);
    double windowAt(int n, int size) const;

    const Window kind;
    QVector<double> window; ///< a factor for each sample
};
