#include "simulation/simulsetup.h"

#include "common/common.h"
#include "simulation/ballitem.h"
#include "simulation/pendulumitem.h"
#include "simulation/simulations.h"
#include "simulation/simwebview.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QSplitter>
#include <QStyle>

#include <cmath>

namespace {

constexpr int firstPage = 2;          // place of the first web page
constexpr double mostDamping = 0.999; // a pendulum that stops at once shows nothing
constexpr double secondsOfDamping = 2;
constexpr double gravities[] = {0, 1.62, 9.8, 24.79}; // m/s²: none, Moon, Earth, Jupiter
constexpr const char* planetNames[] = {"None", "Moon", "Earth", "Jupiter"};
constexpr int earth = 2;
constexpr const char* widestNumber = "-20.00";

QString number(double value, int decimals)
{
    return Common::myToString(value, 'f', decimals);
}

} // namespace

simulSetup::simulSetup(simulations* simScene, QSplitter* vLayout, QSplitter* graph, QWidget* parent)
    : QStackedWidget(parent)
    , scene(simScene)
    , vLayout(vLayout)
    , graph(graph)
{
    setObjectName(QStringLiteral("simulSetup"));
    setStyleSheet(QStringLiteral("background: rgb(240, 240, 240); color: black;"));
    addWidget(createFreeFall());
    addWidget(createPendulum());
    listen();
    setValues();
    setStartIcon();
}

// --- The controls ---

QWidget* simulSetup::createFreeFall()
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("tabFreeFall"));
    auto* grid = new QGridLayout(page);
    speed = addSlider(grid, "FFV0lSlider", "FFV0lineEdit", tr("Initial Velocity"), -20, 20, 0, tr("m/s"));
    energy = addSlider(grid, "FFEnergySlider", "FFEnergyLineEdit", tr("Damp factor"), 0, 100, 10, QString());
    // Energy is told for it.
    addText(grid, grid->rowCount(), "FFMassLineEdit", tr("Mass"), tr("Kg"))->setText(number(1, 0));
    addPlanets(grid, "FF", {tr("Moon"), tr("Earth"), tr("Jupiter")}, &fallPlanets);
    addButtons(grid, "FFStartButton", "FFrestartButton");
    return page;
}

QWidget* simulSetup::createPendulum()
{
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("tabPendulum"));
    auto* grid = new QGridLayout(page);
    length = addSlider(grid, "PNDLengthSlider", "PNDLenghLineEdit", tr("Length"), 2, 20, 15, tr("m"));
    mass = addSlider(grid, "PNDMassSlider", "PNDMassLineEdit", tr("Mass"), 1, 20, 10, tr("Kg"));
    damping = addSlider(grid, "PNDDampSlider", "PNDDampLineEdit", tr("Damp factor"), 0, 100, 10, QString());
    addPlanets(grid, "PND", {tr("None"), tr("Moon"), tr("Earth"), tr("Jupiter")}, &pendulumPlanets);
    addButtons(grid, "PNDstartButton", "PNDrestartButton");
    return page;
}

simulSetup::Slider simulSetup::addSlider(QGridLayout* grid, const char* slider, const char* edit,
                                         const QString& label, int least, int most, int start,
                                         const QString& unit)
{
    const int row = grid->rowCount();
    auto* bar = new QSlider(Qt::Horizontal);
    bar->setObjectName(QLatin1String(slider));
    bar->setAccessibleName(unit.isEmpty() ? label : tr("%1 in %2").arg(label, unit));
    bar->setRange(least, most);
    bar->setValue(start);
    bar->setPageStep((most - least) / 10);
    grid->addWidget(bar, row, 1, 1, 2);
    return {bar, addText(grid, row, edit, label, unit)};
}

