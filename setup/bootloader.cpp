#include "setup/bootloader.h"

#include "classroom/classrun.h"
#include "classroom/multiconnectionsmanager.h"
#include "common/settings.h"
#include "common/userprompt.h"
#include "protocol/tembrinprotocol.h"
#include "setup/dialogtools.h"
#include "setup/wakekeeper.h"

#include <QComboBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>

using DialogTools::button;
using DialogTools::named;

namespace {

constexpr int msBlink = 500;
constexpr double burnFont = 1.3; // of the window's font
constexpr int msAfterWrong = 1000;
constexpr const char* folderKey = "firmware/defpath";

QLabel* plainLabel(const char* name)
{
    auto* const label = named(new QLabel, name);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

QString passwordOf(const char* key, const char* usual)
{
    return Settings::mainStore().value(QLatin1String(key), QLatin1String(usual)).toString();
}

QString timeText(int seconds)
{
    return seconds < 60 ? bootLoader::tr("%1 s").arg(seconds)
                        : bootLoader::tr("%1 min %2 s").arg(seconds / 60).arg(seconds % 60);
}

} // namespace

bootLoader::bootLoader(multiConnectionsManager* manager, UserPrompt* prompt, QWidget* parent)
    : QWidget(parent)
    , manager(manager)
    , prompt(prompt)
    , On(QStringLiteral(":/logger/icons/logger/tembrinOn.png"))
    , Off(QStringLiteral(":/logger/icons/logger/tembrinOff.png"))
{
    named(this, "bootLoader");
    auto* const column = new QVBoxLayout(this);
    auto* const row = new QHBoxLayout;
    icon = named(new QLabel, "loaderIcon");
    loggers = named(new QComboBox, "loaderLogger", tr("Logger"));
    row->addWidget(icon);
    row->addWidget(loggers, 1);
    column->addLayout(row);
    faces = named(new QStackedWidget, "loaderFaces");
    faces->addWidget(createPasswordPage());
    faces->addWidget(createMainPage());
    faces->addWidget(createOldPage());
    column->addWidget(faces, 1);
    fillLoggers();
    connect(loggers, qOverload<int>(&QComboBox::activated), this,
            [this](int i) { choose(loggers->itemData(i).toInt()); });
    connect(manager, &multiConnectionsManager::setBTComm, this, &bootLoader::updateButtons);
    blink.setInterval(msBlink);
    connect(&blink, &QTimer::timeout, this, &bootLoader::showIcon);
    blink.start();
    choose(loggers->itemData(qMax(0, loggers->currentIndex())).toInt());
}

bootLoader::~bootLoader() = default;

void bootLoader::fillLoggers()
{
    for (int i = 0; i < manager->nDefTembrins(); ++i)
        loggers->addItem(manager->groupName(i), i);
    loggers->setEnabled(loggers->count() > 1);
}

void bootLoader::choose(int wanted)
{
    if (isBusy() || wanted == slot)
        return;
    slot = wanted;
    loggers->setCurrentIndex(qMax(0, loggers->findData(slot)));
    if (!sessions.contains(slot)) {
        sessions.insert(slot, new BurnSession(manager->tembrinAt(slot), this));
        present = sessions[slot];
        listen();
    }
    present = sessions[slot];
    updateButtons();
    showIcon();
}

void bootLoader::listen()
{
    BurnSession* const session = present;
    const auto ofPresent = [this, session](auto act) {
        return [this, session, act](const auto&... told) {
            if (session == present)
                act(told...);
        };
    };
    connect(session, &BurnSession::ready, this, ofPresent([this] {
                startLabel->setText(tr("Ready"));
                updateButtons();
            }));
    connect(session, &BurnSession::progressed, this, ofPresent([this] { showProgress(); }));
    connect(session, &BurnSession::writeLabel, this,
            ofPresent([this](const QString& t) { writeLabel->setText(t); }));
    connect(session, &BurnSession::verifyLabel, this,
            ofPresent([this](const QString& t) { verifyLabel->setText(t); }));
    connect(session, &BurnSession::burnLabel, this,
            ofPresent([this](const QString& t) { burnText->setText(t); }));
    connect(session, &BurnSession::ended, this,
            ofPresent([this](bool isGood, const QString& words) { showEnd(isGood, words); }));
}

// --- The password ---

QWidget* bootLoader::createPasswordPage()
{
    auto* const page = new QWidget;
    auto* const column = new QVBoxLayout(page);
    password = named(new QLineEdit, "password");
    password->setEchoMode(QLineEdit::Password);
    auto* const form = new QFormLayout;
    form->addRow(tr("Password"), password);
    column->addLayout(form);
    passwordButton = button(tr("Accept"), "passwordButton");
    column->addWidget(passwordButton);
    feedback = plainLabel("feedback");
    column->addWidget(feedback);
    column->addStretch(1);
    connect(passwordButton, &QPushButton::clicked, this, &bootLoader::acceptPassword);
    connect(password, &QLineEdit::returnPressed, this, &bootLoader::acceptPassword);
    return page;
}

void bootLoader::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    password->setFocus();
}

