// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/BackgroundQueue.h"
#include "platform/MainQueue.h"

#include <QEventLoop>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

class QueuesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { MainQueue::attachToMainThread(); }
    void mainQueueKeepsEveryThreadsOrder();
    void mainQueueSurvivesMoreWorkThanItsWakeUpsHold();
    void workBehindANestedEventLoopReachesThatLoop();
    void workThatPostsWorkDoesNotStarveTheEventLoop();
    void blockedWritesOfManyMachinesHoldUpNoOther();
    void everyPostedTaskRunsOnce();
    void whatATaskHoldsIsReleasedWhenItEnds();
};

void QueuesTest::mainQueueKeepsEveryThreadsOrder()
{
    constexpr int threads = 8;
    constexpr int posts = 2000;
    std::vector<std::vector<int>> got(threads); // touched on the main thread alone
    bool allOnMainThread = true;
    std::vector<std::thread> posters;
    for (int thread = 0; thread < threads; ++thread) {
        posters.emplace_back([&, thread] {
            for (int i = 0; i < posts; ++i) {
                MainQueue::post([&, thread, i] {
                    got[static_cast<std::size_t>(thread)].push_back(i);
                    allOnMainThread = allOnMainThread && QThread::currentThread() == qApp->thread();
                });
            }
        });
    }
    for (auto& poster : posters)
        poster.join();
    for (const auto& order : got) {
        QTRY_COMPARE(order.size(), std::size_t{posts});
        QVERIFY(std::is_sorted(order.begin(), order.end()));
    }
    QVERIFY(allOnMainThread);
}

void QueuesTest::mainQueueSurvivesMoreWorkThanItsWakeUpsHold()
{
    int done = 0;
    for (int i = 0; i < 200'000; ++i) // more than a pipe has bytes
        MainQueue::post([&done] { ++done; });
    QCOMPARE(done, 0);
    QTRY_COMPARE_WITH_TIMEOUT(done, 200'000, 60'000);
}

void QueuesTest::workBehindANestedEventLoopReachesThatLoop()
{
    QEventLoop box; // as a message box that one machine's work opens
    QStringList order;
    MainQueue::post([&] {
        order << "opened";
        box.exec();
        order << "closed";
    });
    MainQueue::post([&] { order << "other machine"; });
    BackgroundQueue::post([&] {
        MainQueue::post([&] {
            order << "later";
            box.quit();
        });
    });
    QTRY_COMPARE(order, QStringList({"opened", "other machine", "later", "closed"}));
}

void QueuesTest::workThatPostsWorkDoesNotStarveTheEventLoop()
{
    bool timerFired = false;
    std::function<void()> again = [&] {
        if (!timerFired) MainQueue::post(again);
    };
    QTimer::singleShot(0, this, [&timerFired] { timerFired = true; });
    MainQueue::post(again);
    QTRY_VERIFY(timerFired);
    QCoreApplication::processEvents();
}

void QueuesTest::blockedWritesOfManyMachinesHoldUpNoOther()
{
    constexpr int machines = 200;
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    std::atomic<int> blocked = 0;
    std::atomic<int> ended = 0;
    for (int i = 0; i < machines; ++i) {
        BackgroundQueue::post([&] {
            ++blocked;
            released.wait();
            ++ended;
        });
    }
    QTRY_COMPARE(blocked.load(), machines);

    std::atomic<bool> otherRan = false;
    BackgroundQueue::post([&otherRan] { otherRan = true; });
    QTRY_VERIFY(otherRan);
    QCOMPARE(ended.load(), 0);
    release.set_value();
    QTRY_COMPARE(ended.load(), machines);
}

void QueuesTest::everyPostedTaskRunsOnce()
{
    constexpr int posts = 3000;
    std::vector<std::atomic<int>> runs(4 * posts);
    std::vector<std::thread> posters;
    for (int thread = 0; thread < 4; ++thread) {
        posters.emplace_back([&, thread] {
            for (int i = 0; i < posts; ++i)
                BackgroundQueue::post([&runs, at = static_cast<std::size_t>(thread * posts + i)] { ++runs[at]; });
        });
    }
    for (auto& poster : posters)
        poster.join();
    const auto once = [&runs] {
        return std::all_of(runs.begin(), runs.end(), [](const std::atomic<int>& count) { return count == 1; });
    };
    QTRY_VERIFY(once());
}

void QueuesTest::whatATaskHoldsIsReleasedWhenItEnds()
{
    auto device = std::make_shared<int>(0); // a task that kept it would keep the serial device open
    BackgroundQueue::post([device] {});
    QTRY_COMPARE(device.use_count(), 1L);
}

QTEST_GUILESS_MAIN(QueuesTest)
#include "platform_queues.moc"
