#include "instruments/indicator.h"

#include "common/screenflags.h"
#include "common/userprompt.h"
#include "instruments/pairingtool.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>

namespace {

constexpr int smallDim = 24;
constexpr int msOfBlink = 500;

QPixmap picture(const QString& resource, int dim)
{
    const QPixmap original(resource);
    return original.isNull() ? original
                             : original.scaled(dim, dim, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

Indicator::Indicator(UserPrompt* prompt, QWidget* parent)
    : QWidget(parent)
    , prompt(prompt)
{
    setObjectName(QStringLiteral("indicator"));
    loadPictures();
    createRow();
    blink.setInterval(msOfBlink);
    connect(&blink, &QTimer::timeout, this, &Indicator::showBlink);
    setNoComm();
}

int Indicator::iconHeight()
{
    return ScreenFlags::is4K() ? 2 * smallDim : smallDim;
}

void Indicator::loadPictures()
{
    const int iconDim = iconHeight();
    BTOn = picture(QStringLiteral(":/icons/BTon.ico"), iconDim);
    BTOff = picture(QStringLiteral(":/icons/BToff.ico"), iconDim);
    BTEmpty = picture(QStringLiteral(":/icons/BTempty.ico"), smallDim);
    BTPair = picture(QStringLiteral(":/icons/ColabPair.png"), smallDim);
    BTComm = picture(QStringLiteral(":/icons/BTcomm.ico"), iconDim);
}

void Indicator::createRow()
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    for (int i = 0; i < nBT; ++i) {
        auto* icon = new QLabel(this);
        icon->setObjectName(QStringLiteral("loggerIcon%1").arg(i + 1));
        icon->setAccessibleName(tr("Logger %1").arg(i + 1));
        icon->installEventFilter(this);
        row->addWidget(icon);
        slots_[i].icon = icon;
    }
    pair = new QLabel(this);
    pair->setObjectName(QStringLiteral("pairIcon"));
    pair->setPixmap(BTPair);
    pair->setToolTip(tr("Find more Tembrins and sensors"));
    pair->setAccessibleName(pair->toolTip());
    pair->installEventFilter(this);
    row->addWidget(pair);
}

void Indicator::setNoComm()
{
    for (int i = 0; i < nBT; ++i)
        setState(i, State::Empty);
}

void Indicator::setNActive(int N)
{
    for (int i = 0; i < nBT; ++i) {
        setState(i, i < N ? State::Off : State::Empty);
        slots_[i].icon->setVisible(i < N);
    }
}

void Indicator::setBT(int index, bool tf)
{
    setState(index, tf ? State::On : State::Off);
}

void Indicator::setBTComm(int index, bool tf)
{
    setState(index, tf ? State::Comm : State::On);
}

void Indicator::setState(int index, State state)
{
    Slot& slot = slots_[index];
    slot.state = state;
    switch (state) {
    case State::Empty:
        slot.icon->setPixmap(BTEmpty);
        slot.icon->setAccessibleDescription(tr("not in use"));
        break;
    case State::Off:
        slot.icon->setPixmap(BTOff);
        slot.icon->setAccessibleDescription(tr("not connected"));
        break;
    case State::Seeking:
    case State::Connecting:
        slot.icon->setPixmap(BTOff);
        slot.icon->setAccessibleDescription(state == State::Seeking ? tr("lost, being looked for")
                                                                    : tr("connecting"));
        if (!blink.isActive())
            blink.start();
        break;
    case State::On:
        slot.icon->setPixmap(BTOn);
        slot.icon->setAccessibleDescription(tr("connected"));
        break;
    case State::Comm:
        slot.icon->setPixmap(BTComm);
        slot.icon->setAccessibleDescription(tr("busy with a command"));
        break;
    }
}

void Indicator::showBlink()
{
    isLit = !isLit;
    bool isAny = false;
    for (const Slot& slot : slots_) {
        if (slot.state != State::Seeking && slot.state != State::Connecting)
            continue;
        slot.icon->setPixmap(isLit ? BTOff : BTEmpty);
        isAny = true;
    }
    if (!isAny)
        blink.stop();
}

void Indicator::setToolTipsMsg(int index, const QString& msg)
{
    slots_[index].icon->setToolTip(msg);
}

void Indicator::setLoggerDetails(int index, const QString& loggerName, const QString& groupName)
{
    slots_[index].loggerName = loggerName;
    slots_[index].groupName = groupName;
}

int Indicator::slotOf(const QObject* object) const
{
    for (int i = 0; i < nBT; ++i) {
        if (slots_[i].icon == object)
            return i;
    }
    return -1;
}

bool Indicator::eventFilter(QObject* object, QEvent* event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        const int index = slotOf(object);
        const Qt::MouseButton button = static_cast<QMouseEvent*>(event)->button();
        if (index >= 0 && button == Qt::LeftButton)
            Q_EMIT tryToConnect(index);
        else if (index >= 0 && button == Qt::RightButton && isConnected(index))
            confirmDelete(index);
        else if (object == pair)
            openPairing();
    }
    return QWidget::eventFilter(object, event);
}

void Indicator::confirmDelete(int index)
{
    const Slot& slot = slots_[index];
    const QString text = tr("You are about to delete all the experiments from %1 (%2).\nAre you sure?")
                             .arg(slot.loggerName, slot.groupName);
    if (prompt->confirm(this, tr("Confirm delete"), text))
        Q_EMIT deleteFromLogger(index, true);
}

void Indicator::openPairing()
{
    if (!PairingTool::open())
        Q_EMIT message(
            tr("No Bluetooth settings were found here: pair the Tembrins with the tool of your system"));
}
