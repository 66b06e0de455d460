// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/ChildView.h"
#include "config/MachineRecord.h"

#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

/// What all parts of the program share: the machine list, its storage, conversions and the message box.
/// Main thread only.
class g
{
public:
    using McIcons = QList<std::shared_ptr<MachineRecord>>;
    using McChildViews = QList<std::shared_ptr<ChildView>>;

    // The machine list. The two lists are parallel; position 0 holds a placeholder that is never shown or saved.
    static McIcons mcIcons;
    static McChildViews mcChildViews;

    /// How a new entry of each list is made. The shell registers its icons and child views here.
    static std::function<std::shared_ptr<MachineRecord>()> makeMcIcon;
    static std::function<std::shared_ptr<ChildView>()> makeMcChildView;

    /// Fills both lists, expected empty, from the stored settings; without any there is one machine "CNC1".
    static void readAllMcSettings();
    /// Stores the whole machine list. Call after every change.
    static void saveAllMcSettings();
    /// Stores the programs opened last, which saveAllMcSettings does, too.
    static void saveRecentPrograms();
    /// Stores how machines save by themselves what comes, which saveAllMcSettings does, too.
    static void saveReceiveToFiles();

    // --- Conversions -------------------------------------------------------------------------------------------
    /// Wire bytes of a text: CR, LF and codes below 128 as they are, any other character as "?" (63).
    static QByteArray getBytes(const QString& text);
    /// One character per byte, the byte's value being its code. Nothing is dropped or translated.
    static QString getString(const QByteArray& bytes);
    /// The text of the one character with that code. An invalid code ends the program: callers pass byte codes.
    static QString AsciiChar(qint64 code);
    /// Decimal integer: optional sign and digits, nothing else. Any other text gives 0.
    static qint64 iVal(const QString& text);
    /// That many NUL characters, for tape leaders and trailers. Below 1: empty.
    static QString nulls(qint64 count);
    /// End-of-block notation to characters: "CR" and "LF" become the control characters, the rest stays.
    static QString getEOB(const QString& notation);

    // --- Files -------------------------------------------------------------------------------------------------
    static bool fileExists(const QString& path);
    /// The whole file, one character per byte, or nothing when it cannot be read.
    static std::optional<QString> fileRead(const QString& path);
    /// Writes the text as ASCII. False on any error, a character beyond ASCII included.
    static bool fileWrite(const QString& path, const QString& content);

    // --- Operator ----------------------------------------------------------------------------------------------
    /// A modal message. True exactly when the first button was chosen; without a second label there is one button.
    /// Carriage returns in the text show as line breaks.
    static bool msgBox(const QString& text, const QString& sBtnOne, const QString& sBtnTwo);
    /// Shows a message to the operator, like msgBox. The shell registers its own here; without one it is only logged.
    static std::function<bool(const QString& text, const QString& sBtnOne, const QString& sBtnTwo)> showMessage;
};
