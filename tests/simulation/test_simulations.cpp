#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSlider>
#include <QSplitter>
#include <QTest>

#include <cmath>

#include "resources/resources.h"
#include "sensors/sensorids.h"
#include "simulation/ballitem.h"
#include "simulation/mygraphicsview.h"
#include "simulation/pendulumitem.h"
#include "simulation/simulations.h"
#include "simulation/simulsetup.h"
#include "tests/common/testsupport.h"

/// The controls and the stage, with a hand on them and a clock that goes when it is told.
class TestSimulations : public GuardedTest
{
    Q_OBJECT

    QScopedPointer<simulations> scene;
    QScopedPointer<QSplitter> column;
    QScopedPointer<QSplitter> graphs;
    simulSetup* setup = nullptr;
    QVector<QVector<double>> rows;

    void begin() override
    {
        initPellandraResources();
        rows.clear();
        scene.reset(new simulations);
        column.reset(new QSplitter(Qt::Vertical));
        graphs.reset(new QSplitter);
        setup = new simulSetup(scene.data(), column.data(), graphs.data());
        column->addWidget(setup);
        column->addWidget(scene->view);
        connect(scene.data(), &simulations::newSimData, this,
                [this](float, const QVector<double>& row) { rows.append(row); });
    }
    void finish() override
    {
        column.reset();
        scene.reset();
    }
    void click(const char* name) { setup->findChild<QAbstractButton*>(QLatin1String(name))->click(); }
    void slide(const char* name, int value)
    {
        setup->findChild<QSlider*>(QLatin1String(name))->setValue(value);
    }
    QString text(const char* name) { return setup->findChild<QLineEdit*>(QLatin1String(name))->text(); }
    void start(int experiment)
    {
        setup->setCurrentSimul(experiment);
        click(experiment == 0 ? "FFStartButton" : "PNDstartButton");
        QVERIFY(scene->isRunning());
    }
    void go(double seconds)
    {
        for (int n = qRound(seconds / SIMUL_DT); n > 0; --n)
            scene->doTimer();
    }
    /// The last samples belong to a path without a jump: one step goes no further than the speeds on both
    /// sides.
    bool isUnbroken(double unitsOfSpeed) const
    {
        const QVector<double>& a = rows.at(rows.size() - 2);
        const QVector<double>& b = rows.constLast();
        return std::abs(b[0] - a[0]) <=
               1.1 * unitsOfSpeed * SIMUL_DT * qMax(std::abs(a[1]), std::abs(b[1])) + 1e-6;
    }

private Q_SLOTS:
    void aBallMeetsTheGroundWhenTheLawSaysAndKeepsItsShare()
    {
        start(0);
        go(1.44);
        const ballItem& ball = *scene->ball;
        QVERIFY(std::abs(ball.t0 - std::sqrt(2 * 10 / 9.8)) > 1); // at 1.40 it still fell
        go(0.04);
        QVERIFY(std::abs(ball.t0 - 1.42857) < 1e-4);
        QVERIFY(std::abs(ball.v0 - std::sqrt(2 * 9.8 * 10) * std::sqrt(0.9)) < 1e-9);
        const double before = rows.at(5)[2];
        QVERIFY(std::abs(before - 98) < 1e-9); // 9.8 · 10 J
        go(0.2);
        QVERIFY(std::abs(rows.constLast()[2] - 0.9 * before) < 1e-9);
        go(120);
        QCOMPARE(rows.constLast(), QVector<double>({0, 0, 0}));
        click("FFMoonRadioButton"); // what lies is not thrown up
        go(1);
        QCOMPARE(rows.constLast()[0], 0.0);
    }

    void anExtremeStartGoesByTheLawToo()
    {
        setup->setCurrentSimul(0);
        slide("FFEnergySlider", 100);
        slide("FFV0lSlider", 20);
        click("FFMoonRadioButton");
        click("FFStartButton");
        double top = 0;
        for (int i = 0; i < 700; ++i) {
            scene->doTimer();
            top = qMax(top, rows.constLast()[0]);
        }
        QVERIFY(std::abs(top - (10 + 20 * 20 / (2 * 1.62))) < 0.01); // far above the picture
        QCOMPARE(rows.constLast()[0], 0.0);                          // after one contact
    }

