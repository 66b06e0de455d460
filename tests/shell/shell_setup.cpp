// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/g.h"
#include "platform/NotificationCenter.h"
#include "shell/viewSetup.h"
#include "support/PtyPair.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QWheelEvent>

#include <functional>

namespace
{
using Record = MachineRecord;
using Change = std::function<void(Record&)>;

QString dump(const Record& m)
{
    const auto flag = [](bool set) { return set ? u'1' : u'0'; };
    return QStringList{m.MCNAME,
                       m.MCMODE,
                       m.MCPORT,
                       m.MCINDIR,
                       m.MCOUTDIR,
                       QString::number(m.MCFLOW),
                       QString::number(m.MCDELAY),
                       QString::number(m.MCBLKTIC),
                       QString::number(m.MCBAUD),
                       QString::number(m.MCDBPAR),
                       QString::number(m.MCSBITS),
                       m.MCTXEOB,
                       m.MCTXSOT,
                       m.MCTXEOT,
                       m.MCRXEOBCHAR,
                       m.MCREQST,
                       m.MCEXTENS,
                       QString::number(m.MCRXTOUT),
                       QString::number(m.MCTXTOUT),
                       m.MCNOTFOUNDMSG,
                       m.MCREMOPFX,
                       QString() + flag(m.MCWAIT) + flag(m.MCREPEAT) + flag(m.MCCRLF) + flag(m.MCEIA) +
                           flag(m.MCSTRIPCOMMENTS) + flag(m.MCSTRIPEMPTYLINES) + flag(m.MCFNAMEISTXT) +
                           flag(m.MCAUTOSTARTREMO) + flag(m.MCREMOENABLED) + flag(m.MCFADALTA1) + flag(m.MCSAVEPFX)}
        .join(u'|');
}

// What every save leaves behind, whatever was there before.
void resetByEverySave(Record& m)
{
    m.MCINDIR = m.MCEXTENS = m.MCNOTFOUNDMSG = m.MCREMOPFX = QString();
    m.MCDELAY = 0;
    m.MCCRLF = m.MCFNAMEISTXT = m.MCAUTOSTARTREMO = m.MCREMOENABLED = m.MCFADALTA1 = m.MCSAVEPFX = false;
    m.MCRXEOBCHAR = QStringLiteral("CR");
    m.MCREQST = QStringLiteral("SEND");
    m.MCRXTOUT = 3;
}

std::shared_ptr<Record> record(const Change& change = [](Record&) {})
{
    auto made = std::make_shared<Record>();
    made->MCINDEX = 1;
    made->MCMODE = QStringLiteral("Fanuc");
    made->MCPORT = QStringLiteral("/dev/ttyNOT0");
    made->MCBLKTIC = 10;
    made->MCTXSOT = made->MCTXEOT = QString();
    change(*made);
    return made;
}
} // namespace

class SetupTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup();
    void everyFieldComesBackAsItWas_data();
    void everyFieldComesBackAsItWas();
    void saveResetsWhatTheFormDoesNotShow();
    void saveAnnouncesTheMachine();
    void unlistedBaudShowsInTheBlockDelay();
    void unlistedValuesFallBackOrStay();
    void xmodemDisablesButStoresTheSame();
    void typedTextIsStoredAsTyped();
    void pastedLineBreaksAreLeftOut();
    void openingThePortListKeepsWhatWasTyped();
    void wheelOverTheFormChangesNothing();
    void summaryFollowsTheFields();
    void framingShowsTheBytesThatAreSent_data();
    void framingShowsTheBytesThatAreSent();
    void unsavedChangesAreSeen();

private:
    void open(const Change& change = [](Record&) {});
    Record& stored() { return *g::mcIcons[1]; }
    void save() { QTest::mouseClick(find<QPushButton>("btnSave"), Qt::LeftButton); }
    void type(const char* name, const QString& text);
    QString says(const char* label) { return find<QLabel>(label)->text(); }
    template <typename Widget> Widget* find(const char* name)
    {
        return form_->findChild<Widget*>(QString::fromLatin1(name));
    }

    std::unique_ptr<viewSetup> form_;
};

void SetupTest::cleanup()
{
    form_.reset();
    g::mcIcons.clear();
}

void SetupTest::open(const Change& change)
{
    g::mcIcons = {std::make_shared<Record>(), record(change)};
    form_ = std::make_unique<viewSetup>();
    form_->initialize(1);
    form_->show();
}

