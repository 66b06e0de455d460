// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/ProgramDrop.h"

#include <QDropEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

ProgramDrop::ProgramDrop(QWidget* target, const QWidget* openButton) : QObject(target), openButton_(*openButton)
{
    target->installEventFilter(this);
}

bool ProgramDrop::eventFilter(QObject* watched, QEvent* event)
{
    const bool isDrop = event->type() == QEvent::Drop;
    if (isDrop || event->type() == QEvent::DragLeave) Q_EMIT hovering(false);
    if (!isDrop && event->type() != QEvent::DragEnter) return QObject::eventFilter(watched, event);
    auto* drop = static_cast<QDropEvent*>(event); // a drag that enters is one, too
    const QString path = droppedFile(*drop);      // asked again on the drop: a transfer may have started since
    if (path.isEmpty()) return true;
    drop->setDropAction(Qt::CopyAction);
    drop->accept();
    if (isDrop)
        Q_EMIT dropped(path);
    else
        Q_EMIT hovering(true);
    return true;
}

// Path of the one file, empty when it can't be opened now.
QString ProgramDrop::droppedFile(const QDropEvent& event) const
{
    const auto urls = event.mimeData()->urls();
    if (!openButton_.isEnabled() || urls.size() != 1) return {};
    if (!(event.possibleActions() & Qt::CopyAction)) return {}; // after a move, the file would be gone
    const QString path = urls.first().toLocalFile();
    return QFileInfo(path).isFile() ? path : QString();
}
