// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// What a machine's icon shows of its transfer.
enum class TransferActivity {
    Idle,
    Waiting,
    Sending,
    Held,
    Still, ///< under way, but the line does not move
    Stopped,
    Sent,
    Unconfirmed,
    Listening,
    Receiving,
    Received,
    PortLost
};

/// What a transfer shows on the machine's icon: the small progress bar pBar and its state. Icons implement it.
class MachineProgress
{
public:
    virtual ~MachineProgress() = default;

    virtual double pBarMaximum() const = 0;
    virtual void setPBarMaximum(double maximum) = 0;
    virtual void setPBarValue(double value) = 0;
    virtual void setPBarHidden(bool hidden) = 0;
    virtual void showActivity(TransferActivity activity) = 0;
};
