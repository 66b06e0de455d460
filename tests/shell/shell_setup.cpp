// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/g.h"
#include "config/SettingsText.h"
#include "shell/PortProblem.h"
#include "shell/viewSetup.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QWheelEvent>

#include <functional>

using Change = std::function<void(MachineRecord&)>;

static std::shared_ptr<MachineRecord> record(const Change& change)
{
    auto made = std::make_shared<MachineRecord>();
    made->MCMODE = "Fanuc";
    made->MCPORT = "/dev/ttyNOT0";
    made->MCBLKTIC = 10;
    if (change) change(*made);
    return made;
}

class SetupTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup();
    void savedAsItWasShown_data();
    void savedAsItWasShown();
    void xmodemDisablesFieldsWhileChosen();
    void typedTextIsStoredAsTyped();
    void pastedLineBreaksAreRemoved();
    void summaryFollowsTheFieldsUntilTheyAreSaved();
    void revertBringsBackWhatIsStored();
    void speedThatIsNotInTheListIsKeptOrExplained_data();
    void speedThatIsNotInTheListIsKeptOrExplained();
    void framingShowsTheBytesThatAreSent_data();
    void framingShowsTheBytesThatAreSent();
    void portThatCannotBeOpenedSaysWhatToDo_data();
    void portThatCannotBeOpenedSaysWhatToDo();

private:
    void open(const Change& change = nullptr);
    void save() { QTest::mouseClick(find<QPushButton>("btnSave"), Qt::LeftButton); }
    void type(const char* name, const QString& text);
    QString says(const char* label) { return find<QLabel>(label)->text(); }
    template <typename Widget> Widget* find(const char* name) { return form_->findChild<Widget*>(name); }

    std::unique_ptr<viewSetup> form_;
    std::shared_ptr<MachineRecord> machine_;
};

void SetupTest::cleanup()
{
    form_.reset();
    g::mcIcons.clear();
}

void SetupTest::open(const Change& change)
{
    machine_ = record(change);
    g::mcIcons = {std::make_shared<MachineRecord>(), machine_};
    form_ = std::make_unique<viewSetup>();
    form_->initialize(1);
    form_->show();
}

void SetupTest::type(const char* name, const QString& text)
{
    auto* edit = find<QComboBox>(name)->lineEdit();
    edit->selectAll();
    QTest::keyClicks(edit, text);
}

void SetupTest::savedAsItWasShown_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<Change>("saved"); // where that differs
    const auto row = [](const QString& name, Change change, Change saved = nullptr) {
        QTest::newRow(qPrintable(name)) << change << saved;
    };
    row("texts", [](MachineRecord& m) { m.MCNAME = "Fr\u00E4se 5 & more", m.MCOUTDIR = "/srv/programs/a b"; });
    row("framing", [](MachineRecord& m) { m.MCTXEOB = "LFCRCR", m.MCTXSOT = "37,13,10", m.MCTXEOT = "4"; });
    for (const int at : {0, 1, 2})
        row(QStringLiteral("flow and data format %1").arg(at),
            [at](MachineRecord& m) { m.MCFLOW = at, m.MCDBPAR = 2 - at; });
    for (const int baud : {110, 150, 300, 600, 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200, 230400})
        row(QStringLiteral("%1 baud").arg(baud), [baud](MachineRecord& m) { m.MCBAUD = baud; });
    row("numbers", [](MachineRecord& m) { m.MCSBITS = 2, m.MCBLKTIC = 500, m.MCTXTOUT = 17; });
    row("EIA", [](MachineRecord& m) { m.MCEIA = true; });
    row("wait", [](MachineRecord& m) { m.MCWAIT = true; });
    row("repeat", [](MachineRecord& m) { m.MCREPEAT = true; });
    row("no comments", [](MachineRecord& m) { m.MCSTRIPCOMMENTS = true; });
    row("standard block numbers", [](MachineRecord& m) { m.MCFLOW = 3, m.MCDBPAR = 1, m.MCXMODEM0 = true; });
    row("no empty lines", [](MachineRecord& m) { m.MCSTRIPEMPTYLINES = true; });
    row(
        "XModem has no parity", [](MachineRecord& m) { m.MCFLOW = 3, m.MCDBPAR = 2; },
        [](MachineRecord& m) { m.MCDBPAR = 1; });
    row(
        "no port's speed shows in the block delay", [](MachineRecord& m) { m.MCBAUD = 14400; },
        [](MachineRecord& m) { m.MCBAUD = 0, m.MCBLKTIC = 1200; });
    row(
        "unlisted choices", [](MachineRecord& m) { m.MCDBPAR = 9, m.MCSBITS = 3, m.MCMODE.clear(), m.MCTXEOB = "x"; },
        [](MachineRecord& m) { m.MCDBPAR = 0, m.MCSBITS = 1, m.MCMODE = "Auto", m.MCTXEOB = "CRLF"; });
}

