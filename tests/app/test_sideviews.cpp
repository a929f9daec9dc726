#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <cmath>

#include <qwt_scale_div.h>
#include <qwt_text.h>
#include <qwt_text_label.h>

#include "app/iconlists.h"
#include "graph/myplotmarker.h"
#include "instruments/juniorsensorpallete.h"
#include "instruments/spectrumpane.h"
#include "instruments/statusline.h"
#include "instruments/table.h"
#include "instruments/thermometer.h"
#include "tests/app/classbench.h"

namespace {

constexpr short samples = 70;

/// 8 waves in 64 samples.
void wave(ClassBench& bench, int logger, int from = 0, int to = samples)
{
    for (int i = from; i < to; ++i)
        bench.sample(logger, short(i), 20 + 10 * std::sin(2 * M_PI * i / 8));
    QCoreApplication::processEvents();
}

SpectrumPane* pane(const ClassBench& bench, int index)
{
    for (auto* each : bench.window->findChildren<SpectrumPane*>()) {
        if (each->plot()->getIndex() == index)
            return each;
    }
    return nullptr;
}

double peak(const Plot* plot)
{
    return plot->axisScaleDiv(QwtPlot::yLeft).upperBound() / 1.05;
}

} // namespace

class TestSideViews : public GuardedTest
{
    Q_OBJECT

private:
    static void askForSpectrum(const ClassBench& bench)
    {
        auto* const list = bench.window->findChild<QComboBox*>(QStringLiteral("regression"));
        Q_EMIT list->activated(list->findData(REG_FFT));
    }
    static void chooseIn(SpectrumPane* spectrum, const QString& text)
    {
        for (QAction* action : spectrum->findChild<QMenu*>()->actions()) {
            if (action->text() == text)
                return action->trigger();
        }
        QFAIL(qPrintable(text));
    }

private Q_SLOTS:
    void aSpectrumStandsUnderTheGraphInUse_data()
    {
        columns<int, QByteArray>({"index", "layout"});
        row("of a group", 1, QByteArray("layoutAct1"));
        row("of the class", -1, QByteArray("layoutAct2"));
    }

    void aSpectrumStandsUnderTheGraphInUse()
    {
        const auto [index, layout] = fetched<int, QByteArray>({"index", "layout"});
        ClassBench bench(2);
        auto* const line = bench.window->findChild<StatusLine*>();
        bench.action(layout.constData())->trigger();
        Plot* const graph = index < 0 ? bench.manager->plotC() : bench.manager->plotAt(index);
        if (index >= 0)
            QTest::mouseClick(graph->titleLabel(), Qt::LeftButton);
        wave(bench, 1, 0, 7);
        askForSpectrum(bench);
        QVERIFY(!pane(bench, index));
        QVERIFY2(line->outcome().startsWith("A spectrum needs"), qPrintable(line->outcome()));

        wave(bench, 1, 7);
        if (index < 0)
            Q_EMIT graph->changedActiveCurve(-1, 1);
        askForSpectrum(bench);
        SpectrumPane* const under = pane(bench, index);
        QVERIFY(under && under->isVisible());
        QVERIFY(under->mapTo(bench.window.data(), QPoint()).y() >
                graph->mapTo(bench.window.data(), QPoint()).y());
        QVERIFY(std::fabs(peak(under->plot()) - 10) < 0.1);
        QVERIFY(
            under->plot()->title().text().contains(graph->getCurve(graph->getActiveSens())->title().text()));

        // A run goes on: more samples, finer lines, without anybody's doing.
        const QString before = under->findChild<QLabel*>("spectrumNote")->text();
        QVERIFY(before.startsWith("64 "));
        wave(bench, 1, samples, 130);
        QTRY_VERIFY(under->findChild<QLabel*>("spectrumNote")->text().startsWith("128 "));

        // The stretch between two crosses, also while they are moved; their channel and not the active one.
        graph->newMarker(graph->getActiveSens(), -1, 26, 2);
        graph->newMarker(graph->getActiveSens(), -1, 10, 1);
        Q_EMIT graph->changed(QString());
        QVERIFY(under->findChild<QLabel*>("spectrumNote")->text().startsWith("16 "));

        // It goes with its graph, and for good by its button or the same command.
        bench.action(index < 0 ? "layoutAct1" : "layoutAct2")->trigger();
        QVERIFY(!under->isVisible());
        bench.action("layoutAct3")->trigger();
        QVERIFY(under->isVisible());
        under->findChild<QPushButton*>("closeSpectrum")->click();
        QVERIFY(!under->isVisible());
        bench.action("layoutAct1")->trigger();
        bench.action(layout.constData())->trigger();
        QVERIFY(!under->isVisible());
        askForSpectrum(bench);
        QVERIFY(under->isVisible());
        askForSpectrum(bench);
        QVERIFY(!under->isVisible());
    }

