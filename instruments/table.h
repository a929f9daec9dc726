#pragma once

#include <QColor>
#include <QPointer>
#include <QTableView>
#include <QTimer>

#include "instruments/clickablelabel.h"
#include "instruments/tabledesign.h"
#include "instruments/tablemodel.h"

class ExpData;

/// The samples of one logger in rows and columns. A value can be typed over; rows come along with a run while
/// the table is in sight.
class Table : public QTableView
{
    Q_OBJECT

public:
    /// `data` is not owned and outlives the table. `index` is the logger's slot.
    Table(ExpData* data, int index, QWidget* parent = nullptr);

    /// Anew from the data set.
    void setData();
    /// Samples have come: they are shown with the next of ten pictures in a second.
    void follow();
    /// The title's colour and those of the cells anew.
    void setDesign();
    void setActiveTable(int id);
    void setShown(bool tf) { setVisible(tf); }
    /// Not owned.
    void setTitle(ClickableLabel* label);
    ClickableLabel* getTitle() const { return title; }
    /// The samples at these times stand out, and the one that was moved comes into sight.
    void markTimes(const QVector<double>& times);
    /// The chosen cells, all where none is, with the headers of their columns and tabs between.
    QString copiedText() const;
    int getIndex() const { return index; }

    static QColor getTitleColor() { return TableDesign::getTitleColor(); }
    static void setTitleColor(const QColor& color) { TableDesign::setTitleColor(color); }
    static QColor getOddColor() { return TableDesign::getOddColor(); }
    static void setOddColor(const QColor& color) { TableDesign::setOddColor(color); }
    static QColor getEvenColor() { return TableDesign::getEvenColor(); }
    static void setEvenColor(const QColor& color) { TableDesign::setEvenColor(color); }

public Q_SLOTS:
    void doUseDesignValues() { setDesign(); }
    void copy() const;

Q_SIGNALS:
    /// A person has typed another value for a sample, in base units.
    void typed(int index, int iSens, int row, double value);
    /// The value is in the set.
    void tableEdited();
    /// Why a value was not taken.
    void refused(const QString& why);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void catchUp();
    QVector<int> rowsOf(const QVector<double>& times) const;
    bool isEndSeen() const;
    void showEnd();
    void fitColumns();
    void fitRows();
    void doActiveTableIndicator();
    void changeTitleColor();

    const ExpData* const set;
    const int index;
    TableModel* const rows;
    QPointer<ClickableLabel> title;
    QTimer pace;
    bool isActive = false;
    bool isDue = false;
    int textPixels = 12;
    int known = 0; ///< samples when the end was shown last
    QVector<double> marks;
};
