// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ProgramChecker.h"

#include "editor/ProgramEditor.h"

#include <algorithm>
#include <utility>

namespace
{
constexpr int pauseInTyping = 400;       // ms
constexpr int longCheck = 1000;          // ms after the change
constexpr qsizetype pieceSize = 4 << 20; // bytes copied at a time, so that a huge program holds nobody up
} // namespace

ProgramChecker::ProgramChecker(const ProgramEditor& editor, QObject* parent) : QObject(parent), editor_(editor)
{
    tmrCopy_.setSingleShot(true);
    tmrSlow_.setSingleShot(true);
    connect(&tmrCopy_, &QTimer::timeout, this, &ProgramChecker::copyPiece);
    connect(&tmrSlow_, &QTimer::timeout, this, &ProgramChecker::outOfDate);
    connect(&editor, &QsciScintilla::textChanged, this, &ProgramChecker::checkSoon);
    checkSoon();
}

void ProgramChecker::setRules(const CheckRules& rules)
{
    if (rules == rules_) return;
    rules_ = rules;
    checkSoon();
}

void ProgramChecker::setPaused(bool isPaused)
{
    if (isPaused == std::exchange(isPaused_, isPaused)) return;
    if (isDue_) checkSoon();
}

void ProgramChecker::checkSoon()
{
    work_.cancel();
    copy_ = {};
    isDue_ = true;
    tmrCopy_.stop();
    tmrSlow_.stop();
    if (isPaused_) return;
    tmrCopy_.start(pauseInTyping);
    tmrSlow_.start(longCheck);
}

void ProgramChecker::copyPiece()
{
    const qsizetype size = editor_.textSize();
    if (copy_.isEmpty()) copy_.reserve(size);
    const auto piece = editor_.view({copy_.size(), std::min(size, copy_.size() + pieceSize)});
    copy_.append(piece.data(), static_cast<qsizetype>(piece.size()));
    if (copy_.size() < size) return tmrCopy_.start(0);
    work_.start([text = std::exchange(copy_, {}), rules = rules_](
                    const std::atomic<bool>& cancelled) { return ProgramCheck::check(text, rules, &cancelled); },
                [this](const CheckReport& report) { finish(report); });
}

void ProgramChecker::finish(const CheckReport& report)
{
    isDue_ = false;
    tmrSlow_.stop();
    Q_EMIT checked(report);
}
