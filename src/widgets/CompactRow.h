// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <functional>

/// Arranges a row of a window more tightly while it has less room than it needs, so that the row never asks for more
/// than there is. Owned by the row, whose own width must not depend on its contents (size policy Ignored).
class CompactRow : public QObject
{
    Q_OBJECT
public:
    /// `needed`: pixels that the row takes when it is arranged wide, however it is arranged now.
    CompactRow(QWidget& row, std::function<int()> needed, std::function<void(bool isCompact)> arrange);

    /// A row of tool buttons, which show their icons alone where the others, `characters` wide, would not have room.
    static void ofTools(QWidget& row, int characters);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void check();

    QWidget& row_;
    std::function<int()> needed_;
    std::function<void(bool)> arrange_;
};
