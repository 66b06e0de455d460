// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTest>

/// For the helpers of tests, where a failing QVERIFY would leave the helper alone and the test would go on with what is
/// not there: the run ends, and the log names the test function and what was missing.
inline void require(bool holds, const QString& what)
{
    if (!holds) qFatal("%s", qPrintable(what));
}

/// Runs the event loop until the condition holds.
template <typename Condition> void requireSoon(Condition condition, const QString& what, int ms = 5000)
{
    require(QTest::qWaitFor(condition, ms), what);
}
