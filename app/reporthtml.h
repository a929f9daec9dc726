#pragma once

#include <QString>

struct ResultTable;
class ReportPage;

/// A report as HTML, for a browser and, without its frame, for a text document. All texts are escaped.
namespace ReportHtml {

/// `head` stands above each page.
QString begin(const QString& title, const QString& head);
/// One page; `graph` is the markup of its picture.
QString page(const ReportPage& page, const QString& graph);
QString end();
/// Without the control characters that no document may hold.
QString clean(const QString& text);

} // namespace ReportHtml
