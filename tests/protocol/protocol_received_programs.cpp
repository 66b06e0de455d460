// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/ReceivedPrograms.h"

#include <QTest>

class ReceivedProgramsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void countsThePrograms_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("programs");
        QTest::newRow("leader and percent line") << QByteArray(20, '\0') + "%\r\n" << 0;
        QTest::newRow("one, framed") << QByteArray("%\nO1234(A)\nN1 G0 X1\nM30\n%\n") << 1;
        QTest::newRow("framed one after the other") << QByteArray("%\nO1\nM30\n%\n\0\0%\nO2\nM30\n%\n", 24) << 2;
        QTest::newRow("two in one frame") << QByteArray("%\nO1\nM30\nO2\nM30\n%\n") << 2;
        QTest::newRow("a note before the number") << QByteArray("(PART A)\nO1\nM30\n") << 1;
        QTest::newRow("colon for the number") << QByteArray("%\n:0001\nM30\n:0002\nM30\n%\n") << 2;
        QTest::newRow("file heads") << QByteArray("$A.MIN%\nO1\nM2\n$B.MIN%\nO1\nM2\n") << 2;
        QTest::newRow("between tape codes") << QByteArray("\x12G0 X1\nM2\n\x14\x12G0 X1\nM2\n\x14") << 2;
        QTest::newRow("a name and a call are no number") << QByteArray("O1\nOSUB\nCALL O2\nO\nM2\n") << 1;
        QTest::newRow("no frame at all") << QByteArray("G0 X1\n\nG0 X2\n") << 1;
    }

    void countsThePrograms()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, programs);
        ReceivedPrograms whole, bytewise;
        whole.take(text);
        for (const char c : text)
            bytewise.take(QByteArray(1, c));
        QCOMPARE(whole.count(), programs);
        QCOMPARE(bytewise.count(), programs);
    }
};

QTEST_APPLESS_MAIN(ReceivedProgramsTest)
#include "protocol_received_programs.moc"
