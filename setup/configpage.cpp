#include "setup/configpage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QScopedValueRollback>
#include <QSpinBox>
#include <QVBoxLayout>

#include "data/derivedcurve.h"
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

constexpr int fewest = 3; // samples of a window
constexpr int mostSmoothed = 11;

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
    smootSpinBox =
        addOdd(form, tr("Smooth kernel size"), "smootSpinBox", mostSmoothed, &ConfigPage::kernelChosen);
    derivSpinBox = addOdd(form, tr("Derivative window size"), "derivSpinBox", DerivedCurve::mostWindow,
                          &ConfigPage::windowChosen);
    derivSpinBox->setToolTip(tr("How many neighboring samples give the slope at a point; more of them make "
                                "the derivative of a noisy curve smoother."));
    return row;
}

/// Only an odd number of samples has a middle one; somebody may type another.
QSpinBox* ConfigPage::addOdd(QFormLayout* form, const QString& label, const char* name, int most,
                             void (ConfigPage::*told)(int))
{
    QSpinBox* const spin = addRow(form, label, DialogTools::counter(fewest, most, fewest), name);
    spin->setSingleStep(2);
    spin->setKeyboardTracking(false);
    connect(spin, qOverload<int>(&QSpinBox::valueChanged), this, [this, spin, told](int size) {
        if (isFilling)
            return;
        if (size % 2 == 0)
            spin->setValue(size + 1);
        else
            Q_EMIT(this->*told)(size);
    });
    return spin;
}

void ConfigPage::show(const ClassPlan& plan, bool isBasic, int kernel, int window)
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
    derivSpinBox->setValue(window);
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
