// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/LineLamps.h"

#include "serial/serialPort.h"
#include "widgets/CompactRow.h"
#include "widgets/TextLook.h"

#include <QHBoxLayout>
#include <QLabel>

#include <algorithm>

namespace
{
constexpr int askInterval = 250;     // ms
constexpr int gap = 8;               // pixels between lamps
constexpr int enoughCharacters = 40; // of a longer text in the row: a port's lasting name is shortened for the lamps
} // namespace

LineLamps::LineLamps(QWidget* row) : QWidget(row)
{
    auto* lamps = new QHBoxLayout(this);
    lamps->setContentsMargins(0, 0, 0, 0);
    lamps->setSpacing(gap);
    for (std::size_t at = 0; at < modemLines.size(); ++at) {
        const QString name = QString::fromLatin1(modemLines[at].name);
        lamps_[at] = new QLabel(this);
        lamps_[at]->setObjectName(QStringLiteral("lamp") + name);
        lamps_[at]->setTextFormat(Qt::PlainText);
        lamps_[at]->hide();
        TextLook::dim(*lamps_[at]);
        lamps->addWidget(lamps_[at]);
    }
    new CompactRow(
        *row, [this] { return rowWidth(); }, [this](bool isCompact) { setHasRoom(!isCompact); });
    tmrAsk_.setInterval(askInterval);
    connect(&tmrAsk_, &QTimer::timeout, this, [this] {
        if (port_) port_->askModemLines();
    });
}

void LineLamps::watch(serialPort& port)
{
    if (port_) disconnect(port_, nullptr, this, nullptr);
    port_ = &port;
    connect(port_, &serialPort::modemLinesRead, this, &LineLamps::showLines);
    mayHaveLines_ = true;
    askOrRest();
}

void LineLamps::setHasRoom(bool hasRoom)
{
    if (hasRoom == hasRoom_) return;
    hasRoom_ = hasRoom;
    showLamps();
    askOrRest();
}

// Of all that the row has to show.
int LineLamps::rowWidth() const
{
    const auto* row = parentWidget()->layout();
    const auto margins = row->contentsMargins();
    const int longest = enoughCharacters * fontMetrics().averageCharWidth();
    int width = margins.left() + margins.right() + (row->count() - 1) * row->spacing();
    for (int at = 0; at < row->count(); ++at)
        if (const auto* widget = row->itemAt(at)->widget(); widget && widget != this)
            width += std::min(widget->sizeHint().width(), longest);
    for (const auto* lamp : lamps_)
        width += lamp->sizeHint().width() + gap;
    return width;
}

void LineLamps::showLines(const std::optional<ModemLines>& lines)
{
    mayHaveLines_ = lines.has_value();
    askOrRest();
    if (lines == shown_) return;
    shown_ = lines;
    for (std::size_t at = 0; lines && at < modemLines.size(); ++at) {
        const auto& line = modemLines[at];
        const bool isOn = (*lines).*line.isOn;
        const QString name = QString::fromLatin1(line.name), meaning = QString::fromLatin1(line.meaning);
        const QString state = isOn ? QStringLiteral("on") : QStringLiteral("off");
        lamps_[at]->setText((isOn ? QStringLiteral("\u25CF ") : QStringLiteral("\u25CB ")) + name);
        lamps_[at]->setToolTip(QStringLiteral("%1: %2. Now %3.").arg(name, meaning, state));
        lamps_[at]->setAccessibleName(QStringLiteral("%1 %2").arg(name, state));
        lamps_[at]->setAccessibleDescription(meaning);
    }
    setHasRoom(parentWidget()->width() >= rowWidth());
    showLamps();
}

void LineLamps::showLamps()
{
    for (auto* lamp : lamps_)
        lamp->setHidden(!shown_ || !hasRoom_);
}

void LineLamps::askOrRest()
{
    const bool isSeen = isVisible() && (hasRoom_ || !shown_); // how much room they need is not known before
    if (!mayHaveLines_ || !isSeen) return tmrAsk_.stop();
    if (!tmrAsk_.isActive()) tmrAsk_.start();
}

void LineLamps::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    askOrRest();
}

void LineLamps::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    askOrRest();
}
