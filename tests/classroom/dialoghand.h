#pragma once

#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

/// A person at a dialog, with a keyboard and a mouse; parts go by their object names.
class DialogHand
{
public:
    explicit DialogHand(QWidget* dialog)
        : dialog(dialog)
    {
    }

    QListWidget* list(const char* name) const { return dialog->findChild<QListWidget*>(name); }
    QPushButton* button(const char* name) const { return dialog->findChild<QPushButton*>(name); }
    void press(const char* name) { QTest::mouseClick(button(name), Qt::LeftButton); }
    void choose(const char* name, const QVector<int>& rows)
    {
        for (const int row : rows) {
            const QPoint place = list(name)->visualItemRect(list(name)->item(row)).center();
            QTest::mouseClick(list(name)->viewport(), Qt::LeftButton,
                              row == rows.first() ? Qt::NoModifier : Qt::ControlModifier, place);
        }
    }
    /// Types over a whole line, and waits until its editor has closed.
    void rename(const char* name, int row, const QString& text, Qt::Key end = Qt::Key_Return)
    {
        choose(name, {row});
        QTest::keyClick(list(name), Qt::Key_F2);
        auto* editor = list(name)->findChild<QLineEdit*>();
        QVERIFY(editor);
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, end);
        QTRY_VERIFY(list(name)->findChild<QLineEdit*>() != editor);
    }
    QStringList lines(const char* name) const
    {
        QStringList all;
        for (int i = 0; i < list(name)->count(); ++i)
            all << list(name)->item(i)->text();
        return all;
    }

private:
    QWidget* dialog;
};
