// SPDX-License-Identifier: GPL-3.0-or-later
#include "config/g.h"
#include "support/MessageBoxes.h"

#include <QTest>

class MessagesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyTheFirstButtonCounts_data();
    void onlyTheFirstButtonCounts();
    void escapeIsNotTheFirstOfTwoButtons();
    void carriageReturnsBreakLinesAndMarkupIsShownAsWritten();
};

void MessagesTest::onlyTheFirstButtonCounts_data()
{
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("clicked");
    QTest::addColumn<bool>("result");
    QTest::newRow("one button") << ""
                                << "OK" << true;
    QTest::newRow("first of two") << "Cancel"
                                  << "OK" << true;
    QTest::newRow("second of two") << "Cancel"
                                   << "Cancel" << false;
}

void MessagesTest::onlyTheFirstButtonCounts()
{
    QFETCH(QString, second);
    QFETCH(QString, clicked);
    MessageBoxes boxes(clicked);
    QTEST(g::msgBox("text", "OK", second), "result");
    QCOMPARE(boxes.buttons.size(), 1);
    QCOMPARE(boxes.buttons[0].size(), second.isEmpty() ? 1 : 2);
}

void MessagesTest::escapeIsNotTheFirstOfTwoButtons()
{
    QTimer escape;
    connect(&escape, &QTimer::timeout, this, [] {
        if (auto* box = QApplication::activeModalWidget()) QTest::keyClick(box, Qt::Key_Escape);
    });
    escape.start(1);
    QVERIFY(!g::msgBox("Delete the current MC Icon?", "Delete", "Cancel"));
}

void MessagesTest::carriageReturnsBreakLinesAndMarkupIsShownAsWritten()
{
    QTimer look;
    bool isPlain = false;
    connect(&look, &QTimer::timeout, this, [&isPlain] {
        if (const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            isPlain = box->textFormat() == Qt::PlainText;
    });
    look.start(0);
    MessageBoxes boxes("OK");
    g::msgBox("Could not save <b>O1</b>\r\rNo room", "OK", {});
    QCOMPARE(boxes.texts, QStringList{"Could not save <b>O1</b>\n\nNo room"});
    QVERIFY(isPlain);
}

QTEST_MAIN(MessagesTest)
#include "config_messages.moc"
