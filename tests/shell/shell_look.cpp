// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/Images.h"
#include "transfer/ShortLabel.h"
#include "shell/MachineButton.h"
#include "shell/TextLook.h"
#include "shell/viewMC.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QPalette>
#include <QTest>
#include <QToolButton>

namespace
{
QPalette theme(const QColor& text, const QColor& ground)
{
    QPalette palette(ground);
    palette.setColor(QPalette::WindowText, text);
    return palette;
}

int lightness(const QImage& picture)
{
    qint64 sum = 0, weight = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QColor pixel = picture.pixelColor(x, y);
            sum += static_cast<qint64>(pixel.lightness()) * pixel.alpha();
            weight += pixel.alpha();
        }
    }
    return weight ? static_cast<int>(sum / weight) : -1;
}
} // namespace

class LookTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { QApplication::setPalette(QPalette()); }
    void everyImageCanBeDrawn();
    void imagesAndNotesFollowTheTheme();
    void applicationIconHasTheSizesAskedFor();
    void stateIsToldInWordsAndShape_data();
    void stateIsToldInWordsAndShape();
    void deleteButtonShowsWhereTheOperatorIs();
    void shortenedNameStaysWholeForScreenReaders();
};

void LookTest::everyImageCanBeDrawn()
{
    Images::icon({}); // loads the resource
    const auto files = QDir(QStringLiteral(":/images")).entryInfoList();
    QVERIFY(files.size() > 20);
    for (const auto& file : files)
        QVERIFY2(lightness(Images::icon(file.baseName()).pixmap(24).toImage()) >= 0, qPrintable(file.fileName()));
}

void LookTest::imagesAndNotesFollowTheTheme()
{
    QApplication::setPalette(theme(Qt::black, Qt::white));
    QLabel image, note(QStringLiteral("note"));
    Images::showIn(image, QStringLiteral("save"), 32);
    TextLook::dim(note);
    image.show();
    note.show();
    const auto noteLightness = [&] { return note.palette().color(QPalette::WindowText).lightness(); };
    QVERIFY(lightness(image.pixmap(Qt::ReturnByValue).toImage()) < 20);
    QVERIFY(noteLightness() > 20 && noteLightness() < 110);

    QApplication::setPalette(theme(Qt::white, Qt::black));
    QTRY_VERIFY(lightness(image.pixmap(Qt::ReturnByValue).toImage()) > 235);
    QTRY_VERIFY(noteLightness() > 145 && noteLightness() < 235);
    QVERIFY(lightness(Images::icon(QStringLiteral("save")).pixmap(32).toImage()) > 235);
}

void LookTest::applicationIconHasTheSizesAskedFor()
{
    const QIcon icon = Images::applicationIcon();
    for (const int size : {16, 24, 32, 48, 64, 128, 256})
        QCOMPARE(icon.actualSize(QSize(size, size)), QSize(size, size));
}

void LookTest::stateIsToldInWordsAndShape_data()
{
    QTest::addColumn<TransferActivity>("activity");
    QTest::addColumn<QString>("words");
    QTest::newRow("waiting") << TransferActivity::Waiting << "Waiting";
    QTest::newRow("sending") << TransferActivity::Sending << "Sending 25 %";
    QTest::newRow("stopped") << TransferActivity::Stopped << "Stopped at 25 %";
    QTest::newRow("sent") << TransferActivity::Sent << "Sent";
    QTest::newRow("receiving") << TransferActivity::Receiving << "Receiving";
    QTest::newRow("port lost") << TransferActivity::PortLost << "Port lost";
}

void LookTest::stateIsToldInWordsAndShape()
{
    QFETCH(TransferActivity, activity);
    viewMC icon;
    icon.refresh();
    const auto* shape = icon.findChild<QLabel*>(QStringLiteral("imgState"));
    const auto idle = shape->pixmap(Qt::ReturnByValue).toImage().convertToFormat(QImage::Format_Alpha8);
    const int height = icon.sizeHint().height();
    icon.setPBarMaximum(2000);
    icon.setPBarValue(500);
    icon.setPBarHidden(false);
    icon.showActivity(activity);
    QTEST(icon.findChild<QLabel*>(QStringLiteral("lblState"))->text(), "words");
    QTEST(icon.button()->accessibleDescription(), "words");
    // The outline itself differs, not the colour alone.
    QVERIFY(shape->pixmap(Qt::ReturnByValue).toImage().convertToFormat(QImage::Format_Alpha8) != idle);
    QCOMPARE(icon.sizeHint().height(), height); // the panel does not jump
}

void LookTest::deleteButtonShowsWhereTheOperatorIs()
{
    QWidget panel;
    panel.setFocusPolicy(Qt::StrongFocus);
    viewMC icon(&panel);
    icon.move(0, 100);
    icon.refresh();
    panel.move(200, 200); // away from the pointer
    panel.show();
    panel.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&panel));
    const auto* button = icon.findChild<QToolButton*>(QStringLiteral("btnDeleteIcon"));
    panel.setFocus();
    QTRY_VERIFY(button->icon().isNull());
    icon.button()->setFocus();
    QTRY_VERIFY(!button->icon().isNull());
    panel.setFocus();
    QTRY_VERIFY(button->icon().isNull());
    icon.isActive(true);
    QVERIFY(!button->icon().isNull());
}

void LookTest::shortenedNameStaysWholeForScreenReaders()
{
    const QString name = QStringLiteral("Doppelspindel-Drehmaschine mit Gegenspindel");
    ShortLabel label;
    label.setText(name);
    label.resize(80, 20);
    QVERIFY(label.minimumSizeHint().width() < 80);
    QCOMPARE(label.text(), name);
}

QTEST_MAIN(LookTest)
#include "shell_look.moc"
