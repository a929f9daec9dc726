#pragma once

#include <QPixmap>
#include <QTimer>
#include <QVector>
#include <QWidget>

#include "protocol/expinfo.h"

class QLabel;
class QTableWidget;
class TembrinProtocol;

/// What is stored in one logger, a row for each experiment.
class ExperimentPage : public QWidget
{
    Q_OBJECT

public:
    /// Asks the logger for its table at once.
    explicit ExperimentPage(TembrinProtocol* session, QWidget* parent = nullptr);

    /// The slot of the logger.
    int index() const;
    /// The row that is chosen, -1 for none.
    int chosen() const;
    /// -1 chooses nothing.
    void choose(int row);
    QDateTime startOf(int row) const;
    /// The experiment that began nearest to `start`, a few minutes before or after; -1 if there is none.
    int nearestTo(const QDateTime& start) const;
    /// Date and time of an experiment.
    QString nameOf(int row) const;

Q_SIGNALS:
    void chosenChanged();
    void downloadAsked();

private:
    void createTable();
    void askForTable();
    void fillTable();
    void addRow(const expInfo& experiment);
    static QPixmap iconStrip(const QStringList& iconNames);

    TembrinProtocol* session;
    QVector<expInfo> experiments;
    QTableWidget* table;
    QLabel* hint;
    QTimer tableTimer; ///< until the table counts as lost
    int tableQuestions = 0;
};
