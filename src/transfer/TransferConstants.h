// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "protocol/XModemCodes.h"

/// A transfer view's codes: modes, states and XModem's control bytes. With the two fields that a transfer has had from
/// the start and the program itself does not need.
struct TransferConstants {
    static constexpr int MODE_TX = 1;
    static constexpr int MODE_RX = 2;
    int mode = 0;
    bool txSOF = false;

    static constexpr int iSOH = XModemCodes::SOH;
    static constexpr int iEOT = XModemCodes::EOT;
    static constexpr int iACK = XModemCodes::ACK;
    static constexpr int iNAK = XModemCodes::NAK;

    static constexpr double xmodemTickInterval = 1.0; // s

    struct TxState {
        int State = 0;
        static constexpr int txState_idle = 0;
        static constexpr int txState_sending_header = 1;
        static constexpr int txState_sending_body = 2;
        static constexpr int txState_sending_trailer = 3;
        static constexpr int txState_stopping = 4; // no transition enters it
        static constexpr int txState_stopped = 5;  // no transition enters it
        static constexpr int txState_sending_xmodem = 6;
    };
};
