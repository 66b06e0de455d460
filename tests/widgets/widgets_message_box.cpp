// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/MessageBoxes.h"
#include "widgets/MessageBox.h"

class MessageBoxTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void onlyTheFirstButtonCounts_data();
    void onlyTheFirstButtonCounts();
};

void MessageBoxTest::onlyTheFirstButtonCounts_data()
{
    QTest::addColumn<QString>("second");
    QTest::addColumn<QString>("clicked");
    QTest::addColumn<bool>("result");
    const QString none, cancel = "Cancel";
    QTest::newRow("one button") << none << QStringLiteral("OK") << true;
    QTest::newRow("first of two") << cancel << QStringLiteral("OK") << true;
    QTest::newRow("second of two") << cancel << cancel << false;
    QTest::newRow("Escape") << cancel << none << false;
    QTest::newRow("Enter") << none << QStringLiteral("Enter") << true;
    QTest::newRow("Enter by a slip") << cancel << QStringLiteral("Enter") << false;
}

void MessageBoxTest::onlyTheFirstButtonCounts()
{
    QFETCH(QString, second);
    QFETCH(QString, clicked);
    MessageBoxes boxes(clicked);
    QTEST(MessageBox::ask(nullptr, "Could not save <b>O1</b>\r\rNo room", "OK", second), "result");
    QCOMPARE(boxes.texts, QStringList{"Could not save <b>O1</b>\n\nNo room"});
}

QTEST_MAIN(MessageBoxTest)
#include "widgets_message_box.moc"
