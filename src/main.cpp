// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Preferences.h"
#include "platform/SingleInstance.h"
#include "shell/AppDelegate.h"
#include "shell/ClearStyle.h"

#include <QApplication>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Varnock"));
    QApplication::setApplicationName(QStringLiteral("Varnock"));
    QApplication::setDesktopFileName(QStringLiteral("org.varnock.Varnock"));

    SingleInstance instance(Preferences::folder());
    if (!instance.claim()) return 0; // the running program has been asked to come to the front
    Preferences::dropLeftoverLock();

    QApplication::setStyle(new ClearStyle);
    AppDelegate delegate;
    QObject::connect(&instance, &SingleInstance::activationRequested, &delegate,
                     [&delegate] { delegate.applicationShouldHandleReopen(); });
    delegate.applicationDidFinishLaunching();
    delegate.window()->show();
    return QApplication::exec();
}
