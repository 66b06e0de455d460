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
};

QTEST_APPLESS_MAIN(ProgramNameTest)
#include "program_name.moc"
