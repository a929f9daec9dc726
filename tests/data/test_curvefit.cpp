#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <cmath>

#include "common/common.h"
#include "common/settings.h"
#include "data/curvefit.h"
#include "data/fittedcurve.h"
#include "data/fittexts.h"
#include "data/formula.h"
#include "tests/common/testsupport.h"

using CurveFit::Fit;
using CurveFit::Model;

Q_DECLARE_METATYPE(CurveFit::Model)

namespace {

/// A set of reference data with certified results (NIST StRD).
struct Reference
{
    QString formula;
    QVector<double> start; // the second one
    QVector<double> values;
    QVector<double> errors;
    double residualDeviation = 0;
    QVector<double> x;
    QVector<double> y;
};

Reference read(const QString& name)
{
    Reference set;
    QFile file(QStringLiteral(DATA_DIR "/nist/%1.csv").arg(name));
    if (!file.open(QIODevice::ReadOnly))
        qCritical("no data");
    bool isXFirst = false;
    for (const QString& line : QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts)) {
        const QStringList cells = QString(line).remove("# ").split(',');
        if (line.contains(QRegularExpression("^# .*y *= ")))
            set.formula = line.mid(line.indexOf('=') + 1).remove(QRegularExpression("\\+ +e *$"));
        else if (line.contains("residual standard deviation"))
            set.residualDeviation = line.mid(line.lastIndexOf(' ')).toDouble();
        else if (line.contains(QRegularExpression("^# b\\d,"))) {
            set.start.append(cells[2].toDouble());
            set.values.append(cells[3].toDouble());
            set.errors.append(cells[4].toDouble());
        } else if (line == "x,y" || line == "y,x") {
            isXFirst = line == "x,y";
        } else if (!line.startsWith('#')) {
            set.x.append(cells[isXFirst ? 0 : 1].toDouble());
            set.y.append(cells[isXFirst ? 1 : 0].toDouble());
        }
    }
    return set;
}

/// Digits in which two numbers agree.
double digits(double got, double certified)
{
    return -std::log10(qMax(std::fabs(got - certified) / std::fabs(certified), 1e-15));
}

double leastDigits(const QVector<double>& got, const QVector<double>& certified)
{
    double least = 15;
    for (int i = 0; i < certified.size(); ++i)
        least = qMin(least, digits(got.value(i, std::nan("")), certified[i]));
    return least;
}

} // namespace

