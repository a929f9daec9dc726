#pragma once

#include <QDialog>
#include <QPointer>
#include <QTimer>
#include <QVector>

#include "app/fitresult.h"
#include "app/fitrunner.h"

class GraphTools;
class Plot;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;
class QVBoxLayout;
class ResidualPlot;
class UserPrompt;
class multiConnectionsManager;

/// Fits a curve to what the tools mean at present, or to each group, and goes on with it: while it is open
/// the graph may change, a run may go on, another graph may be chosen.
class FitDialog : public QDialog
{
    Q_OBJECT

public:
    /// None of them is owned.
    FitDialog(const GraphTools* tools, multiConnectionsManager* manager, UserPrompt* prompt,
              QWidget* parent = nullptr);
    ~FitDialog() override;

    /// At the side of its parent, so that the graph can be seen.
    void showBeside();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void createChoice(QVBoxLayout* layout);
    void createResult(QVBoxLayout* layout);
    void createButtons(QVBoxLayout* layout);
    void fitWidth();
    QPushButton* addButton(const char* name, const QString& text, void (FitDialog::*slot)());
    CurveFit::Model model() const;
    bool isForAll() const;
    bool isTime() const;

    void look();
    void ask();
    void take(const QVector<CurveFit::Fit>& fits);
    void tellProblem(const QString& text);
    void showResults();
    QVector<Subject> present() const;
    void showPreviews();
    void endPreviews();
    QString formulaText() const;

    void putOnGraphs();
    void toggleResiduals();
    ResultTable numbers() const;
    void copy();
    void save();

    const GraphTools* const tools;
    const Subjects subjects;
    multiConnectionsManager* const manager;
    UserPrompt* const prompt;
    QComboBox* models = nullptr;
    QLineEdit* formula = nullptr;
    QLabel* range = nullptr;
    QCheckBox* forAll = nullptr;
    QLabel* problem = nullptr;
    QLabel* told = nullptr;
    QTableWidget* table = nullptr;
    ResidualPlot* residuals = nullptr; ///< null until it is asked for
    QVBoxLayout* residualPlace = nullptr;
    QVector<QPushButton*> needsResult;
    QPushButton* residualButton = nullptr;

    QVector<Subject> asked; ///< of the last question
    QVector<FitResult> shown;
    QPointer<Plot> graph; ///< of a fit that is not for all
    QVector<QPointer<Plot>> previewed;
    FitRunner runner;
    QTimer lookTimer;
    QTimer patience; ///< before it says that it works
};
