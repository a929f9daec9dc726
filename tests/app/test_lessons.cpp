#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMenu>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTimer>

#include <archive.h>
#include <archive_entry.h>

#include <cmath>
#include <map>

#include <qwt_legend_label.h>

#include "app/graphtools.h"
#include "app/keptruns.h"
#include "classroom/classrun.h"
#include "classroom/views.h"
#include "common/settings.h"
#include "data/stretch.h"
#include "graph/myplotcurve.h"
#include "graph/myplotmarker.h"
#include "graph/scalemanager.h"
#include "instruments/statusline.h"
#include "persistence/lesson.h"
#include "persistence/safefile.h"
#include "protocol/ratetables.h"
#include "tests/app/classbench.h"
#include "tests/classroom/dialoghand.h"

namespace {

using Members = std::map<QString, QByteArray>;

Members unpacked(const QString& name)
{
    Members members;
    archive* in = archive_read_new();
    archive_read_support_format_zip(in);
    archive_entry* entry = nullptr;
    if (archive_read_open_filename(in, QFile::encodeName(name), 1 << 16) == ARCHIVE_OK) {
        while (archive_read_next_header(in, &entry) == ARCHIVE_OK) {
            QByteArray& bytes = members[QString::fromUtf8(archive_entry_pathname(entry))];
            char piece[4096];
            while (const la_ssize_t n = archive_read_data(in, piece, sizeof piece)) {
                if (n < 0)
                    break;
                bytes.append(piece, int(n));
            }
        }
    }
    archive_read_free(in);
    return members;
}

void pack(const QString& name, const QVector<std::pair<QString, QByteArray>>& members)
{
    archive* out = archive_write_new();
    archive_write_set_format_zip(out);
    archive_write_open_filename(out, QFile::encodeName(name));
    for (const auto& [path, bytes] : members) {
        archive_entry* entry = archive_entry_new();
        archive_entry_set_pathname(entry, path.toUtf8());
        archive_entry_set_filetype(entry, AE_IFREG);
        archive_entry_set_size(entry, bytes.size());
        archive_write_header(out, entry);
        archive_write_data(out, bytes.constData(), size_t(bytes.size()));
        archive_entry_free(entry);
    }
    archive_write_close(out);
    archive_write_free(out);
}

class FullDisk : public QSaveFile
{
public:
    using QSaveFile::QSaveFile;

protected:
    qint64 writeData(const char* data, qint64 n) override { return QSaveFile::writeData(data, n / 2); }
};

} // namespace

/// Lessons: saved, opened again, broken, and what goes on meanwhile.
class TestLessons : public GuardedTest
{
    Q_OBJECT

private:
    void begin() override
    {
        folder.reset(new QTemporaryDir);
        bench.reset(
            new ClassBench(3, QStringLiteral("port0"), {Settings::unitsCelsius, Settings::unitsMeter}));
    }

    void finish() override
    {
        SafeFile::setFactory(nullptr);
        bench.reset();
    }

    /// What a download or a run leaves with a group: a temperature, a distance and a light.
    void measure(int slot, double dt, int samples)
    {
        ExpData* const set = bench->data(slot);
        QVector<QVector<double>> columns(4);
        QVector<double> times;
        for (int i = 0; i < samples; ++i) {
            times << i * (dt > 0 ? dt : 1);
            columns[0] << 20 + slot + 3 * std::sin(i * 0.1) / 7;
            columns[1] << 0.4 + i * i / 2500.0 + std::sin(i) / 90;
            columns[2] << (i % 5 == 3 ? qQNaN() : 100.0 * i);
            columns[3] << 58.7 + i % 30; // keeps a view of its own
        }
        SensorList channels;
        for (int id : {SENSOR_AMB_TEMP_NTC, SENSOR_DISTANCE, SENSOR_LIGHT, SENSOR_SOUND})
            channels << SensorPtr::create(id, set->getSens(0)->units());
        set->takeExperiment(channels, dt, times, columns);
        set->setGroupName(QStringLiteral("Group %1").arg(QChar('A' + slot)));
        show(slot);
    }

    void show(int index)
    {
        for (Plot* plot : bench->manager->viewsOf(index)) {
            plot->setData();
            plot->updateSens(plot->getActiveSens());
        }
    }