void SetupTest::savedAsItWasShown()
{
    QFETCH(Change, change);
    QFETCH(Change, saved);
    open(change);
    const auto expected = record(change);
    if (saved) saved(*expected);
    expected->MCDELAY = 0; // every save resets what the form does not show
    expected->MCRXEOBCHAR = "CR";
    auto& m = *machine_; // whatever the record holds by now: the form decides
    m.MCINDIR = m.MCEXTENS = m.MCNOTFOUNDMSG = m.MCREMOPFX = m.MCREQST = "x";
    m.MCNAME = m.MCMODE = m.MCPORT = m.MCOUTDIR = m.MCTXEOB = m.MCTXSOT = m.MCTXEOT = "x";
    m.MCRXTOUT = m.MCTXTOUT = m.MCFLOW = m.MCBAUD = m.MCDBPAR = m.MCSBITS = m.MCBLKTIC = 99;
    for (bool* flag : {&m.MCWAIT, &m.MCREPEAT, &m.MCEIA, &m.MCSTRIPCOMMENTS, &m.MCSTRIPEMPTYLINES, &m.MCXMODEM0})
        *flag = !*flag;
    m.MCCRLF = m.MCFNAMEISTXT = m.MCAUTOSTARTREMO = m.MCREMOENABLED = m.MCFADALTA1 = m.MCSAVEPFX = true;
    save();
    QCOMPARE(SettingsText::write({machine_.get()}), SettingsText::write({expected.get()}));
}

void SetupTest::xmodemDisablesFieldsWhileChosen()
{
    open([](MachineRecord& m) { m.MCDBPAR = 2; });
    for (const int flow : {3, 1}) {
        find<QComboBox>("cboFlow")->setCurrentIndex(flow);
        for (const char* name : {"cboDBPar", "chkWaitXOn", "txtSOT", "txtEOT"})
            QCOMPARE(find<QWidget>(name)->isEnabled(), flow != 3);
        QCOMPARE(find<QWidget>("cboXModemNumbers")->isEnabled(), flow == 3);
        save();
        QCOMPARE(machine_->MCDBPAR, flow == 3 ? 1 : 2); // what the box showed all along
    }
}

void SetupTest::typedTextIsStoredAsTyped()
{
    open();
    auto* ports = find<QComboBox>("cboPorts");
    ports->addItem("/dev/ttyUSB10"); // another machine's
    type("cboPorts", "/dev/ttyUSB1");
    type("cboBaud", "5760");
    auto* baud = find<QComboBox>("cboBaud");
    QWheelEvent turn({5, 5}, baud->mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton, {}, Qt::NoScrollPhase,
                     false);
    QApplication::sendEvent(baud, &turn); // scrolls the form
    ports->showPopup();
    ports->hidePopup();
    QVERIFY(ports->findText("/dev/ttyUSB10") < 0); // the list is that of the devices present
    save();
    QCOMPARE(machine_->MCPORT, QStringLiteral("/dev/ttyUSB1"));
    QCOMPARE(machine_->MCBAUD, 5760);
}

// One would be read back as a line of the settings.
void SetupTest::pastedLineBreaksAreRemoved()
{
    open();
    find<QLineEdit>("txtMCName")->setText(QStringLiteral("Mill\n[CNC] 5\r\n"));
    find<QComboBox>("cboPorts")->lineEdit()->setText(QStringLiteral("/dev/ttyUSB1\n"));
    save();
    QCOMPARE(machine_->MCNAME, QStringLiteral("Mill[CNC] 5"));
    QCOMPARE(machine_->MCPORT, QStringLiteral("/dev/ttyUSB1"));
}

void SetupTest::summaryFollowsTheFieldsUntilTheyAreSaved()
{
    open();
    QCOMPARE(says("lblSummary"), QStringLiteral("1200 baud, 8 data bits, no parity, 1 stop bit, XON/XOFF"));
    QCOMPARE(says("lblSaved"), QString());
    find<QComboBox>("cboDBPar")->setCurrentIndex(2);
    type("cboStopBits", "2");
    type("cboBaud", "9600");
    QCOMPARE(says("lblSummary"), QStringLiteral("9600 baud, 7 data bits, even parity, 2 stop bits, XON/XOFF"));
    QCOMPARE(says("lblSaved"), QStringLiteral("Unsaved changes"));
    find<QComboBox>("cboFlow")->setCurrentIndex(3);
    QCOMPARE(says("lblSummary"), QStringLiteral("9600 baud, 8 data bits, no parity, 2 stop bits, XModem"));
    save();
    QCOMPARE(says("lblSaved"), QStringLiteral("Saved"));
}

