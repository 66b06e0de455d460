// SPDX-License-Identifier: GPL-3.0-or-later
// Any stored text can be read, and what was read is written and read back unchanged. Any notation that an operator
// types becomes bytes that a 7-bit line carries.
#include "config/ControlCodes.h"
#include "config/g.h"
#include "config/SettingsText.h"
#include "fuzz/Fuzz.h"

#include <algorithm>

static QString readAndWritten(const QString& text)
{
    const auto records = SettingsText::read(text, [] { return std::make_shared<MachineRecord>(); });
    std::vector<const MachineRecord*> machines;
    for (const auto& mc : records) {
        PROMISE(mc->MCINDEX == static_cast<qint64>(machines.size()));
        // Whatever was stored, these are the only values that the rest of the program has to cope with.
        PROMISE(mc->MCFLOW >= 0 && mc->MCFLOW <= 4 && mc->MCDBPAR >= 0 && mc->MCDBPAR <= 2);
        PROMISE(mc->MCBAUD >= 150 && mc->MCBAUD <= 115200 && (mc->MCSBITS == 1 || mc->MCSBITS == 2));
        PROMISE(mc->MCBLKTIC >= 0 && mc->MCTXTOUT >= 0 && mc->MCTXTOUT <= 60 && !mc->MCTXEOB.isEmpty());
        machines.push_back(mc.get());
    }
    return SettingsText::write({machines.begin() + !machines.empty(), machines.end()});
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto isBeyondSevenBits = [](char byte) { return static_cast<unsigned char>(byte) > 127; };
    QByteArray input = Fuzz::bytes(data, size);
    const QString text = QString::fromUtf8(input);
    // Twice, because the first write does not keep all that was read: the time-outs return to 3.
    const QString once = readAndWritten(readAndWritten(text));
    PROMISE(readAndWritten(once) == once);

    const QByteArray sent = g::getBytes(ControlCodes::startOrEnd(text) + ControlCodes::endOfBlock(text));
    PROMISE(std::none_of(sent.begin(), sent.end(), isBeyondSevenBits));
    // Received bytes become characters one to one, and those of 7 bits go out again as they came.
    const QString received = g::getString(input);
    PROMISE(received.size() == input.size());
    std::replace_if(input.begin(), input.end(), isBeyondSevenBits, '?');
    PROMISE(g::getBytes(received) == input);
    return 0;
}
