// SPDX-License-Identifier: GPL-3.0-or-later
#include "editor/CompareWindow.h"
#include "transfer/CompareMenu.h"
#include "transfer/TransferRig.h"

#include <QFileDialog>

/// Comparing the program of a view with a file.
class CompareTest : public QObject
{
    Q_OBJECT

    static QString outcome(const TransferRig& rig)
    {
        const auto* window = rig.find<CompareWindow>("CompareWindow");
        return window ? window->findChild<QLabel*>("lblDifferences")->text() : QString();
    }
    static QAction* withFileSent(const TransferRig& rig)
    {
        auto* menu = rig.find<CompareMenu>("compareMenu");
        Q_EMIT menu->aboutToShow();
        return menu->actions().last();
    }

private Q_SLOTS:
    void whatComesBackWithTheFileSent()
    {
        TransferRig rig;
        rig.startWith("%\nN10 G0 X1.\nN20 M30\n%\n");
        QVERIFY(!withFileSent(rig)->isEnabled());
        rig.click("btnSend");
        rig.readUntilIdle();
        rig.view->initialize(false, 1);
        rig.view->setTextLocked(false);
        rig.view->btnNew_Click();
        rig.deliver(QByteArray(5, '\0') + "%\r\nN1 G0X1.\r\nN2 M30\r\n%\r\n\x14");
        QVERIFY(withFileSent(rig)->isEnabled());
        withFileSent(rig)->trigger();
        QTRY_COMPARE(outcome(rig), QStringLiteral("No differences"));
    }

    void aTypedProgramHasNoFile()
    {
        TransferRig rig;
        rig.startWith("G0\n");
        rig.click("btnSend");
        rig.readUntilIdle();
        rig.view->setTextLocked(false);
        rig.view->btnNew_Click();
        QTest::keyClicks(rig.editor, "G1");
        rig.click("btnSend");
        rig.readUntilIdle();
        QVERIFY(!withFileSent(rig)->isEnabled()); // the file is not what was sent last
    }

    void withAFileOfTheOperators()
    {
        TransferRig rig;
        rig.startWith("G0\nG1\n");
        const QTemporaryDir folder;
        QFile file(folder.filePath("other.nc"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("G0\r\nG2\r\n") == 8);
        file.close();
        QTest::keyClick(rig.editor, Qt::Key_D, Qt::ControlModifier);
        auto* dialog = rig.find<QFileDialog>("compareDialog");
        QVERIFY(dialog);
        Q_EMIT dialog->fileSelected(file.fileName());
        QTRY_COMPARE(outcome(rig), QStringLiteral("1 difference"));
    }
};

QTEST_MAIN(CompareTest)
#include "transfer_compare.moc"
