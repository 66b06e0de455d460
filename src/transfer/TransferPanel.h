// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "transfer/TransferStatus.h"

#include <QObject>
#include <QString>

#include <functional>

class QWidget;
namespace Ui
{
class viewTX;
}

/// The labels, pictures, buttons and boxes of a transfer view. Shows what it is given and decides nothing. Main thread
/// only.
class TransferPanel : public QObject
{
    Q_OBJECT
public:
    /// Of the controls on `view`; both outlive this object.
    TransferPanel(QWidget& view, Ui::viewTX& ui);

    void setUp();

    void showMode(bool sends);
    /// The line as a short summary, and in words.
    void showLine(const QString& summary, const QString& line);
    void showProgramPath(const QString& path);
    /// Whether the program is saved, beside its state.
    void showSaved(const QString& note);
    void showState(const QString& headline, const QString& details);
    void showStateImage(const QString& image);

    /// Stop in the place of Send and Rewind. From Send, the keyboard focus moves to Stop.
    void showRunning(bool isRunning);
    /// Moves the focus to where the operator goes on: no stray key there ends anything or changes a text.
    void takeFocus();
    /// "Send from here", as a button, in the menu and by its keys.
    void offerRestart(bool isOffered);
    /// Whether the text is locked by the operator; a running transfer locks it in any case.
    void showLock(bool isLocked, bool isRunning);

    /// Shown while the state waits for the control, hidden in every other. "Send now" is offered if `canSendNow`.
    void showWaitBox(TransferState state, bool canSendNow);
    void hideWaitBox();
    /// Borrows the wait box to offer "Send on" while the control has held the line for very long; afterwards it shows
    /// what belongs to `state` again.
    void offerSendOn(bool isOffered, TransferState state);
    /// Borrows the wait box to tell that a file is being converted: a large one keeps the event loop busy.
    void whileConverting(const std::function<void()>& convert, bool canSendNow);

    void setProgressHidden(bool isHidden);
    /// 100 fills the bar; a percentage may be larger or not finite.
    void showPercent(double percent);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void setUpFonts();
    void setUpRows();
    void fitHeight();
    bool sendsByEnter(const QEvent& event) const;

    QWidget& view_;
    Ui::viewTX& ui_;
    double percent_ = 0;
    bool offersSendOn_ = false;
};
