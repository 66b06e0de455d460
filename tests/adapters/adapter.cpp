// SPDX-License-Identifier: GPL-3.0-or-later
// A USB adapter with a control behind it, for the kernel's own driver. Usage: adapter KIND FORMAT (8n or 7e). Runs
// until SIGTERM, then prints a row of the table. Exits with 1 if the control did not get what it was promised.
#include "UsbIp.h"

#include <algorithm>
#include <csignal>
#include <iostream>
#include <poll.h>
#include <string>

namespace
{
using namespace std::chrono_literals;

volatile std::sig_atomic_t stopped = 0;

class Adapter
{
public:
    Adapter(const Kind& kind, Control& control) : kind_(kind), chip_(kind), line_(control, kind.buffer, kind.toHost) {}

    void run()
    {
        for (bool isPlugged = true; isPlugged && stopped == 0; isPlugged = wait()) {
            const Time now = std::chrono::steady_clock::now();
            line_.setOwnFlow(chip_.ownFlow());
            line_.runTo(now);
            fillBuffer();
            kind_.family == Kind::Family::Ftdi ? deliverByTimer(now) : deliver(now);
        }
    }

private:
    struct Output {
        std::uint32_t number;
        Bytes bytes;
        std::size_t taken = 0;
    };

    // False when unplugged.
    bool wait()
    {
        const Time now = std::chrono::steady_clock::now();
        Time until = std::min({line_.next(), line_.nextArrival(), now + 20ms});
        if (kind_.family == Kind::Family::Ftdi) until = std::min(until, nextPacket_);
        const auto pause = std::max<std::chrono::nanoseconds>(until - now, 100us);
        const timespec time{0, pause.count()};
        pollfd socket{bus_.descriptor(), POLLIN, 0};
        return ::ppoll(&socket, 1, &time, nullptr) < 1 || serve();
    }

    bool serve()
    {
        auto request = bus_.read();
        if (!request) return false;
        if (request->withdrawn)
            bus_.withdrew(request->number, forget(*request->withdrawn));
        else if (request->endpoint == 0)
            serveControl(*request);
        else if (!request->isIn)
            outputs_.push_back({request->number, std::move(request->data)});
        else if (request->endpoint == (kind_.in & 0x0Fu))
            inputs_.push_back(request->number);
        else
            interrupts_.push_back(request->number); // never answered: nothing changes on the modem lines
        return true;
    }

    void serveControl(const UsbIp::Request& request)
    {
        auto answer = chip_.control(Setup(request.setup.data()), request.data);
        if (!answer) return bus_.stall(request.number);
        if (!request.isIn) return bus_.took(request.number, request.length);
        answer->resize(std::min<std::size_t>(answer->size(), request.length));
        bus_.answer(request.number, *answer);
    }

    bool forget(std::uint32_t number)
    {
        return std::erase(inputs_, number) + std::erase(interrupts_, number) +
                   std::erase_if(outputs_, [=](const Output& output) { return output.number == number; }) >
               0;
    }

    // A packet goes in whole or has to wait.
    void fillBuffer()
    {
        while (!outputs_.empty()) {
            auto& [number, bytes, taken] = outputs_.front();
            const auto packet = std::min<std::size_t>(kind_.packet, bytes.size() - taken);
            if (line_.room() < packet) return;
            const auto begin = bytes.cbegin() + static_cast<std::ptrdiff_t>(taken);
            line_.give(begin, begin + static_cast<std::ptrdiff_t>(packet));
            taken += packet;
            if (taken < bytes.size()) continue;
            bus_.took(number, taken);
            outputs_.pop_front();
        }
    }

    void deliver(Time now)
    {
        if (inputs_.empty()) return;
        const Bytes arrived = line_.takeArrived(now, kind_.packet);
        if (!arrived.empty()) answerInput(arrived);
    }

    // A packet with two bytes of status comes each time the chip's timer runs out, received or not.
    void deliverByTimer(Time now)
    {
        if (now < nextPacket_) return;
        nextPacket_ = now + chip_.latency();
        if (inputs_.empty()) return;
        Bytes packet{0x01, 0x60};
        const Bytes arrived = line_.takeArrived(now, kind_.packet - packet.size());
        packet.insert(packet.end(), arrived.begin(), arrived.end());
        answerInput(packet);
    }

    void answerInput(const Bytes& packet)
    {
        bus_.answer(inputs_.front(), packet);
        inputs_.pop_front();
    }

    const Kind& kind_;
    Chip chip_;
    Line line_;
    UsbIp bus_;
    std::deque<Output> outputs_;
    std::deque<std::uint32_t> inputs_, interrupts_;
    Time nextPacket_{};
};
} // namespace

int main(int count, char** arguments)
{
    const std::string format = count == 3 ? arguments[2] : "";
    const Kind* kind = count == 3 ? Kind::named(arguments[1]) : nullptr;
    if (kind == nullptr || (format != "8n" && format != "7e")) {
        std::cerr << "Usage: adapter KIND 8n|7e\n";
        return 2;
    }
    std::signal(SIGTERM, [](int) { stopped = 1; });
    Control control(format == "7e");
    try {
        Adapter(*kind, control).run();
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 2;
    }
    std::cout << "| " << kind->name << " | " << (format == "7e" ? "7 bits even" : "8 bits") << " | " << control.report()
              << std::endl;
    return control.isContent() ? 0 : 1;
}
