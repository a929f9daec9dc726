#include "persistence/readwrite.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QPageSize>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrinter>
#include <QProcess>
#include <QStandardPaths>
#include <QSvgGenerator>
#include <QTemporaryDir>
#include <QWidget>

#include <qwt_plot_renderer.h>

#include "common/userprompt.h"
#include "graph/plot.h"
#include "persistence/safefile.h"

namespace {

constexpr double pageWidth = 300; // mm
constexpr double pageHeight = 200;
constexpr int resolution = 85; // dots per inch
constexpr double mmPerInch = 25.4;
constexpr int converterTime = 30000; // ms

QSize pageDots()
{
    return QSize(qRound(pageWidth / mmPerInch * resolution), qRound(pageHeight / mmPerInch * resolution));
}

/// Draws the graph over the whole page; the page, not the graph, gives the white ground.
bool drawGraph(Plot* graph, QPaintDevice* page)
{
    QPainter painter;
    if (!painter.begin(page))
        return false;
    const QRectF all(QPointF(0, 0), pageDots());
    painter.fillRect(all, Qt::white);
    ReadWrite::drawOnPaper(graph, &painter, all);
    return painter.end();
}

bool drawPdf(Plot* graph, QIODevice* out)
{
    QPdfWriter pdf(out);
    pdf.setCreator(QStringLiteral("Pellandra"));
    pdf.setTitle(graph->title().text());
    pdf.setResolution(resolution);
    pdf.setPageSize(QPageSize(QSizeF(pageWidth, pageHeight), QPageSize::Millimeter));
    pdf.setPageMargins(QMarginsF());
    return drawGraph(graph, &pdf);
}

bool drawSvg(Plot* graph, QIODevice* out)
{
    QSvgGenerator svg;
    svg.setOutputDevice(out);
    svg.setTitle(graph->title().text().toHtmlEscaped()); // which nobody else does
    svg.setResolution(resolution);
    svg.setSize(pageDots());
    svg.setViewBox(QRect(QPoint(0, 0), pageDots()));
    return drawGraph(graph, &svg);
}

bool writeImage(const QImage& image, QIODevice* out, const QByteArray& format, QString* cause)
{
    QImageWriter writer(out, format);
    const bool isWritten = writer.write(image);
    if (!isWritten)
        *cause = writer.errorString();
    return isWritten;
}

bool drawImage(Plot* graph, QIODevice* out, const QByteArray& format, QString* cause)
{
    QImage image(pageDots(), QImage::Format_RGB32);
    const int dotsPerMeter = qRound(resolution / mmPerInch * 1000);
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
    return drawGraph(graph, &image) && writeImage(image, out, format, cause);
}

/// Vector output, by way of a PDF file and Poppler's converter.
bool drawPostScript(Plot* graph, QIODevice* out, QString* cause)
{
    const QString converter = QStandardPaths::findExecutable(QStringLiteral("pdftops"));
    if (converter.isEmpty()) {
        *cause = ReadWrite::tr("the program pdftops, which makes PostScript, is not installed");
        return false;
    }
    const QTemporaryDir folder;
    QFile pdf(folder.filePath(QStringLiteral("graph.pdf")));
    if (!pdf.open(QIODevice::WriteOnly) || !drawPdf(graph, &pdf) || !pdf.flush()) {
        *cause = pdf.errorString();
        return false;
    }
    pdf.close();
    QFile ps(folder.filePath(QStringLiteral("graph.ps")));
    QProcess process;
    process.start(converter, {QStringLiteral("-level3"), QStringLiteral("-paper"), QStringLiteral("match"),
                              pdf.fileName(), ps.fileName()});
    const bool isDone = process.waitForFinished(converterTime) &&
                        process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    if (!isDone || !ps.open(QIODevice::ReadOnly)) {
        *cause =
            ReadWrite::tr("pdftops failed: %1").arg(QString::fromLocal8Bit(process.readAllStandardError()));
        return false;
    }
    return out->write(ps.readAll()) == ps.size();
}

bool drawDocument(Plot* graph, QIODevice* out, const QByteArray& format, QString* cause)
{
    if (format == "pdf")
        return drawPdf(graph, out);
    if (format == "svg")
        return drawSvg(graph, out);
    if (format == "ps")
        return drawPostScript(graph, out, cause);
    return drawImage(graph, out, format, cause);
}

/// A document comes about in memory, since some formats seek, and goes to the disk as a whole.
bool save(const QString& filename, QString* reason,
          const std::function<bool(QIODevice* out, const QByteArray& format, QString* cause)>& draw)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QString failure;
    const QFileInfo info(filename);
    QString cause = ReadWrite::tr("the page can't be drawn");
    bool isSaved = draw(&buffer, info.suffix().toLower().toLatin1(), &cause);
    if (isSaved) {
        SafeFile file(filename);
        file.write(buffer.data());
        isSaved = file.commit();
        failure = file.reason();
    } else {
        failure = ReadWrite::tr("%1 can't be written: %2").arg(info.fileName(), cause);
    }
    if (reason)
        *reason = failure;
    return isSaved;
}

