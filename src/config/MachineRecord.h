// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "config/ReceiveToFiles.h"

#include <QString>
#include <QStringList>

/// All that is stored about one CNC machine. The machine's icon carries it, so that an icon shows and a transfer uses
/// the same record. Plain fields: the reader checks what is stored; nothing checks what the operator types.
struct MachineRecord {
    MachineRecord() = default;
    virtual ~MachineRecord() = default;
    MachineRecord(const MachineRecord&) = delete;

    /// The path of the machine's serial device now.
    const QString& port() const { return portNow.isEmpty() ? MCPORT : portNow; }

    /// Takes over all that is set up for the other machine, but not its place in the list.
    void takeSettings(const MachineRecord& other)
    {
        const auto index = MCINDEX;
        *this = other;
        MCINDEX = index;
        MCISDOCKED = false;
        recentPrograms.clear();
        portNow.clear();
    }

    qint64 MCINDEX = 0; ///< position in the machine list
    bool MCISDOCKED = false;
    QString MCNAME = QStringLiteral("CNC1");
    QString MCMODE = QStringLiteral("NONE"); ///< control type
    QString MCPORT = QStringLiteral("1");    ///< path of the serial device
    QString MCINDIR;
    QString MCOUTDIR;    ///< folder of the program files
    qint64 MCFLOW = 1;   ///< a FlowControl of LineSettings.h
    bool MCWAIT = false; ///< wait for the control's start signal before sending
    bool MCREPEAT = false;
    qint64 MCDELAY = 10;
    bool MCCRLF = false;
    qint64 MCBLKTIC = 0;
    qint64 MCBAUD = 1200;
    bool MCEIA = false;
    qint64 MCDBPAR = 0; ///< a DataFormat of LineSettings.h
    qint64 MCSBITS = 1;
    QString MCTXEOB = QStringLiteral("CRLF");
    QString MCTXSOT = QStringLiteral("None (Default)");
    QString MCTXEOT = QStringLiteral("None (Default)");
    bool MCSTRIPCOMMENTS = false;
    bool MCSTRIPEMPTYLINES = false;
    QString MCRXEOBCHAR = QStringLiteral("LF"); ///< the word in a fresh record, the character itself in a loaded one
    QString MCREQST = QStringLiteral("SEND");
    QString MCEXTENS;
    qint64 MCRXTOUT = 3;
    qint64 MCTXTOUT = 3;
    QString MCNOTFOUNDMSG;
    bool MCFNAMEISTXT = false;
    bool MCAUTOSTARTREMO = false;
    bool MCREMOENABLED = false;
    bool MCFADALTA1 = false;
    QString MCREMOPFX;
    bool MCSAVEPFX = false;     ///< a flag, although MCREMOPFX beside it is a text
    bool MCXMODEM0 = false;     ///< XModem counts its blocks to 255 and then 0, not 1
    QStringList recentPrograms; ///< see RecentPrograms; no part of the settings text
    ReceiveToFiles toFiles;     ///< no part of the settings text
    QString portNow;            ///< where the adapter of MCPORT was found again, since the start; else empty
    QString lastSentProgram;    ///< path of the program sent last, since the start; no part of the settings text

protected:
    MachineRecord& operator=(const MachineRecord&) = default;
};
