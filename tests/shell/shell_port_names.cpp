// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/g.h"
#include "shell/viewSetup.h"
#include "support/Computer.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>

/// What the setup form says of a port that may be another adapter's after a restart, and what it offers.
class PortNamesTest : public QObject
{
    Q_OBJECT
    template <typename Widget> Widget* find(const char* name) { return form_->findChild<Widget*>(name); }
    QString hint() { return find<QLabel>("lblPortHint")->text(); }
    bool isOffered() { return find<QPushButton>("btnLastingName")->isVisible(); }

    void open(const QString& path, const QString& othersPath = {})
    {
        computer_.plug({{"ttyUSB0", "FTDI", "A1", "usb-FTDI_A1", "pci-1"}, {"ttyS0", "", "", "", ""}});
        machine_ = std::make_shared<MachineRecord>();
        machine_->MCPORT = path;
        auto other = std::make_shared<MachineRecord>();
        other->MCNAME = "Lathe";
        other->MCPORT = othersPath;
        g::mcIcons = {std::make_shared<MachineRecord>(), machine_, other};
        form_ = std::make_unique<viewSetup>(nullptr, computer_.sources());
        form_->initialize(1);
        form_->show();
    }

    Computer computer_;
    std::unique_ptr<viewSetup> form_;
    std::shared_ptr<MachineRecord> machine_;

private Q_SLOTS:
    void cleanup()
    {
        form_.reset();
        g::mcIcons.clear();
    }

    void hintSaysWhichAdapterItIs_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("others");
        QTest::addColumn<QString>("hint"); // with the computer's folder as %1
        QTest::addColumn<bool>("isOffered");
        const QString adapter("FTDI UART no. A1"), now(", now %1/dev/ttyUSB0");
        QTest::newRow("bare") << "dev/ttyUSB0"
                              << "" << adapter << true;
        QTest::newRow("lasting") << "by-id/usb-FTDI_A1"
                                 << "" << adapter + now << false;
        QTest::newRow("built in") << "dev/ttyS0"
                                  << ""
                                  << "" << false;
        QTest::newRow("gone") << "dev/ttyUSB5"
                              << ""
                              << "This port is not present now." << false;
        QTest::newRow("another machine has it by another name")
            << "dev/ttyUSB0"
            << "by-id/usb-FTDI_A1" << adapter + "\nLathe has the same port by another name, %1/by-id/usb-FTDI_A1."
            << true;
        QTest::newRow("another machine has another") << "dev/ttyUSB0"
                                                     << "dev/ttyS0" << adapter << true;
    }

    void hintSaysWhichAdapterItIs()
    {
        QFETCH(QString, path);
        QFETCH(QString, others);
        QFETCH(QString, hint);
        open(computer_.file(path), others.isEmpty() ? QString() : computer_.file(others));
        QCOMPARE(this->hint(), hint.replace("%1", computer_.file(QString())));
        QTEST(isOffered(), "isOffered");
    }

    void oneClickTakesTheLastingName()
    {
        const QString bare = computer_.file("dev/ttyUSB0"), lasting = computer_.file("by-id/usb-FTDI_A1");
        open(bare);
        QTest::mouseClick(find<QPushButton>("btnLastingName"), Qt::LeftButton);
        QVERIFY(form_->isChanged() && !isOffered());
        QCOMPARE(machine_->MCPORT, bare); // as any edit
        QTest::mouseClick(find<QPushButton>("btnRevert"), Qt::LeftButton);
        QCOMPARE(find<QComboBox>("cboPorts")->currentText(), bare);
        QVERIFY(!form_->isChanged() && isOffered());
        QTest::mouseClick(find<QPushButton>("btnLastingName"), Qt::LeftButton);
        machine_->portNow = "/dev/ttyUSB9"; // of the old one
        QTest::mouseClick(find<QPushButton>("btnSave"), Qt::LeftButton);
        QCOMPARE(machine_->MCPORT, lasting);
        QCOMPARE(machine_->port(), lasting);
    }
};

QTEST_MAIN(PortNamesTest)
#include "shell_port_names.moc"
