// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "support/PtyPair.h"

#include "editor/ProgramEditor.h"
#include "shell/viewChild.h"

#include <QLabel>
#include <QProcess>
#include <QRandomGenerator>
#include <QSettings>

#include <atomic>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using Shop::onWire;

/// Faults around the program: adapters, devices, controls. The operator must always be able to go on.
class FaultsTest : public QObject
{
    Q_OBJECT
    static QString stateOf(int machine) { return mcIconAt(machine)->findChild<QLabel*>("lblState")->text(); }

    static bool sendsRight(Operator& op, PtyPair& line, int machine = 1, const QByteArray& program = Shop::program(50))
    {
        line.read();
        op.send(machine, "(NEXT)\n" + program);
        const QByteArray got = line.readAtLeast(onWire(program).size() + 8, 30000);
        if (got != "(NEXT)\r\n" + onWire(program)) return qWarning() << "on the line:" << got, false;
        return QTest::qWaitFor([&op] { return op.isShown("btnSend"); }, 20000);
    }

    // Closes the machine's view while another one is shown.
    static bool closeView(Operator& op, int machine, const QString& firstClick, const QString& answer)
    {
        Operator::choose(machine, "btnCloseMenu");
        Operator::click(firstClick, childViewAt(machine));
        op.answerNextMessage(answer); // the view has a send that could go on, or bytes that are not saved
        Operator::click("btnClose", childViewAt(machine));
        return QTest::qWaitFor([machine] { return stateOf(machine) == "Idle"; });
    }

