// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "serial/serialPort.h"
#include "support/PtyPair.h"

#include <memory>

/// A port that is open on a pseudo-terminal, with the control's end in the test's hand and its notifications counted.
class OpenPort
{
public:
    explicit OpenPort(int flow = 0, int parity = 0);

    /// Sends the control's XOFF and returns when the line has seen it.
    void hold();
    /// Sends the control's XON.
    void release() { control.write("\x11"); }
    /// Waits for bytes at the control's end while the main thread's event loop stands still.
    QByteArray readWithoutEvents(qsizetype count);

    PtyPair control;
    std::unique_ptr<serialPort> port = std::make_unique<serialPort>();
    int txCount = 0; ///< "TxOnComm" so far
    int rxCount = 0; ///< "RxOnComm" so far

private:
    QObject observer_;
};
