#include "instruments/meterselect.h"

#include "graph/setrange.h"
#include "instruments/metertypes.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QGridLayout>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr int typePicture = 56; // pixels
constexpr int sensorPicture = 32;

struct TypeRow
{
    const char* button;
    const char* name;
    const char* icon;
};

constexpr TypeRow typeRows[MAX_TYPES] = {
    {"buttonAnalog", QT_TRANSLATE_NOOP("meterSelect", "Dial"), ":/icons/meterDial.png"},
    {"buttonGauge", QT_TRANSLATE_NOOP("meterSelect", "Gauge"), ":/icons/meterGauge.png"},
    {"buttonThermo", QT_TRANSLATE_NOOP("meterSelect", "Thermometer"), ":/icons/meterThermo.png"},
    {"buttonBar", QT_TRANSLATE_NOOP("meterSelect", "Bar"), ":/icons/meterBar.png"},
    {"buttonRed", QT_TRANSLATE_NOOP("meterSelect", "Red bulb"), ":/icons/meterRed.png"},
    {"buttonBlue", QT_TRANSLATE_NOOP("meterSelect", "Blue bulb"), ":/icons/meterBlue.png"},
    {"buttonDigital", QT_TRANSLATE_NOOP("meterSelect", "Digits"), ":/icons/meterDigits.png"},
};

} // namespace

meterSelect::meterSelect(QWidget* parent)
    : QDialog(parent)
    , types(new QButtonGroup(this))
    , list(new QComboBox)
{
    setObjectName(QStringLiteral("meterSelect"));
    setWindowTitle(tr("Meter setup"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    auto* pictures = new QGridLayout;
    for (int type = 0; type < MAX_TYPES; ++type)
        addType(pictures, type);
    list->setObjectName(QStringLiteral("comboSensor"));
    list->setAccessibleName(tr("Sensor"));
    list->setIconSize(QSize(sensorPicture, sensorPicture));

    auto* buttons = new QHBoxLayout;
    const struct
    {
        const char* name;
        QString text;
        void (meterSelect::*slot)();
    } rowsOfButtons[] = {
        {"buttonRange", tr("Set Range"), &meterSelect::on_buttonRange_clicked},
        {"buttonOK", tr("OK"), &meterSelect::on_buttonOK_clicked},
        {"buttonCancel", tr("Cancel"), &meterSelect::on_buttonCancel_clicked},
    };
    for (const auto& row : rowsOfButtons) {
        auto* button = new QPushButton(row.text);
        button->setObjectName(QLatin1String(row.name));
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, row.slot);
        buttons->addWidget(button);
    }
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(pictures);
    layout->addWidget(list);
    layout->addLayout(buttons);
    findChild<QPushButton*>(QStringLiteral("buttonOK"))->setDefault(true);
}

void meterSelect::addType(QGridLayout* layout, int type)
{
    const TypeRow& row = typeRows[type];
    auto* button = new QToolButton;
    button->setObjectName(QLatin1String(row.button));
    button->setAccessibleName(tr(row.name));
    button->setToolTip(tr(row.name));
    button->setIcon(QIcon(QLatin1String(row.icon)));
    button->setIconSize(QSize(typePicture, typePicture));
    button->setCheckable(true);
    types->addButton(button, type);
    layout->addWidget(button, 0, type);
}

void meterSelect::addRow(const Row& row, const QString& icon)
{
    rows.append(row);
    list->addItem(QIcon(icon), row.actual);
}

void meterSelect::setData(int id, int type, int index, int virt, const SensorList& sensors)
{
    meter = id;
    if (QAbstractButton* button = types->button(type))
        button->setChecked(true);
    rows.clear();
    list->clear();
    startRow = -1;
    for (int i = 0; i < sensors.size(); ++i) {
        const Sensor& sensor = *sensors.at(i);
        const int children = sensor.hasVirtual ? sensor.virtualSensorsNames.size() : 0;
        if (i == index)
            startRow = rows.size() + qBound(0, virt, qMax(0, children - 1));
        if (!sensor.hasVirtual)
            addRow({sensor.name, sensor.name, i, 0, sensor.min, sensor.max}, sensor.iconNameColor);
        for (int child = 0; child < children; ++child)
            addRow({sensor.name, sensor.virtualSensorsNames.at(child), i, child,
                    sensor.virtualSensorsMin.value(child), sensor.virtualSensorsMax.value(child)},
                   sensor.iconNameColor);
    }
    list->setCurrentIndex(startRow);
    list->setStyleSheet(QStringLiteral("QComboBox { border-top: 1px solid black;\n"
                                       "border-left: 1px solid black;\n"
                                       "border-bottom: 1px solid white;\n"
                                       "border-right: 1px solid white; }"));
}

void meterSelect::setRangeInForce(double min, double max)
{
    isRangeInForce = true;
    minInForce = min;
    maxInForce = max;
}

void meterSelect::on_buttonOK_clicked()
{
    meterType = types->checkedId();
    if (list->currentIndex() >= 0) {
        const Row& row = rows.at(list->currentIndex());
        sensMasterName = row.master;
        sensActualName = row.actual;
        sensMasterIndex = row.index;
        sensVirtNum = row.virt;
    }
    done(Accepted);
}

void meterSelect::on_buttonCancel_clicked()
{
    done(Rejected);
}

void meterSelect::on_buttonRange_clicked()
{
    if (list->currentIndex() < 0)
        return;
    const Row& row = rows.at(list->currentIndex());
    const bool isKept = isRangeInForce && list->currentIndex() == startRow;
    auto* dialog = new SetRange(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->sensName(tr("%1 Sensor").arg(row.actual));
    dialog->Params(isKept ? minInForce : row.min, isKept ? maxInForce : row.max, row.min, row.max, &newmin,
                   &newmax);
    connect(dialog, &QDialog::accepted, this, &meterSelect::on_buttonOK_clicked);
    connect(dialog, &QDialog::rejected, this, [this] { newmin = newmax = 0; });
    dialog->open();
}
