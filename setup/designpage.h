#pragma once

#include <QWidget>

#include "setup/designvalues.h"

class QCheckBox;
class QDoubleSpinBox;
class QGridLayout;
class QGroupBox;
class QLabel;
class QPushButton;
class QSpinBox;
class UserPrompt;

/// The look of the program.
class DesignPage : public QWidget
{
    Q_OBJECT

public:
    /// `prompt` asks for colours and outlives the page.
    explicit DesignPage(UserPrompt* prompt, QWidget* parent = nullptr);

Q_SIGNALS:
    void mainChanged();
    void graphChanged();
    void tableChanged();

private:
    QGroupBox* designGroup(const char* name, const QString& title, QGridLayout** grid);
    void addColor(QGridLayout* grid, DesignValues::ColorOf which);
    void addWidth(QGridLayout* grid, DesignValues::WidthOf which);
    void addPalette(QGridLayout* grid);
    QSpinBox* addTextSize(QGridLayout* grid, const char* name, const QString& label, int least, int most);
    void modifyDesignDialog();
    void showNotSaved();
    void showColor(int which);
    void pickColor(int which);
    void tellDesign(DesignValues::Place place);
    void save();
    void toPresets();

    UserPrompt* prompt;
    bool isFilling = false; ///< a change is the page's own
    QPushButton* colorButtons[DesignValues::ColorCount] = {};
    QCheckBox* colorBlindBox = nullptr;
    QDoubleSpinBox* widthSpins[DesignValues::WidthCount] = {};
    QSpinBox* titlesSizeSpin = nullptr;
    QSpinBox* valuesSizeSpin = nullptr;
    QPushButton* saveButton = nullptr;
    QPushButton* defaultButton = nullptr;
    QLabel* designHint = nullptr; ///< how long a design lasts
};