/// The value beside a slider; it is set by the slider alone.
QLineEdit* simulSetup::addText(QGridLayout* grid, int row, const char* name, const QString& label,
                               const QString& unit)
{
    auto* edit = new QLineEdit;
    edit->setObjectName(QLatin1String(name));
    edit->setAccessibleName(label);
    edit->setReadOnly(true);
    edit->setFocusPolicy(Qt::NoFocus);
    edit->setAlignment(Qt::AlignRight);
    grid->addWidget(new QLabel(label), row, 0);
    grid->addWidget(edit, row, 3);
    grid->addWidget(new QLabel(unit), row, 4);
    return edit;
}

void simulSetup::addPlanets(QGridLayout* grid, const char* prefix, const QStringList& names,
                            QVector<Planet>* planets)
{
    auto* line = new QHBoxLayout;
    const int without = 4 - names.size();
    for (int i = 0; i < names.size(); ++i) {
        const int place = i + without;
        const double gravity = gravities[place];
        auto* button = new QRadioButton(names.at(i));
        button->setObjectName(QLatin1String(prefix) + QLatin1String(planetNames[place]) +
                              QLatin1String("RadioButton"));
        button->setChecked(place == earth);
        auto* value =
            new QLabel(place == 0 ? QString() : tr("%1 m/s²").arg(Common::myToString(gravity, 'g', 4)));
        line->addWidget(button);
        line->addWidget(value);
        planets->append(Planet{button, value, gravity});
    }
    line->addStretch();
    grid->addLayout(line, grid->rowCount(), 0, 1, 5);
}

void simulSetup::addButtons(QGridLayout* grid, const char* start, const char* restartName)
{
    auto* line = new QHBoxLayout;
    auto* startButton = new QPushButton;
    startButton->setObjectName(QLatin1String(start));
    auto* restartButton = new QPushButton(tr("Restart"));
    restartButton->setObjectName(QLatin1String(restartName));
    line->addWidget(startButton);
    line->addWidget(restartButton);
    grid->addLayout(line, grid->rowCount(), 0, 1, 5);
    startButtons.append(startButton);
    restartButtons.append(restartButton);
    connect(startButton, &QPushButton::clicked, this, &simulSetup::startOrPause);
    connect(restartButton, &QPushButton::clicked, this, &simulSetup::restart);
}

void simulSetup::listen()
{
    for (const Slider& some : {speed, energy, length, mass, damping})
        connect(some.slider, &QSlider::valueChanged, this, &simulSetup::setValues);
    connect(energy.slider, &QSlider::valueChanged, this,
            [this] { scene->doEnergyRatioChanged(1 - FFEnergyRatio); });
    connect(length.slider, &QSlider::valueChanged, scene, &simulations::doPendulumLengthChanged);
    for (const QVector<Planet>* planets : {&fallPlanets, &pendulumPlanets}) {
        for (const Planet& planet : *planets) {
            connect(planet.button, &QRadioButton::toggled, this, [this, planet](bool isOn) {
                setValues();
                if (isOn)
                    scene->doGravityChanged(planet.gravity);
            });
        }
    }
}

double simulSetup::gravityOf(const QVector<Planet>& planets) const
{
    for (const Planet& planet : planets) {
        if (planet.button->isChecked())
            return planet.gravity;
    }
    return 0;
}

void simulSetup::setValues()
{
    FFV0 = speed.slider->value();
    FFEnergyRatio = 0.01 * energy.slider->value();
    FFGravity = gravityOf(fallPlanets);
    PNDLength = 0.1 * length.slider->value();
    PNDMass = 0.1 * mass.slider->value();
    PNDDamp = qMin(0.01 * damping.slider->value(), mostDamping);
    PNDGravity = gravityOf(pendulumPlanets);
    speed.text->setText(number(FFV0, 0));
    energy.text->setText(number(FFEnergyRatio, 2));
    length.text->setText(number(PNDLength, 1));
    mass.text->setText(number(PNDMass, 1));
    damping.text->setText(number(PNDDamp, 2));
    for (const QVector<Planet>* planets : {&fallPlanets, &pendulumPlanets}) {
        for (const Planet& planet : *planets)
            planet.value->setVisible(planet.button->isChecked());
    }
    scene->pendulum->L = PNDLength;
    scene->pendulum->damp = std::pow(1 - PNDDamp, SIMUL_DT / secondsOfDamping);
}

