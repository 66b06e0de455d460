// SPDX-License-Identifier: GPL-3.0-or-later
// Who gets events, queued work, and word of a second start of the program.
#include "platform/LatestWork.h"
#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"
#include "platform/OrderedQueue.h"
#include "platform/SingleInstance.h"
#include "platform/WorkerThread.h"

#include <QDir>
#include <QEventLoop>
#include <QLocalSocket>
#include <QProcess>
#include <QSet>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <future>
#include <optional>
#include <thread>
#include <unistd.h>
#include <vector>

// Another start of the program: prints whether its claim succeeded and, as owner, stays until it is killed.
static int startAnother(const QString& folder)
{
    SingleInstance instance(folder);
    const char answer = instance.claim() ? 'o' : 'r';
    return ::write(STDOUT_FILENO, &answer, 1) == 1 && answer == 'o' ? QCoreApplication::exec() : 0;
}

// A program that ends while a disk does not answer: what its thread may still use has to stay.
static int endBesideAHangingDisk()
{
    struct Used {
        Used() = default;
        ~Used() { std::_Exit(1); }
        Q_DISABLE_COPY_MOVE(Used)
    };
    static const Used used;
    WorkerThread(std::chrono::milliseconds(1)).post([] { ::pause(); });
    return 0;
}

// A program that ends during writes: one hangs in its driver, the others keep reporting.
static int endDuringWrites()
{
    MainQueue::attachToMainThread();
    std::atomic<int> hung = 0;
    OrderedQueue().post([&hung] {
        ++hung;
        ::pause();
    });
    static std::atomic<int> reports = 0;
    for (int machine = 0; machine < 3; ++machine) {
        OrderedQueue().post([] {
            for (;;)
                MainQueue::post([] { ++reports; });
        });
    }
    while (hung == 0 || reports < 1000)
        QCoreApplication::processEvents();
    return 0;
}

class PartsTest : public QObject
{
    Q_OBJECT
    const QTemporaryDir folder_;

    void start(QProcess& process) const { process.start(QCoreApplication::applicationFilePath(), {folder_.path()}); }
private Q_SLOTS:
    void initTestCase() { MainQueue::attachToMainThread(); }
    void nameAndObjectDecideWhoIsCalled();
    void handlersMayChangeTheObserversDuringAPost();
    void mainQueueKeepsEveryThreadsOrder();
    void workQueuedBehindAMessageBoxStillRuns();
    void blockedWritesHoldUpNoOtherMachine();
    void programEnds_data();
    void programEnds();
    void exactlyOneOfManyStartsBecomesTheOwner();
    void laterStartIsRefusedAndTheOwnerIsTold();
    void filesOfALaterStartAreHandedOver();
    void nonsenseOnTheSocketIsIgnored_data();
    void nonsenseOnTheSocketIsIgnored();
    void onlyTheLatestAnswerComes();
    void startsWhereNoSocketCanBeMade();
};

void PartsTest::nameAndObjectDecideWhoIsCalled()
{
    NotificationCenter center;
    QObject observer, neighbour, port;
    std::optional<QObject> unplugged(std::in_place);
    QStringList calls;
    const auto observe = [&](QObject& who, const QString& name, const QObject* object, const QString& call) {
        center.addObserver(&who, name, object, [&calls, call](const Notification&) { calls << call; });
    };
    observe(observer, "Rx", &port, "Rx of the port");
    observe(observer, "Rx", &*unplugged, "Rx of the other port");
    observe(observer, "Tx", nullptr, "Tx");
    observe(neighbour, "Rx", nullptr, "neighbour");
    center.post("Rx", &port);
    unplugged.reset();
    center.post("Rx");
    center.post("Rx", &unplugged.emplace()); // a new object at a dead one's address
    QCOMPARE(calls, QStringList({"Rx of the port", "neighbour", "neighbour", "neighbour"}));
    center.removeObserver(&observer, "Rx");
    center.post("Rx", &port);
    center.post("Tx", &port);
    center.removeObserver(&observer);
    center.post("Tx", &port);
    QCOMPARE(calls.mid(4), QStringList({"neighbour", "Tx"}));
}

