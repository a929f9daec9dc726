#include "app/reportfile.h"

#include "app/reporthtml.h"
#include "app/reportpage.h"
#include "graph/plot.h"
#include "persistence/readwrite.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QCoreApplication>
#include <QPainter>
#include <QPdfWriter>
#include <QRegularExpression>
#include <QSvgGenerator>
#include <QTextDocument>
#include <QTextObjectInterface>

#include <algorithm>

namespace {

constexpr QSize htmlGraph(900, 500); // pixels
constexpr double pixelsPerInch = 96;
constexpr double graphHeight = 0.56; // of its width

class HtmlReport : public ReportFile
{
public:
    HtmlReport(const QString& title, const QString& head)
        : bytes(ReportHtml::begin(title, head).toUtf8())
    {
    }
    QSize graphSize() const override { return htmlGraph; }
    bool add(const ReportPage& page, Plot* plot) override
    {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        QSvgGenerator svg;
        svg.setOutputDevice(&buffer);
        svg.setTitle(page.title.toHtmlEscaped()); // which nobody else does
        svg.setDescription(QString());
        svg.setResolution(plot->logicalDpiX());
        svg.setSize(htmlGraph);
        svg.setViewBox(QRect(QPoint(0, 0), htmlGraph));
        QPainter painter;
        if (!painter.begin(&svg))
            return false;
        ReadWrite::drawOnPaper(plot, &painter, QRectF(QPointF(0, 0), htmlGraph));
        painter.end();
        QString picture = ReportHtml::clean(QString::fromUtf8(buffer.data()));
        picture.remove(0, picture.indexOf(QLatin1String("<svg"))); // within another document
        static const QRegularExpression size(QStringLiteral("^<svg width=\"[^\"]*\" height=\"[^\"]*\""));
        picture.replace(size, QStringLiteral("<svg role=\"img\""));
        bytes += ReportHtml::page(page, picture).toUtf8();
        return true;
    }
    QByteArray end() override { return bytes + ReportHtml::end().toUtf8(); }

private:
    QByteArray bytes;
};

/// Draws a graph where a text document has a picture, as lines and letters.
class GraphObject : public QObject, public QTextObjectInterface
{
    Q_OBJECT
    Q_INTERFACES(QTextObjectInterface)

public:
    explicit GraphObject(Plot* plot, const QSizeF& size)
        : plot(plot)
        , size(size)
    {
    }
    QSizeF intrinsicSize(QTextDocument*, int, const QTextFormat&) override { return size; }
    void drawObject(QPainter* painter, const QRectF& rect, QTextDocument*, int, const QTextFormat&) override
    {
        ReadWrite::drawOnPaper(plot, painter, rect);
    }

private:
    Plot* const plot;
    const QSizeF size;
};

class PdfReport : public ReportFile
{
public:
    PdfReport(const QString& title, const QString& head, const QPageLayout& layout)
        : head(head)
        , pdf(&buffer)
    {
        constexpr double leastMargin = 15; // mm
        buffer.open(QIODevice::WriteOnly);
        pdf.setCreator(QStringLiteral("Pellandra"));
        pdf.setTitle(title);
        const QMarginsF margins = layout.margins(QPageLayout::Millimeter);
        pdf.setPageLayout(layout);
        pdf.setPageMargins({std::max(leastMargin, margins.left()), std::max(leastMargin, margins.top()),
                            std::max(leastMargin, margins.right()), std::max(leastMargin, margins.bottom())},
                           QPageLayout::Millimeter);
        isGood = painter.begin(&pdf);
    }
    QSize graphSize() const override { return (pictureSize() * pixelsPerInch / pdf.logicalDpiX()).toSize(); }
    bool add(const ReportPage& page, Plot* plot) override;
    QByteArray end() override { return painter.end() && isGood ? buffer.data() : QByteArray(); }

private:
    /// Of a line above and below the text, with its distance.
    double lineHeight() const { return pdf.logicalDpiY() * 0.3; }
    QSizeF textSize() const { return QSizeF(pdf.width(), pdf.height() - 2 * lineHeight()); }
    QSizeF pictureSize() const
    {
        const QSizeF room = textSize();
        return QSizeF(room.width(), std::min(room.width() * graphHeight, room.height() * 0.8));
    }
    void drawEdges(const QString& title);

    const QString head;
    QBuffer buffer;
    QPdfWriter pdf;
    QPainter painter;
    int pages = 0;
    bool isGood = false;
};

bool PdfReport::add(const ReportPage& page, Plot* plot)
{
    constexpr double points = 9.5;
    QTextDocument document;
    GraphObject graph(plot, pictureSize());
    document.documentLayout()->registerHandler(QTextFormat::ImageObject, &graph);
    document.documentLayout()->setPaintDevice(&pdf);
    document.setDocumentMargin(0);
    QFont font(QStringLiteral("sans-serif"));
    font.setPointSizeF(points);
    document.setDefaultFont(font);
    QTextOption option = document.defaultTextOption();
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    document.setDefaultTextOption(option);
    document.setDefaultStyleSheet(QStringLiteral(
        "h1 { font-size: 16pt; margin: 0 } h2 { font-size: 11pt; margin: 8 0 2 0 } p { margin: 3 0 3 0 } "
        "td, th { font-size: 8.5pt }"));
    document.setPageSize(textSize());
    document.setHtml(ReportHtml::page(page, QStringLiteral("<img src=\"graph\"/>")));
    const QSizeF room = textSize();
    for (int i = 0; i < document.pageCount(); ++i) {
        if (pages++ > 0)
            isGood = pdf.newPage() && isGood;
        painter.save();
        painter.translate(0, lineHeight() - i * room.height());
        QAbstractTextDocumentLayout::PaintContext context;
        context.palette.setColor(QPalette::Text, Qt::black);
        context.clip = QRectF(0, i * room.height(), room.width(), room.height());
        painter.setClipRect(context.clip);
        document.documentLayout()->draw(&painter, context);
        painter.restore();
        drawEdges(i == 0 ? QString() : page.title);
    }
    return isGood;
}

/// The head, and whose sheet it is where that does not stand on it; the number below.
void PdfReport::drawEdges(const QString& title)
{
    constexpr double points = 8;
    QFont font(QStringLiteral("sans-serif"));
    font.setPointSizeF(points);
    painter.save();
    painter.setFont(font);
    painter.setPen(Qt::darkGray);
    const QFontMetricsF metrics(font, &pdf);
    const QRectF above(0, 0, pdf.width(), lineHeight());
    const QString left = metrics.elidedText(head, Qt::ElideRight, pdf.width() * 0.62);
    painter.drawText(above, Qt::AlignLeft | Qt::AlignTop, left);
    painter.drawText(above, Qt::AlignRight | Qt::AlignTop,
                     metrics.elidedText(title, Qt::ElideRight, pdf.width() * 0.35));
    painter.drawText(above.translated(0, pdf.height() - lineHeight()), Qt::AlignRight | Qt::AlignBottom,
                     QCoreApplication::translate("ReportFile", "Page %1").arg(pages));
    painter.restore();
}

} // namespace

std::unique_ptr<ReportFile> ReportFile::html(const QString& title, const QString& head)
{
    return std::make_unique<HtmlReport>(title, head);
}

std::unique_ptr<ReportFile> ReportFile::pdf(const QString& title, const QString& head,
                                            const QPageLayout& layout)
{
    return std::make_unique<PdfReport>(title, head, layout);
}

#include "reportfile.moc"
