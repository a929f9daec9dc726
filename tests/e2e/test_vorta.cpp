#include <QCheckBox>
#include <QComboBox>

#include <algorithm>
#include <cmath>

#include "graph/plot.h"
#include "tests/e2e/virtualclassbench.h"

/// A Vorta logger in one class with two others.
class TestVorta : public VirtualClassBench
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void runsTogetherWithTheOthers_data()
    {
        QTest::addColumn<double>("period");
        QTest::addColumn<int>("samples");
        QTest::newRow("1/Sec") << 1.0 << 3;
        QTest::newRow("10/Sec") << 0.1024 << 30;
        QTest::newRow("25/Sec") << 0.04096 << 60;
        QTest::newRow("100/Sec") << 0.01024 << 200;
        QTest::newRow("500/Sec") << 0.002048 << 1000;
    }

    void runsTogetherWithTheOthers()
    {
        QFETCH(int, samples);
        start(3, {QStringLiteral("--model"), QStringLiteral("Vorta,Birch,Dune")});
        QTRY_VERIFY_WITH_TIMEOUT(manager->tembrinDataAt(0)->isVorta(), 8000);
        for (int i : {1, 2})
            QTRY_VERIFY_WITH_TIMEOUT(manager->tembrinDataAt(i)->isLoggerRecognized(), 8000);
        inDialog("basicSetupAct", [](QWidget* dialog) {
            for (QCheckBox* box : dialog->findChildren<QCheckBox*>()) {
                if (box->isVisible() && !box->isChecked() && !box->text().startsWith(QLatin1String("Invert")))
                    box->click();
            }
            dialog->findChild<QComboBox*>(QStringLiteral("comboRate"))
                ->setCurrentText(QString::fromLatin1(QTest::currentDataTag()));
            dialog->findChild<QComboBox*>(QStringLiteral("comboSamples"))->setCurrentIndex(3);
        });
        run(1, samples);
        for (int i : {1, 2})
            QVERIFY(manager->isRunning(i) && data(i)->getXSize() > 100);
        stop(3);
        QVERIFY(!manager->isAnyRunning());
        readRecord();
        for (int i : {1, 2})
            QCOMPARE(wrongRows(i), QStringList());

        const QVector<QVector<double>> sent = sentValues(data(0)->getNSens());
        QCOMPARE(data(0)->getNSens(), data(0)->dt == 0.002048 ? 3 : 5);
        QTEST(data(0)->dt, "period");
        QCOMPARE(data(0)->getXSize(), sent[0].size());
        for (int k = 0; k < sent[0].size(); ++k)
            QCOMPARE(data(0)->getXAt(k), k * data(0)->dt);
        QCOMPARE(data(0)->getData(), sent);
        // The class is of one rate: that of the two others.
        if (data(0)->dt == data(1)->dt)
            QCOMPARE(classData()->getYNoConv(0).mid(0, sent[0].size()), sent[0]);
        QVERIFY(manager->plotAt(0)->isVisible());
        QCOMPARE(int(manager->plotAt(0)->itemList(QwtPlotItem::Rtti_PlotCurve).size()), sent.size());
        QVERIFY(corrected > 0 || sent[0].size() < 30);
    }

private:
    /// What the recorded blocks say: after one digit, three hexadecimal digits for each channel of a sample.
    QVector<QVector<double>> sentValues(int channels)
    {
        QVector<QVector<double>> columns(channels);
        const int digits = 1 + 3 * channels;
        corrected = 0;
        for (int block = 0; block < samplesSent(0); ++block) {
            const QByteArray hex = record[0].value(block).toHex();
            for (int at = 0; at < hex.size(); at += digits) {
                const auto word = [&](int i) { return hex.mid(at + 1 + 3 * i, 3).toInt(nullptr, 16); };
                const int forces = channels == 5 ? 2 : 1;
                const bool isUpright = acceleration(word(forces)) >= 0.9;
                corrected += isUpright ? 1 : 0;
                for (int i = 0; i < channels; ++i)
                    columns[i] << (i < forces ? force(i, word(i), isUpright) : acceleration(word(i)));
            }
        }
        return columns;
    }

    static double acceleration(int word) { return (3.9 * (word & 0x7FF) - (word & 0x800 ? 7987 : 0)) / 1000; }

    static double force(int channel, int word, bool isUpright)
    {
        const double most = channel == 0 ? 50 : 5;
        const double newton = channel == 0 ? (word - 2051) / 28.5 : (word - 2043) / 285.0;
        const double held = qBound(-most, newton, most);
        return isUpright ? qMin(held + 1.9, most) : held;
    }

    int corrected = 0;
};

int main(int argc, char** argv)
{
    return VirtualClassBench::exec<TestVorta>(argc, argv);
}

#include "test_vorta.moc"
