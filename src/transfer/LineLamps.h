// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "serial/ModemLines.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <array>

class QLabel;
class serialPort;

/// The modem lines of an open port as lamps at the end of a transfer view's heading: a filled dot is on, a hollow one
/// off. Shows nothing for a port without such lines, nor where the rest of the heading needs the room; asks for them
/// only while it is on the screen. Main thread only.
class LineLamps : public QWidget
{
    Q_OBJECT
public:
    /// In a row of which it is a part.
    explicit LineLamps(QWidget* row);

    /// Follows that port, which has just been opened. It may go before this does.
    void watch(serialPort& port);
    /// Never in the way of what needs room more.
    QSize minimumSizeHint() const override { return {0, 0}; }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void showLines(const std::optional<ModemLines>& lines);
    void setHasRoom(bool hasRoom);
    int rowWidth() const;
    void showLamps();
    void askOrRest();

    std::array<QLabel*, modemLines.size()> lamps_{};
    QPointer<serialPort> port_;
    std::optional<ModemLines> shown_;
    bool mayHaveLines_ = false; // the port has not said that it has none
    bool hasRoom_ = false;
    QTimer tmrAsk_;
};
