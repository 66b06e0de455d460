// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "Line.h"

#include <array>
#include <string_view>

/// What a kind of adapter shows on the USB bus.
struct Kind {
    enum class Family { Ch341, Acm, Pl2303, Cp210x, Ftdi };

    const char* name;
    Family family;
    std::uint16_t vendor, product, usb, release;
    std::uint8_t packet0, in, out, interrupt; // endpoint addresses; interrupt may be 0
    std::uint16_t packet;
    std::size_t buffer;               // characters that the chip takes ahead of the line
    std::chrono::milliseconds toHost; // until a received character is ready for the host

    /// Null for an unknown name.
    static const Kind* named(std::string_view name);
};

/// The setup packet of a control transfer.
struct Setup {
    std::uint8_t type, request;
    std::uint16_t value, index, length;

    explicit Setup(const std::uint8_t* packet);
    bool isIn() const { return (type & 0x80) != 0; }
    bool isStandard() const { return (type & 0x60) == 0; }
};

/// Answers the control transfers of a kind's driver, as far as the driver looks at the answers.
class Chip
{
public:
    explicit Chip(const Kind& kind) : kind_(kind) {}

    /// Takes the bytes that came with the request. Returns those of the answer; nothing for a stall.
    std::optional<Bytes> control(const Setup& setup, const Bytes& data);
    /// Whether the driver has told the chip to hold the line by itself, at characters or at CTS.
    const std::optional<Line::OwnFlow>& ownFlow() const { return ownFlow_; }
    bool obeysCts() const { return obeysCts_; }
    void setCts(bool isOn) { cts_ = isOn; }
    /// What it tells of CTS unasked: on its interrupt endpoint, or, as FTDI does, ahead of each packet. Empty for a
    /// chip that is asked or has no such line.
    Bytes modemStatus() const;
    /// How long the chip saves up what has arrived.
    std::chrono::milliseconds latency() const { return latency_; }

private:
    std::optional<Bytes> standard(const Setup& setup) const;
    Bytes deviceDescriptor() const;
    Bytes configuration() const;
    std::optional<Bytes> pl2303(const Setup& setup);
    std::optional<Bytes> cp210x(const Setup& setup, const Bytes& data);
    Bytes ftdi(const Setup& setup);
    std::optional<Bytes> ch341(const Setup& setup) const;

    const Kind& kind_;
    std::optional<Line::OwnFlow> ownFlow_;
    bool obeysCts_ = false, cts_ = true;
    std::uint8_t handshake_ = 0; // cp210x: what the driver has raised
    std::chrono::milliseconds latency_{16};
    std::array<std::uint8_t, 256> registers_{};
    Bytes flow_ = Bytes(16), characters_ = Bytes(6);
};
