// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes from a control: no byte is lost between programs, the same programs come however the line cuts them up, and
// none gets a name that leads out of its folder.
#include "fuzz/Fuzz.h"
#include "program/ProgramName.h"
#include "protocol/ReceivedPrograms.h"
#include "protocol/ReceivedText.h"

#include <QDateTime>

namespace
{
QByteArrayList split(const QByteArray& input, ControlType type, qsizetype size)
{
    ReceivedPrograms programs;
    programs.listenTo(type, false);
    QByteArrayList all;
    for (qsizetype at = 0; at < input.size(); at += size)
        for (const auto& program : programs.take(input.mid(at, size)))
            all << program.bytes;
    PROMISE(programs.count() == all.size() + (programs.hasText() ? 1 : 0));
    if (const auto last = programs.end()) all << last->bytes;
    return all;
}

bool isSafe(const QString& name)
{
    for (const QChar c : name)
        if (c == u'/' || c == u'\\' || c == u'~' || c.unicode() < 0x20) return false;
    return !name.isEmpty() && !name.startsWith(u'.') && !name.contains("..") && name.toUtf8().size() < 200;
}
} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QByteArray input = Fuzz::bytes(data, size);
    static const QDateTime now({2026, 11, 24}, {14, 5, 9});
    const auto type = static_cast<ControlType>(Fuzz::takeChoice(input) % 3);
    const QByteArrayList programs = split(input, type, input.size() + 1);
    PROMISE(programs == split(input, type, 1));
    PROMISE(input.startsWith(programs.join()));
    for (const auto& program : programs) {
        PROMISE(!ReceivedText::ofTape(program).isEmpty());
        PROMISE(ReceivedText::ofXModem(program).size() <= program.size());
        const std::string_view text(program.constData(), static_cast<std::size_t>(program.size()));
        PROMISE(isSafe(ProgramName::ofReceived(text, QString::fromLatin1(program), now, ".nc")));
    }
    return 0;
}
