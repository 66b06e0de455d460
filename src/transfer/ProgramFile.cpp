// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ProgramFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace
{
// The editor's positions are 32-bit and a byte above 127 takes two of them.
constexpr qint64 largestFile = 1'000'000'000;

// A full disk first takes a part of the bytes; only the next write reports the error.
bool writeAll(QSaveFile& file, const QByteArray& bytes)
{
    for (qsizetype at = 0; at < bytes.size();) {
        const auto written = file.write(bytes.constData() + at, bytes.size() - at);
        if (written <= 0) return false;
        at += written;
    }
    return true;
}
} // namespace

bool ProgramFile::isReadable(const QString& path)
{
    return QFileInfo(path).isFile() && QFileInfo(path).isReadable();
}

QString ProgramFile::unreadable(const QString& path)
{
    return QStringLiteral("There is no program file to read at\r\r%1").arg(path);
}

bool ProgramFile::isTooLarge(const QString& path)
{
    return QFileInfo(path).size() > largestFile;
}

std::optional<QByteArray> ProgramFile::read(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) return {};
    return bytes;
}

QString ProgramFile::write(const QString& path, const QByteArray& bytes)
{
    QSaveFile file(path);
    // Unbuffered: a disk that is full only when a buffer is written at the end would go unnoticed.
    if (file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && writeAll(file, bytes) && file.commit()) return {};
    return file.errorString();
}