    void aChangeInTheMiddleBreaksNoCurve_data()
    {
        columns<int, QByteArray, int>({"experiment", "control", "value"});
        row("another planet under the ball", 0, QByteArray("FFJupiterRadioButton"), 0);
        row("the Moon under the ball", 0, QByteArray("FFMoonRadioButton"), 0);
        row("another planet under the pendulum", 1, QByteArray("PNDMoonRadioButton"), 0);
        row("no gravity under the pendulum", 1, QByteArray("PNDNoneRadioButton"), 0);
        row("a longer pendulum", 1, QByteArray("PNDLengthSlider"), 20);
        row("a shorter pendulum", 1, QByteArray("PNDLengthSlider"), 7);
        row("a lighter pendulum", 1, QByteArray("PNDMassSlider"), 2);
    }

    void aChangeInTheMiddleBreaksNoCurve()
    {
        QFETCH(int, experiment);
        QFETCH(QByteArray, control);
        QFETCH(int, value);
        for (const double seconds : {0.4, 0.9, 1.6, 2.2}) { // down, up, to both sides
            start(experiment);
            go(seconds);
            const double speed = rows.constLast()[1];
            if (value == 0)
                click(control.constData());
            else
                slide(control.constData(), value);
            go(0.04);
            const double metre = experiment == 0 ? 1 : 180 / (PI * scene->pendulum->L);
            QVERIFY2(isUnbroken(metre * 1.5), qPrintable(QString::number(seconds)));
            QVERIFY(speed * rows.constLast()[1] > -0.5); // on to the same side
            finish();
            begin();
        }
    }

    void aPendulumSwingsWithItsPeriodAndLosesWhatItIsTold()
    {
        start(1);
        QVERIFY(std::abs(scene->pendulum->T - 2.458) < 0.001);
        go(30);
        QVector<double> crossings; // to one side
        for (int i = 1; i < rows.size(); ++i) {
            const double a = rows.at(i - 1)[0];
            const double b = rows.at(i)[0];
            if (a > 0 && b <= 0)
                crossings.append(SIMUL_DT * (i - 1 + a / (a - b)));
        }
        QVERIFY(std::abs((crossings.constLast() - crossings.constFirst()) / (crossings.size() - 1) - 2.458) <
                0.002);
        QVERIFY(std::abs(scene->pendulum->Phi0 - 30 * std::pow(0.9, 15)) < 1e-9); // a tenth in two seconds
        slide("PNDDampSlider", 100);
        QVERIFY(std::abs(scene->pendulum->damp - std::pow(0.001, 0.02)) < 1e-12);
        // Its energy is that of the height that it lacks to the amplitude.
        const double radians = 2 * PI / 360;
        const QVector<double>& at = rows.at(20);
        const double amplitude = 30 * std::pow(0.9, 21 * SIMUL_DT / 2);
        const double drop = 1.5 * (std::cos(radians * at[0]) - std::cos(radians * amplitude));
        QVERIFY(std::abs(at[1] * at[1] / 2 - 9.8 * drop) < 1e-9);
    }

    void withoutGravityItGoesRoundAndSwingsOnFromWhereItIs_data()
    {
        columns<double, int>({"seconds", "way"});
        row("the negative way", 0.6, -1);
        row("the positive way", 1.84, 1);
    }

