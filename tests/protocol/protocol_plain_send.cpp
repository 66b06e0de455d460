// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/PlainSend.h"
#include "protocol/ProgramLines.h"

#include <QTest>

namespace
{
const QByteArray leader(20, '\0');
const QByteArray okumaHeader = leader + QByteArray("\x12\0", 2) + leader; // the first line has a leader of its own
const QStringList startBlocks{"A(B)\n", " \n", "C\n"};
const QByteArray okumaTrailer = leader + QByteArray("\x14\0\0\0\0\0", 6);

struct Machine {
    ControlType type = ControlType::General;
    QString eob = "\r\n";
    QString sot = {};
    QString eot = {};
    bool stripComments = false;
    bool stripEmptyLines = false;

    PlainSend::Setup setup() const { return {{type, stripComments, stripEmptyLines}, sot, eob, eot}; }
};

/// A send with the line that it writes to and an operator.
class Line
{
public:
    Line(const QByteArray& program, PlainSend::Setup setup) : program_(program), setup_(std::move(setup)) {}

    /// One letter for each event; returns what the line has carried.
    QByteArray play(const char* script)
    {
        for (; *script; ++script)
            happens(*script);
        return carried_;
    }

    PlainSend send{program_};

private:
    void happens(char event)
    {
        switch (event) {
        case 'T': // Send, from the top; the machine waits for its start signal
            return send.prepareFromTop(setup_);
        case 'C': // Send, from the caret, which is where the last stop left it
            return send.prepareFromCaret(setup_, send.next());
        case 'H': // Send, from the caret, which the operator has put in the second line
            return send.prepareFromCaret(setup_, 4);
        case 'M': // Send from the second line, with start blocks
            return send.prepareRestart(setup_, 3, startBlocks);
        case 'b': // the start signal
            underWay_ = send.begin(cutOff_);
            return;
        case 'w': // the line has taken what was written
            carried_ += underWay_;
            return written();
        case 'h': // half of it, then a stop
            return stopAfter(underWay_.size() / 2);
        case 's': // none of it, then a stop
            return stopAfter(0);
        case 'e': // all the rest, to the end
            for (int writes = 0; send.state() > PlainSend::State::Waiting && writes < 100; ++writes)
                happens('w');
            return;
        case 't':
            return send.forgetPlace();
        case 'r':
            return send.rewind();
        default:
            qFatal("no such event: %c", event);
        }
    }

    void stopAfter(qsizetype taken)
    {
        send.stop();
        if (underWay_.isEmpty()) return; // the rest of an earlier stop stays
        carried_ += underWay_.first(taken);
        cutOff_ = underWay_.mid(taken);
        underWay_.clear();
    }

    void written()
    {
        const auto step = send.written();
        underWay_ = step.bytes.value_or(QByteArray());
        if (step.isSent) carried_ += '.';
    }

    ProgramLines program_;
    PlainSend::Setup setup_;
    QByteArray underWay_, cutOff_, carried_;
};
} // namespace

