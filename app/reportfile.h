#pragma once

#include <QByteArray>
#include <QPageLayout>
#include <QSize>
#include <QString>

#include <memory>

class Plot;
class ReportPage;

/// A report as the bytes of a file, which grow page by page.
class ReportFile
{
public:
    virtual ~ReportFile() = default;

    /// `head` stands above each page.
    static std::unique_ptr<ReportFile> html(const QString& title, const QString& head);
    static std::unique_ptr<ReportFile> pdf(const QString& title, const QString& head,
                                           const QPageLayout& layout);

    /// Of the picture, in pixels of a screen.
    virtual QSize graphSize() const = 0;
    /// As many sheets of paper as it takes. False if it can't be drawn.
    virtual bool add(const ReportPage& page, Plot* plot) = 0;
    /// All of it; nothing can be added any more.
    virtual QByteArray end() = 0;
};
