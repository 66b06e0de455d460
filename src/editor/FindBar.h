// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include <memory>

namespace Ui
{
class FindBar;
}

/// The bar below a program in which the operator types what to find. Knows nothing of the program: it asks, and is
/// told the outcome.
class FindBar : public QWidget
{
    Q_OBJECT
public:
    enum class Outcome { None, Found, Wrapped, NotFound };

    explicit FindBar(QWidget* parent = nullptr);
    ~FindBar() override;

    QString text() const;
    /// Shows the bar with its text selected, ready to be typed over. An empty `text` keeps what was there.
    void open(const QString& text);
    void showOutcome(Outcome outcome);

Q_SIGNALS:
    void textEdited();
    void nextWanted();
    void previousWanted();
    void closeWanted();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    std::unique_ptr<Ui::FindBar> ui;
    Outcome outcome_ = Outcome::None;
};