    /// Two groups of three sensors with everything on their graphs; the third has no logger.
    void makeLesson(double dt)
    {
        measure(0, dt, 40);
        measure(1, dt, 37);
        ExpData* const first = bench->data(0);
        first->setSelectedSensor(1);
        first->addSpecialCurve(ExpData::CURVE_DERIV);
        first->setSelectedSensor(0);
        first->smoothCurve();
        first->doCrop(3 * qMax(dt, 1e-9), 30 * (dt > 0 ? dt : 1));
        first->setSensorScale(1, 0.25, 0.75);
        show(0);
        mark(bench->manager->plotAt(0), first, 1, dt);
        bench->manager->plotAt(0)->getCurve(2)->hide();
        bench->manager->plotAt(0)->showNextRight();
        bench->data(1)->setSelectedSensor(1);
        const auto energy = recipe(QStringLiteral("m*A^2/100000 + B/m/10000"));
        QVERIFY(bench->data(1)->addCalculated(energy));
        show(1);
        for (const int i : {-1, 0, 1, 2}) { // also where nothing was measured
            Prediction line = Predictions::about(*bench->data(i), 0);
            line.draw({0, 20.125}, {i + 2.5, -1 / 3.0});
            bench->data(i)->predictions = {line};
        }
        bench->manager->run().classSet().rebuild(3);
        bench->data(-1)->makeUniformScales();
        bench->data(-1)->setXRange();
        show(-1);
        mark(bench->manager->plotC(), bench->data(-1), 0, dt);
        Q_EMIT bench->manager->plotAt(1)->changedActivePlot(1);
        auto* const views = bench->window->findChild<QComboBox*>(QStringLiteral("views"));
        Q_EMIT views->activated(views->findData(VIEW_BAR));
        Q_EMIT bench->manager->plotAt(0)->changedActivePlot(0);
        Q_EMIT views->activated(views->findData(VIEW_TABLE_GRAPH));
        Q_EMIT bench->manager->plotAt(0)->changedActivePlot(-1);
        bench->manager->plotC()->updateTitle(QString::fromUtf8("Опыт <1>"));
        QCoreApplication::processEvents(); // the axes are known
        for (int i : {-1, 0, 1})
            bench->data(i)->setNeedSave(true);
    }

    Calculation::Recipe recipe(const QString& formula) const
    {
        Calculation::Recipe recipe;
        Calculation::read(formula, bench->data(1)->getSensors(), &recipe);
        recipe.name = QStringLiteral("Energy <1>");
        recipe.unit = QStringLiteral("J");
        recipe.constants = {{QStringLiteral("m"), 1 / 3.0}};
        return recipe;
    }

    static void addFit(Plot* plot, CurveFit::Model model, const QString& expression = {})
    {
        const Stretch stretch = plot->stretch();
        const CurveFit::Fit fit = CurveFit::fit(model, stretch.x, stretch.y, expression);
        QVERIFY2(fit.isGood(), qPrintable(fit.problem));
        plot->addFit({fit, stretch.xUnit, stretch.yUnit}, stretch.iSens, stretch.from, stretch.to);
    }

    static void mark(Plot* plot, const ExpData* set, int iSens, double dt)
    {
        const double unit = dt > 0 ? dt : 1;
        plot->newMarker(iSens, -1, 5.3 * unit, set->interpolateY(iSens, 5.3 * unit));
        plot->newMarker(iSens, -1, 20 * unit, set->interpolateY(iSens, 20 * unit));
        plot->doRegression(2);
        plot->doRegression(1);
        plot->doIntegral();
        addFit(plot, CurveFit::Model::Line);
        addFit(plot, CurveFit::Model::Formula, QStringLiteral("p*x^2 + q*x"));
        plot->markers[1]->isPlacedByHand = true;
        plot->markers[1]->xOffset = 83;
    }

    /// Another program, with loggers of other groups connected to it.
    void restart(bool isInFeet)
    {
        const QVector<const char*> american{Settings::unitsCelsius, Settings::unitsMeter};
        bench.reset(new ClassBench(2, QStringLiteral("port0"), isInFeet ? american : QVector<const char*>()));
    }

