#pragma once

#include <QSplitter>
#include <QTimer>

#include <functional>

#include "instruments/steelmeter.h"

class NewestValues;
class QAbstractButton;
class QButtonGroup;
class QComboBox;
class QHBoxLayout;
class multiConnectionsManager;

/// The meters of the class in their place on the screen, with the buttons that choose how many. While they
/// are seen, idle loggers are asked each second what they measure; a run brings its own values.
class MetersPanel : public QSplitter
{
    Q_OBJECT

public:
    /// `mayAsk`: whether loggers may be asked at present.
    MetersPanel(multiConnectionsManager* manager, int iconDim, std::function<bool()> mayAsk,
                QWidget* parent = nullptr);

    /// The chosen logger; below 0 the first one is shown.
    void follow(int slot);
    void useDesignValues();

Q_SIGNALS:
    /// A person wants the meters of this group.
    void groupChosen(int slot);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QWidget* createToolBar(int iconDim);
    void addButton(QHBoxLayout* layout, int iconDim, int number, const QString& icon, const QString& text);
    void choose(int number);
    void doFetch();
    void noteValues(int slot);
    void showValues();
    void fillGroups();
    QVector<SteelMeter::Group> groups() const;

    multiConnectionsManager* manager;
    const std::function<bool()> mayAsk;
    NewestValues* values;
    SteelMeter* newMeters;
    QComboBox* group = nullptr;
    QButtonGroup* numbers = nullptr;
    int slot = 0;
    bool areGroups = false;
    QTimer fetchTimer{this};
    QTimer valuesTimer;
};
