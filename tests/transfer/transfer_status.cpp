// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferStatus.h"

#include <QTest>

/// What the operator is told, without waiting for it.
class StatusTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void sendOnIsOfferedAsLongAsTheHoldLasts_data()
    {
        QTest::addColumn<QList<int>>("ticks"); // seconds of the hold; 0 for none, negative where it is then put off
        QTest::addColumn<bool>("isOffered");
        QTest::newRow("a hold of a cut") << QList{10, 59} << false;
        QTest::newRow("after a minute") << QList{59, 60} << true;
        QTest::newRow("an hour later") << QList{60, 3600} << true;
        QTest::newRow("put off") << QList{-70, 71, 129} << false;
        QTest::newRow("put off, a minute later") << QList{-70, 130} << true;
        QTest::newRow("put off twice") << QList{-70, -130, 189} << false;
        QTest::newRow("put off twice, a minute later") << QList{-70, -130, 190} << true;
        QTest::newRow("put off before it was offered") << QList{-30, 60} << true;
        QTest::newRow("the next hold, another one put off") << QList{-70, 0, 60} << true;
        QTest::newRow("the next hold, begun between two looks") << QList{-70, 1, 60} << true;
        QTest::newRow("over") << QList{70, 0} << false;
    }

    void sendOnIsOfferedAsLongAsTheHoldLasts()
    {
        QFETCH(QList<int>, ticks);
        TransferStatus status;
        status.enter(TransferState::Sending, 0);
        for (const int tick : ticks) {
            const qint64 heldFor = std::abs(tick) * 1000;
            status.setHold(tick == 0 ? std::nullopt : std::optional(heldFor), 10'000'000);
            if (tick < 0) status.putOffSendOn();
        }
        QTEST(status.offersSendOn(), "isOffered");
    }

    void cardTellsAHoldFromALineThatDoesNotMove()
    {
        TransferStatus status;
        status.enter(TransferState::Sending, 0);
        status.clock.begin(0, {1.0, 1.0, 0, 100});
        status.clock.wrote(0, 10);
        const qint64 muchLater = 60'000;
        QCOMPARE(TransferStatus::activity(status.state(muchLater)), TransferActivity::Still);
        status.setHold(2000, muchLater);
        QCOMPARE(TransferStatus::activity(status.state(muchLater)), TransferActivity::Held);
    }

    void programsReceivedOneAfterTheOtherAreCounted()
    {
        TransferStatus status;
        TransferFacts facts;
        facts.lines = 5, facts.bytes = 21, facts.programs = 1;
        status.enter(TransferState::Receiving, 0);
        status.received(0);
        QCOMPARE(status.details(1, facts), QString("5 lines, 21 bytes"));
        facts.programs = 2;
        QCOMPARE(status.details(2, facts), QString("2 programs, 5 lines, 21 bytes"));
    }
};

QTEST_APPLESS_MAIN(StatusTest)
#include "transfer_status.moc"
