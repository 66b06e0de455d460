// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

#include <memory>

/// Keeps the computer from sleeping, also when it is idle or its lid is closed, for as long as somebody wants it. Where
/// the system has no such service nothing happens. Main thread.
class StayAwake : public QObject
{
    Q_OBJECT
public:
    explicit StayAwake(QObject* parent = nullptr);
    ~StayAwake() override;

    /// Asks the system, or lets it sleep again. Returns at once. `why` is what the system shows of it.
    void want(bool awake, const QString& why);
    /// The system has agreed, and holds to it until want(false).
    bool isGranted() const;

Q_SIGNALS:
    void grantedChanged();

private:
    struct Request;
    std::unique_ptr<Request> request_; // while awake is wanted
};
