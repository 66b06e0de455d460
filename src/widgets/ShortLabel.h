// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLabel>

/// One line of text that is shortened when it does not fit; its tool tip then has the whole text, unless it has been
/// given another. text() is always the whole, for screen readers too.
class ShortLabel : public QLabel
{
    Q_OBJECT
    Q_PROPERTY(Qt::TextElideMode elideMode MEMBER elideMode_)
    Q_PROPERTY(int leastCharacters MEMBER least_) // with room for fewer of a longer text, it shows none
public:
    using QLabel::QLabel;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    QString shownText() const;

    Qt::TextElideMode elideMode_ = Qt::ElideRight;
    int least_ = 0;
};
