// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>
#include <QVarLengthArray>

#include <array>

/// One line of a program, taken apart: its words, without comments. Reads lower case as upper case and needs no blanks
/// between the words. Everything points into the line and is valid as long as that is; reuse one for many lines.
class Block
{
public:
    enum class Form {
        Number,     ///< X-10.5
        Expression, ///< X#101, X[#1+2], X=VC1: its value is not in the program
        Missing,    ///< X
        Malformed,  ///< X1.2.3
    };
    struct Word {
        char letter = 0; ///< upper case
        Form form = Form::Missing;
        bool afterComma = false; ///< ",R2.": a corner, not the word R
        QByteArrayView number;   ///< as written, its sign included
        QByteArrayView text;     ///< the whole word
    };
    /// More than one letter: GOTO100, NLAP1, CALL, SB=400.
    struct Name {
        QByteArrayView text;  ///< without the value
        QByteArrayView value; ///< what follows "=", or nothing
    };

    void read(QByteArrayView line);

    const auto& words() const { return words_; }
    const auto& names() const { return names_; }
    const auto& strays() const { return strays_; }            ///< what belongs to no word
    bool isSkippable() const { return isSkippable_; }         ///< begins with "/": the operator's switch decides
    bool isFileHead() const { return isFileHead_; }           ///< "$NAME.MIN%"
    QByteArrayView assignment() const { return assignment_; } ///< "#100=5", or nothing
    bool hasOpenComment() const { return openComment_ >= 0; }
    qsizetype openComment() const { return openComment_; } ///< where the unclosed "(" stands, or -1
    bool isEmpty() const { return words_.isEmpty() && names_.isEmpty() && strays_.isEmpty() && assignment_.isEmpty(); }

    const Word* find(char letter) const;      ///< the last word with that letter, or none
    bool hasName(QByteArrayView start) const; ///< a name that begins so, in capitals

private:
    void clear();
    void add(const Word& word);
    void readItem();
    void readComment();
    void readName();
    void readWord();
    void readValue();
    void readSetValue();
    void readBrackets();
    void readStray();
    void skipBlanks();
    char peek(qsizetype ahead = 0) const { return at_ + ahead < line_.size() ? line_[at_ + ahead] : '\0'; }
    QByteArrayView since(qsizetype begin) const { return line_.sliced(begin, at_ - begin); }

    QVarLengthArray<Word, 16> words_;
    std::array<qsizetype, 26> last_{}; // place of the last word with a letter, from 1
    QVarLengthArray<Name, 2> names_;
    QVarLengthArray<QByteArrayView, 2> strays_;
    QByteArrayView assignment_;
    bool isSkippable_ = false;
    bool isFileHead_ = false;
    bool afterComma_ = false;
    qsizetype openComment_ = -1;
    QByteArrayView line_;
    qsizetype at_ = 0;
};
