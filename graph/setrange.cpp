#include "graph/setrange.h"

#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

SetRange::SetRange(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("SetRange"));
    setWindowTitle(tr("Set range"));

    title = new QLabel(this);
    title->setObjectName(QStringLiteral("title"));
    QFont font = title->font();
    font.setPointSize(14);
    title->setFont(font);

    auto* form = new QFormLayout;
    minval = addField(form, tr("Minimum value"), QStringLiteral("minval"), 10000);
    maxval = addField(form, tr("Maximum Value"), QStringLiteral("maxval"), 50000);

    buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setObjectName(QStringLiteral("buttonBox"));
    QPushButton* defaultButton = buttons->addButton(tr("Default"), QDialogButtonBox::ResetRole);
    defaultButton->setObjectName(QStringLiteral("buttonDefault"));
    QPushButton* reverseButton = buttons->addButton(tr("Reverse"), QDialogButtonBox::ActionRole);
    reverseButton->setObjectName(QStringLiteral("buttonReverse"));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addLayout(form);
    layout->addWidget(buttons);

    connect(minval, &QDoubleSpinBox::editingFinished, this,
            [this] { takeEdited(minval, shownMin, resultMin); });
    connect(maxval, &QDoubleSpinBox::editingFinished, this,
            [this] { takeEdited(maxval, shownMax, resultMax); });
    connect(defaultButton, &QPushButton::clicked, this, [this] { showRange(defaultMin, defaultMax); });
    connect(reverseButton, &QPushButton::clicked, this, &SetRange::reverse);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void SetRange::offerAutomatic()
{
    QPushButton* button = buttons->addButton(tr("Automatic"), QDialogButtonBox::ResetRole);
    button->setObjectName(QStringLiteral("buttonAutomatic"));
    button->setToolTip(tr("The range follows the data again"));
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this] {
        automaticChosen = true;
        accept();
    });
}

QDoubleSpinBox* SetRange::addField(QFormLayout* form, const QString& label, const QString& name, double top)
{
    auto* field = new QDoubleSpinBox(this);
    field->setObjectName(name);
    field->setAccessibleName(label);
    field->setDecimals(3);
    field->setRange(-100, top);
    form->addRow(label, field);
    return field;
}

void SetRange::sensName(const QString& text)
{
    title->setText(text);
}

void SetRange::Params(double curmin, double curmax, double defmin, double defmax, double* setmin,
                      double* setmax)
{
    defaultMin = defmin;
    defaultMax = defmax;
    resultMin = setmin;
    resultMax = setmax;
    // Some sensors reach further than the usual bounds; either field may hold either end after a reversal.
    const auto [low, high] = std::minmax({curmin, curmax, defmin, defmax});
    for (QDoubleSpinBox* field : {minval, maxval})
        field->setRange(std::min(field->minimum(), low), std::max(field->maximum(), high));
    showRange(curmin, curmax);
}

void SetRange::showRange(double min, double max)
{
    minval->setValue(min);
    maxval->setValue(max);
    shownMin = minval->value();
    shownMax = maxval->value();
    if (resultMin)
        *resultMin = min;
    if (resultMax)
        *resultMax = max;
}

void SetRange::takeEdited(const QDoubleSpinBox* field, double& shown, double* result)
{
    // The field rounds what it shows; leaving it untouched must not round the range.
    if (!result || field->value() == shown)
        return;
    shown = *result = field->value();
}

void SetRange::reverse()
{
    if (resultMin && resultMax)
        showRange(*resultMax, *resultMin);
}
