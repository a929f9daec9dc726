#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QFile>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>

#include <cmath>

#include "app/iconlists.h"
#include "app/undosteps.h"
#include "data/curvefit.h"
#include "tests/app/classbench.h"

/// Fits and statistics by their dialogs, on the real window. Groups A and B cool down, C has measured
/// nothing.
class TestFits : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        guard->expect(QStringLiteral("propagateSizeHints"));
        bench.reset(new ClassBench(3));
        cool(0, 40);
        cool(1, 60);
        bench->action("layoutAct1")->trigger();
        bench->window->activateWindow();
    }
    void finish() override { bench.reset(); }

    void cool(int slot, double tau, int samples = 101)
    {
        QVector<double> times, values;
        for (int i = 0; i < samples; ++i) {
            times << i;
            values << 20 + 50 * std::exp(-i / tau) + 0.01 * std::sin(7.0 * i);
        }
        bench->data(slot)->takeExperiment({SensorPtr::create(SENSOR_EXT_TEMP)}, 1, times, {values});
        bench->data(slot)->setGroupName(QStringLiteral("Group %1").arg(QChar('A' + slot)));
        plot(slot)->setData();
        plot(slot)->updateSens(0);
        Q_EMIT plot(0)->changedActivePlot(0);
    }
    Plot* plot(int slot) const { return bench->manager->plotAt(slot); }
    void openFit()
    {
        auto* const list = bench->window->findChild<QComboBox*>(QStringLiteral("regression"));
        Q_EMIT list->activated(list->findData(REG_FIT));
        dialog = bench->window->findChild<QDialog*>(QStringLiteral("fitDialog"));
        QVERIFY(dialog);
    }
    template<class W> W* part(const char* name) const { return dialog->findChild<W*>(QLatin1String(name)); }
    void choose(CurveFit::Model model)
    {
        auto* const models = part<QComboBox>("model");
        models->setCurrentIndex(models->findData(int(model)));
    }
    QString cell(int row, int column) const
    {
        const auto* const item = part<QTableWidget>("results")->item(row, column);
        return item ? item->text() : QString();
    }
    QString problem() const { return part<QLabel>("problem")->text(); }
    /// What the Copy button gives, cell by cell.
    QVector<QStringList> copied() const
    {
        part<QPushButton>("copy")->click();
        QVector<QStringList> rows;
        for (const QString& line : QGuiApplication::clipboard()->text().split('\n', Qt::SkipEmptyParts))
            rows << line.split('\t');
        return rows;
    }

    QScopedPointer<ClassBench> bench;
    QDialog* dialog = nullptr;

