// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes in any chunks: reception takes exactly the blocks whose sum is right, and nothing else.
#include "fuzz/Fuzz.h"
#include "protocol/XModemReceive.h"

#include <numeric>

namespace
{
constexpr char soh = 1;
constexpr int blockSize = 132;

/// The rules of reception, written a second time in another way.
struct Model {
    QByteArray program, packet;

    void take(const QByteArray& chunk)
    {
        for (const char byte : chunk) {
            if (!packet.isEmpty() || byte == soh) packet += byte;
        }
        if (packet.size() < blockSize) return;
        const QByteArray data = packet.mid(3, 128);
        const auto sum = std::accumulate(data.begin(), data.end(), 0, [](int all, char c) { return all + quint8(c); });
        const int checksum = static_cast<unsigned char>(packet[131]);
        const bool isRight = checksum == (sum & 0xFF) || (checksum < 128 && checksum == (sum & 0x7F));
        if (packet.size() == blockSize && isRight) {
            program += data;
        }
        packet.clear();
    }
};
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    XModemReceive machine;
    Model model;
    QByteArray program;
    // A length byte before each chunk; 0 stands for the size of a whole block.
    for (QByteArray input = Fuzz::bytes(data, size); !input.isEmpty();) {
        const int length = Fuzz::takeChoice(input);
        const QByteArray chunk = input.left(length == 0 ? blockSize : length);
        input.remove(0, chunk.size());
        program += machine.take(chunk).program;
        model.take(chunk);
        PROMISE(machine.packet() == model.packet);
    }
    PROMISE(program == model.program);
    return 0;
}
