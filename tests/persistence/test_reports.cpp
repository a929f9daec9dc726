#include <QImage>
#include <QPrinter>
#include <QProcess>
#include <QSaveFile>
#include <QXmlStreamReader>
#include <QtTest>

#include <cmath>

#include <archive.h>
#include <archive_entry.h>

#include "common/common.h"
#include "graph/myplotmarker.h"
#include "graph/plot.h"
#include "persistence/readwrite.h"
#include "persistence/safefile.h"
#include "tests/common/fakeprompt.h"
#include "tests/common/testsupport.h"
#include "tests/persistence/testexperiment.h"

namespace {

struct Entry
{
    QByteArray name;
    QByteArray bytes;
    QByteArray linkTo;
};

void makeArchive(const QString& filename, const QVector<Entry>& entries)
{
    archive* out = archive_write_new();
    if (filename.endsWith(".7z"))
        archive_write_set_format_7zip(out);
    else
        archive_write_set_format_pax_restricted(out);
    archive_write_open_filename(out, filename.toUtf8());
    for (const Entry& from : entries) {
        archive_entry* entry = archive_entry_new();
        archive_entry_set_pathname_utf8(entry, from.name);
        archive_entry_set_filetype(entry, from.linkTo.isEmpty() ? AE_IFREG : AE_IFLNK);
        if (!from.linkTo.isEmpty())
            archive_entry_set_symlink(entry, from.linkTo);
        archive_entry_set_perm(entry, 0644);
        archive_entry_set_size(entry, from.bytes.size());
        archive_write_header(out, entry);
        archive_write_data(out, from.bytes, size_t(from.bytes.size()));
        archive_entry_free(entry);
    }
    archive_write_free(out);
}

/// The program's output, empty if it failed.
QByteArray outputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished() && process.exitCode() == 0 ? process.readAllStandardOutput() + ' '
                                                                : QByteArray();
}

class FullDisk : public QSaveFile
{
public:
    using QSaveFile::QSaveFile;

protected:
    qint64 writeData(const char* bytes, qint64 n) override { return QSaveFile::writeData(bytes, n / 2); }
};

int count(const QImage& image, QRgb color)
{
    int n = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            n += (image.pixel(x, y) & 0xFFFFFF) == (color & 0xFFFFFF) ? 1 : 0;
    return n;
}

} // namespace

Q_DECLARE_METATYPE(Entry)

class TestReports : public GuardedTest
{
    Q_OBJECT

private:
    QString listed() const
    {
        QDir dir(folder->path());
        QStringList names;
        for (QDirIterator i(dir.path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                            QDirIterator::Subdirectories);
             i.hasNext();)
            names << dir.relativeFilePath(i.next());
        names.sort();
        return names.join(',');
    }

    /// What a printer would make of it.
    QImage drawn(const QString& name) const
    {
        const QString image = folder->filePath(name + ".png");
        outputOf("gs", {"-q", "-dBATCH", "-dNOPAUSE", "-sDEVICE=png16m", "-r85", "-o", image,
                        folder->filePath(name)});
        return QImage(image);
    }

    std::unique_ptr<QTemporaryDir> folder;
    QString csv;
    ExpData data;

private:
    void begin() override
    {
        folder = std::make_unique<QTemporaryDir>();
        csv = folder->filePath("table.csv");
        fillExperiment(&data);
    }

    void finish() override
    {
        Settings::mainStore().remove(Settings::language);
        Common::forgetLocale();
        SafeFile::setFactory(nullptr);
    }

private Q_SLOTS:
    void exportsTable_data()
    {
        columns<QString, double, QByteArray, QByteArray>({"language", "dt", "start", "lastLine"});
        const QByteArray english = "\xEF\xBB\xBFt,Группа 1 - Amb. Temperature [°C],pH [pH],Сила <\"&'> "
                                   "[N]\n0.000000, 20.0, 7.00, 20.04\n";
        const QByteArray polish = "sep=;\nt;Группа 1 - Amb. Temperature [°C];pH [pH];";
        row("English", "en_US", 0.5, english, QByteArray("\n2.000000, -0.4, ---, -0.42\n"));
        row("Polish", "pl_PL", 0.05, polish, QByteArray("\n0,2000000; -0,4; ---; -0,42\n"));
        row("Azeri", "az_AZ", 0.0, english.left(5), QByteArray("\n4, -0,4, ---, -0,42\n"));
        // Their own minus and digits are for people.
        row("sv_SE", "def", 0.5, polish, QByteArray("\n2,000000; -0,4; ---; -0,42\n"));
        row("ar_EG", "def", 0.5, english, QByteArray("\n2.000000, -0.4, ---, -0.42\n"));
    }

