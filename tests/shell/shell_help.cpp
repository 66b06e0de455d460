// SPDX-License-Identifier: GPL-3.0-or-later
// The user guide, the list of keys, and the notices on the desktop.
#include "config/g.h"
#include "platform/Preferences.h"
#include "shell/AboutWindow.h"
#include "shell/AppDelegate.h"
#include "shell/KeysWindow.h"
#include "shell/TransferNotice.h"
#include "shell/viewMC.h"
#include "support/PrivateBus.h"

#include <QApplication>
#include <QCheckBox>
#include <QDBusConnection>
#include <QDesktopServices>
#include <QFileInfo>
#include <QLabel>
#include <QTest>
#include <QTreeWidget>
#include <QUrl>
#include <QVariantMap>

/// The desktop's part of its notices.
class Desktop : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    QStringList shown;

public Q_SLOTS:
    uint Notify(const QString& program, uint, const QString&, const QString& heading, const QString& text,
                const QStringList&, const QVariantMap&, int)
    {
        shown += QStringList{program, heading, text}.join(QLatin1Char('|'));
        return 1;
    }
    void openLink(const QUrl& link) { shown += link.toLocalFile(); }
};

class HelpTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase();
    void f1OpensTheGuide();
    void aboutOpensTheLicence();
    void keysAreThoseOfTheGuide();
    void noticeIsShownOnlyIfWantedAndNotInFront();

private:
    Desktop desktop_;
    std::unique_ptr<AppDelegate> app_;
};

void HelpTest::initTestCase()
{
    auto bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("desktop"));
    QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), &desktop_,
                               QDBusConnection::ExportAllSlots));
    QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.Notifications")));
    qputenv("XDG_DATA_DIRS", PAGES);
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &desktop_, "openLink");
    Preferences::setString(QStringLiteral("Varnock"), {});
    TransferNotice::setWanted(false);
    app_ = std::make_unique<AppDelegate>();
    app_->applicationDidFinishLaunching();
    app_->window()->show();
    QVERIFY(QTest::qWaitForWindowActive(app_->window()));
}

void HelpTest::init()
{
    desktop_.shown.clear();
}

void HelpTest::cleanupTestCase()
{
    app_.reset();
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QDBusConnection::disconnectFromBus(QStringLiteral("desktop"));
}

void HelpTest::f1OpensTheGuide()
{
    QTest::keyClick(app_->window(), Qt::Key_F1);
    QCOMPARE(desktop_.shown.size(), 1);
    QVERIFY2(QFileInfo(desktop_.shown.first()).size() > 0, qPrintable(desktop_.shown.first()));
}

void HelpTest::aboutOpensTheLicence()
{
    AboutWindow about(nullptr);
    Q_EMIT about.findChild<QLabel*>(QStringLiteral("lblLinks"))->linkActivated(QStringLiteral("Licence"));
    QCOMPARE(desktop_.shown.size(), 1);
    QFile page(desktop_.shown.first());
    QVERIFY(page.open(QIODevice::ReadOnly));
    QVERIFY(page.readAll().contains("GNU GENERAL PUBLIC LICENSE"));
}

void HelpTest::keysAreThoseOfTheGuide()
{
    const KeysWindow keys(nullptr);
    const auto* list = keys.findChild<QTreeWidget*>(QStringLiteral("lstKeys"));
    QVERIFY(list->topLevelItemCount() > 5);
    QCOMPARE(list->findItems(QStringLiteral("F9"), Qt::MatchExactly).size(), 1);
    QVERIFY(list->findItems(QStringLiteral("Key"), Qt::MatchExactly).isEmpty()); // the table's head
}

void HelpTest::noticeIsShownOnlyIfWantedAndNotInFront()
{
    viewMC icon;
    icon.MCNAME = QStringLiteral("Mill <1>");
    const auto finish = [&icon] {
        icon.showActivity(TransferActivity::Sending);
        icon.showActivity(TransferActivity::Sent);
        icon.showActivity(TransferActivity::Sent); // still
    };
    AboutWindow about(nullptr);
    auto* wanted = about.findChild<QCheckBox*>(QStringLiteral("chkNotices"));
    QVERIFY(!wanted->isChecked());
    wanted->click();
    QCOMPARE(QApplication::activeWindow(), app_->window());
    finish();
    app_->window()->hide();
    QTRY_VERIFY(!QApplication::activeWindow());
    wanted->click();
    finish();
    wanted->click();
    icon.showActivity(TransferActivity::PortLost);
    QTRY_COMPARE(desktop_.shown.join(QLatin1Char('\n')), QStringLiteral("Varnock|Mill <1>|Port lost"));
    wanted->click();
}

int main(int argc, char* argv[])
{
    const PrivateBus bus("DBUS_SESSION_BUS_ADDRESS");
    const QApplication application(argc, argv);
    HelpTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "shell_help.moc"
