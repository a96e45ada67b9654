#pragma once

#include <QObject>

#include <functional>

// Waits while a condition holds and keeps this thread's events flowing meanwhile, so that a
// dialog stays alive. processEvents(WaitForMoreEvents) sleeps until something happens; a 500 ms
// timer makes sure something does, so the condition is looked at at least that often and the
// thread never spins.
//
//     WaitWithQtEvents([&] { return worker.isRunning(); }).Wait();
class WaitWithQtEvents : public QObject {
    Q_OBJECT
public:
    static constexpr int kWakeIntervalMs = 500;

    explicit WaitWithQtEvents(std::function<bool()> keepWaiting, QObject* parent = nullptr);

    // Returns at once, without pumping, when the condition is already false.
    void Wait();

public slots:
    // Nothing to do: a signal reaching it is only there to wake the waiting event loop.
    void DummySlot();

private:
    bool m_waiting = false;
    bool m_woken = false;
    std::function<bool()> m_keepWaiting;
};
