#pragma once

#include <QAbstractItemDelegate>
#include <QDialog>
#include <QVector>

#include "link/portdiscovery.h"
#include "link/possibledevice.h"

class QLabel;
class QListWidget;
class QPushButton;
class multiConnectionsManager;

/// Chooses the loggers of the class among the paired ones and names their groups. What is saved decides which
/// ports the slots open next; the running connections take no notice.
class selectManyLoggers : public QDialog
{
    Q_OBJECT

public:
    /// Shows the devices of `devList` whose ports are stored for a slot as used, the others as unused.
    selectManyLoggers(multiConnectionsManager* mTembrin, const QVector<possibleDevice>& devList,
                      QWidget* parent = nullptr);
    ~selectManyLoggers() override;

    /// What is paired at present: unused devices come and go, the used ones stay.
    void takeDevices(const QVector<possibleDevice>& devList);
    /// No program for pairing was found.
    void tellNoPairing();

    /// `devices` with those that the slots of the class choose first, in the order of the slots.
    static QVector<possibleDevice> bySlots(const multiConnectionsManager& manager,
                                           QVector<possibleDevice> devices);

    bool saved = false; ///< the person pressed Connect
    int nTembrins = 0;  ///< loggers in use, 8 at most

Q_SIGNALS:
    /// The person wants the desktop's own panel for pairing.
    void pairingWanted();

private Q_SLOTS:
    void on_pushAdd_clicked();
    void on_pushRemove_clicked();
    void on_pushButton_Save_clicked();
    void on_pushButton_Connect_clicked();
    void on_pushButton_clicked();
    void ListWidgetEditEnd(QWidget* editor, QAbstractItemDelegate::EndEditHint hint);

private:
    QListWidget* createList(const QString& name, const QString& title);
    QPushButton* createButton(const QString& name, const QString& text, void (selectManyLoggers::*slot)());
    QSize rowSize() const;
    void createLayout();
    void fitToScreen();
    void takeFont(const QFont& font);
    void sortOut(const QVector<possibleDevice>& devList);
    int slotOf(const possibleDevice& device) const;
    void keepUnreadable();
    QString tipOf(const possibleDevice& device) const;
    QString reasonOf(const possibleDevice& device) const;
    bool isOneAdapterForAll() const;
    void updateHint();
    void refresh();
    void nameGroups();
    void updateButtons();
    QString hintText() const;
    void move(QListWidget* fromList, QVector<possibleDevice>& from, QListWidget* toList,
              QVector<possibleDevice>& to, int most);

    multiConnectionsManager* mTembrin;
    BluetoothState radio;
    bool hasNoPairing = false;
    QVector<possibleDevice> present; ///< all that are paired
    QVector<possibleDevice> unused;
    QVector<possibleDevice> used; ///< in the order of slots
    QListWidget* listPaired;
    QListWidget* listUsed;
    QPushButton* pushAdd;
    QPushButton* pushRemove;
    QPushButton* pushPair;
    QPushButton* pushButton_Save;
    QPushButton* pushButton_Connect;
    QPushButton* pushButton; ///< Cancel
    QLabel* hint;            ///< what to do next, or why something can't be done
};