    void exportsTable()
    {
        const auto [language, dt, start, lastLine] =
            fetched<QString, double, QByteArray, QByteArray>({"language", "dt", "start", "lastLine"});
        const QString system = language == "def" ? QTest::currentDataTag() : QString();
        if (!system.isEmpty() && QLocale::system().name() != system) { // which a process reads once
            qputenv("LC_ALL", system.toLatin1() + ".UTF-8");
            QCOMPARE(QProcess::execute(QCoreApplication::applicationFilePath(), {"exportsTable:" + system}),
                     0);
            qputenv("LC_ALL", "C.UTF-8");
            return;
        }
        Settings::mainStore().setValue(Settings::language, language);
        Common::forgetLocale();
        fillExperiment(&data, dt);
        QVERIFY(ReadWrite::exportCSV(csv, &data, false, "t"));
        QCOMPARE(bytesOf(csv).left(start.size()), start);
        QCOMPARE(bytesOf(csv).right(lastLine.size()), lastLine);
    }

    // At every rate a table says when each sample was taken, and a gap comes back as one.
    void tablesComeBack_data()
    {
        columns<double>({"dt"});
        for (const double dt : {0.0, 1.0, 60.0, 0.5, 0.04, 0.01, 0.002, 0.00005})
            QTest::newRow(qPrintable(QString::number(dt))) << dt;
    }

    void tablesComeBack()
    {
        QFETCH(double, dt);
        fillExperiment(&data, dt, 40);
        data.replaceYVal(0, 3, qQNaN());
        data.replaceYVal(2, 0, qQNaN());
        QVERIFY(ReadWrite::exportCSV(csv, &data, false, "t"));
        QVERIFY(!bytesOf(csv).toLower().contains("nan"));
        ExpData read;
        QVERIFY(ReadWrite::importCSV(csv, &read));
        for (int i = 0; i < 40; ++i) {
            QVERIFY(qAbs(read.getXAt(i) - data.getXAt(i)) < 1e-9);
            const double value = data.getYNoConvAt(0, i);
            QVERIFY(i == 3 ? std::isnan(read.getYAt(0, i)) : qAbs(read.getYAt(0, i) - value) <= 0.051);
        }
        QVERIFY(std::isnan(read.getYAt(2, 0)));
        QVERIFY(read.getSens(2)->max > read.getSens(2)->min);
    }

    void importsTable_data()
    {
        // Whatever is read has a and b, the latter with 3 in line 1.
        columns<QByteArray, QString>({"bytes", "reason"});
        const auto row = [](const char* title, const QByteArray& bytes, const char* reason) {
            QTest::newRow(title) << bytes << reason;
        };
        row("square and round brackets", "t, a [m] (x),b(kg)\n0,1,3\n0.5,---,\n", "");
        row("cells that are no numbers", "t,a[m],b[kg]\n0,1,3\n0.5,abc,inf\n1,1e999,nan\n",
            "read but for what can't be used of it: line 3, column 2: \"abc\" is no number, and 3 more");
        row("time that is none", "t,a[m],b[kg]\n0,1,3\nx,1,2\n", "line 3: \"x\" is no time");
        row("quoted", "\"t\",\"a[m]\"\n0,1\n", "line 1: cells in quotation marks");
        row("byte order mark, line ends", "\xEF\xBB\xBFt,a[m],b[s]\r\n0,1, 3 \r\n0.5,2,4\r\n", "");
        row("single line", "t,a[m],b[kg]\n7,1,3\n", "");
        row("empty", "", "no line");
        row("header only", "t,a[m],b[kg]\n", "no line");
        row("semicolons", "sep=;\nt;a [m]\n0;1\n", "line 1: ");
        row("no unit", "t,a[m],b\n0,1,2\n", "line 1: column \"b\"");
        row("empty cells, commas at the end", "t,a[m],b[kg],,\n0,1,3,,\n0.5,, \n", "");
        row("a cell less", "t,a[m],b[kg]\n0,1,2\n1,2\n", "line 3: 2 columns instead of 3");
        row("endless line", "t,a[m]" + QByteArray(200000, 'x'), "line 1: too long");
        row("too many columns", "t" + QByteArray(",a[m]").repeated(600), "line 1: too many");
    }

