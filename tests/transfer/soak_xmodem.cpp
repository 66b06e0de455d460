// SPDX-License-Identifier: GPL-3.0-or-later
// Long XModem transfers, over a line that spoils one block in fifty and with lrzsz, and what a 7-bit checksum lets
// pass. Takes a minute or more; run it by hand.
#include "protocol/XModemBlock.h"
#include "transfer/LrzszRig.h"
#include "transfer/SimulatedRig.h"

#include <random>

namespace
{
constexpr int programSize = 2'000'000;
constexpr int longest = 1'500'000; // ms; longer is a hang, not a slow machine
constexpr Relay::Faults oneInFifty{.flips = 1.0 / (50 * XModemBlock::size)};

QByteArray program()
{
    QByteArray text;
    for (int line = 0; text.size() < programSize; ++line)
        text += "N" + QByteArray::number(line) + " G1 X" + QByteArray::number(line % 997) + ".125 Y-2.5 F1200\n";
    return text.left(programSize);
}

bool isProgram(const QByteArray& received, char padding)
{
    return received == program().leftJustified(received.size(), padding) && received.size() - programSize < 128;
}
} // namespace

class XModemSoak : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void sending()
    {
        SimulatedRig soak(true, program(), {}, {oneInFifty, {}});
        soak.rig.click("btnSend");
        QTRY_VERIFY_WITH_TIMEOUT(!soak.rig.view->dncRunning(), longest);
        const auto report = soak.control.report();
        qInfo("%d bytes spoiled, %zu blocks taken", soak.relay.flipped(), report.blocks);
        QVERIFY(isProgram(QByteArray::fromStdString(report.program), ' '));
    }

    void receiving()
    {
        SimulatedRig soak(false, program(), {}, {{}, oneInFifty});
        soak.rig.view->startXModemTimer(viewTX::xmodemTickInterval);
        QTRY_VERIFY_WITH_TIMEOUT(soak.control.isComplete(), longest);
        const auto report = soak.control.report();
        qInfo("%d bytes spoiled, %zu blocks sent, %zu of them again; shown: %s", soak.relay.flipped(), report.blocks,
              report.repeatedBlocks, qPrintable(soak.rig.details()));
        QVERIFY(isProgram(soak.rig.editor->wholeText(), '\x1A'));
    }

    void sendingToLrzsz() { carryEveryCharacter(true, 200'000); }
    void receivingFromLrzsz() { carryEveryCharacter(false, 200'000); }

    void whatTheChecksumLetsPass()
    {
        constexpr int blocks = 2'000'000;
        std::mt19937 chance(1);
        std::uniform_int_distribution at(XModemBlock::headSize, XModemBlock::size - 1);
        std::uniform_int_distribution bit(0, 6);
        QByteArray good = XModemBlock::build(1, program().left(XModemBlock::dataSize));
        good.back() = static_cast<char>(good.back() & 0x7F); // as the line delivers it
        for (const int flips : {1, 2, 3, 4, 8}) {
            int passed = 0;
            for (int block = 0; block < blocks; ++block) {
                QByteArray damaged = good;
                for (int flip = 0; flip < flips; ++flip) {
                    const int place = at(chance);
                    damaged[place] = static_cast<char>(damaged[place] ^ 1 << bit(chance));
                }
                if (damaged != good && XModemBlock::isGood(damaged)) ++passed;
            }
            qInfo("%d bits flipped: %d of %d blocks pass (%.3f %%)", flips, passed, blocks, 100.0 * passed / blocks);
            if (flips == 1) QCOMPARE(passed, 0);
        }
    }
};

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QTEST_FUNCTION_TIMEOUT", QByteArray::number(longest));
    const QApplication application(argc, argv);
    XModemSoak soak;
    return QTest::qExec(&soak, argc, argv);
}
#include "soak_xmodem.moc"
