// SPDX-License-Identifier: GPL-3.0-or-later
// A spreadsheet reads each field as it was, and runs none of them.
#include "history/HistoryCsv.h"
#include "tests/history/Entries.h"

#include <QTest>

class CsvTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void writesEveryField();
    void quotes_data();
    void quotes();
};

void CsvTest::writesEveryField()
{
    auto entry = Entries::make(3, Entries::at(QDate(2026, 11, 25)));
    entry.sha256 = QByteArray::fromHex("00ff");
    QCOMPARE(QString::fromUtf8(HistoryCsv::row(entry)),
             QStringLiteral("2026-11-25 12:00:00,2026-11-25 12:01:00,Mill 3,Received,O3.nc,/srv/Pr\u00fcfung/O3.nc,"
                            "End not confirmed,8,4,yes,,23,1003,0.3,0.2,00ff\r\n"));
    QCOMPARE(HistoryCsv::head().count(','), HistoryCsv::row(entry).count(','));
    QVERIFY(HistoryCsv::head().startsWith("\xEF\xBB\xBF")); // or a spreadsheet takes it for another character set
}

void CsvTest::quotes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("field");
    QTest::newRow("plain") << "O1 top.nc"
                           << "O1 top.nc";
    QTest::newRow("comma") << "a,b"
                           << "\"a,b\"";
    QTest::newRow("quote") << "6\" flange"
                           << "\"6\"\" flange\"";
    QTest::newRow("line end") << "a\nb"
                              << "\"a\nb\"";
    QTest::newRow("formula") << "=SUM(A1)"
                             << "'=SUM(A1)";
    QTest::newRow("formula with a comma") << "@x,\""
                                          << "\"'@x,\"\"\"";
}

void CsvTest::quotes()
{
    QFETCH(QString, name);
    QFETCH(QString, field);
    auto entry = Entries::make(1, Entries::at(QDate(2026, 11, 25)));
    entry.program = name;
    const QString row = QString::fromUtf8(HistoryCsv::row(entry));
    QVERIFY2(row.contains(QStringLiteral(",Received,%1,/srv").arg(field)), qPrintable(row));
}

QTEST_APPLESS_MAIN(CsvTest)
#include "history_csv.moc"
