#include "app/reporthtml.h"

#include "app/reportpage.h"
#include "app/resulttable.h"

#include <QLocale>

namespace {

// Nothing is loaded from anywhere, whatever a text says.
constexpr const char* frame = R"(<!DOCTYPE html>
<html lang="%1">
<head>
<meta charset="utf-8"/>
<meta name="viewport" content="width=device-width, initial-scale=1"/>
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'"/>
<title>%2</title>
<style>
body { font-family: sans-serif; max-width: 60rem; margin: 1rem auto; padding: 0 1rem; color: #111; background: #fff; }
section { border-top: 1px solid #888; margin-top: 2rem; overflow-wrap: break-word; }
svg { width: 100%; height: auto; }
svg text { font-family: 'DejaVu Sans', Arial, sans-serif; }
table { border-collapse: collapse; margin: 0.5rem 0; }
th, td { border: 1px solid #888; padding: 0.2rem 0.5rem; text-align: left; vertical-align: top; max-width: 16rem; }
h2 { font-size: 1.1rem; }
@page { margin: 15mm; }
@media print {
  body { max-width: none; margin: 0; padding: 0; font-size: 9.5pt; }
  section { break-after: page; border: 0; margin: 0; }
  section:last-of-type { break-after: auto; }
  h2 { break-after: avoid; }
  tr, svg { break-inside: avoid; }
}
</style>
</head>
<body>
<header>%3</header>
)";

QString escaped(const QString& text)
{
    return ReportHtml::clean(text).toHtmlEscaped().replace(QLatin1Char('\n'), QLatin1String("<br/>"));
}

QString cells(const QStringList& row, const char* tag, int columns)
{
    QString html = QStringLiteral("<tr>");
    for (int i = 0; i < row.size(); ++i) {
        const int span = i == row.size() - 1 ? columns - i : 1; // the last text has the rest of the row
        const QString wide = span > 1 ? QStringLiteral(" colspan=\"%1\"").arg(span) : QString();
        html += QStringLiteral("<%1%2>").arg(QLatin1String(tag), wide) + escaped(row[i]) +
                QStringLiteral("</%1>").arg(QLatin1String(tag));
    }
    return html + QLatin1String("</tr>\n");
}

QString table(const ResultTable& table)
{
    int columns = table.header.size();
    for (const QStringList& row : table.rows)
        columns = qMax(columns, row.size());
    QString html = QStringLiteral(
        "<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\" style=\"border-collapse:collapse\">\n");
    if (!table.header.isEmpty())
        html += QLatin1String("<thead>") + cells(table.header, "th", columns) + QLatin1String("</thead>\n");
    for (const QStringList& row : table.rows)
        html += cells(row, "td", columns);
    return html + QLatin1String("</table>\n");
}

} // namespace

QString ReportHtml::clean(const QString& text)
{
    QString clean = text;
    for (QChar& each : clean) {
        const bool isSpace =
            each == QLatin1Char('\n') || each == QLatin1Char('\t') || each == QLatin1Char('\r');
        if ((each.unicode() < 0x20 && !isSpace) || each.unicode() >= 0xFFFE)
            each = QLatin1Char(' ');
    }
    return clean;
}

QString ReportHtml::begin(const QString& title, const QString& head)
{
    return QString::fromLatin1(frame).arg(QLocale().bcp47Name(), escaped(title), escaped(head));
}

QString ReportHtml::page(const ReportPage& page, const QString& graph)
{
    QString html = QStringLiteral("<section>\n<h1>") + escaped(page.title) + QLatin1String("</h1>\n");
    if (!page.facts.isEmpty())
        html +=
            QStringLiteral("<p>") + escaped(page.facts.join(QStringLiteral(" · "))) + QLatin1String("</p>\n");
    html += QStringLiteral("<p>") + graph + QLatin1String("</p>\n");
    for (const ReportPage::Section& section : page.sections) {
        html += QStringLiteral("<h2>") + escaped(section.heading) + QLatin1String("</h2>\n");
        for (const QString& text : section.texts)
            html += QStringLiteral("<p>") + escaped(text) + QLatin1String("</p>\n");
        for (const ResultTable& each : section.tables)
            html += table(each);
    }
    return html + QLatin1String("</section>\n");
}

QString ReportHtml::end()
{
    return QStringLiteral("</body>\n</html>\n");
}
