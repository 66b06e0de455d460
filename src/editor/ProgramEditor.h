// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <Qsci/qsciscintilla.h>

#include <QByteArray>
#include <QString>
#include <QTimer>

#include <optional>
#include <string_view>

class GCodeColouring;

/// The editor that holds the NC program. Positions and lengths are always in bytes of its UTF-8 text; the editor
/// looks them up in its own index, so nothing here takes longer in a long program. Look and keys are in
/// ProgramEditor_look.cpp, what the operator does in ProgramEditor_input.cpp.
class ProgramEditor : public QsciScintilla
{
    Q_OBJECT
public:
    /// A line, its line end included: [start, end).
    struct Line {
        qsizetype start = 0;
        qsizetype end = 0;
    };

    explicit ProgramEditor(QWidget* parent = nullptr);

    qsizetype textSize() const;
    qsizetype caret() const;
    Line lineAt(qsizetype position) const;
    /// Lines are numbered from 1, as in the margin.
    int lineNumber(qsizetype position) const;
    Line lineNumbered(int number) const;
    QString lineText(Line line) const;
    QByteArray wholeText() const;
    /// The text of the range, not copied; valid until the text changes.
    std::string_view view(Line range) const;
    Line selection() const;
    qsizetype firstVisible() const;

    /// Replaces the text with a program file's bytes, line ends converted and without a byte order mark. The caret goes
    /// to the top.
    void setProgram(const QByteArray& fileBytes);
    /// Empties the text; undo brings it back.
    /// Replaces the text with another editor's. The caret goes to the top.
    void copyProgram(const ProgramEditor& other);
    void clearProgram();
    /// Adds received bytes at the end, one character each; the view follows unless the operator scrolled away. Undo
    /// leaves them alone.
    void appendReceived(const QByteArray& bytes);

    /// There is text that exists only here: typed, changed or received since setProgram or setSaved. Changes that were
    /// undone do not count.
    bool isUnsaved() const;
    /// The text is now kept elsewhere, as it is.
    void setSaved();
    bool hasUnsavedBytes() const { return hasUnsavedBytes_; } ///< that were received
    /// What was received is, but not what the operator has changed.
    void setReceivedSaved() { hasUnsavedBytes_ = false; }

    void moveCaretTo(qsizetype position);
    /// Marks the line as the one going out and puts the caret after it, where the next line begins. When lines follow
    /// each other fast, marks only the latest one every so often.
    void markLineOut(Line line);
    void clearLineOut();

    /// A program with an extremely long line is neither shown nor editable; it is sent and saved like any other.
    bool isShown() const;

    /// While a transfer owns the caret, finding and going to a line only show the place.
    void setCaretHeld(bool held);
    bool isCaretHeld() const { return caretHeld_; }
    QSize sizeHint() const override;
    /// Selects the place; with the caret held, scrolls there and marks it, and stays there while lines go out.
    void showPlace(Line place);
    /// Scrolls there and marks the place; the caret stays where it is.
    void markPlace(Line place);
    /// The place that is marked, empty without one.
    Line shownPlace() const { return shownPlace_; }
    /// Takes the mark off and follows the transfer again.
    void leavePlace();

    // Called by the context menu; count as the operator's changes, like keys.
    void undo() override;
    void redo() override;
    void cut() override;
    void paste() override;
    void selectAll(bool select = true) override;

Q_SIGNALS:
    /// The operator moved the caret or changed the text.
    void operatorTouched();
    /// The mark of the line going out has moved.
    void lineOutShown();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    /// Tab always moves the focus: a tab has no place in a block, and an operator without a mouse must get out again.
    bool focusNextPrevChild(bool next) override { return QAbstractScrollArea::focusNextPrevChild(next); }

private:
    static constexpr int lineOutArrow = 0; // markers
    static constexpr int lineOutBackground = 1;
    static constexpr int placeIndicator = 8; // the first that is not reserved for lexers
    static constexpr int linesAhead = 4;     // that the operator sees of what comes next

    void setUpLook();
    bool isEndInSight(qsizetype lines) const;
    void setUpKeys();
    void paintNotice();
    void showLineOut();
    void bringLineOutInSight(bool isFirst);
    void select(Line line);
    void tellCaret(int updated);
    void fitLineNumbers();
    qsizetype scintilla(unsigned message, qsizetype first = 0, qsizetype second = 0) const;
    // Lets Scintilla handle an operator's event; emits operatorTouched if that moved the caret or changed the text.
    template <typename Handle> void watch(Handle handle);
    enum class Undo { Records, Ignores, StartsAnew };
    // Changes the text even when it is locked; says what the change means to undo.
    template <typename Change> void changeText(Undo undo, Change change);

    GCodeColouring* colouring_;
    int lineOut_ = -1;
    bool caretHeld_ = false;
    bool hasUnsavedBytes_ = false; // received; the library knows only of what it records for undo
    Line shownPlace_;
    std::optional<Line> lineToMark_;
    QTimer markPause_;
};