    void withoutGravityItGoesRoundAndSwingsOnFromWhereItIs()
    {
        QFETCH(double, seconds);
        QFETCH(int, way);
        setup->setCurrentSimul(1);
        slide("PNDDampSlider", 0);
        start(1);
        go(seconds);
        const double speed = rows.constLast()[1];
        click("PNDNoneRadioButton");
        QVERIFY(scene->pendulum->dPhi * way > 0);
        bool isWrapped = false;
        for (int i = 0; i < 200; ++i) {
            go(0.04);
            const double step = rows.constLast()[0] - rows.at(rows.size() - 2)[0];
            isWrapped = isWrapped || step * way < -300;
            QVERIFY(std::abs(rows.constLast()[0]) <= 180);
            QVERIFY(std::abs(std::abs(rows.constLast()[1]) - std::abs(speed)) < 1e-9);
        }
        QVERIFY(isWrapped);
        const double angle = rows.constLast()[0];
        click("PNDEarthRadioButton");
        QCOMPARE(scene->pendulum->Phi, angle);
        QCOMPARE(scene->pendulum->Phi0, std::abs(angle));
        const double height = 1 - std::cos(2 * PI / 360 * angle);
        double highest = 0; // the swing has the energy of that place, and goes on with it
        for (int i = 0; i < 250; ++i) {
            go(0.04);
            const double here = 1 - std::cos(2 * PI / 360 * rows.constLast()[0]);
            const double v = rows.constLast()[1];
            highest = qMax(highest, std::abs(9.8 * 1.5 * (here - height) + v * v / 2));
        }
        QVERIFY(highest < 1e-9);
    }

    void atRestWithoutGravityItStaysWhereItIs()
    {
        setup->setCurrentSimul(1);
        click("PNDNoneRadioButton");
        click("PNDstartButton");
        go(4);
        QCOMPARE(rows.constLast(), QVector<double>({30, 0}));
    }

    void startPauseAndRestartKeepTheirOrder()
    {
        QSignalSpy begun(scene.data(), &simulations::firstSimData);
        QSignalSpy ended(setup, &simulSetup::ended);
        setup->setMayStart([] { return false; });
        setup->setCurrentSimul(0);
        click("FFStartButton");
        QVERIFY(!scene->isRunning() && begun.isEmpty());
        setup->setMayStart({});
        start(0);
        QCOMPARE(begun.at(0).at(0).value<QVector<int>>(),
                 QVector<int>({SENSOR_SIM_DISTANCE, SENSOR_SIM_SPEED, SENSOR_SIM_ENERGY}));
        go(0.4);
        click("FFStartButton"); // pause
        go(0.4);
        QCOMPARE(rows.size(), 10);
        click("FFStartButton");
        go(0.4);
        QCOMPARE(rows.size(), 20);
        QCOMPARE(begun.size(), 1);
        click("FFrestartButton");
        QCOMPARE(ended.size(), 1);
        QCOMPARE(scene->ball->pos(), QPointF(0, 120));
        QVERIFY(!scene->isRunning() && !setup->hasStarted());
        start(0); // the first step is that of time 0 again
        go(0.04);
        QCOMPARE(begun.size(), 2);
        QCOMPARE(rows.constLast()[0], 10.0);
        setup->setCurrentSimul(1);
        QCOMPARE(ended.size(), 2);
        QVERIFY(!scene->isRunning());
    }

    void theControlsSayWhatTheyAreSetTo()
    {
        setup->setCurrentSimul(0);
        slide("FFV0lSlider", -7);
        slide("FFEnergySlider", 35);
        slide("PNDLengthSlider", 8);
        QCOMPARE(text("FFV0lineEdit"), QStringLiteral("-7"));
        QCOMPARE(text("FFEnergyLineEdit"), QStringLiteral("0.35"));
        QCOMPARE(text("PNDLenghLineEdit"), QStringLiteral("0.8"));
        QCOMPARE(scene->ball->energyRatio, 0.65);
        QLineEdit* edit = setup->findChild<QLineEdit*>(QStringLiteral("FFV0lineEdit"));
        QTest::keyClicks(edit, QStringLiteral("12"));
        QCOMPARE(edit->text(), QStringLiteral("-7"));
        QSlider* slider = setup->findChild<QSlider*>(QStringLiteral("FFV0lSlider"));
        QTest::keyClick(slider, Qt::Key_Right);
        QCOMPARE(edit->text(), QStringLiteral("-6"));
    }
};

QTEST_MAIN(TestSimulations)
#include "test_simulations.moc"