void bootLoader::acceptPassword()
{
    if (!passwordButton->isEnabled())
        return;
    const QString typed = password->text();
    const bool isManual = typed == passwordOf("firmware/propass", "k7m2q9");
    if (isManual || typed == passwordOf("firmware/password", "7295")) {
        faces->setCurrentIndex(isManual ? 2 : 1);
        return;
    }
    feedback->setText(tr("Wrong password"));
    passwordButton->setEnabled(false);
    QTimer::singleShot(msAfterWrong, this, [this] { passwordButton->setEnabled(true); });
}

// --- The simple face ---

QWidget* bootLoader::createMainPage()
{
    auto* const page = named(new QWidget, "main");
    auto* const column = new QVBoxLayout(page);
    openButton = button(tr("Open firmware file…"), "openButton");
    fileLabel = plainLabel("fileLabel");
    burnButton = button(tr("Burn"), "burnButton");
    stopButton = button(tr("Stop"), "stopButton");
    progress = named(new QProgressBar, "progress");
    progressText = plainLabel("progressText");
    burnText = plainLabel("burnLabel");
    QFont strong = font();
    strong.setBold(true);
    strong.setPointSizeF(strong.pointSizeF() * burnFont);
    burnText->setFont(strong);
    auto* const row = new QHBoxLayout;
    row->addWidget(burnButton);
    row->addWidget(stopButton);
    auto* const hint = plainLabel("burnAdvice");
    hint->setText(advice());
    for (QWidget* part : {static_cast<QWidget*>(openButton), static_cast<QWidget*>(fileLabel)})
        column->addWidget(part);
    column->addLayout(row);
    for (QWidget* part : {static_cast<QWidget*>(progress), static_cast<QWidget*>(progressText),
                          static_cast<QWidget*>(burnText), static_cast<QWidget*>(hint)})
        column->addWidget(part);
    column->addStretch(1);
    connect(openButton, &QPushButton::clicked, this, &bootLoader::openOnMainPage);
    connect(burnButton, &QPushButton::clicked, this, &bootLoader::burn);
    connect(stopButton, &QPushButton::clicked, this, &bootLoader::cancel);
    return page;
}

QString bootLoader::advice() const
{
    return tr("Keep the logger near and switched on until it is done: fresh batteries, or its cable.");
}

bool bootLoader::openFile()
{
    const QString hexFilter = tr("Firmware file (*.hex)");
    const QString dataFilter = tr("Brevik data (*.txt)");
    QSettings store = Settings::mainStore();
    const QString path =
        prompt->openFile(this, tr("Select firmware file"), store.value(QLatin1String(folderKey)).toString(),
                         hexFilter + QStringLiteral(";;") + dataFilter);
    if (path.isEmpty())
        return false;
    store.setValue(QLatin1String(folderKey), QFileInfo(path).path());
    const bool isData = path.endsWith(QLatin1String(".txt"), Qt::CaseInsensitive);
    image.open(path, !isData);
    openLabel->setText(image.label);
    return true;
}

void bootLoader::openOnMainPage()
{
    if (!openFile())
        return;
    fileLabel->setText(image.fileOK
                           ? tr("%1 (confirmed)").arg(image.filename)
                           : tr("%1 (not compatible)").arg(image.filename) + QLatin1Char('\n') + image.label);
    burnText->clear();
    updateButtons();
}