    /// a.lesson and b.lesson, line by line. What a mark says on the screen is in the units of the screen.
    void compareLessons(bool areWordsOther = false) const
    {
        const QRegularExpression words(
            QStringLiteral(" Text=\"[^\"]*\"|<markerTitle>.*|^(Time|RMSE|[a-z]|r²) = .*"));
        const auto linesOf = [](const QByteArray& bytes) {
            return QString::fromUtf16(reinterpret_cast<const char16_t*>(bytes.constData()), bytes.size() / 2)
                .split('\n');
        };
        Members second = unpacked(path("b.lesson"));
        for (const auto& [name, bytes] : unpacked(path("a.lesson"))) {
            QStringList was = linesOf(bytes);
            QStringList is = linesOf(second[name]);
            if (areWordsOther && name.endsWith(".json")) // has other sums then
                continue;
            if (areWordsOther) {
                was.replaceInStrings(words, QString());
                is.replaceInStrings(words, QString());
            }
            for (int i = 0; i < qMax(was.size(), is.size()); ++i)
                QVERIFY2(was.value(i) == is.value(i),
                         qPrintable(name + "\n" + was.value(i) + "\n" + is.value(i)));
            QVERIFY(areWordsOther || second[name] == bytes);
        }
    }

    /// All that the analyses say.
    QVector<double> results() const
    {
        QVector<double> results;
        for (const Plot* plot : {bench->manager->plotAt(0), bench->manager->plotC()}) {
            for (const myPlotMarker* marker : plot->markers)
                results << marker->a << marker->b << marker->c << marker->r << marker->integral;
        }
        return results;
    }

    QString path(const char* name) const { return folder->filePath(QLatin1String(name)); }
    void save(const QString& name, const QString& filter = QStringLiteral("(*.lesson)"))
    {
        bench->prompt.file = name;
        bench->prompt.filter = filter;
        bench->action("saveAct")->trigger();
    }
    void open(const QString& name)
    {
        bench->prompt.file = name;
        bench->action("openAct")->trigger();
    }
    QString said() const { return bench->window->statusBar()->currentMessage(); }

private Q_SLOTS:
    /// By a click in the legend's menu, back and forth, and in the file.
    void aGroupStaysOutOfTheAverage()
    {
        makeLesson(0.1);
        ExpData* set = bench->data(-1);
        const auto isAlone = [&] { // the average is that of the first group
            return set->isOut(1) &&
                   set->getYNoConv(set->meanIndex()).mid(3, 20) == set->getYNoConv(0).mid(3, 20) &&
                   !set->isMeaningless(set->meanIndex());
        };
        Plot* const plot = bench->manager->plotC();
        const auto entry = [plot] {
            const QList<QwtLegendLabel*> all = plot->findChildren<QwtLegendLabel*>();
            return *std::find_if(all.cbegin(), all.cend(), [](const QwtLegendLabel* label) {
                return label->text().text().startsWith(QStringLiteral("Group B"));
            });
        };
        QTest::mouseClick(entry(), Qt::RightButton, Qt::ShiftModifier);
        auto* const menu = plot->findChild<QMenu*>(QStringLiteral("legendMenu"));
        QVERIFY(!isAlone());
        menu->findChild<QAction*>(QStringLiteral("countAct"))->trigger();
        menu->close();
        QVERIFY(isAlone());
        QVERIFY(entry()->font().strikeOut());
        bench->action("undoAct")->trigger();
        QVERIFY(!set->isOut(1) && set->isMeaningless(set->meanIndex()));
        bench->action("redoAct")->trigger();
        QVERIFY(isAlone());
        bench->manager->run().classSet().rebuild(3); // as when somebody joins the class
        QVERIFY(isAlone());
        save(path("a.lesson"));
        restart(false);
        set = bench->data(-1);
        open(path("a.lesson"));
        QVERIFY2(isAlone(), qPrintable(said()));
    }

    void comesBackToTheLastByte_data()
    {
        columns<double, QString>({"dt", "where"});
        row("in the same program", 0.1024, "here");
        row("in other units", 0.1024, "other units");
        for (const double dt : RateTables::seconds)
            row(qPrintable(QString::number(dt)), dt, "elsewhere");
        row("the fastest of a Vorta", RateTables::vortaSeconds[5], "elsewhere");
    }