void PartsTest::handlersMayChangeTheObserversDuringAPost()
{
    NotificationCenter center;
    int calls = 0;
    const auto count = [&calls](const Notification&) { ++calls; };
    QObject changer, removed;
    auto dying = std::make_unique<QObject>();
    center.addObserver(&changer, "n", nullptr, [&](const Notification&) {
        center.removeObserver(&removed);
        dying.reset();
        center.addObserver(&changer, "n", nullptr, count); // called from the next post on
    });
    center.addObserver(&removed, "n", nullptr, count);
    center.addObserver(dying.get(), "n", nullptr, count);
    center.post("n");
    QCOMPARE(calls, 0);
    center.post("n");
    QCOMPARE(calls, 1);
}

// More items wait at once than the pipe that wakes the loop has room for bytes.
void PartsTest::mainQueueKeepsEveryThreadsOrder()
{
    constexpr int threads = 4, posts = 25'000;
    std::array<int, threads> done{}; // touched only on the main thread
    std::vector<std::jthread> posters;
    for (std::size_t thread = 0; thread < threads; ++thread) {
        posters.emplace_back([&, thread] {
            for (int i = 0; i < posts; ++i)
                MainQueue::post([&, thread, i] { done[thread] += done[thread] == i; });
        });
    }
    posters.clear(); // joins them
    for (const int& count : done)
        QTRY_COMPARE_WITH_TIMEOUT(count, posts, 60'000);
}

void PartsTest::workQueuedBehindAMessageBoxStillRuns()
{
    QEventLoop box;
    int answer = 0;
    MainQueue::post([&] { answer = box.exec(); }); // one machine's work opens it, another's waits behind
    MainQueue::post([&] { MainQueue::post([&] { box.exit(7); }); });
    QTRY_COMPARE(answer, 7);
}

void PartsTest::blockedWritesHoldUpNoOtherMachine()
{
    constexpr int machines = 200;
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    std::atomic<int> blocked = 0;
    auto device = std::make_shared<int>(0); // a task that kept it would keep the serial device open
    for (int i = 0; i < machines; ++i) {
        OrderedQueue().post([&blocked, released, device] {
            ++blocked;
            released.wait();
        });
    }
    QTRY_COMPARE(blocked.load(), machines);
    release.set_value();
    QTRY_COMPARE(device.use_count(), 1L);
}

void PartsTest::programEnds_data()
{
    QTest::addColumn<QString>("job");
    QTest::newRow("during writes") << "--end";
    QTest::newRow("beside a hanging disk") << "--hang";
}

void PartsTest::programEnds()
{
    QFETCH(QString, job);
    QProcess program;
    program.start(QCoreApplication::applicationFilePath(), {job});
    QVERIFY(program.waitForFinished(60'000));
    QVERIFY(program.exitStatus() == QProcess::NormalExit && program.exitCode() == 0);
}

void PartsTest::exactlyOneOfManyStartsBecomesTheOwner()
{
    std::array<QProcess, 8> starts;
    for (auto& process : starts)
        start(process);
    QByteArray answers;
    for (auto& process : starts) {
        QTRY_COMPARE_WITH_TIMEOUT(process.bytesAvailable(), 1, 60'000);
        answers += process.readAll();
    }
    QCOMPARE(answers.count('o'), 1);
}

// The test before killed its owner. The socket left behind must not lock the settings for ever.
void PartsTest::laterStartIsRefusedAndTheOwnerIsTold()
{
    SingleInstance first(folder_.path());
    QSignalSpy asked(&first, &SingleInstance::activationRequested);
    QVERIFY(first.claim());
    for (int starts = 1; starts <= 2; ++starts) {
        QProcess second;
        start(second);
        QTRY_COMPARE(second.state(), QProcess::NotRunning);
        QCOMPARE(second.readAllStandardOutput(), QByteArray("r"));
        QTRY_COMPARE(asked.count(), starts);
    }
    SingleInstance other("/proc/one"), another("/proc/other"); // other settings, whose folders cannot even be made
    QVERIFY(other.claim() && another.claim());
}

void PartsTest::filesOfALaterStartAreHandedOver()
{
    const QTemporaryDir settings;
    SingleInstance owner(settings.path());
    QSignalSpy asked(&owner, &SingleInstance::activationRequested), given(&owner, &SingleInstance::programsHandedOver);
    QVERIFY(owner.claim({"/its/own.nc"}));
    const QStringList paths = {QString::fromUtf8("/srv/Fr\u00E4se 5/O1.nc"), "/srv/two\nlines.nc"};
    QVERIFY(!SingleInstance(settings.path()).claim(paths));
    QTRY_COMPARE(given.count(), 1);
    QCOMPARE(given[0][0].toStringList(), paths);
    QCOMPARE(asked.count(), 0);
}

void PartsTest::nonsenseOnTheSocketIsIgnored_data()
{
    QTest::addColumn<QByteArray>("message");
    const QByteArray mark("varnock open\n");
    QTest::newRow("another protocol") << QByteArray("GET / HTTP/1.1\r\n\r\n");
    QTest::newRow("no files") << mark + '\0';
    QTest::newRow("cut off") << mark + "/srv/O1.nc" + '\0';
    QTest::newRow("relative path") << mark + "O1.nc" + '\0' + '\0';
    QTest::newRow("no text") << mark + "/srv/\xFF" + '\0' + '\0';
    QTest::newRow("more after the end") << mark + "/srv/O1.nc" + '\0' + '\0' + "x";
    QTest::newRow("too long") << mark + '/' + QByteArray(3 << 20, 'x') + '\0' + '\0';
}

void PartsTest::nonsenseOnTheSocketIsIgnored()
{
    QFETCH(QByteArray, message);
    const auto sockets = [] {
        const auto names = QDir::temp().entryList({"varnock-*"}, QDir::System);
        return QSet<QString>(names.begin(), names.end());
    };
    const auto before = sockets();
    const QTemporaryDir settings;
    SingleInstance owner(settings.path());
    QSignalSpy asked(&owner, &SingleInstance::activationRequested), given(&owner, &SingleInstance::programsHandedOver);
    QVERIFY(owner.claim());
    const auto own = (sockets() - before).values();
    QVERIFY(!own.isEmpty());
    QLocalSocket socket;
    socket.connectToServer(QDir::temp().filePath(own.first()));
    socket.write(message);
    QTRY_VERIFY(socket.bytesToWrite() == 0 || socket.state() == QLocalSocket::UnconnectedState);
    socket.abort();
    QVERIFY(!SingleInstance(settings.path()).claim()); // it still listens, and answers in the order of the calls
    QTRY_COMPARE(asked.count(), 1);
    QCOMPARE(given.count(), 0);
}

void PartsTest::onlyTheLatestAnswerComes()
{
    std::atomic<bool> hasBegun = false, isHeld = true, hasSeenCancel = false;
    QList<int> answers;
    const auto done = [&](int answer) { answers << answer; };
    auto work = std::make_unique<LatestWork>();
    work->start(
        [&](const std::atomic<bool>& cancelled) {
            hasBegun = true;
            while (isHeld)
                std::this_thread::yield();
            hasSeenCancel = cancelled.load();
            return std::optional(1); // too late
        },
        done);
    QTRY_VERIFY(hasBegun); // work that is cancelled before that is not even begun
    work->start([](const std::atomic<bool>&) { return std::optional(2); }, done);
    isHeld = false;
    QTRY_COMPARE(answers, QList<int>{2});
    QVERIFY(hasSeenCancel);
}

void PartsTest::startsWhereNoSocketCanBeMade()
{
    const QString tooLong = folder_.filePath(QString(120, u'x')); // for a socket's path
    QVERIFY(QDir().mkdir(tooLong) && qputenv("TMPDIR", tooLong.toUtf8()));
    QVERIFY(SingleInstance(folder_.path()).claim());
}

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    if (argc == 2 && QByteArrayView(argv[1]) == "--end") return endDuringWrites();
    if (argc == 2 && QByteArrayView(argv[1]) == "--hang") return endBesideAHangingDisk();
    if (argc == 2 && QDir(argv[1]).exists()) return startAnother(argv[1]);
    PartsTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "platform_parts.moc"
