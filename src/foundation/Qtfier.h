#pragma once

#include <QObject>

#include <functional>

// A function object dressed as a Qt slot, so that timers and signals can run arbitrary code:
// connect something to Slot() and the function runs on the receiving thread.
class Qtfier : public QObject {
    Q_OBJECT
public:
    explicit Qtfier(std::function<void()> function = {}, QObject* parent = nullptr);

public slots:
    // Runs the function; an empty one does nothing.
    void Slot();

private:
    std::function<void()> m_function;
};
