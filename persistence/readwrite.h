#pragma once

#include <QCoreApplication>
#include <QList>
#include <QSharedPointer>
#include <QString>
#include <QVector>

#include <functional>

class ExpData;
class Plot;
class QIODevice;
class QPainter;
class QPrinter;
class QRectF;
class QWidget;
class UserPrompt;
class myPlotMarker;
class oneScale;

/// Experiment files, spreadsheet files, documents and the folder of activities. Every file is written whole
/// or not at all. Where an operation takes a `reason` (null allowed), it gets one line for the user: why
/// nothing was done, or, after a read that succeeded, what had to be left out; empty when all went well.
/// GUI thread only, but for the unpacking of archives.
class ReadWrite
{
    Q_DECLARE_TR_FUNCTIONS(ReadWrite)

public:
    // Experiment files, in readwrite_experiment.cpp

    /// Writes an experiment; `scales` of the graph, one per channel, `defView` the view that shows. False
    /// leaves the file that was there as it was.
    static bool write(const QString& filename, const QString& title, const ExpData* data,
                      const QVector<QSharedPointer<oneScale>>& scales, const QList<myPlotMarker*>& markers,
                      const QList<myPlotMarker*>& barMarkers, const QString& defView,
                      QString* reason = nullptr);
    /// Reads an experiment into `data`, its title and markers into the graphs (null for none). Gives the view
    /// to show; an empty text with nothing changed for a file that can't be read; appendMisfit with nothing
    /// changed for an experiment of another rate or first time.
    static QString read(const QString& filename, ExpData* data, Plot* graph, Plot* bar, bool append = false,
                        QString* reason = nullptr);
    static constexpr const char* appendMisfit = "ERR1";

    // Spreadsheets, in readwrite_csv.cpp

    /// Writes the values as they show. `timesec` is the title of the time column; with `launch` the
    /// desktop's own program opens the file.
    static bool exportCSV(const QString& filename, const ExpData* data, bool launch, const QString& timesec,
                          QString* reason = nullptr);
    /// Writes rows of cells as they are; numbers in them have the language's decimal sign.
    static bool exportTable(const QString& filename, const QVector<QStringList>& rows,
                            QString* reason = nullptr);
    /// Reads comma-separated columns as curves of their own. False changes nothing.
    static bool importCSV(const QString& filename, ExpData* data, QString* reason = nullptr);
    /// The same from an open device; `cause` is not null, and after a read names what was left out.
    static bool importCSV(QIODevice* device, ExpData* data, QString* cause);

    // Documents and printing, in readwrite_document.cpp

    /// Asks for a file to export to; `extra` offers documents beside images. Empty when cancelled.
    static QString getImageSaveFileName(bool extra, UserPrompt* prompt);
    /// Asks for a file and draws the graph into it. True also for a cancelled dialog.
    static bool exportDocument(Plot* graph, UserPrompt* prompt, QString* reason = nullptr);
    static bool exportDocument(QWidget* widget, UserPrompt* prompt, QString* reason = nullptr);
    /// The same to a known file; the name's ending (pdf, svg, ps or that of an image) decides on the format.
    static bool exportDocument(Plot* graph, const QString& filename, QString* reason = nullptr);
    static bool exportDocument(QWidget* widget, const QString& filename, QString* reason = nullptr);
    /// Lets the user choose and set up a printer; false when cancelled.
    using PrinterChoice = std::function<bool(QPrinter* printer)>;
    static bool askForPrinter(QPrinter* printer);
    static bool print(Plot* plot, const PrinterChoice& choose = askForPrinter, QString* reason = nullptr);

    /// Draws a graph for paper: dark texts on what is there, all of `rect`.
    static void drawOnPaper(Plot* graph, QPainter* painter, const QRectF& rect, bool isGray = false);

    // Folders and activities, in readwrite_activities.cpp

    /// The data folder, or `file` in it.
    static QString getDataPath(const QString& file);
    /// The folder of `fullpath` becomes the data folder.
    static void setDefaultDataPath(const QString& fullpath);
    static QString getActivityPath();
    /// The folder that was chosen for activities; empty while none was. Where files are saved is another.
    static QString activityFolder();
    /// The folder of `fullpath` becomes that of the activities.
    static void setActivityFolder(const QString& fullpath);
    /// Hears how far an archive has come.
    using Progress = std::function<void(const QString& archive, int percent)>;
    /// Unpacks the first archive of a folder that has no PDF or XML file yet, and removes it when all of it
    /// arrived; where a part of it could do harm that is left out, named, and the archive stays. One that
    /// can't be unpacked is renamed to end in ".failed". True if files were unpacked. Any thread.
    static bool unpackIfNeeded(const QString& path, QString* reason = nullptr,
                               const Progress& progress = Progress());
    /// Registers with the whiteboard software; nothing to do off Windows.
    static void CheckAndInstallMimio();
};
