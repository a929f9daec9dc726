#include "data/qfouriertransformer.h"

#include <cmath>
#include <complex>
#include <numeric>
#include <vector>

#include <kissfft/kissfft.hh>

namespace {

constexpr int leastFixedSize = 8;
constexpr int mostFixedSize = 16384;

bool isPowerOfTwo(int n)
{
    return n > 0 && (n & (n - 1)) == 0;
}

} // namespace

QFourierTransformer::QFourierTransformer(const QString& windowFunction)
    : kind(windowOf(windowFunction))
{
}

QStringList QFourierTransformer::windowFunctions()
{
    return {QStringLiteral("Hann"), QStringLiteral("Hamming"), QStringLiteral("Rectangular")};
}

QFourierTransformer::Window QFourierTransformer::windowOf(const QString& name)
{
    const QString word = name.trimmed().toLower().remove(QStringLiteral("function")).trimmed();
    if (word == QLatin1String("hann"))
        return Window::Hann;
    return word == QLatin1String("hamming") ? Window::Hamming : Window::Rectangular;
}

double QFourierTransformer::windowAt(int n, int size) const
{
    constexpr double hammingBase = 0.54;
    const double wave = size > 1 ? std::cos(2 * M_PI * n / (size - 1)) : 0;
    switch (kind) {
    case Window::Hann:
        return (1 - wave) / 2;
    case Window::Hamming:
        return hammingBase - (1 - hammingBase) * wave;
    case Window::Rectangular:
        break;
    }
    return 1;
}

QFourierTransformer::Initialization QFourierTransformer::setSize(int size)
{
    if (!isPowerOfTwo(size))
        return InvalidSize;
    if (size != window.size()) {
        window.resize(size);
        for (int n = 0; n < size; ++n)
            window[n] = windowAt(n, size);
    }
    return size >= leastFixedSize && size <= mostFixedSize ? FixedSize : VariableSize;
}

double QFourierTransformer::windowGain() const
{
    return window.isEmpty() ? 1 : std::accumulate(window.cbegin(), window.cend(), 0.0) / window.size();
}

QVector<double> QFourierTransformer::forwardTransform(const QVector<double>& samples) const
{
    const int size = window.size();
    if (samples.size() != size || size < 2)
        return samples;
    std::vector<double> input(size_t(size), 0);
    for (int n = 0; n < size; ++n)
        input[size_t(n)] = samples.at(n) * window.at(n);
    // In double precision, which the library has in this form alone.
    const int half = size / 2;
    std::vector<std::complex<double>> bins(static_cast<size_t>(half));
    kissfft<double>(size_t(half), false).transform_real(input.data(), bins.data());
    QVector<double> output(size);
    output[0] = bins[0].real();
    output[half] = bins[0].imag(); // X[N/2], which is real too
    for (int k = 1; k < half; ++k) {
        output[k] = bins[size_t(k)].real();
        output[half + k] = bins[size_t(k)].imag();
    }
    return output;
}
