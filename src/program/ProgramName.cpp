// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/ProgramName.h"

#include <QDateTime>

#include <algorithm>

namespace
{
constexpr std::size_t longestNumber = 8; // digits
constexpr qsizetype longestName = 80;    // characters, of up to two bytes each: file systems allow 255
constexpr qsizetype longestSuffix = 16;

bool isBeforeNumber(char c)
{
    return static_cast<unsigned char>(c) <= ' ' || c == '\x7F' || c == '%'; // blanks, line ends, leader, tape codes
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

void skipWhile(std::string_view& text, bool (*condition)(char))
{
    text.remove_prefix(static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), condition) - text.begin()));
}

QString latin1(std::string_view text)
{
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

// What a name must not have on any file system; the tilde ends the names of older copies.
QString plain(QString name, const QString& forbidden)
{
    std::replace_if(
        name.begin(), name.end(), [&forbidden](QChar c) { return forbidden.contains(c) || !c.isPrint(); }, u'-');
    while (name.startsWith(u'.') || name.startsWith(u' '))
        name.remove(0, 1); // hidden, or lost in a list
    return name;
}

QString plain(const QString& name)
{
    return plain(name, QStringLiteral("/\\:*?\"<>|"));
}

// Nobody has seen it before it becomes a file's name. Empty if nothing of it can be one.
QString safe(const QString& wire, qsizetype longest)
{
    QString name = plain(wire, QStringLiteral("/\\:*?\"<>|~")).left(longest);
    name.replace(QLatin1String(".."), QLatin1String("-"));
    name = plain(name);
    while (name.endsWith(u'.') || name.endsWith(u' '))
        name.chop(1);
    const auto says = [](QChar c) { return c.isLetterOrNumber(); };
    return std::any_of(name.begin(), name.end(), says) ? name : QString();
}

// "SHAFT.MIN" from "$SHAFT.MIN%"; a device before the name, as in "$MD1:SHAFT.MIN%", is left out.
QString headName(std::string_view text)
{
    skipWhile(text, isBeforeNumber);
    if (text.empty() || text.front() != '$') return {};
    text = text.substr(1, text.find_first_of("%\r\n", 1) - 1);
    return latin1(text.substr(text.find_last_of(":/\\") + 1));
}

QString firstComment(std::string_view text)
{
    const auto begin = text.find_first_of("(;");
    if (begin == std::string_view::npos) return {};
    text.remove_prefix(begin);
    return latin1(text.substr(1, text.find_first_of(text.front() == '(' ? ")\r\n" : "\r\n", 1) - 1)).simplified();
}

QString withTime(const QString& machine, const QDateTime& now)
{
    return plain(machine + now.toString(QStringLiteral(" yyyy-MM-dd HH-mm-ss")));
}
} // namespace

QString ProgramName::number(std::string_view text)
{
    text = text.substr(0, searchedText);
    for (;;) {
        skipWhile(text, isBeforeNumber);
        if (text.empty() || text.front() != '(') break;
        const auto end = text.find_first_of(")\n");
        if (end == std::string_view::npos) return {};
        text.remove_prefix(end + 1);
    }
    if (text.empty() || (text.front() != 'O' && text.front() != 'o' && text.front() != ':')) return {};
    const auto digits = text.substr(1);
    const auto count =
        static_cast<std::size_t>(std::find_if_not(digits.begin(), digits.end(), isDigit) - digits.begin());
    if (count == 0 || count > longestNumber) return {};
    return u'O' + latin1(digits.substr(0, count));
}

QString ProgramName::proposed(std::string_view text, const QString& machine, const QDateTime& now)
{
    const QString name = number(text);
    return (name.isEmpty() ? withTime(machine, now) : name) + QStringLiteral(".nc");
}

QString ProgramName::ofReceived(std::string_view text, const QString& machine, const QDateTime& now,
                                const QString& suffix)
{
    text = text.substr(0, searchedText);
    const QString head = safe(headName(text), longestName);
    QString name = number(text);
    if (name.isEmpty()) name = head;
    if (name.isEmpty()) name = safe(firstComment(text), longestName);
    if (name.isEmpty()) name = safe(withTime(machine.left(longestName / 2), now), longestName);
    if (!head.isEmpty() && name == head && head.contains(u'.')) return name;
    const QString ending = safe(suffix.mid(suffix.startsWith(u'.') ? 1 : 0), longestSuffix);
    return ending.isEmpty() ? name : name + u'.' + ending;
}
