#include "app/statistics.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

statistics::statistics(QWidget* parent)
    : QDialog(parent)
    , title(new QLabel)
{
    setObjectName(QStringLiteral("statistics"));
    setWindowTitle(tr("Statistics"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    title->setObjectName(QStringLiteral("title"));
    auto* const grid = new QGridLayout;
    addField(grid, tr("Minimum"), "minimum");
    addField(grid, tr("Maximum"), "maximum");
    addField(grid, tr("Average"), "average");
    addField(grid, tr("Standard Deviation"), "deviation");
    addField(grid, tr("Number of samples"), "samples");
    addField(grid, tr("Sampling rate"), "rate");
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    auto* const copyButton = buttons->addButton(tr("Copy"), QDialogButtonBox::ActionRole);
    copyButton->setObjectName(QStringLiteral("copy"));
    connect(copyButton, &QPushButton::clicked, this, &statistics::copy);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addLayout(grid);
    layout->addWidget(buttons);
}

void statistics::addField(QGridLayout* grid, const QString& label, const char* name)
{
    auto* const value = new QLabel;
    value->setObjectName(QLatin1String(name));
    value->setTextInteractionFlags(Qt::TextSelectableByMouse);
    labels.append(new QLabel(label));
    values.append(value);
    grid->addWidget(labels.last(), labels.size() - 1, 0);
    grid->addWidget(value, labels.size() - 1, 1);
}

void statistics::update(const QString& sensName, double min, double max, double avg, double stdv, int nSamp,
                        const QString& rate)
{
    title->setText(tr("%1 sensor statistics").arg(sensName));
    const QString texts[] = {QStringLiteral("%L1").arg(min),
                             QStringLiteral("%L1").arg(max),
                             QStringLiteral("%L1").arg(avg, 0, 'f', 1),
                             QStringLiteral("%L1").arg(stdv, 0, 'f', 1),
                             QString::number(nSamp),
                             rate};
    for (int i = 0; i < values.size(); ++i)
        values[i]->setText(texts[i]);
}

void statistics::copy() const
{
    QString text = title->text() + QLatin1Char('\n');
    for (int i = 0; i < values.size(); ++i)
        text += QStringLiteral("%1=%2\n").arg(labels[i]->text(), values[i]->text());
    QGuiApplication::clipboard()->setText(text);
}
