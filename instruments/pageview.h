#pragma once

#include <QJsonArray>
#include <QLoggingCategory>
#include <QPointer>
#include <QTimer>
#include <QVector>
#include <QWidget>

#include <memory>

#include "instruments/pageengine.h"

class QLabel;
class QPushButton;
class QStackedLayout;

/// What pages complain of.
Q_DECLARE_LOGGING_CATEGORY(webLog)

/// A web page of the program, in its place on the screen. The engine is loaded when the first page opens.
/// Where the engine or the page is missing, or the page comes to an end, words stand in its place.
class PageView : public QWidget, private PageListener
{
    Q_OBJECT

public:
    /// `page` is a file below the program's folder of data, such as "html/steel/MeterArray.html", or an
    /// absolute path. It opens when it is first shown.
    explicit PageView(const QString& page, QWidget* parent = nullptr);
    ~PageView() override;

    /// Where a page is, empty if it is nowhere: beside the program, else where the system keeps data.
    static QString fileOf(const QString& page);

    /// Where the engine is looked for instead of beside the program, until it is loaded.
    static void setEngineFile(const QString& file);

    /// The engine is at work and can't be taken down: a program that holds it ends by std::_Exit() alone.
    static bool isEngineLoaded();

    /// Loads the page unless it is loading or loaded.
    void open();
    bool isLoaded() const { return state == State::Loaded; }
    /// Calls a function of the page; the arguments go as JSON, so a text may hold what it likes. A call
    /// before the page has loaded waits, and all go in their order. One to a page that failed is dropped:
    /// whoever hears pageLoaded() gives a page all it needs.
    void call(const QString& function, const QJsonArray& arguments = QJsonArray());
    /// Forgets the calls that wait.
    void clearCalls();
    /// Errors in the page's console since the view was made.
    int errors() const { return nErrors; }

Q_SIGNALS:
    /// Also when it was loaded again; the calls that waited go after it.
    void pageLoaded();
    void titleChanged(const QString& title);
    /// The page is not there; `words` stand in its place.
    void failed(const QString& words);

protected:
    void showEvent(QShowEvent* event) override;

private:
    enum class State
    {
        Closed,
        Loading,
        Loaded,
        Failed
    };

    void loadEnded(bool isGood) override;
    void titleSaid(const QString& title) override;
    void errorLogged(const QString& text) override;
    void processEnded() override;

    void loadAgain();
    bool makeSurface();
    void fail(const QString& words);
    void run(const QString& script);

    const QString page;
    State state = State::Closed;
    QStackedLayout* pile = nullptr;
    QWidget* failure = nullptr;
    QLabel* failureText = nullptr;
    std::unique_ptr<PageSurface> surface;
    QVector<QString> waiting; ///< scripts, oldest first
    QTimer patience;          ///< with a page that never finishes loading
    int nErrors = 0;
};
