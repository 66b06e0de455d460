// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Preferences.h"
#include "platform/SingleInstance.h"
#include "shell/AppDelegate.h"
#include "shell/ClearStyle.h"

#include <QApplication>
#include <QFileInfo>
#include <QTimer>
#include <QUrl>

// The command line names program files, as a path or as a file manager's URL.
static QStringList programFiles()
{
    QStringList paths = QApplication::arguments().mid(1);
    for (auto& path : paths) {
        const QUrl url(path);
        path = QFileInfo(url.isLocalFile() ? url.toLocalFile() : path).absoluteFilePath();
    }
    return paths;
}

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Varnock"));
    QApplication::setApplicationName(QStringLiteral("Varnock"));
    QApplication::setDesktopFileName(QStringLiteral("org.varnock.Varnock"));

    SingleInstance instance(Preferences::folder());
    const QStringList programs = programFiles();
    if (!instance.claim(programs)) return 0; // the running program has been asked to come to the front and open them
    Preferences::dropLeftoverLock();

    QApplication::setStyle(new ClearStyle);
    AppDelegate delegate;
    QObject::connect(&instance, &SingleInstance::activationRequested, &delegate,
                     [&delegate] { delegate.applicationShouldHandleReopen(); });
    QObject::connect(&instance, &SingleInstance::programsHandedOver, &delegate, &AppDelegate::openPrograms);
    delegate.applicationDidFinishLaunching();
    delegate.window()->show();
    if (!programs.isEmpty()) QTimer::singleShot(0, &delegate, [&] { delegate.openPrograms(programs); });
    return QApplication::exec();
}
