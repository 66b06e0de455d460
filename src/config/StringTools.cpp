// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/StringTools.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace
{
constexpr char32_t replacementCharacter = 0xFFFD;

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

QString filling(const QString& text, qsizetype length, const QString& with)
{
    return with.repeated(std::max<qsizetype>(0, length - StringTools::length(text)));
}
} // namespace

QStringList StringTools::characters(const QString& text)
{
    QStringList result;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype start = 0, end = finder.toNextBoundary(); end > start; start = end, end = finder.toNextBoundary())
        result.append(text.mid(start, end - start));
    return result;
}

qsizetype StringTools::length(const QString& text)
{
    return characters(text).size();
}

qsizetype StringTools::indexOf(const QString& text, const QString& part)
{
    const auto all = characters(text);
    const auto wanted = characters(part);
    for (qsizetype at = 0; at + wanted.size() <= all.size(); ++at)
        if (std::equal(wanted.begin(), wanted.end(), all.begin() + at)) return at;
    return -1;
}

QString StringTools::subString(const QString& text, qsizetype from)
{
    return characters(text).mid(std::max<qsizetype>(0, from)).join(QString());
}

QString StringTools::subString(const QString& text, qsizetype from, qsizetype length)
{
    return characters(text).mid(std::max<qsizetype>(0, from), std::max<qsizetype>(0, length)).join(QString());
}

QString StringTools::ssubString(const QString& text, qsizetype from, qsizetype length)
{
    return subString(text, from, length);
}

QString StringTools::strReplace(const QString& text, const QString& part, const QString& with)
{
    return part.isEmpty() ? text : QString(text).replace(part, with);
}

QString StringTools::padLeft(const QString& text, qsizetype length, const QString& with)
{
    return filling(text, length, with) + text;
}

QString StringTools::padRight(const QString& text, qsizetype length, const QString& with)
{
    return text + filling(text, length, with);
}

QString StringTools::character(const QString& text, qsizetype at)
{
    return at < 0 ? QString() : characters(text).value(at);
}

char32_t StringTools::unicodeValue(const QString& character)
{
    if (character.isEmpty()) return 0;
    const QChar first = character.front();
    if (!first.isSurrogate()) return first.unicode();
    const bool isPair = first.isHighSurrogate() && character.size() > 1 && character.at(1).isLowSurrogate();
    return isPair ? QChar::surrogateToUcs4(first, character.at(1)) : replacementCharacter;
}

quint8 StringTools::utf8Value(const QString& character)
{
    const char32_t scalar = unicodeValue(character);
    return static_cast<quint8>(QString::fromUcs4(&scalar, 1).toUtf8().front());
}

char16_t StringTools::utf16Value(const QString& character)
{
    const char32_t scalar = unicodeValue(character);
    return QString::fromUcs4(&scalar, 1).front().unicode();
}

QString StringTools::ToString(qint64 value)
{
    return QString::number(value);
}

QString StringTools::ToString(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

std::optional<qint64> StringTools::parseInteger(const QString& text)
{
    const qsizetype digits = text.startsWith(u'-') || text.startsWith(u'+') ? 1 : 0;
    if (text.size() == digits) return std::nullopt;
    if (!std::all_of(text.begin() + digits, text.end(), isDigit)) return std::nullopt;
    bool fits = false;
    const qint64 value = text.toLongLong(&fits);
    return fits ? std::optional(value) : std::nullopt;
}
