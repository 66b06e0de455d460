// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/SettingsText.h"

#include "config/StringTools.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>
#include <variant>

namespace
{
using StringTools::parseInteger;
using Record = MachineRecord;
using Field = std::variant<QString Record::*, qint64 Record::*, bool Record::*>;

struct WrittenKey {
    const char* key;
    Field field;
};

// The order is that of the stored text.
const std::array writtenKeys{
    WrittenKey{"MCNAME=", &Record::MCNAME},
    WrittenKey{"MCMODE=", &Record::MCMODE},
    WrittenKey{"MCPORT=", &Record::MCPORT},
    WrittenKey{"MCINDIR=", &Record::MCINDIR},
    WrittenKey{"MCOUTDIR=", &Record::MCOUTDIR},
    WrittenKey{"MCFLOW=", &Record::MCFLOW},
    WrittenKey{"MCWAIT=", &Record::MCWAIT},
    WrittenKey{"MCREPEAT=", &Record::MCREPEAT},
    WrittenKey{"MCDELAY=", &Record::MCDELAY},
    WrittenKey{"MCCRLF=", &Record::MCCRLF},
    WrittenKey{"MCBLKTIC=", &Record::MCBLKTIC},
    WrittenKey{"MCBAUD=", &Record::MCBAUD},
    WrittenKey{"MCEIA=", &Record::MCEIA},
    WrittenKey{"MCDBPAR=", &Record::MCDBPAR},
    WrittenKey{"MCSBITS=", &Record::MCSBITS},
    WrittenKey{"MCTXEOB=", &Record::MCTXEOB},
    WrittenKey{"MCTXSOT=", &Record::MCTXSOT},
    WrittenKey{"MCTXEOT=", &Record::MCTXEOT},
    WrittenKey{"MCSTRIPCOMMENTS=", &Record::MCSTRIPCOMMENTS},
    WrittenKey{"MCSTRIPEMPTYLINES=", &Record::MCSTRIPEMPTYLINES},
    WrittenKey{"MCRXEOBCHAR=", &Record::MCRXEOBCHAR},
    WrittenKey{"MCREQST=", &Record::MCREQST},
    WrittenKey{"MCEXTENS=", &Record::MCEXTENS},
    // The reader looks for other names, so the time-outs return to 3 at every start. Stored settings rely on it.
    WrittenKey{"MCRXTIMEOUT=", &Record::MCRXTOUT},
    WrittenKey{"MCTXTIMEOUT=", &Record::MCTXTOUT},
    // Written but never read, also on purpose: this one, FNAMEISTXT, AUTOSTARTREMO and FADALTA1.
    WrittenKey{"MCNOTFOUNDMSG=", &Record::MCNOTFOUNDMSG},
    WrittenKey{"MCFNAMEISTXT=", &Record::MCFNAMEISTXT},
    WrittenKey{"MCAUTOSTARTREMO=", &Record::MCAUTOSTARTREMO},
    WrittenKey{"MCREMOENABLED=", &Record::MCREMOENABLED},
    WrittenKey{"MCFADALTA1=", &Record::MCFADALTA1},
    WrittenKey{"MCREMOPFX=", &Record::MCREMOPFX},
    WrittenKey{"MCSAVEPFX=", &Record::MCSAVEPFX},
};

QString encoded(const Record& record, const Field& field)
{
    return std::visit(
        [&record](auto member) {
            if constexpr (std::is_same_v<decltype(member), QString Record::*>) {
                return record.*member;
            } else {
                return StringTools::ToString(record.*member);
            }
        },
        field);
}

// --- Reading: each key's own preset and test ----------------------------------------------------------------------

using Accept = void (*)(Record&, const QString& value);

struct ReadKey {
    const char* key;
    Accept accept;
};

template <QString Record::*member> void anyText(Record& record, const QString& value)
{
    record.*member = value;
}

template <bool Record::*member> void flag(Record& record, const QString& value)
{
    record.*member = value == QLatin1String("true");
}

template <qint64 Record::*member, qint64 preset, qint64 low, qint64 high>
void integerWithin(Record& record, const QString& value)
{
    const auto number = parseInteger(value);
    record.*member = number && *number >= low && *number <= high ? *number : preset;
}

constexpr qint64 noLimit = std::numeric_limits<qint64>::max();
constexpr std::array<qint64, 11> rates{150, 300, 600, 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200};

bool isUsual(qint64 rate)
{
    return std::find(rates.begin(), rates.end(), rate) != rates.end();
}

void baud(Record& record, const QString& value)
{
    const auto number = parseInteger(value);
    record.MCBAUD = number && isUsual(*number) ? *number : 1200;
}

void unusualBaud(Record& record, const QString& value)
{
    const auto number = parseInteger(value);
    if (number && *number > 0) record.MCBAUD = *number;
}

void endOfBlock(Record& record, const QString& value)
{
    record.MCTXEOB = value.isEmpty() ? QStringLiteral("CRLF") : value;
}

void receiveEndOfBlock(Record& record, const QString& value)
{
    // A stored line feed splits its own line and arrives empty; only a carriage return arrives as a character.
    record.MCRXEOBCHAR = value == QLatin1String("\r") ? value : QStringLiteral("\n");
}

void request(Record& record, const QString& value)
{
    record.MCREQST = value.isEmpty() ? QStringLiteral("SEND") : value;
}

// The presets differ from those of a fresh record (block delay 10, stop bits 2): stored settings rely on it.
const std::array readKeys{
    ReadKey{"MCNAME=", anyText<&Record::MCNAME>},
    ReadKey{"MCMODE=", anyText<&Record::MCMODE>},
    ReadKey{"MCPORT=", anyText<&Record::MCPORT>},
    ReadKey{"MCINDIR=", anyText<&Record::MCINDIR>},
    ReadKey{"MCOUTDIR=", anyText<&Record::MCOUTDIR>},
    ReadKey{"MCFLOW=", integerWithin<&Record::MCFLOW, 1, 0, 4>},
    ReadKey{"MCWAIT=", flag<&Record::MCWAIT>},
    ReadKey{"MCREPEAT=", flag<&Record::MCREPEAT>},
    ReadKey{"MCDELAY=", integerWithin<&Record::MCDELAY, 10, 1, noLimit>},
    ReadKey{"MCCRLF=", flag<&Record::MCCRLF>},
    ReadKey{"MCBLKTIC=", integerWithin<&Record::MCBLKTIC, 10, 1, noLimit>},
    ReadKey{"MCBAUD=", baud},
    ReadKey{"MCEIA=", flag<&Record::MCEIA>},
    ReadKey{"MCDBPAR=", integerWithin<&Record::MCDBPAR, 0, 1, 2>},
    ReadKey{"MCSBITS=", integerWithin<&Record::MCSBITS, 2, 1, 1>},
    ReadKey{"MCTXEOB=", endOfBlock},
    ReadKey{"MCTXSOT=", anyText<&Record::MCTXSOT>},
    ReadKey{"MCTXEOT=", anyText<&Record::MCTXEOT>},
    ReadKey{"MCSTRIPCOMMENTS=", flag<&Record::MCSTRIPCOMMENTS>},
    ReadKey{"MCSTRIPEMPTYLINES=", flag<&Record::MCSTRIPEMPTYLINES>},
    ReadKey{"MCRXEOBCHAR=", receiveEndOfBlock},
    ReadKey{"MCREQST=", request},
    ReadKey{"MCEXTENS=", anyText<&Record::MCEXTENS>},
    ReadKey{"MCRXTOUT=", integerWithin<&Record::MCRXTOUT, 0, 1, 29>},
    ReadKey{"MCTXTOUT=", integerWithin<&Record::MCTXTOUT, 0, 1, 60>},
    ReadKey{"MCREMOENABLED=", flag<&Record::MCREMOENABLED>},
    ReadKey{"MCREMOPFX=", anyText<&Record::MCREMOPFX>},
    ReadKey{"MCSAVEPFX=", flag<&Record::MCSAVEPFX>},
    ReadKey{"MCXMODEM0=", flag<&Record::MCXMODEM0>},
    ReadKey{"MCSPEED=", unusualBaud},
};

void readLine(Record& record, const QString& line)
{
    for (const auto& entry : readKeys) {
        const QLatin1String key(entry.key);
        if (line.startsWith(key)) entry.accept(record, line.mid(key.size()));
    }
}

bool endsRecord(const QString& line)
{
    return line.startsWith(QLatin1String("[CNC")) || line.startsWith(QLatin1String("[END"));
}
} // namespace

