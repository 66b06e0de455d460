// SPDX-License-Identifier: GPL-3.0-or-later
#include "Chip.h"

#include <algorithm>

namespace
{
using namespace std::chrono_literals;
using enum Kind::Family;
constexpr std::uint8_t stopCharacter = 0x13, startCharacter = 0x11; // DC3 and DC1 of ISO 646

// A chip whose buffer held one packet only could not carry a fast line without gaps: ch341 takes two.
constexpr Kind kinds[] = {
    {"ch341", Ch341, 0x1a86, 0x7523, 0x0110, 0x0264, 8, 0x82, 0x02, 0x81, 32, 64, 1ms},
    {"cdc_acm", Acm, 0x0483, 0x5740, 0x0200, 0x0200, 64, 0x81, 0x01, 0x82, 64, 64, 1ms},
    {"pl2303-old", Pl2303, 0x067b, 0x2303, 0x0110, 0x0202, 8, 0x83, 0x02, 0x81, 64, 256, 1ms},
    {"pl2303-HX", Pl2303, 0x067b, 0x2303, 0x0110, 0x0300, 64, 0x83, 0x02, 0x81, 64, 256, 1ms},
    {"pl2303-GC", Pl2303, 0x067b, 0x23a3, 0x0200, 0x0105, 64, 0x83, 0x02, 0x81, 64, 512, 1ms},
    {"cp210x", Cp210x, 0x10c4, 0xea60, 0x0110, 0x0100, 64, 0x81, 0x01, 0, 64, 640, 1ms},
    {"ftdi", Ftdi, 0x0403, 0x6001, 0x0200, 0x0600, 8, 0x81, 0x02, 0, 64, 128, 0ms}, // its timer decides
};

std::uint8_t low(unsigned value)
{
    return static_cast<std::uint8_t>(value & 0xFF);
}

std::uint8_t high(unsigned value)
{
    return static_cast<std::uint8_t>(value >> 8);
}

void append(Bytes& bytes, const Bytes& more)
{
    bytes.insert(bytes.end(), more.begin(), more.end());
}

Bytes endpoint(std::uint8_t address, std::uint8_t type, unsigned packet)
{
    return {7, 5, address, type, low(packet), high(packet), 1};
}
} // namespace

const Kind* Kind::named(std::string_view name)
{
    const auto* kind = std::find_if(std::begin(kinds), std::end(kinds), [=](const Kind& k) { return k.name == name; });
    return kind == std::end(kinds) ? nullptr : kind;
}

Setup::Setup(const std::uint8_t* packet)
    : type(packet[0]), request(packet[1]), value(static_cast<std::uint16_t>(packet[2] | packet[3] << 8)),
      index(static_cast<std::uint16_t>(packet[4] | packet[5] << 8)),
      length(static_cast<std::uint16_t>(packet[6] | packet[7] << 8))
{
}

Bytes Chip::deviceDescriptor() const
{
    const std::uint8_t deviceClass = kind_.family == Acm ? 2 : kind_.family == Ch341 ? 0xFF : 0;
    return {18,
            1,
            low(kind_.usb),
            high(kind_.usb),
            deviceClass,
            0,
            0,
            kind_.packet0,
            low(kind_.vendor),
            high(kind_.vendor),
            low(kind_.product),
            high(kind_.product),
            low(kind_.release),
            high(kind_.release),
            0,
            0,
            0,
            1};
}

Bytes Chip::configuration() const
{
    const std::uint8_t interfaces = kind_.family == Acm ? 2 : 1;
    Bytes all{9, 2, 0, 0, interfaces, 1, 0, 0x80, 50};
    if (kind_.family == Acm) {
        append(all, {9, 4, 0, 0, 1, 2, 2, 1, 0});
        append(all, {5, 0x24, 0, 0x10, 1, 5, 0x24, 1, 0, 1, 4, 0x24, 2, 2, 5, 0x24, 6, 0, 1});
        append(all, endpoint(kind_.interrupt, 3, 8));
        append(all, {9, 4, 1, 0, 2, 10, 0, 0, 0});
    } else {
        const std::uint8_t endpoints = kind_.interrupt == 0 ? 2 : 3;
        append(all, {9, 4, 0, 0, endpoints, 0xFF, 0, 0, 0});
        if (kind_.interrupt != 0) append(all, endpoint(kind_.interrupt, 3, 10));
    }
    append(all, endpoint(kind_.in, 2, kind_.packet));
    append(all, endpoint(kind_.out, 2, kind_.packet));
    all[2] = low(static_cast<unsigned>(all.size()));
    return all;
}

std::optional<Bytes> Chip::standard(const Setup& setup) const
{
    constexpr std::uint8_t getStatus = 0, getDescriptor = 6;
    if (setup.request == getStatus) return Bytes{0, 0};
    if (setup.request != getDescriptor) return Bytes{};
    switch (setup.value >> 8) {
    case 1:
        return deviceDescriptor();
    case 2:
        return configuration();
    default:
        return {}; // no strings
    }
}