    void theSpectrumHasTheToolsOfAGraph()
    {
        ClassBench bench(1);
        wave(bench, 0);
        Plot* const graph = bench.manager->plotAt(0);
        askForSpectrum(bench);
        Plot* const plot = pane(bench, 0)->plot();
        chooseIn(pane(bench, 0), QStringLiteral("Cosine part"));
        QVERIFY(std::fabs(peak(plot) - 5 * std::sqrt(0.5)) < 0.1); // the stretch begins after 3 of 8 samples
        chooseIn(pane(bench, 0), QStringLiteral("Power in dB"));
        QCOMPARE(qRound(plot->axisScaleDiv(QwtPlot::yLeft).upperBound()), 20 + 5);
        chooseIn(pane(bench, 0), QStringLiteral("Amplitude"));
        chooseIn(pane(bench, 0), QStringLiteral("Hann window"));
        QVERIFY(std::fabs(peak(plot) - 10) < 0.2); // whatever the window takes away

        // A cross on the peak, at 8 waves in 64 s; then it is taken back.
        bench.action("markerAct")->trigger();
        const QPoint top(int(plot->transform(QwtPlot::xBottom, 0.125)),
                         int(plot->transform(QwtPlot::yLeft, peak(plot))));
        QTest::mouseClick(plot->canvas(), Qt::LeftButton, {}, top);
        QCOMPARE(plot->markers.size(), 2);
        QVERIFY2(plot->markers[1]->label().text().startsWith("Frequency = 0.12"),
                 qPrintable(plot->markers[1]->label().text()));
        QVERIFY(graph->markers.isEmpty());
        bench.action("undoAct")->trigger();
        QVERIFY(plot->markers.isEmpty());

        // Zoom stays while a run renews it, and is ended.
        bench.action("zoomAct")->trigger();
        const auto right = [&] { return plot->axisScaleDiv(QwtPlot::xBottom).upperBound(); };
        const double whole = right();
        QTest::mousePress(plot->canvas(), Qt::LeftButton, {}, {20, 20});
        QMouseEvent move(QEvent::MouseMove, QPoint(120, 90), Qt::NoButton, Qt::LeftButton, {});
        QCoreApplication::sendEvent(plot->canvas(), &move);
        QTest::mouseRelease(plot->canvas(), Qt::LeftButton, {}, {120, 90});
        QVERIFY(right() < whole);
        pane(bench, 0)->renew();
        QVERIFY(right() < whole);
        QTest::mouseClick(plot->canvas(), Qt::RightButton);
        QCOMPARE(right(), whole);

        // What was pressed in last is what is exported.
        QTemporaryDir folder;
        bench.prompt.file = folder.filePath("spectrum.svg");
        auto* const exports = bench.window->findChild<QComboBox*>(QStringLiteral("exports"));
        Q_EMIT exports->activated(exports->findData(EXPORT_IMAGE));
        QFile picture(bench.prompt.file);
        QVERIFY(picture.open(QIODevice::ReadOnly) && picture.readAll().contains("Frequency [Hz]"));

        // What is told of a curve over time is not told of this; and a new experiment has other samples.
        auto* const line = bench.window->findChild<StatusLine*>();
        line->setOutcome(QString());
        auto* const list = bench.window->findChild<QComboBox*>(QStringLiteral("regression"));
        Q_EMIT list->activated(1);
        QVERIFY(!line->outcome().isEmpty());
        bench.data(0)->setDataNewEmpty(bench.data(0)->getSensors(), 1);
        pane(bench, 0)->renew();
        QVERIFY(pane(bench, 0)->findChild<QLabel*>("spectrumNote")->text().startsWith("A spectrum needs"));
    }
    // A typed value: in the set, on the graph, in the class, to save, and back again.
    void aValueIsTypedOver()
    {
        ClassBench bench(1);
        auto* const line = bench.window->findChild<StatusLine*>();
        wave(bench, 0, 0, 20);
        Table* const table = showInCell<Table>(bench, VIEW_TABLE_GRAPH);
        QVERIFY(table && table->isVisible() && bench.manager->plotAt(0)->isVisible());
        const auto type = [&](const QString& text) {
            table->model()->setData(table->model()->index(4, 1), text);
        };
        const auto values = [&] {
            return QVector<double>{bench.data(0)->getYAt(0, 4), bench.data(-1)->getYAt(0, 4)};
        };
        const QVector<double> before = values();
        type(QStringLiteral("77"));
        QCOMPARE(values(), before);
        QVERIFY2(line->outcome().contains("when no logger is running"), qPrintable(line->outcome()));
        bench.tellEnd(0);
        bench.data(0)->setNeedSave(false);
        type(QStringLiteral("abc"));
        QCOMPARE(values(), before);
        QVERIFY(line->outcome().contains("abc") && !bench.data(0)->isNeedSave());
        type(QStringLiteral("77,5"));
        QCOMPARE(values(), (QVector<double>{77.5, 77.5}));
        QVERIFY(bench.data(0)->isNeedSave());
        QCOMPARE(bench.data(0)->maxY[0], 77.5);
        QCOMPARE(table->model()->index(4, 1).data().toString(), QStringLiteral("77.5"));
        bench.action("undoAct")->trigger();
        QCOMPARE(values(), before);
        QVERIFY(!table->model()->index(4, 1).data().toString().startsWith("77"));
        bench.action("redoAct")->trigger();
        QCOMPARE(values(), (QVector<double>{77.5, 77.5}));
        QVERIFY(!bench.action("redoAct")->isEnabled());

        // The row under a cross, and the title that chooses the group.
        bench.manager->plotAt(0)->newMarker(0, -1, 12, 1);
        Q_EMIT bench.manager->plotAt(0)->changed(QString());
        const auto ground = [&](int row) { return table->model()->index(row, 1).data(Qt::BackgroundRole); };
        QVERIFY(ground(12) != ground(13));
        auto* const title = table->getTitle();
        QVERIFY(title->text().endsWith(" *"));
        QTest::mouseClick(title, Qt::LeftButton);
        QVERIFY(!title->text().endsWith(" *") && !bench.manager->isActiveGraphSet());
    }

