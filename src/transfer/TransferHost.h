// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

class serialPort;

/// Gives a transfer view its machine's port. Child views implement it.
class TransferHost
{
public:
    virtual ~TransferHost() = default;
    virtual std::shared_ptr<serialPort> machinePort() = 0;
};
