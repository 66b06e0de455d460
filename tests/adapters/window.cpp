// SPDX-License-Identifier: GPL-3.0-or-later
// Sends the program with the whole program and its window, by clicks. Stops again and again, at any moment, and sends
// on. Usage: window DEVICE SPEED 8n xon. Prints how often it stopped.
#include "Program.h"
#include "Row.h"

#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "shell/ClearStyle.h"

#include <QLabel>

#include <cstdio>

namespace
{
constexpr int usualSend = 700, usualPause = 60; // ms; the control holds the line in one stop of four
constexpr int fewestStops = 20;

bool isSent()
{
    const auto* state = Operator::find<QLabel>("lblTransferState");
    return state && state->text().startsWith(QStringLiteral("Sent: "));
}
} // namespace

int main(int count, char** arguments)
{
    QApplication application(count, arguments);
    const auto row = count == 2 + Row::arguments ? Row::from(arguments + 2) : std::nullopt;
    if (!row || row->isEven || row->holdsByCts) qFatal("Usage: window DEVICE SPEED 8n xon");
    QApplication::setStyle(new ClearStyle);
    const auto machine = Shop::machineOn(QString::fromLocal8Bit(arguments[1]));
    machine->MCBAUD = static_cast<qint64>(row->speed);
    Shop::store({machine});
    Operator op;
    op.send(1, QByteArray::fromStdString(Program::whole()));
    int stops = 0;
    while (!QTest::qWaitFor(isSent, usualSend)) {
        op.click("btnStop");
        ++stops;
        QTest::qWait(usualPause);
        op.click("btnSend");
    }
    QTest::qWait(1000); // what is still on the way
    std::printf("%d\n", stops);
    return stops >= fewestStops ? 0 : 1;
}
