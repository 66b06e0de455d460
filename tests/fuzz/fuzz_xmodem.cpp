// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes in any chunks: the receive view takes exactly the blocks whose sum is right, and nothing else.
#include "config/g.h"
#include "editor/ProgramEditor.h"
#include "fuzz/Fuzz.h"
#include "transfer/TransferHost.h"
#include "transfer/viewTX.h"

#include <QApplication>

#include <numeric>

namespace
{
constexpr char soh = 1;
constexpr int blockSize = 132;

struct Child : ChildView, TransferHost {
    std::shared_ptr<serialPort> machinePort() override { return port; }
    std::shared_ptr<serialPort> port = std::make_shared<serialPort>(); // a line that leads nowhere
};

/// A receive view, like the application for the life of the process.
std::pair<Child&, viewTX&> receiver()
{
    static char name[] = "fuzz_xmodem";
    static char* argv[] = {name, nullptr};
    static int argc = 1;
    static auto* const application = new QApplication(argc, argv); // first: the port needs its event loop
    static const auto child = std::make_shared<Child>();
    static viewTX* view = nullptr;
    Q_UNUSED(application)
    if (!view) {
        g::mcIcons = {std::make_shared<MachineRecord>(), std::make_shared<MachineRecord>()};
        g::mcIcons[1]->MCFLOW = 3;
        g::mcChildViews = {std::make_shared<ChildView>(), child};
        child->port->Parity = 0;
        view = new viewTX;
        view->initialize(false, 1);
    }
    return {*child, *view};
}

// Inputs come faster than replies are written. One more send gives up what waits, and is done when all before is.
void waitForReplies(serialPort& port)
{
    bool isDone = false;
    QObject observer;
    port.nc->addObserver(&observer, QStringLiteral("TxOnComm"), &port,
                         [&isDone](const Notification&) { isDone = true; });
    port.stopButtonPressed = true;
    port.sendBytes({});
    while (!isDone)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

/// The rules of reception, told once more and in another way.
struct Model {
    QByteArray program, packet;
    bool underWay = false;

    void take(const QByteArray& chunk)
    {
        for (const char byte : chunk) {
            underWay = underWay || byte == soh;
            if (underWay) packet += byte;
        }
        if (packet.size() < blockSize) return;
        const QByteArray data = packet.mid(3, 128);
        const auto sum = std::accumulate(data.begin(), data.end(), 0, [](int all, char c) { return all + quint8(c); });
        const int checksum = static_cast<unsigned char>(packet[131]);
        const bool isRight = checksum == (sum & 0xFF) || (checksum < 128 && checksum == (sum & 0x7F));
        if (packet.size() == blockSize && isRight) {
            program += data;
            underWay = false;
        }
        packet.clear();
    }
};
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    auto [child, view] = receiver();
    view.btnNew_Click();
    view.booGotXModemSOH = false;
    view.bytesXModemPacket.clear();
    Model model;
    // A length byte before each chunk; 0 stands for one that a whole block fits in.
    for (QByteArray input = Fuzz::bytes(data, size); !input.isEmpty();) {
        const int length = Fuzz::takeChoice(input);
        const QByteArray chunk = input.left(length == 0 ? blockSize : length);
        input.remove(0, chunk.size());
        child.port->bytesRxBuffer = chunk;
        view.RxOnComm();
        model.take(chunk);
        PROMISE(view.booGotXModemSOH == model.underWay);
    }
    const auto* editor = view.findChild<ProgramEditor*>(QStringLiteral("rt1"));
    PROMISE(QString::fromUtf8(editor->wholeText()).toLatin1() == model.program);
    waitForReplies(*child.port);
    return 0;
}
