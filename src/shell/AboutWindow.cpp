// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/AboutWindow.h"
#include "ui_AboutWindow.h"

#include "shell/KeysWindow.h"
#include "shell/TransferNotice.h"
#include "shell/UserGuide.h"
#include "widgets/Images.h"
#include "widgets/TextLook.h"

#include <QDesktopServices>
#include <Qsci/qsciglobal.h>
#include <QUrl>

#include <functional>
#include <utility>

namespace
{
constexpr int logoSize = 112;
}

AboutWindow::AboutWindow(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::AboutWindow>())
{
    ui->setupUi(this);
    Images::showIn(*ui->imgLogo, QStringLiteral("logo"), logoSize);
    TextLook::enlarge(*ui->lblVersion, 1.5);
    ui->lblVersion->setText(QStringLiteral("Varnock %1").arg(QStringLiteral(VARNOCK_VERSION)));
    ui->lblAbout->setText(
        QStringLiteral("Sends NC programs to CNC controls over RS-232 and receives programs from them."));
    ui->lblLicence->setText(QStringLiteral("Free software under the GNU General Public License, version 3 or later. "
                                           "It comes without any warranty."));
    ui->lblLibraries->setText(QStringLiteral("Qt %1, QScintilla %2")
                                  .arg(QString::fromLatin1(qVersion()), QStringLiteral(QSCINTILLA_VERSION_STR)));
    TextLook::dim(*ui->lblLibraries);
    TextLook::dim(*ui->lblLicence);
    showLinks();
    ui->chkNotices->setChecked(TransferNotice::isWanted());
    connect(ui->chkNotices, &QCheckBox::toggled, this, &TransferNotice::setWanted);
    connect(ui->buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

AboutWindow::~AboutWindow() = default;

void AboutWindow::showLinks()
{
    const std::pair<QString, std::function<void()>> links[] = {
        {QStringLiteral("User guide"), [this] { UserGuide::open(this); }},
        {QStringLiteral("Keys"), [this] { KeysWindow(this).exec(); }},
        {QStringLiteral("Licence"), [this] { UserGuide::open(this, QString::fromLatin1(UserGuide::licence)); }},
        {QStringLiteral("Source"), [] { QDesktopServices::openUrl(QUrl(QStringLiteral(VARNOCK_HOMEPAGE))); }},
    };
    QStringList texts;
    for (const auto& [text, open] : links) {
        texts += QStringLiteral("<a href=\"%1\">%1</a>").arg(text);
        connect(ui->lblLinks, &QLabel::linkActivated, this, [text, open](const QString& link) {
            if (link == text) open();
        });
    }
    ui->lblLinks->setText(texts.join(QStringLiteral(" &nbsp;\u00B7&nbsp; ")));
}
