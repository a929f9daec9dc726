#pragma once

#include <QDialog>
#include <QPixmap>
#include <QTimer>

#include "protocol/expinfo.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QTableWidget;
class TembrinData;
class multiConnectionsManager;

/// Shows what is stored in one logger and fetches the experiment that a person chooses. It stays open, so
/// that another one can be fetched; closing it ends a download under way.
class experimentInfo : public QDialog
{
    Q_OBJECT

public:
    /// Asks logger `index` for its table at once.
    experimentInfo(multiConnectionsManager* mTembrin, int index, QWidget* parent = nullptr);

public Q_SLOTS:
    void reject() override;

private Q_SLOTS:
    void on_pushDownload_clicked();
    void fillTable();
    void showProgress(int val, int total);
    void handlePassedOver(int logger);
    void handleDone();

private:
    void createTable();
    void createLayout();
    void askForTable();
    void addRow(const expInfo& experiment);
    QPixmap iconStrip(const QStringList& iconNames) const;
    void updateButtons();
    QString nameOf(int row) const;

    multiConnectionsManager* mTembrin;
    TembrinData* logger;
    const int index;
    QTableWidget* table;
    QLabel* hint;
    QProgressBar* progress;
    QPushButton* pushDownload;
    QPushButton* pushCancel;
    QTimer tableTimer; ///< until the table counts as lost
    int tableQuestions = 0;
    int fetching = -1; ///< the row, -1 for none
};
