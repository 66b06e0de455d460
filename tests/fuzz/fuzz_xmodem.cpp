// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes in any chunks: the receive view takes exactly the blocks whose sum is right, and nothing else.
#include "config/g.h"
#include "fuzz/Fuzz.h"
#include "transfer/ProgramEditor.h"
#include "transfer/TransferHost.h"
#include "transfer/viewTX.h"

#include <QApplication>

namespace
{
constexpr char soh = 1;
constexpr int blockSize = 132;

struct Child : ChildView, TransferHost {
    std::shared_ptr<serialPort> machinePort() override { return port; }
    std::shared_ptr<serialPort> port = std::make_shared<serialPort>();
};

/// A receive view whose line leads nowhere.
struct Receiver {
    Receiver()
    {
        const auto machine = std::make_shared<MachineRecord>();
        machine->MCFLOW = 3;
        g::mcIcons = {std::make_shared<MachineRecord>(), machine};
        g::mcChildViews = {std::make_shared<ChildView>(), child};
        child->port->Parity = 0;
        view = new viewTX; // for the life of the process, like the application
        view->initialize(false, 1);
        editor = view->findChild<ProgramEditor*>(QStringLiteral("rt1"));
    }

    std::shared_ptr<Child> child = std::make_shared<Child>();
    viewTX* view = nullptr;
    ProgramEditor* editor = nullptr;
};

Receiver& receiver()
{
    static int argc = 1;
    static char name[] = "fuzz_xmodem";
    static char* argv[] = {name, nullptr};
    static auto* const application = new QApplication(argc, argv);
    static auto* const instance = new Receiver;
    Q_UNUSED(application)
    return *instance;
}

/// The rules of reception, told once more and in another way.
struct Model {
    QByteArray program;
    QByteArray packet;
    bool underWay = false;

    void take(const QByteArray& chunk)
    {
        for (const char byte : chunk) {
            if (!underWay && byte == soh) {
                underWay = true;
                packet.clear();
            }
            if (underWay) packet += byte;
        }
        if (packet.size() < blockSize) return;
        const QByteArray data = packet.mid(3, 128);
        unsigned sum = 0;
        for (const char byte : data)
            sum += static_cast<unsigned char>(byte);
        const unsigned checksum = static_cast<unsigned char>(packet[131]);
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
    auto& [child, view, editor] = receiver();
    view->btnNew_Click();
    view->booGotXModemSOH = false;
    view->bytesXModemPacket.clear();
    Model model;
    // A length byte before each chunk; 0 stands for one that a whole block fits in.
    for (QByteArray input = Fuzz::bytes(data, size); !input.isEmpty();) {
        const int length = Fuzz::takeChoice(input);
        const QByteArray chunk = input.left(length == 0 ? blockSize : length);
        input.remove(0, chunk.size());
        child->port->bytesRxBuffer = chunk;
        view->RxOnComm();
        model.take(chunk);
        PROMISE(view->booGotXModemSOH == model.underWay);
    }
    PROMISE(QString::fromUtf8(editor->wholeText()).toLatin1() == model.program);
    QCoreApplication::processEvents(); // the replies' completions
    return 0;
}