    void aThermometerFollowsTheChosenSensor()
    {
        ClassBench bench(2);
        wave(bench, 0, 0, 8);
        auto* const meter = showInCell<ThermoMeter>(bench, VIEW_THERMO);
        QVERIFY(meter && meter->isVisible() && !bench.manager->plotAt(0)->isVisible());
        bench.sample(0, 8, 42);
        QTRY_VERIFY2(meter->valueText().startsWith("42"), qPrintable(meter->valueText()));
        Q_EMIT meter->customContextMenuRequested({});
        auto* const palette = meter->findChild<JuniorSensorPallete*>();
        QVERIFY(palette);
        palette->findChildren<QToolButton*>().at(1)->click();
        QCOMPARE(bench.data(0)->getSelectedSensor(), 1);
        QVERIFY(meter->valueText().endsWith(bench.data(0)->getSens(1)->unitName));
    }

private:
    template<class View> static View* showInCell(const ClassBench& bench, int view)
    {
        QTest::mouseClick(bench.manager->plotAt(0)->titleLabel(), Qt::LeftButton);
        auto* const views = bench.window->findChild<QComboBox*>(QStringLiteral("views"));
        Q_EMIT views->activated(views->findData(view));
        return bench.window->findChild<View*>();
    }
};

QTEST_MAIN(TestSideViews)
#include "test_sideviews.moc"