    void importsTable()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, reason);
        writeBytes(csv, bytes);
        QString told;
        const bool isRead = reason.isEmpty() || reason.startsWith("read");
        QCOMPARE(ReadWrite::importCSV(csv, &data, &told), isRead);
        QVERIFY2(reason.isEmpty() ? told.isEmpty() : told.contains(reason), qPrintable(told));
        QCOMPARE(data.getNSens(), isRead ? 2 : 3);
        if (isRead) {
            QCOMPARE(data.getSens(0)->getNameWithUnit(false), QString("a [m]"));
            QCOMPARE(data.getYAt(1, 0), 3.0);
            data.makeUniformScalesAfterOpen();
            QVERIFY(!data.getSens(0)->readClassMinMax); // a scale for each column
            QCOMPARE(data.dt, data.getXSize() > 1 ? 0.5 : 1);
        }
    }

    void exportsDocuments()
    {
        data.setLeftPad(1, 0);
        Plot graph(&data, GRAPH_LINE, false, -1);
        graph.updateSens(1);
        auto* note = new myPlotMarker(1, MARKER_ANNOTATE);
        note->setText("Look");
        note->setValue(1, 6.8);
        QPixmap picture(40, 40);
        picture.fill(QColor(255, 0, 255));
        note->setPic(picture);
        note->setBubble(true);
        graph.setMarkers({note});
        FakePrompt prompt;
        QString reason;
        for (const QString suffix : {"pdf", "svg", "ps", "png", "JPG"}) {
            prompt.file = folder->filePath("graph." + suffix);
            QVERIFY2(ReadWrite::exportDocument(&graph, &prompt, &reason), qPrintable(reason));
        }
        const QImage png(folder->filePath("graph.png"));
        QCOMPARE(png.size(), QSize(1004, 669));
        QCOMPARE(png.dotsPerMeterX(), 3346);
        QCOMPARE(png.pixel(0, 0), QColor(Qt::white).rgb());
        QVERIFY(count(png, graph.getCurvePen(1).color().rgb()) > 1000); // its curve, the wide one
        QVERIFY(count(png, qRgb(255, 0, 255)) > 5000);                  // the picture of the balloon

        QXmlStreamReader svg(bytesOf(folder->filePath("graph.svg")));
        QString texts;
        while (!svg.atEnd()) {
            svg.readNext();
            texts += svg.text();
        }
        QVERIFY(!svg.hasError());
        for (const QString text : {"pH", "7.2", "Look", "Amb. Temperature", "Time [s]"})
            QVERIFY2(texts.contains(text), qPrintable(text));

        const QByteArray pdf = outputOf("pdftotext", {folder->filePath("graph.pdf"), "-"});
        QVERIFY(pdf.contains("Look") && pdf.contains("Amb. Temperature"));
        QVERIFY(outputOf("pdfinfo", {folder->filePath("graph.pdf")}).contains("850 x 567 pts"));
        QVERIFY(count(drawn("graph.ps"), graph.getCurvePen(1).color().rgb()) > 1000);
    }

    void printsOnWhiteAndWholly()
    {
        Plot graph(&data, GRAPH_LINE, false, -1);
        graph.setCanvasBackground(Qt::black);
        graph.setPalette(QPalette(Qt::darkRed));
        const auto print = [&](const char* name, QString* reason) {
            return ReadWrite::print(
                &graph,
                [&](QPrinter* printer) {
                    printer->setOutputFileName(folder->filePath(name));
                    return true;
                },
                reason);
        };
        QString reason;
        QVERIFY2(print("page.pdf", &reason), qPrintable(reason));
        const QImage page = drawn("page.pdf");
        QVERIFY(page.width() > page.height());
        QVERIFY(count(page, qRgb(255, 255, 255)) > page.width() * page.height() * 3 / 4);
        QVERIFY(count(page, graph.getCurvePen(2).color().rgb()) > 1000);
        const QByteArray before = bytesOf(folder->filePath("page.pdf"));
        SafeFile::setFactory([](const QString& name) { return std::make_unique<FullDisk>(name); });
        for (const char* name : {"page.pdf", "new.pdf"})
            QVERIFY(!print(name, &reason) && reason.contains(name) && reason.contains("space"));
        QCOMPARE(bytesOf(folder->filePath("page.pdf")), before);
        QVERIFY(!QFile::exists(folder->filePath("new.pdf")));
    }

    void failedExportKeepsOldFile()
    {
        Plot graph(&data, GRAPH_LINE, false, -1);
        const QString unknown = folder->filePath("graph.xyz");
        QString reason;
        writeBytes(unknown, "old");
        QVERIFY(!ReadWrite::exportDocument(&graph, unknown, &reason));
        QVERIFY2(reason.contains("graph.xyz"), qPrintable(reason));
        QCOMPARE(bytesOf(unknown), QByteArray("old"));
        QVERIFY(!ReadWrite::exportDocument(&graph, folder->filePath("none/graph.pdf"), &reason));
        QVERIFY2(reason.contains("No such file"), qPrintable(reason));
    }

    void remembersTheFolder()
    {
        ReadWrite::setDefaultDataPath("/somewhere/else/file.xml");
        QCOMPARE(ReadWrite::getDataPath(QString()), QString("/somewhere/else"));
        FakePrompt prompt;
        QVERIFY(ReadWrite::exportDocument(static_cast<Plot*>(nullptr), &prompt)); // cancelled
        QCOMPARE(prompt.asked, QStringList("Export File Name|"));
    }

    void unpacks_data()
    {
        columns<QString, QVector<Entry>, QString, QString>({"archiveName", "entries", "after", "reason"});
        const auto row = [](const char* title, const QString& name, const QVector<Entry>& entries,
                            const QString& after, const QString& reason) {
            QTest::newRow(title) << name << entries << after << reason;
        };
        const Entry pdf{"a.pdf", "pdf", {}}, inside{"sub/b.xml", "xml", {}}, link{"out", {}, "/tmp"};
        row("tar", "x.tar", {pdf, inside}, "a.pdf,sub,sub/b.xml", "");
        row("7z", "x.7z", {pdf, inside}, "a.pdf,b.xml", "");
        row("links", "x.tar", {link, {"out/c.pdf", "c", {}}}, "out,out/c.pdf,x.tar", "unpacked but for: out");
        row("link inside", "x.tar", {pdf, {"sub/same.pdf", {}, "../a.pdf"}}, "a.pdf,sub,sub/same.pdf", "");
        row("colon", "x.tar", {{"Lab 1: light.pdf", "c", {}}}, "Lab 1: light.pdf", "");
        row("equal names", "x.7z", {{"a/w.pdf", "1", {}}, {"b/w.pdf", "2", {}}}, "w (2).pdf,w.pdf", "");
        row("upwards", "x.tar", {pdf, {"d/../../e.pdf", "e", {}}}, "x.tar.failed", "outside");
        row("absolute", "x.tar", {pdf, {"/tmp/pellandra-e.pdf", "e", {}}}, "x.tar.failed", "outside");
        row("name taken", "x.tar", {{"x.tar", "e", {}}, pdf}, "a.pdf,x (2).tar", "");
        row("damaged", "x.7z", {}, "x.7z.failed", "x.7z");
    }

    void unpacks()
    {
        const auto [archiveName, entries, after, reason] =
            fetched<QString, QVector<Entry>, QString, QString>({"archiveName", "entries", "after", "reason"});
        const QString archive = folder->filePath(archiveName);
        if (entries.isEmpty())
            writeBytes(archive, "no archive");
        else
            makeArchive(archive, entries);
        writeBytes(folder->filePath("known.pdf"), "worksheet");
        QVERIFY(!ReadWrite::unpackIfNeeded(folder->path()));
        QCOMPARE(listed(), "known.pdf," + archiveName);
        QVERIFY(QFile::remove(folder->filePath("known.pdf")));
        const bool isFailed = after.endsWith(".failed");
        if (isFailed)
            guard->expect("can't be unpacked");
        QString told;
        QCOMPARE(ReadWrite::unpackIfNeeded(folder->path(), &told), !isFailed);
        QVERIFY2(told.contains(reason), qPrintable(told));
        QCOMPARE(listed(), after);
        QVERIFY(!QFileInfo(folder->filePath("out")).isSymLink());
    }
};

QTEST_MAIN(TestReports)
#include "test_reports.moc"
