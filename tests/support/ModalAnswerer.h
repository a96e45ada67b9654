#pragma once

// Answers the modal windows the code under test opens itself, from a timer that looks for the
// active modal window while an event loop runs. Widget tests only: this brings QtWidgets.

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QTimer>

#include <functional>

namespace curatool::test {

// Message boxes get `box` (or their first button); folder dialogs get `folder`, canceled when it
// is empty; any other modal window goes to `other`, when set.
struct ModalAnswerer {
    QMessageBox::StandardButton box;
    QString folder;
    std::function<void(QWidget*)> other;
    QStringList boxes;    // each box's text
    QStringList titles;   // each box's title
    QStringList buttons;  // each box's buttons, sorted, as "Cancel|OK"
    QTimer timer;

    explicit ModalAnswerer(QMessageBox::StandardButton answer = QMessageBox::Ok)
        : box(answer)
    {
        QObject::connect(&timer, &QTimer::timeout, [this] { Answer(); });
        timer.start(10);
    }

    void Answer()
    {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || !modal->isVisible())
            return;
        if (auto* message = qobject_cast<QMessageBox*>(modal)) {
            boxes << message->text();
            titles << message->windowTitle();
            QStringList names;
            for (QAbstractButton* button : message->buttons())
                names << button->text().remove(QLatin1Char('&'));
            names.sort();
            buttons << names.join(QLatin1Char('|'));
            QAbstractButton* chosen = message->button(box);
            (chosen ? chosen : message->buttons().first())->click();
        } else if (auto* dialog = qobject_cast<QFileDialog*>(modal)) {
            if (folder.isEmpty())
                return dialog->reject();
            // Typed as the name, whatever the dialog started from; the accept comes after this
            // slot, since it may open a box of its own.
            dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(folder);
            QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
        } else if (other)
            other(modal);
    }
};

}  // namespace curatool::test
