#pragma once

#include <QFrame>

class KeptRuns;
class QLabel;
class QListView;
class QToolButton;
class QVBoxLayout;

/// The list of the kept runs beside the graphs: a click shows one again; others pin, rename and delete it.
class RunsPanel : public QFrame
{
    Q_OBJECT

public:
    /// `runs` is not owned.
    explicit RunsPanel(KeptRuns* runs, QWidget* parent = nullptr);

Q_SIGNALS:
    /// A person wants to see this run.
    void showWanted(int id);
    /// And to play it again.
    void replayWanted(int id);
    void closeWanted();

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    void createList();
    QWidget* createTitle();
    QWidget* createButtons();
    QToolButton* addButton(QWidget* row, const QString& text, const char* name);
    int current() const;
    QVector<int> chosen() const;
    void compare();
    void average();
    void showState();
    void openMenu(const QPoint& pos);
    void rename();
    void remove();
    void pin(bool tf);

    KeptRuns* const runs;
    QListView* list = nullptr;
    QLabel* empty = nullptr; ///< while there are none
    QToolButton* pinButton = nullptr;
    QToolButton* renameButton = nullptr;
    QToolButton* deleteButton = nullptr;
    QToolButton* compareButton = nullptr;
    QToolButton* averageButton = nullptr;
    QToolButton* replayButton = nullptr;
};