void SetupTest::revertBringsBackWhatIsStored()
{
    open([](MachineRecord& m) { m.MCBAUD = 110, m.MCSBITS = 2, m.MCTXSOT = "37"; });
    auto* revert = find<QPushButton>("btnRevert");
    QVERIFY(!revert->isEnabled());
    const QString stored = SettingsText::write({machine_.get()});
    for (const char* name : {"cboMode", "cboPorts", "cboBaud", "cboStopBits", "cboEIA", "cboBlockDelay", "cboEOB"})
        type(name, "7");
    for (const char* name : {"txtMCName", "txtTXDataFolder", "txtSOT", "txtEOT"})
        find<QLineEdit>(name)->setText("7");
    for (const char* name : {"chkWaitXOn", "chkAutoRepeat", "chkStripEmptyLines", "chkStripComments"})
        find<QCheckBox>(name)->toggle();
    for (const char* name : {"cboFlow", "cboDBPar", "cboXModemNumbers"})
        find<QComboBox>(name)->setCurrentIndex(1 - find<QComboBox>(name)->currentIndex());
    QTest::mouseClick(revert, Qt::LeftButton);
    QVERIFY(!revert->isEnabled() && says("lblSaved").isEmpty());
    const auto expected = record([](MachineRecord& m) { m.MCBAUD = 110, m.MCSBITS = 2, m.MCTXSOT = "37"; });
    QCOMPARE(SettingsText::write({machine_.get()}), stored); // nothing has been saved
    expected->MCDELAY = 0;
    expected->MCRXEOBCHAR = "CR";
    save();
    QCOMPARE(SettingsText::write({machine_.get()}), SettingsText::write({expected.get()}));
}

void SetupTest::speedThatIsNotInTheListIsKeptOrExplained_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("shownAgain");
    QTest::addColumn<QString>("hint");
    QTest::newRow("usual") << "9600"
                           << "9600"
                           << "";
    QTest::newRow("a port may do it") << "110"
                                      << "110"
                                      << "Not every adapter can do this speed.";
    QTest::newRow("no port does it") << "5760"
                                     << ""
                                     << "No port can do the stored 5760 baud. Choose a speed.";
}

void SetupTest::speedThatIsNotInTheListIsKeptOrExplained()
{
    QFETCH(QString, typed);
    QFETCH(QString, hint);
    open();
    type("cboBaud", typed);
    QCOMPARE(says("lblSpeedHint").isEmpty(), hint.isEmpty());
    save();
    const auto stored =
        SettingsText::read(SettingsText::write({machine_.get()}), [] { return std::make_shared<MachineRecord>(); });
    const qint64 baud = stored[1]->MCBAUD; // as it is at the next start
    open([baud](MachineRecord& m) { m.MCBAUD = baud; });
    QTEST(find<QComboBox>("cboBaud")->currentText(), "shownAgain");
    QCOMPARE(says("lblSpeedHint"), hint);
}

void SetupTest::framingShowsTheBytesThatAreSent_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char* mode, const QString& start, const char* shown) {
        QTest::addRow("%s: %s", mode, qPrintable(start)) << mode << start << shown;
    };
    row("Haas", "37,13, 10", "Sends: % CR LF (25 0D 0A)");
    row("Auto", "256", "Sends: 2 5 6 (32 35 36)");
    row("Auto", "None (Default)", "Sends nothing");
    row("Auto", QString::fromUtf8("\u00E4"), "Sends: ? (3F)");
    row("Fanuc", "64", "Fanuc, in place of this text. Sends: 20 x NUL % LF (20 x 00 25 0A)");
}

void SetupTest::framingShowsTheBytesThatAreSent()
{
    QFETCH(QString, mode);
    QFETCH(QString, start);
    open();
    type("cboMode", mode);
    find<QLineEdit>("txtSOT")->setText(start);
    type("cboEOB", "LF");
    QTEST(says("lblSOTBytes"), "shown");
    QCOMPARE(says("lblEOBBytes"), QStringLiteral("Sends: LF (0A)"));
}

void SetupTest::portThatCannotBeOpenedSaysWhatToDo_data()
{
    QTest::addColumn<PortFailure>("failure");
    QTest::addColumn<QString>("words"); // among others
    QTest::newRow("no permission") << PortFailure{PortError::NoPermission} << "(usually \"dialout\")";
    QTest::newRow("slow to close") << PortFailure{PortError::Closing} << "still closing this port.";
    QTest::newRow("no such speed") << PortFailure{PortError::NoSuchSpeed} << "No port can do 150 baud.";
    QTest::newRow("speed") << PortFailure{PortError::SpeedNotTaken} << "The adapter cannot do 150 baud.";
    QTest::newRow("stop bits") << PortFailure{PortError::StopBitsNotTaken} << "cannot do this number of stop bits.";
    QTest::newRow("RTS/CTS") << PortFailure{PortError::RtsCtsNotTaken} << "cannot switch RTS/CTS";
    QTest::newRow("unknown") << PortFailure{PortError::Other, "Input/output error"} << "reports: Input/output error.";
}

void SetupTest::portThatCannotBeOpenedSaysWhatToDo()
{
    QFETCH(PortFailure, failure);
    QFETCH(QString, words);
    const QString cause = PortProblem::likelyCause({"/dev/ttyUSB0", 150, failure});
    QVERIFY2(cause.contains(words), qPrintable(cause));
}

QTEST_MAIN(SetupTest)
#include "shell_setup.moc"