QString SettingsText::write(const std::vector<const MachineRecord*>& machines)
{
    QString text;
    qint64 position = 0;
    for (const auto* machine : machines) {
        text += QStringLiteral("[CNC%1]\n").arg(++position);
        for (const auto& written : writtenKeys)
            text += QLatin1String(written.key) + encoded(*machine, written.field) + QLatin1Char('\n');
        // Only when set: without them the text stays what it has always been, byte for byte.
        if (machine->MCXMODEM0) text += QStringLiteral("MCXMODEM0=true\n");
        // MCBAUD brings back none but the usual rates.
        if (!isUsual(machine->MCBAUD) && machine->MCBAUD > 0)
            text += QStringLiteral("MCSPEED=%1\n").arg(machine->MCBAUD);
    }
    return text + QStringLiteral("[END]\n");
}

std::vector<std::shared_ptr<MachineRecord>>
SettingsText::read(const QString& text, const std::function<std::shared_ptr<MachineRecord>()>& make)
{
    std::vector<std::shared_ptr<MachineRecord>> records;
    auto current = make();
    for (qsizetype start = 0; start <= text.size();) {
        const qsizetype found = text.indexOf(QLatin1Char('\n'), start);
        const qsizetype end = found < 0 ? text.size() : found;
        const QString line = text.mid(start, end - start);
        start = end + 1;
        if (endsRecord(line)) {
            // Records are numbered by their order; what stands before the first header becomes the placeholder.
            current->MCINDEX = static_cast<qint64>(records.size());
            records.push_back(std::exchange(current, make()));
        } else {
            readLine(*current, line);
        }
    }
    return records;
}