template<class Source> bool exportAsked(Source* source, bool extra, UserPrompt* prompt, QString* reason)
{
    QString filename = ReadWrite::getImageSaveFileName(extra, prompt);
    if (filename.isEmpty()) {
        if (reason)
            reason->clear();
        return true;
    }
    if (QFileInfo(filename).suffix().isEmpty())
        filename += extra ? QStringLiteral(".pdf") : QStringLiteral(".png");
    return ReadWrite::exportDocument(source, filename, reason);
}

bool drawPage(QPagedPaintDevice* device, bool isGray, Plot* plot)
{
    QPainter painter;
    if (!painter.begin(device))
        return false;
    const QRectF page(0, 0, device->width(), device->height());
    painter.fillRect(page, Qt::white);
    ReadWrite::drawOnPaper(plot, &painter, page, isGray);
    return painter.end();
}

/// The printer would write into the file as it draws: a full disk would leave half a page, and no word.
bool printToFile(const QPrinter& printer, Plot* plot, QString* failure)
{
    return save(printer.outputFileName(), failure, [&](QIODevice* out, const QByteArray&, QString*) {
        QPdfWriter pdf(out);
        pdf.setCreator(printer.creator());
        pdf.setTitle(printer.docName());
        pdf.setResolution(printer.resolution());
        pdf.setPageLayout(printer.pageLayout());
        return drawPage(&pdf, printer.colorMode() == QPrinter::GrayScale, plot);
    });
}

bool printOn(QPrinter* printer, Plot* plot, QString* failure)
{
    if (!printer->outputFileName().isEmpty())
        return printToFile(*printer, plot, failure);
    const bool isDrawn = drawPage(printer, printer->colorMode() == QPrinter::GrayScale, plot) &&
                         printer->printerState() != QPrinter::Error;
    if (!isDrawn)
        *failure =
            ReadWrite::tr("\"%1\" can't be printed on %2").arg(plot->title().text(), printer->printerName());
    return isDrawn;
}

} // namespace

QString ReadWrite::getImageSaveFileName(bool extra, UserPrompt* prompt)
{
    if (!prompt)
        return {};
    QStringList filters;
    if (extra) {
        filters << tr("PDF Documents (*.pdf)") << tr("SVG Documents (*.svg)")
                << tr("Postscript Documents (*.ps)");
    }
    // A name takes the first ending of the filter chosen.
    QStringList images{QStringLiteral("*.png")};
    for (const QByteArray& format : QImageWriter::supportedImageFormats()) {
        if (format != "png")
            images << QStringLiteral("*.") + QString::fromLatin1(format);
    }
    filters << tr("Images (") + images.join(QLatin1Char(' ')) + QLatin1Char(')');
    return prompt->saveFile(nullptr, tr("Export File Name"),
                            getDataPath(extra ? tr("Image.pdf") : tr("Image.png")),
                            filters.join(QStringLiteral(";;")), nullptr);
}

bool ReadWrite::exportDocument(Plot* graph, UserPrompt* prompt, QString* reason)
{
    return exportAsked(graph, true, prompt, reason);
}

bool ReadWrite::exportDocument(QWidget* widget, UserPrompt* prompt, QString* reason)
{
    return exportAsked(widget, false, prompt, reason);
}

bool ReadWrite::exportDocument(Plot* graph, const QString& filename, QString* reason)
{
    return save(filename, reason, [graph](QIODevice* out, const QByteArray& format, QString* cause) {
        return drawDocument(graph, out, format, cause);
    });
}

bool ReadWrite::exportDocument(QWidget* widget, const QString& filename, QString* reason)
{
    return save(filename, reason, [widget](QIODevice* out, const QByteArray& format, QString* cause) {
        return writeImage(widget->grab().toImage(), out, format, cause);
    });
}

void ReadWrite::drawOnPaper(Plot* graph, QPainter* painter, const QRectF& rect, bool isGray)
{
    QwtPlotRenderer renderer;
    renderer.setDiscardFlag(QwtPlotRenderer::DiscardCanvasBackground);
    renderer.setDiscardFlag(QwtPlotRenderer::DiscardBackground); // ink is for the curves
    if (isGray)
        renderer.setLayoutFlag(QwtPlotRenderer::FrameWithScales);
    graph->setTextsForPaper(true);
    renderer.render(graph, painter, rect);
    graph->setTextsForPaper(false);
}

bool ReadWrite::print(Plot* plot, const PrinterChoice& choose, QString* reason)
{
    if (reason)
        reason->clear();
    plot->setForPrint(true);
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageOrientation(QPageLayout::Landscape);
    QString title = plot->title().text();
    if (!title.isEmpty())
        printer.setDocName(title.replace(QLatin1Char('\n'), QStringLiteral(" -- ")));
    printer.setCreator(QStringLiteral("Bode example"));
    QString failure;
    if (choose && choose(&printer))
        printOn(&printer, plot, &failure);
    plot->setForPrint(false);
    if (reason)
        *reason = failure;
    return failure.isEmpty();
}

bool ReadWrite::askForPrinter(QPrinter* printer)
{
    QPrintDialog dialog(printer);
    return dialog.exec() == QDialog::Accepted;
}
