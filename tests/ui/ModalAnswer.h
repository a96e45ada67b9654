#pragma once

// Modal windows that the code under test opens itself (message boxes, file dialogs) are answered
// from the event loop: a timer looks for the active modal window and hands it to the answer.

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <functional>

namespace curatool::test {

// `answer` gets each active modal window until it returns true (it has dealt with one).
inline void AnswerModal(std::function<bool(QWidget*)> answer)
{
    auto* timer = new QTimer(qApp);
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, answer = std::move(answer)] {
        QWidget* window = QApplication::activeModalWidget();
        if (window && answer(window)) {
            timer->stop();
            timer->deleteLater();
        }
    });
    timer->start();
}

// Answers the next modal window of class T.
template <typename T>
void AnswerNext(std::function<void(T*)> answer)
{
    AnswerModal([answer = std::move(answer)](QWidget* window) {
        T* typed = qobject_cast<T*>(window);
        if (!typed)
            return false;
        answer(typed);
        return true;
    });
}

}  // namespace curatool::test
