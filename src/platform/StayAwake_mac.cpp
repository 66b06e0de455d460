// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/StayAwake.h"

#include <QCoreApplication>
#include <QProcess>

// caffeinate keeps a Mac awake for as long as it runs, or until the process that it watches has ended.
struct StayAwake::Request {
    QProcess process;
};

StayAwake::StayAwake(QObject* parent) : QObject(parent) {}

StayAwake::~StayAwake() = default;

void StayAwake::want(bool awake, const QString&)
{
    if (awake == (request_ != nullptr)) return;
    if (!awake) {
        request_->process.disconnect();
        request_->process.kill();
        request_->process.waitForFinished();
        request_.reset();
        Q_EMIT grantedChanged();
        return;
    }
    request_ = std::make_unique<Request>();
    connect(&request_->process, &QProcess::stateChanged, this, &StayAwake::grantedChanged);
    request_->process.start(QStringLiteral("/usr/bin/caffeinate"),
                            {QStringLiteral("-i"), QStringLiteral("-s"), QStringLiteral("-w"),
                             QString::number(QCoreApplication::applicationPid())});
}

bool StayAwake::isGranted() const
{
    return request_ && request_->process.state() == QProcess::Running;
}
