// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class QDropEvent;
class QWidget;

/// Takes one program file that is dropped on a widget.
class ProgramDrop : public QObject
{
    Q_OBJECT
public:
    /// A drop is accepted as long as `openButton` is enabled. Becomes a child of `target`.
    ProgramDrop(QWidget* target, const QWidget* openButton);

Q_SIGNALS:
    void dropped(const QString& path);
    /// A file that is accepted is held over the widget, or not any more.
    void hovering(bool isHeld);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QString droppedFile(const QDropEvent& event) const;

    const QWidget& openButton_;
};