void SetupTest::type(const char* name, const QString& text)
{
    auto* box = find<QComboBox>(name);
    auto* edit = box ? box->lineEdit() : find<QLineEdit>(name);
    edit->selectAll();
    QTest::keyClicks(edit, text);
}

void SetupTest::everyFieldComesBackAsItWas_data()
{
    QTest::addColumn<Change>("change");
    const auto row = [](const char* name, Change change) { QTest::newRow(name) << change; };
    row("nothing special", [](Record&) {});
    row("name", [](Record& m) { m.MCNAME = QStringLiteral("Fr\u00E4se 5 & more"); });
    row("empty name", [](Record& m) { m.MCNAME.clear(); });
    row("mode of another kind", [](Record& m) { m.MCMODE = QStringLiteral("Heidenhain"); });
    row("mode in other letters is not the listed one", [](Record& m) { m.MCMODE = QStringLiteral("fanuc"); });
    row("folder", [](Record& m) { m.MCOUTDIR = QStringLiteral("/srv/programs/a b"); });
    row("absent port", [](Record& m) { m.MCPORT = QStringLiteral("/dev/ttyUSB77"); });
    row("fresh port", [](Record& m) { m.MCPORT = QStringLiteral("1"); });
    for (const int flow : {0, 1, 2})
        row(qPrintable(QStringLiteral("flow %1").arg(flow)), [flow](Record& m) { m.MCFLOW = flow; });
    for (const int format : {0, 1, 2})
        row(qPrintable(QStringLiteral("data format %1").arg(format)), [format](Record& m) { m.MCDBPAR = format; });
    for (const int baud : {150, 300, 600, 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200})
        row(qPrintable(QStringLiteral("%1 baud").arg(baud)), [baud](Record& m) { m.MCBAUD = baud; });
    row("two stop bits", [](Record& m) { m.MCSBITS = 2; });
    row("EIA", [](Record& m) { m.MCEIA = true; });
    row("wait", [](Record& m) { m.MCWAIT = true; });
    row("repeat", [](Record& m) { m.MCREPEAT = true; });
    row("no comments", [](Record& m) { m.MCSTRIPCOMMENTS = true; });
    row("no empty lines", [](Record& m) { m.MCSTRIPEMPTYLINES = true; });
    row("listed block delay", [](Record& m) { m.MCBLKTIC = 500; });
    row("unlisted time-out", [](Record& m) { m.MCTXTOUT = 17; });
    row("end of block", [](Record& m) { m.MCTXEOB = QStringLiteral("LFCRCR"); });
    row("start and end", [](Record& m) {
        m.MCTXSOT = QStringLiteral("37,13,10");
        m.MCTXEOT = QStringLiteral("None (Default)");
    });
}

void SetupTest::everyFieldComesBackAsItWas()
{
    QFETCH(Change, change);
    open(change);
    save();
    const auto expected = record(change);
    resetByEverySave(*expected);
    QCOMPARE(dump(stored()), dump(*expected));
}

void SetupTest::saveResetsWhatTheFormDoesNotShow()
{
    open([](Record& m) {
        m.MCINDIR = m.MCEXTENS = m.MCNOTFOUNDMSG = m.MCREMOPFX = QStringLiteral("x");
        m.MCRXEOBCHAR = m.MCREQST = QStringLiteral("x");
        m.MCDELAY = m.MCRXTOUT = 99;
        m.MCCRLF = m.MCFNAMEISTXT = m.MCAUTOSTARTREMO = m.MCREMOENABLED = true;
        m.MCFADALTA1 = m.MCSAVEPFX = true;
    });
    save();
    const auto expected = record();
    resetByEverySave(*expected);
    QCOMPARE(dump(stored()), dump(*expected));
}

void SetupTest::saveAnnouncesTheMachine()
{
    open();
    QList<int> announced;
    auto& nc = NotificationCenter::defaultCenter();
    nc.addObserver(this, QStringLiteral("setupSaveButton_Click"), nullptr, [&](const Notification& n) {
        QVERIFY(!n.object);
        announced.append(n.userInfo.value(QStringLiteral("MC")).toInt());
    });
    save();
    nc.removeObserver(this);
    QCOMPARE(announced, QList<int>{1});
}

void SetupTest::unlistedBaudShowsInTheBlockDelay()
{
    open([](Record& m) {
        m.MCBAUD = 14400;
        m.MCBLKTIC = 50;
    });
    QCOMPARE(find<QComboBox>("cboBaud")->currentText(), QStringLiteral("150")); // as the form file has it
    QCOMPARE(find<QComboBox>("cboBlockDelay")->currentText(), QStringLiteral("1200"));
    save();
    QCOMPARE(stored().MCBAUD, 150);
    QCOMPARE(stored().MCBLKTIC, 1200);
}

