// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/LineFilter.h"

#include <QTest>

// Whether a line is sent is written as its text or as this.
static const QString dropped = QStringLiteral("<dropped>");

class FiltersTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void untouchedWhenNothingIsAskedFor();
    void lineToSend_data();
    void lineToSend();
};

void FiltersTest::untouchedWhenNothingIsAskedFor()
{
    for (const char* line : {"", "\n", " \n", "%\n", "(A) ; B \t\n", "\x12\x14\n", "G0 "})
        QCOMPARE(LineFilter{}.lineToSend(line).value_or(dropped), QString(line));
}

void FiltersTest::lineToSend_data()
{
    QTest::addColumn<LineFilter>("filter");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("sent");
    const auto row = [](const char* name, const LineFilter& filter, const QString& line, const QString& sent) {
        QTest::newRow(name) << filter << line << sent;
    };
    const LineFilter comments{.stripComments = true};
    row("comment group", comments, "G1 (X) X1\n", "G1  X1\n");
    row("two groups", comments, "(A)G1(B)\n", "G1\n");
    row("unclosed group", comments, "G1 (X\n", "G1\n");
    row("semicolon", comments, "G1 ;X (Y)\n", "G1\n");
    row("semicolon in a group", comments, "G1(;)X1\n", "G1X1\n");
    row("closing alone stays", comments, "G1) X1\n", "G1) X1\n");
    row("blanks at the end go", comments, "G1 \t\n", "G1\n");
    row("blanks at the start stay", comments, "  G1\n", "  G1\n");
    row("emptied line is still sent", comments, "(A)\n", "\n");
    row("without a line end", comments, "G1 (A)", "G1");
    row("emptied last line", comments, "(A)", "");

    const LineFilter empty{.stripEmptyLines = true};
    row("blank line", empty, " \t\n", dropped);
    row("empty last line", empty, "", dropped);
    row("comment is not empty", empty, "(A)\n", "(A)\n");
    row("other controls are no blanks", empty, "\r\n", "\r\n");
    row("emptied by comments", {.stripComments = true, .stripEmptyLines = true}, " ;A\n", dropped);

    const LineFilter fanuc{.type = ControlType::Fanuc};
    row("Fanuc percent line", fanuc, "%\n", dropped);
    row("Fanuc percent and blanks", fanuc, " %% ", dropped);
    row("Fanuc percent in a line", fanuc, "%O1%\n", "O1\n");
    row("Fanuc blank line", fanuc, " \n", " \n");
    row("Fanuc percent and comment", {.type = ControlType::Fanuc, .stripComments = true}, "%(A)\n", dropped);

    const LineFilter okuma{.type = ControlType::Okuma};
    row("Okuma tape codes", okuma, QStringLiteral("\x12G%\x14") + QChar(0) + "\n", "G%\n");
    row("Okuma emptied line is still sent", okuma, "\x12\n", "\n");
    row("Okuma emptied line, empty lines stripped", {.type = ControlType::Okuma, .stripEmptyLines = true}, "\x12\n",
        dropped);
}

void FiltersTest::lineToSend()
{
    QFETCH(LineFilter, filter);
    QFETCH(QString, line);
    QTEST(filter.lineToSend(line).value_or(dropped), "sent");
}

QTEST_GUILESS_MAIN(FiltersTest)
#include "transfer_filters.moc"
