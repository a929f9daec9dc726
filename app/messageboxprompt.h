#pragma once

#include "common/userprompt.h"

/// Asks and tells with the toolkit's own boxes and dialogs. What only tells does not wait for the person:
/// the program goes on while the box is open.
class MessageBoxPrompt : public UserPrompt
{
public:
    void information(QObject* parent, const QString& title, const QString& text) override;
    void warning(QObject* parent, const QString& title, const QString& text) override;
    void critical(QObject* parent, const QString& title, const QString& text) override;
    Answer question(QObject* parent, const QString& title, const QString& text, bool withCancel) override;
    bool confirm(QObject* parent, const QString& title, const QString& text) override;
    bool confirmForGood(QObject* parent, const QString& title, const QString& text) override;
    std::optional<QString> text(QObject* parent, const QString& title, const QString& label,
                                const QString& start) override;
    std::optional<unsigned> color(QObject* parent, const QString& title, unsigned start) override;
    QString openFile(QObject* parent, const QString& title, const QString& folder,
                     const QString& filter) override;
    QString saveFile(QObject* parent, const QString& title, const QString& folder, const QString& filter,
                     QString* selectedFilter) override;
};
