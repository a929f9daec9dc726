#include <QFile>
#include <QJSEngine>
#include <QTest>

#include <cmath>

#include "tests/common/testsupport.h"

/// The physics behind the animations, asked by scripts: each gives rows [what, value, expected, greatest
/// difference].
class TestModels : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void aModelKeepsTheLaw_data()
    {
        columns<QString, QString>({"model", "script"});
        row("pressure times volume goes with the temperature", QStringLiteral("gas"), QStringLiteral(R"(
            const gas = new Gas(new Chance(1), 600);
            for (const [volume, kelvin] of [[60, 300], [20, 300], [100, 300], [40, 600], [80, 200]]) {
                gas.setVolume(volume);
                gas.setTemperature(kelvin);
                for (let i = 0; i < 240; i++)
                    gas.step(1 / 60);
                const law = 100 * 60 / 300 * kelvin / volume;
                rows.push(['p of ' + volume + ' cm³', gas.pressure(), law, 0.02 * law]);
                rows.push(['of the law', gas.lawPressure(volume, kelvin), law, 1e-9]);
            })"));
        row("two vessels come to one pressure, and closed ones keep theirs", QStringLiteral("vessels"),
            QStringLiteral(R"(
            for (const [pressures, volumes] of [[[250, 50], [2, 4]], [[0, 300], [3, 1]]]) {
                const vessels = new Vessels(new Chance(2), 1500, pressures, volumes);
                for (let i = 0; i < 20; i++)
                    vessels.step(1 / 10);
                rows.push(['closed', vessels.pressuresNow()[0], pressures[0], 0.1]);
                vessels.isOpen = true;
                for (let i = 0; i < 150; i++)
                    vessels.step(1 / 10);
                let means = [0, 0];
                for (let i = 0; i < 300; i++) {
                    vessels.step(1 / 10);
                    means = means.map((mean, k) => mean + vessels.gauges[k] / 300);
                }
                const law = (pressures[0] * volumes[0] + pressures[1] * volumes[1]) / (volumes[0] + volumes[1]);
                rows.push(['left', means[0], law, 0.02 * law], ['right', means[1], law, 0.02 * law]);
                rows.push(['of the law', vessels.finalPressure(), law, 1e-9]);
            })"));
        row("a drop spreads with the time, and at last evenly", QStringLiteral("walkers"), QStringLiteral(R"(
            const factor = Walkers.coefficient(25);
            rows.push(['D at 25 °C, mm²/min', factor, 0.03, 1e-9]);
            rows.push(['D at 50 °C over that of 25 °C', Walkers.coefficient(50) / factor, 1.76, 0.03]);
            const drop = new Walkers(new Chance(3), 6000, 20, 14, 1);
            const start = drop.meanSquare();
            for (const minutes of [10, 20, 40]) {
                while (drop.time < minutes - 1e-9)
                    drop.step(1, factor);
                const law = 4 * factor * minutes;
                rows.push(['growth in ' + minutes + ' min', drop.meanSquare() - start, law, 0.02 * law]);
            }
            const sum = (list) => list.reduce((a, b) => a + b, 0);
            const width = (profile) => Math.sqrt(sum(profile.map((c, i) => c * 0.5 * Math.pow((i + 0.5) * 0.5 - 10, 2))));
            const law = Array.from({ length: 40 }, (_, i) => drop.expected((i + 0.5) / 2));
            rows.push(['all there', sum(drop.profile(40)) * 0.5, 1, 1e-9], ['in the law', sum(law) * 0.5, 1, 1e-3]);
            rows.push(['width of the profile', width(drop.profile(40)), width(law), 0.02 * width(law)]);
            while (drop.time < 4000)
                drop.step(80, factor);
            rows.push(['law at last', drop.expected(1), 1 / 20, 1e-3], ['at last', drop.profile(4)[0], 1 / 20, 0.002]);
            )"));
        row("a liquid keeps its energy, and takes the bath's temperature", QStringLiteral("liquid"),
            QStringLiteral(R"(
            const liquid = new Liquid(new Chance(4), 120, 24, 18);
            const go = (steps, visit) => { for (let i = 0; i < steps; i++) { liquid.step(); visit(); } };
            const mean = (steps) => { let sum = 0; go(steps, () => sum += liquid.temperature() / steps); return sum; };
            go(800, () => {});
            rows.push(['with the bath', mean(1200), 0.45, 0.02 * 0.45]);
            // The force is what the energy says.
            const slope = (list, i) => {
                const was = list[i];
                const at = (place) => { list[i] = place; liquid.feel(); return liquid.potential; };
                const rise = at(was + 1e-5) - at(was - 1e-5);
                at(was);
                return rise / 2e-5;
            };
            for (let i = 0; i < 120; i += 29) {
                rows.push(['force along', liquid.fx[i], -slope(liquid.x, i), 1e-4 * (1 + Math.abs(liquid.fx[i]))]);
                rows.push(['force up', liquid.fy[i], -slope(liquid.y, i), 1e-4 * (1 + Math.abs(liquid.fy[i]))]);
            }
            liquid.hasBath = false;
            const before = liquid.energy();
            go(1200, () => rows.push(['energy', liquid.energy(), before, 0.02 * liquid.kinetic()]));
            )"));
        row("water keeps its energy, and has fewer bonds when it is hot", QStringLiteral("water"),
            QStringLiteral(R"(
            const water = new Water(new Chance(5), 16, 17, 13);
            const go = (steps, visit) => { for (let i = 0; i < steps; i++) { water.step(); visit(); } };
            go(400, () => {});
            const slope = (list, i) => {
                const was = list[i];
                const at = (place) => { list[i] = place; water.feel(); return water.potential; };
                const rise = at(was + 1e-5) - at(was - 1e-5);
                at(was);
                return rise / 2e-5;
            };
            for (let i = 0; i < 16; i += 5) {
                rows.push(['force along', water.fx[i], -slope(water.x, i), 1e-3 * (1 + Math.abs(water.fx[i]))]);
                rows.push(['force up', water.fy[i], -slope(water.y, i), 1e-3 * (1 + Math.abs(water.fy[i]))]);
                rows.push(['turning', water.torque[i], -slope(water.turn, i), 1e-3 * (1 + Math.abs(water.torque[i]))]);
            }
            const means = [150, 700].map((kelvin) => {
                water.wanted = kelvin;
                go(800, () => {});
                let bonds = 0;
                let warmth = 0;
                go(800, () => { bonds += 2 * water.bonds().length / 16 / 800; warmth += water.temperature() / 800; });
                rows.push(['temperature', warmth, kelvin, 0.05 * kelvin]);
                return bonds;
            });
            rows.push(['cold', means[0], 2.6, 0.6], ['hot', means[1], 1.2, 0.6]);
            water.hasBath = false;
            const before = water.energy();
            go(800, () => rows.push(['energy', water.energy(), before, 0.02 * water.kinetic()]));
            )"));
    }

    void aModelKeepsTheLaw()
    {
        QFETCH(QString, model);
        QFETCH(QString, script);
        QString source;
        for (const QString& name : {QStringLiteral("random"), model}) {
            QFile file(QStringLiteral(PAGES "/%1.js").arg(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            source += QString::fromUtf8(file.readAll());
        }
        QJSEngine engine;
        const QJSValue rows = engine.evaluate(
            QStringLiteral("(function() { %1\nconst rows = []; %2\nreturn rows; })()").arg(source, script));
        QVERIFY2(!rows.isError(), qPrintable(rows.toString()));
        const int count = rows.property(QStringLiteral("length")).toInt();
        QVERIFY(count > 5);
        for (int i = 0; i < count; ++i) {
            const QJSValue row = rows.property(quint32(i));
            const double value = row.property(1).toNumber();
            const double expected = row.property(2).toNumber();
            QVERIFY2(std::abs(value - expected) <= row.property(3).toNumber(), qPrintable(row.toString()));
        }
    }
};

QTEST_GUILESS_MAIN(TestModels)
#include "test_models.moc"
