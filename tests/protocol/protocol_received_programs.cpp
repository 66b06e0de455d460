// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/ReceivedPrograms.h"
#include "protocol/ReceivedText.h"

#include <QTest>

using End = ReceivedPrograms::End;
using Type = ControlType;

/// Where one program ends and the next begins, and what of each is kept in a file.
class ReceivedProgramsTest : public QObject
{
    Q_OBJECT

    // What is kept of each program; the bytes come in pieces of that size. `end` is how the last one ended.
    static QByteArrayList split(Type type, const QByteArray& bytes, qsizetype size, End& end, int& begun)
    {
        ReceivedPrograms programs;
        programs.listenTo(type, false);
        QByteArrayList texts;
        const auto keep = [&](const ReceivedPrograms::Program& program) {
            texts << ReceivedText::ofTape(program.bytes);
            end = program.end;
        };
        for (qsizetype at = 0; at < bytes.size(); at += size)
            for (const auto& program : programs.take(bytes.mid(at, size)))
                keep(program);
        begun = programs.count();
        if (const auto last = programs.end()) keep(*last);
        return texts;
    }

private Q_SLOTS:
    void programsAreToldApart_data()
    {
        QTest::addColumn<Type>("type");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArrayList>("texts");
        QTest::addColumn<End>("end");
        const auto row = [](const char* name, Type type, const QByteArray& bytes, const QByteArrayList& texts,
                            End end = End::Closed) { QTest::newRow(name) << type << bytes << texts << end; };
        const QByteArray leader(20, '\0');
        const QByteArray one("%\r\nO1(A)\r\nG0 X1 (5%)\r\nM30\r\n%\r\n"), two("%\r\nO2\r\nM30\r\n%\r\n");

        row("nothing", Type::Fanuc, leader + "\r\n%\r\n\x11\x13", {});
        row("one", Type::Fanuc, one, {one});
        row("between leaders", Type::Fanuc, leader + one + leader + two + leader, {one, two});
        row("no line end before the leader", Type::Fanuc, one.chopped(2) + leader + two, {one.chopped(2), two});
        row("leader after the percent sign", Type::General, "%\n" + leader + "O1\nM30\n%\n", {"%\nO1\nM30\n%\n"});
        row("Haas", Type::General, one + two, {one, two});
        row("CR alone", Type::Fanuc, "%\rO1\rM30\r%\r%\rO2\rM30\r%\r", {"%\rO1\rM30\r%\r", "%\rO2\rM30\r%\r"});
        row("CR CR LF", Type::Fanuc, "%\r\r\nO1\r\r\nM30\r\r\n%\r\r\n", {"%\r\nO1\r\nM30\r\n%\r\n"});
        row("LF CR CR", Type::Fanuc, "%\n\r\rO1\n\r\r%\n\r\r%\n\r\rO2\n\r\r%\n\r\r",
            {"%\n\rO1\n\r%\n", "%\n\rO2\n\r%\n"});
        row("between tape codes", Type::Fanuc, "\x12" + one + "\x14\x12" + two + "\x14", {one, two});
        row("many in one frame", Type::Fanuc, "%\nO1\nM30\nO2(B)\nM99\n:0003\nM30\n%\n",
            {"%\nO1\nM30\n", "O2(B)\nM99\n", ":0003\nM30\n%\n"});
        row("a note before the number", Type::Fanuc, "%\n(PART A)\nO1\nM30\n%\n", {"%\n(PART A)\nO1\nM30\n%\n"});
        row("names, calls and blocks are no number", Type::General, "O1\nOSUB\nCALL O2\nO\n:20 G0 X1\nO3 X1\nM2\n",
            {"O1\nOSUB\nCALL O2\nO\n:20 G0 X1\nO3 X1\nM2\n"}, End::Unmarked);
        row("never closed", Type::Fanuc, "%\nO1\nM30\n", {"%\nO1\nM30\n"}, End::Missing);
        row("the second is never closed", Type::General, one + two.first(9), {one, two.first(9)}, End::Missing);
        row("no frame at all", Type::General, "G0 X1\n\nG0 X2\n", {"G0 X1\nG0 X2\n"}, End::Unmarked);
        row("heads with a name", Type::General, "%MPF1\nG0\nM30\n%SPF2\nM17\n", {"%MPF1\nG0\nM30\n", "%SPF2\nM17\n"},
            End::Unmarked);
        row("a file head is a variable elsewhere", Type::General, "N1\n$TC_DP1[1,1]=120\n", {"N1\n$TC_DP1[1,1]=120\n"},
            End::Unmarked);
        row("Okuma", Type::Okuma,
            leader + QByteArray("\x12\0", 2) + leader + "$A.MIN%\nO1\nM2\nO2\nRTS\n" + leader + "\x14",
            {"$A.MIN%\nO1\nM2\nO2\nRTS\n"});
        row("Okuma, percent lines", Type::Okuma, "%\nO1\nM2\n%\n\x14", {"%\nO1\nM2\n%\n"});
        row("Okuma, several", Type::Okuma, "$A.MIN%\nM2\n$B.MIN%\nM2\n\x14\x12N1\nM2\n\x14",
            {"$A.MIN%\nM2\n", "$B.MIN%\nM2\n", "N1\nM2\n"});
        row("Okuma, never stopped", Type::Okuma, "\x12N1\nM2\n" + leader, {"N1\nM2\n"}, End::Missing);
        row("flow control between the bytes", Type::General, "G0\x13\x11 X1\n", {"G0 X1\n"}, End::Unmarked);
    }

