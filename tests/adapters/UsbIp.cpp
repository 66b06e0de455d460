// SPDX-License-Identifier: GPL-3.0-or-later
#include "UsbIp.h"

#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace
{
enum Command : std::uint32_t { submit = 1, withdraw = 2, submitted = 3, withdrawn = 4 };

// The header of each message, 32-bit words in network order, except for the setup packet.
struct Header {
    std::uint32_t command, number, device, isIn, endpoint;
    std::uint32_t words[5]; // submit: flags, length; withdraw: number; submitted: status, count; withdrawn: status
    std::array<std::uint8_t, 8> setup;
};
static_assert(sizeof(Header) == 48);
} // namespace

UsbIp::UsbIp()
{
    constexpr int port = 0, device = 1, fullSpeed = 2;
    const auto check = [](bool isFine) {
        if (!isFine) throw std::system_error(errno, std::generic_category(), "vhci_hcd");
    };
    int ends[2];
    check(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0);
    const int attach = ::open("/sys/devices/platform/vhci_hcd.0/attach", O_WRONLY | O_CLOEXEC);
    check(attach >= 0);
    const std::string line = std::to_string(port) + ' ' + std::to_string(ends[1]) + ' ' + std::to_string(device) + ' ' +
                             std::to_string(fullSpeed);
    check(::write(attach, line.data(), line.size()) == static_cast<ssize_t>(line.size()));
    ::close(attach);
    ::close(ends[1]);
    socket_ = ends[0];
}

UsbIp::~UsbIp()
{
    ::close(socket_);
}

bool UsbIp::readAll(void* to, std::size_t count) const
{
    return ::recv(socket_, to, count, MSG_WAITALL) == static_cast<ssize_t>(count);
}

std::optional<UsbIp::Request> UsbIp::read()
{
    Header header{};
    if (!readAll(&header, sizeof header)) return {};
    Request request;
    request.number = ntohl(header.number);
    request.endpoint = ntohl(header.endpoint);
    request.isIn = ntohl(header.isIn) != 0;
    request.setup = header.setup;
    if (ntohl(header.command) == withdraw) {
        request.withdrawn = ntohl(header.words[0]);
        return request;
    }
    request.length = ntohl(header.words[1]);
    if (request.isIn) return request;
    request.data.resize(request.length);
    if (!request.data.empty() && !readAll(request.data.data(), request.data.size())) return {};
    return request;
}

void UsbIp::reply(std::uint32_t command, std::uint32_t number, int status, std::size_t count, const Bytes& data)
{
    Header header{};
    header.command = htonl(command);
    header.number = htonl(number);
    header.words[0] = htonl(static_cast<std::uint32_t>(status));
    header.words[1] = htonl(static_cast<std::uint32_t>(count));
    const auto* begin = reinterpret_cast<const std::uint8_t*>(&header);
    Bytes message(begin, begin + sizeof header);
    message.insert(message.end(), data.begin(), data.end());
    // A kernel that has unplugged the device is noticed by the next read.
    static_cast<void>(::send(socket_, message.data(), message.size(), MSG_NOSIGNAL));
}

void UsbIp::answer(std::uint32_t number, const Bytes& data)
{
    reply(submitted, number, 0, data.size(), data);
}

void UsbIp::took(std::uint32_t number, std::size_t count)
{
    reply(submitted, number, 0, count, {});
}

void UsbIp::stall(std::uint32_t number)
{
    reply(submitted, number, -EPIPE, 0, {});
}

void UsbIp::withdrew(std::uint32_t number, bool wasUnanswered)
{
    reply(withdrawn, number, wasUnanswered ? -ECONNRESET : 0, 0, {});
}
