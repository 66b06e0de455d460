// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/AdapterSearch.h"

#include <QFrame>
#include <QTimer>

#include <memory>

namespace Ui
{
class PortReturn;
}

/// The bar of a transfer view whose port was lost: looks for the adapter and offers to go on when it is back. It opens
/// nothing and sends nothing by itself. Main thread only.
class PortReturn : public QFrame
{
    Q_OBJECT
public:
    explicit PortReturn(QWidget* parent = nullptr);
    ~PortReturn() override;

    /// The devices are looked for there.
    void setSources(const DeviceSources& sources) { sources_ = sources; }
    /// The port at that path has been opened: its adapter is the one to wait for when it is lost.
    void opened(const QString& path);
    /// Looks for the adapter once a second while the port is lost; hidden otherwise.
    void setLost(bool isLost);

    /// What choosing the bar's button leads to.
    struct Offer {
        enum class Kind {
            Open,     ///< the port is opened, no more
            Listen,   ///< the same, and what arrives is taken in
            Continue, ///< the send that was cut goes on from a line
        };
        Kind kind = Kind::Open;
        qint64 line = 0;   ///< from which it goes on
        QString text = {}; ///< of that line
        bool operator==(const Offer&) const = default;
    };
    /// Continue becomes Open if nothing was cut.
    void setOffer(const Offer& offer);
    /// A line was going out when the port was lost. Until the port is open again.
    void noteCut() { isCut_ = true; }

    /// Looks at once. Where the adapter is, or that another one has its place.
    const AdapterSearch::Found& look();
    /// What it shows, in words.
    QString text() const;
    /// The operator wants the machine to keep the path at which the adapter was found.
    bool isPathToBeKept() const;

Q_SIGNALS:
    /// The operator has chosen that.
    void chosen(PortReturn::Offer::Kind offer);

private:
    void useFound();
    void showFound(const AdapterSearch::Found& found);
    QString foundWords() const;
    QString offerWords() const;

    std::unique_ptr<Ui::PortReturn> ui;
    DeviceSources sources_;
    AdapterSearch search_;
    AdapterSearch::Found found_;
    Offer offer_;
    bool isCut_ = false;
    QTimer tmrLook_;
};
