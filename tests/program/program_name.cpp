// SPDX-License-Identifier: GPL-3.0-or-later
#include "program/ProgramName.h"

#include <QDateTime>
#include <QTest>

/// The name proposed for a program that a control has punched.
class ProgramNameTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void comesFromTheFirstBlock_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("name");
        const QString none = "Lathe 2026-11-24 14-05-09.nc";
        const auto row = [](const char* name, const QByteArray& text, const QString& proposed) {
            QTest::newRow(name) << text << proposed;
        };
        row("number", "O1234\nG0", "O1234.nc");
        row("zeros stay", "O0001(BRACKET)\n", "O0001.nc");
        row("in ISO", ":0012\n", "O0012.nc");
        row("leader, percent, empty lines", QByteArray(20, '\0') + "%\r\r\n\nO7\n", "O7.nc");
        row("comments before it", "%\n(O99 IS OLD)\n(X) O7\n", "O7.nc");
        row("tape code before it", "\x12O7\n", "O7.nc");
        row("nothing", "", none);
        row("not in the first block", "%\nG0 X1\nO7\n", none);
        row("a word", "OFFSET\n", none);
        row("too long", "O123456789\n", none);
        row("comment without an end", "(O7\nO8\n", "O8.nc");
        row("only a letter", "%\nO", none);
    }

    void comesFromTheFirstBlock()
    {
        QFETCH(QByteArray, text);
        const QDateTime now({2026, 11, 24}, {14, 5, 9});
        QTEST(ProgramName::proposed({text.data(), std::size_t(text.size())}, "Lathe", now), "name");
    }

    void machinesNameIsNoPath()
    {
        const QDateTime now({2026, 11, 24}, {14, 5, 9});
        const QString path = ProgramName::proposed("", "../Mill 1/2:\n", now);
        QCOMPARE(path, QStringLiteral("-Mill 1-2-- 2026-11-24 14-05-09.nc"));
        QCOMPARE(ProgramName::proposed("", "", now), QStringLiteral("2026-11-24 14-05-09.nc"));
    }

    void receivedProgramGetsANameByItself_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("name");
        const auto row = [](const char* name, const QByteArray& text, const QString& given) {
            QTest::newRow(name) << text << given;
        };
        row("number", "%\nO1234(BRACKET)\n", "O1234.nc");
        row("file head", QByteArray(20, '\0') + "\x12$SHAFT.MIN%\r\nO1(OLD)\n", "SHAFT.MIN");
        row("file head without a suffix", "$SHAFT%\n", "SHAFT.nc");
        row("file head with a device", "$MD1:SHAFT.MIN%\n", "SHAFT.MIN");
        row("comment", "%\nN1 (BOLT  CIRCLE 3/4) G0\n(B)\n", "BOLT CIRCLE 3-4.nc");
        row("comment to the end of the line", "N1 G0 ; BORE\r\nN2\n", "BORE.nc");
        row("number before comment", "(NOTE)\nO7\n", "O7.nc");
        row("nothing", "G0 X1\n", "Lathe 2026-11-24 14-05-09.nc");
        row("way out", "$../../etc/passwd%\n", "passwd.nc");
        row("way out in a comment", "(../../A/..\\B)\n", "---A---B.nc");
        row("hidden", "$.bashrc%\n", "bashrc.nc");
        row("nothing but dots", "(...)\n", "Lathe 2026-11-24 14-05-09.nc");
        row("control characters", "(A\x01\x1B[2J\x7F\x85 B)\n", "A--[2J- B.nc");
        row("like an older copy", "$O1.nc.~3~%\n", "O1.nc.-3-");
        row("very long", "(" + QByteArray(300, 'A') + ")\n", QString(80, 'A') + ".nc");
        row("cut off", "$", "Lathe 2026-11-24 14-05-09.nc");
        row("comment cut off", "(", "Lathe 2026-11-24 14-05-09.nc");
        row("head without an end", "$A.MIN", "A.MIN");
    }

    void receivedProgramGetsANameByItself()
    {
        QFETCH(QByteArray, text);
        const QDateTime now({2026, 11, 24}, {14, 5, 9});
        QTEST(ProgramName::ofReceived({text.data(), std::size_t(text.size())}, "Lathe", now, ".nc"), "name");
    }

    void suffixIsNoPath_data()
    {
        QTest::addColumn<QString>("suffix");
        QTest::addColumn<QString>("name");
        QTest::newRow("usual") << ".nc"
                               << "O1.nc";
        QTest::newRow("no dot") << "NC"
                                << "O1.NC";
        QTest::newRow("none") << ""
                              << "O1";
        QTest::newRow("path") << "./../x"
                              << "O1.---x";
    }

    void suffixIsNoPath()
    {
        QFETCH(QString, suffix);
        QTEST(ProgramName::ofReceived("O1\n", "Lathe", QDateTime(), suffix), "name");
    }
};

QTEST_APPLESS_MAIN(ProgramNameTest)
#include "program_name.moc"
