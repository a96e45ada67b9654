#pragma once

#include <QThread>

#include <functional>

// A thread that runs one function from inside its own event loop, so that the function may use
// timers and network objects that need one.
//
//     const int result = QThreadWithLoop::RunOnThread([&] { return engine.Run(); });
class QThreadWithLoop : public QThread {
    Q_OBJECT
public:
    explicit QThreadWithLoop(std::function<int()> work = {}, QObject* parent = nullptr);
    ~QThreadWithLoop() override;

    void SetWork(std::function<int()> work) { m_work = std::move(work); }
    // What the work returned (1 for no work); valid once the thread has finished.
    int Result() const { return m_result; }

    // Runs `work` on a new thread and waits with WaitWithQtEvents, pumping the caller's events,
    // until it is done; gives the work's result.
    static int RunOnThread(std::function<int()> work, QThread::Priority priority = QThread::InheritPriority);

protected:
    void run() override;

private:
    std::function<int()> m_work;
    int m_result = 0;
};
