// SPDX-License-Identifier: GPL-3.0-or-later
// Runs a fuzz target without libFuzzer: over its corpus, then over that many mutations of it, always the same ones.
// Usage: TARGET CORPUS_FOLDER MUTATIONS
#include "fuzz/Fuzz.h"

#include <QDir>
#include <QFile>

#include <cstdio>
#include <random>
#include <vector>

namespace
{
void run(const QByteArray& input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.constData()),
                           static_cast<std::size_t>(input.size()));
}

class Mutator
{
public:
    explicit Mutator(std::vector<QByteArray> corpus) : corpus_(std::move(corpus)) {}

    QByteArray next()
    {
        QByteArray input = corpus_[upTo(corpus_.size() - 1)];
        for (std::size_t changes = 1 + upTo(7); changes > 0; --changes)
            change(input);
        return input;
    }

private:
    std::size_t upTo(std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(random_); }

    void change(QByteArray& input)
    {
        const auto at = static_cast<qsizetype>(upTo(static_cast<std::size_t>(input.size())));
        const auto length = static_cast<qsizetype>(upTo(16));
        const auto byte = static_cast<char>(upTo(255));
        switch (upTo(5)) {
        case 0:
            if (at < input.size()) input[at] = byte;
            break;
        case 1:
            input.insert(at, byte);
            break;
        case 2:
            input.remove(at, length);
            break;
        case 3:
            input.insert(at, input.mid(at, length));
            break;
        case 4:
            input.truncate(at);
            break;
        default: {
            const auto& other = corpus_[upTo(corpus_.size() - 1)];
            input.insert(at, other.mid(static_cast<qsizetype>(upTo(static_cast<std::size_t>(other.size())))));
            break;
        }
        }
    }

    std::vector<QByteArray> corpus_;
    std::minstd_rand random_{1};
};
} // namespace

int main(int argc, char* argv[])
{
    if (argc != 3) return 2;
    std::vector<QByteArray> corpus{QByteArray()};
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    for (const QString& name : folder.entryList(QDir::Files)) {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::ReadOnly)) qFatal("cannot read %s", qPrintable(file.fileName()));
        corpus.push_back(file.readAll());
    }
    for (const auto& input : corpus)
        run(input);
    Mutator mutator(corpus);
    const int mutations = QByteArray(argv[2]).toInt();
    for (int mutation = 0; mutation < mutations; ++mutation)
        run(mutator.next());
    std::printf("%zu inputs of the corpus and %d mutations held\n", corpus.size(), mutations);
    return 0;
}
