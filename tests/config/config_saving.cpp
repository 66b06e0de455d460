// SPDX-License-Identifier: GPL-3.0-or-later
// Saves that are cut off or fail: the stored machine list is the old one or the new one, always whole.
#include "config/g.h"
#include "platform/Preferences.h"

#include <QDir>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <cstdio>
#include <sys/resource.h>

namespace
{
constexpr int machineCount = 40; // too many for a single write
const QStringList names = {"@Variant(1), \"first\"; c\\n # [x] = % \\x41", " s\t" + QString(QChar(0)) + "\u2116 \r"};

void save(const QString& name)
{
    g::mcIcons.clear();
    for (int machine = 0; machine <= machineCount; ++machine) {
        g::mcIcons.append(g::makeMcIcon());
        g::mcIcons.last()->MCNAME = name;
    }
    g::saveAllMcSettings();
}

// The name that all machines have, if the list is whole.
QString readName()
{
    g::readAllMcSettings();
    bool isWhole = g::mcIcons.size() == machineCount + 1;
    for (qsizetype index = 2; index < g::mcIcons.size(); ++index)
        isWhole = isWhole && g::mcIcons[index]->MCNAME == g::mcIcons[1]->MCNAME;
    return isWhole ? g::mcIcons[1]->MCNAME : "not whole";
}

// Another start of the program: reads, saves where the disk takes only a few bytes, or saves until it is killed.
int startAnother(const QString& job)
{
    Preferences::dropLeftoverLock();
    if (job == "read") return std::fputs(readName().toUtf8().toHex().constData(), stdout) < 0;
    const rlimit limit{64, 64};
    if (job == "save on a full disk") ::setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, SIG_IGN); // the write fails instead
    do {
        for (const auto& name : names)
            save(name);
        std::puts("saved");
        std::fflush(stdout);
    } while (job == "save");
    return 0;
}
} // namespace

class SavingTest : public QObject
{
    Q_OBJECT
    QTemporaryDir home_;

    void start(QProcess& process, const QString& job) const
    {
        process.start(QCoreApplication::applicationFilePath(), {"--another", job, home_.path()});
    }
    // What the next start of the program finds.
    QString storedName() const
    {
        QProcess reader;
        start(reader, "read");
        return reader.waitForFinished() ? QByteArray::fromHex(reader.readAllStandardOutput()) : "no answer";
    }

private Q_SLOTS:
    void initTestCase() { QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home_.path()); }
    void killedAtAnyMoment();
    void noRoomKeepsTheOldListAndDoesNotHang();
};

void SavingTest::killedAtAnyMoment()
{
    QStringList found;
    int moments = 8; // ms; more where saving takes longer
    for (int point = 0; point < 250; ++point) {
        QProcess writer;
        start(writer, "save");
        QVERIFY(writer.waitForReadyRead()); // the first list is whole
        QTest::qSleep(point % moments);
        writer.kill();
        QVERIFY(writer.waitForFinished());
        found << storedName();
        QVERIFY2(names.contains(found.last()), qPrintable(found.last()));
        if (point % 50 == 49 && found.count(found.last()) == found.size()) moments *= 4;
    }
    QVERIFY2(found.contains(names[0]) && found.contains(names[1]), "every kill left the same list");
}

void SavingTest::noRoomKeepsTheOldListAndDoesNotHang()
{
    save("old");
    QProcess writer;
    start(writer, "save on a full disk");
    QVERIFY(writer.waitForFinished());
    QCOMPARE(writer.exitStatus(), QProcess::NormalExit);
    QCOMPARE(storedName(), QStringLiteral("old"));

    // Without permissions on the folder an operator could not save, but root on a build machine could.
    QDir home(home_.path());
    QVERIFY(home.rename("Varnock", "kept"));
    QFile inTheWay(home.filePath("Varnock"));
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    save("new");
    QVERIFY(inTheWay.remove() && home.rename("kept", "Varnock"));
    QCOMPARE(storedName(), QStringLiteral("old"));
}

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    SavingTest test;
    const auto arguments = QCoreApplication::arguments();
    if (arguments.value(1) != "--another") return QTest::qExec(&test, argc, argv);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, arguments.value(3));
    return startAnother(arguments.value(2));
}
#include "config_saving.moc"
