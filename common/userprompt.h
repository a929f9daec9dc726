#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class QObject;

/// What the program asks and tells a person in a box of its own: the one seam through which tests answer
/// instead. `parent` is the widget the box stands on, or null. Colours are 0xAARRGGBB.
class UserPrompt
{
public:
    enum class Answer
    {
        Yes,
        No,
        Cancel
    };

    virtual ~UserPrompt() = default;

    virtual void information(QObject* parent, const QString& title, const QString& text) = 0;
    virtual void warning(QObject* parent, const QString& title, const QString& text) = 0;
    virtual void critical(QObject* parent, const QString& title, const QString& text) = 0;
    /// A question with Yes and No, and Cancel where `withCancel`. Closing the box answers Cancel, or No
    /// without it.
    virtual Answer question(QObject* parent, const QString& title, const QString& text, bool withCancel) = 0;
    /// A warning with the buttons Yes and Cancel; true on Yes.
    virtual bool confirm(QObject* parent, const QString& title, const QString& text) = 0;
    /// The same for what can't be taken back: Enter means Cancel.
    virtual bool confirmForGood(QObject* parent, const QString& title, const QString& text) = 0;
    /// One line of text, nothing when the person cancelled.
    virtual std::optional<QString> text(QObject* parent, const QString& title, const QString& label,
                                        const QString& start) = 0;
    virtual std::optional<unsigned> color(QObject* parent, const QString& title, unsigned start) = 0;
    /// A file to open, an empty text when cancelled.
    virtual QString openFile(QObject* parent, const QString& title, const QString& folder,
                             const QString& filter) = 0;
    /// A file to write, an empty text when cancelled. `selectedFilter` gets the filter chosen, if not null.
    virtual QString saveFile(QObject* parent, const QString& title, const QString& folder,
                             const QString& filter, QString* selectedFilter) = 0;
};
