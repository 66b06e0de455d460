// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "support/PtyPair.h"

#include "shell/viewMC.h"

#include <QComboBox>
#include <QRandomGenerator>

class StoppingTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void stopAndContinueLosesAndDoublesNothing_data();
    void stopAndContinueLosesAndDoublesNothing();
    void rewindSendsFromTheTop();
    void movedCaretDecidesWhereToContinue();
    void clicksAndKeysDuringASendChangeNothing();

private:
    QByteArray onWire(const QByteArray& program) const { return QByteArray(program).replace("\n", "\r\n"); }

    QTemporaryDir dir_;
    std::unique_ptr<PtyPair> line_;
    std::unique_ptr<Operator> op_;
    std::shared_ptr<MachineRecord> machine_;
};

void StoppingTest::init()
{
    op_.reset();
    line_ = std::make_unique<PtyPair>();
    machine_ = Shop::machineOn(line_->devicePath().toStdString(), QStringLiteral("Fanuc"));
    machine_->MCFLOW = 0;
    Shop::storeMachines({machine_.get()});
    op_ = std::make_unique<Operator>();
}

void StoppingTest::stopAndContinueLosesAndDoublesNothing_data()
{
    QTest::addColumn<int>("seed");
    for (int seed = 1; seed <= 12; ++seed)
        QTest::addRow("stop points %d", seed) << seed;
}

// The control reads now and then, so that the device's buffer fills and stops hit half-taken lines, header and trailer.
void StoppingTest::stopAndContinueLosesAndDoublesNothing()
{
    QFETCH(int, seed);
    QRandomGenerator chance(static_cast<quint32>(seed));
    const QByteArray program = Shop::program(400) + QByteArray(6000, 'X') + "\nM30";
    op_->openSend(1, Shop::writeFile(dir_, QStringLiteral("stop.nc"), program));
    op_->click(QStringLiteral("btnSend"));
    const QByteArray expected = QByteArray(20, '\0') + "%\r\n" + onWire(program) + "%\r\n";
    QByteArray received;
    for (int round = 0; received.size() < expected.size() && round < 3000; ++round) {
        QTest::qWait(static_cast<int>(chance.bounded(4)));
        if (chance.bounded(3) == 0) received += line_->read();
        if (chance.bounded(4) == 0 && op_->isShown(QStringLiteral("btnStop"))) {
            op_->click(QStringLiteral("btnStop"));
            if (chance.bounded(2) == 0) received += line_->read();
            QTest::qWait(static_cast<int>(chance.bounded(15)));
            op_->click(QStringLiteral("btnSend"));
        }
    }
    received += line_->read();
    QCOMPARE(received.size(), expected.size());
    QCOMPARE(received, expected);
}

void StoppingTest::rewindSendsFromTheTop()
{
    op_->openSend(1, Shop::writeFile(dir_, QStringLiteral("rewind.nc"), Shop::program(5000)));
    op_->click(QStringLiteral("btnSend"));
    line_->readAtLeast(500);
    op_->click(QStringLiteral("btnStop"));
    QTest::qWait(30);
    line_->read();
    op_->click(QStringLiteral("btnRewind"));
    op_->click(QStringLiteral("btnSend"));
    QByteArray received = line_->readAtLeast(60);
    QVERIFY(received.startsWith(QByteArray(20, '\0') + "%\r\nN10 G01 X1.5 F200\r\n"));
}

void StoppingTest::movedCaretDecidesWhereToContinue()
{
    op_->openSend(1, Shop::writeFile(dir_, QStringLiteral("caret.nc"), Shop::program(5000)));
    op_->click(QStringLiteral("btnSend"));
    line_->readAtLeast(500);
    op_->click(QStringLiteral("btnStop"));
    QTest::qWait(30);
    line_->read();
    auto* editor = op_->find<QWidget>(QStringLiteral("rt1"));
    QTest::keyClick(editor, Qt::Key_Home, Qt::ControlModifier);
    QTest::keyClick(editor, Qt::Key_Down);
    QCOMPARE(op_->find<QComboBox>(QStringLiteral("cbo1"))->currentIndex(), 1);
    op_->click(QStringLiteral("btnSend"));
    QVERIFY(line_->readAtLeast(40).startsWith("N20 G01 X2.5 F200\r\nN30 "));
}

void StoppingTest::clicksAndKeysDuringASendChangeNothing()
{
    const QByteArray program = Shop::program(3000);
    op_->openSend(1, Shop::writeFile(dir_, QStringLiteral("clicks.nc"), program));
    op_->click(QStringLiteral("btnLock")); // unlocked: keys could edit
    op_->click(QStringLiteral("btnSend"));
    auto* editor = op_->find<QWidget>(QStringLiteral("rt1"));
    const QByteArray expected = QByteArray(20, '\0') + "%\r\n" + onWire(program) + "%\r\n";
    QByteArray received;
    for (int round = 0; received.size() < expected.size() && round < 3000; ++round) {
        if (round < 60 && op_->isShown(QStringLiteral("btnStop"))) {
            QTest::mouseClick(editor, Qt::LeftButton, {}, QPoint(80, 10 + round * 3));
            QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
            QTest::keyClicks(editor, QStringLiteral("Q"));
            QTest::keyClick(editor, Qt::Key_Delete);
        }
        received += line_->readAtLeast(1, 50);
    }
    QCOMPARE(received, expected);
}

QTEST_MAIN(StoppingTest)
#include "e2e_stopping.moc"
