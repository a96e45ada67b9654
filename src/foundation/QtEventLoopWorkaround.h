#pragma once

#include <QObject>

#include <functional>

// Helpers for code that must run or wait inside an event loop of its own thread.
//
// As the body of a thread: connect a single-shot timer to Execute() and call exec(); the work
// then runs inside the loop, and its result ends the loop and becomes exec()'s return value.
//
// As the wait of a fetch: PumpWhileIdleAllows() sleeps in the thread's event loop until the
// fetch says it has finished or the idle budget is spent.
class QtEventLoopWorkaround : public QObject {
    Q_OBJECT
public:
    static constexpr int kWakeIntervalMs = 500;

    explicit QtEventLoopWorkaround(std::function<int()> work = {}, QObject* parent = nullptr);

    void SetWork(std::function<int()> work) { m_work = std::move(work); }

    // Pumps this thread's events while `finished` gives false and `timeLeftMs` is not negative.
    // The time spent is taken off `timeLeftMs` as it passes; the caller's slots may raise it again
    // (on every sign of progress), which makes the limit one of idleness.
    void PumpWhileIdleAllows(const std::function<bool()>& finished, int& timeLeftMs);

public slots:
    // Nothing to do: it only wakes the event loop.
    void DummySlot();
    // Runs the work (1 when there is none) and ends the current thread's event loop with its result.
    void Execute();

private:
    std::function<int()> m_work;
};
