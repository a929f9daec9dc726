#include "setup/configpage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QScopedValueRollback>
#include <QSpinBox>
#include <QVBoxLayout>

#include "setup/dialogtools.h"
#include "setup/unitgroups.h"

using DialogTools::addRow;
using DialogTools::named;

namespace {

const char* const languages[] = {
    QT_TRANSLATE_NOOP("ConfigPage", "English"),
    QT_TRANSLATE_NOOP("ConfigPage", "Spanish"),
    QT_TRANSLATE_NOOP("ConfigPage", "Russian"),
    QT_TRANSLATE_NOOP("ConfigPage", "Portuguese"),
};

} // namespace

ConfigPage::ConfigPage(QWidget* parent)
    : QWidget(parent)
    , units(new UnitGroups)
{
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(createLoggerGroup());
    layout->addWidget(units);
    layout->addWidget(createSmoothing());
    layout->addStretch(1);

    connect(boxSound, &QCheckBox::clicked, this, [this] { Q_EMIT chosen(ClassPlan::Sound); });
    connect(boxGPS, &QCheckBox::clicked, this, [this] { Q_EMIT chosen(ClassPlan::Gps); });
    connect(comboLanguage, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] {
        if (!isFilling)
            Q_EMIT chosen(ClassPlan::Language);
    });
    connect(units, &UnitGroups::chosen, this, &ConfigPage::unitChosen);
    connect(smootSpinBox, qOverload<int>(&QSpinBox::valueChanged), this, &ConfigPage::takeKernel);
}

QGroupBox* ConfigPage::createLoggerGroup()
{
    auto* group = named(new QGroupBox(tr("All loggers")), "groupLoggers");
    QFormLayout* form = DialogTools::formIn(group);
    boxSound = named(new QCheckBox(tr("Sound enabled")), "boxSound");
    boxGPS = named(new QCheckBox(tr("GPS enabled")), "boxGPS");
    form->addRow(boxSound);
    form->addRow(boxGPS);
    comboLanguage = addRow(form, tr("Interface Language"), new QComboBox, "comboLanguage");
    for (const char* language : languages)
        comboLanguage->addItem(tr(language));
    return group;
}

QWidget* ConfigPage::createSmoothing()
{
    auto* row = new QWidget;
    QFormLayout* form = DialogTools::formIn(row);
    form->setContentsMargins(0, 0, 0, 0);
    smootSpinBox = addRow(form, tr("Smooth kernel size"), DialogTools::counter(3, 11, 3), "smootSpinBox");
    smootSpinBox->setSingleStep(2);
    smootSpinBox->setKeyboardTracking(false);
    return row;
}

void ConfigPage::show(const ClassPlan& plan, bool isBasic, int kernel)
{
    const QScopedValueRollback<bool> own(isFilling, true);
    const LoggerSettings& conf = plan.settings();
    boxSound->setVisible(!isBasic);
    boxGPS->setVisible(!isBasic);
    boxSound->setChecked(conf.sound);
    boxGPS->setChecked(conf.gps);
    comboLanguage->setCurrentIndex(conf.language < comboLanguage->count() ? conf.language : -1);
    units->load();
    smootSpinBox->setValue(kernel);
}

LoggerSettings ConfigPage::shown(LoggerSettings before) const
{
    before.sound = boxSound->isChecked();
    before.gps = boxGPS->isChecked();
    if (comboLanguage->currentIndex() >= 0)
        before.language = comboLanguage->currentIndex();
    before.fahrenheit = units->isFahrenheit();
    before.hpa = units->isHpa();
    return before;
}

/// Only an odd number of samples has a middle one; somebody may type another.
void ConfigPage::takeKernel(int size)
{
    if (isFilling)
        return;
    if (size % 2 == 0)
        smootSpinBox->setValue(size + 1);
    else
        Q_EMIT kernelChosen(size);
}