// Which register asks for the chip's own flow control tells the generations apart; G has no old way to read registers.
std::optional<Bytes> Chip::pl2303(const Setup& setup)
{
    constexpr std::uint8_t vendorRead = 0xC0, vendorWrite = 0x40, oldRead = 0x01;
    const bool isG = kind_.product == 0x23a3;
    if (setup.type == vendorRead) {
        if (isG && setup.request == oldRead) return {};
        return Bytes{registers_[setup.value & 0x7F]};
    }
    if (setup.type != vendorWrite) return Bytes(setup.isIn() ? setup.length : 0);
    const auto number = setup.value & 0x7F;
    registers_[static_cast<std::size_t>(number)] = low(setup.index);
    const bool isFlow = number == (isG ? 0x0A : 0);
    if (!isFlow) return Bytes{};
    const auto flow = setup.index & (isG ? 0x1C : 0xF0);
    const bool isOn = flow == (isG ? 0x0C : 0xC0);
    ownFlow_ = isOn ? std::optional(Line::OwnFlow{stopCharacter, startCharacter}) : std::nullopt;
    obeysCts_ = isG ? flow == 0x18 : flow == 0x40 || flow == 0x60;
    return Bytes{};
}

std::optional<Bytes> Chip::cp210x(const Setup& setup, const Bytes& data)
{
    constexpr std::uint8_t getModemStatus = 0x08, setFlow = 0x13, getFlow = 0x14, setCharacters = 0x19,
                           setHandshake = 0x07, vendor = 0xFF;
    constexpr unsigned partNumber = 0x370B;
    if (setup.isIn()) {
        if (setup.request == vendor && setup.value == partNumber) return Bytes{2};
        if (setup.request == vendor) return {};
        if (setup.request == getFlow) return flow_;
        if (setup.request == getModemStatus) return Bytes{low((cts_ ? 0x10u : 0u) | handshake_)};
        return Bytes(setup.length);
    }
    if (setup.request == setHandshake) { // DTR and RTS, each where the upper byte says so
        const unsigned changed = setup.value >> 8 & 3u;
        handshake_ = low((handshake_ & ~changed) | (setup.value & changed));
    }
    if (setup.request == setCharacters && data.size() == 6) characters_ = data;
    if (setup.request == setFlow && data.size() == 16) flow_ = data;
    const bool isOn = (flow_[4] & 1) != 0;
    ownFlow_ = isOn ? std::optional(Line::OwnFlow{characters_[5], characters_[4]}) : std::nullopt;
    obeysCts_ = (flow_[0] & 8) != 0;
    return Bytes{};
}

Bytes Chip::ftdi(const Setup& setup)
{
    constexpr std::uint8_t setFlow = 2, getModemStatus = 5, setLatency = 9, getLatency = 10;
    if (setup.isIn()) {
        if (setup.request == getModemStatus) return modemStatus();
        if (setup.request == getLatency) return {low(static_cast<unsigned>(latency_.count()))};
        return Bytes(setup.length);
    }
    if (setup.request == setLatency) latency_ = std::chrono::milliseconds(setup.value);
    if (setup.request != setFlow) return {};
    const bool isOn = (setup.index >> 8) == 4;
    ownFlow_ = isOn ? std::optional(Line::OwnFlow{high(setup.value), low(setup.value)}) : std::nullopt;
    obeysCts_ = (setup.index >> 8) == 1;
    return {};
}

// It has no flow control of its own.
std::optional<Bytes> Chip::ch341(const Setup& setup) const
{
    constexpr std::uint8_t version = 0x5F, readRegisters = 0x95;
    if (setup.request == version) return Bytes{0x31, 0};
    if (setup.isIn() && setup.request == readRegisters) return Bytes{modemStatus()[2], 0xEE};
    return Bytes(setup.isIn() ? setup.length : 0);
}

Bytes Chip::modemStatus() const
{
    switch (kind_.family) {
    case Ch341:
        return {0, 0, low(cts_ ? ~0x0Fu : ~0x0Eu), 0}; // a line that is on reads as 0
    case Pl2303:
        return {0, 0, 0, 0, 0, 0, 0, 0, low(cts_ ? 0x80 : 0), 0};
    case Ftdi:
        return {low(cts_ ? 0x11 : 0x01), 0x60};
    case Cp210x:
    case Acm:
        break;
    }
    return {};
}

std::optional<Bytes> Chip::control(const Setup& setup, const Bytes& data)
{
    if (setup.isStandard()) return standard(setup);
    switch (kind_.family) {
    case Pl2303:
        return pl2303(setup);
    case Cp210x:
        return cp210x(setup, data);
    case Ftdi:
        return ftdi(setup);
    case Ch341:
        return ch341(setup);
    case Acm:
        break;
    }
    return Bytes(setup.isIn() ? setup.length : 0);
}
