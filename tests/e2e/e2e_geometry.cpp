// SPDX-License-Identifier: GPL-3.0-or-later
#include "e2e/Operator.h"
#include "e2e/Shop.h"
#include "support/PtyPair.h"

#include "editor/ProgramEditor.h"

#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>

/// What has room in the window, on small screens and with large text.
class GeometryTest : public QObject
{
    Q_OBJECT
    // The controls of the working view that do not lie whole inside the window.
    static QStringList outside(QWidget& window)
    {
        QStringList names;
        for (auto* control : Operator::find("boxChildContainer", &window)->findChildren<QWidget*>()) {
            const bool isControl = qobject_cast<QAbstractButton*>(control) || qobject_cast<QComboBox*>(control) ||
                                   qobject_cast<QLineEdit*>(control) || control->objectName() == "lblTransferState";
            const QRect place(control->mapTo(&window, QPoint(0, 0)), control->size());
            if (isControl && control->isVisible() && !window.rect().contains(place)) names << control->objectName();
        }
        return names;
    }

private Q_SLOTS:
    void cleanup() { QApplication::setFont(QFont()); }

    void hasRoomForAllControls_data()
    {
        QTest::addColumn<QSize>("size"); // of the window's contents, as it starts on such a screen
        QTest::addColumn<double>("points");
        QTest::addColumn<int>("lines"); // of the program that have to be visible
        QTest::newRow("1366x768, large text") << QSize(1080, 720) << 15.0 << 20;
        QTest::newRow("800x600") << QSize(776, 552) << 10.0 << 14;
        QTest::newRow("640x480") << QSize(616, 432) << 10.0 << 5;
    }

    void hasRoomForAllControls()
    {
        QFETCH(QSize, size);
        QFETCH(double, points);
        QFETCH(int, lines);
        QFont font("DejaVu Sans");
        font.setPointSizeF(points);
        QApplication::setFont(font);
        PtyPair line; // nobody reads it, so a transfer stays under way
        const auto machine = Shop::machineOn(line.devicePath());
        machine->MCWAIT = true;
        Shop::store({machine});
        Operator op;
        op.window().resize(size);
        op.open(1, Shop::program(1500));
        const auto fits = [&](const char* state) {
            QTest::qWait(0); // layouts follow at once
            QCOMPARE(op.window().size(), size);
            QVERIFY2(outside(op.window()).isEmpty(),
                     qPrintable(QString(state) + ": " + outside(op.window()).join(' ')));
            auto* editor = op.find<ProgramEditor>("rt1");
            if (!op.isShown("boxWaitForCNC"))
                QCOMPARE_GE(editor->SendScintilla(QsciScintillaBase::SCI_LINESONSCREEN), lines);
            const auto* path = op.find<QLineEdit>("txtPath");
            QCOMPARE_GE(path->width(), path->fontMetrics().horizontalAdvance("O1234-part1.nc"));
            QCOMPARE(op.find<QScrollArea>("scrRoot")->verticalScrollBar()->maximum(), 0);
        };
        fits("ready");
        op.click("btnSend");
        QVERIFY(op.isShown("btnSendNow"));
        fits("waiting");
        op.click("btnSendNow");
        QTRY_VERIFY_WITH_TIMEOUT(op.find<QLabel>("lblTransferState")->text().startsWith("Nothing moves"), 30000);
        fits("held");
        op.click("btnStop");
        fits("stopped");
    }

    void settlesItsScrollButtonsAtEveryHeight()
    {
        const std::vector<std::shared_ptr<MachineRecord>> machines = {
            Shop::machineOn("/dev/ttyS90"), Shop::machineOn("/dev/ttyS91"), Shop::machineOn("/dev/ttyS92"),
            Shop::machineOn("/dev/ttyS93"), Shop::machineOn("/dev/ttyS94"), Shop::machineOn("/dev/ttyS95")};
        Shop::store(machines);
        Operator op;
        const auto* bar = op.find<QScrollArea>("scrIcons")->verticalScrollBar();
        bool wereShown = false;
        bool wereHidden = false;
        for (int height = 800; height >= 400; --height) {
            op.window().resize(1000, height);
            for (const bool isShown : {true, false}) {
                op.window().findChild<QWidget*>("undoBar")->setVisible(isShown);
                QTest::qWait(0);
            }
            QCOMPARE(op.isShown("btnUp"), op.isShown("btnDn"));
            QCOMPARE(op.isShown("btnUp"), bar->maximum() > 0);
            (op.isShown("btnUp") ? wereShown : wereHidden) = true;
        }
        QVERIFY(wereShown && wereHidden);
    }
};

QTEST_MAIN(GeometryTest)
#include "e2e_geometry.moc"