void simulSetup::setTextHeight(int pixels)
{
    QFont large = font();
    large.setPixelSize(pixels);
    setFont(large);
    for (QWidget* child : findChildren<QWidget*>())
        child->setFont(large);
    for (QPushButton* button : startButtons + restartButtons)
        button->setIconSize(QSize(pixels, pixels));
    for (QLineEdit* edit : findChildren<QLineEdit*>())
        edit->setFixedWidth(edit->fontMetrics().horizontalAdvance(QLatin1String(widestNumber)) + pixels);
}

void simulSetup::setStartIcon()
{
    const bool isOn = scene->isRunning();
    for (QPushButton* button : qAsConst(startButtons)) {
        button->setIcon(style()->standardIcon(isOn ? QStyle::SP_MediaPause : QStyle::SP_MediaPlay));
        button->setText(isOn ? tr("Pause") : isRunning ? tr("Continue") : tr("Start"));
    }
    for (QPushButton* button : qAsConst(restartButtons))
        button->setIcon(style()->standardIcon(QStyle::SP_MediaSkipBackward));
}

// --- Start, pause, restart ---

void simulSetup::startOrPause()
{
    if (!isRunning) {
        if (mayStart && !mayStart())
            return;
        if (currentIndex() == 0)
            FFReset(true);
        else
            PNDReset(true);
        isRunning = true;
    }
    scene->setRunning(!scene->isRunning());
    setStartIcon();
}

void simulSetup::FFReset(bool newGraph)
{
    isRunning = false;
    ballItem* ball = scene->ball;
    ball->g = -FFGravity;
    ball->v0 = FFV0;
    ball->energyRatio = 1 - FFEnergyRatio;
    scene->setupSimulation(newGraph);
}

void simulSetup::PNDReset(bool newGraph)
{
    isRunning = false;
    setValues(); // length and damping
    scene->pendulum->g = PNDGravity;
    scene->setupSimulation(newGraph);
}

void simulSetup::end()
{
    scene->setRunning(false);
    if (!isRunning)
        return;
    isRunning = false;
    Q_EMIT ended();
}

void simulSetup::restart()
{
    end();
    setStartIcon();
    scene->setSimulScene();
    if (currentIndex() == 0)
        FFReset(false);
    else
        PNDReset(false);
}

// --- Experiments and pages ---

void simulSetup::setCurrentSimul(int index)
{
    end();
    share(index);
    if (index >= firstPage)
        return;
    setCurrentIndex(index);
    startButtons.at(index)->setFocus();
    scene->setSimulBackground(index == 0 ? SIMUL_FREEFALL : SIMUL_PENDULUM);
    restart();
}

/// Only what is seen is shown: a page that is hidden sleeps.
void simulSetup::share(int index)
{
    const bool isPage = index >= firstPage;
    for (int place = 0; place < vLayout->count(); ++place)
        vLayout->widget(place)->setVisible(isPage ? place == index : place < firstPage);
    graph->setVisible(!isPage);
    if (isPage) {
        if (auto* const page = qobject_cast<simWebView*>(vLayout->widget(index))) {
            page->createPageIfNeeded();
            page->setFocus();
        }
        return;
    }
    const int controls = currentWidget()->sizeHint().height();
    QList<int> sizes{controls, qMax(1, vLayout->height() - controls)};
    while (sizes.size() < vLayout->count())
        sizes.append(0);
    vLayout->setSizes(sizes);
}

void simulSetup::destroyViews()
{
    for (int place = vLayout->count() - 1; place >= firstPage; --place) {
        auto* const page = qobject_cast<simWebView*>(vLayout->widget(place));
        if (!page)
            continue;
        page->destroyPage();
        delete page;
    }
}