    void comesBackToTheLastByte()
    {
        const auto [dt, where] = fetched<double, QString>({"dt", "where"});
        makeLesson(dt);
        const QVector<double> before = bench->data(1)->getYNoConv(0);
        const QStringList words = textsOf(0) + textsOf(-1);
        const QVector<double> analysed = results();
        save(path("a.lesson"));
        QVERIFY2(bench->prompt.asked.size() == 1, qPrintable(bench->prompt.asked.join('\n')));
        for (int i : {-1, 0, 1})
            QVERIFY(!bench->data(i)->isNeedSave());
        if (where != "here")
            restart(where == "elsewhere");
        open(path("a.lesson"));
        QVERIFY2(said().isEmpty(), qPrintable(said()));
        QVERIFY(bench->window->windowTitle().startsWith("a.lesson - "));
        if (where != "other units")
            QCOMPARE(textsOf(0) + textsOf(-1), words);
        const QVector<double>& after = bench->data(1)->getYNoConv(0);
        QCOMPARE(after.size(), before.size());
        for (int i = 0; i < before.size(); ++i)
            QVERIFY(std::fabs(after[i] - before[i]) <= 1e-9);
        QVERIFY(bench->data(0)->getSens(1)->readSetMinMax && !bench->data(0)->getSens(0)->readSetMinMax);
        QVERIFY(!bench->manager->plotAt(0)->getCurve(2)->isShown());
        QVERIFY(bench->manager->plotAt(0)->axisEnabled(QwtPlot::yRight));
        ExpData second;
        second.setContent(bench->data(1)->content()); // its formula is at work
        second.replaceYVal(0, 2, 3);
        QCOMPARE(second.getYNoConv(4).at(2), 3e-5 + 3e-4 * second.getYNoConv(1).at(2));
        QCOMPARE(second.getYNoConv(4).at(3), bench->data(1)->getYNoConv(4).at(3));
        const int formula = bench->data(1)->getNSens() - 1; // which fills its graph, small as it is
        const scaleManager& scaler = *bench->manager->plotAt(1)->scaler;
        QVERIFY(scaler.getScaleMax(formula) - scaler.getScaleMin(formula) <
                3 * (bench->data(1)->getMaxY(formula) - bench->data(1)->getMinY(formula)));
        QCOMPARE(bench->manager->viewShownBy(1), int(VIEW_BAR));
        save(path("b.lesson"));
        QCOMPARE(unpacked(path("a.lesson")).size(), size_t(5)); // class, three groups, manifest
        compareLessons(where == "other units");
        mark(bench->manager->plotAt(0), bench->data(0), 1, dt);
        mark(bench->manager->plotC(), bench->data(-1), 0, dt);
        const QVector<double> again = results();
        QCOMPARE(again.size(), analysed.size());
        for (int i = 0; where != "other units" && i < again.size(); ++i)
            QVERIFY2(std::fabs(again[i] - analysed[i]) <= 1e-9 * std::fabs(analysed[i]),
                     qPrintable(QStringLiteral("%1: %2 %3")
                                    .arg(i)
                                    .arg(analysed[i], 0, 'g', 17)
                                    .arg(again[i], 0, 'g', 17)));
        bench->prompt.asked.clear();
        Q_EMIT bench->manager->plotAt(1)->changedActiveCurve(1, 0); // the class follows its groups
        QCOMPARE(bench->data(-1)->getSens(1)->ID, bench->data(1)->getSens(0)->ID);
        QCOMPARE(bench->data(-1)->getSens(1)->groupName, QString("Group B"));
    }

    void stepsOfFormulasComeBack()
    {
        measure(0, 0.1, 40);
        measure(1, 0.1, 40);
        auto* tools = bench->window->findChild<GraphTools*>();
        QVERIFY(tools->addCalculated(1, recipe(QStringLiteral("A/m"))));
        auto other = recipe(QStringLiteral("m*Energy <1> + A"));
        other.name = QStringLiteral("Other");
        QVERIFY(tools->addCalculated(1, other));
        tools->removeCalculated(1);
        const QVector<double> values = bench->data(1)->getYNoConv(4);
        save(path("a.lesson"));
        restart(false);
        open(path("a.lesson"));
        QVERIFY2(said().isEmpty(), qPrintable(said()));
        ExpData* const set = bench->data(1);
        for (const int channels : {6, 5, 4}) {
            bench->action("undoAct")->trigger();
            QCOMPARE(set->getNSens(), channels);
        }
        bench->action("redoAct")->trigger();
        QCOMPARE(set->getYNoConv(4).size(), values.size());
        QVERIFY(std::fabs(set->getYNoConv(4).at(7) - values.at(7)) < 1e-9);
        QCOMPARE(set->getSens(4)->name, QStringLiteral("Energy <1>"));
    }

