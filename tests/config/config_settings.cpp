// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/g.h"
#include "config/SettingsText.h"
#include "platform/Preferences.h"

#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

namespace
{
std::shared_ptr<MachineRecord> fresh()
{
    return std::make_shared<MachineRecord>();
}

auto read(const QString& text)
{
    return SettingsText::read(text, fresh);
}

// The one machine that these lines describe.
std::shared_ptr<MachineRecord> machine(const QString& lines)
{
    const auto records = read("[CNC1]\n" + lines + "\n[END]\n");
    return records.size() == 2 ? records[1] : nullptr;
}

const QString twoMachines = QStringLiteral("[CNC1]\n"
                                           "MCNAME=Mill, \"old\"\nMCMODE=Fanuc\nMCPORT=/dev/ttyUSB0\nMCINDIR=/in\n"
                                           "MCOUTDIR=file:///out\nMCFLOW=0\nMCWAIT=true\nMCREPEAT=true\nMCDELAY=-4\n"
                                           "MCCRLF=true\nMCBLKTIC=7\nMCBAUD=115200\nMCEIA=true\nMCDBPAR=2\nMCSBITS=2\n"
                                           "MCTXEOB=LF\nMCTXSOT=37,13\nMCTXEOT=4\nMCSTRIPCOMMENTS=true\n"
                                           "MCSTRIPEMPTYLINES=true\nMCRXEOBCHAR=\n\nMCREQST=GET\nMCEXTENS=nc\n"
                                           "MCRXTIMEOUT=11\nMCTXTIMEOUT=12\nMCNOTFOUNDMSG=none\nMCFNAMEISTXT=true\n"
                                           "MCAUTOSTARTREMO=true\nMCREMOENABLED=true\nMCFADALTA1=true\nMCREMOPFX=R\n"
                                           "MCSAVEPFX=true\n"
                                           "[CNC2]\n"
                                           "MCNAME=CNC1\nMCMODE=NONE\nMCPORT=1\nMCINDIR=\nMCOUTDIR=\nMCFLOW=1\n"
                                           "MCWAIT=false\nMCREPEAT=false\nMCDELAY=10\nMCCRLF=false\nMCBLKTIC=0\n"
                                           "MCBAUD=1200\nMCEIA=false\nMCDBPAR=0\nMCSBITS=1\nMCTXEOB=CRLF\n"
                                           "MCTXSOT=None (Default)\nMCTXEOT=None (Default)\nMCSTRIPCOMMENTS=false\n"
                                           "MCSTRIPEMPTYLINES=false\nMCRXEOBCHAR=LF\nMCREQST=SEND\nMCEXTENS=\n"
                                           "MCRXTIMEOUT=3\nMCTXTIMEOUT=3\nMCNOTFOUNDMSG=\nMCFNAMEISTXT=false\n"
                                           "MCAUTOSTARTREMO=false\nMCREMOENABLED=false\nMCFADALTA1=false\nMCREMOPFX=\n"
                                           "MCSAVEPFX=false\n"
                                           "[END]\n");

void fill(MachineRecord& mc)
{
    mc.MCNAME = "Mill, \"old\"";
    mc.MCMODE = "Fanuc";
    mc.MCPORT = "/dev/ttyUSB0";
    mc.MCINDIR = "/in";
    mc.MCOUTDIR = "file:///out";
    mc.MCFLOW = 0;
    mc.MCDELAY = -4;
    mc.MCBLKTIC = 7;
    mc.MCBAUD = 115200;
    mc.MCDBPAR = mc.MCSBITS = 2;
    mc.MCTXEOB = "LF";
    mc.MCTXSOT = "37,13";
    mc.MCTXEOT = "4";
    mc.MCRXEOBCHAR = "\n";
    mc.MCREQST = "GET";
    mc.MCEXTENS = "nc";
    mc.MCRXTOUT = 11;
    mc.MCTXTOUT = 12;
    mc.MCNOTFOUNDMSG = "none";
    mc.MCREMOPFX = "R";
    mc.MCWAIT = mc.MCREPEAT = mc.MCCRLF = mc.MCEIA = mc.MCSTRIPCOMMENTS = mc.MCSTRIPEMPTYLINES = true;
    mc.MCFNAMEISTXT = mc.MCAUTOSTARTREMO = mc.MCREMOENABLED = mc.MCFADALTA1 = mc.MCSAVEPFX = true;
}
} // namespace

