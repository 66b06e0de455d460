// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "program/Block.h"
#include "program/ProgramState.h"

#include <QSet>

#include <atomic>
#include <optional>

/// Reads a program line by line and keeps what is in force. Takes the same time for each line; belongs to one thread.
/// What is not certain is remarked on, never guessed.
class StateReader
{
public:
    explicit StateReader(Control control) { state_.control = control; }

    /// The next line, without its end.
    void take(QByteArrayView line);
    /// What is in force above the next line.
    ProgramState state() const;

    /// What is in force above a line; nothing if `cancelled` turned true meanwhile. May run on any thread; reads until
    /// the line or the end of the text.
    static std::optional<ProgramState> above(qsizetype line, QByteArrayView text, Control control,
                                             const std::atomic<bool>* cancelled = nullptr);

private:
    // What the codes of one block ask for.
    struct Asked {
        unsigned actions = 0; // a bit for each Action
        QByteArrayView cause; // the code behind the last of them that is not Modal
        bool has(Action action) const { return (actions & (1U << static_cast<unsigned>(action))) != 0; }
        bool hasPositions() const;
    };

    // StateReader.cpp: the order of things in a block
    void noteFlow();
    void noteName(const Block::Name& name);
    void noteJump();
    void noteLanding();
    void disturb(QByteArrayView cause);
    void beginAnotherProgram();
    bool isInContour();
    void endBlock(const Asked& asked);
    void remark(RemarkKind kind, QByteArrayView text) { remarks_.add(kind, text, line_); }

    // StateReader_codes.cpp: G and M
    Asked readCodes();
    void readCode(const Block::Word& word, Asked& asked);
    void setModal(ModalGroup group, const Block::Word& word);
    void setWorkOffset(const Block::Word& code, const Block::Word* number);
    void setZero(const Asked& asked);
    void setTransform(const Asked& asked);
    void startCycle(const Asked& asked);
    void endCycle();

    // StateReader_words.cpp: all other words
    void readValues(const Asked& asked);
    void readValue(const Block::Word& word, const Asked& asked);
    void readAxes(const Asked& asked);
    void moveAxis(int axis, const Block::Word& word, bool isIncremental, const Asked& asked);
    void runCycle(const Asked& asked);
    void returnFromCycle();
    void prepareTool(const Block::Word& word, const Asked& asked);
    void changeTool(const Asked& asked);
    void noteClearPlace(const Asked& asked);
    InForce said(const Block::Word& word) const;
    bool say(InForce& into, const Block::Word& word) const;
    InForce& modal(ModalGroup group) { return state_.modal[static_cast<std::size_t>(group)]; }

    ProgramState state_; // without what state() works out
    Axes axes_;
    Remarks remarks_;
    Block block_;
    qsizetype line_ = 0;
    bool isIncremental_ = false;
    bool isRapid_ = false;
    bool hasEnded_ = false;
    bool isTurningCycle_ = false;
    bool isToolDoubtful_ = false;
    qsizetype disturbedLine_ = 0;   // of the last call, jump or landing: what was said before is not sure
    QSet<QByteArray> landings_;     // numbers that jumps further up lead to
    bool hasWorkedOutJump_ = false; // one that may lead to any number
    std::array<InForce, 26> cycleWords_;
    qsizetype contourCall_ = 0;
    int contourFirst_ = -1; // block numbers
    int contourLast_ = -1;
    bool isInContour_ = false;
};