    void anImportedTableComesBack()
    {
        QFile table(path("t.csv"));
        QVERIFY(table.open(QIODevice::WriteOnly));
        table.write(
            "Time [s],Charge [nC],Path [m]\n0,0.00012,1\n0.5,,2.25\n1.5,-3.1415926535,1e-7\n2.5,4,9\n");
        table.close();
        open(path("t.csv"));
        ExpData* const set = bench->data(-1);
        set->setSelectedSensor(1);
        set->addSpecialCurve(ExpData::CURVE_DERIV);
        set->addSpecialCurve(ExpData::CURVE_SMOOTH);
        show(-1);
        save(path("a.lesson"));
        restart(true);
        open(path("a.lesson"));
        QVERIFY2(said().isEmpty(), qPrintable(said()));
        QCOMPARE(bench->data(-1)->getSens(0)->unitName, QString("nC"));
        QCOMPARE(bench->data(-1)->getYNoConvAt(0, 2), -3.1415926535);
        QVERIFY(std::isnan(bench->data(-1)->getYNoConvAt(0, 1)));
        save(path("b.lesson"));
        compareLessons();
    }

    void membersOpenAlone()
    {
        makeLesson(1);
        save(path("a.lesson"));
        const Members members = unpacked(path("a.lesson"));
        QFile file(path("group.xml"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(members.at("group-1.xml")) > 0);
        file.close();
        open(path("group.xml"));
        QCOMPARE(bench->data(-1)->getNSens(), 5);
        for (int c = 0; c < 4; ++c)
            QVERIFY(std::fabs(bench->data(-1)->getYNoConvAt(c, 21) - bench->data(0)->getYNoConvAt(c, 21)) <=
                    1e-9);
    }

    void onlyWhatIsInAFileIsSaved_data()
    {
        columns<QString, QString, int, QVector<int>>({"name", "written", "chosen", "unsaved"});
        row("lesson", "a.lesson", "a.lesson", -1, QVector<int>());
        row("no ending", "a", "a.lesson", -1, QVector<int>());
        row("class alone", "a.xml", "a.xml", -1, QVector<int>({0, 1}));
        row("a group alone", "a.xml", "a.xml", 1, QVector<int>({-1, 0}));
        row("full disk", "full.lesson", "", -1, QVector<int>({-1, 0, 1}));
    }

    void onlyWhatIsInAFileIsSaved()
    {
        const auto [name, written, chosen, unsaved] =
            fetched<QString, QString, int, QVector<int>>({"name", "written", "chosen", "unsaved"});
        makeLesson(1);
        QFile old(path("full.lesson"));
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
        old.close();
        if (written.isEmpty())
            SafeFile::setFactory([](const QString& file) { return std::make_unique<FullDisk>(file); });
        if (chosen >= 0)
            Q_EMIT bench->manager->plotAt(chosen)->changedActivePlot(chosen);
        save(path(name.toLatin1()));
        for (int i : {-1, 0, 1})
            QCOMPARE(bench->data(i)->isNeedSave(), unsaved.contains(i));
        QVERIFY(old.open(QIODevice::ReadOnly) && old.readAll() == "old");
        QCOMPARE(bench->prompt.asked.filter("File not saved|full.lesson can't be written: no space").size(),
                 written.isEmpty() ? 1 : 0);
        QVERIFY(written.isEmpty() || QFile::exists(path(written.toLatin1())));
    }

    void brokenLessons_data()
    {
        columns<QString, int, bool, QString>({"change", "groups", "isClass", "said"});
        row("damaged member", "group", 1, true, "group-1.xml (Group A): ");
        row("missing member", "missing", 1, true, "group-1.xml (Group A) is missing");
        row("changed member", "edited", 2, true, "group-1.xml (Group A) was changed");
        row("no list", "no manifest", 2, true, "the list of its parts");
        row("list of other types", "types", 2, true, "a part without a place");
        row("members elsewhere", "outside", 2, true, "\"../class.xml\" does not belong");
        row("twice", "twice", 2, true, "is there twice");
        row("cut", "cut", 1, true, "its end is missing");
        row("no archive", "plain", -1, false, "a.lesson can't be opened: it is no lesson");
    }

    void brokenLessons()
    {
        const auto [change, groups, isClass, words] =
            fetched<QString, int, bool, QString>({"change", "groups", "isClass", "said"});
        makeLesson(1);
        save(path("a.lesson"));
        Members members = unpacked(path("a.lesson"));
        QVector<std::pair<QString, QByteArray>> packed;
        for (auto& [name, bytes] : members) {
            const bool isManifest = name == "manifest.json";
            if (name == "group-1.xml" && change == "group")
                bytes.truncate(bytes.size() / 2);
            if (name == "group-1.xml" && change == "edited")
                bytes += bytes.mid(bytes.size() - 2);
            if (isManifest && change == "types")
                bytes = R"({"version":"x","layout":[],"runs":[{"members":[1,{"role":"group","slot":"a"},)"
                        R"({"role":"group","slot":99}]}]})";
            if ((isManifest && change == "no manifest") || (name == "group-1.xml" && change == "missing"))
                continue;
            packed.append({name, bytes});
        }
        if (change == "outside")
            packed += {{"../class.xml", members.at("class.xml")}, {"/tmp/pellandra-outside.xml", "x"}};
        if (change == "twice")
            packed.append(std::make_pair(QString("class.xml"), QByteArray("other")));
        pack(path("a.lesson"), packed);
        QFile file(path("a.lesson"));
        if (change == "cut") {
            QVERIFY(file.resize(file.size() * 4 / 5));
        } else if (change == "plain") {
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write("plain") == 5);
            file.close();
        }
        measure(2, 1, 5); // goes, if anything was opened
        bench->prompt.answer = UserPrompt::Answer::No;
        const bool isArgument = change == "group";
        if (isArgument)
            bench->window->setArgumentFile(path("a.lesson"));
        else
            open(path("a.lesson"));
        QVERIFY2(said().contains(words), qPrintable(said()));
        QCOMPARE(bench->prompt.asked.filter("File opened in part|").size() +
                     bench->prompt.asked.filter("File not opened|").size(),
                 words.isEmpty() ? 0 : 1);
        const bool isOpened = groups >= 0;
        QCOMPARE(bench->data(2)->getXSize(), isOpened ? 0 : 5);
        if (isOpened) {
            QCOMPARE((bench->data(0)->getXSize() > 0) + (bench->data(1)->getXSize() > 0), groups);
            QCOMPARE(bench->data(-1)->getXSize() > 0, isClass);
        }
        QVERIFY(!QFile::exists("/tmp/pellandra-outside.xml") && !QFile::exists(path("../class.xml")));
        // What was not read whole is not written over.
        bench->prompt.file.clear();
        pressCtrlS();
        QVERIFY(bench->prompt.asked.last().startsWith("Save experiment data|"));
    }

