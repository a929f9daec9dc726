#include <QFile>
#include <QTest>

#include <cmath>

#include "data/fftdata.h"
#include "data/qfouriertransformer.h"
#include "tests/common/testsupport.h"
#include "tests/data/loadedset.h"

namespace {

bool agrees(double value, double truth)
{
    return std::fabs(value - truth) <= 1e-9 * std::fabs(truth);
}

QVector<double> signal(int points)
{
    QVector<double> values;
    for (qint64 n = 0; n < points; ++n)
        values.append(double((n * n * 79 + n * 1047) % 2001) / 500 + 3);
    return values;
}

QVector<double> wave(int points, double cycles, double phase, double offset = 0)
{
    QVector<double> values;
    for (int n = 0; n < points; ++n)
        values.append(offset + 2 * std::cos(2 * M_PI * cycles * n / points + phase));
    return values;
}

} // namespace

class TestSpectrum : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    // As spectrum_reference.py has them from NumPy.
    void agreesWithTheReference()
    {
        QFile file(QStringLiteral(DATA_DIR "/spectrum.csv"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        file.readLine();
        int checked = 0;
        for (; !file.atEnd(); ++checked) {
            const QList<QByteArray> row = file.readLine().trimmed().split(',');
            ExpData data;
            load(&data, {SENSOR_VOLTAGE}, {signal(row.at(0).toInt())}, row.at(1).toDouble());
            QVERIFY(data.fft(0, 0, 0, QString::fromLatin1(row.at(2))));
            const int line = row.at(3).toInt() - 1;
            const double found[] = {data.fftData->frequencies().at(line),
                                    data.fftData->lines(FFTData::Kind::Amplitude).at(line),
                                    data.fftData->sample(size_t(line)).y()};
            for (int i = 0; i < 3; ++i) {
                const double truth = row.at(4 + i).toDouble();
                QVERIFY2(agrees(found[i], truth), row.join(' ').constData());
            }
        }
        QCOMPARE(checked, 33);
    }

    void sizesAndAxes_data()
    {
        columns<int, double, int, double>({"points", "dt", "size", "maxF"});
        row("the middle of a thousand", 1000, 0.001, 512, 254 / 0.512);
        row("four thousand", 4096, 0.001, 4096, 2046 / 4.096);
        row("faster than is shown", 4096, 0.0001, 4096, 2000.0);
        row("two", 2, 1.0, 2, 0.0);
        row("one", 1, 1.0, 0, 0.0);
        row("many", 40000, 1.0, 32768, 16382 / 32768.0);
    }

    void sizesAndAxes()
    {
        const auto [points, dt, size, maxF] =
            fetched<int, double, int, double>({"points", "dt", "size", "maxF"});
        ExpData data;
        load(&data, {SENSOR_VOLTAGE}, {signal(points)}, dt);
        QVERIFY(data.fft(0, 0, 0));
        QCOMPARE(data.fftData->transformSize(), size);
        QCOMPARE(data.fftData->size(), size_t(qMax(0, size / 2 - 1)));
        double low = -1, high = -1, top = -1;
        data.fftData->getBounds(&low, &high, &top);
        QCOMPARE(low, 0.0);
        QVERIFY(std::fabs(high - maxF) < 0.001);
        QCOMPARE(top > 0, size > 2);
    }

    // A sine has no cosine part, and a mean no line.
    void tellsAmplitudeCosineAndPower()
    {
        ExpData data;
        load(&data, {SENSOR_VOLTAGE, SENSOR_VOLTAGE, SENSOR_VOLTAGE},
             {wave(64, 5, -M_PI / 2, 7), wave(64, 5, 0), QVector<double>(64, 4.2)}, 0.5);
        FFTData& spectrum = *data.fftData;
        QVERIFY(data.fft(0, 0, 0));
        QCOMPARE(spectrum.peak(), 4);
        QCOMPARE(spectrum.frequencies().at(4), 5 / 32.0);
        QVERIFY(agrees(spectrum.lines(FFTData::Kind::Amplitude).at(4), 2));
        QVERIFY(spectrum.sample(4).y() < 1e-12);
        QVERIFY(agrees(spectrum.lines(FFTData::Kind::Power).at(4), 20 * std::log10(2.0)));
        QVERIFY(data.fft(1, 0, 0));
        QVERIFY(agrees(spectrum.sample(4).y(), 1));
        QVERIFY(agrees(spectrum.interpolate(4.5 / 32), spectrum.sample(4).y() / 2));
        QVERIFY(std::isfinite(spectrum.interpolate(0) + spectrum.interpolate(99)));
        QCOMPARE(spectrum.boundingRect().left(), 1 / 32.0);
        QVERIFY(data.fft(2, 0, 0));
        for (const FFTData::Kind kind : {FFTData::Kind::Amplitude, FFTData::Kind::Cosine})
            QCOMPARE(spectrum.lines(kind), QVector<double>(31, 0.0));
        QCOMPARE(spectrum.lines(FFTData::Kind::Power), QVector<double>(31, -150.0));
    }

    // Of a straight line nothing is lost; of a channel without times there is no spectrum.
    void bridgesGapsAndRefusesTheRest()
    {
        ExpData whole;
        ExpData gappy;
        QVector<double> ramp;
        for (int i = 0; i < 32; ++i)
            ramp.append(i);
        load(&whole, {SENSOR_VOLTAGE}, {ramp}, 1);
        ramp[4] = ramp[20] = qQNaN();
        QVector<double> times = whole.getX();
        for (const int lost : {12, 11, 10}) { // and rows that are not there at all
            times.remove(lost);
            ramp.remove(lost);
        }
        gappy.setDataNew(1, times, 1);
        gappy.addSensorData(0, SENSOR_VOLTAGE, ramp, -1);
        QVERIFY(whole.fft(0, 0, 0) && gappy.fft(0, 0, 0));
        QCOMPARE(gappy.fftData->bridged, 5);
        for (int i = 0; i < 15; ++i)
            QVERIFY(agrees(gappy.fftData->sample(size_t(i)).y(), whole.fftData->sample(size_t(i)).y()));
        QVERIFY(whole.fft(0, 8, 15));
        QCOMPARE(whole.fftData->transformSize(), 8);
        load(&gappy, {SENSOR_VOLTAGE}, {QVector<double>(32, qQNaN())}, 1);
        load(&whole, {SENSOR_VOLTAGE}, {{1, 2, 3}}, 0);
        guard->expect(QStringLiteral("Invalid FFT size"));
        QVERIFY(!gappy.fft(0, 0, 0) && !whole.fft(0, 0, 0) && !whole.fft(7, 0, 0));
        QCOMPARE(whole.fftData->transformSize(), 8);
    }

    void theTransformAndItsWindows()
    {
        QFourierTransformer hann(QStringLiteral(" HANN function "));
        QCOMPARE(hann.setSize(0), QFourierTransformer::InvalidSize);
        QCOMPARE(hann.setSize(1000), QFourierTransformer::InvalidSize);
        QCOMPARE(hann.setSize(32768), QFourierTransformer::VariableSize);
        QCOMPARE(hann.setSize(8), QFourierTransformer::FixedSize);
        QVERIFY(agrees(hann.windowGain(), 3.5 / 8));
        QFourierTransformer plain;
        QCOMPARE(plain.setSize(4), QFourierTransformer::VariableSize);
        const QVector<double> output = plain.forwardTransform({1, 2, 3, 5}); // −2+3i, 11, −3
        const double expected[] = {11, -2, -3, 3};
        for (int i = 0; i < 4; ++i)
            QVERIFY(agrees(output.at(i), expected[i]));
    }
};

QTEST_GUILESS_MAIN(TestSpectrum)
#include "test_spectrum.moc"
