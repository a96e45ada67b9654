#include "foundation/WaitWithQtEvents.h"

#include "libZoltaAtl/ZoltaAssert.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

WaitWithQtEvents::WaitWithQtEvents(std::function<bool()> keepWaiting, QObject* parent)
    : QObject(parent),
      m_keepWaiting(std::move(keepWaiting))
{
    ZOLTA_ASSERT(m_keepWaiting != nullptr);
}

void WaitWithQtEvents::Wait()
{
    if (!m_keepWaiting())
        return;
    m_waiting = true;
    QTimer wakeUp;
    wakeUp.setInterval(kWakeIntervalMs);
    // Direct: the timer fires on this thread, whichever thread this object belongs to.
    connect(&wakeUp, &QTimer::timeout, this, &WaitWithQtEvents::DummySlot, Qt::DirectConnection);
    wakeUp.start();
    while (m_keepWaiting())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    wakeUp.stop();
    m_waiting = false;
}

void WaitWithQtEvents::DummySlot()
{
    m_woken = true;
}
