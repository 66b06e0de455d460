// SPDX-License-Identifier: GPL-3.0-or-later
// Long XModem transfers over a line that spoils one block in fifty, and what a checksum of seven bits lets pass.
// Takes a minute or more; run it by hand.
#include "simulator/SimulatedControl.h"
#include "support/Relay.h"
#include "transfer/TransferRig.h"
#include "transfer/XModemBlock.h"

#include <fcntl.h>
#include <random>
#include <unistd.h>

namespace
{
constexpr int programSize = 2'000'000;
constexpr int longest = 1'500'000; // ms; a hang, not a slow machine
constexpr Relay::Faults oneInFifty{.flips = 1.0 / (50 * XModemBlock::size)};

QByteArray program()
{
    QByteArray text;
    for (int line = 0; text.size() < programSize; ++line)
        text += "N" + QByteArray::number(line) + " G1 X" + QByteArray::number(line % 997) + ".125 Y-2.5 F1200\n";
    return text.left(programSize);
}
} // namespace

class XModemSoak : public QObject
{
    Q_OBJECT
    struct Peer;
private Q_SLOTS:
    void sending();
    void receiving();
    void whatTheChecksumLetsPass();
};

// lrzsz refuses our number after 255 and is deaf to our marked NAK, so the simulated control is the peer.
struct XModemSoak::Peer {
    Peer(cncsim::Protocol protocol, const QByteArray& toSend)
        : control({.protocol = protocol, .punchProgram = toSend.toStdString()}),
          device(::open(control.devicePath().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
    }
    ~Peer() { ::close(device); }

    cncsim::SimulatedControl control;
    int device;
};

void XModemSoak::sending()
{
    Peer peer(cncsim::Protocol::XModemReceive, {});
    TransferRig rig;
    rig.machine->MCFLOW = 3;
    rig.machine->MCTXEOB = "LF";
    rig.start(true);
    rig.child->port->startRxTimer(0.001);
    rig.open(program());
    rig.click("btnSend");
    const Relay relay({rig.pty.master(), rig.pty.master()}, {peer.device, peer.device}, {oneInFifty, {}});
    QTRY_VERIFY_WITH_TIMEOUT(!rig.view->dncRunning(), longest);
    const auto report = peer.control.report();
    qInfo("%d bytes spoiled, %zu blocks taken", relay.flipped(), report.blocks);
    const auto received = QByteArray::fromStdString(report.program);
    QVERIFY(received == program().leftJustified(received.size(), ' ') && received.size() - programSize < 128);
}

void XModemSoak::receiving()
{
    Peer peer(cncsim::Protocol::XModemSend, program());
    TransferRig rig;
    rig.machine->MCFLOW = 3;
    rig.start(false);
    rig.child->port->startRxTimer(0.001);
    rig.view->startXModemTimer(viewTX::xmodemTickInterval);
    const Relay relay({rig.pty.master(), rig.pty.master()}, {peer.device, peer.device}, {{}, oneInFifty});
    QTRY_VERIFY_WITH_TIMEOUT(peer.control.isComplete(), longest);
    const auto report = peer.control.report();
    qInfo("%d bytes spoiled, %zu blocks sent, %zu of them again; shown: %s", relay.flipped(), report.blocks,
          report.repeatedBlocks, qPrintable(rig.text("lblStatus")));
    const QByteArray received = rig.editor->wholeText();
    QVERIFY(received == program().leftJustified(received.size(), '\x1A') && received.size() - programSize < 128);
}

void XModemSoak::whatTheChecksumLetsPass()
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
        qInfo("%d bits turned over: %d of %d blocks pass (%.3f %%)", flips, passed, blocks, 100.0 * passed / blocks);
        if (flips == 1) QCOMPARE(passed, 0);
    }
}

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QTEST_FUNCTION_TIMEOUT", QByteArray::number(longest));
    const QApplication application(argc, argv);
    XModemSoak soak;
    return QTest::qExec(&soak, argc, argv);
}
#include "soak_xmodem.moc"
