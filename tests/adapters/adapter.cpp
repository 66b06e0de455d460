// SPDX-License-Identifier: GPL-3.0-or-later
// A USB adapter with a control behind it, for the kernel's own driver. Usage: adapter KIND SPEED 8n|7e xon|cts. Runs
// until SIGTERM, then prints what the control found. Exits with 1 if that is not what it was promised.
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
    Adapter(const Kind& kind, Control& control, const Row& row)
        : kind_(kind), chip_(kind), line_(control, row, kind.buffer, kind.toHost)
    {
    }

    void run()
    {
        for (bool isPlugged = true; isPlugged && stopped == 0; isPlugged = wait()) {
            const Time now = std::chrono::steady_clock::now();
            line_.setOwnFlow(chip_.ownFlow(), chip_.obeysCts());
            line_.runTo(now);
            fillBuffer();
            tellModemStatus(now);
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
        Time report = line_.nextReport(now);
        if (kind_.family == Kind::Family::Ftdi) report = packetAfter(std::min(report, now + 500ms));
        const Time until = std::min({line_.next(!outputs_.empty()), report, now + 500ms});
        const auto pause = std::max<std::chrono::nanoseconds>(until - now, 10us);
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
            interrupts_.push_back(request->number);
        return true;
    }

    void serveControl(const UsbIp::Request& request)
    {
        chip_.setCts(line_.cts(std::chrono::steady_clock::now()));
        auto answer = chip_.control(Setup(request.setup.data()), request.data);
        if (!answer) return bus_.stall(request.number);
        if (!request.isIn) return bus_.took(request.number, request.length);
        answer->resize(std::min<std::size_t>(answer->size(), request.length));
        bus_.answer(request.number, *answer);
    }

    bool forget(std::uint32_t number)
    {
        const bool isInterrupt = std::erase(interrupts_, number) > 0;
        if (isInterrupt) ctsTold_.reset(); // the driver closes; it has to be told again when it opens
        return isInterrupt || std::erase(inputs_, number) + std::erase_if(outputs_, [=](const Output& output) {
                                  return output.number == number;
                              }) > 0;
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

    // Once at first, and then at each change.
    void tellModemStatus(Time now)
    {
        if (interrupts_.empty() || ctsTold_ == line_.cts(now)) return;
        ctsTold_ = line_.cts(now);
        chip_.setCts(*ctsTold_);
        const Bytes status = chip_.modemStatus();
        if (status.empty()) return;
        bus_.answer(interrupts_.front(), status);
        interrupts_.pop_front();
    }

    // The chip's timer runs out again and again. The first time at or after that.
    Time packetAfter(Time time) const
    {
        const auto latency = std::max(chip_.latency(), 1ms);
        return time <= nextPacket_ ? nextPacket_ : nextPacket_ + ((time - nextPacket_ - 1ns) / latency + 1) * latency;
    }

    // When the timer runs out, what has been received goes with two bytes of status. Those without anything received,
    // which the driver drops, are left out mostly: they would be most of the machine's work.
    void deliverByTimer(Time now)
    {
        if (now < nextPacket_) return;
        nextPacket_ = packetAfter(now + 1ns);
        if (inputs_.empty()) return;
        chip_.setCts(line_.cts(now));
        Bytes packet = chip_.modemStatus();
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
    std::optional<bool> ctsTold_;
    Time nextPacket_{};
};
} // namespace

int main(int count, char** arguments)
{
    const bool isComplete = count == 2 + Row::arguments;
    const auto row = isComplete ? Row::from(arguments + 2) : std::nullopt;
    const Kind* kind = isComplete ? Kind::named(arguments[1]) : nullptr;
    if (!row || kind == nullptr) {
        std::cerr << "Usage: adapter KIND " << Row::usage << '\n';
        return 2;
    }
    std::signal(SIGTERM, [](int) { stopped = 1; });
    Control control(*row);
    try {
        Adapter(*kind, control, *row).run();
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 2;
    }
    std::cout << control.report() << std::endl;
    return control.isContent() ? 0 : 1;
}
