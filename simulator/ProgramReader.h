// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "simulator/ExpectedFraming.h"

namespace cncsim
{
struct FramedProgram {
    bool hasTrailer = false;
    std::string program; ///< what stands between header and trailer
    std::string problem; ///< what is wrong with the framing; empty when it is right so far
};

/// Reads a program byte by byte as a control of that type does, and says what is wrong with its framing.
class ProgramReader
{
public:
    explicit ProgramReader(ExpectedFraming framing);

    /// One byte, without parity. True when it ends the program: call judge(), then next().
    bool take(char byte);
    FramedProgram judge() const;
    /// The next byte begins another program.
    void next() { bytes_.clear(); }

    /// Whether a program has a visible end; otherwise only silence ends it.
    bool hasVisibleEnd() const { return !trailer_.empty(); }
    bool isEmpty() const { return bytes_.empty(); }

private:
    std::string headerProblem() const;
    std::string bodyProblem(const std::string& program) const;

    ExpectedFraming framing_;
    std::string header_;
    std::string trailer_;
    std::string bytes_; // of the program that is coming in, framing included
};
} // namespace cncsim
