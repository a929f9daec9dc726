#pragma once

#include <QDateTime>
#include <QObject>
#include <QPageLayout>
#include <QString>
#include <QVector>

#include <functional>
#include <memory>

#include "app/fitresult.h"
#include "app/graphcopy.h"

class QWidget;
class ReportFile;
class UserPrompt;

/// What a report is made of, as it is at one moment.
struct ReportSource
{
    QString title; ///< of the lesson, to begin with
    QDateTime begun;
    QString note;              ///< what the graph of the class lacks
    QVector<GraphCopy> graphs; ///< that of the class first
};

/// Makes a report of the lesson, as a PDF or as one HTML file: asks for the names that stand on it, takes
/// what is there at that moment, and draws one graph in each turn of the event loop, so that the window
/// lives.
class Report : public QObject
{
    Q_OBJECT

public:
    /// `rate` puts seconds between samples into words. `prompt` is not owned.
    Report(UserPrompt* prompt, const std::function<QString(double)>& rate, QWidget* parent);
    ~Report() override;

    bool isBusy() const { return file != nullptr; }
    /// `source` is asked when the person has chosen the file.
    void ask(const QString& title, const std::function<ReportSource()>& source);
    /// Without a question. An ending "html" or "htm" decides, all others are a PDF.
    void make(const QString& fname, const QString& school, const QString& title, const ReportSource& source,
              const QPageLayout& paper);
    /// The size and the margins that the person's printer has.
    static QPageLayout printerLayout();

Q_SIGNALS:
    void told(const QString& line);
    /// It is in its file, or a box has said why not.
    void done(bool isSaved);

private:
    void choose(const QString& school, const QString& title, const std::function<ReportSource()>& source);
    void drawNext();
    void write();
    void end(const QString& failure);

    UserPrompt* const prompt;
    const std::function<QString(double)> rate;
    QWidget* const window;
    ReportSource source;
    QString fname;
    std::unique_ptr<ReportFile> file; ///< while one is being made
    QVector<FitResult> fits;          ///< of the groups
    int next = 0;
};
