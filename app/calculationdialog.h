#pragma once

#include <QDialog>
#include <QMap>
#include <QTimer>

#include "data/calculation.h"

class ExpData;
class GraphTools;
class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class multiConnectionsManager;

/// Asks how a channel is calculated from others of a graph: its name, unit, digits, formula and constants. It
/// says at once what is wrong, or what comes out at present, and puts the channel on one graph or on those of
/// all groups.
class CalculationDialog : public QDialog
{
    Q_OBJECT

public:
    /// `index` is the graph, -1 that of the class. None of them is owned.
    CalculationDialog(GraphTools* tools, multiConnectionsManager* manager, int index, QWidget* parent);
    static void ask(GraphTools* tools, multiConnectionsManager* manager, int index, QWidget* parent);

private:
    void createFields();
    void createButtons();
    QLineEdit* addLine(const char* name, const QString& label, const QString& example);
    const ExpData& set() const;
    QString channelsText() const;
    void fillExisting();
    void showExisting();
    void look();
    void showConstants(const QStringList& names);
    QString problemIn(const Calculation::Recipe& recipe) const;
    QString told(const Calculation::Recipe& recipe) const;
    Calculation::Recipe recipe(QString* problem) const;
    bool isLast(int channel) const;
    void take();
    bool takeFor(int slot, const Calculation::Recipe& recipe, const QString& before);
    void removeShown();

    GraphTools* const tools;
    multiConnectionsManager* const manager;
    const int index;
    QFormLayout* form = nullptr;
    QComboBox* existing = nullptr; ///< the data are the places of channels, -1 for a new one
    QLabel* channels = nullptr;
    QLineEdit* name = nullptr;
    QLineEdit* unit = nullptr;
    QSpinBox* digits = nullptr;
    QLineEdit* formula = nullptr;
    QFormLayout* constants = nullptr;
    QMap<QString, QLineEdit*> numbers; ///< of the constants that show
    QMap<QString, QString> typed;      ///< of all that ever showed
    QLabel* answer = nullptr;
    QCheckBox* forAll = nullptr;
    QPushButton* add = nullptr;
    QPushButton* remove = nullptr;
    QTimer again;
};
