// SPDX-License-Identifier: GPL-3.0-or-later
// Sends the program as a transfer view does, and stops at every second hold of the control as its Stop button does.
// Reads the modem lines as the view's lamps do. Usage: sender DEVICE SPEED 8n|7e xon|cts. Prints how often it stopped.
// Exits with 1 if it does not come to its end, or if the lines are not what they should be.
#include "Program.h"
#include "Row.h"

#include "protocol/PlainSend.h"
#include "protocol/ProgramLines.h"
#include "serial/serialPort.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>

namespace
{
using namespace std::chrono_literals;
constexpr int fewestStops = 8;   // fewer prove nothing
constexpr int watchesALook = 10; // at the modem lines

class Sender : public QObject
{
public:
    explicit Sender(const Row& row) : program_(text()), plain_(program_)
    {
        port_.Speed = row.speed;
        port_.FlowType = row.holdsByCts ? 2 : 1;
        port_.Parity = row.isEven ? 1 : 0;
        port_.nc->addObserver(this, QStringLiteral("TxOnComm"), &port_, [this](const Notification&) { written(); });
        holdsByCts_ = row.holdsByCts;
        connect(&watch_, &QTimer::timeout, this, &Sender::watch);
        connect(&port_, &serialPort::modemLinesRead, this, &Sender::note);
        // A program that does not come to its end takes longer than this.
        const auto longest = 60s + 3 * static_cast<int>(Program::whole().size()) * row.characterTime();
        QTimer::singleShot(std::chrono::duration_cast<std::chrono::milliseconds>(longest), this,
                           [] { QCoreApplication::exit(1); });
    }

    bool begin(const QString& device)
    {
        if (port_.Open(device) < 0) {
            qWarning("%s does not open: reason %d", qPrintable(device), static_cast<int>(port_.openError));
            return false;
        }
        plain_.prepareFromTop(setup_);
        port_.sendBytes(plain_.begin({}));
        watch_.start(25ms);
        return true;
    }

    int stops() const { return stops_; }
    // DTR and, unless flow control drives it, RTS were on all the time, and CTS was what the control made of it.
    bool sawRightLines() const
    {
        const bool isRight = looks_ > 0 && areOursOn_ && sawCtsOn_ && sawCtsOff_ == holdsByCts_;
        if (!isRight)
            qWarning("modem lines: read %d times, DTR and RTS on: %d, CTS on: %d, off: %d", looks_, areOursOn_,
                     sawCtsOn_, sawCtsOff_);
        return isRight;
    }

private:
    static QByteArray text() { return QByteArray::fromStdString(Program::whole()).replace("\r\n", "\n"); }

    void written()
    {
        const auto step = plain_.written();
        if (step.bytes) port_.sendBytes(*step.bytes);
        if (step.isSent) QTimer::singleShot(1s, [] { QCoreApplication::quit(); }); // what is still on the way
    }

    void note(const std::optional<ModemLines>& lines)
    {
        if (!lines) return; // counts as not read
        ++looks_;
        areOursOn_ = areOursOn_ && lines->dtr && (lines->rts || holdsByCts_);
        (lines->cts ? sawCtsOn_ : sawCtsOff_) = true;
    }

    // Every second stop is continued while the control still holds the line.
    void watch()
    {
        if (watches_++ % watchesALook == 0) port_.askModemLines();
        const bool isHeld = port_.heldFor().has_value();
        if (isStopped_) {
            if (!isHeld || stops_ % 2 == 0) goOn();
        } else if (isHeld && !wasHeld_ && ++holds_ % 2 == 0) {
            stop();
        }
        wasHeld_ = isHeld;
    }

    void stop()
    {
        if (plain_.state() <= PlainSend::State::Waiting) return;
        ++stops_;
        isStopped_ = true;
        port_.stopButtonPressed = true;
        plain_.stop();
    }

    void goOn()
    {
        isStopped_ = false;
        plain_.prepareFromCaret(setup_, plain_.next());
        port_.sendBytes(plain_.begin(port_.takeUnsentBytes()));
    }

    serialPort port_;
    const ProgramLines program_;
    const PlainSend::Setup setup_{{}, {}, QStringLiteral("\r\n"), {}};
    PlainSend plain_;
    QTimer watch_;
    int holds_ = 0, stops_ = 0, watches_ = 0, looks_ = 0;
    bool holdsByCts_ = false, areOursOn_ = true, sawCtsOn_ = false, sawCtsOff_ = false;
    bool wasHeld_ = false, isStopped_ = false;
};
} // namespace

int main(int count, char** arguments)
{
    const QCoreApplication application(count, arguments);
    const auto row = count == 2 + Row::arguments ? Row::from(arguments + 2) : std::nullopt;
    if (!row) qFatal("Usage: sender DEVICE %s", Row::usage);
    Sender sender(*row);
    if (!sender.begin(QString::fromLocal8Bit(arguments[1])) || QCoreApplication::exec() != 0) return 1;
    std::printf("%d\n", sender.stops());
    return sender.stops() >= fewestStops && sender.sawRightLines() ? 0 : 1;
}
