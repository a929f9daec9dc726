#include "web/webpages.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QPointer>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineSettings>
#include <QWebEngineView>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

/// Before root the engine's own protection ends the program; other systems have no such user.
bool endsBeforeThisUser()
{
#ifdef Q_OS_UNIX
    return ::geteuid() == 0 && qEnvironmentVariableIsEmpty("QTWEBENGINE_DISABLE_SANDBOX");
#else
    return false;
#endif
}

/// Keeps to the page it was given: a link or a script can't lead away from it.
class KeptPage : public QWebEnginePage
{
public:
    KeptPage(QWebEngineProfile* profile, PageListener* listener, QObject* parent)
        : QWebEnginePage(profile, parent)
        , listener(listener)
    {
    }

protected:
    bool acceptNavigationRequest(const QUrl& url, NavigationType type, bool isMainFrame) override
    {
        Q_UNUSED(isMainFrame)
        return type == NavigationTypeTyped || type == NavigationTypeReload || url.isLocalFile();
    }

    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString& message, int line,
                                  const QString& source) override
    {
        if (level == ErrorMessageLevel)
            listener->errorLogged(
                QStringLiteral("%1:%2: %3").arg(QFileInfo(source).fileName()).arg(line).arg(message));
    }

private:
    PageListener* const listener;
};

class WebSurface : public PageSurface
{
public:
    WebSurface(QWidget* parent, QWebEngineProfile* profile, PageListener* listener)
        : view(new QWebEngineView(parent))
    {
        auto* page = new KeptPage(profile, listener, view);
        view->setPage(page);
        view->setContextMenuPolicy(Qt::NoContextMenu);
        view->setObjectName(QStringLiteral("web page"));
        QObject::connect(page, &QWebEnginePage::loadFinished, view,
                         [listener](bool isGood) { listener->loadEnded(isGood); });
        QObject::connect(page, &QWebEnginePage::titleChanged, view,
                         [listener](const QString& title) { listener->titleSaid(title); });
        QObject::connect(page, &QWebEnginePage::renderProcessTerminated, view,
                         [listener] { listener->processEnded(); });
    }
    ~WebSurface() override
    {
        if (view)
            view->disconnect(view);
        delete view;
    }
    WebSurface(const WebSurface&) = delete;
    WebSurface& operator=(const WebSurface&) = delete;

    QWidget* widget() override { return view; }
    void load(const QUrl& url) override { view->load(url); }
    void run(const QString& script) override { view->page()->runJavaScript(script); }

private:
    QPointer<QWebEngineView> view; ///< null if its parent went first
};

} // namespace

WebPages::WebPages()
{
    QQuickWindow::setSceneGraphBackend(QSGRendererInterface::Software);
}

QString WebPages::refusal() const
{
    if (endsBeforeThisUser())
        return QCoreApplication::translate("PageView", "It can't be shown to the administrator root.");
    return QString();
}

std::unique_ptr<PageSurface> WebPages::create(QWidget* parent, PageListener* listener)
{
    if (!profile) {
        profile = new QWebEngineProfile(this);
        profile->settings()->setAttribute(QWebEngineSettings::ShowScrollBars, false);
        profile->settings()->setAttribute(QWebEngineSettings::ErrorPageEnabled, false);
    }
    return std::make_unique<WebSurface>(parent, profile, listener);
}
