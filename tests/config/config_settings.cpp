// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/g.h"
#include "config/SettingsText.h"

#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

namespace
{
auto read(const QString& text)
{
    return SettingsText::read(text, [] { return std::make_shared<MachineRecord>(); });
}

const QString stored = "[CNC1]\nMCNAME=Mill, \"old\"\nMCMODE=Fanuc\nMCPORT=/dev/ttyUSB0\nMCINDIR=/in\n"
                       "MCOUTDIR=file:///out\nMCFLOW=0\nMCWAIT=true\nMCREPEAT=false\nMCDELAY=4\nMCCRLF=true\n"
                       "MCBLKTIC=7\nMCBAUD=115200\nMCEIA=false\nMCDBPAR=1\nMCSBITS=2\nMCTXEOB=LF\nMCTXSOT=37,13\n"
                       "MCTXEOT=64\nMCSTRIPCOMMENTS=true\nMCSTRIPEMPTYLINES=false\nMCRXEOBCHAR=\r\nMCREQST=GET\n"
                       "MCEXTENS=nc\nMCRXTIMEOUT=3\nMCTXTIMEOUT=3\nMCNOTFOUNDMSG=\nMCFNAMEISTXT=false\n"
                       "MCAUTOSTARTREMO=false\nMCREMOENABLED=true\nMCFADALTA1=false\nMCREMOPFX=R\nMCSAVEPFX=false\n"
                       "[END]\n";
} // namespace

class SettingsTest : public QObject
{
    Q_OBJECT
    QTemporaryDir home_;

private Q_SLOTS:
    void initTestCase() { QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home_.path()); }
    void recordIsReadAndWrittenFieldByField();
    void valueOfAKey_data();
    void valueOfAKey();
    void headersDecideTheRecords_data();
    void headersDecideTheRecords();
    void listsStayParallelThroughStorage();
};

void SettingsTest::recordIsReadAndWrittenFieldByField()
{
    const auto mill = read(stored)[1];
    QCOMPARE(SettingsText::write({mill.get()}), stored);
    const QString withKey = QString(stored).replace("[END]", "MCXMODEM0=true\n[END]");
    QCOMPARE(SettingsText::write({read(withKey)[1].get()}), withKey);
    QCOMPARE(SettingsText::write({read(QString(withKey).replace("=true\n[", "=false\n["))[1].get()}), stored);
    QCOMPARE(QStringList({mill->MCNAME, mill->MCMODE, mill->MCPORT, mill->MCOUTDIR, mill->MCTXEOB, mill->MCTXSOT,
                          mill->MCTXEOT}),
             QStringList({"Mill, \"old\"", "Fanuc", "/dev/ttyUSB0", "file:///out", "LF", "37,13", "64"}));
    QCOMPARE(QList({mill->MCFLOW, mill->MCBLKTIC, mill->MCBAUD, mill->MCDBPAR, mill->MCSBITS}),
             QList<qint64>({0, 7, 115200, 1, 2}));
    QVERIFY(mill->MCWAIT && !mill->MCREPEAT && !mill->MCEIA && mill->MCSTRIPCOMMENTS && !mill->MCSTRIPEMPTYLINES);
}