    void aRunGoesOnWhileItIsSaved()
    {
        for (short n = 0; n < 20; ++n) {
            bench->sample(0, n, 1 + n);
            bench->sample(1, n, 2 + n);
        }
        save(path("a.lesson"));
        QVERIFY(said().contains("a.lesson was saved as far as the run has come"));
        QVERIFY(bench->data(0)->isNeedSave() && bench->data(-1)->isNeedSave());
        open(path("a.lesson")); // not over what is being measured
        QCOMPARE(bench->data(0)->getXSize(), 20);
        QVERIFY(bench->window->findChild<StatusLine*>()->outcome().startsWith("A lesson can be opened when"));
        // Leaving waits for the file, and a sample that comes meanwhile is not in it.
        bool isAsked = true;
        SafeFile::setFactory([&](const QString& name) {
            QMetaObject::invokeMethod(
                bench->window.data(),
                [&] {
                    bench->prompt.asked.clear();
                    bench->window->close();
                    isAsked = !bench->prompt.asked.isEmpty();
                    bench->sample(0, 20, 21);
                },
                Qt::BlockingQueuedConnection);
            return std::make_unique<QSaveFile>(name);
        });
        save(path("b.lesson"));
        QVERIFY(!isAsked);
        QTRY_COMPARE(bench->prompt.asked.filter("Changes not saved|A run is going on").size(), 1);
        Lesson lesson;
        QString reason;
        QVERIFY(LessonFile::read(path("b.lesson"), &lesson, &reason));
        QCOMPARE(lesson.parts[1].experiment.times.size(), 20);
    }