    QTemporaryDir dir_;
    const QByteArray long_ = Shop::program(1500); // more than a line holds that nobody reads

private Q_SLOTS:
    // Root is never refused a device, not even one that another program holds exclusively, so we give up root's rights.
    void initTestCase()
    {
        constexpr uid_t nobody = 65534;
        const bool isRoot = ::geteuid() == 0;
        QVERIFY(!isRoot || (::chown(qPrintable(dir_.path()), nobody, nobody) == 0 && ::seteuid(nobody) == 0));
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir_.path());
        qputenv("XDG_DATA_HOME", dir_.path().toLocal8Bit()); // a history that cannot be kept is told in a window
    }

    void cleanupTestCase() { QCOMPARE(::seteuid(::getuid()), 0); }

    void adapterIsPulledOutAndPluggedInAgain_data()
    {
        QTest::addColumn<QString>("state");
        for (const char* state : {"idle", "send", "wait", "receive", "setup"})
            QTest::newRow(state) << QString::fromLatin1(state);
    }

    void adapterIsPulledOutAndPluggedInAgain()
    {
        QFETCH(QString, state);
        const QString link = dir_.filePath("adapter");
        const auto plugIn = [&link](const PtyPair& adapter) {
            QFile::remove(link);
            return QFile::link(adapter.devicePath(), link);
        };
        PtyPair first, second, other; // on the last, another machine is sending and held
        QVERIFY(plugIn(first));
        const auto machine = Shop::machineOn(link);
        machine->MCWAIT = state == "wait";
        Shop::store({machine, Shop::machineOn(other.devicePath())});
        Operator op;
        op.send(2, long_);
        if (state == "receive" || state == "setup") op.choose(1, state == "setup" ? "btnSetup" : "btnRX");
        if (state == "idle" || state == "send" || state == "wait") op.open(1, long_);
        if (state == "send" || state == "wait") op.click("btnSend");
        if (state == "send") first.readAtLeast(500);
        first.hangUp();
        if (state != "setup") QTRY_COMPARE(stateOf(1), "Port lost");
        QVERIFY(plugIn(second));
        if (state == "setup") op.click("btnSave");
        if (state == "wait") second.write("\x11");          // the start signal it waited for comes too late
        QCOMPARE(second.readAtLeast(1, 200), QByteArray()); // nothing is sent behind the operator's back
        g::mcIcons[1]->MCWAIT = false;
        QVERIFY(sendsRight(op, second));
        QCOMPARE(other.readAtLeast(onWire(long_).size(), 30000), onWire(long_));
    }

    void sendGoesOnWithOneClick()
    {
        const QString link = dir_.filePath("returning");
        PtyPair first, second;
        QVERIFY(QFile::link(first.devicePath(), link));
        Shop::store({Shop::machineOn(link)});
        Operator op;
        op.send(1, long_);
        const QByteArray before = first.readAtLeast(500);
        first.hangUp();
        QTRY_COMPARE(stateOf(1), "Port lost");
        QVERIFY(QFile::remove(link) && QFile::link(second.devicePath(), link));
        QTRY_VERIFY(op.isShown("btnPortReturn"));
        QCOMPARE(second.read(), QByteArray());
        op.click("btnPortReturn");
        QByteArray after;
        QTRY_VERIFY_WITH_TIMEOUT((after += second.read(), op.isShown("btnSend")), 30000);
        after += second.read();
        const QByteArray whole = onWire(long_);
        const auto cut = whole.size() - after.size();
        QVERIFY(whole.endsWith(after) && cut > before.size() - 40 && whole.first(cut).endsWith("\r\n")); // a whole line
    }

    void portThatCannotBeUsedIsExplained_data()
    {
        QTest::addColumn<QString>("cause");
        for (const char* kind : {"locked", "exclusive"}) // by TIOCEXCL, without a lock
            QTest::newRow(kind) << "The port is in use by another program";
        QTest::newRow("forbidden") << "You have no permission";
        for (const char* kind : {"missing", "below a file"})
            QTest::newRow(kind) << "There is no such port now.";
        for (const char* kind : {"directory", "file", "pipe", "null"})
            QTest::newRow(kind) << "This is not a serial port.";
        QTest::newRow("speed") << "No port can do 12345 baud";
    }

    void portThatCannotBeUsedIsExplained()
    {
        QFETCH(QString, cause);
        const QByteArray kind = QTest::currentDataTag();
        const bool isHeld = kind == "locked" || kind == "exclusive";
        const bool needsForm = !isHeld && kind != "forbidden";
        PtyPair line;
        const QByteArray device = line.devicePath().toLocal8Bit();
        QProcess holder;
        holder.setChildProcessModifier([&device, isLocked = kind == "locked"] {
            const int fd = ::open(device.constData(), O_RDWR | O_NOCTTY);
            isLocked ? ::flock(fd, LOCK_EX) : ::ioctl(fd, TIOCEXCL);
        });
        if (isHeld) holder.start("sleep", {"100"});
        QVERIFY(!isHeld || holder.waitForStarted());
        if (kind == "forbidden") QCOMPARE(::chmod(device.constData(), 0), 0);

        QString path = needsForm && kind != "speed" ? dir_.filePath(kind) : line.devicePath();
        QFile file(dir_.filePath("file"));
        QVERIFY(file.open(QIODevice::ReadWrite | QIODevice::Truncate) && file.write("kept") == 4 && file.flush());
        if (kind == "below a file") path = file.fileName() + "/port";
        if (kind == "directory") path = dir_.path();
        if (kind == "pipe") QCOMPARE(::mkfifo(qPrintable(path), 0600), 0);
        if (kind == "null") path = "/dev/null";
        Shop::store({Shop::machineOn(path)});
        Operator op;
        if (kind == "speed") g::mcIcons[1]->MCBAUD = 12345;
        for (const char* choice : {"btnTX", "btnRX", "btnSetup"}) {
            op.choose(1, choice);
            QVERIFY(op.isShown("boxStartupError") && !op.isShown("btnSend") && !QApplication::activeModalWidget());
            const QString told = op.find<QLabel>("lblLikelyCause")->text();
            QVERIFY2(told.startsWith(cause), qPrintable(told));
        }
        QCOMPARE(line.read(), QByteArray());
        op.press(Qt::Key_Escape);
        QVERIFY(!op.isShown("boxStartupError"));

        holder.kill();
        holder.waitForFinished();
        QVERIFY(::ioctl(line.slave(), TIOCNXCL) == 0 && ::chmod(device.constData(), 0600) == 0);
        if (needsForm) op.setUp(1, line.devicePath());
        QVERIFY(sendsRight(op, line));
        op.restart();
        QVERIFY(sendsRight(op, line));
        QCOMPARE(::open(device.constData(), O_RDWR | O_NOCTTY | O_NONBLOCK), -1); // the program holds it exclusively
        QVERIFY(file.seek(0) && file.readAll() == "kept");
    }

    void deadControlHoldsNobodyUp()
    {
        PtyPair dead, alive;
        Shop::store({Shop::machineOn(dead.devicePath()), Shop::machineOn(alive.devicePath())});
        Operator op;
        for (const bool sendsXoff : {false, true}) { // or it reads nothing until all buffers are full
            op.send(1, long_);
            if (sendsXoff) dead.write("\x13");
            QTRY_VERIFY_WITH_TIMEOUT(stateOf(1).startsWith(sendsXoff ? "Held" : "Not moving"), 20000);
            QVERIFY(sendsRight(op, alive, 2, long_));
            QVERIFY(closeView(op, 1, "btnStop", "End the send"));
            dead.write("\x11"); // repaired
            dead.readAtLeast(1, 100);
            QVERIFY(sendsRight(op, dead));
        }
    }

    void floodHoldsNobodyUp_data()
    {
        QByteArray garbage(4096, '\0');
        for (QRandomGenerator chance(7); char& byte : garbage)
            byte = static_cast<char>(chance.bounded(256));
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("any bytes") << garbage;
        QTest::newRow("start signals") << QByteArray(4096, '\x11');
        QTest::newRow("NULs, as breaks are read") << QByteArray(4096, '\0');
    }

    void floodHoldsNobodyUp()
    {
        QFETCH(QByteArray, bytes);
        PtyPair mad, calm;
        const auto machine = Shop::machineOn(mad.devicePath());
        machine->MCFLOW = 0;
        Shop::store({machine, Shop::machineOn(calm.devicePath())});
        Operator op;
        std::atomic<qint64> written = 0;
        const std::jthread flood([&](const std::stop_token& stop) { // as fast as the line takes it
            while (!stop.stop_requested())
                written += std::max<qint64>(::write(mad.master(), bytes.constData(), std::size_t(bytes.size())), 0);
        });
        QVERIFY(sendsRight(op, mad));
        op.choose(1, "btnRX");
        auto* editor = op.find<ProgramEditor>("rt1", childViewAt(1));
        QTRY_VERIFY_WITH_TIMEOUT(editor->textSize() > 100'000, 30000);
        QVERIFY(sendsRight(op, calm, 2, long_));
        QVERIFY(closeView(op, 1, "btnLock", "Discard"));
        QVERIFY(sendsRight(op, mad)); // while it still floods
        QVERIFY(written > 100'000);
    }
};

QTEST_MAIN(FaultsTest)
#include "e2e_faults.moc"
