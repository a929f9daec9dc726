#include "app/replaybar.h"

#include "classroom/replay.h"
#include "common/common.h"

#include <QAction>
#include <QButtonGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QStyle>
#include <QToolButton>

#include <cmath>
#include <utility>

namespace {

constexpr int msBetweenSteps = 40;
constexpr int replaySpeeds[] = {1, 5, 20};
constexpr int sliderPlaces = 10000; // of the slider
constexpr int secondsWithTenths = 100;

} // namespace

ReplayBar::ReplayBar(Replay* replay, QWidget* parent)
    : QToolBar(tr("Replay"), parent)
    , replay(replay)
    , clock([this] { return sinceMade.elapsed(); })
{
    sinceMade.start();
    setObjectName(QStringLiteral("replayBar"));
    setMovable(false);
    setContextMenuPolicy(Qt::PreventContextMenu);
    endAct = new QAction(tr("End of the replay"), this);
    endAct->setObjectName(QStringLiteral("replayEndAct"));
    endAct->setEnabled(false);
    connect(endAct, &QAction::triggered, replay, &Replay::end);
    timer.setInterval(msBetweenSteps);
    connect(&timer, &QTimer::timeout, this, &ReplayBar::step);
    addWidget(createRow());
    connect(replay, &Replay::ended, this, &ReplayBar::showEnd);
    hide();
}

/// A bar would put what has no room behind an arrow.
QWidget* ReplayBar::createRow()
{
    auto* const row = new QWidget;
    row->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    auto* const layout = new QHBoxLayout(row);
    words = new QLabel;
    words->setObjectName(QStringLiteral("replayName"));
    QFont font = words->font();
    font.setBold(true);
    words->setFont(font);
    layout->addWidget(words);
    playButton = new QPushButton;
    playButton->setObjectName(QStringLiteral("replayPlay"));
    connect(playButton, &QPushButton::clicked, this, [this] { play(!isPlaying); });
    layout->addWidget(playButton);
    addSpeeds(layout);
    createSlider();
    layout->addWidget(slider, 1);
    times = new QLabel;
    times->setObjectName(QStringLiteral("replayTime"));
    layout->addWidget(times);
    auto* const end = new QPushButton(tr("End (Esc)"));
    end->setObjectName(QStringLiteral("replayEnd"));
    connect(end, &QPushButton::clicked, endAct, &QAction::trigger);
    layout->addWidget(end);
    return row;
}

void ReplayBar::addSpeeds(QHBoxLayout* layout)
{
    auto* const group = new QButtonGroup(this);
    for (const int factor : replaySpeeds) {
        auto* const button = new QToolButton;
        button->setObjectName(QStringLiteral("replaySpeed%1").arg(factor));
        button->setText(QStringLiteral("%1\u00d7").arg(factor));
        button->setAccessibleName(tr("%n times as fast", nullptr, factor));
        button->setToolTip(button->accessibleName());
        button->setCheckable(true);
        button->setChecked(factor == speed);
        button->setFocusPolicy(Qt::StrongFocus);
        group->addButton(button, factor);
        layout->addWidget(button);
    }
    connect(group, &QButtonGroup::idClicked, this, [this](int factor) {
        step(); // what has passed was at the speed before
        speed = factor;
    });
}

void ReplayBar::createSlider()
{
    slider = new QSlider(Qt::Horizontal);
    slider->setObjectName(QStringLiteral("replaySlider"));
    slider->setAccessibleName(tr("Moment of the run"));
    slider->setRange(0, sliderPlaces);
    slider->setSingleStep(sliderPlaces / 100);
    slider->setPageStep(sliderPlaces / 10);
    slider->installEventFilter(this);
    connect(slider, &QSlider::valueChanged, this, &ReplayBar::seek);
}

/// A press beside the handle brings it there, and the slider takes the press as one on the handle.
bool ReplayBar::eventFilter(QObject* object, QEvent* event)
{
    if (object == slider && event->type() == QEvent::MouseButtonPress) {
        const int handle = style()->pixelMetric(QStyle::PM_SliderLength, nullptr, slider);
        const int at = static_cast<const QMouseEvent*>(event)->pos().x() - handle / 2;
        slider->setValue(
            QStyle::sliderValueFromPosition(0, sliderPlaces, at, qMax(1, slider->width() - handle)));
    }
    return QToolBar::eventFilter(object, event);
}

void ReplayBar::begin(int run, const QString& name)
{
    number = run;
    sought.reset();
    words->setText(name.isEmpty() ? tr("Replay") : tr("Replay: %1").arg(name));
    times->setMinimumWidth(times->fontMetrics().horizontalAdvance(timeText(replay->last())) +
                           times->fontMetrics().averageCharWidth());
    endAct->setEnabled(true);
    show();
    showTime();
    play(true);
    playButton->setFocus();
}

void ReplayBar::showEnd()
{
    timer.stop();
    isPlaying = false;
    endAct->setEnabled(false);
    hide();
}

void ReplayBar::play(bool tf)
{
    if (tf && replay->now() >= replay->last())
        replay->moveTo(replay->first());
    isPlaying = tf;
    steppedAt = clock();
    if (tf)
        timer.start();
    playButton->setText(tf ? tr("Pause") : tr("Play"));
    playButton->setIcon(style()->standardIcon(tf ? QStyle::SP_MediaPause : QStyle::SP_MediaPlay));
    showTime();
}

/// A drag moves the slider more often than graphs can follow; the last place counts.
void ReplayBar::seek(int place)
{
    sought = replay->first() + (replay->last() - replay->first()) * place / sliderPlaces;
    if (!timer.isActive())
        timer.start();
}

void ReplayBar::step()
{
    if (!replay->isOn())
        return;
    const qint64 now = clock();
    const double passed = double(now - std::exchange(steppedAt, now)) / 1000;
    if (sought)
        replay->moveTo(*std::exchange(sought, std::nullopt));
    else if (isPlaying && !slider->isSliderDown())
        replay->moveTo(replay->now() + passed * speed);
    if (isPlaying && replay->now() >= replay->last() && !slider->isSliderDown())
        play(false);
    if (!isPlaying)
        timer.stop();
    showTime();
}

void ReplayBar::showTime()
{
    const double part = (replay->now() - replay->first()) / (replay->last() - replay->first());
    if (!slider->isSliderDown()) {
        const QSignalBlocker nobodyMovedIt(slider);
        slider->setValue(int(std::lround(part * sliderPlaces)));
    }
    times->setText(timeText(replay->now()));
}

QString ReplayBar::timeText(double time) const
{
    if (!replay->isTimed())
        return tr("Sample %1 of %2").arg(replay->rows()).arg(replay->most());
    const double last = replay->last();
    if (last < secondsWithTenths)
        return tr("%1 of %2 s").arg(Common::myToString(time, 'f', 1), Common::myToString(last, 'f', 1));
    const auto told = [isLong = last >= 3600](double seconds) {
        const int whole = int(std::floor(seconds));
        const QString minutes = QStringLiteral("%1:%2")
                                    .arg(whole / 60 % 60, isLong ? 2 : 1, 10, QLatin1Char('0'))
                                    .arg(whole % 60, 2, 10, QLatin1Char('0'));
        return isLong ? QStringLiteral("%1:%2").arg(whole / 3600).arg(minutes) : minutes;
    };
    return tr("%1 of %2").arg(told(time), told(last));
}