void SetupTest::unlistedValuesFallBackOrStay()
{
    open([](Record& m) {
        m.MCMODE.clear();
        m.MCBLKTIC = 7;
        m.MCDBPAR = 9;
        m.MCSBITS = 3;
        m.MCTXEOB = QStringLiteral("Default");
    });
    QCOMPARE(find<QComboBox>("cboMode")->currentText(), QStringLiteral("Auto"));
    QCOMPARE(find<QComboBox>("cboPorts")->itemText(0), stored().MCPORT);
    QCOMPARE(find<QComboBox>("cboBlockDelay")->currentIndex(), 2);
    QCOMPARE(find<QComboBox>("cboDBPar")->currentIndex(), 0);
    QCOMPARE(find<QComboBox>("cboStopBits")->currentText(), QStringLiteral("1"));
    QCOMPARE(find<QComboBox>("cboEOB")->currentText(), QStringLiteral("CRLF"));
    // Text that is no number becomes what parsing makes of it, and only "EIA" itself is EIA.
    type("cboBaud", QStringLiteral("fast"));
    type("cboEIA", QStringLiteral("eia"));
    save();
    QCOMPARE(stored().MCBAUD, 0);
    QVERIFY(!stored().MCEIA);
}

void SetupTest::xmodemDisablesButStoresTheSame()
{
    const Change framed = [](Record& m) {
        m.MCDBPAR = 2;
        m.MCWAIT = true;
        m.MCTXSOT = QStringLiteral("%,13");
        m.MCTXEOT = QStringLiteral("37");
    };
    open(framed);
    find<QComboBox>("cboFlow")->setCurrentIndex(3);
    for (const char* name : {"cboDBPar", "chkWaitXOn", "txtSOT", "txtEOT"}) {
        QVERIFY2(!find<QWidget>(name)->isEnabled(), name);
        QVERIFY2(find<QWidget>(name)->toolTip().contains(QLatin1String("XModem")), name);
    }
    save();
    const auto expected = record(framed);
    resetByEverySave(*expected);
    expected->MCFLOW = 3;
    expected->MCDBPAR = 1; // always, with XModem
    QCOMPARE(dump(stored()), dump(*expected));

    find<QComboBox>("cboFlow")->setCurrentIndex(1);
    QVERIFY(find<QWidget>("cboDBPar")->isEnabled());
    QVERIFY(!find<QWidget>("cboDBPar")->toolTip().contains(QLatin1String("XModem")));
    save();
    QCOMPARE(stored().MCDBPAR, 2); // what the box has shown all the time
}

void SetupTest::typedTextIsStoredAsTyped()
{
    open();
    find<QComboBox>("cboPorts")->addItem(QStringLiteral("/dev/ttyUSB10"));
    type("cboPorts", QStringLiteral("/dev/ttyUSB1"));
    type("cboBaud", QStringLiteral("5760"));
    type("cboMode", QStringLiteral("Fan"));
    save();
    QCOMPARE(stored().MCPORT, QStringLiteral("/dev/ttyUSB1"));
    QCOMPARE(stored().MCBAUD, 5760);
    QCOMPARE(stored().MCMODE, QStringLiteral("Fan"));
}

void SetupTest::pastedLineBreaksAreLeftOut()
{
    open();
    find<QLineEdit>("txtMCName")->setText(QStringLiteral("Mill\n[CNC] 5\r\n"));
    find<QComboBox>("cboPorts")->lineEdit()->setText(QStringLiteral("/dev/ttyUSB1\n"));
    save();
    QCOMPARE(stored().MCNAME, QStringLiteral("Mill[CNC] 5"));
    QCOMPARE(stored().MCPORT, QStringLiteral("/dev/ttyUSB1"));
}

void SetupTest::openingThePortListKeepsWhatWasTyped()
{
    open();
    auto* ports = find<QComboBox>("cboPorts");
    ports->addItem(QStringLiteral("/dev/ttyGONE"));
    type("cboPorts", QStringLiteral("/dev/mine"));
    ports->showPopup();
    ports->hidePopup();
    QCOMPARE(ports->currentText(), QStringLiteral("/dev/mine"));
    QVERIFY(ports->findText(QStringLiteral("/dev/ttyGONE")) < 0); // the list is that of the devices present
    save();
    QCOMPARE(stored().MCPORT, QStringLiteral("/dev/mine"));
}

