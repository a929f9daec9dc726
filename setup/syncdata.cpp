#include "setup/syncdata.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QSlider>

#include "setup/dialogtools.h"

namespace {

constexpr int usualWidth = 520;

/// How far the slider goes, for experiments with at least `from` seconds between samples.
struct SliderRange
{
    float from;
    const char* unit;
    int samples; ///< to either side
    int label;   ///< the same in the unit
};

constexpr SliderRange ranges[] = {
    {60.0F, QT_TRANSLATE_NOOP("SyncData", "samples"), 100, 100},
    {1.0F, QT_TRANSLATE_NOOP("SyncData", "sec"), 20, 20},
    {0.1F, QT_TRANSLATE_NOOP("SyncData", "sec"), 100, 10},
    {0.04F, QT_TRANSLATE_NOOP("SyncData", "sec"), 100, 4},
    {0.001F, QT_TRANSLATE_NOOP("SyncData", "sec"), 200, 2},
};

const SliderRange& rangeFor(float dt)
{
    for (const SliderRange& range : ranges) {
        if (dt >= range.from)
            return range;
    }
    return ranges[0]; // too fast for times, as the slowest is too slow
}

} // namespace

SyncData::SyncData(float dt, QWidget* parent)
    : QDialog(parent)
    , horizontalSlider(DialogTools::named(new QSlider(Qt::Horizontal, this), "horizontalSlider",
                                          tr("Time of newly added experiment")))
{
    setObjectName(QStringLiteral("SyncData"));
    setWindowTitle(tr("Append experiment"));
    DialogTools::applyLook(this);
    const SliderRange& range = rangeFor(dt);
    horizontalSlider->setRange(-range.samples, range.samples);
    horizontalSlider->setTickPosition(QSlider::TicksBelow);
    horizontalSlider->setTickInterval(range.samples);
    connect(horizontalSlider, &QSlider::valueChanged, this, &SyncData::changeSyncValue);
    createLayout(range.label, tr(range.unit));
    DialogTools::fitToScreen(this, QSize(usualWidth, 0));
}

void SyncData::createLayout(int label, const QString& unit)
{
    const QString time = tr("%1 %2", "number, unit");
    auto* group = new QGroupBox(tr("Adjust time of newly added experiment"), this);
    auto* left = DialogTools::named(new QLabel(time.arg(-label).arg(unit)), "labelLeft");
    auto* middle = DialogTools::named(new QLabel(QString::number(0)), "labelMiddle");
    auto* right = DialogTools::named(new QLabel(time.arg(label).arg(unit)), "labelRight");
    auto* inGroup = new QGridLayout(group);
    inGroup->addWidget(horizontalSlider, 0, 0, 1, 3);
    inGroup->addWidget(left, 1, 0, Qt::AlignLeft);
    inGroup->addWidget(middle, 1, 1, Qt::AlignHCenter);
    inGroup->addWidget(right, 1, 2, Qt::AlignRight);
    inGroup->setColumnStretch(0, 1); // so that 0 stands under the middle of the slider
    inGroup->setColumnStretch(2, 1);

    auto* buttons = DialogTools::named(
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::RestoreDefaults), "buttonBox");
    connect(buttons, &QDialogButtonBox::accepted, this, &SyncData::accept);
    connect(buttons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, horizontalSlider,
            [this] { horizontalSlider->setValue(0); });

    auto* all = new QVBoxLayout(this);
    all->addWidget(group);
    all->addWidget(buttons);
}
