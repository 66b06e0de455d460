// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulator/ProgramReader.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace cncsim
{
namespace
{
constexpr std::size_t leaderLength = 20; // NULs, the blank tape before a program
const std::string leader(leaderLength, '\0');
constexpr char tapeStart = 18; // DC2
constexpr char tapeStop = 20;  // DC4
const std::string tapeCodes{'\0', tapeStart, tapeStop};

std::pair<std::string, std::string> headerAndTrailer(const ExpectedFraming& framing)
{
    switch (framing.type) {
    case ControlKind::Fanuc:
        return {leader + "%" + framing.eob, "%" + framing.eob};
    case ControlKind::Okuma:
        // A second leader comes before the first line, once for each program.
        return {leader + tapeStart + std::string(1, '\0') + leader, leader + tapeStop + std::string(5, '\0')};
    case ControlKind::Plain:
        break;
    }
    return {framing.sot, framing.eot};
}
} // namespace

ProgramReader::ProgramReader(ExpectedFraming framing) : framing_(std::move(framing))
{
    std::tie(header_, trailer_) = headerAndTrailer(framing_);
}

bool ProgramReader::take(char byte)
{
    bytes_.push_back(byte);
    return hasVisibleEnd() && byte == trailer_.back() && bytes_.size() >= header_.size() + trailer_.size() &&
           bytes_.ends_with(trailer_);
}

FramedProgram ProgramReader::judge() const
{
    FramedProgram result;
    result.hasTrailer = hasVisibleEnd() && bytes_.ends_with(trailer_);
    result.problem = headerProblem();
    if (!result.problem.empty() || bytes_.size() < header_.size()) return result;
    result.program = bytes_.substr(header_.size());
    if (!result.hasTrailer) return result;
    result.program.resize(result.program.size() - std::min(result.program.size(), trailer_.size()));
    result.problem = bodyProblem(result.program);
    return result;
}

std::string ProgramReader::headerProblem() const
{
    const std::size_t length = std::min(bytes_.size(), header_.size());
    // A program without a visible end ends with silence, even inside the start string.
    const bool isCut = !hasVisibleEnd() && length < header_.size();
    if (!isCut && bytes_.compare(0, length, header_, 0, length) == 0) return {};
    if (framing_.type == ControlKind::Plain) return "the start string is missing";
    const std::size_t nulls = std::min(bytes_.find_first_not_of('\0'), bytes_.size());
    if (nulls != leaderLength) return "the leader has " + std::to_string(nulls) + " NULs, not 20";
    if (framing_.type == ControlKind::Fanuc) return "no % and end of block after the leader";
    if (bytes_[leaderLength] != tapeStart) return "no tape start (DC2) after the leader";
    return "no NUL and leader of 20 NULs between tape start and first line";
}

std::string ProgramReader::bodyProblem(const std::string& program) const
{
    if (framing_.type == ControlKind::Fanuc && program.find('%') != std::string::npos) return "a % inside the program";
    if (framing_.type == ControlKind::Okuma && program.find_first_of(tapeCodes) != std::string::npos)
        return "a tape code (NUL, DC2 or DC4) inside the program";
    return {};
}
} // namespace cncsim