class TestCurveFit : public GuardedTest
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithCertifiedResults_data()
    {
        columns<QString>({"set"});
        for (const char* name : {"misra1a", "chwirut2", "lanczos3", "gauss1", "danwood", "kirby2", "hahn1",
                                 "enso", "mgh17", "thurber"})
            row(name, QString(name));
    }

    void agreesWithCertifiedResults()
    {
        QFETCH(QString, set);
        const Reference reference = read(set);
        QVector<double> start; // in the order in which the formula names them
        for (const QString& name : Formula(reference.formula).parameters())
            start.append(reference.start.value(name.midRef(1).toInt() - 1));
        const Fit fit = CurveFit::fit(Model::Formula, reference.x, reference.y, reference.formula, start);
        QVERIFY2(fit.isGood(), qPrintable(fit.problem));
        QVector<double> values;
        QVector<double> errors;
        for (int i = 1; i <= reference.values.size(); ++i) {
            const int place = fit.names.indexOf(QStringLiteral("b%1").arg(i));
            values.append(fit.curve.parameters.value(place));
            errors.append(fit.errors.value(place));
        }
        qInfo("%-9s %d parameters: %.1f digits, standard errors %.1f, residual deviation %.1f",
              QTest::currentDataTag(), values.size(), leastDigits(values, reference.values),
              leastDigits(errors, reference.errors),
              digits(fit.residualDeviation, reference.residualDeviation));
        QVERIFY(leastDigits(values, reference.values) >= 6);
        QVERIFY(leastDigits(errors, reference.errors) >= 5);
        QVERIFY(digits(fit.residualDeviation, reference.residualDeviation) >= 6);
    }

    void findsItsStartBySelf_data()
    {
        columns<Model, QString, QVector<double>, double, double, int>(
            {"model", "expression", "parameters", "from", "to", "count"});
        using P = QVector<double>;
        row("line", Model::Line, QString(), P{-3, 12}, 0.0, 40.0, 400);
        row("parabola", Model::Parabola, QString(), P{-4.905, 3, 1.2}, 0.0, 1.5, 60);
        row("proportional", Model::Proportional, QString(), P{0.02}, 0.0, 900.0, 50);
        row("cooling water", Model::Exponential, QString(), P{55, -1 / 900.0, 21}, 0.0, 2400.0, 2400);
        row("growth, late", Model::Exponential, QString(), P{1e-3, 0.5, -4}, 10.0, 20.0, 100);
        row("charge", Model::Exponential, QString(), P{-5, -0.8, 5}, 0.0, 4.0, 41);
        row("inverse square", Model::Power, QString(), P{1800, -2}, 0.5, 9.0, 80);
        row("root", Model::Power, QString(), P{2, 0.5}, 0.01, 3.0, 80);
        row("logarithm", Model::Logarithm, QString(), P{1, 2.5}, 0.1, 200.0, 100);
        row("pendulum", Model::Sine, QString(), P{12, 4.4, 1.1, 90}, 0.0, 60.0, 6000);
        row("half a wave", Model::Sine, QString(), P{3, 0.3, -0.4, 1}, 0.0, 12.0, 120);
        row("fast wave, long run", Model::Sine, QString(), P{1, 2 * M_PI * 11.7, 0.5, 0}, 0.0, 300.0, 30000);
        row("peak", Model::Gauss, QString(), P{8, 13, 0.7, 2}, 0.0, 30.0, 300);
        row("dip", Model::Gauss, QString(), P{-4, 5, 2, 20}, 0.0, 12.0, 200);
        row("typed", Model::Formula, QStringLiteral("t0 + dt*exp(-x/tau)"), P{21, 55, 900}, 0.0, 2400.0, 240);
        row("typed, few points", Model::Formula, QStringLiteral("u*x^2 + v*x + w"), P{-4.905, 3, 1.2}, 0.0,
            1.5, 16);
        row("typed, damped", Model::Formula, QStringLiteral("A*exp(-k*x)*cos(w*x)"), P{10, 0.05, 2}, 0.0,
            20.0, 400);
    }

    void findsItsStartBySelf()
    {
        QFETCH(Model, model);
        QFETCH(QString, expression);
        QFETCH(QVector<double>, parameters);
        QFETCH(double, from);
        QFETCH(double, to);
        QFETCH(int, count);
        QVector<double> x;
        for (int i = 0; i < count; ++i)
            x.append(from + (to - from) * i / (count - 1));
        QVector<double> y = CurveFit::Curve{model, expression, parameters}.values(x);
        const auto [low, high] = std::minmax_element(y.cbegin(), y.cend());
        const double noise = (*high - *low) / 200;
        quint32 state = 7;
        for (double& value : y)
            value += noise * ((state = state * 1664525u + 1013904223u) / 4294967296.0 - 0.5);
        y[count / 2] = std::nan(""); // a gap

        const Fit fit = CurveFit::fit(model, x, y, expression);
        QVERIFY2(fit.isGood(), qPrintable(fit.problem));
        QCOMPARE(fit.n, count - 1);
        QVERIFY(fit.r2 > 0.999);
        // Even noise between -1/2 and 1/2 deviates by 1/sqrt(12).
        QVERIFY2(fit.residualDeviation > noise * 0.2 && fit.residualDeviation < noise * 0.4,
                 QByteArray::number(fit.residualDeviation / noise));
        for (int i = 0; i < parameters.size(); ++i) {
            QCOMPARE(fit.curve.parameters[i] < 0,
                     model != Model::Formula ? parameters[i] < 0 : fit.curve.parameters[i] < 0);
            const double distance = std::fabs(std::fabs(fit.curve.parameters[i]) - std::fabs(parameters[i]));
            QVERIFY2(distance < 5 * fit.errors[i], qPrintable(QStringLiteral("%1: %2 ± %3, not %4")
                                                                  .arg(fit.names[i])
                                                                  .arg(fit.curve.parameters[i])
                                                                  .arg(fit.errors[i])
                                                                  .arg(parameters[i])));
        }
    }

    void linesAreAsCertified()
    {
        const Reference norris = read("norris");
        const Fit line = CurveFit::fit(Model::Line, norris.x, norris.y);
        QVERIFY(leastDigits(line.curve.parameters, {1.00211681802045, -0.262323073774029}) > 9);
        QVERIFY(digits(line.r2, 0.999993745883712) > 9);
        const Reference pontius = read("pontius");
        const Fit parabola = CurveFit::fit(Model::Parabola, pontius.x, pontius.y);
        QVERIFY(leastDigits(parabola.curve.parameters,
                            {-0.316081871345029e-14, 0.732059160401003e-6, 0.673565789473684e-3}) > 9);
    }

    void whatCannotBeFittedSaysWhy_data()
    {
        columns<Model, QString, QVector<double>, QString>({"model", "expression", "x", "words"});
        using P = QVector<double>;
        row("two points", Model::Parabola, QString(), P{1, 2}, QStringLiteral("too few"));
        row("no points", Model::Sine, QString(), P{}, QStringLiteral("too few"));
        row("below 0", Model::Power, QString(), P{-3, -2, -1}, QStringLiteral("above 0"));
        row("all in one place", Model::Gauss, QString(), P{2, 2, 2, 2, 2}, QString());
        row("nothing typed", Model::Formula, QString(), P{1, 2, 3}, QStringLiteral("."));
        row("not a formula", Model::Formula, QStringLiteral("a*(x"), P{1, 2, 3},
            QStringLiteral("parenthesis"));
        row("nothing to find", Model::Formula, QStringLiteral("2*x"), P{1, 2, 3},
            QStringLiteral("no parameter"));
        row("no value", Model::Formula, QStringLiteral("a*ln(-x^2-1)"), P{1, 2, 3},
            QStringLiteral("No such"));
    }

    void whatCannotBeFittedSaysWhy()
    {
        QFETCH(Model, model);
        QFETCH(QString, expression);
        QFETCH(QVector<double>, x);
        QFETCH(QString, words);
        const Fit fit = CurveFit::fit(model, x, x, expression);
        if (!words.isEmpty())
            QVERIFY2(fit.problem.contains(words), qPrintable(fit.problem));
        QCOMPARE(fit.isGood(), fit.problem.isEmpty());
        for (const double value : fit.curve.parameters)
            QVERIFY(std::isfinite(value));
    }

    void formulasAreReadAsPeopleWriteThem()
    {
        const auto value = [](const QString& text, double x, QVector<double> parameters = {}) {
            return Formula(text).value(&x, parameters.constData());
        };
        QCOMPARE(value("x**2 + [1]", 3), 10.0);
        QCOMPARE(value(QString::fromUtf8("2·x² − π"), 3), 18 - M_PI);
        QCOMPARE(value("log(x) + ln(x)", 100), 2 + std::log(100.0));
        QCOMPARE(value("-x^2", 3), -9.0);
        QCOMPARE(Formula("v0*t + g/2*t^2", {"t"}).parameters(), QStringList({"v0", "g"}));
        QVERIFY(Formula("m*v^2/2", {"m", "v", "t"}).uses("v"));
        QVERIFY(!Formula("m*v^2/2", {"m", "v", "t"}).uses("t"));
        QStringList names;
        for (int i = 0; i < 20; ++i)
            names += QStringLiteral("p%1").arg(i);
        QVERIFY(Formula(names.join('+')).error().contains("12"));
    }

    void aFitIsToldInAnotherUnit_data()
    {
        columns<Model, QString, bool>({"model", "expression", "isConverted"});
        for (int i = 0; i < int(Model::Formula); ++i) {
            const bool hasNoConstant = Model(i) == Model::Proportional || Model(i) == Model::Power;
            row(qPrintable(FittedCurve::key(Model(i))), Model(i), QString(), !hasNoConstant);
        }
        row("formula", Model::Formula, QStringLiteral("k*x + x^m + u - w"), false);
    }

    // Numbers that cannot be given in another unit keep their own; the curve stands where it stood.
    void aFitIsToldInAnotherUnit()
    {
        const auto [model, expression, isConverted] =
            fetched<Model, QString, bool>({"model", "expression", "isConverted"});
        CurveFit::Fit fit;
        fit.curve = {model, expression, {2.5, -0.3, 1.7, 4}};
        if (model != Model::Formula)
            fit.curve.parameters.resize(CurveFit::parameterNames(model).size());
        fit.errors.fill(0.25, fit.curve.parameters.size());
        fit.rmse = 0.5;
        const FittedCurve::Unit celsius{QString::fromUtf8("°C"), 1, 0};
        const FittedCurve::Unit fahrenheit{QString::fromUtf8("°F"), 1.8, 32};
        const FittedCurve own(fit, {}, celsius);
        QVERIFY(own.isSound());
        const FittedCurve told = own.in(fahrenheit);
        QCOMPARE(told.y.name, isConverted ? fahrenheit.name : celsius.name);
        QCOMPARE(told.rmse, isConverted ? 0.9 : 0.5);
        for (const double x : {0.4, 1.0, 7.5}) {
            const double expected = own.curve.values({x})[0] * 1.8 + 32;
            QVERIFY(std::fabs(told.values({x}, {}, fahrenheit)[0] - expected) < 1e-12 * expected);
        }
    }

    void typedFormulasAreOfTheReader_data()
    {
        columns<QString, QString, bool, QString>({"language", "text", "isTime", "formula"});
        row("point", QString("en"), QString("0.5*a*t^2 + at "), true, QString("0.5*a*x^2 + at"));
        row("comma", QString("pl"), QString("0,5*a*t^2"), true, QString("0.5*a*x^2"));
        row("t beside x", QString("en"), QString("t*exp(x)"), true, QString("t*exp(x)"));
        row("over a sensor", QString("en"), QString("t*2"), false, QString("t*2"));
    }

    void typedFormulasAreOfTheReader()
    {
        QFETCH(QString, language);
        QFETCH(QString, text);
        QFETCH(bool, isTime);
        Settings::mainStore().setValue(QLatin1String(Settings::language), language);
        Common::forgetLocale();
        QTEST(FitTexts::typed(text, isTime), "formula");
        Settings::mainStore().remove(QLatin1String(Settings::language));
        Common::forgetLocale();
    }

    void unitsFollowTheAxes()
    {
        const auto unit = [](Model model, int parameter) {
            return CurveFit::parameterUnit(model, parameter, "s", QString::fromUtf8("°C"));
        };
        QCOMPARE(unit(Model::Line, 0), QString::fromUtf8("°C/s"));
        QCOMPARE(unit(Model::Parabola, 0), QString::fromUtf8("°C/s²"));
        QCOMPARE(unit(Model::Exponential, 1), QStringLiteral("1/s"));
        QCOMPARE(unit(Model::Sine, 2), QString());
        QCOMPARE(CurveFit::parameterUnit(Model::Line, 0, "V", QString()), QStringLiteral("1/V"));
    }
};

QTEST_GUILESS_MAIN(TestCurveFit)
#include "test_curvefit.moc"
