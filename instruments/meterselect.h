#pragma once

#include <QDialog>
#include <QStringList>
#include <QVector>

#include "sensors/sensor.h"

class QButtonGroup;
class QComboBox;
class QGridLayout;

/// How one meter looks and what it shows. The results hold once the dialog was accepted.
class meterSelect : public QDialog
{
    Q_OBJECT

public:
    explicit meterSelect(QWidget* parent = nullptr);

    /// `type` of meter `id`; the row of the sensor at `index`, of a composite that of its child `virt`, is
    /// the present one.
    void setData(int id, int type, int index, int virt, const SensorList& sensors);
    /// The range in force of the present row; else that of the sensor is where a new one starts.
    void setRangeInForce(double min, double max);

    int meter = 0; ///< the `id` of setData()
    int meterType = 0;
    QString sensMasterName;
    QString sensActualName;
    int sensMasterIndex = -1; ///< place in the list of sensors
    int sensVirtNum = 0;
    double newmin = 0; ///< a range was chosen if the two differ; in the unit on display
    double newmax = 0;

public Q_SLOTS:
    void on_buttonOK_clicked();
    void on_buttonCancel_clicked();
    void on_buttonRange_clicked();

private:
    struct Row
    {
        QString master;
        QString actual;
        int index;
        int virt;
        double min;
        double max;
    };

    void addType(QGridLayout* layout, int type);
    void addRow(const Row& row, const QString& icon);

    QButtonGroup* types;
    QComboBox* list;
    QVector<Row> rows; ///< as in the list
    int startRow = -1;
    bool isRangeInForce = false;
    double minInForce = 0;
    double maxInForce = 0;
};
