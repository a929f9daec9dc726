#include <QBuffer>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTextCodec>
#include <QtTest>

#include <cmath>

#include "graph/myplotcurve.h"
#include "graph/myplotmarker.h"
#include "graph/plot.h"
#include "graph/scalemanager.h"
#include "persistence/experimentreader.h"
#include "persistence/experimentwriter.h"
#include "persistence/numbertext.h"
#include "persistence/readwrite.h"
#include "persistence/safefile.h"
#include "tests/common/testsupport.h"
#include "tests/persistence/testexperiment.h"

namespace {

/// Fails from write number `failAt` on, as a disk does that gets full: with an error or by a short write.
class FailingFile : public QSaveFile
{
public:
    FailingFile(const QString& name, int failAt, bool isShort)
        : QSaveFile(name)
        , left(failAt)
        , isShort(isShort)
    {
    }

protected:
    qint64 writeData(const char* data, qint64 n) override
    {
        if (--left > 0)
            return QSaveFile::writeData(data, n);
        return isShort ? QSaveFile::writeData(data, n / 2) : -1;
    }

private:
    int left;
    const bool isShort;
};

QByteArray utf16(const QString& text)
{
    return QTextCodec::codecForName("UTF-16")->fromUnicode(text);
}

QString base64Png(int size)
{
    QBuffer buffer;
    QImage(size, size, QImage::Format_Mono).save(&buffer, "PNG");
    return buffer.data().toBase64();
}

const QString head = QStringLiteral("<!DOCTYPE ExpData>\n<ExpDataRoot numSensors=\"2\" Rate=\"1\">Title"
                                    "<Times><T t=\"0.0\"/><T t=\"1.0\"/></Times>");
const QString ph =
    QStringLiteral("<Sensor DataIndex=\"0\" SensorID=\"%1\" Name=\"one\"><Samples><V v=\"7.5\"/>"
                   "</Samples></Sensor>")
        .arg(SENSOR_PH);
const QString second = QString(ph).replace("=\"0\"", "=\"1\"").replace("one", "two");
const QString tail = QStringLiteral("</ExpDataRoot>\n");
const QString cross = QStringLiteral("<LineMarker typeName=\"marker\" iSens=\"0\" X=\"0.5\" Y=\"7.2\"/>");

} // namespace

class TestExperimentFiles : public GuardedTest
{
    Q_OBJECT

private:
    /// Writes with the scales and markers of two graphs.
    bool write(const QString& title = QStringLiteral("T"), QString* reason = nullptr)
    {
        graph->keepCurveModesInData();
        return ReadWrite::write(name, title, data.get(), graph->scaler->scales, graph->markers, bar->markers,
                                QStringLiteral("Line"), reason);
    }

    void renew(const Units& units = {})
    {
        graph.reset();
        bar.reset();
        data = std::make_unique<ExpData>(units);
        graph = std::make_unique<Plot>(data.get(), GRAPH_LINE, false, 0);
        bar = std::make_unique<Plot>(data.get(), GRAPH_BAR, false, 0);
    }

    void makeExperiment(double dt = 0.5)
    {
        fillExperiment(data.get(), dt);
        graph->setData();
        QPixmap picture(30, 20);
        picture.fill(Qt::red);
        auto* balloon = new myPlotMarker(0, MARKER_ANNOTATE);
        balloon->setPic(picture);
        balloon->setBubble(true);
        auto* fit = new myPlotMarker(0, MARKER_REGRESSION);
        fit->a = 1.0 / 3;
        fit->linX1 = 2;
        auto* locked = new myPlotMarker(1, MARKER_X);
        locked->lock();
        QList<myPlotMarker*> list{balloon, new myPlotMarker(1, MARKER_X),        nullptr, fit,
                                  nullptr, new myPlotMarker(0, MARKER_INTEGRAL), nullptr, locked,
                                  nullptr};
        for (int i = 0; i < list.size(); ++i) {
            if (!list[i])
                list[i] = new myPlotMarker(list[i - 1]->iSens, MARKER_FLOATING_TEXT);
            list[i]->setValue(0.1 * i, 20.5 + i);
            list[i]->setText(QString::fromUtf8("Знак %1\n\"<>&\"").arg(i));
        }
        graph->setMarkers(list);
        bar->setMarkers({new myPlotMarker(0, MARKER_ANNOTATE)});
    }

    QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("class.xml"));
    std::unique_ptr<ExpData> data;
    std::unique_ptr<Plot> graph;
    std::unique_ptr<Plot> bar;

private:
    void begin() override { renew(); }

    void finish() override { SafeFile::setFactory(nullptr); }

private Q_SLOTS:
    void bytesOfAFile()
    {
        makeExperiment(0.05);
        QVERIFY(write(QString::fromUtf8("<b>&\"Опыт\"'\r\n\t]]> \U0001F600")));
        const QByteArray bytes = bytesOf(name);
        QCOMPARE(bytes.left(2), QByteArray("\xFF\xFE"));
        QString written = QTextCodec::codecForName("UTF-16")->toUnicode(bytes);
        const QRegularExpression jpeg("</markerTitle>/9j/[\\w+/=]+");
        QVERIFY(written.contains(jpeg)); // whose bytes are up to the library
        written.replace(jpeg, "</markerTitle>");
        const QByteArrayList lines = written.toUtf8().split('\n');
        const QByteArrayList expected = bytesOf(EXPECTED_FILE).split('\n');
        for (int i = 0; i < qMax(lines.size(), expected.size()); ++i)
            QCOMPARE(lines.value(i), expected.value(i));
        makeExperiment(0.1); // the limit of the decimals
        QVERIFY(write());
        QVERIFY(bytesOf(name).contains(utf16("<T t=\"0.1\"/>").mid(2)));
    }

    void comesBack()
    {
        makeExperiment();
        data->setAppendIndex(2);
        graph->getCurve(1)->setMode(CURVE_HIDDEN);
        data->replaceYVal(0, 3, qQNaN());
        graph->markers[3]->b = -0.75;
        graph->markers[3]->c = 20.5;
        const QVector<QVector<double>> samples = data->getData();
        QVERIFY(write(QString::fromUtf8("Опыт")));
        // In another unit the file shows other numbers and is written the same.
        Units other;
        other.fahrenheit = true;
        renew(other);
        QString reason;
        QCOMPARE(ReadWrite::read(name, data.get(), graph.get(), bar.get(), false, &reason), QString("Line"));
        QCOMPARE(reason, QString());
        graph->setData();
        QCOMPARE(graph->title().text(), QString::fromUtf8("Опыт"));
        QCOMPARE(data->getSens(0)->name, QString::fromUtf8("Группа 1 - ") + Sensor(SENSOR_AMB_TEMP_NTC).name);
        QCOMPARE(data->getYAt(0, 1), qRound(samples[0][1] * 100) / 100.0 * 1.8 + 32);
        QVERIFY(std::isnan(data->getYNoConvAt(0, 3)));
        QVERIFY(bytesOf(name).contains(utf16("<V v=\"\"/>").mid(2))); // 0 for whoever knows no gaps
        QCOMPARE(data->getYSize(1), 3);
        QCOMPARE(data->getLeftPad(1), 2);
        QCOMPARE(data->getAppendIndex(), 2);
        QVERIFY(graph->getCurve(0)->isSymbol() && !graph->getCurve(1)->isShown());
        QCOMPARE(data->getSelectedSensor(), 1);
        QCOMPARE(graph->scaler->scales[0]->scaleFullMax, 31.7 * 1.8 + 32);
        QCOMPARE(graph->markers.size(), 7);
        QCOMPARE(graph->markers[0]->getPic().size(), QSize(30, 20));
        QCOMPARE(graph->markers[4]->connectTo, graph->markers[3]);
        QCOMPARE(graph->markers[3]->a, 1.0 / 3 * 1.8);
        QCOMPARE(graph->markers[3]->b, -0.75 * 1.8);
        QCOMPARE(graph->markers[3]->c, 20.5 * 1.8 + 32);
        QVERIFY(graph->markers[5]->isLocked());
        QCOMPARE(bar->markers.size(), 1);
        QCOMPARE(graph->markers[1]->yValue(), 21.5 /* pH has one unit */);
        QVERIFY(write(QString::fromUtf8("Опыт")));
        const QByteArray inFahrenheit = bytesOf(name);
        renew();
        ReadWrite::read(name, data.get(), graph.get(), bar.get());
        graph->setData();
        QVERIFY(write(QString::fromUtf8("Опыт")));
        QVERIFY(bytesOf(name) == inFahrenheit);
    }

    // Twice, and with other units the second time: nothing is lost and nothing drifts.
    void comesBackToTheLastDigit_data()
    {
        columns<double, double>({"dt", "first"});
        QTest::newRow("10/Sec") << 0.1024 << 0.0;
        QTest::newRow("10/Sec, cropped") << 0.1024 << 37 * 0.1024;
        QTest::newRow("2500/Sec") << 0.0004 << 0.0;
        QTest::newRow("by hand") << 0.0 << 0.0;
        QTest::newRow("begun at another time") << 0.5 << 0.123456;
    }

    void comesBackToTheLastDigit()
    {
        const auto [dt, first] = fetched<double, double>({"dt", "first"});
        Units other;
        other.feet = other.fahrenheit = true;
        const Units start = first == 0 ? Units() : other;
        const double step = dt > 0 ? dt : 1;
        QVector<double> times, path, warm, small;
        for (int i = 0; i < 60; ++i) {
            times << (first == 0.123456 ? first + i * step : (qRound(first / step) + i) * step);
            path << 0.00123 * i * i + 1;
            warm << 20 + 0.1 * i;
            small << i * 0.00012;
        }
        renew(start);
        data->setDataNew(3, times, dt);
        data->addSensorData(0, SENSOR_DISTANCE, path, -1);
        data->addSensorData(1, SENSOR_AMB_TEMP, warm, -1);
        data->addSpecialSensorData("Charge", "nC", 2, small);
        data->setSelectedSensor(0);
        if (dt > 0)
            data->addSpecialCurve(ExpData::CURVE_DERIV);
        graph->setData();
        auto* fit = new myPlotMarker(1, MARKER_REGRESSION);
        fit->a = 1.0 / 3;
        fit->b = -2400.123456789;
        fit->c = 4319999.87654321;
        auto* note = new myPlotMarker(1, MARKER_ANNOTATE);
        note->setValue(1, 0.00123456789);
        graph->setMarkers({fit, new myPlotMarker(1, MARKER_FLOATING_TEXT), note});
        QVERIFY(write());
        const QByteArray before = bytesOf(name);
        const QString told = QStringLiteral("<T t=\"%1\"/>").arg(times[1], 0, 'f', dt < 0.1 ? 6 : 1);
        QCOMPARE(before.contains(utf16(told).mid(2)), first != 0.123456);
        const int last = data->getNSens() - 1;
        const int mean = data->meanIndex();
        const QString unit = data->getSens(last)->unitName;
        const QVector<double> derived = data->getY(last);
        for (const Units& units : {other, Units(), start}) {
            renew(units);
            QString reason;
            ReadWrite::read(name, data.get(), graph.get(), bar.get(), false, &reason);
            QCOMPARE(reason, QString());
            graph->setData();
            for (int i = 0; i < times.size(); ++i)
                QVERIFY(qAbs(data->getXAt(i) - times[i]) <= 1e-10 * qMax(step, times[i]));
            QCOMPARE(data->getYNoConvAt(2, 1), 0.00012);
            QVERIFY(data->getSens(2)->precision >= 5);
            QCOMPARE(data->meanIndex(), mean);
            QVERIFY(write());
            const QList<QByteArray> lines = bytesOf(name).replace(QByteArray(1, 0), "").split('\n');
            for (int i = 0; i < lines.size(); ++i)
                QCOMPARE(lines[i], QByteArray(before).replace(QByteArray(1, 0), "").split('\n').value(i));
        }
        QCOMPARE(graph->markers[0]->c, first == 0 ? 4319999.87654321 : 4319999.87654321 * 1.8 + 32);
        QCOMPARE(data->getSens(last)->unitName, unit);
        for (int i = 1; i < derived.size(); ++i)
            QVERIFY(qAbs(data->getYAt(last, i) - derived[i]) <= 1e-9 * qAbs(derived[i]));
    }

    void infiniteValuesReachNoFile()
    {
        makeExperiment();
        data->replaceYVal(0, 1, qInf());
        graph->markers[3]->c = qInf();
        QVERIFY(write());
        QVERIFY(!bytesOf(name).contains(utf16("inf").mid(2)));
        QVERIFY(ReadWrite::exportCSV(name, data.get(), false, "t"));
        QVERIFY(!bytesOf(name).contains("inf"));
    }

    void fullDisk()
    {
        const QTemporaryDir mount;
        if (QProcess::execute("mount", {"-t", "tmpfs", "-o", "size=256k", "tmpfs", mount.path()}) != 0)
            QSKIP("needs the right to mount");
        const QString full = mount.filePath("class.xml");
        writeBytes(full, "old");
        fillExperiment(data.get(), 0.5, 8000);
        QString reason;
        const bool isWritten = ReadWrite::write(full, "T", data.get(), {}, {}, {}, "Line", &reason);
        const QByteArray left = bytesOf(full);
        QProcess::execute("umount", {mount.path()});
        QVERIFY(!isWritten);
        QCOMPARE(left, QByteArray("old"));
        QVERIFY2(reason.contains("space"), qPrintable(reason));
    }

    void tenMillionElementsTakeLittleMemory()
    {
        QByteArray bytes = "<ExpDataRoot><Times>" + QByteArray("<T/>").repeated(10000000);
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        const auto peak = [] {
            const QByteArray status = bytesOf("/proc/self/status");
            return status.mid(status.indexOf("VmHWM:") + 6, 20).trimmed().split(' ').first().toLongLong() *
                   1024;
        };
        writeBytes("/proc/self/clear_refs", "5"); // the peak starts anew
        [[maybe_unused]] const qint64 before = peak();
        StoredExperiment stored;
        QString reason;
        QVERIFY(!ExperimentReader::read(&buffer, &stored, &reason));
        QVERIFY2(reason.contains("ends"), qPrintable(reason));
#ifndef __SANITIZE_ADDRESS__ // which keeps what was freed
        QVERIFY2(peak() - before < 10 * bytes.size(), qPrintable(QString::number(peak() - before)));
#endif
    }

    void brokenFile_data()
    {
        // names: of the channels after reading; empty if the data stays
        columns<QByteArray, QString, QString>({"bytes", "names", "reason"});
        const auto row = [](const char* title, const QByteArray& bytes, const char* names,
                            const char* reason) { QTest::newRow(title) << bytes << names << reason; };
        const auto inside = [](const QString& markup) { return utf16(head + markup + tail); };
        const QString whole = head + ph + second + tail;
        const QString marker = "<LineMarker typeName=\"%1\" image=\"1\">AAAA</LineMarker>";
        const QString bomb = "<!DOCTYPE a [<!ENTITY b \"bbbb\"><!ENTITY c \"&b;&b;\">]>";
        row("whole", utf16(whole), "one,two", "");
        row("UTF-8 without a mark", whole.toUtf8(), "one,two", "");
        row("UTF-16 without a mark", utf16(whole).mid(2), "one,two", "");
        row("declared", "<?xml version='1.0' encoding='koi8-r'?>" + whole.toLatin1(), "one,two", "");
        row("unknown encoding", "<?xml encoding=\"x-none\"?><a/>", "", "encoding");
        const QString sine = QStringLiteral("fit\" fit=\"sine\" parameters=\"%1\" errors=\"- - - -\" "
                                            "unitX=\"1 0 s\" unitY=\"%2 0");
        row("not UTF-8", whole.toUtf8().replace("Title", "T\xE4\xF6"), "", "encoding");
        row("empty", "", "", "no XML");
        row("no XML", "Time,pH\n1,7\n", "", "no XML");
        row("other XML", "<html><body/></html>", "", "no experiment");
        row("wrong end tag", inside(ph + "</Sensor>"), "", "well-formed");
        row("two roots", utf16(whole + "<a/>"), "", "well-formed");
        row("unknown entity", inside("&a;"), "", "well-formed");
        row("bomb of entities", utf16(bomb + whole), "", "entities");
        row("deep", inside(QString("<a>").repeated(100000)), "", "deep");
        row("attribute twice", inside("<T t=\"1\" t=\"2\"/>"), "", "well-formed");
        row("unknown sensor", inside(QString(ph).replace("ID=\"", "ID=\"9999") + second), "two",
            "channels: 1");
        row("high index", inside(ph + QString(second).replace("=\"1\"", "=\"2\"")), "one", "channels: 1");
        row("low index", inside(ph + QString(second).replace("=\"1\"", "=\"-1\"")), "one", "channels: 1");
        row("no channel left", inside(""), "", "no channel");
        row("no attributes", "<ExpDataRoot><Sensor SensorID=\"2\"/></ExpDataRoot>", "", "no channel");
        row("no times, no samples", "<ExpDataRoot><Sensor DataIndex=\"0\" SensorID=\"2\"/></ExpDataRoot>",
            "*", "channels without samples: 1, it has no times");
        row("no numbers", inside(QString(ph).replace("7.5", "abc") + QString(second).replace("7.5", "nan")),
            "one,two", "values that are no numbers: 2");
        row("index twice", inside(ph + QString(ph).replace("one", "two")), "one", "channels: 1");
        row("times without an axis",
            utf16(QString(whole).replace("1.0", "1.7e308").replace("0.0", "-1.7e308")), "one,two", "");
        row("unknown marker", inside(ph + marker.arg("x")), "one", "markers: 1");
        row("fit without a curve", inside(ph + marker.arg("fit")), "one", "markers: 1");
        row("fit with too few numbers", inside(ph + marker.arg(sine.arg("1 2", "1"))), "one", "markers: 1");
        row("fit in no unit", inside(ph + marker.arg(sine.arg("1 2 3 4", "x"))), "one", "markers: 1");
        row("sound fit", inside(ph + marker.arg(sine.arg("1 2 3 4", "1"))), "one", "of it: pictures: 1");
        row("picture of too many pixels",
            inside(ph + QString(marker.arg("annotation")).replace("AAAA", base64Png(3000))), "one",
            "pictures: 1");
        row("picture that is none", inside(ph + marker.arg("annotation")), "one", "pictures: 1");
    }

    void brokenFile()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, names);
        QFETCH(QString, reason);
        makeExperiment();
        const auto allNames = [this] {
            QStringList list;
            for (const SensorPtr& sensor : data->getSensors())
                list << (sensor ? sensor->name : QStringLiteral("none"));
            return list.join(',');
        };
        const QString before = allNames();
        const int markers = graph->markers.size();
        writeBytes(name, bytes);
        QString told;
        const QString view = ReadWrite::read(name, data.get(), graph.get(), bar.get(), false, &told);
        QVERIFY2(reason.isEmpty() ? told.isEmpty() : told.contains(reason), qPrintable(told));
        QCOMPARE(view, names.isEmpty() ? QString() : QString("Line"));
        QVERIFY(names == "*" || allNames() == (names.isEmpty() ? before : names));
        if (names.isEmpty())
            QCOMPARE(graph->markers.size(), markers);
    }

    // Read, shown and written again.
    void hostileFilesEndNothing()
    {
        int shown = 0;
        for (QDirIterator at(HOSTILE_FILES, {"*.xml", "*.csv"}, QDir::Files, QDirIterator::Subdirectories);
             at.hasNext();) {
            const QString file = at.next();
            renew();
            QString told;
            const bool isTable = file.endsWith("csv");
            const bool isRead =
                isTable ? ReadWrite::importCSV(file, data.get(), &told)
                        : !ReadWrite::read(file, data.get(), graph.get(), bar.get(), false, &told).isEmpty();
            QVERIFY2(isRead || !told.isEmpty(), qPrintable(file));
            data->makeUniformScalesAfterOpen();
            data->setXRange();
            for (Plot* plot : {graph.get(), bar.get()}) {
                plot->setData();
                plot->updateSens(data->activeSensIndex());
                plot->resize(500, 300);
                QVERIFY2(!plot->grab().isNull(), qPrintable(file));
            }
            QVERIFY2(write() && !bytesOf(name).contains(utf16("inf").mid(2)), qPrintable(file));
            shown += isRead ? 1 : 0;
        }
        QVERIFY(shown > 30);
    }

    void cutAnywhere()
    {
        const QByteArray whole =
            utf16(head + ph + second + "<LineMarkers>" + cross + "</LineMarkers>" + tail);
        for (int n = 0; n < whole.size(); ++n) {
            QBuffer buffer;
            buffer.setData(whole.left(n));
            buffer.open(QIODevice::ReadOnly);
            StoredExperiment stored;
            QString reason;
            // Without the last line feed, whole or half, nothing is missing.
            QCOMPARE(ExperimentReader::read(&buffer, &stored, &reason), n >= whole.size() - 2);
            QCOMPARE(reason.isEmpty(), n >= whole.size() - 2);
        }
    }

    void markersOfOtherEditions()
    {
        const QString old = QString(
            "<Marker typeName=\"annotation\" image=\"1\" Text=\"a\"><markerTitle>b</markerTitle>%1</Marker>");
        writeBytes(name, utf16(head + ph + old.arg(base64Png(3)) + cross + tail)
                             .replace(utf16("LineM").mid(2), utf16("M").mid(2)));
        ReadWrite::read(name, data.get(), graph.get(), bar.get());
        QCOMPARE(graph->markers.size(), 3); // the cross without its text gets one
        QCOMPARE(graph->markers[0]->getPic().size(), QSize(3, 3));
        QCOMPARE(graph->markers[0]->label().text(), QString("b"));
        QCOMPARE(graph->markers[1]->yValue(), 7.2);
    }

    // One channel is lost, so the places of the others and of what names them move.
    void placesMoveTogether()
    {
        writeBytes(name, utf16(QString(head).replace("Rate", "activeSens=\"1\" XYIndex=\"1\" Rate") + second +
                               cross + QString(cross).replace("iSens=\"0\"", "iSens=\"1\"") + tail));
        ReadWrite::read(name, data.get(), graph.get(), bar.get());
        QCOMPARE(data->getNSens(), 1);
        QCOMPARE(data->getSelectedSensor(), 0);
        QCOMPARE(data->getXYIndex(), 0);
        QCOMPARE(graph->markers.size(), 2);
        QCOMPARE(graph->markers[0]->iSens, 0);
    }

    void anAverageOfUnlikeThingsIsNotKept()
    {
        for (const int second : {SENSOR_AMB_TEMP_NTC, SENSOR_LIGHT}) {
            const auto kind = [](int id) { return SensorPtr::create(id); };
            data->setDataNewEmpty({kind(SENSOR_AMB_TEMP), kind(second), kind(SENSOR_AMB_TEMP)}, 1);
            data->joinSample(0, 0, 20);
            data->joinSample(1, 0, 30);
            const QString csv = folder.filePath("class.csv");
            QVERIFY(ReadWrite::exportCSV(csv, data.get(), false, "t"));
            const bool isKept = second != SENSOR_LIGHT; // two thermometers measure the same
            QVERIFY(bytesOf(csv).endsWith(isKept ? ", 30.0, 25.0\n" : ", 30, ---\n"));
            QVERIFY(ReadWrite::write(name, "T", data.get(), {}, {}, {}, "Line"));
            ReadWrite::read(name, data.get(), nullptr, nullptr);
            QCOMPARE(data->getYSize(2), isKept ? 1 : 0);
            QVERIFY(QFile::remove(csv));
        }
    }

    void failedWriteKeepsOldFile()
    {
        fillExperiment(data.get(), 0.5, 4000);
        graph->setData();
        for (const bool isShort : {false, true}) {
            writeBytes(name, "old");
            int failAt = 1;
            SafeFile::setFactory(
                [&](const QString& n) { return std::make_unique<FailingFile>(n, failAt, isShort); });
            QString reason;
            while (!write("T", &reason)) {
                QCOMPARE(bytesOf(name), QByteArray("old"));
                QVERIFY(reason.contains("class.xml"));
                QVERIFY(++failAt < 100);
            }
            QVERIFY(failAt > 5);
            QCOMPARE(ReadWrite::read(name, data.get(), nullptr, nullptr), QString("Line"));
            QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList("class.xml"));
        }
    }

    void numbersAreExact()
    {
        QRandomGenerator random(7);
        for (int i = 0; i < 200000; ++i) {
            const int decimals = random.bounded(13);
            double value = (random.generateDouble() - 0.5) * std::pow(10.0, random.bounded(14));
            if (i % 4 == 0) // on and beside ties
                value = std::round(value * 1000) / 1000 + (i % 8 == 0 ? 0.0 : 1e-12);
            char16_t text[NumberText::maxFixed];
            const QString fixed = QString::fromUtf16(text, NumberText::fixed(value, decimals, text));
            QCOMPARE(fixed, QString("%1").arg(value, 0, 'f', decimals));
            QCOMPARE(NumberText::toDouble(fixed), fixed.toDouble());
        }
        QCOMPARE(NumberText::toDouble(QStringLiteral(" 1e-3 ")), 0.001);
        QCOMPARE(NumberText::toDouble(QStringLiteral("-1.7e308")), -NumberText::limit);
        for (const char* text : {"nan", "inf", "1e999", "-", ".", "1.2.3", "1,5", "abc"})
            QCOMPARE(NumberText::toDouble(QString(text)), 0.0);
    }
};

QTEST_MAIN(TestExperimentFiles)
#include "test_experimentfiles.moc"
