#include "setup/loggerbasicsetup.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>

#include "classroom/multiconnectionsmanager.h"
#include "common/common.h"
#include "common/screenflags.h"
#include "protocol/tembrindata.h"
#include "protocol/tembrinprotocol.h"
#include "setup/classlink.h"
#include "setup/dialogtools.h"

using DialogTools::named;
using DialogTools::sized;

namespace {

const QSize basicDialogSize(510, 546);
constexpr int mostPictureEdge = 256;
constexpr int usualIcon = 32;
constexpr int listPadding = 14; ///< pixels that a list needs above and below its text

QLabel* picture(const QString& path, const char* name, const QString& spoken, int edge)
{
    auto* label = named(new QLabel, name, spoken);
    const int most = qMin(edge, mostPictureEdge);
    label->setPixmap(QPixmap(path).scaled(most, most, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    return label;
}

} // namespace

int loggerBasicSetup::titlesSize = 12;
int loggerBasicSetup::textSize = 9;

loggerBasicSetup::loggerBasicSetup(UserPrompt* prompt, QWidget* parent)
    : QDialog(parent)
    , prompt(prompt)
    , iconDim(ScreenFlags::is4K() ? 2 * usualIcon : usualIcon)
{
    named(this, "loggerBasicSetup");
    setWindowTitle(tr("Logger setup"));
    DialogTools::applyLook(this);
    createWidgets();
    createPhotogate();
    createLayout();
}

void loggerBasicSetup::createWidgets()
{
    groupBoxSensors = named(new QGroupBox(tr("Select Sensors")), "groupBoxSensors");
    auto* rows = new QWidget;
    vboxSensors = new QVBoxLayout(rows);
    vboxSensors->setObjectName(QStringLiteral("vboxSensors"));
    vboxSensors->setContentsMargins(0, 0, 0, 0);
    sensorArea = named(DialogTools::scrolled(rows), "sensorArea");

    labelRate = named(new QLabel(tr("Rate")), "labelRate");
    comboRate = named(new QComboBox, "comboRate", tr("Rate"));
    labelSamples = named(new QLabel(tr("Samples")), "labelSamples");
    comboSamples = named(new QComboBox, "comboSamples", tr("Samples"));
    labelRate->setBuddy(comboRate);
    labelSamples->setBuddy(comboSamples);
    runLength = named(new QLabel, "runLength");
    runLength->setWordWrap(true);
    invertForceBox = named(new QCheckBox(tr("Invert Force")), "invertForceBox");

    warnings = named(new QLabel, "setupWarnings");
    warnings->setProperty("isWarning", true);
    warnings->setWordWrap(true);
    hint = named(new QLabel, "setupHint");
    hint->setWordWrap(true);
    Exit = named(new QPushButton(tr("Exit")), "Exit");
    Exit->setAutoDefault(false);
}

void loggerBasicSetup::createPhotogate()
{
    photogateGroupBox = named(new QGroupBox(tr("Photogate options")), "photogateGroupBox");
    photogateGroupBox->setCheckable(true);
    photogateGroupBox->setChecked(false);
    gateIcon = picture(QStringLiteral(":/dialog/icons/Dialog/Width_icon.png"), "gateIcon",
                       tr("A card and its width"), 2 * iconDim);
    diagram =
        picture(Sensor::vestrelIconForID(QUELLMARK_PHOTOGATE), "diagram", tr("A photogate"), 2 * iconDim);
    labelCardWidth = named(new QLabel(tr("Card width")), "labelCardWidth");
    cardWidthLineEdit = named(new QLineEdit(QStringLiteral("0.05")), "cardWidthLineEdit");
    labelCardWidth->setBuddy(cardWidthLineEdit);
    cardWidthUnit = named(new QLabel(tr("m")), "labelCardWidthUnit");
    cardWidthHint = named(new QLabel(tr("The width must be a number above 0.")), "cardWidthHint");
    cardWidthHint->setProperty("isWarning", true);
    cardWidthHint->setWordWrap(true);

    auto* layout = new QGridLayout(photogateGroupBox);
    layout->addWidget(diagram, 0, 0, 2, 1);
    layout->addWidget(gateIcon, 0, 1, 2, 1);
    layout->addWidget(labelCardWidth, 0, 2);
    layout->addWidget(cardWidthLineEdit, 0, 3);
    layout->addWidget(cardWidthUnit, 0, 4);
    layout->addWidget(cardWidthHint, 1, 2, 1, 3);
    layout->setColumnStretch(3, 1);
}

void loggerBasicSetup::createLayout()
{
    auto* sensorLayout = new QVBoxLayout(groupBoxSensors);
    sensorLayout->addWidget(sensorArea);

    auto* lists = new QGridLayout;
    lists->addWidget(labelRate, 0, 0);
    lists->addWidget(labelSamples, 0, 1);
    lists->addWidget(comboRate, 1, 0);
    lists->addWidget(comboSamples, 1, 1);
    lists->addWidget(runLength, 2, 0, 1, 2);
    lists->setColumnStretch(0, 1);
    lists->setColumnStretch(1, 1);

    auto* below = new QHBoxLayout;
    below->addWidget(hint, 1);
    below->addWidget(Exit, 0, Qt::AlignBottom);

    auto* all = new QVBoxLayout(this);
    all->addWidget(groupBoxSensors, 1);
    all->addLayout(lists);
    all->addWidget(invertForceBox);
    all->addWidget(photogateGroupBox);
    all->addWidget(warnings);
    all->addLayout(below);
}

void loggerBasicSetup::createAll(multiConnectionsManager* manager)
{
    mTembrin = manager;
    link = new ClassLink(manager, this);
    cardWidthLineEdit->setText(Common::myToString(link->leader()->photoObjW, 'g', 6));
    connectControls();
    modifyAll();
    setTitleFonts();
    dontOpenFlag = isRefused();
    DialogTools::fitToScreen(this, basicDialogSize, {sensorArea});
}

void loggerBasicSetup::connectControls()
{
    connect(comboRate, qOverload<int>(&QComboBox::currentIndexChanged), this, &loggerBasicSetup::rateChosen);
    connect(comboSamples, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &loggerBasicSetup::samplesChosen);
    connect(invertForceBox, &QCheckBox::clicked, this, &loggerBasicSetup::invertForceChosen);
    connect(photogateGroupBox, &QGroupBox::clicked, this, &loggerBasicSetup::photoGateChanged);
    connect(cardWidthLineEdit, &QLineEdit::textChanged, this, &loggerBasicSetup::takePhotogate);
    connect(Exit, &QPushButton::clicked, this, &loggerBasicSetup::on_Exit_clicked);
    connect(link, &ClassLink::changed, this, &loggerBasicSetup::modifyAll);
}

/// The rows of the sensors, anew when the logger has told of another list.
void loggerBasicSetup::fillSensors()
{
    sensBoxes.clear();
    comboBoxes = {nullptr, nullptr};
    while (QLayoutItem* item = vboxSensors->takeAt(0)) {
        if (QWidget* row = item->widget()) {
            row->hide();
            row->deleteLater(); // a box of it may be what told of the change
        }
        delete item;
    }
    for (int i = 0; i < shownSensors.size(); ++i)
        vboxSensors->addWidget(createSensorRow(i));
    vboxSensors->addStretch(1);
}

QWidget* loggerBasicSetup::createSensorRow(int i)
{
    const ClassPlan::Channel& channel = link->plan.channels()[i];
    const Sensor sensor(channel.id);
    auto* box = new QCheckBox(sensor.name);
    box->setObjectName(QStringLiteral("sensBox%1").arg(i + 1));
    box->setFont(sized(comboRate->font(), textSize));
    box->setIcon(QIcon(sensor.iconNameColor));
    box->setIconSize(QSize(iconDim, iconDim));
    connect(box, &QCheckBox::clicked, this, [this, i](bool isOn) { ticked(i, isOn); });
    sensBoxes.append(box);
    if (channel.socket < 0)
        return box;

    auto* row = new QSplitter(Qt::Horizontal);
    row->setChildrenCollapsible(false);
    row->addWidget(box);
    row->addWidget(createSocketList(channel.socket));
    row->setStretchFactor(1, 1);
    DialogTools::keepFromWheel(row);
    return row;
}

QComboBox* loggerBasicSetup::createSocketList(int socket)
{
    auto* list = new QComboBox;
    list->setObjectName(QStringLiteral("socketList%1").arg(socket + 1));
    list->setAccessibleName(tr("Sensor in socket %1").arg(socket + 1));
    list->setFont(sized(comboRate->font(), textSize));
    list->setMaximumHeight(qMax(iconDim, list->fontMetrics().height() + listPadding));
    list->addItems(Sensor::vernierList());
    connect(list, qOverload<int>(&QComboBox::currentIndexChanged), this,
            [this, socket](int index) { plugVernier(socket, index); });
    comboBoxes[socket] = list;
    return list;
}

void loggerBasicSetup::setTitleFonts()
{
    QFont titles = sized(labelRate->font(), titlesSize);
    titles.setBold(false);
    const QFont values = sized(comboRate->font(), textSize);
    for (QWidget* title : {static_cast<QWidget*>(groupBoxSensors), static_cast<QWidget*>(labelRate),
                           static_cast<QWidget*>(labelSamples), static_cast<QWidget*>(invertForceBox),
                           static_cast<QWidget*>(photogateGroupBox)})
        title->setFont(titles);
    for (QWidget* value : {static_cast<QWidget*>(comboRate), static_cast<QWidget*>(comboSamples),
                           static_cast<QWidget*>(runLength), static_cast<QWidget*>(labelCardWidth),
                           static_cast<QWidget*>(cardWidthLineEdit), static_cast<QWidget*>(cardWidthUnit),
                           static_cast<QWidget*>(cardWidthHint), static_cast<QWidget*>(warnings),
                           static_cast<QWidget*>(hint), static_cast<QWidget*>(Exit)})
        value->setFont(values);
}
