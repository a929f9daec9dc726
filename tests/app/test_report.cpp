#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QSaveFile>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QTimer>
#include <QXmlStreamReader>

#include <cmath>

#include "app/iconlists.h"
#include "app/report.h"
#include "app/statistics.h"
#include "classroom/classrun.h"
#include "data/curvefit.h"
#include "data/rangestatistics.h"
#include "data/stretch.h"
#include "graph/myplotcurve.h"
#include "instruments/statusline.h"
#include "persistence/safefile.h"
#include "tests/app/classbench.h"
#include "tests/persistence/testexperiment.h"

namespace {

QString outputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished() ? QString::fromUtf8(process.readAllStandardOutput()) : QString();
}

class FullDisk : public QSaveFile
{
public:
    using QSaveFile::QSaveFile;

protected:
    qint64 writeData(const char* bytes, qint64 n) override { return QSaveFile::writeData(bytes, n / 2); }
};

} // namespace

/// The report of a lesson, by its command on the real window. Groups A and B cool down, C has measured
/// nothing.
class TestReport : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        guard->expect(QStringLiteral("propagateSizeHints"));
        bench.reset(new ClassBench(3));
        folder.reset(new QTemporaryDir);
        for (const int slot : {0, 1}) {
            QVector<double> times, values, others;
            for (int i = 0; i < 101; ++i) {
                times << i;
                values << 20 + 50 * std::exp(-i / (40.0 + 20 * slot)) + 0.01 * std::sin(7.0 * i);
                others << 30 + slot + std::sin(i);
            }
            bench->data(slot)->takeExperiment(
                {SensorPtr::create(SENSOR_EXT_TEMP), SensorPtr::create(SENSOR_HUMIDITY)}, 1, times,
                {values, others});
            bench->data(slot)->setGroupName(QStringLiteral("Group %1").arg(QChar('A' + slot)));
            plot(slot)->setData();
            plot(slot)->updateSens(0);
        }
        bench->manager->run().classSet().rebuild(3);
        plot(-1)->setData();
    }
    void finish() override
    {
        SafeFile::setFactory(nullptr);
        bench.reset();
    }

    Plot* plot(int slot) const
    {
        return slot < 0 ? bench->window->findChild<Plot*>(QStringLiteral("Class Curve graph"))
                        : bench->manager->plotAt(slot);
    }
    void fit(int slot)
    {
        const Stretch all = Stretch::whole(*bench->data(slot), 0);
        const CurveFit::Fit made = CurveFit::fit(CurveFit::Model::Exponential, all.x, all.y);
        plot(slot)->addFit(FittedCurve(made, all.xUnit, all.yUnit), 0, all.from, all.to);
    }
    void note(int slot, const QString& text)
    {
        auto* const mark = new myPlotMarker(0, MARKER_ANNOTATE);
        mark->setText(text);
        mark->setValue(20, 40);
        plot(slot)->setMarkers({mark});
    }
    void choose(const char* list, int code) const
    {
        auto* const box = bench->window->findChild<QComboBox*>(QLatin1String(list));
        Q_EMIT box->activated(box->findData(code));
    }
    QString told() const { return bench->window->findChild<StatusLine*>()->outcome(); }
    QString path(const QString& name) const { return folder->filePath(name); }
    /// Asks for a report and answers its dialog; waits until it is done.
    void make(const QString& name, const QString& school = QStringLiteral("School <1> & Co"))
    {
        choose("exports", EXPORT_REPORT);
        auto* const dialog = bench->window->findChild<QDialog*>(QStringLiteral("reportDialog"));
        QVERIFY(dialog);
        dialog->findChild<QLineEdit*>(QStringLiteral("school"))->setText(school);
        dialog->findChild<QLineEdit*>(QStringLiteral("title"))->setText(QStringLiteral("Cooling"));
        bench->prompt.file = path(name);
        QSignalSpy done(bench->window->findChild<Report*>(), &Report::done);
        dialog->accept();
        QTRY_COMPARE(done.count(), 1);
        isSaved = done.first().first().toBool();
    }
    QString html(const QString& name) const { return QString::fromUtf8(bytesOf(path(name))); }
    /// What a reader of the file reads, without its line breaks.
    QString textOf(const QString& name) const
    {
        if (name.endsWith(QLatin1String("pdf")))
            return outputOf("pdftotext", {"-layout", path(name), "-"}).simplified();
        QTextDocument document;
        document.setHtml(html(name));
        return document.toPlainText().simplified();
    }

    static void files(const QString& name)
    {
        QTest::addColumn<QString>("name");
        for (const QString& ending : {QStringLiteral(".pdf"), QStringLiteral(".html")})
            QTest::newRow(qPrintable(name + ending)) << name + ending;
    }

    QScopedPointer<ClassBench> bench;
    QScopedPointer<QTemporaryDir> folder;
    bool isSaved = false;