void SetupTest::wheelOverTheFormChangesNothing()
{
    open();
    auto* baud = find<QComboBox>("cboBaud");
    baud->setFocus();
    QWheelEvent turn(QPointF(5, 5), baud->mapToGlobal(QPointF(5, 5)), {}, QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                     Qt::NoScrollPhase, false);
    QApplication::sendEvent(baud, &turn);
    QCOMPARE(baud->currentText(), QStringLiteral("1200"));
}

void SetupTest::summaryFollowsTheFields()
{
    open();
    QCOMPARE(says("lblSummary"), QStringLiteral("1200 baud, 8 data bits, no parity, 1 stop bit, XON/XOFF"));
    find<QComboBox>("cboDBPar")->setCurrentIndex(2);
    type("cboStopBits", QStringLiteral("2"));
    type("cboBaud", QStringLiteral("14400"));
    QVERIFY(
        says("lblSummary").startsWith(QLatin1String("14400 baud, 7 data bits, even parity, 2 stop bits, XON/XOFF\n")));
    type("cboBaud", QStringLiteral("9600"));
    find<QComboBox>("cboFlow")->setCurrentIndex(3);
    QCOMPARE(says("lblSummary"), QStringLiteral("9600 baud, 8 data bits, no parity, 2 stop bits, XModem"));
    QVERIFY(says("lblPortHint").contains(QLatin1String("not present")));
    PtyPair line;
    type("cboPorts", line.devicePath());
    QVERIFY(!says("lblPortHint").contains(QLatin1String("not present")));
}

void SetupTest::framingShowsTheBytesThatAreSent_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("eob");
    QTest::addColumn<QString>("shownStart");
    QTest::addColumn<QString>("shownEob");
    const QString crlf = QStringLiteral("Sends: CR LF (0D 0A)");
    QTest::newRow("codes") << "Auto"
                           << "37,13,10"
                           << "CRLF"
                           << "Sends: % CR LF (25 0D 0A)" << crlf;
    QTest::newRow("text and codes") << "Haas"
                                    << "%, 10"
                                    << "CR"
                                    << "Sends: % LF (25 0A)"
                                    << "Sends: CR (0D)";
    QTest::newRow("not a byte: sent as written") << "Auto"
                                                 << "256"
                                                 << "LF"
                                                 << "Sends: 2 5 6 (32 35 36)"
                                                 << "Sends: LF (0A)";
    QTest::newRow("nothing") << "Auto"
                             << ""
                             << "LF"
                             << "Sends nothing"
                             << "Sends: LF (0A)";
    QTest::newRow("default") << "Auto"
                             << "None (Default)"
                             << "Default"
                             << "Sends nothing" << crlf;
    QTest::newRow("beyond ASCII") << "Auto"
                                  << "\u00E4"
                                  << "LF"
                                  << "Sends: ? (3F)"
                                  << "Sends: LF (0A)";
    QTest::newRow("Fanuc frames itself") << "Fanuc"
                                         << "64"
                                         << "LF"
                                         << "Fanuc, in place of this text. Sends: 20 x NUL % LF (20 x 00 25 0A)"
                                         << "Sends: LF (0A)";
}

void SetupTest::framingShowsTheBytesThatAreSent()
{
    QFETCH(QString, mode);
    QFETCH(QString, start);
    QFETCH(QString, eob);
    open();
    type("cboMode", mode);
    find<QLineEdit>("txtSOT")->setText(start);
    type("cboEOB", eob);
    QTEST(says("lblSOTBytes"), "shownStart");
    QTEST(says("lblEOBBytes"), "shownEob");
}

void SetupTest::unsavedChangesAreSeen()
{
    open();
    QCOMPARE(says("lblSaved"), QString());
    find<QCheckBox>("chkAutoRepeat")->click();
    QCOMPARE(says("lblSaved"), QStringLiteral("Unsaved changes"));
    find<QCheckBox>("chkAutoRepeat")->click();
    QCOMPARE(says("lblSaved"), QString());
    find<QComboBox>("cboFlow")->setCurrentIndex(2);
    QCOMPARE(says("lblSaved"), QStringLiteral("Unsaved changes"));
    save();
    QCOMPARE(says("lblSaved"), QStringLiteral("Saved"));
    type("txtMCName", QStringLiteral("X"));
    QCOMPARE(says("lblSaved"), QStringLiteral("Unsaved changes"));
}

QTEST_MAIN(SetupTest)
#include "shell_setup.moc"
