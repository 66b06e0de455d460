// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

class serialPort;

/// What a transfer view asks of the child view that it sits in: the machine's port. Child views implement it.
class TransferHost
{
public:
    virtual ~TransferHost() = default;
    virtual std::shared_ptr<serialPort> machinePort() = 0;
};
