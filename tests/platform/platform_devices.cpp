// SPDX-License-Identifier: GPL-3.0-or-later
// Which names a serial device has, and whether an adapter that comes back is the same one.
#include "platform/AdapterSearch.h"
#include "support/Computer.h"

#include <QTest>

namespace
{
const Plugged mill{"ttyUSB0", "FTDI", "A1", "usb-FTDI_A1-port0", "pci-usb-1"};
const Plugged lathe{"ttyUSB1", "FTDI", "B7", "usb-FTDI_B7-port0", "pci-usb-2"};

Plugged as(Plugged adapter, const QString& name, const QString& path)
{
    adapter.name = name;
    adapter.path = path;
    return adapter;
}

} // namespace

using Kind = AdapterSearch::Found::Kind;
Q_DECLARE_METATYPE(Kind)

class DevicesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void lastingNamesComeFirst_data()
    {
        QTest::addColumn<Plugs>("plugs");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("none") << Plugs{} << QStringList{};
        QTest::newRow("built in") << Plugs{{"ttyS0", "", "", "", ""}} << QStringList{"dev/ttyS0"};
        QTest::newRow("two, in the system's order")
            << Plugs{lathe, mill}
            << QStringList{"by-id/usb-FTDI_B7-port0", "by-id/usb-FTDI_A1-port0", "dev/ttyUSB1", "dev/ttyUSB0"};
        QTest::newRow("not in the folders") << Plugs{{"ttyUSB0", "FTDI", "A1", "", ""}} << QStringList{"dev/ttyUSB0"};
        QTest::newRow("without a number, the next one would have the same name")
            << Plugs{{"ttyUSB0", "QinHeng", "", "usb-1a86_Serial-port0", "pci-usb-1"}}
            << QStringList{"by-path/pci-usb-1", "dev/ttyUSB0"};
        QTest::newRow("one number for two: the name is that of the last")
            << Plugs{{"ttyUSB0", "CP2102", "0001", "", "pci-usb-1"},
                     {"ttyUSB1", "CP2102", "0001", "usb-CP2102_0001", "pci-usb-2"}}
            << QStringList{"by-path/pci-usb-1", "by-path/pci-usb-2", "dev/ttyUSB0", "dev/ttyUSB1"};
        QTest::newRow("one number for two connectors, each with its name")
            << Plugs{{"ttyUSB0", "Quad", "Q4", "usb-Q4-if00", "pci-usb-1"},
                     {"ttyUSB1", "Quad", "Q4", "usb-Q4-if01", "pci-usb-2"}}
            << QStringList{"by-id/usb-Q4-if00", "by-id/usb-Q4-if01", "dev/ttyUSB0", "dev/ttyUSB1"};
    }

    void lastingNamesComeFirst()
    {
        QFETCH(Plugs, plugs);
        QFETCH(QStringList, names);
        Computer computer;
        computer.plug(plugs);
        QStringList bare, expected;
        for (const auto& plug : plugs)
            bare.append(computer.file("dev/" + plug.name));
        for (const auto& name : names)
            expected.append(computer.file(name));
        QCOMPARE(DeviceNames(computer.sources()).lastingFirst(bare), expected);
    }

    void adapterIsToldFromOthers_data()
    {
        QTest::addColumn<Plugs>("before");
        QTest::addColumn<QString>("path");
        QTest::addColumn<Plugs>("after");
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<QString>("foundAt");
        const auto row = [](const char* name, const Plugs& before, const QString& path, const Plugs& after, Kind kind,
                            const QString& foundAt = {}) {
            QTest::newRow(name) << before << path << after << kind << (foundAt.isEmpty() ? path : foundAt);
        };
        const QString usb0("dev/ttyUSB0"), usb1("dev/ttyUSB1"), id("by-id/usb-FTDI_A1-port0"),
            socket("by-path/pci-usb-1");
        row("not there", {mill}, usb0, {lathe}, Kind::Missing);
        row("back", {mill}, usb0, {lathe, mill}, Kind::Back);
        row("back under its lasting name", {mill}, id, {as(mill, "ttyUSB3", "pci-usb-1")}, Kind::Back);
        row("another number", {mill}, usb0, {as(mill, "ttyUSB1", "pci-usb-1")}, Kind::Elsewhere, id);
        row("another at its name", {mill}, usb0, {as(lathe, "ttyUSB0", "pci-usb-2")}, Kind::Other);
        row("two have changed places", {mill, lathe}, usb0,
            {as(lathe, "ttyUSB0", "pci-usb-2"), as(mill, "ttyUSB1", "pci-usb-1")}, Kind::Elsewhere, id);
        row("another in its socket", {mill}, socket, {as(lathe, "ttyUSB0", "pci-usb-1")}, Kind::Other);
        row("in another socket", {mill}, socket, {as(mill, "ttyUSB0", "pci-usb-2")}, Kind::Elsewhere, id);
        row("another kind", {mill}, usb0, {{"ttyUSB0", "QinHeng", "", "", "pci-usb-1"}}, Kind::Other);
        row("the system has not looked yet", {mill}, usb0, {{"ttyUSB0", "", "", "", ""}}, Kind::Missing);
        row("no names at all, and moved", {{"ttyUSB0", "FTDI", "A1", "", ""}}, usb0,
            {{"ttyUSB1", "FTDI", "A1", "", ""}}, Kind::Elsewhere, usb1);
        const Plugged plain{"ttyUSB0", "QinHeng", "", "usb-1a86_Serial-port0", "pci-usb-1"};
        row("without a number, same socket", {plain}, usb0, {plain}, Kind::Back);
        row("without a number, another socket", {plain}, usb0, {as(plain, "ttyUSB0", "pci-usb-2")}, Kind::Alike);
        row("without a number, moved", {plain}, usb0, {as(plain, "ttyUSB1", "pci-usb-2")}, Kind::Missing);
        const Plugged first{"ttyUSB0", "Quad", "Q4", "usb-Q4-if00", ""},
            second{"ttyUSB1", "Quad", "Q4", "usb-Q4-if01", ""};
        row("its other connector", {first, second}, usb0, {as(second, "ttyUSB0", "")}, Kind::Other);
        row("its connectors have changed places", {first, second}, usb0,
            {as(second, "ttyUSB0", ""), as(first, "ttyUSB1", "")}, Kind::Elsewhere, "by-id/usb-Q4-if00");
        row("two connectors without names", {{"ttyUSB0", "Quad", "Q4", "", ""}}, usb0,
            {{"ttyUSB2", "Quad", "Q4", "", ""}, {"ttyUSB3", "Quad", "Q4", "", ""}}, Kind::Missing);
        row("built in", {{"ttyS0", "", "", "", ""}}, "dev/ttyS0", {{"ttyS0", "", "", "", ""}}, Kind::Back);
    }

    void adapterIsToldFromOthers()
    {
        QFETCH(Plugs, before);
        QFETCH(QString, path);
        QFETCH(Plugs, after);
        QFETCH(QString, foundAt);
        Computer computer;
        computer.plug(before);
        AdapterSearch search;
        search.remember(computer.file(path), DeviceNames(computer.sources()));
        computer.plug({});
        QCOMPARE(search.find(DeviceNames(computer.sources())).kind, Kind::Missing);
        computer.plug(after);
        const auto found = search.find(DeviceNames(computer.sources()));
        QTEST(found.kind, "kind");
        QCOMPARE(found.path, computer.file(foundAt));
    }

    void twinIsNotTakenForTheLostOne_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<Kind>("kind");
        QTest::newRow("bare name") << "dev/ttyUSB0" << Kind::Missing;
        QTest::newRow("lasting name") << "by-id/usb-FTDI_A1-port0" << Kind::Other;
    }

    // Both have the same serial number; the twin came while the port was open, and keeps the name alone.
    void twinIsNotTakenForTheLostOne()
    {
        QFETCH(QString, path);
        const Plugged twin = as(mill, "ttyUSB1", "pci-usb-2");
        Computer computer;
        computer.plug({mill});
        AdapterSearch search;
        search.remember(computer.file(path), DeviceNames(computer.sources()));
        computer.plug({twin});
        search.noteLoss(DeviceNames(computer.sources()));
        QTEST(search.find(DeviceNames(computer.sources())).kind, "kind");
        computer.plug({mill});
        QCOMPARE(search.find(DeviceNames(computer.sources())).kind, Kind::Back);
    }

    void oneDeviceUnderAllItsNames()
    {
        Computer computer;
        computer.plug({mill, lathe});
        const DeviceNames names(computer.sources());
        for (const char* name : {"dev/ttyUSB1", "by-id/usb-FTDI_B7-port0", "by-path/pci-usb-2"}) {
            QCOMPARE(names.device(computer.file(name)).inWords(), QStringLiteral("FTDI UART no. B7"));
            QCOMPARE(names.lastingName(computer.file(name)), computer.file("by-id/usb-FTDI_B7-port0"));
        }
        QCOMPARE(names.lastingName("/dev/ttyNOT0"), QString());
        QVERIFY(DeviceNames::isPassedOn("/dev/ttyACM12") && !DeviceNames::isPassedOn("/dev/ttyS0"));
        QVERIFY(!DeviceNames::isPassedOn("/dev/serial/by-id/usb-ttyUSB0"));
    }
};

QTEST_APPLESS_MAIN(DevicesTest)
#include "platform_devices.moc"
