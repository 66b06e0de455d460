// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/TransferRig.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QUrl>

class DroppingTest : public QObject
{
    Q_OBJECT

    static constexpr auto program = "N1 G0 X1\nN2 G1 X2\nN3 G1 X3\nN4 M30\n";

    static bool drop(QWidget* target, const QMimeData& data, Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction);

private Q_SLOTS:
    void droppedFileIsOpened();
    void whatIsNotOneFileIsRefused_data();
    void whatIsNotOneFileIsRefused();
    void lockedOrRunningViewRefusesDrops();
    void dialogStartsWhereTheLastFileWas();
};

bool DroppingTest::drop(QWidget* target, const QMimeData& data, Qt::DropActions actions)
{
    QDragEnterEvent enter(QPoint(10, 10), actions, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);
    if (!enter.isAccepted()) return false;
    QDropEvent dropped(QPointF(10, 10), actions, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &dropped);
    return dropped.isAccepted() && dropped.dropAction() == Qt::CopyAction;
}

void DroppingTest::droppedFileIsOpened()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("O7.nc"));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("O7\r\nM30") == 7);
    file.close();
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(file.fileName())});
    data.setText(file.fileName());                             // as file managers do
    for (const char* target : {"rt1", "txtPath", "btnSend"}) { // wherever in the view
        TransferRig rig;
        rig.start();
        auto* widget = rig.view->findChild<QWidget*>(target);
        QVERIFY(drop(widget == rig.editor ? rig.editor->viewport() : widget, data));
        QCOMPARE(rig.editor->wholeText(), QByteArray("O7\nM30"));
        QVERIFY(rig.view->textLocked());
        QCOMPARE(rig.view->findChild<QLineEdit*>("txtPath")->text(), file.fileName());
        QCOMPARE(rig.editor->caret(), 0);
    }
    TransferRig receiving;
    receiving.start(false);
    QVERIFY(!drop(receiving.editor->viewport(), data));
}

void DroppingTest::whatIsNotOneFileIsRefused_data()
{
    QTest::addColumn<QList<QUrl>>("urls");
    QTest::addColumn<bool>("copy");
    const QUrl file = QUrl::fromLocalFile(QCoreApplication::applicationFilePath());
    QTest::newRow("text") << QList<QUrl>{} << true;
    QTest::newRow("two files") << QList<QUrl>{file, file} << true;
    QTest::newRow("folder") << QList<QUrl>{QUrl::fromLocalFile(QDir::tempPath())} << true;
    QTest::newRow("not on this computer") << QList<QUrl>{QUrl("http://host/O1.nc")} << true;
    QTest::newRow("missing") << QList<QUrl>{QUrl::fromLocalFile("/no such file")} << true;
    QTest::newRow("only to be moved") << QList<QUrl>{file} << false;
}

void DroppingTest::whatIsNotOneFileIsRefused()
{
    QFETCH(QList<QUrl>, urls);
    QFETCH(bool, copy);
    TransferRig rig;
    rig.startTyping(program);
    rig.click("btnLock");
    rig.editor->moveCaretTo(5);
    QMimeData data;
    data.setText("G0 X0");
    if (!urls.isEmpty()) data.setUrls(urls);
    for (QWidget* target : {rig.editor->viewport(), static_cast<QWidget*>(rig.view.get())})
        QVERIFY(!drop(target, data, copy ? Qt::CopyAction : Qt::MoveAction));
    QCOMPARE(rig.editor->wholeText(), QByteArray(program));
    QCOMPARE(rig.editor->caret(), 5);
}

void DroppingTest::lockedOrRunningViewRefusesDrops()
{
    TransferRig rig;
    rig.startTyping(program);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(rig.view->findChild<QLineEdit*>("txtPath")->text())});
    QVERIFY(!drop(rig.editor->viewport(), data));
    rig.click("btnLock");
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(rig.editor->viewport(), &enter);
    QVERIFY(enter.isAccepted());
    rig.holdLineAfter(2); // a transfer that begins while the file hangs on the pointer
    rig.click("btnSend");
    QTRY_VERIFY(rig.isHeld());
    const auto caret = rig.editor->caret();
    QDropEvent dropped(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    dropped.ignore();
    QApplication::sendEvent(rig.editor->viewport(), &dropped);
    QVERIFY(!dropped.isAccepted());
    QCOMPARE(rig.editor->caret(), caret);
    QVERIFY(!drop(rig.editor->viewport(), data));
}

void DroppingTest::dialogStartsWhereTheLastFileWas()
{
    const QTemporaryDir folder;
    TransferRig rig;
    rig.startTyping(program);
    rig.click("btnLock");
    const auto directory = [&](const char* button, const char* name) {
        rig.click(button);
        auto* dialog = rig.view->findChild<QFileDialog*>(name);
        const QString path = dialog->directory().canonicalPath();
        delete dialog;
        return path;
    };
    const QString opened = QFileInfo(rig.view->findChild<QLineEdit*>("txtPath")->text()).canonicalPath();
    QCOMPARE(directory("btnFolder", "openDialog"), opened);
    rig.view->saveFile(folder.filePath("O8.nc"));
    QCOMPARE(directory("btnFolder", "openDialog"), QDir(folder.path()).canonicalPath());
    QCOMPARE(directory("btnSave", "saveDialog"), QDir(folder.path()).canonicalPath());
    rig.machine->MCOUTDIR = QDir::rootPath(); // the machine's own folder comes first
    QCOMPARE(directory("btnFolder", "openDialog"), QDir::rootPath());
}

QTEST_MAIN(DroppingTest)
#include "transfer_dropping.moc"
