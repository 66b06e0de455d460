// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulator/SimulatedControl.h"

#include <csignal>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <poll.h>
#include <unistd.h>

namespace
{
volatile std::sig_atomic_t ending = 0;
volatile std::sig_atomic_t buttonPressed = 0;

constexpr const char* help = R"(cncsim - a simulated CNC control on a pseudo-terminal

Receiving a program:
  --type plain|fanuc|okuma   how it has to be framed (plain)
  --eob TEXT                 end of block, with \r and \n (\r\n)
  --sot TEXT, --eot TEXT     start and end strings of a plain control
  --xmodem-receive           by XModem instead
  --rate N                   processes N bytes a second (no limit)
  --start-on-key             gives the start signal (DC1) on Enter or SIGUSR1
  --start-after MS           gives it every MS milliseconds until bytes come

Sending one:
  --punch FILE               punches FILE out on Enter or SIGUSR1
  --punch-after MS           also by itself after MS milliseconds
  --punch-rate N             at N bytes a second (as fast as the line takes them)
  --xmodem-send FILE         sends FILE by XModem when the program asks for it
  --plain-nak                knows NAK as 0x15 only, as 8-bit XModem peers do

Either way by XModem:
  --standard-numbers         counts the blocks to 255 and then 0 (otherwise 1)

The line:
  --even-parity              7 bits with even parity, checked on every byte
  --xon-xoff                 holds the line with XOFF while its buffer is full, stops punching on XOFF

XModem faults at block N (from 1); Enter or SIGUSR1 starts over:
  --nak-block N              refuses a good block once
  --spoil-block N            first sends it with a wrong checksum
  --duplicate-block N        sends it once more after its ACK
  --stall-in-block N         stops inside it until asked again
  --cancel-at-block N        cancels
  --silent-after-block N     goes silent once it is acknowledged

An XModem fault at the end of the program:
  --end-fault FAULT          eot-lost: the first EOT does not arrive
                             eot-refused: the first EOT is answered with NAK
                             ack-lost: the first ACK of EOT does not arrive
                             not-confirmed: none ever does

  --link PATH                makes a symbolic link PATH to the device
  --output FILE              writes what arrived to this file
  --once                     ends after one complete program

Prints the device to set up as the machine's port, then one line for each program.
Ends with 0 when the last program was complete and right, otherwise with 1.
)";

std::string unescaped(const std::string& text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        if (text[i] != '\\' || (next != 'r' && next != 'n')) {
            result += text[i];
            continue;
        }
        result += next == 'r' ? '\r' : '\n';
        ++i;
    }
    return result;
}

cncsim::ControlKind kindNamed(const std::string& name)
{
    if (name == "fanuc") return cncsim::ControlKind::Fanuc;
    if (name == "okuma") return cncsim::ControlKind::Okuma;
    if (name == "plain") return cncsim::ControlKind::Plain;
    throw std::invalid_argument("unknown type " + name);
}

cncsim::EndFault endFaultNamed(const std::string& name)
{
    if (name == "eot-lost") return cncsim::EndFault::EotLost;
    if (name == "eot-refused") return cncsim::EndFault::EotRefused;
    if (name == "ack-lost") return cncsim::EndFault::AckLost;
    if (name == "not-confirmed") return cncsim::EndFault::NotConfirmed;
    throw std::invalid_argument("unknown fault " + name);
}

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Options {
    cncsim::Settings control;
    bool once = false;
    bool wantsHelp = false;
};

using Flags = std::map<std::string, std::function<void()>>;
using BlockFaults = std::map<std::string, std::size_t*>;
using Values = std::map<std::string, std::function<void(const std::string&)>>;

Flags flagsOf(Options& options)
{
    auto& c = options.control;
    return {
        {"--xmodem-receive", [&] { c.protocol = cncsim::Protocol::XModemReceive; }},
        {"--plain-nak", [&] { c.xmodem.plainNakOnly = true; }},
        {"--standard-numbers", [&] { c.xmodem.standardNumbers = true; }},
        {"--even-parity", [&] { c.evenParity = true; }},
        {"--xon-xoff", [&] { c.xonXoff = true; }},
        {"--start-on-key", [&] { c.start = cncsim::StartSignal::OnRequest; }},
        {"--once", [&] { options.once = true; }},
        {"--help", [&] { options.wantsHelp = true; }},
    };
}

BlockFaults blockFaultsOf(cncsim::XModemSettings& xmodem)
{
    return {
        {"--nak-block", &xmodem.nakBlock},
        {"--spoil-block", &xmodem.spoilBlock},
        {"--duplicate-block", &xmodem.duplicateBlock},
        {"--stall-in-block", &xmodem.stallInBlock},
        {"--cancel-at-block", &xmodem.cancelAtBlock},
        {"--silent-after-block", &xmodem.silentAfterBlock},
    };
}

