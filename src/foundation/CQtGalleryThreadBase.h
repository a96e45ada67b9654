#pragma once

#include "foundation/ZoltaResult.h"

#include <QThread>

#include <atomic>

class CQtGalleryThreadBase;

// The non-Qt face of a gallery worker, for code that only wants the work run.
class CGalleryThreadBase {
public:
    virtual ~CGalleryThreadBase() = default;
    [[nodiscard]] virtual HRESULT Run() = 0;
};

// Told when a gallery worker has finished, on the thread that ran the work.
class IGalleryThreadObserver {
public:
    virtual ~IGalleryThreadObserver() = default;
    virtual void OnThreadFinished(CQtGalleryThreadBase* thread) = 0;
};

// A cancellable worker that runs Work() either on the caller's thread or inside the event loop
// of a thread of its own, at low priority. Work() polls IsCancelled() at its cancel points.
//
//     worker.Start(false);   // on its own thread
//     ...
//     worker.Cancel();       // optional
//     worker.Wait();         // pumps the caller's events meanwhile
//     const int result = worker.Result();
//
// A subclass whose Work() uses its own members must Cancel() and Wait() in its destructor.
class CQtGalleryThreadBase : public QThread {
    Q_OBJECT
public:
    explicit CQtGalleryThreadBase(QObject* parent = nullptr);
    ~CQtGalleryThreadBase() override;

    // inline true runs the work here and now; false starts the thread and returns.
    void Start(bool runInline);
    void Cancel() { m_cancel.store(true, std::memory_order_relaxed); }
    bool IsCancelled() const { return m_cancel.load(std::memory_order_relaxed); }
    bool IsRunning() const { return m_running.load(); }
    // Pumps the caller's events until the work has finished; at once if it is not running.
    void Wait();
    // What the work returned; read it after Wait().
    int Result() const { return m_result; }
    void SetObserver(IGalleryThreadObserver* observer) { m_observer = observer; }
    void SetStartPriority(QThread::Priority priority) { m_priority = priority; }
    static void Sleep(unsigned long seconds) { QThread::sleep(seconds); }

protected:
    virtual int Work() = 0;
    void run() override;

private:
    void Finish();

    std::atomic<bool> m_cancel{false};
    IGalleryThreadObserver* m_observer = nullptr;
    std::atomic<bool> m_running{false};
    int m_result = 0;
    QThread::Priority m_priority = QThread::InheritPriority;
};
