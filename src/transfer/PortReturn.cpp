// SPDX-License-Identifier: GPL-3.0-or-later
#include "transfer/PortReturn.h"
#include "ui_PortReturn.h"

#include "config/LineWords.h"
#include "config/TransferWords.h"
#include "widgets/CompactRow.h"
#include "widgets/Images.h"

using Kind = AdapterSearch::Found::Kind;

namespace
{
constexpr int lookInterval = 1000; // ms
constexpr int returnImage = 32;    // pixels
constexpr int shownText = 60;      // characters of the line
constexpr int wideBar = 70;        // characters; in a narrower one the button stands below

QString buttonText(PortReturn::Offer::Kind kind)
{
    switch (kind) {
    case PortReturn::Offer::Kind::Listen:
        return QStringLiteral("&Listen again");
    case PortReturn::Offer::Kind::Continue:
        return QStringLiteral("Con&tinue");
    default:
        return QStringLiteral("Open the &port");
    }
}
} // namespace

PortReturn::PortReturn(QWidget* parent) : QFrame(parent), ui(std::make_unique<Ui::PortReturn>())
{
    ui->setupUi(this);
    Images::showIn(*ui->imgPortReturn, QStringLiteral("state-ready"), returnImage);
    tmrLook_.setInterval(lookInterval);
    connect(&tmrLook_, &QTimer::timeout, this, &PortReturn::look);
    connect(ui->btnPortReturn, &QPushButton::clicked, this, [this] {
        if (found_.kind == Kind::Other) return useFound();
        Q_EMIT chosen(offer_.kind);
    });
    const auto needed = [this] { return wideBar * fontMetrics().averageCharWidth(); };
    new CompactRow(*this, needed, [this](bool isCompact) {
        ui->returnLayout->setDirection(isCompact ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
        ui->returnLayout->setSpacing(isCompact ? 4 : 12);
        ui->imgPortReturn->setHidden(isCompact);
    });
    hide();
}

PortReturn::~PortReturn() = default;

void PortReturn::opened(const QString& path)
{
    search_.remember(path, DeviceNames(sources_));
    found_ = {Kind::Missing, path};
}

void PortReturn::setLost(bool isLost)
{
    if (isLost == tmrLook_.isActive()) return;
    if (isLost) {
        ui->chkKeepPath->setChecked(false);
        search_.noteLoss(DeviceNames(sources_));
        tmrLook_.start();
        look();
    } else {
        tmrLook_.stop();
        isCut_ = false;
        hide();
    }
}

void PortReturn::setOffer(const Offer& offer)
{
    const auto shown = offer.kind == Offer::Kind::Continue && !isCut_ ? Offer() : offer;
    if (shown == offer_) return;
    offer_ = shown;
    showFound(found_);
}

const AdapterSearch::Found& PortReturn::look()
{
    showFound(search_.find(DeviceNames(sources_)));
    return found_;
}

// The operator has said that this adapter is the machine's now.
void PortReturn::useFound()
{
    search_.remember(found_.path, DeviceNames(sources_));
    look();
}

QString PortReturn::text() const
{
    return ui->lblPortReturn->text();
}

bool PortReturn::isPathToBeKept() const
{
    return found_.kind == Kind::Elsewhere && ui->chkKeepPath->isChecked();
}

void PortReturn::showFound(const AdapterSearch::Found& found)
{
    found_ = found;
    const bool isOther = found.kind == Kind::Other;
    ui->lblPortReturn->setText(isOther ? foundWords()
                                       : QStringLiteral("%1 %2").arg(foundWords(), offerWords()).trimmed());
    ui->btnPortReturn->setText(isOther ? QStringLiteral("Use t&his adapter") : buttonText(offer_.kind));
    ui->btnPortReturn->setAccessibleName(ui->btnPortReturn->text().remove(u'&'));
    ui->chkKeepPath->setHidden(found.kind != Kind::Elsewhere);
    ui->chkKeepPath->setToolTip(QStringLiteral("Store %1 as the machine's port").arg(found.path));
    Images::showIn(*ui->imgPortReturn,
                   isOther || found.kind == Kind::Alike ? QStringLiteral("warning") : QStringLiteral("state-ready"),
                   returnImage);
    setHidden(found.kind == Kind::Missing || !tmrLook_.isActive());
}

QString PortReturn::foundWords() const
{
    const QString old = LineWords::portName(search_.path());
    switch (found_.kind) {
    case Kind::Alike:
        return QStringLiteral("An adapter of the same kind is at %1. It has no serial number: make sure that its cable "
                              "goes to this machine.")
            .arg(old);
    case Kind::Elsewhere:
        return QStringLiteral("The adapter is back, now as %1 and not as %2.")
            .arg(LineWords::portName(found_.device.path), old);
    case Kind::Other:
        return QStringLiteral("Another adapter is at %1: %2. Nothing is sent to it.").arg(old, found_.device.inWords());
    default:
        return QStringLiteral("The adapter is back.");
    }
}

// Nobody knows how much of a line has arrived that was going out when the adapter was pulled out.
QString PortReturn::offerWords() const
{
    switch (offer_.kind) {
    case Offer::Kind::Listen:
        return QStringLiteral("What the control sent meanwhile is missing.");
    case Offer::Kind::Continue:
        return QStringLiteral("Clear a cut block at the control first.\nContinue starts with the whole of line %1; the "
                              "caret chooses another:\n%2")
            .arg(TransferWords::number(offer_.line), offer_.text.simplified().left(shownText));
    default:
        return {};
    }
}