    // However the line cuts the bytes into pieces.
    void programsAreToldApart()
    {
        QFETCH(Type, type);
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArrayList, texts);
        for (const qsizetype size : {bytes.size(), qsizetype{1}, qsizetype{3}}) {
            End end = End::Closed;
            int begun = 0;
            QCOMPARE(split(type, bytes, size, end, begun), texts);
            QTEST(end, "end");
            QCOMPARE(begun, texts.size());
        }
    }

    void closedProgramIsCompleteWithItsLineEnd()
    {
        ReceivedPrograms programs;
        QCOMPARE(programs.take("%\nO1\nM30\n%").size(), 0);
        QVERIFY(programs.isClosed());
        QCOMPARE(programs.take("\r").size(), 0);
        QCOMPARE(programs.take("\n").size(), 1);
        QVERIFY(!programs.hasText() && !programs.end());
    }

    void xmodemProgramEndsWhenTheSenderSaysSo()
    {
        ReceivedPrograms programs;
        programs.listenTo(ControlType::Fanuc, true);
        QCOMPARE(programs.take("%\nO1\nM30\nO2\nM30\n%\n").size(), 0);
        QCOMPARE(programs.take("%\n" + QByteArray(5, '\x1A')).size(), 0);
        programs.close();
        const auto program = programs.end();
        QVERIFY(program && program->end == End::Closed);
        programs.take("N1\n");
        QCOMPARE(programs.end()->end, End::Missing); // cancelled
    }

    void xmodemPaddingIsLeftOut_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("none") << QByteArray("O1\r\n\r\nM30\r\n") << QByteArray("O1\r\n\r\nM30\r\n");
        QTest::newRow("SUB") << "M30\r\n" + QByteArray(123, '\x1A') << QByteArray("M30\r\n");
        QTest::newRow("blanks") << "M30\r\n" + QByteArray(7, ' ') << QByteArray("M30\r\n");
        QTest::newRow("NUL") << "M30\r\n%" + QByteArray(7, '\0') << QByteArray("M30\r\n%");
        QTest::newRow("more than one block") << "M30" + QByteArray(200, ' ') << "M30" + QByteArray(73, ' ');
        QTest::newRow("none left") << QByteArray(20, '\0') << QByteArray();
    }

    void xmodemPaddingIsLeftOut()
    {
        QFETCH(QByteArray, bytes);
        QTEST(ReceivedText::ofXModem(bytes), "text");
    }
};

QTEST_APPLESS_MAIN(ReceivedProgramsTest)
#include "protocol_received_programs.moc"