void bootLoader::burn()
{
    if (manager->isAnyRunning()) {
        burnText->setText(tr("A run is going on: stop it first."));
        return;
    }
    wake = std::make_unique<WakeKeeper>("Firmware is written to a logger");
    present->burn(image);
    updateButtons();
}

void bootLoader::showProgress()
{
    progress->setValue(present->percent());
    QString text;
    if (present->isBusy() && present->pages() > 0) {
        text = tr("%1 %, page %2 of %3").arg(present->percent()).arg(present->page()).arg(present->pages());
        const int left = present->secondsLeft();
        if (left >= 0)
            text += tr(", %1 left").arg(timeText(left));
    }
    progressText->setText(text);
}

void bootLoader::showEnd(bool isGood, const QString& words)
{
    Q_UNUSED(words) // they stand in the labels
    wake.reset();
    progress->setValue(isGood ? progress->maximum() : 0);
    updateButtons();
}

bool bootLoader::isBusy() const
{
    return present && present->isBusy();
}

void bootLoader::cancel()
{
    if (present)
        present->cancel();
}

// --- The manual face ---

QPushButton* bootLoader::addStep(QGridLayout* grid, const QString& text, const char* name, QLabel** label,
                                 const std::function<void()>& act)
{
    QPushButton* const step = button(text, name);
    const int row = grid->rowCount();
    grid->addWidget(step, row, 0);
    if (label) {
        *label = plainLabel(qPrintable(QLatin1String(name) + QStringLiteral("Label")));
        grid->addWidget(*label, row, 1);
    }
    connect(step, &QPushButton::clicked, this, act);
    steps.append(step);
    return step;
}

QWidget* bootLoader::createOldPage()
{
    auto* const page = named(new QWidget, "old");
    auto* const column = new QVBoxLayout(page);
    auto* const grid = new QGridLayout;
    grid->setColumnStretch(1, 1);
    addStep(grid, tr("Open file…"), "stepOpen", &openLabel, [this] {
        openFile();
        updateButtons();
    });
    addStep(grid, tr("Start bootloader"), "stepStart", &startLabel, [this] {
        for (QLabel* label : {openLabel, startLabel, writeLabel, verifyLabel, burnText})
            label->clear();
        if (manager->isRecognized(slot))
            present->startLoader();
    });
    fileSteps.append(addStep(grid, tr("Write"), "stepWrite", &writeLabel, [this] {
        present->write(image);
        updateButtons();
    }));
    fileSteps.append(addStep(grid, tr("Verify"), "stepVerify", &verifyLabel, [this] {
        present->verify(image);
        updateButtons();
    }));
    addStep(grid, tr("Run software"), "stepRun", nullptr, [this] { present->runSoftware(); });
    addStep(grid, tr("Get reply"), "stepReply", nullptr, [this] { present->askReply(); });
    column->addLayout(grid);
    column->addStretch(1);
    return page;
}

// --- Both ---

void bootLoader::updateButtons()
{
    const bool isFree = !isBusy();
    const bool isThere = slot >= 0 && manager->isTembrinConnect(slot);
    openButton->setEnabled(isFree);
    burnButton->setEnabled(isFree && isThere && image.fileOK);
    progress->setEnabled(image.fileOK);
    stopButton->setEnabled(!isFree);
    loggers->setEnabled(isFree && loggers->count() > 1);
    for (QPushButton* step : qAsConst(steps))
        step->setEnabled(isFree && (isThere || step == steps.constFirst()));
    for (QPushButton* step : qAsConst(fileSteps))
        step->setEnabled(isFree && isThere && image.fileOK && image.hexFormat);
}

/// Off without a connection; it blinks while the logger is in its boot loader.
void bootLoader::showIcon()
{
    animState = !animState;
    const bool isThere = slot >= 0 && manager->isTembrinConnect(slot);
    const bool isOn = isThere && (!manager->tembrinAt(slot)->isBootLoader || animState);
    icon->setPixmap(isOn ? On : Off);
    if (isThere != burnButton->isEnabled())
        updateButtons();
}
