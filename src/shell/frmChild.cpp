// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/frmChild.h"
#include "ui_frmChild.h"

#include "config/g.h"
#include "config/NotificationNames.h"
#include "platform/NotificationCenter.h"
#include "shell/viewChild.h"
#include "widgets/Images.h"
#include "widgets/TextLook.h"

#include <QCloseEvent>
#include <QShortcut>

frmChild::frmChild(int index) : ui(std::make_unique<Ui::frmChild>())
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    initialize(index);
    TextLook::enlarge(*ui->lblTitle, 1.1);
    ui->btnDock->setIcon(Images::icon(QStringLiteral("dock")));
    connect(ui->btnDock, &QToolButton::clicked, this, [this] {
        NotificationCenter::defaultCenter().post(Notifications::dockButton_Clicked, this,
                                                 {{Notifications::machineIndex, iIndex}});
    });
    connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_W), this), &QShortcut::activated, this, &frmChild::close);
}

frmChild::~frmChild() = default;

void frmChild::initialize(int index)
{
    iIndex = index;
    setWindowTitle(g::mcIcons[index]->MCNAME);
}

void frmChild::takeIn(QWidget* childView)
{
    ui->rootLayout->addWidget(childView);
    childView->show();
}

void frmChild::showTitle(const QString& title)
{
    ui->lblTitle->setText(title);
    ui->lblTitle->setHidden(title.isEmpty());
}

QBoxLayout& frmChild::strip()
{
    return *ui->windowControlsLayout;
}

void frmChild::bringUp()
{
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
}

void frmChild::closeEvent(QCloseEvent* event)
{
    auto* child = childViewAt(iIndex);
    if (child && !child->mayEnd()) {
        event->ignore();
        return;
    }
    if (child) child->end();
    event->accept();
}

void frmChild::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        NotificationCenter::defaultCenter().post(Notifications::childGotFocus_Event, this,
                                                 {{Notifications::machineIndex, iIndex}});
}
