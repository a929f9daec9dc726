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
#include "setup/dialogtools.h"
#include "setup/ratechoice.h"

using DialogTools::named;
using DialogTools::sized;

namespace {

const QSize basicDialogSize(510, 546);
constexpr int mostPictureEdge = 256;
constexpr int usualIcon = 32;
constexpr int listPadding = 14;   ///< pixels that a list needs above and below its text
constexpr int samplesOffered = 4; ///< to all but Vorta loggers

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
    all->addLayout(below);
}

void loggerBasicSetup::createAll(multiConnectionsManager* manager)
{
    mTembrin = manager;
    tembrin = manager->tembrinAt(0);
    tembrinData = tembrin->tembrinData;
    photogateGroupBox->setChecked(tembrinData->photogateEnabled);
    cardWidthLineEdit->setText(Common::myToString(tembrinData->photoObjW, 'g', 6));
    fillSensors();
    fillLists();
    connectControls();
    const auto atFirst = selection();
    modifyAll();
    if (isBusy() && selection() != atFirst)
        refuse();
    isReady = true;
    setTitleFonts();
    DialogTools::fitToScreen(this, basicDialogSize, {sensorArea});
}

void loggerBasicSetup::connectControls()
{
    for (QComboBox* list : {comboRate, comboSamples})
        connect(list, qOverload<int>(&QComboBox::currentIndexChanged), this,
                qOverload<int>(&loggerBasicSetup::somethingChanged));
    connect(invertForceBox, &QCheckBox::clicked, this, qOverload<>(&loggerBasicSetup::somethingChanged));
    connect(photogateGroupBox, &QGroupBox::clicked, this, &loggerBasicSetup::photoGateChanged);
    connect(cardWidthLineEdit, &QLineEdit::textChanged, this, &loggerBasicSetup::takePhotogate);
    connect(Exit, &QPushButton::clicked, this, &loggerBasicSetup::on_Exit_clicked);
}

/// The rows of the sensors, anew when the logger has told of another list.
void loggerBasicSetup::fillSensors()
{
    sensors = tembrinData->getSensors();
    sensBoxes.clear();
    comboBoxes = {nullptr, nullptr};
    while (QLayoutItem* item = vboxSensors->takeAt(0)) {
        if (QWidget* row = item->widget()) {
            row->hide();
            row->deleteLater(); // a box of it may be what told of the change
        }
        delete item;
    }
    for (int i = 0; i < sensors.size(); ++i)
        vboxSensors->addWidget(createSensorRow(i));
    vboxSensors->addStretch(1);
}

QWidget* loggerBasicSetup::createSensorRow(int i)
{
    const Sensor& sensor = *sensors[i];
    auto* box = new QCheckBox(sensor.name);
    box->setObjectName(QStringLiteral("sensBox%1").arg(i + 1));
    box->setFont(sized(comboRate->font(), textSize));
    box->setIcon(QIcon(sensor.iconNameColor));
    box->setIconSize(QSize(iconDim, iconDim));
    connect(box, &QCheckBox::clicked, this, qOverload<>(&loggerBasicSetup::somethingChanged));
    sensBoxes.append(box);
    if (!isSocket(i))
        return box;

    auto* row = new QSplitter(Qt::Horizontal);
    row->setChildrenCollapsible(false);
    row->addWidget(box);
    row->addWidget(createSocketList(i));
    row->setStretchFactor(1, 1);
    DialogTools::keepFromWheel(row);
    return row;
}

QComboBox* loggerBasicSetup::createSocketList(int i)
{
    const bool first = tembrinData->isExtSens1(i);
    auto* list = new QComboBox;
    list->setObjectName(first ? QStringLiteral("socketList1") : QStringLiteral("socketList2"));
    list->setAccessibleName(tr("Sensor in socket %1").arg(first ? 1 : 2));
    list->setFont(sized(comboRate->font(), textSize));
    list->setMaximumHeight(qMax(iconDim, list->fontMetrics().height() + listPadding));
    list->addItems(Sensor::vernierList());
    list->setCurrentIndex(socketEntry(i));
    connect(list, qOverload<int>(&QComboBox::currentIndexChanged), this,
            first ? &loggerBasicSetup::vernierChanged : &loggerBasicSetup::vernierChanged2);
    comboBoxes[first ? 0 : 1] = list;
    return list;
}

void loggerBasicSetup::fillLists()
{
    isVortaShown = tembrinData->isVorta();
    rates = RateChoice::offered(*tembrinData);
    const QSignalBlocker quietRate(comboRate);
    const QSignalBlocker quietSamples(comboSamples);
    comboRate->clear();
    comboSamples->clear();
    if (isVortaShown) {
        for (int i = 1; i < RateTables::vortaCount; ++i)
            comboRate->addItem(tembrinData->VortaRateNames[i]);
    } else {
        for (const short rate : qAsConst(rates))
            comboRate->addItem(tembrinData->RateNames[rate]);
    }
    const int counts = isVortaShown ? int(std::size(tembrinData->SamplesNames)) : samplesOffered;
    for (int i = 0; i < counts; ++i)
        comboSamples->addItem(tembrinData->SamplesNames[i]);
    comboRate->setCurrentIndex(isVortaShown ? 0 : 2);
    comboSamples->setCurrentIndex(1);
    invertForceBox->setVisible(isVortaShown);
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
    for (QWidget* value :
         {static_cast<QWidget*>(comboRate), static_cast<QWidget*>(comboSamples),
          static_cast<QWidget*>(runLength), static_cast<QWidget*>(labelCardWidth),
          static_cast<QWidget*>(cardWidthLineEdit), static_cast<QWidget*>(cardWidthUnit),
          static_cast<QWidget*>(cardWidthHint), static_cast<QWidget*>(hint), static_cast<QWidget*>(Exit)})
        value->setFont(values);
}