class SettingsTest : public QObject
{
    Q_OBJECT
    QTemporaryDir home_;

private Q_SLOTS:
    void initTestCase() { QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home_.path()); }
    void cleanup();
    void writtenTextIsExact();
    void writtenTextComesBack();
    void storedTimeOutsNeverComeBack();
    void fieldsThatAreNeverReadStayAtTheirDefaults();
    void badValuesFallBackToTheirKeysPreset_data();
    void badValuesFallBackToTheirKeysPreset();
    void receiveEndOfBlockComesBackAsTheCharacter();
    void lastValueOfAKeyCounts();
    void headersDecideTheRecords_data();
    void headersDecideTheRecords();
    void firstRunHasThePlaceholderAndOneMachine();
    void listsStayParallelThroughStorage();
};

void SettingsTest::cleanup()
{
    g::mcIcons.clear();
    g::mcChildViews.clear();
}

void SettingsTest::writtenTextIsExact()
{
    MachineRecord mill;
    fill(mill);
    const MachineRecord asMade;
    QCOMPARE(SettingsText::write({&mill, &asMade}), twoMachines);
    QCOMPARE(SettingsText::write({}), QStringLiteral("[END]\n"));
}

void SettingsTest::writtenTextComesBack()
{
    const auto records = read(twoMachines);
    QCOMPARE(records.size(), 3U);
    for (qint64 i = 0; i < 3; ++i)
        QCOMPARE(records[static_cast<std::size_t>(i)]->MCINDEX, i);

    MachineRecord placeholder;
    QCOMPARE(SettingsText::write({records[0].get()}), SettingsText::write({&placeholder}));

    MachineRecord mill; // what was filled in, but for what storage does not keep
    fill(mill);
    mill.MCDELAY = 10;
    mill.MCRXTOUT = mill.MCTXTOUT = 3;
    mill.MCNOTFOUNDMSG.clear();
    mill.MCFNAMEISTXT = mill.MCAUTOSTARTREMO = mill.MCFADALTA1 = false;
    QCOMPARE(SettingsText::write({records[1].get()}), SettingsText::write({&mill}));
}

void SettingsTest::storedTimeOutsNeverComeBack()
{
    const auto written = machine("MCRXTIMEOUT=11\nMCTXTIMEOUT=12");
    QCOMPARE(written->MCRXTOUT, 3);
    QCOMPARE(written->MCTXTOUT, 3);
    const auto asRead = machine("MCRXTOUT=11\nMCTXTOUT=12");
    QCOMPARE(asRead->MCRXTOUT, 11);
    QCOMPARE(asRead->MCTXTOUT, 12);
}

void SettingsTest::fieldsThatAreNeverReadStayAtTheirDefaults()
{
    const auto mc = machine("MCNOTFOUNDMSG=x\nMCFNAMEISTXT=true\nMCAUTOSTARTREMO=true\nMCFADALTA1=true");
    QCOMPARE(mc->MCNOTFOUNDMSG, QString());
    QVERIFY(!mc->MCFNAMEISTXT && !mc->MCAUTOSTARTREMO && !mc->MCFADALTA1);
}

void SettingsTest::badValuesFallBackToTheirKeysPreset_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("loaded"); // the line that the loaded record writes
    const auto row = [](const char* line, const char* loaded) { QTest::newRow(line) << line << loaded; };
    row("MCNAME=", "MCNAME=");
    row("MCFLOW=4", "MCFLOW=4");
    row("MCFLOW=5", "MCFLOW=1");
    row("MCFLOW=-1", "MCFLOW=1");
    row("MCFLOW= 2", "MCFLOW=1");
    row("MCFLOW=+2", "MCFLOW=2");
    row("MCWAIT=TRUE", "MCWAIT=false");
    row("MCWAIT=true ", "MCWAIT=false");
    row("MCDELAY=0", "MCDELAY=10");
    row("MCDELAY=1", "MCDELAY=1");
    row("MCBLKTIC=0", "MCBLKTIC=10");
    row("MCBLKTIC=9223372036854775807", "MCBLKTIC=9223372036854775807");
    row("MCBLKTIC=9223372036854775808", "MCBLKTIC=10");
    row("MCBAUD=150", "MCBAUD=150");
    row("MCBAUD=110", "MCBAUD=1200");
    row("MCBAUD=57600", "MCBAUD=57600");
    row("MCBAUD=9600.0", "MCBAUD=1200");
    row("MCDBPAR=2", "MCDBPAR=2");
    row("MCDBPAR=3", "MCDBPAR=0");
    row("MCSBITS=1", "MCSBITS=1");
    row("MCSBITS=0", "MCSBITS=2");
    row("MCSBITS=x", "MCSBITS=2");
    row("MCTXEOB=", "MCTXEOB=CRLF");
    row("MCTXSOT=", "MCTXSOT=");
    row("MCTXEOT==4,=", "MCTXEOT==4,=");
    row("MCREQST=", "MCREQST=SEND");
    row("mcwait=true", "MCWAIT=false");
    row(" MCWAIT=true", "MCWAIT=false");
    row("MCRXTOUT=30", "MCRXTIMEOUT=0");
    row("MCRXTOUT=29", "MCRXTIMEOUT=29");
    row("MCTXTOUT=61", "MCTXTIMEOUT=0");
    row("MCTXTOUT=60", "MCTXTIMEOUT=60");
}

