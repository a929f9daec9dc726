#include "app/messageboxprompt.h"

#include <QColorDialog>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMessageBox>
#include <QRegularExpression>

namespace {

QWidget* widgetOf(QObject* parent)
{
    return qobject_cast<QWidget*>(parent);
}

// Loggers tell of themselves from inside the reading of a port: a box that waited would hold up that logger.
void tell(QMessageBox::Icon icon, QObject* parent, const QString& title, const QString& text)
{
    auto* box = new QMessageBox(icon, title, text, QMessageBox::Ok, widgetOf(parent));
    box->setObjectName(QStringLiteral("messageBox"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

} // namespace

void MessageBoxPrompt::information(QObject* parent, const QString& title, const QString& text)
{
    tell(QMessageBox::Information, parent, title, text);
}

void MessageBoxPrompt::warning(QObject* parent, const QString& title, const QString& text)
{
    tell(QMessageBox::Warning, parent, title, text);
}

void MessageBoxPrompt::critical(QObject* parent, const QString& title, const QString& text)
{
    tell(QMessageBox::Critical, parent, title, text);
}

UserPrompt::Answer MessageBoxPrompt::question(QObject* parent, const QString& title, const QString& text,
                                              bool withCancel)
{
    QMessageBox::StandardButtons buttons = QMessageBox::Yes | QMessageBox::No;
    if (withCancel)
        buttons |= QMessageBox::Cancel;
    const auto answer = QMessageBox::question(widgetOf(parent), title, text, buttons);
    if (answer == QMessageBox::Yes)
        return Answer::Yes;
    return withCancel && answer != QMessageBox::No ? Answer::Cancel : Answer::No;
}

bool MessageBoxPrompt::confirm(QObject* parent, const QString& title, const QString& text)
{
    return QMessageBox::warning(widgetOf(parent), title, text, QMessageBox::Yes | QMessageBox::Cancel) ==
           QMessageBox::Yes;
}

bool MessageBoxPrompt::confirmForGood(QObject* parent, const QString& title, const QString& text)
{
    return QMessageBox::warning(widgetOf(parent), title, text, QMessageBox::Yes | QMessageBox::Cancel,
                                QMessageBox::Cancel) == QMessageBox::Yes;
}

std::optional<QString> MessageBoxPrompt::text(QObject* parent, const QString& title, const QString& label,
                                              const QString& start)
{
    bool accepted = false;
    const QString text =
        QInputDialog::getText(widgetOf(parent), title, label, QLineEdit::Normal, start, &accepted);
    return accepted ? std::optional<QString>(text) : std::nullopt;
}

std::optional<unsigned> MessageBoxPrompt::color(QObject* parent, const QString& title, unsigned start)
{
    const QColor color = QColorDialog::getColor(QColor::fromRgba(start), widgetOf(parent), title);
    return color.isValid() ? std::optional<unsigned>(color.rgba()) : std::nullopt;
}

QString MessageBoxPrompt::openFile(QObject* parent, const QString& title, const QString& folder,
                                   const QString& filter)
{
    return QFileDialog::getOpenFileName(widgetOf(parent), title, folder, filter);
}

QString MessageBoxPrompt::saveFile(QObject* parent, const QString& title, const QString& folder,
                                   const QString& filter, QString* selectedFilter)
{
    QFileDialog dialog(widgetOf(parent), title, QFileInfo(folder).path(), filter);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.selectFile(QFileInfo(folder).fileName());
    // A name keeps up with the filter, so that the question before overwriting is about the file that is
    // written.
    const auto takeEnding = [&dialog](const QString& chosen) {
        static const QRegularExpression pattern(QStringLiteral("\\*\\.(\\w+)"));
        const QString ending = pattern.match(chosen).captured(1);
        if (ending.isEmpty())
            return;
        dialog.setDefaultSuffix(ending);
        const QFileInfo name(dialog.selectedFiles().value(0));
        if (!name.isDir() && name.suffix() != ending)
            dialog.selectFile(name.completeBaseName() + QLatin1Char('.') + ending);
    };
    takeEnding(dialog.selectedNameFilter());
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, takeEnding);
    if (dialog.exec() != QDialog::Accepted)
        return QString();
    if (selectedFilter)
        *selectedFilter = dialog.selectedNameFilter();
    return dialog.selectedFiles().value(0);
}
