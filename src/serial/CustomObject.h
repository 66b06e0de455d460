// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Queries and controls an open line by its descriptor. Any thread.
class CustomObject
{
public:
    /// The number of bytes in the driver's output queue; 0 when the query fails.
    static int bytesInTxBuffer(int descriptor);
    /// The same under another name.
    static int my_ioctlVip(int descriptor) { return bytesInTxBuffer(descriptor); }
    /// Suspends output as if XOFF had been received. 0, or -1 on failure.
    static int ioctl_XOff(int descriptor);
};