Values valuesOf(cncsim::Settings& c)
{
    return {
        {"--type", [&](const std::string& v) { c.framing.type = kindNamed(v); }},
        {"--eob", [&](const std::string& v) { c.framing.eob = unescaped(v); }},
        {"--sot", [&](const std::string& v) { c.framing.sot = unescaped(v); }},
        {"--eot", [&](const std::string& v) { c.framing.eot = unescaped(v); }},
        {"--rate", [&](const std::string& v) { c.readRate = std::stod(v); }},
        {"--start-after",
         [&](const std::string& v) {
             c.start = cncsim::StartSignal::AfterDelay;
             c.startDelayMs = std::stoi(v);
         }},
        {"--punch", [&](const std::string& v) { c.punchProgram = contentOf(v); }},
        {"--punch-after", [&](const std::string& v) { c.punchDelayMs = std::stoi(v); }},
        {"--punch-rate", [&](const std::string& v) { c.punchRate = std::stod(v); }},
        {"--xmodem-send",
         [&](const std::string& v) {
             c.protocol = cncsim::Protocol::XModemSend;
             c.punchProgram = contentOf(v);
         }},
        {"--end-fault", [&](const std::string& v) { c.xmodem.endFault = endFaultNamed(v); }},
        {"--link", [&](const std::string& v) { c.linkPath = v; }},
        {"--output", [&](const std::string& v) { c.outputFile = v; }},
    };
}

Options parse(int argc, char* argv[])
{
    Options options;
    const Flags flags = flagsOf(options);
    const BlockFaults blockFaults = blockFaultsOf(options.control.xmodem);
    const Values values = valuesOf(options.control);
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        if (const auto flag = flags.find(name); flag != flags.end()) {
            flag->second();
        } else if (const auto value = values.find(name); value != values.end() && i + 1 < argc) {
            value->second(argv[++i]);
        } else if (const auto fault = blockFaults.find(name); fault != blockFaults.end() && i + 1 < argc) {
            *fault->second = std::stoul(argv[++i]);
        } else {
            throw std::invalid_argument("unknown option or missing value: " + name);
        }
    }
    return options;
}

/// The control's one button: it punches the program out when there is one, otherwise it gives the start signal. XModem
/// starts over, even after a cancel.
void press(cncsim::SimulatedControl& control, const Options& options)
{
    if (options.control.protocol != cncsim::Protocol::Text) return control.clear();
    if (options.control.punchProgram.empty()) return control.pressStart();
    const auto report = control.report();
    const bool isPunching = report.punchedBytes > 0 && !report.isPunched;
    if (!isPunching) control.punch(); // never restarts one under way
}

void waitForKey(cncsim::SimulatedControl& control, const Options& options, bool& hasInput)
{
    pollfd key{hasInput ? STDIN_FILENO : -1, POLLIN, 0};
    if (::poll(&key, 1, 20) > 0) {
        char typed = 0;
        hasInput = ::read(STDIN_FILENO, &typed, 1) == 1;
        if (typed == '\n') press(control, options);
    }
    if (buttonPressed) {
        buttonPressed = 0;
        press(control, options);
    }
}

bool isOver(const cncsim::Report& report)
{
    return report.isComplete || report.isPunched;
}

int play(const Options& options)
{
    cncsim::SimulatedControl control(options.control);
    std::cout << "device " << control.devicePath() << std::endl;
    bool wasOver = false;
    bool hasInput = true;
    while (!ending) {
        waitForKey(control, options, hasInput);
        const auto report = control.report();
        if (isOver(report) && !wasOver) {
            std::cout << report.line() << std::endl;
            if (options.once) break;
        }
        wasOver = isOver(report);
    }
    const auto report = control.report();
    if (!isOver(report)) std::cout << report.line() << std::endl;
    return isOver(report) && report.problem.empty() ? 0 : 1;
}
} // namespace

int main(int argc, char* argv[])
{
    std::signal(SIGINT, [](int) { ending = 1; });
    std::signal(SIGTERM, [](int) { ending = 1; });
    std::signal(SIGUSR1, [](int) { buttonPressed = 1; });
    try {
        const Options options = parse(argc, argv);
        if (options.wantsHelp) {
            std::cout << help;
            return 0;
        }
        return play(options);
    } catch (const std::exception& error) {
        std::cerr << "cncsim: " << error.what() << "\n";
        return 2;
    }
}
