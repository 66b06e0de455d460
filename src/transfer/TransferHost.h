// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class serialPort;

/// Gives a transfer view its machine's port, which outlives the view. Child views implement it.
class TransferHost
{
public:
    virtual ~TransferHost() = default;
    virtual serialPort& machinePort() = 0;
};
