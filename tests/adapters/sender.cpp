// SPDX-License-Identifier: GPL-3.0-or-later
// Sends the program as a send of the program's own does, each block after the completion of the one before.
// Usage: sender DEVICE FORMAT (8n or 7e), at 9600 baud with XON/XOFF. Exits with 1 if it does not come to its end.
#include "Program.h"
#include "serial/serialPort.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstring>

int main(int count, char** arguments)
{
    using namespace std::chrono_literals;
    const QCoreApplication application(count, arguments);
    if (count != 3) qFatal("Usage: sender DEVICE 8n|7e");
    serialPort port;
    port.Speed = 9600;
    port.FlowType = 1;
    port.Parity = std::strcmp(arguments[2], "7e") == 0 ? 1 : 0;
    if (port.Open(QString::fromLocal8Bit(arguments[1])) < 0) {
        qWarning("%s does not open: reason %d", arguments[1], static_cast<int>(port.openError));
        return 1;
    }
    int sent = 0;
    const auto sendNext = [&] {
        if (sent < Program::blocks) return port.sendBytes(QByteArray::fromStdString(Program::block(++sent)));
        QTimer::singleShot(1s, [] { QCoreApplication::exit(0); }); // a last hold, and what is still on the way
    };
    QObject observer;
    port.nc->addObserver(&observer, QStringLiteral("TxOnComm"), &port, [&](const Notification&) { sendNext(); });
    QTimer::singleShot(100ms, sendNext);
    QTimer::singleShot(60s, [] { QCoreApplication::exit(1); });
    const int result = QCoreApplication::exec();
    port.Close();
    return result;
}
