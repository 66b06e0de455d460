// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/SingleInstance.h"

#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <unistd.h>

// Another start of the program: says what its claim gave and, as owner, stays until it is killed.
static int startAnother(const QString& folder)
{
    SingleInstance instance(folder);
    const bool isOwner = instance.claim();
    const char answer = isOwner ? 'o' : 'r';
    if (::write(STDOUT_FILENO, &answer, 1) != 1) return 1;
    return isOwner ? QCoreApplication::exec() : 0;
}

class SingleInstanceTest : public QObject
{
    Q_OBJECT

    static void start(QProcess& process, const QString& folder, const QString& tempFolder = QDir::tempPath())
    {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TMPDIR", tempFolder);
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(), {"--claim", folder});
    }

private Q_SLOTS:
    void secondStartIsRefusedAndTheFirstIsTold();
    void differentSettingsDoNotMeet();
    void socketOfAKilledProgramDoesNotLockTheSettingsForEver();
    void ofManyStartsAtOnceExactlyOneOwns();
    void programStartsWhereNoSocketCanBeMade();
    void foldersThatCannotBeMadeDoNotMeet();
};

void SingleInstanceTest::secondStartIsRefusedAndTheFirstIsTold()
{
    const QTemporaryDir folder;
    SingleInstance first(folder.path());
    QSignalSpy asked(&first, &SingleInstance::activationRequested);
    QVERIFY(first.claim());

    for (int starts = 1; starts <= 2; ++starts) {
        QProcess second;
        start(second, folder.path());
        QTRY_COMPARE(second.state(), QProcess::NotRunning);
        QCOMPARE(second.readAllStandardOutput(), QByteArray("r"));
        QTRY_COMPARE(asked.count(), starts);
    }
}

void SingleInstanceTest::differentSettingsDoNotMeet()
{
    const QTemporaryDir one;
    const QTemporaryDir other;
    SingleInstance first(one.path());
    SingleInstance second(other.path());
    QVERIFY(first.claim());
    QVERIFY(second.claim());
}

void SingleInstanceTest::socketOfAKilledProgramDoesNotLockTheSettingsForEver()
{
    const QTemporaryDir folder;
    QProcess owner;
    start(owner, folder.path());
    QTRY_COMPARE(owner.bytesAvailable(), 1);
    QCOMPARE(owner.readAll(), QByteArray("o"));
    owner.kill();
    QVERIFY(owner.waitForFinished());

    SingleInstance next(folder.path());
    QVERIFY(next.claim());
}

void SingleInstanceTest::ofManyStartsAtOnceExactlyOneOwns()
{
    const QTemporaryDir folder;
    std::array<QProcess, 8> starts;
    for (auto& process : starts)
        start(process, folder.path());
    QByteArray answers;
    for (auto& process : starts) {
        QTRY_COMPARE_WITH_TIMEOUT(process.bytesAvailable(), 1, 60'000);
        answers += process.readAll();
    }
    QCOMPARE(answers.count('o'), 1);
    for (auto& process : starts) {
        process.kill();
        process.waitForFinished();
    }
}

void SingleInstanceTest::programStartsWhereNoSocketCanBeMade()
{
    const QTemporaryDir folder;
    const QString tooLong = folder.filePath(QString(120, u'x')); // for a socket's path
    QVERIFY(QDir().mkdir(tooLong));
    QProcess program;
    start(program, folder.path(), tooLong);
    QTRY_COMPARE(program.bytesAvailable(), 1);
    QCOMPARE(program.readAll(), QByteArray("o"));
    program.kill();
    QVERIFY(program.waitForFinished());
}

void SingleInstanceTest::foldersThatCannotBeMadeDoNotMeet()
{
    SingleInstance first("/proc/one");
    SingleInstance second("/proc/other");
    QVERIFY(first.claim());
    QVERIFY(second.claim());
}

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const auto arguments = QCoreApplication::arguments();
    if (arguments.value(1) == "--claim") return startAnother(arguments.value(2));
    SingleInstanceTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "platform_singleinstance.moc"
