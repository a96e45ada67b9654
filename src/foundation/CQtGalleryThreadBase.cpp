#include "foundation/CQtGalleryThreadBase.h"

#include "foundation/QtEventLoopWorkaround.h"
#include "foundation/WaitWithQtEvents.h"

#include <QTimer>

CQtGalleryThreadBase::CQtGalleryThreadBase(QObject* parent)
    : QThread(parent)
{}

CQtGalleryThreadBase::~CQtGalleryThreadBase()
{
    // Last line of defence: a QThread destroyed while running ends the process.
    Cancel();
    QThread::wait();
}

void CQtGalleryThreadBase::Start(bool runInline)
{
    if (!runInline) {
        m_running = true;
        QThread::start(m_priority);
        return;
    }
    m_running = true;
    m_result = Work();
    Finish();
}

void CQtGalleryThreadBase::run()
{
    m_running = true;
    setPriority(QThread::LowPriority);
    QTimer start;
    start.setSingleShot(true);
    start.setInterval(1);
    QtEventLoopWorkaround body([this] { return Work(); });
    connect(&start, &QTimer::timeout, &body, &QtEventLoopWorkaround::Execute);
    start.start();
    m_result = exec();
    Finish();
}

void CQtGalleryThreadBase::Finish()
{
    if (m_observer)
        m_observer->OnThreadFinished(this);
    m_running = false;
}

void CQtGalleryThreadBase::Wait()
{
    WaitWithQtEvents waiter([this] { return isRunning() && m_running.load(); });
    // The end of the thread wakes the wait at once instead of at the next timer tick.
    connect(this, &QThread::finished, &waiter, &WaitWithQtEvents::DummySlot);
    waiter.Wait();
    if (QThread::currentThread() != this)
        QThread::wait();
}
