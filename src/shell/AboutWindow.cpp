// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AboutWindow.h"
#include "ui_AboutWindow.h"

#include "resources/Images.h"

#include <Qsci/qsciglobal.h>

AboutWindow::AboutWindow(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::AboutWindow>())
{
    ui->setupUi(this);
    ui->imgLogo->setPixmap(Images::icon(QStringLiteral("logo")).pixmap(96));
    ui->lblVersion->setText(QStringLiteral("Varnock %1").arg(QStringLiteral(VARNOCK_VERSION)));
    ui->lblAbout->setText(QStringLiteral("Sends NC programs to CNC controls and takes them in.\n\n"
                                         "Free software under the GNU General Public License, version 3 or later.\n"
                                         "Built with Qt %1 and QScintilla %2.")
                              .arg(QString::fromLatin1(qVersion()), QStringLiteral(QSCINTILLA_VERSION_STR)));
    connect(ui->buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

AboutWindow::~AboutWindow() = default;
