#include "foundation/QThreadWithLoop.h"

#include "foundation/Qtfier.h"
#include "foundation/WaitWithQtEvents.h"

#include <QTimer>

QThreadWithLoop::QThreadWithLoop(std::function<int()> work, QObject* parent)
    : QThread(parent),
      m_work(std::move(work))
{}

QThreadWithLoop::~QThreadWithLoop()
{
    wait();
}

void QThreadWithLoop::run()
{
    QTimer start;
    start.setSingleShot(true);
    start.setInterval(1);
    Qtfier body([this] {
        m_result = m_work ? m_work() : 1;
        this->exit(m_result);
    });
    connect(&start, &QTimer::timeout, &body, &Qtfier::Slot);
    start.start();
    m_result = exec();
}

int QThreadWithLoop::RunOnThread(std::function<int()> work, QThread::Priority priority)
{
    QThreadWithLoop thread(std::move(work));
    WaitWithQtEvents waiter([&thread] { return thread.isRunning(); });
    // The end of the thread wakes the wait at once instead of at the next timer tick.
    connect(&thread, &QThread::finished, &waiter, &WaitWithQtEvents::DummySlot);
    thread.start(priority);
    waiter.Wait();
    thread.wait();
    return thread.Result();
}
