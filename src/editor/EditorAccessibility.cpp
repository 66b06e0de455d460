// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/EditorAccessibility.h"

#include "editor/ProgramEditor.h"

#include <QAccessibleWidget>

#include <algorithm>

namespace
{
using Sci = QsciScintillaBase;

// Offsets are UTF-16 units, as everywhere in Qt. The editor keeps an index of them by line.
class EditorInterface : public QAccessibleWidget, public QAccessibleTextInterface
{
public:
    explicit EditorInterface(ProgramEditor* editor) : QAccessibleWidget(editor, QAccessible::EditableText)
    {
        scintilla(Sci::SCI_ALLOCATELINECHARACTERINDEX, Sci::SC_LINECHARACTERINDEX_UTF16);
    }

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QAccessible::State state() const override
    {
        auto state = QAccessibleWidget::state();
        state.selectableText = true;
        state.multiLine = true;
        state.readOnly = editor()->isReadOnly();
        state.editable = !state.readOnly;
        return state;
    }

    int selectionCount() const override { return scintilla(Sci::SCI_GETSELECTIONEMPTY) ? 0 : 1; }
    void selection(int, int* start, int* end) const override
    {
        *start = offset(scintilla(Sci::SCI_GETSELECTIONSTART));
        *end = offset(scintilla(Sci::SCI_GETSELECTIONEND));
    }
    void addSelection(int start, int end) override { setSelection(0, start, end); }
    void removeSelection(int) override { setCursorPosition(cursorPosition()); }
    void setSelection(int, int start, int end) override { editor()->showPlace({position(start), position(end)}); }
    int cursorPosition() const override { return offset(editor()->caret()); }
    void setCursorPosition(int offset) override { setSelection(0, offset, offset); }

    using QAccessibleWidget::text;
    QString text(int start, int end) const override
    {
        const auto from = position(start);
        return editor()->lineText({from, position(end)});
    }
    QString textAtOffset(int at, QAccessible::TextBoundaryType boundary, int* start, int* end) const override
    {
        if (boundary != QAccessible::LineBoundary)
            return QAccessibleTextInterface::textAtOffset(at, boundary, start, end);
        const auto line = editor()->lineAt(position(at)); // by far the most asked for: it must not copy the program
        *start = offset(line.start);
        *end = offset(line.end);
        return editor()->lineText(line);
    }
    int characterCount() const override { return offset(editor()->textSize()); }
    QRect characterRect(int at) const override
    {
        const auto from = position(at);
        const QPoint corner(static_cast<int>(scintilla(Sci::SCI_POINTXFROMPOSITION, 0, from)),
                            static_cast<int>(scintilla(Sci::SCI_POINTYFROMPOSITION, 0, from)));
        const auto next = scintilla(Sci::SCI_POSITIONAFTER, from);
        const int width = static_cast<int>(scintilla(Sci::SCI_POINTXFROMPOSITION, 0, next)) - corner.x();
        return {editor()->viewport()->mapToGlobal(corner),
                QSize(std::max(width, 1), static_cast<int>(scintilla(Sci::SCI_TEXTHEIGHT)))};
    }
    int offsetAtPoint(const QPoint& point) const override
    {
        const QPoint inside = editor()->viewport()->mapFromGlobal(point);
        return offset(scintilla(Sci::SCI_POSITIONFROMPOINT, inside.x(), inside.y()));
    }
    void scrollToSubstring(int start, int end) override
    {
        scintilla(Sci::SCI_SCROLLRANGE, position(end), position(start));
    }
    QString attributes(int at, int* start, int* end) const override
    {
        *start = at;
        *end = characterCount();
        return {};
    }

private:
    ProgramEditor* editor() const { return static_cast<ProgramEditor*>(widget()); }
    qsizetype scintilla(unsigned message, qsizetype first = 0, qsizetype second = 0) const
    {
        return editor()->SendScintilla(message, static_cast<unsigned long>(first), static_cast<long>(second));
    }

    int offset(qsizetype position) const
    {
        const auto line = scintilla(Sci::SCI_LINEFROMPOSITION, position);
        const auto start = scintilla(Sci::SCI_POSITIONFROMLINE, line);
        return static_cast<int>(scintilla(Sci::SCI_INDEXPOSITIONFROMLINE, line, Sci::SC_LINECHARACTERINDEX_UTF16) +
                                scintilla(Sci::SCI_COUNTCODEUNITS, start, position));
    }
    qsizetype position(int offset) const
    {
        if (offset < 0) return editor()->textSize(); // -1 is the end
        const auto line = scintilla(Sci::SCI_LINEFROMINDEXPOSITION, offset, Sci::SC_LINECHARACTERINDEX_UTF16);
        const auto before = scintilla(Sci::SCI_INDEXPOSITIONFROMLINE, line, Sci::SC_LINECHARACTERINDEX_UTF16);
        const auto found =
            scintilla(Sci::SCI_POSITIONRELATIVECODEUNITS, scintilla(Sci::SCI_POSITIONFROMLINE, line), offset - before);
        return found == 0 && offset > 0 ? editor()->textSize() : found;
    }
};

QAccessibleInterface* make(const QString&, QObject* object)
{
    auto* editor = qobject_cast<ProgramEditor*>(object);
    return editor ? new EditorInterface(editor) : nullptr;
}
} // namespace

void EditorAccessibility::install()
{
    [[maybe_unused]] static const bool once = (QAccessible::installFactory(make), true);
}
