// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "simulator/InputBuffer.h"
#include "simulator/ProgramReader.h"
#include "simulator/Pty.h"
#include "simulator/XModemReceiver.h"
#include "simulator/XModemSender.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>

namespace cncsim
{
enum class Protocol { Text, XModemReceive, XModemSend };
enum class StartSignal { None, OnRequest, AfterDelay };

struct Settings {
    Protocol protocol = Protocol::Text;
    ExpectedFraming framing = {}; ///< checked on text that arrives
    bool evenParity = false;      ///< 7 bits with even parity, checked on every byte; XModem is always 8 bits
    bool xonXoff = false;         ///< holds the line while its buffer is full, and stops punching on XOFF
    double readRate = 0;          ///< bytes a second that the control works off; 0 is no limit
    std::size_t highMark = 512;   ///< bytes in the buffer that make it send XOFF
    std::size_t lowMark = 128;    ///< bytes in the buffer that make it send XON
    /// Bytes that it still takes after XOFF; more are lost. A pty still delivers what is in its queue (below 20 KB),
    /// where a real driver would hold it back, so the room must be larger than a real control's.
    std::size_t overrunRoom = 32768;
    StartSignal start = StartSignal::None;
    int startDelayMs = 1000; ///< AfterDelay: DC1 at this interval until bytes come
    int silenceMs = 1000;    ///< silence after which a program without a visible end counts as complete
    XModemSettings xmodem = {};
    std::string punchProgram = {}; ///< bytes that it punches out, or sends in XModem blocks, as they are
    double punchRate = 0;          ///< bytes a second; 0 is as fast as the line takes them
    int punchDelayMs = -1;         ///< starts to punch after that long; if negative, only when punch() is called
    std::string linkPath = {};     ///< a symbolic link to the device, removed at the end
    std::string outputFile = {};   ///< what arrived (with XModem the data), written when complete and at the end
};

struct Report {
    std::string received;     ///< every byte since the start or clear(), parity removed
    std::string program;      ///< the last program without its framing; with XModem the data and its padding
    std::size_t programs = 0; ///< complete programs taken in, or sent by XModem
    bool isComplete = false;  ///< a program has ended and nothing has come since
    std::size_t parityErrors = 0;
    std::size_t lostBytes = 0;
    std::size_t xoffCount = 0;
    std::size_t mostAfterXoff = 0;  ///< the most bytes that still came after one XOFF
    std::size_t punchedBytes = 0;   ///< bytes punched out so far
    bool isPunched = false;         ///< all of punchProgram has gone
    std::size_t blocks = 0;         ///< XModem blocks taken in or acknowledged
    std::size_t repeatedBlocks = 0; ///< XModem blocks received or sent again
    std::string problem;            ///< all that was wrong; empty when all is right

    /// One line for people to read.
    std::string line() const;
};

/// A CNC control at the far end of a serial line. Runs on a thread of its own from construction to destruction; the
/// functions may be called from any thread.
class SimulatedControl
{
public:
    /// Throws std::runtime_error when there is no pseudo-terminal or the link cannot be made.
    explicit SimulatedControl(Settings settings);
    ~SimulatedControl();
    SimulatedControl(const SimulatedControl&) = delete;
    SimulatedControl& operator=(const SimulatedControl&) = delete;

    /// The serial device that the DNC program opens.
    const std::string& devicePath() const { return pty_.devicePath(); }

    /// The operator presses the control's start button: DC1.
    void pressStart();
    /// Holds the line (XOFF) however empty its buffer is, until releaseLine().
    void holdLine();
    void releaseLine();
    /// Punches the program out, from its first byte.
    void punch();
    /// Sends bytes, with parity when the line has it. Waits up to a second for room.
    void send(const std::string& bytes);

    /// A copy of all that is known, the bytes included; to poll, use isComplete() or receivedBytes().
    Report report() const;
    bool isComplete() const;
    std::size_t receivedBytes() const;
    /// Waits for a complete program, at most that long; false when none came.
    bool waitComplete(int timeoutMs) const;
    /// Forgets what has arrived, a punch under way and all counts; starts anew.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    static constexpr std::size_t pieceSize = 4096; // bytes read or punched at a time
    static constexpr char xon = 17;                // DC1, also the start signal
    static constexpr char xoff = 19;               // DC3

    /// What happens on the line; guarded by mutex_.
    struct State {
        explicit State(const Settings& settings);
        Report report;
        std::string pastProblem; // of the programs before this one
        ProgramReader reader;
        InputBuffer buffer;
        XModemReceiver receiver;
        XModemSender sender;
        bool isJudged = true; // nothing has come since the framing was judged
        bool isPunching = false;
        bool isPunchHeld = false;
        Clock::time_point begin = Clock::now();
        Clock::time_point lastByte = Clock::now();
        Clock::time_point lastWork = Clock::now();
        Clock::time_point lastStart = Clock::now();
        Clock::time_point lastPunch = Clock::now();
        double punchCredit = 0; // bytes that may go out by now
    };

    void run();
    // Called with mutex_ held, all below.
    void takeText(const std::string& bytes);
    void takeByte(char raw);
    void programEnded();
    std::string problems(const std::string& ofThisProgram) const;
    void judgeSilence(Clock::time_point now);
    void workOff(Clock::time_point now);
    void giveStartSignal(Clock::time_point now);
    void punchOut(Clock::time_point now);
    void runXModem(const std::string& bytes, Clock::time_point now);
    void writeOutput() const;
    std::string marked(std::string bytes) const;
    void reply(char code);

    const Settings settings_;
    Pty pty_;
    mutable std::mutex mutex_; // guards state_
    State state_;
    std::atomic<bool> stopping_ = false;
    std::thread thread_;
};
} // namespace cncsim
