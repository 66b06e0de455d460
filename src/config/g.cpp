// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/g.h"

#include "config/RecentPrograms.h"
#include "config/SettingsText.h"
#include "config/StringTools.h"
#include "platform/Preferences.h"

#include <QFile>

#include <algorithm>

namespace
{
const QString settingsKey = QStringLiteral("Varnock");
const QString recentKey = QStringLiteral("VarnockRecentPrograms");
const QString toFilesKey = QStringLiteral("VarnockReceiveToFiles");
constexpr char notAscii = '?'; // 63

// In Latin-1 text every code unit is a character of its own, except for CR LF, whose bytes are the same either way: no
// need to look for boundaries.
bool isLatin1(const QString& text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x100; });
}

char wireByte(char32_t code)
{
    return code < 128 ? static_cast<char>(code) : notAscii;
}

// Without the placeholder.
template <typename Record> std::vector<Record*> machines()
{
    std::vector<Record*> all;
    for (qsizetype position = 1; position < g::mcIcons.size(); ++position)
        all.push_back(g::mcIcons[position].get());
    return all;
}

QString stored(const QString& key)
{
    return Preferences::string(key).value_or(QString());
}

void storeIfNew(const QString& key, const QString& text)
{
    if (stored(key) != text) Preferences::setString(key, text);
}
} // namespace

g::McIcons g::mcIcons;
g::McChildViews g::mcChildViews;
std::function<std::shared_ptr<MachineRecord>()> g::makeMcIcon = [] { return std::make_shared<MachineRecord>(); };
std::function<std::shared_ptr<ChildView>()> g::makeMcChildView = [] { return std::make_shared<ChildView>(); };
std::function<bool(const QString&, const QString&, const QString&)> g::showMessage;

void g::readAllMcSettings()
{
    const auto append = [](std::shared_ptr<MachineRecord> record) {
        mcIcons.append(std::move(record));
        mcChildViews.append(makeMcChildView());
    };
    if (const auto text = Preferences::string(settingsKey)) {
        for (auto& record : SettingsText::read(*text, makeMcIcon))
            append(std::move(record));
    } else {
        for (qint64 index = 0; index <= 1; ++index) { // first run: the placeholder and "CNC1"
            auto record = makeMcIcon();
            record->MCINDEX = index;
            append(std::move(record));
        }
    }
    RecentPrograms::read(stored(recentKey), machines<MachineRecord>());
    ReceiveToFiles::read(stored(toFilesKey), machines<MachineRecord>());
}

void g::saveAllMcSettings()
{
    Preferences::setString(settingsKey, SettingsText::write(machines<const MachineRecord>()));
    saveRecentPrograms();
    saveReceiveToFiles();
}

void g::saveRecentPrograms()
{
    storeIfNew(recentKey, RecentPrograms::write(machines<const MachineRecord>()));
}

void g::saveReceiveToFiles()
{
    storeIfNew(toFilesKey, ReceiveToFiles::write(machines<const MachineRecord>()));
}

QByteArray g::getBytes(const QString& text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    if (isLatin1(text)) {
        for (const QChar c : text)
            bytes.append(wireByte(c.unicode()));
        return bytes;
    }
    for (const QString& character : StringTools::characters(text)) {
        if (character == QLatin1String("\r\n")) {
            bytes.append("\r\n");
        } else {
            bytes.append(wireByte(StringTools::unicodeValue(character)));
        }
    }
    return bytes;
}

QString g::getString(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes);
}

QString g::AsciiChar(qint64 code)
{
    const bool isScalar = code >= 0 && code <= 0x10FFFF && !(code >= 0xD800 && code <= 0xDFFF);
    if (!isScalar) qFatal("no character has the code %lld", static_cast<long long>(code));
    const auto scalar = static_cast<char32_t>(code);
    return QString::fromUcs4(&scalar, 1);
}

qint64 g::iVal(const QString& text)
{
    return StringTools::parseInteger(text).value_or(0);
}

QString g::nulls(qint64 count)
{
    return QString(std::max<qint64>(0, count), QChar(u'\0'));
}

QString g::getEOB(const QString& notation)
{
    return QString(notation)
        .replace(QLatin1String("CR"), QLatin1String("\r"))
        .replace(QLatin1String("LF"), QLatin1String("\n"));
}

bool g::fileExists(const QString& path)
{
    return QFile::exists(path);
}

std::optional<QString> g::fileRead(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) return std::nullopt;
    return QString::fromLatin1(bytes);
}

bool g::fileWrite(const QString& path, const QString& content)
{
    const bool isAscii = std::all_of(content.begin(), content.end(), [](QChar c) { return c.unicode() < 128; });
    QFile file(path);
    if (!isAscii || !file.open(QIODevice::WriteOnly)) return false;
    const QByteArray bytes = content.toLatin1();
    return file.write(bytes) == bytes.size() && file.flush();
}

bool g::msgBox(const QString& text, const QString& sBtnOne, const QString& sBtnTwo)
{
    if (showMessage) return showMessage(text, sBtnOne, sBtnTwo);
    qCritical("%s", qPrintable(text));
    return false;
}
