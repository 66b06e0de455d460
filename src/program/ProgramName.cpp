// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/ProgramName.h"

#include <QDateTime>

#include <algorithm>

namespace
{
constexpr std::size_t longestNumber = 8; // digits

bool isBeforeNumber(char c)
{
    return static_cast<unsigned char>(c) <= ' ' || c == '\x7F' || c == '%'; // blanks, line ends, leader, tape codes
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}
} // namespace

QString ProgramName::number(std::string_view text)
{
    text = text.substr(0, searchedText);
    for (;;) {
        text.remove_prefix(
            static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isBeforeNumber) - text.begin()));
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
    return u'O' + QString::fromLatin1(digits.data(), static_cast<qsizetype>(count));
}

QString ProgramName::proposed(std::string_view text, const QString& machine, const QDateTime& now)
{
    QString name = number(text);
    if (name.isEmpty()) {
        name = machine + now.toString(QStringLiteral(" yyyy-MM-dd HH-mm-ss"));
        static const QString forbidden = QStringLiteral("/\\:*?\"<>|");
        std::replace_if(
            name.begin(), name.end(), [](QChar c) { return forbidden.contains(c) || !c.isPrint(); }, u'-');
        while (name.startsWith(u'.') || name.startsWith(u' '))
            name.remove(0, 1); // hidden, or lost in a list
    }
    return name + QStringLiteral(".nc");
}
