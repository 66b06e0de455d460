// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Chip.h"

/// The bus: plugs a device into the kernel's virtual host controller (vhci_hcd) and speaks USB/IP with it.
class UsbIp
{
public:
    struct Request {
        std::uint32_t number = 0;
        std::uint32_t endpoint = 0; ///< without direction
        bool isIn = false;
        std::optional<std::uint32_t> withdrawn; ///< the number of the request that this one takes back
        std::uint32_t length = 0;
        std::array<std::uint8_t, 8> setup{};
        Bytes data;
    };

    /// Plugs in. Throws std::system_error where the kernel refuses.
    UsbIp();
    ~UsbIp();
    UsbIp(const UsbIp&) = delete;
    UsbIp& operator=(const UsbIp&) = delete;

    int descriptor() const { return socket_; }
    /// Waits for the next request. Nothing once the kernel has unplugged the device.
    std::optional<Request> read();
    void answer(std::uint32_t number, const Bytes& data);    ///< to a request for bytes
    void took(std::uint32_t number, std::size_t count);      ///< all bytes of a request
    void stall(std::uint32_t number);                        ///< this chip knows no such request
    void withdrew(std::uint32_t number, bool wasUnanswered); ///< to a request that takes back another

private:
    void reply(std::uint32_t command, std::uint32_t number, int status, std::size_t count, const Bytes& data);
    bool readAll(void* to, std::size_t count) const;

    int socket_ = -1;
};
