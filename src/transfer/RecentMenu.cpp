// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/RecentMenu.h"

#include <QFileInfo>

namespace
{
constexpr int folderWidth = 320; // pixels

// In a menu "&" marks a key and a tab begins the column of the keys.
QString plain(QString text)
{
    return text.replace(u'&', QLatin1String("&&")).replace(u'\t', u' ');
}
} // namespace

RecentMenu::RecentMenu(QWidget* parent, std::function<QStringList()> paths)
    : QMenu(QStringLiteral("&Recent programs"), parent), paths_(std::move(paths))
{
    setObjectName(QStringLiteral("recentMenu"));
    setToolTipsVisible(true);
    connect(this, &QMenu::aboutToShow, this, &RecentMenu::fill);
    addAction(QString()); // a menu without items would not open
}

void RecentMenu::fill()
{
    clear();
    const auto paths = paths_();
    for (const auto& path : paths) {
        const QFileInfo file(path);
        const QString folder = fontMetrics().elidedText(file.absolutePath(), Qt::ElideMiddle, folderWidth);
        auto* item = addAction(plain(file.fileName()) + u'\t' + plain(folder), this, [this, path] { chosen(path); });
        item->setToolTip(path);
    }
    if (paths.isEmpty()) addAction(QStringLiteral("None yet"))->setEnabled(false);
}