    /// Its predecessor is in the list as saved when the file is there, and no sooner.
    void aRunBeginsWhileTheLastOneIsSaved_data()
    {
        columns<bool>({"isWritten"});
        row("written", true);
        row("disk full", false);
    }

    void aRunBeginsWhileTheLastOneIsSaved()
    {
        QFETCH(bool, isWritten);
        bench->sample(0, 0, 1);
        bench->tellEnd(0);
        bool wasSaved = true;
        const auto& runs = bench->window->findChild<KeptRuns*>()->all();
        SafeFile::setFactory([&](const QString& name) -> std::unique_ptr<QSaveFile> {
            QMetaObject::invokeMethod(
                bench->window.data(),
                [&] {
                    bench->sample(0, 0, 7);
                    wasSaved = runs.constFirst().isSaved;
                },
                Qt::BlockingQueuedConnection);
            if (!isWritten)
                return std::make_unique<FullDisk>(name);
            return std::make_unique<QSaveFile>(name);
        });
        save(path("a.lesson"));
        QVERIFY(!wasSaved && runs.size() == 1);
        QCOMPARE(runs.constFirst().isSaved, isWritten);
        QVERIFY(bench->data(0)->isNeedSave() && bench->data(0)->getYNoConvAt(0, 0) > 6);
        QVERIFY(!bench->window->windowTitle().startsWith("a.lesson"));
    }

    void noGroupLeavesTheClassUnasked_data()
    {
        columns<bool>({"isGivenUp"});
        row("given up", true);
        row("cancelled", false);
    }

    void noGroupLeavesTheClassUnasked()
    {
        QFETCH(bool, isGivenUp);
        makeLesson(1);
        measure(2, 1, 5);
        bench->data(2)->setNeedSave(true);
        const auto chooseNone = [] { // of the groups
            DialogHand hand(QApplication::activeModalWidget());
            hand.press("pushButton_Save");
            hand.press("pushButton_Connect");
        };
        bench->prompt.answer = isGivenUp ? UserPrompt::Answer::No : UserPrompt::Answer::Cancel;
        QTimer::singleShot(0, this, chooseNone);
        bench->action("colabConnectAct")->trigger();
        QVERIFY(bench->prompt.asked.join('\n').contains("before groups leave the class?"));
        QCOMPARE(bench->manager->nDefTembrins() == 3, !isGivenUp);
        QCOMPARE(bench->window->findChild<KeptRuns*>()->all().size(),
                 int(isGivenUp)); // seen again from there
    }

    void ctrlSKeepsItsLesson()
    {
        makeLesson(1);
        save(path("a.lesson"));
        bench->manager->plotC()->updateTitle("Changed");
        Q_EMIT bench->manager->plotAt(1)->changedActiveCurve(1, 2); // another sensor of a group
        bench->prompt.file = path("other.lesson");
        pressCtrlS();
        QVERIFY(!QFile::exists(path("other.lesson")));
        Lesson lesson;
        QString reason;
        QVERIFY(LessonFile::read(path("a.lesson"), &lesson, &reason) && reason.isEmpty());
        QCOMPARE(lesson.parts.first().experiment.title, QString("Changed"));
    }

private:
    QStringList textsOf(int index) const
    {
        QStringList texts;
        const Plot* plot = index < 0 ? bench->manager->plotC() : bench->manager->plotAt(index);
        for (const myPlotMarker* marker : plot->markers)
            texts << marker->typeName + marker->label().text() +
                         QString::number(marker->isPlacedByHand ? marker->xOffset : 0);
        return texts;
    }

    void pressCtrlS() { bench->action("saveNowAct")->trigger(); }

    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<ClassBench> bench;
};

QTEST_MAIN(TestLessons)
#include "test_lessons.moc"
