// SPDX-License-Identifier: GPL-3.0-or-later
// Any stored text is read; what was read once is written and read again without a change.
#include "config/SettingsText.h"
#include "fuzz/Fuzz.h"

namespace
{
QString readAndWritten(const QString& text)
{
    const auto records = SettingsText::read(text, [] { return std::make_shared<MachineRecord>(); });
    std::vector<const MachineRecord*> machines;
    for (std::size_t index = 0; index < records.size(); ++index) {
        PROMISE(records[index]->MCINDEX == static_cast<qint64>(index));
        PROMISE(records[index]->MCFLOW >= 0 && records[index]->MCFLOW <= 4);
        PROMISE(records[index]->MCBAUD >= 150 && records[index]->MCBAUD <= 115200);
        PROMISE(records[index]->MCDBPAR >= 0 && records[index]->MCDBPAR <= 2);
        if (index > 0) machines.push_back(records[index].get());
    }
    return SettingsText::write(machines);
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Twice, because the first writing does not keep all that was read: the time-outs return to 3.
    const QString once = readAndWritten(readAndWritten(QString::fromUtf8(Fuzz::bytes(data, size))));
    PROMISE(readAndWritten(once) == once);
    return 0;
}
