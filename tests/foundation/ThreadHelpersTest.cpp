#include "foundation/CQtGalleryThreadBase.h"
#include "foundation/QThreadWithLoop.h"
#include "foundation/QtEventLoopWorkaround.h"
#include "foundation/QtEventProxy.h"
#include "foundation/WaitWithQtEvents.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using namespace std::chrono_literals;

// Generous bound for anything that should take well under a second: only a hang trips it.
constexpr auto kHangLimit = 20s;

// Waits on a worker thread for a flag that only the main thread's event loop can set.
bool WaitForFlag(const std::atomic<bool>& flag)
{
    const auto deadline = std::chrono::steady_clock::now() + kHangLimit;
    while (!flag && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(5ms);
    return flag;
}

TEST(QThreadWithLoopTest, RunsTheWorkInsideItsOwnThreadsEventLoopWhileTheCallerPumps)
{
    QThread* workThread = nullptr;
    int loopLevel = 0;
    EXPECT_EQ(42, QThreadWithLoop::RunOnThread([&] {
                  workThread = QThread::currentThread();
                  loopLevel = workThread->loopLevel();
                  return 42;
              }));
    EXPECT_NE(QThread::currentThread(), workThread);
    EXPECT_GE(loopLevel, 1);

    // The caller keeps pumping its events meanwhile: a call queued to it runs while it waits.
    QObject mainObject;
    std::atomic<bool> handled{false};
    EXPECT_EQ(0, QThreadWithLoop::RunOnThread([&] {
                  QMetaObject::invokeMethod(
                      &mainObject, [&] { handled = true; }, Qt::QueuedConnection);
                  return WaitForFlag(handled) ? 0 : 1;
              }));

    EXPECT_EQ(1, QThreadWithLoop::RunOnThread({}));  // no work at all gives one
}

TEST(WaitWithQtEventsTest, PumpsWhileTheConditionHoldsAndSeesAChangeWithoutAnyEvent)
{
    bool ran = false;
    QObject context;
    QMetaObject::invokeMethod(
        &context, [&] { ran = true; }, Qt::QueuedConnection);
    int firstLooks = 0;
    WaitWithQtEvents([&] { return ++firstLooks, false; }).Wait();
    EXPECT_EQ(1, firstLooks);
    EXPECT_FALSE(ran);  // a false condition returns without pumping

    std::atomic<bool> keepWaiting{true};
    std::atomic<bool> returned{false};
    std::atomic<bool> neededRescue{false};
    std::atomic<int> looks{0};
    QObject mainObject;
    std::thread setter([&] {
        std::this_thread::sleep_for(1200ms);  // a few wake-up intervals, with no event sent
        keepWaiting = false;
        // Should the wait never look again by itself, wake it so that the test fails, not hangs.
        if (!WaitForFlag(returned)) {
            neededRescue = true;
            QMetaObject::invokeMethod(
                &mainObject, [] {}, Qt::QueuedConnection);
        }
    });
    WaitWithQtEvents([&] {
        ++looks;
        return keepWaiting.load();
    }).Wait();
    returned = true;
    setter.join();
    EXPECT_TRUE(ran);
    EXPECT_FALSE(neededRescue);
    // A spinning wait would look millions of times; the wake-ups alone come every 500 ms.
    EXPECT_LT(looks.load(), 200);
}

TEST(QtEventProxyTest, HandsChosenEventTypesToTheirFunctions)
{
    QObject watched;
    QtEventProxy proxy;
    watched.installEventFilter(&proxy);
    int userEvents = 0;
    QObject* seenObject = nullptr;
    proxy.SetHandler(QEvent::User, [&](QObject* object, QEvent*) {
        ++userEvents;
        seenObject = object;
        return true;
    });
    proxy.SetHandler(static_cast<QEvent::Type>(QEvent::User + 1), [](QObject*, QEvent*) { return false; });

    QEvent user(QEvent::User);
    QEvent passed(static_cast<QEvent::Type>(QEvent::User + 1));
    EXPECT_FALSE(proxy.eventFilter(&watched, &passed));
    QCoreApplication::sendEvent(&watched, &user);
    EXPECT_EQ(1, userEvents);
    EXPECT_EQ(&watched, seenObject);
    proxy.SetHandler(QEvent::User, {});
    EXPECT_FALSE(proxy.eventFilter(&watched, &user));
}

TEST(QtEventLoopWorkaroundTest, ProgressRaisesTheIdleBudgetAndIdlenessEndsThePump)
{
    QtEventLoopWorkaround workaround;
    int timeLeft = 300;
    int progress = 0;
    QTimer ticker;
    ticker.setInterval(100);
    // Every tick is a sign of life, like a block of a download arriving.
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        ++progress;
        timeLeft = 300;
    });
    ticker.start();
    // Runs well past the 300 ms budget because progress keeps coming.
    workaround.PumpWhileIdleAllows([&] { return progress >= 8; }, timeLeft);
    EXPECT_EQ(8, progress);
    EXPECT_GE(timeLeft, 0);
    ticker.stop();

    // With nothing happening, the budget runs out; the wake-ups make sure it is noticed. The
    // rescue timer only turns a missing wake-up into a failure instead of a hang.
    bool rescued = false;
    QTimer::singleShot(kHangLimit, &ticker, [&] { rescued = true; });
    int shortBudget = 50;
    workaround.PumpWhileIdleAllows([] { return false; }, shortBudget);
    EXPECT_LT(shortBudget, 0);
    EXPECT_FALSE(rescued);
}

