// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/MonkeyTest.h"

#include "shell/viewChild.h"
#include "transfer/ProgramEditor.h"
#include "transfer/viewTX.h"

#include <QTimer>

void MonkeyTest::buildShop()
{
    std::vector<std::shared_ptr<MachineRecord>> machines;
    for (char letter = 'A'; auto& place : places_) {
        place.letter = letter;
        cncsim::Settings settings;
        settings.xonXoff = true;
        settings.readRate = 30000;
        place.control = std::make_unique<cncsim::SimulatedControl>(settings);
        for (const int lines : {40, 300, 3000}) {
            const int number = static_cast<int>(place.files.size());
            const QByteArray text = WireCheck::program(letter, number, lines);
            place.wire.addProgram(text);
            place.files << Shop::writeFile(dir_, QString(QLatin1Char(letter)) + QString::number(number), text);
        }
        machines.push_back(Shop::machineOn(place.control->devicePath()));
        machines.back()->MCNAME = QLatin1Char(letter);
        machines.back()->MCWAIT = letter == 'B';
        machines.back()->MCREPEAT = letter == 'C';
        ++letter;
    }
    Shop::storeMachines({machines[0].get(), machines[1].get(), machines[2].get()});
}

MonkeyTest::Place* MonkeyTest::placeOf(const MachineRecord& machine)
{
    for (auto& place : places_)
        if (machine.MCPORT == QString::fromStdString(place.control->devicePath())) return &place;
    return nullptr;
}

QList<viewTX*> MonkeyTest::transfers() const
{
    QList<viewTX*> views;
    for (qsizetype index = 1; index < g::mcChildViews.size(); ++index)
        if (auto* child = childViewAt(index); child && child->isLoaded())
            if (auto* view = child->findChild<viewTX*>()) views << view;
    return views;
}

QString MonkeyTest::stored()
{
    std::vector<const MachineRecord*> machines;
    for (qsizetype index = 1; index < g::mcIcons.size(); ++index)
        machines.push_back(g::mcIcons[index].get());
    return SettingsText::write(machines);
}

// The text as the next start reads it: some fields return to presets, on purpose.
QString MonkeyTest::reread(const QString& text)
{
    const auto records = SettingsText::read(text, [] { return std::make_shared<MachineRecord>(); });
    std::vector<const MachineRecord*> machines;
    for (std::size_t index = 1; index < records.size(); ++index)
        machines.push_back(records[index].get());
    return SettingsText::write(machines);
}

void MonkeyTest::check()
{
    for (auto& place : places_) {
        const QString problem = place.wire.take(Shop::bytesOf(place.control->report().received));
        QVERIFY2(problem.isEmpty(), qPrintable(QString(QLatin1Char(place.letter)) + ": " + problem));
    }
    for (auto* view : transfers()) {
        const auto* place = placeOf(*view->mc);
        const QByteArray text = view->findChild<ProgramEditor*>("rt1")->wholeText();
        for (char letter = 'A'; place && letter <= 'C'; ++letter)
            QVERIFY2(letter == place->letter || !text.contains(letter), "a view holds what belongs to another machine");
    }
    QVERIFY2(!QApplication::activeModalWidget() || QApplication::activeModalWidget()->isVisible(), "a dead dialog");
}

void MonkeyTest::sendOn(Place& place)
{
    auto machine = Shop::machineOn(place.control->devicePath());
    Shop::storeMachines({machine.get()});
    place.control->clear();
    place.control->releaseLine();
    op_.reset();
    op_ = std::make_unique<Operator>();
    op_->openSend(1, place.files[1]);
    op_->click("btnSend");
    const QByteArray whole = WireCheck::program(place.letter, 1, 300).replace("\n", "\r\n");
    QTRY_VERIFY_WITH_TIMEOUT(place.control->receivedBytes() >= static_cast<std::size_t>(whole.size()), 20000);
    QCOMPARE(Shop::bytesOf(place.control->report().received), whole);
}

// Whatever happened before, the next operator's send is right.
void MonkeyTest::finish()
{
    for (auto& place : places_)
        place.control->releaseLine();
    QTest::qWait(100);
    check();
    const QString before = stored();
    op_->restart();
    QCOMPARE(stored(), reread(before));
}

void MonkeyTest::noControlEverGetsAForeignOrMisplacedLine()
{
    const int actions = std::max(qEnvironmentVariableIntValue("VARNOCK_MONKEY_ACTIONS"), 600);
    const int seed = std::max(qEnvironmentVariableIntValue("VARNOCK_MONKEY_SEED"), 1);
    log_.begin(seed);
    random_.seed(static_cast<quint32>(seed));
    answers_.seed(static_cast<quint32>(seed) + 1);
    buildShop();
    op_ = std::make_unique<Operator>();
    auto dialogs = std::make_unique<QTimer>();
    connect(dialogs.get(), &QTimer::timeout, this, &MonkeyTest::answerDialog);
    dialogs->start(7);
    for (int action = 0; action < actions && !QTest::currentTestFailed(); ++action) {
        act();
        if (action % 50 == 49) check();
    }
    if (!QTest::currentTestFailed()) finish();
    dialogs.reset();
    op_.reset();
    if (QTest::currentTestFailed()) return log_.print();
    for (auto& place : places_) {
        qInfo("%c: %d lines, %d breaks", place.letter, int(place.wire.lines), int(place.wire.breaks));
        QVERIFY(place.wire.lines > 0);
    }
    for (auto& place : places_) {
        sendOn(place);
        if (QTest::currentTestFailed()) return log_.print();
    }
}

QTEST_MAIN(MonkeyTest)
