#pragma once

#include <QDialog>
#include <QTimer>
#include <QVector>

#include "app/fitresult.h"
#include "app/fitrunner.h"
#include "app/resulttable.h"

class GraphTools;
class QComboBox;
class QLabel;
class QScrollArea;
class UserPrompt;
class multiConnectionsManager;

/// A group by one of its values.
struct RankedGroup
{
    QString group;
    QString channel;
    double value = 0; ///< not finite where there is none
    QString unit;
    QString text; ///< the value with its unit
    QColor color;
};
bool operator==(const RankedGroup& a, const RankedGroup& b);

/// A bar for each group, one below the other. Values in one unit share a scale.
class RankingBars : public QWidget
{
    Q_OBJECT

public:
    explicit RankingBars(QWidget* parent = nullptr);
    void setGroups(const QVector<RankedGroup>& groups);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int rowHeight() const;

    QVector<RankedGroup> ranked;
};

/// The groups sorted by the newest value of their chosen sensors, by the mean of all samples or of those
/// between the markers, or by a number of a fit. It is renewed while it is open.
class GroupRanking : public QDialog
{
    Q_OBJECT

public:
    /// None of them is owned.
    GroupRanking(const GraphTools* tools, multiConnectionsManager* manager, UserPrompt* prompt,
                 QWidget* parent = nullptr);

    /// Largest first, one unit after the other; those without a value come last.
    static void sort(QVector<RankedGroup>* groups);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    enum class By
    {
        Newest,
        Mean,
        Fit
    };

    void createChoice();
    void createButtons();
    By by() const;
    void choose();
    void look();
    void take(const QVector<CurveFit::Fit>& fits);
    QVector<RankedGroup> rankedByValue(const QVector<Subject>& subjects) const;
    void showRanked(QVector<RankedGroup> groups);
    QColor colorOf(int slot) const;
    ResultTable numbers() const;

    const Subjects subjects;
    multiConnectionsManager* const manager;
    UserPrompt* const prompt;
    QComboBox* what = nullptr;
    QComboBox* models = nullptr;
    QComboBox* parameters = nullptr;
    QLabel* range = nullptr;
    RankingBars* bars = nullptr;
    QVector<RankedGroup> shown;
    QVector<Subject> asked; ///< of the last fit
    FitRunner runner;
    QTimer again;
};
