#include "instruments/pageview.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QLabel>
#include <QPluginLoader>
#include <QPushButton>
#include <QRegularExpression>
#include <QStackedLayout>
#include <QStandardPaths>
#include <QUrl>
#include <QVBoxLayout>

#include <utility>

Q_LOGGING_CATEGORY(webLog, "pellandra.web", QtInfoMsg)

namespace {

constexpr int msToLoad = 30000; // a page of the program is there in a second; a slow disk may take ten

QString engineFile; // empty for the one beside the program

QtMessageHandler restOfMessages = nullptr;

/// The engine, loaded late, asks for a share of the graphics card, which it is not going to use.
void passOn(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (!message.startsWith(QLatin1String("Qt WebEngine seems to be initialized from a plugin")))
        restOfMessages(type, context, message);
}

PageEngine* engine = nullptr; // loaded once, and never unloaded

/// Null, with the reason in the log, where there is none.
PageEngine* pageEngine()
{
    if (engine)
        return engine;
    const QDir programs(QCoreApplication::applicationDirPath());
    QPluginLoader loader(engineFile.isEmpty()
                             ? programs.filePath(QStringLiteral("../lib/pellandra/pellandra-web.so"))
                             : engineFile);
    restOfMessages = qInstallMessageHandler(passOn);
    engine = qobject_cast<PageEngine*>(loader.instance());
    qInstallMessageHandler(restOfMessages);
    if (!engine)
        qCInfo(webLog, "no web pages: %s", qPrintable(loader.errorString()));
    return engine;
}

} // namespace

PageView::PageView(const QString& page, QWidget* parent)
    : QWidget(parent)
    , page(page)
    , pile(new QStackedLayout(this))
    , failure(new QWidget)
    , failureText(new QLabel)
{
    failureText->setObjectName(QStringLiteral("pageFailure"));
    failureText->setAlignment(Qt::AlignCenter);
    failureText->setWordWrap(true);
    failureText->setTextFormat(Qt::PlainText);
    auto* again = new QPushButton(tr("Load again"));
    again->setObjectName(QStringLiteral("loadAgain"));
    auto* layout = new QVBoxLayout(failure);
    layout->addStretch();
    layout->addWidget(failureText);
    layout->addWidget(again, 0, Qt::AlignHCenter);
    layout->addStretch();
    pile->addWidget(new QWidget); // nothing while the page loads
    pile->addWidget(failure);
    connect(again, &QPushButton::clicked, this, &PageView::loadAgain);
    patience.setSingleShot(true);
    patience.setInterval(msToLoad);
    connect(&patience, &QTimer::timeout, this, [this] { fail(tr("The page did not load in time.")); });
}

PageView::~PageView()
{
    surface.reset(); // while there is somebody to listen
}

QString PageView::fileOf(const QString& page)
{
    const QString beside = QDir(QCoreApplication::applicationDirPath())
                               .absoluteFilePath(QDir(QStringLiteral("../share/pellandra")).filePath(page));
    if (QFileInfo(beside).isFile())
        return QDir::cleanPath(beside);
    return QStandardPaths::locate(QStandardPaths::GenericDataLocation, QStringLiteral("pellandra/") + page);
}

void PageView::setEngineFile(const QString& file)
{
    engineFile = file;
}

bool PageView::isEngineLoaded()
{
    return engine;
}

void PageView::open()
{
    if (state == State::Closed)
        loadAgain();
}

void PageView::call(const QString& function, const QJsonArray& arguments)
{
    if (state == State::Failed)
        return;
    QByteArray list = QJsonDocument(arguments).toJson(QJsonDocument::Compact);
    list.front() = '(';
    list.back() = ')';
    const QString script = function + QString::fromUtf8(list);
    if (state == State::Loaded)
        run(script);
    else
        waiting.append(script);
}

void PageView::clearCalls()
{
    waiting.clear();
}

void PageView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    open();
}

void PageView::loadAgain()
{
    const QString file = fileOf(page);
    if (!makeSurface())
        return;
    if (file.isEmpty()) {
        fail(tr("The page %1 is missing: is the package pellandra-web installed whole?").arg(page));
        return;
    }
    state = State::Loading;
    pile->setCurrentWidget(surface->widget());
    patience.start();
    surface->load(QUrl::fromLocalFile(file));
}

bool PageView::makeSurface()
{
    if (surface)
        return true;
    PageEngine* const engine = pageEngine();
    if (!engine) {
        fail(tr("This view needs the package pellandra-web, which is not installed."));
        return false;
    }
    const QString refusal = engine->refusal();
    if (!refusal.isEmpty()) {
        fail(refusal);
        return false;
    }
    surface = engine->create(this, this);
    pile->addWidget(surface->widget());
    setFocusProxy(surface->widget());
    return true;
}

void PageView::run(const QString& script)
{
    surface->run(script);
}

void PageView::loadEnded(bool isGood)
{
    if (state != State::Loading)
        return;
    patience.stop();
    if (!isGood) {
        fail(tr("The page %1 could not be loaded.").arg(page));
        return;
    }
    state = State::Loaded;
    const QVector<QString> calls = std::exchange(waiting, {});
    Q_EMIT pageLoaded();
    for (const QString& script : calls)
        run(script);
}

void PageView::titleSaid(const QString& title)
{
    Q_EMIT titleChanged(title);
}

void PageView::errorLogged(const QString& text)
{
    ++nErrors;
    qCWarning(webLog, "%s", qPrintable(text));
}

void PageView::processEnded()
{
    fail(tr("The page has come to an unexpected end."));
}

void PageView::fail(const QString& words)
{
    patience.stop();
    state = State::Failed;
    waiting.clear();
    qCInfo(webLog, "%s: %s", qPrintable(page), qPrintable(words));
    failureText->setText(words);
    pile->setCurrentWidget(failure);
    Q_EMIT failed(words);
}
