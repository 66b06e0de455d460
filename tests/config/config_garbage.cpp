// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/SettingsText.h"

#include <QRandomGenerator>
#include <QTest>

namespace
{
auto read(const QString& text)
{
    return SettingsText::read(text, [] { return std::make_shared<MachineRecord>(); });
}

// Whatever was stored, these are the only values that the rest of the program has to cope with.
bool isUsable(const MachineRecord& mc)
{
    static const QList<qint64> rates{150, 300, 600, 1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200};
    return mc.MCFLOW >= 0 && mc.MCFLOW <= 4 && mc.MCDBPAR >= 0 && mc.MCDBPAR <= 2 &&
           (mc.MCSBITS == 1 || mc.MCSBITS == 2) && rates.contains(mc.MCBAUD) && mc.MCDELAY >= 1 && mc.MCBLKTIC >= 0 &&
           mc.MCRXTOUT >= 0 && mc.MCTXTOUT <= 60 && !mc.MCTXEOB.isEmpty() && !mc.MCREQST.isEmpty();
}
} // namespace

class GarbageTest : public QObject
{
    Q_OBJECT
    QString stored_;

private Q_SLOTS:
    void initTestCase();
    void textCutAtEveryCharacterKeepsTheMachinesThatAreWhole();
    void randomTextYieldsUsableRecordsOnly();
    void damagedTextYieldsUsableRecordsOnly();
    void millionLinesAreRead();
};

void GarbageTest::initTestCase()
{
    MachineRecord mill;
    mill.MCNAME = "Mill";
    mill.MCRXEOBCHAR = "\r";
    MachineRecord lathe;
    lathe.MCNAME = QString::fromUtf8("Drehbänke \xF0\x9F\x94\xA7");
    lathe.MCBAUD = 115200;
    stored_ = SettingsText::write({&mill, &lathe});
}

void GarbageTest::textCutAtEveryCharacterKeepsTheMachinesThatAreWhole()
{
    const auto second = stored_.indexOf("[CNC2]");
    const auto end = stored_.indexOf("[END]");
    for (qsizetype size = 0; size <= stored_.size(); ++size) {
        const auto records = read(stored_.left(size));
        // A header counts as soon as its first four characters are there.
        const std::size_t expected = size < 4 ? 0 : size < second + 4 ? 1 : size < end + 4 ? 2 : 3;
        QCOMPARE(records.size(), expected);
        if (expected > 1) QCOMPARE(records[1]->MCNAME, QStringLiteral("Mill"));
        for (const auto& record : records)
            QVERIFY(isUsable(*record));
    }
}

void GarbageTest::randomTextYieldsUsableRecordsOnly()
{
    QRandomGenerator random(20240501);
    for (int round = 0; round < 300; ++round) {
        QString text;
        for (auto left = random.bounded(3000); left > 0; --left)
            text += QChar(static_cast<char16_t>(random.bounded(round % 2 == 0 ? 0x80 : 0x10000)));
        for (const auto& record : read("[CNC1]\n" + text + "\n[END]\n"))
            QVERIFY(isUsable(*record));
    }
}

void GarbageTest::damagedTextYieldsUsableRecordsOnly()
{
    QRandomGenerator random(42);
    for (int round = 0; round < 500; ++round) {
        QString text = stored_;
        for (int damage = 0; damage < 20; ++damage)
            text[random.bounded(text.size())] = QChar(static_cast<char16_t>(random.bounded(0x80)));
        for (const auto& record : read(text))
            QVERIFY(isUsable(*record));
    }
}

void GarbageTest::millionLinesAreRead()
{
    const QString lines = QStringLiteral("MCBAUD=9600\nMCBAUD=\n\nxx\n").repeated(250'000);
    const auto records = read("[CNC1]\n" + lines + "MCBAUD=300\n[END]\n");
    QCOMPARE(records.size(), 2U);
    QCOMPARE(records[1]->MCBAUD, 300);
}

QTEST_GUILESS_MAIN(GarbageTest)
#include "config_garbage.moc"
