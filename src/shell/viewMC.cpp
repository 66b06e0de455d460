// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/viewMC.h"
#include "ui_viewMC.h"

#include "platform/NotificationCenter.h"
#include "resources/Images.h"

#include <QEvent>

#include <algorithm>

namespace
{
constexpr int barSteps = 1000; // the bar itself counts in int, a program may be longer
}

viewMC::viewMC(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::viewMC>())
{
    ui->setupUi(this);
    ui->btnDeleteIcon->setIcon(Images::icon(QStringLiteral("delete")));
    ui->pBar->setRange(0, barSteps);
    connect(ui->btnMC, &QToolButton::clicked, this, &viewMC::btnMC_Click);
    connect(ui->btnDeleteIcon, &QToolButton::clicked, this, &viewMC::btnDeleteIcon_click);
    setPBarHidden(true);
    isActive(false);
    showState();
}

viewMC::~viewMC() = default;

void viewMC::isActive(bool active)
{
    _isActive = active;
    ui->Box->setStyleSheet(active
                               ? QStringLiteral("QFrame#Box { border: 2px solid palette(highlight); "
                                                "border-radius: 6px; background: palette(base); }")
                               : QStringLiteral("QFrame#Box { border: 1px solid palette(mid); border-radius: 6px; }"));
    showState();
}

void viewMC::refresh()
{
    QString port = MCPORT;
    if (port.startsWith(QLatin1String("/dev/"))) port.remove(0, 5);
    if (port.isEmpty()) port = QStringLiteral("no port");
    const QFontMetrics metrics = ui->btnMC->fontMetrics();
    const int room = std::max(40, ui->btnMC->width() - ui->btnMC->iconSize().width() - 16);
    ui->btnMC->setText(metrics.elidedText(MCNAME, Qt::ElideRight, room) + u'\n' +
                       metrics.elidedText(port, Qt::ElideMiddle, room));
    ui->btnMC->setToolTip(QStringLiteral("%1 on %2").arg(MCNAME, MCPORT));
    ui->btnMC->setAccessibleName(QStringLiteral("%1 on %2").arg(MCNAME, port));
    ui->btnDeleteIcon->setAccessibleName(QStringLiteral("Delete %1").arg(MCNAME));
}

void viewMC::btnMC_Click()
{
    NotificationCenter::defaultCenter().post(QStringLiteral("MCIcon_Click"), this, {{QStringLiteral("MC"), MCINDEX}});
}

void viewMC::btnDeleteIcon_click()
{
    NotificationCenter::defaultCenter().post(QStringLiteral("btnDeleteIcon_Click"), this,
                                             {{QStringLiteral("MC"), MCINDEX}});
}

double viewMC::pBarMaximum() const
{
    return maximum_;
}

void viewMC::setPBarMaximum(double maximum)
{
    maximum_ = maximum;
}

void viewMC::setPBarValue(double value)
{
    value_ = value;
    const double share = maximum_ > 0 ? std::clamp(value / maximum_, 0.0, 1.0) : 0;
    ui->pBar->setValue(static_cast<int>(share * barSteps));
    showState();
}

void viewMC::setPBarHidden(bool hidden)
{
    ui->pBar->setHidden(hidden);
}

void viewMC::showActivity(TransferActivity activity)
{
    activity_ = activity;
    showState();
}

// The state is told in words, so that it does not depend on colour.
void viewMC::showState()
{
    QString text;
    QString image = _isActive ? QStringLiteral("machine-active") : QStringLiteral("machine");
    switch (activity_) {
    case TransferActivity::Idle:
        text = QStringLiteral("Idle");
        break;
    case TransferActivity::Waiting:
        text = QStringLiteral("Waiting");
        break;
    case TransferActivity::Sending:
        text = QStringLiteral("Sending %1 %").arg(ui->pBar->value() * 100 / barSteps);
        image = QStringLiteral("machine-transferring");
        break;
    case TransferActivity::Receiving:
        text = QStringLiteral("Receiving");
        image = QStringLiteral("machine-transferring");
        break;
    case TransferActivity::PortLost:
        text = QStringLiteral("Port lost");
        break;
    }
    ui->lblState->setText(text);
    if (ui->btnMC->property("image") == image) return; // painting an SVG anew for every line would cost
    ui->btnMC->setProperty("image", image);
    ui->btnMC->setIcon(Images::icon(image));
}

void viewMC::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    refresh();
}

void viewMC::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) refresh();
}
