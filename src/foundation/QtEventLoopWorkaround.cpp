#include "foundation/QtEventLoopWorkaround.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

QtEventLoopWorkaround::QtEventLoopWorkaround(std::function<int()> work, QObject* parent)
    : QObject(parent),
      m_work(std::move(work))
{}

void QtEventLoopWorkaround::DummySlot()
{}

void QtEventLoopWorkaround::Execute()
{
    const int result = m_work ? m_work() : 1;
    QThread::currentThread()->exit(result);
}

void QtEventLoopWorkaround::PumpWhileIdleAllows(const std::function<bool()>& finished, int& timeLeftMs)
{
    QElapsedTimer sinceRestart;
    QElapsedTimer sinceWakeUp;
    sinceRestart.start();
    sinceWakeUp.start();
    // A pending wake-up guarantees that the sleep below ends within the interval.
    QTimer::singleShot(kWakeIntervalMs, this, &QtEventLoopWorkaround::DummySlot);
    while (!finished() && timeLeftMs >= 0) {
        if (sinceWakeUp.elapsed() >= kWakeIntervalMs) {
            QTimer::singleShot(kWakeIntervalMs, this, &QtEventLoopWorkaround::DummySlot);
            sinceWakeUp.restart();
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        timeLeftMs -= static_cast<int>(sinceRestart.restart());
    }
}
