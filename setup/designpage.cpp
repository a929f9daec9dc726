#include "setup/designpage.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>

#include "common/userprompt.h"
#include "graph/colorscale.h"
#include "setup/dialogtools.h"
#include "setup/loggerbasicsetup.h"

using DialogTools::named;

namespace {

struct ColorRow
{
    const char* name;
    const char* label;
    const char* title; ///< of the dialog that asks for the colour
};

// clang-format off
constexpr ColorRow colorRows[DesignValues::ColorCount] = {
    {"appBackButton", QT_TRANSLATE_NOOP("DesignPage", "Background"),
     QT_TRANSLATE_NOOP("DesignPage", "Select color for app background")},
    {"backgroundButton", QT_TRANSLATE_NOOP("DesignPage", "Background"),
     QT_TRANSLATE_NOOP("DesignPage", "Select color for graph background")},
    {"activeButton", QT_TRANSLATE_NOOP("DesignPage", "Active graph"),
     QT_TRANSLATE_NOOP("DesignPage", "Select color for active graph background")},
    {"majGridButton", QT_TRANSLATE_NOOP("DesignPage", "Major grid"),
     QT_TRANSLATE_NOOP("DesignPage", "Select color for major grid line")},
    {"minGridButton", QT_TRANSLATE_NOOP("DesignPage", "Minor grid"),
     QT_TRANSLATE_NOOP("DesignPage", "Select color for minor grid line")},
    {"titleButton", QT_TRANSLATE_NOOP("DesignPage", "Title"),
     QT_TRANSLATE_NOOP("DesignPage", "Select color for title")},
    {"evenButton", QT_TRANSLATE_NOOP("DesignPage", "Even Column"),
     QT_TRANSLATE_NOOP("DesignPage", "Select color for even columns")},
    {"oddButton", QT_TRANSLATE_NOOP("DesignPage", "Odd Column"),
     QT_TRANSLATE_NOOP("DesignPage", "Select color for odd columns")},
};
// clang-format on

constexpr const char* widthNames[DesignValues::WidthCount] = {"majGridWidth", "minGridWidth"};

QLabel* labelFor(QWidget* control, const QString& text)
{
    auto* label = new QLabel(text);
    label->setBuddy(control);
    return label;
}

} // namespace

DesignPage::DesignPage(UserPrompt* prompt, QWidget* parent)
    : QWidget(parent)
    , prompt(prompt)
{
    auto* page = new QGridLayout(this);
    QGridLayout* grid = nullptr;
    page->addWidget(designGroup("groupDesignMain", tr("Kormelin"), &grid), 0, 0);
    addColor(grid, DesignValues::MainBackground);
    page->addWidget(designGroup("groupDesignGraph", tr("Graph"), &grid), 0, 1, 2, 1);
    for (const auto which :
         {DesignValues::GraphBackground, DesignValues::ActiveGraph, DesignValues::MajorGrid})
        addColor(grid, which);
    addWidth(grid, DesignValues::MajorGridWidth);
    addColor(grid, DesignValues::MinorGrid);
    addWidth(grid, DesignValues::MinorGridWidth);
    addPalette(grid);
    page->addWidget(designGroup("groupDesignTable", tr("Table"), &grid), 1, 0);
    for (const auto which : {DesignValues::TableTitle, DesignValues::TableEven, DesignValues::TableOdd})
        addColor(grid, which);
    page->addWidget(designGroup("groupDesignSetup", tr("Logger setup"), &grid), 2, 0, 1, 2);
    titlesSizeSpin = addTextSize(grid, "titlesSizeSpin", tr("Titles size"), 6, 24);
    valuesSizeSpin = addTextSize(grid, "valuesSizeSpin", tr("Values size"), 4, 16);
    connect(titlesSizeSpin, qOverload<int>(&QSpinBox::valueChanged), this, &loggerBasicSetup::setTitlesSize);
    connect(valuesSizeSpin, qOverload<int>(&QSpinBox::valueChanged), this, &loggerBasicSetup::setTextSize);

    saveButton = named(new QPushButton(tr("Save design")), "saveButton");
    defaultButton = named(new QPushButton(tr("Back to\ndefualt")), "defaultButton");
    designHint = named(new QLabel, "designHint");
    designHint->setWordWrap(true);
    for (QPushButton* button : {saveButton, defaultButton})
        button->setAutoDefault(false);
    connect(saveButton, &QPushButton::clicked, this, &DesignPage::save);
    connect(defaultButton, &QPushButton::clicked, this, &DesignPage::toPresets);
    page->addWidget(designHint, 3, 0, 1, 2);
    page->addWidget(defaultButton, 4, 0);
    page->addWidget(saveButton, 4, 1);
    page->setRowStretch(5, 1);
    modifyDesignDialog();
}