private Q_SLOTS:
    void oneCurveBetweenTheMarkers()
    {
        openFit();
        choose(CurveFit::Model::Exponential);
        QTRY_COMPARE(cell(6, 1), QString("101"));
        plot(0)->newMarker(0, -1, 10, bench->data(0)->getYAt(0, 10));
        plot(0)->newMarker(0, -1, 60, bench->data(0)->getYAt(0, 60));
        QTRY_COMPARE(cell(6, 1), QString("51")); // both ends count
        QVERIFY2(cell(1, 1).endsWith(" 1/s"), qPrintable(cell(1, 1)));
        const QVector<QStringList> rows = copied();
        QVERIFY(std::fabs(rows[2][1].toDouble() + 1 / 40.0) < 5 * rows[2][2].toDouble());
        QCOMPARE(plot(0)->markers.size(), 4); // a preview is none
        part<QPushButton>("put")->click();
        QCOMPARE(plot(0)->markers.size(), 6);
        const QString text = plot(0)->markers[5]->label().text();
        for (int row = 0; row < 5; ++row)
            QVERIFY2(text.contains(cell(row, 1)), qPrintable(text + '\n' + cell(row, 1)));
        bench->action("undoAct")->trigger();
        QCOMPARE(plot(0)->markers.size(), 4);
        bench->action("redoAct")->trigger();
        QCOMPARE(plot(0)->markers.size(), 6);
        QCOMPARE(plot(0)->markers[5]->label().text(), text);

        // Other samples while it is open: another run, with too few so far.
        cool(0, 40, 2);
        plot(0)->setMarkers();
        QTRY_VERIFY2(problem().contains("few"), qPrintable(problem()));
        QVERIFY(!part<QPushButton>("put")->isEnabled());
    }

    void aTypedFormulaIsJudgedWhileItIsTyped()
    {
        openFit();
        choose(CurveFit::Model::Formula);
        auto* const formula = part<QLineEdit>("formula");
        QVERIFY(formula->isVisible());
        formula->setText("T0 + dT*exp(-t/tau");
        QTRY_VERIFY(problem().contains("parenthesis"));
        formula->setText("T0 + dT*exp(-t/tau"); // the last of several counts
        formula->setText("T0 + dT");
        formula->setText("T0 + dT*exp(-t/tau)");
        QTRY_COMPARE(cell(2, 0), QString("tau"));
        QCOMPARE(problem(), QString());
        QVERIFY(part<QLabel>("told")->text().endsWith("= T0 + dT*exp(-t/tau)"));
        QVERIFY(std::fabs(copied()[3][1].toDouble() - 40) < 0.05);
        part<QPushButton>("residuals")->click();
        QVERIFY(dialog->findChild<QWidget*>("residualPlot")->isVisible());
        dialog->close(); // and leaving with a fit under way ends it
        openFit();
        bench.reset();
    }

    void allGroupsInOneTable()
    {
        openFit();
        choose(CurveFit::Model::Exponential);
        part<QCheckBox>("forAll")->setChecked(true);
        QTRY_COMPARE(part<QTableWidget>("results")->rowCount(), 4); // and the mean
        QCOMPARE(cell(1, 0), QString("Group B"));
        QVERIFY2(cell(2, 2).contains("few"), qPrintable(cell(2, 2)));
        const QVector<QStringList> rows = copied();
        QCOMPARE(rows.size(), 6);
        const int b = rows[0].indexOf("b");
        const double first = rows[1][b].toDouble();
        const double second = rows[2][b].toDouble();
        QVERIFY(std::fabs(first + 1 / 40.0) < 1e-4 && std::fabs(second + 1 / 60.0) < 1e-4);
        QVERIFY(std::fabs(rows[4][b].toDouble() - (first + second) / 2) < 1e-9);
        QVERIFY(std::fabs(rows[5][b].toDouble() - std::fabs(first - second) / std::sqrt(2.0)) < 1e-9);

        const QTemporaryDir folder;
        bench->prompt.file = folder.filePath("fits.csv");
        part<QPushButton>("export")->click();
        QFile file(bench->prompt.file);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QStringList lines = QString::fromUtf8(file.readAll()).remove(QChar(0xFEFF)).split('\n');
        QCOMPARE(lines.value(1), rows[1].join(','));

        part<QPushButton>("put")->click();
        QCOMPARE(plot(0)->markers.size() + plot(1)->markers.size() + plot(2)->markers.size(), 4);
        bench->window->findChild<UndoSteps*>()->undo(2);
        QCOMPARE(plot(0)->markers.size() + plot(1)->markers.size(), 0);
    }

    void statisticsOfARange()
    {
        for (int i : {10, 20})
            plot(0)->newMarker(0, -1, i, bench->data(0)->getYAt(0, i));
        double sum = 0;
        for (int i = 10; i <= 20; ++i)
            sum += bench->data(1)->getYAt(0, i);
        QTimer::singleShot(0, this, [&] {
            dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QCOMPARE(part<QLabel>("samples")->text(), QString("11"));
            QVERIFY(part<QLabel>("range")->isVisible());
            QCOMPARE(part<QLabel>("maximum")->text(),
                     QStringLiteral("%L1").arg(bench->data(0)->getYAt(0, 10)));
            part<QCheckBox>("forAll")->setChecked(true);
            const QVector<QStringList> rows = copied();
            QCOMPARE(rows.size(), 4);
            QCOMPARE(rows[2].mid(0, 4), QStringList({"Group B", rows[1][1], "11", rows[1][3]}));
            QVERIFY(std::fabs(rows[2][4].toDouble() - sum / 11) < 1e-5);
            const double area = bench->data(1)->integral(0, 10, 20);
            QVERIFY(std::fabs(rows[2][8].toDouble() - area) < 1e-4);
            QVERIFY(rows[2][10].toDouble() < -0.5 && rows[2][11].endsWith("/s"));
            QCOMPARE(rows[3].value(2), QString("0")); // the group that has measured nothing
            dialog->close();
        });
        auto* const list = bench->window->findChild<QComboBox*>(QStringLiteral("regression"));
        Q_EMIT list->activated(list->findData(REG_STATISTICS));
    }
};

QTEST_MAIN(TestFits)
#include "test_fits.moc"