void SettingsTest::valueOfAKey_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QString>("loaded"); // the line that the loaded record writes
    const auto row = [](const char* lines, const char* loaded) { QTest::newRow(lines) << lines << loaded; };
    row("MCFLOW=4", "MCFLOW=4");
    row("MCFLOW=5", "MCFLOW=1");
    row("MCFLOW= 2", "MCFLOW=1");
    row("MCWAIT=TRUE", "MCWAIT=false");
    row(" MCWAIT=true", "MCWAIT=false");
    row("MCBLKTIC=0", "MCBLKTIC=10");
    for (const char* rate : {"MCBAUD=150", "MCBAUD=600", "MCBAUD=1200", "MCBAUD=2400", "MCBAUD=4800", "MCBAUD=9600",
                             "MCBAUD=19200", "MCBAUD=38400", "MCBAUD=57600"})
        row(rate, rate);
    row("MCBAUD=9600\nMCBAUD=300", "MCBAUD=300"); // the last one counts, even a bad one
    row("MCBAUD=9600\nMCBAUD=110", "MCBAUD=1200");
    row("MCBAUD=110\nMCSPEED=110", "MCSPEED=110"); // one that is not usual
    row("MCBAUD=9600\nMCSPEED=x", "MCBAUD=9600");
    row("MCDBPAR=2", "MCDBPAR=2");
    row("MCDBPAR=3", "MCDBPAR=0");
    row("MCSBITS=1", "MCSBITS=1");
    row("MCSBITS=0", "MCSBITS=2");
    row("MCTXEOB=", "MCTXEOB=CRLF");
    row("MCRXTIMEOUT=11\nMCTXTIMEOUT=11", "MCTXTIMEOUT=3"); // written but never read
    row("MCTXTOUT=61", "MCTXTIMEOUT=0");
    row("MCTXTOUT=60", "MCTXTIMEOUT=60");
    row("MCRXEOBCHAR=\r", "MCRXEOBCHAR=\r");
    row("MCRXEOBCHAR=LF", "MCRXEOBCHAR=");
}

void SettingsTest::valueOfAKey()
{
    QFETCH(QString, lines);
    QFETCH(QString, loaded);
    const auto records = read("[CNC1]\n" + lines + "\n[END]\n");
    const QStringList written = SettingsText::write({records[1].get()}).split('\n');
    QVERIFY2(written.contains(loaded), qPrintable(written.join('|')));
}

void SettingsTest::headersDecideTheRecords_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("names"); // the placeholder's first
    const auto row = [](const char* name, const char* text, const QStringList& names) {
        QTest::newRow(name) << text << names;
    };
    row("lines before the first header are the placeholder's", "MCNAME=p\n[CNC1]\nMCNAME=a\n[END]\n", {"p", "a"});
    row("without [END] the last machine is lost", "[CNC1]\nMCNAME=a\n[CNC2]\nMCNAME=b\n", {"CNC1", "a"});
    row("the number in a header is not read", "[CNC9]\nMCNAME=a\n[CNC9]\nMCNAME=b\n[END]", {"CNC1", "a", "b"});
    row("four characters make a header", "[CNCx\nMCNAME=a\n[ENDLESS\nMCNAME=b\n", {"CNC1", "a"});
    row("other brackets are no header", "[cnc1]\n[EN\n[\nMCNAME=p\n[END]", {"p"});
    row("CR LF line ends stay in the values", "[CNC1]\r\nMCNAME=a\r\n[END]\r\n", {"CNC1", "a\r"});
}

void SettingsTest::headersDecideTheRecords()
{
    QFETCH(QString, text);
    QStringList got;
    for (const auto& record : read(text))
        got << record->MCNAME;
    QTEST(got, "names");
}

void SettingsTest::listsStayParallelThroughStorage()
{
    const auto names = [] {
        g::mcIcons.clear();
        g::mcChildViews.clear();
        g::readAllMcSettings();
        QStringList all;
        for (qsizetype index = 0; index < g::mcIcons.size(); ++index)
            all << (g::mcIcons[index]->MCINDEX == index ? g::mcIcons[index]->MCNAME : "wrong index");
        return g::mcChildViews.size() == all.size() ? all : QStringList{"not parallel"};
    };
    QCOMPARE(names(), QStringList({"CNC1", "CNC1"})); // the first run: the placeholder and one machine
    g::mcIcons[0]->MCNAME = "not stored";
    g::mcIcons.append(g::makeMcIcon());
    g::mcIcons[2]->MCNAME = "last";
    g::saveAllMcSettings();
    QCOMPARE(names(), QStringList({"CNC1", "CNC1", "last"}));
    g::mcIcons.resize(1); // deleting every machine does not make a first run
    g::saveAllMcSettings();
    QCOMPARE(names(), QStringList{"CNC1"});
}

QTEST_GUILESS_MAIN(SettingsTest)
#include "config_settings.moc"