void SettingsTest::badValuesFallBackToTheirKeysPreset()
{
    QFETCH(QString, line);
    QFETCH(QString, loaded);
    const QStringList lines = SettingsText::write({machine(line).get()}).split('\n');
    QVERIFY2(lines.contains(loaded), qPrintable(lines.join('|')));
}

void SettingsTest::receiveEndOfBlockComesBackAsTheCharacter()
{
    for (const char* other : {"\n", "", "LF", "CR", "\r\r", "x"})
        QCOMPARE(machine(QStringLiteral("MCRXEOBCHAR=") + other)->MCRXEOBCHAR, QStringLiteral("\n"));
    QCOMPARE(machine("MCRXEOBCHAR=\r")->MCRXEOBCHAR, QStringLiteral("\r"));
}

void SettingsTest::lastValueOfAKeyCounts()
{
    QCOMPARE(machine("MCBAUD=9600\nMCNAME=a\nMCBAUD=300\nMCNAME=b")->MCBAUD, 300);
    // A bad value resets the field as well.
    QCOMPARE(machine("MCBAUD=9600\nMCBAUD=110")->MCBAUD, 1200);
}

void SettingsTest::headersDecideTheRecords_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("names"); // the placeholder's first
    QTest::newRow("no machine") << "[END]\n" << QStringList{"CNC1"};
    QTest::newRow("empty text") << "" << QStringList{};
    QTest::newRow("lines before the first header are the placeholder's") << "MCNAME=p\n[CNC1]\nMCNAME=a\n[END]\n"
                                                                         << QStringList{"p", "a"};
    QTest::newRow("without [END] the last machine is lost") << "[CNC1]\nMCNAME=a\n[CNC2]\nMCNAME=b\n"
                                                            << QStringList{"CNC1", "a"};
    QTest::newRow("lines after [END] are lost") << "[CNC1]\nMCNAME=a\n[END]\nMCNAME=b\n" << QStringList{"CNC1", "a"};
    QTest::newRow("the number in a header is not read")
        << "[CNC9]\nMCNAME=a\n[CNC9]\nMCNAME=b\n[END]" << QStringList{"CNC1", "a", "b"};
    QTest::newRow("only the first four characters make a header") << "[CNCx\nMCNAME=a\n[ENDLESS\nMCNAME=b\n"
                                                                  << QStringList{"CNC1", "a"};
    QTest::newRow("other brackets are no header") << "[cnc1]\n[EN\n[\nMCNAME=p\n[END]" << QStringList{"p"};
    QTest::newRow("CR LF line ends stay in the values") << "[CNC1]\r\nMCNAME=a\r\n[END]\r\n"
                                                        << QStringList{"CNC1", "a\r"};
}

void SettingsTest::headersDecideTheRecords()
{
    QFETCH(QString, text);
    QFETCH(QStringList, names);
    QStringList got;
    for (const auto& record : read(text))
        got << record->MCNAME;
    QCOMPARE(got, names);
}

void SettingsTest::firstRunHasThePlaceholderAndOneMachine()
{
    g::readAllMcSettings();
    QCOMPARE(g::mcIcons.size(), 2);
    QCOMPARE(g::mcChildViews.size(), 2);
    QCOMPARE(g::mcIcons[0]->MCINDEX, 0);
    QCOMPARE(g::mcIcons[1]->MCINDEX, 1);
    QCOMPARE(g::mcIcons[1]->MCSBITS, 1); // a fresh record's, not the reader's preset
}

void SettingsTest::listsStayParallelThroughStorage()
{
    for (const char* name : {"placeholder", "a", "b", "c"}) {
        g::mcIcons.append(fresh());
        g::mcIcons.last()->MCNAME = name;
    }
    g::saveAllMcSettings();
    cleanup();
    g::readAllMcSettings();
    QCOMPARE(g::mcIcons.size(), 4);
    QCOMPARE(g::mcChildViews.size(), 4);
    QCOMPARE(g::mcIcons[0]->MCNAME, QStringLiteral("CNC1")); // the placeholder is not stored
    QCOMPARE(g::mcIcons[3]->MCNAME, QStringLiteral("c"));

    g::mcIcons.resize(1); // every machine deleted is not the first run
    g::saveAllMcSettings();
    cleanup();
    g::readAllMcSettings();
    QCOMPARE(g::mcIcons.size(), 1);
}

QTEST_GUILESS_MAIN(SettingsTest)
#include "config_settings.moc"