private Q_SLOTS:
    void tellsTheNumbersOfTheScreen_data() { files("lesson"); }
    void tellsTheNumbersOfTheScreen()
    {
        QFETCH(QString, name);
        for (const int slot : {0, 1})
            fit(slot);
        QStringList numbers = plot(0)->markers.last()->label().text().split('\n').mid(1) +
                              plot(1)->markers.last()->label().text().split('\n').mid(1);
        for (const int slot : {0, 1}) { // both ends of a range
            for (const double at : {10.0, 60.0})
                plot(slot)->newMarker(0, -1, at, bench->data(slot)->getYAt(0, int(at)));
        }
        Q_EMIT plot(0)->changedActivePlot(0);
        QTimer::singleShot(0, this, [&] {
            auto* const dialog = bench->window->findChild<QDialog*>(QStringLiteral("statistics"));
            const auto* const table = dialog->findChild<QTableWidget*>(QStringLiteral("results"));
            for (int row = 0; row < 2; ++row)
                for (int column = 2; column < table->columnCount(); ++column)
                    numbers << table->item(row, column)->text();
            dialog->reject();
        });
        choose("regression", REG_STATISTICS);
        QCOMPARE(numbers.size(), 2 * 5 + 2 * 7);
        plot(0)->getCurve(1)->hide();
        make(name);
        QVERIFY(isSaved);
        const QString text = textOf(name);
        for (const QString& number : qAsConst(numbers))
            QVERIFY2(text.contains(number.section(" = ", -1)), qPrintable(number + '\n' + text));
        for (const QString word : {"School <1> & Co · Cooling", "Group A", "Group B",
                                   "Between the two markers", "Hidden: ", "Mean ±", "The class"})
            QVERIFY2(text.contains(word), qPrintable(word + '\n' + text));
        QVERIFY(!text.contains("Group C"));
        for (const int slot :
             {0, 1}) { // the other sensor has the same range, and is not told where it is hidden
            const ExpData& set = *bench->data(slot);
            const ResultTable table =
                statistics::told({{}}, {RangeStatistics::of(set, Stretch::between(set, 1, 10, 60))});
            QCOMPARE(text.contains(table.rows[0][3]), slot == 1);
        }
        QVERIFY(Settings::mainStore().value("report/school").toString().startsWith("School"));
    }

    void anyTextIsShownAndNoneIsObeyed()
    {
        QString words;
        for (int i = 0; i < 4000; ++i)
            words += QStringLiteral("word%1 ").arg(i);
        note(0, "<img src=\"http://x.org/a.png\"> & \x01 %1 " + words + "end");
        bench->data(0)->setGroupName("A<script>" + QString(300, 'W'));
        for (const QString name : {"a.html", "a.pdf"}) {
            make(name);
            const QString text = textOf(name);
            QVERIFY2(text.contains("& %1 word0 word1"), qPrintable(text.left(2000)));
            QVERIFY(text.contains("word3999 end"));
        }
        QXmlStreamReader reader(html("a.html"));
        while (!reader.atEnd()) {
            reader.readNext();
            QVERIFY(reader.name() != "img" && reader.name() != "script" && reader.name() != "link");
            for (const QXmlStreamAttribute& each : reader.attributes())
                QVERIFY2(each.name() != "src" && each.name() != "href", qPrintable(each.value().toString()));
        }
        QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
        const QString info = outputOf("pdfinfo", {path("a.pdf")});
        const int pages = info.mid(info.indexOf("Pages:") + 6).simplified().section(' ', 0, 0).toInt();
        QVERIFY2(pages > 6 && pages < 20, qPrintable(info)); // the note goes over some
    }

    void aRunGoesOnMeanwhile()
    {
        choose("exports", EXPORT_REPORT);
        auto* const dialog = bench->window->findChild<QDialog*>(QStringLiteral("reportDialog"));
        bench->data(0)->addSample(101, {20, 30}); // while it asks
        bench->prompt.file = path("run.html");
        QSignalSpy done(bench->window->findChild<Report*>(), &Report::done);
        dialog->accept();
        bench->data(0)->addSample(102, {20, 30}); // while it is made
        choose("exports", EXPORT_REPORT);
        QVERIFY2(told().contains("still being made"), qPrintable(told()));
        QTRY_COMPARE(done.count(), 1);
        QVERIFY(html("run.html").contains("102 samples"));
    }

    void failuresAreToldAndTheOldFileStays_data() { files("old"); }
    void failuresAreToldAndTheOldFileStays()
    {
        QFETCH(QString, name);
        writeBytes(path(name), "old");
        SafeFile::setFactory([](const QString& fname) { return std::make_unique<FullDisk>(fname); });
        make(name);
        QVERIFY(!isSaved && bench->prompt.asked.last().contains("space"));
        SafeFile::setFactory(nullptr);
        make("none/" + name);
        QVERIFY(!isSaved && bench->prompt.asked.last().contains("No such"));
        QCOMPARE(bytesOf(path(name)), QByteArray("old"));
    }

    void withoutDataItSaysSo()
    {
        bench.reset(new ClassBench(2));
        choose("exports", EXPORT_REPORT);
        QVERIFY2(told().contains("nothing to report"), qPrintable(told()));
        QVERIFY(!bench->window->findChild<QDialog*>(QStringLiteral("reportDialog")));
    }

    void hasThePaperOfThePrinter_data()
    {
        columns<int, QString>({"size", "told"});
        row("A4", int(QPageSize::A4), QString("595 x 842"));
        row("Letter", int(QPageSize::Letter), QString("612 x 792"));
    }
    void hasThePaperOfThePrinter()
    {
        const auto [size, told] = fetched<int, QString>({"size", "told"});
        Report report(
            &bench->prompt, [](double) { return QString(); }, nullptr);
        QSignalSpy done(&report, &Report::done);
        ReportSource source;
        source.graphs.append(GraphCopy::of(*plot(0), *bench->data(0)));
        report.make(path("p.pdf"), "", "", source,
                    QPageLayout(QPageSize(QPageSize::PageSizeId(size)), QPageLayout::Portrait, {}));
        QTRY_COMPARE(done.count(), 1);
        const QString info = outputOf("pdfinfo", {path("p.pdf")}).simplified();
        QVERIFY2(info.contains("Pages: 1 ") && info.contains(told), qPrintable(info));
    }
};

QTEST_MAIN(TestReport)
#include "test_report.moc"