class RecordingObserver : public IGalleryThreadObserver {
public:
    void OnThreadFinished(CQtGalleryThreadBase* thread) override
    {
        finishedThread = thread;
        wasRunning = thread->IsRunning();
        ++calls;
    }
    CQtGalleryThreadBase* finishedThread = nullptr;
    bool wasRunning = false;
    int calls = 0;
};

class TestWorker : public CQtGalleryThreadBase {
public:
    explicit TestWorker(std::function<int(TestWorker&)> body)
        : m_body(std::move(body))
    {}
    ~TestWorker() override
    {
        Cancel();
        Wait();
    }
    QThread* ranOn = nullptr;
    int loopLevel = -1;

protected:
    int Work() override
    {
        ranOn = QThread::currentThread();
        loopLevel = ranOn->loopLevel();
        return m_body(*this);
    }

private:
    std::function<int(TestWorker&)> m_body;
};

TEST(CQtGalleryThreadBaseTest, InlineStartRunsOnTheCallersThreadThreadedOneInTheWorkersLoop)
{
    RecordingObserver observer;
    TestWorker inlineWorker([](TestWorker& self) { return self.IsRunning() ? 7 : -1; });
    inlineWorker.SetObserver(&observer);
    inlineWorker.Wait();  // never started: returns at once
    inlineWorker.Start(true);
    EXPECT_EQ(7, inlineWorker.Result());
    EXPECT_EQ(QThread::currentThread(), inlineWorker.ranOn);
    EXPECT_FALSE(inlineWorker.IsRunning());
    EXPECT_EQ(&inlineWorker, observer.finishedThread);
    EXPECT_TRUE(observer.wasRunning);

    QThread::Priority priority = QThread::InheritPriority;
    TestWorker worker([&](TestWorker&) {
        priority = QThread::currentThread()->priority();
        return 11;
    });
    worker.SetObserver(&observer);
    worker.Start(false);
    EXPECT_TRUE(worker.IsRunning());
    worker.Wait();
    EXPECT_FALSE(worker.isRunning());
    EXPECT_EQ(11, worker.Result());
    EXPECT_NE(QThread::currentThread(), worker.ranOn);
    EXPECT_GE(worker.loopLevel, 1);
    EXPECT_EQ(QThread::LowPriority, priority);
    EXPECT_EQ(2, observer.calls);
    EXPECT_EQ(&worker, observer.finishedThread);
}

TEST(CQtGalleryThreadBaseTest, CancelReachesTheWorkAndWaitPumpsMeanwhile)
{
    TestWorker worker([&](TestWorker& self) {
        const auto deadline = std::chrono::steady_clock::now() + kHangLimit;
        while (!self.IsCancelled() && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(2ms);
        return self.IsCancelled() ? 4 : 0;
    });
    worker.Start(false);
    // The cancel comes from the main thread's event loop, which only Wait() keeps running.
    QTimer::singleShot(30, [&] { worker.Cancel(); });
    worker.Wait();
    EXPECT_EQ(4, worker.Result());
}

}  // namespace
