// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/NotificationCenter.h"

#include <QTest>

#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <optional>

class NotificationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nameAndObjectDecideWhoIsCalled();
    void userInfoArrives();
    void deadObserverIsNotCalled();
    void newObjectInADeadOnesPlaceIsNotMistakenForIt();
    void removingByNameKeepsTheOtherNames();
    void handlersMayChangeTheObserversDuringAPost();
    void handlerMayPostAgain();
};

void NotificationsTest::nameAndObjectDecideWhoIsCalled()
{
    NotificationCenter center;
    QObject observer;
    QObject port;
    QObject otherPort;
    QStringList calls;
    const auto note = [&calls](const QString& who) { return [&calls, who](const Notification&) { calls << who; }; };
    center.addObserver(&observer, "RxOnComm", &port, note("port"));
    center.addObserver(&observer, "RxOnComm", &otherPort, note("other port"));
    center.addObserver(&observer, "RxOnComm", nullptr, note("any"));
    center.addObserver(&observer, "TxOnComm", nullptr, note("other name"));

    center.post("RxOnComm", &port);
    QCOMPARE(calls, QStringList({"port", "any"}));
    calls.clear();
    center.post("RxOnComm");
    QCOMPARE(calls, QStringList({"any"}));
}

void NotificationsTest::userInfoArrives()
{
    NotificationCenter center;
    QObject observer;
    QObject sender;
    std::optional<Notification> got;
    center.addObserver(&observer, "MCIcon_Click", nullptr, [&got](const Notification& n) { got = n; });
    center.post("MCIcon_Click", &sender, {{"MC", 7}});
    QVERIFY(got);
    QCOMPARE(got->name, QStringLiteral("MCIcon_Click"));
    QCOMPARE(got->object, &sender);
    QCOMPARE(got->userInfo.value("MC").toInt(), 7);
}

void NotificationsTest::deadObserverIsNotCalled()
{
    NotificationCenter center;
    int calls = 0;
    auto observer = std::make_unique<QObject>();
    center.addObserver(observer.get(), "n", nullptr, [&calls](const Notification&) { ++calls; });
    center.post("n");
    observer.reset();
    center.post("n");
    QCOMPARE(calls, 1);
}

void NotificationsTest::newObjectInADeadOnesPlaceIsNotMistakenForIt()
{
    NotificationCenter center;
    QObject observer;
    int calls = 0;
    alignas(QObject) std::array<std::byte, sizeof(QObject)> place;
    auto* port = new (place.data()) QObject;
    center.addObserver(&observer, "n", port, [&calls](const Notification&) { ++calls; });
    port->~QObject();
    center.post("n", nullptr);
    auto* nextPort = new (place.data()) QObject;
    center.post("n", nextPort);
    nextPort->~QObject();
    QCOMPARE(calls, 0);
}

void NotificationsTest::removingByNameKeepsTheOtherNames()
{
    NotificationCenter center;
    QObject observer;
    QObject another;
    QStringList calls;
    for (const char* name : {"a", "b"}) {
        center.addObserver(&observer, name, nullptr, [&calls](const Notification& n) { calls << n.name; });
        center.addObserver(&another, name, nullptr, [&calls](const Notification& n) { calls << "other " + n.name; });
    }
    center.removeObserver(&observer, "a");
    center.post("a");
    center.post("b");
    QCOMPARE(calls, QStringList({"other a", "b", "other b"}));

    calls.clear();
    center.removeObserver(&observer);
    center.post("a");
    center.post("b");
    QCOMPARE(calls, QStringList({"other a", "other b"}));
}

void NotificationsTest::handlersMayChangeTheObserversDuringAPost()
{
    NotificationCenter center;
    QStringList calls;
    QObject changer;
    QObject newcomer;
    QObject removed;
    auto dying = std::make_unique<QObject>();
    center.addObserver(&changer, "n", nullptr, [&](const Notification&) {
        calls << "changer";
        center.removeObserver(&changer);
        center.removeObserver(&removed);
        dying.reset();
        center.addObserver(&newcomer, "n", nullptr, [&calls](const Notification&) { calls << "newcomer"; });
    });
    center.addObserver(&removed, "n", nullptr, [&calls](const Notification&) { calls << "removed"; });
    center.addObserver(dying.get(), "n", nullptr, [&calls](const Notification&) { calls << "dying"; });

    center.post("n");
    QCOMPARE(calls, QStringList({"changer"}));
    calls.clear();
    center.post("n");
    QCOMPARE(calls, QStringList({"newcomer"}));
}

void NotificationsTest::handlerMayPostAgain()
{
    NotificationCenter center;
    QObject observer;
    int depth = 0;
    center.addObserver(&observer, "n", nullptr, [&](const Notification&) {
        if (++depth < 3) center.post("n");
    });
    center.post("n");
    QCOMPARE(depth, 3);
}

QTEST_GUILESS_MAIN(NotificationsTest)
#include "platform_notifications.moc"
