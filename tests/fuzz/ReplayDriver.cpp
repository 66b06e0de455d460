// SPDX-License-Identifier: GPL-3.0-or-later
// TARGET CORPUS MUTATIONS runs a target without libFuzzer: over its corpus, then over mutations, always the same ones.
#include "fuzz/Fuzz.h"

#include <QDir>
#include <QFile>

#include <random>

static void run(const QByteArray& input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.constData()),
                           static_cast<std::size_t>(input.size()));
}

static qsizetype upTo(qsizetype most)
{
    static std::minstd_rand chance(1);
    return std::uniform_int_distribution<qsizetype>(0, most)(chance);
}

int main(int argc, char* argv[])
{
    if (argc != 3) return 2;
    QList<QByteArray> corpus{QByteArray()};
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    for (const QString& name : folder.entryList(QDir::Files)) {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::ReadOnly)) qFatal("cannot read %s", qPrintable(file.fileName()));
        corpus.append(file.readAll());
        run(corpus.last());
    }
    for (int mutation = QByteArray(argv[2]).toInt(); mutation > 0; --mutation) {
        QByteArray input = corpus[upTo(corpus.size() - 1)];
        for (auto changes = 1 + upTo(7); changes > 0; --changes) {
            // Replaces some bytes with others: removes, inserts, changes, cuts off, doubles, or takes from another
            // input.
            const QByteArray other = corpus[upTo(corpus.size() - 1)];
            const qsizetype at = upTo(input.size());
            const QList<qsizetype> lengths{0, 1, upTo(16), input.size()};
            const QList<QByteArray> pieces{{},
                                           QByteArray(1, static_cast<char>(upTo(255))),
                                           input.mid(at, upTo(16)),
                                           other.mid(upTo(other.size()))};
            input.replace(at, lengths[upTo(3)], pieces[upTo(3)]);
        }
        run(input);
    }
    return 0;
}