QGroupBox* DesignPage::designGroup(const char* name, const QString& title, QGridLayout** grid)
{
    auto* group = named(new QGroupBox(title), name);
    *grid = new QGridLayout(group);
    return group;
}

void DesignPage::addColor(QGridLayout* grid, DesignValues::ColorOf which)
{
    const ColorRow& row = colorRows[which];
    auto* button = named(new QPushButton, row.name, tr(row.title));
    button->setAutoDefault(false);
    button->setToolTip(tr(row.title));
    const int line = grid->rowCount();
    grid->addWidget(labelFor(button, tr(row.label)), line, 0);
    grid->addWidget(button, line, 1);
    connect(button, &QPushButton::clicked, this, [this, which] { pickColor(which); });
    colorButtons[which] = button;
}

void DesignPage::addWidth(QGridLayout* grid, DesignValues::WidthOf which)
{
    auto* spin = named(new QDoubleSpinBox, widthNames[which]);
    spin->setAccessibleName(which == DesignValues::MajorGridWidth ? tr("Width of major grid lines")
                                                                  : tr("Width of minor grid lines"));
    spin->setToolTip(spin->accessibleName());
    spin->setDecimals(1);
    spin->setRange(DesignValues::leastWidth, DesignValues::greatestWidth);
    spin->setSingleStep(0.1);
    const int line = grid->rowCount();
    grid->addWidget(labelFor(spin, tr("Width")), line, 0);
    grid->addWidget(spin, line, 1);
    connect(spin, qOverload<double>(&QDoubleSpinBox::valueChanged), this, [this, which](double width) {
        if (isFilling)
            return;
        DesignValues::width(which).set(width);
        tellDesign(DesignValues::Place::Graph);
    });
    widthSpins[which] = spin;
}

void DesignPage::addPalette(QGridLayout* grid)
{
    colorBlindBox = named(new QCheckBox(tr("Colors for color-blind viewers")), "colorBlindBox");
    colorBlindBox->setToolTip(tr("Eight curve colors that stay apart in every kind of color vision"));
    grid->addWidget(colorBlindBox, grid->rowCount(), 0, 1, 2);
    connect(colorBlindBox, &QCheckBox::clicked, this, [this](bool on) {
        ColorScale::setColorBlindPalette(on);
        tellDesign(DesignValues::Place::Graph);
    });
}

QSpinBox* DesignPage::addTextSize(QGridLayout* grid, const char* name, const QString& label, int least,
                                  int most)
{
    auto* spin = named(new QSpinBox, name, label);
    spin->setRange(least, most);
    const int column = grid->count() == 0 ? 0 : grid->columnCount();
    grid->addWidget(labelFor(spin, label), 0, column);
    grid->addWidget(spin, 0, column + 1);
    return spin;
}

void DesignPage::modifyDesignDialog()
{
    const QScopedValueRollback<bool> own(isFilling, true);
    for (int i = 0; i < DesignValues::ColorCount; ++i)
        showColor(i);
    for (int i = 0; i < DesignValues::WidthCount; ++i)
        widthSpins[i]->setValue(DesignValues::width(i).get());
    colorBlindBox->setChecked(ColorScale::isColorBlindPalette());
    titlesSizeSpin->setValue(loggerBasicSetup::getTitlesSize());
    valuesSizeSpin->setValue(loggerBasicSetup::getTextSize());
    showNotSaved();
}

void DesignPage::showNotSaved()
{
    designHint->setText(tr("A change shows at once. Save the design to keep it for the next start."));
}

void DesignPage::showColor(int which)
{
    const QColor color = DesignValues::color(which).get();
    colorButtons[which]->setStyleSheet(QStringLiteral("background-color: rgb(%1,%2,%3)")
                                           .arg(color.red())
                                           .arg(color.green())
                                           .arg(color.blue()));
    colorButtons[which]->setAccessibleDescription(color.name());
}

void DesignPage::pickColor(int which)
{
    const DesignValues::Color& design = DesignValues::color(which);
    const auto picked = prompt->color(this, tr(colorRows[which].title), design.get().rgba());
    if (!picked)
        return;
    design.set(QColor::fromRgb(*picked));
    showColor(which);
    tellDesign(design.place);
}

void DesignPage::tellDesign(DesignValues::Place place)
{
    showNotSaved();
    switch (place) {
    case DesignValues::Place::Main:
        Q_EMIT mainChanged();
        break;
    case DesignValues::Place::Graph:
        Q_EMIT graphChanged();
        break;
    case DesignValues::Place::Table:
        Q_EMIT tableChanged();
        break;
    }
}

void DesignPage::save()
{
    DesignValues::save();
    designHint->setText(tr("The design is saved."));
}

void DesignPage::toPresets()
{
    DesignValues::toPresets();
    modifyDesignDialog();
    for (const auto place :
         {DesignValues::Place::Main, DesignValues::Place::Graph, DesignValues::Place::Table})
        tellDesign(place);
}