/// Which bytes a send hands to the line, and where it goes on after a stop.
class PlainSendTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void bytesOnTheLine_data()
    {
        QTest::addColumn<Machine>("machine");
        QTest::addColumn<QByteArray>("program");
        QTest::addColumn<QByteArray>("bytes");
        const auto row = [](const char* name, const Machine& machine, const QByteArray& program,
                            const QByteArray& bytes) { QTest::newRow(name) << machine << program << bytes + '.'; };
        row("last line without a line end", {}, "G0\nG1\nG2", "G0\r\nG1\r\nG2");
        row("blank lines", {.eob = "\n"}, "G0\n\nG1\n\n", "G0\n\nG1\n\n");
        row("end of block of three characters", {.eob = "\n\r\r"}, "G0\nG1", "G0\n\r\rG1");
        row("no end of block", {.eob = ""}, "G0\nG1\n", "G0G1");
        row("general control", {}, "%\n\x12G0\n%", "%\r\n\x12G0\r\n%");
        row("start and end", {.sot = "%\r", .eot = "\3\4"}, "G0\n", "%\rG0\r\n\3\4");
        row("any bytes", {.eob = "\n"}, QByteArray("\t G0 \x01\0\x7F\n\xE9\x85\xFF\x0B\x0C\n", 15),
            QByteArray("\t G0 \x01\0\x7F\n???\x0B\x0C\n", 15));

        const auto fanuc = ControlType::Fanuc;
        row("Fanuc with the program's own percent lines", {.type = fanuc}, "%\nO1\n % \n \nG%0%\n%",
            leader + "%\r\nO1\r\n \r\nG0\r\n%\r\n");
        row("Fanuc, percent lines only", {.type = fanuc, .eob = "\n"}, "%\n%\n", leader + "%\n%\n");
        row("Fanuc sends no start and end texts", {.type = fanuc, .sot = "A", .eot = "B", .stripComments = true},
            "%(A)\nO1(B)", leader + "%\r\nO1%\r\n");
        const auto okuma = ControlType::Okuma;
        row("Okuma, tape codes in the text taken out", {.type = okuma}, QByteArray("$A%\n\0\x12G\x14\0\n\x12\n", 12),
            okumaHeader + "$A%\r\nG\r\n\r\n" + okumaTrailer);
        row("Okuma, first line stripped", {.type = okuma, .stripComments = true, .stripEmptyLines = true},
            "(A)\nG0\nG1", okumaHeader + "G0\r\nG1" + okumaTrailer);

        row("comments", {.stripComments = true}, "N1 (A) G0(B)X1 ; C\n(D;E)\n  G1(;)X1) \t\nG2 (open\n;F\nM30 (G)",
            "N1  G0X1\r\n\r\n  G1X1)\r\nG2\r\n\r\nM30");
        row("empty lines", {.stripEmptyLines = true}, "G0\n \t\n(A)\n \nM30\n  ", "G0\r\n(A)\r\nM30\r\n");
        row("both, and nothing left", {.sot = "\1", .eot = "\4", .stripComments = true, .stripEmptyLines = true},
            "(A)\n ;B\n", "\1\4");
    }

    void bytesOnTheLine()
    {
        QFETCH(Machine, machine);
        QFETCH(QByteArray, program);
        QTEST(Line(program, machine.setup()).play("Tbe"), "bytes");
    }

    void stopsAndWhatFollows_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QByteArray>("bytes");
        const auto row = [](const char* name, const QByteArray& script, const QByteArray& bytes) {
            QTest::newRow(name) << script << bytes;
        };
        const QByteArray whole("<<G0;G1;G2;>>.");
        row("nothing goes out during the wait", "T", "");
        row("a late completion", "Tww", "");
        row("a completion after a stop", "Tbwsww", "<<");
        row("in the header, none taken", "TbsCbe", whole);
        row("in the header", "TbhCbe", whole);
        row("in a line", "TbwwhCbe", whole);
        row("in the last line", "TbwwwhCbe", whole);
        row("in the trailer", "TbwwwwhCbe", whole);
        row("again and again in one place", "TbwwhCbsCbhCbe", whole);
        row("in the wait from the top", "TsCbe", whole);
        row("in the wait from the top, twice", "TsCsCbe", whole);
        row("in the wait of a continued send", "TbwwhCsCbe", whole);
        row("continued from another line", "TbwwhHbe", "<<G0;GG1;G2;>>.");
        row("wait from another line given up", "TbwwhHsCbe", "<<G0;GG1;G2;>>.");
        row("in the wait from the caret, no header is due", "HsCbe", "G1;G2;>>.");
        row("text touched, so the rest of the line is dropped", "TbwwhtCbe", "<<G0;GG2;>>.");
        row("touched during the send", "TbwwthCbe", whole);
        row("rewound", "TbwwhrTbe", "<<G0;G" + whole);
        row("rewound to continue from the caret", "TbwwhrCbe", "<<G0;GG0;G1;G2;>>.");
        row("sent twice", "TbeTbe", whole + whole);

        const QByteArray middle("<<A(B); ;C;G1;G2;>>.");
        row("from the middle", "Mbe", middle);
        row("from the middle, in the wait", "MsCbe", middle);
        row("from the middle, in the header", "MbhCbe", middle);
        row("in the first start block", "MbwhCbe", middle);
        row("again and again in a start block", "MbwhCbsCbhCbe", middle);
        row("in the last start block", "MbwwwhCbe", middle);
        row("in the line after the start blocks", "MbwwwwhCbe", middle);
        row("from the middle, after a stop elsewhere", "TbwwhMbe", "<<G0;G" + middle);
        row("start blocks given up for the top", "MbwhrTbe", "<<A(" + whole);
        row("start blocks given up by a click", "MbwhtCbe", "<<A(G1;G2;>>.");
        row("from the top after the middle", "MbeTbe", middle + whole);
    }

    void stopsAndWhatFollows()
    {
        QFETCH(QByteArray, script);
        Line line("G0\nG1\nG2\n", {{}, "<<", ";", ">>"});
        QTEST(line.play(script.constData()), "bytes");
    }

    void startBlocksGoOutAsLinesDo_data()
    {
        QTest::addColumn<Machine>("machine");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("Fanuc") << Machine{.type = ControlType::Fanuc, .eob = "\n"}
                               << leader + "%\nA(B)\n \nC\nG1\nG2\n%\n.";
        QTest::newRow("stripped") << Machine{.stripComments = true, .stripEmptyLines = true}
                                  << QByteArray("A\r\nC\r\nG1\r\nG2\r\n.");
        QTest::newRow("Okuma: the leader stands before the first of them")
            << Machine{.type = ControlType::Okuma, .eob = "\n", .stripEmptyLines = true}
            << okumaHeader + "A(B)\nC\nG1\nG2\n" + okumaTrailer + '.';
    }

    void startBlocksGoOutAsLinesDo()
    {
        QFETCH(Machine, machine);
        QTEST(Line("G0\nG1\nG2\n", machine.setup()).play("Mbe"), "bytes");
    }

    void leaderOfOkuma_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<int>("leaders");
        // One leader is the header's, one the first line's, one the trailer's.
        QTest::newRow("whole") << QByteArray("Tbe") << 3;
        QTest::newRow("whole, twice") << QByteArray("TbeTbe") << 6;
        QTest::newRow("continued in the header") << QByteArray("TbsCbe") << 3;
        QTest::newRow("continued in the first line") << QByteArray("TbwsCbe") << 3;
        QTest::newRow("continued in a later line") << QByteArray("TbwwwhCbe") << 3;
        QTest::newRow("from the caret, nothing to continue") << QByteArray("Hbe") << 2;
        QTest::newRow("from the caret, after a stop elsewhere") << QByteArray("TbwwwwhHbe") << 4;
    }

    void leaderOfOkuma()
    {
        QFETCH(QByteArray, script);
        Line line("G0\nG1\nG2\nG3\n", Machine{ControlType::Okuma}.setup());
        const QByteArray bytes = line.play(script.constData()).replace(leader, "L");
        QTEST(static_cast<int>(bytes.count('L')), "leaders");
    }

    void settingsMayChangeBeforeASendIsContinued()
    {
        const ProgramLines text("G0\n");
        PlainSend send(text);
        send.prepareFromTop(Machine{ControlType::Okuma}.setup());
        const auto header = send.begin({});
        send.stop();
        send.prepareFromCaret(Machine().setup(), 0);
        QCOMPARE(send.begin(header), header);
        QCOMPARE(send.written().bytes, QByteArray("G0\r\n")); // and no leader, which was Okuma's
    }

    void repeatBeginsAtTheTop()
    {
        auto setup = Machine{.sot = "<", .eot = ">"}.setup();
        setup.repeats = true;
        Line line("G0\n", setup);
        QCOMPARE(line.play("Tbwww"), QByteArray("<G0\r\n>."));
        QCOMPARE(line.play("www"), QByteArray("<G0\r\n>.")); // it waits again
        QCOMPARE(line.send.copy(), 2);
        QCOMPARE(line.play("be"), QByteArray("<G0\r\n>.<G0\r\n>."));
        line.play("sC"); // stopped in the wait for the third copy, and on again
        QCOMPARE(line.send.copy(), 3);
        line.play("sT");
        QCOMPARE(line.send.copy(), 1);
        Line middle("G0\nG1\n", setup); // the start blocks are for the first copy only
        QCOMPARE(middle.play("Mbwwwwwwbe"), QByteArray("<A(B)\r\n \r\nC\r\nG1\r\n>.<G0\r\nG1\r\n>."));
    }

    void lostPortLeavesNothingHalfSent_data()
    {
        using Restart = PlainSend::Restart;
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<Restart>("restart");
        QTest::addColumn<int>("next");
        QTest::newRow("idle") << QByteArray("r") << Restart::Unchanged << 0;
        QTest::newRow("in the wait from the top") << QByteArray("T") << Restart::FromTop << 0;
        QTest::newRow("stopped in the wait from the top") << QByteArray("Ts") << Restart::FromTop << 0;
        QTest::newRow("in the wait from the caret") << QByteArray("H") << Restart::FromNext << 4;
        QTest::newRow("in the header") << QByteArray("Tb") << Restart::FromTop << 0;
        QTest::newRow("in the second line") << QByteArray("Tbww") << Restart::FromLineOut << 3;
        QTest::newRow("stopped in the second line") << QByteArray("Tbwwh") << Restart::FromLineOut << 3;
        QTest::newRow("in the wait to continue there") << QByteArray("TbwwhC") << Restart::FromLineOut << 3;
        QTest::newRow("in the trailer") << QByteArray("Tbwwww") << Restart::FromLineOut << 6;
        QTest::newRow("sent") << QByteArray("Tbe") << Restart::Unchanged << 9;
        QTest::newRow("in the wait from the middle") << QByteArray("M") << Restart::FromStartBlocks << 3;
        QTest::newRow("stopped in a start block") << QByteArray("Mbwh") << Restart::FromStartBlocks << 3;
        QTest::newRow("in the line after the start blocks") << QByteArray("Mbwwww") << Restart::FromLineOut << 3;
    }

    void lostPortLeavesNothingHalfSent()
    {
        QFETCH(QByteArray, script);
        Line line("G0\nG1\nG2\n", Machine().setup());
        line.play(script.constData());
        QTEST(line.send.lose(), "restart");
        QTEST(static_cast<int>(line.send.next()), "next");
        QVERIFY(!line.send.willContinue());
        QVERIFY(line.send.state() == PlainSend::State::Idle);
    }
};

QTEST_APPLESS_MAIN(PlainSendTest)
#include "protocol_plain_send.moc"
