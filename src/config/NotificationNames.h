// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLatin1String>

/// Names of the notifications through which views that do not know each other talk.
namespace Notifications
{
// Posted by the port concerned
inline constexpr QLatin1String TxOnComm("TxOnComm"); ///< a write is complete
inline constexpr QLatin1String RxOnComm("RxOnComm"); ///< bytes have arrived

// Posted by a machine icon, with the machine's index
inline constexpr QLatin1String MCIcon_Click("MCIcon_Click");
inline constexpr QLatin1String btnDeleteIcon_Click("btnDeleteIcon_Click");
inline constexpr QLatin1String activityChanged_Event("activityChanged_Event"); ///< of its transfer

// Posted by the menu, for the active machine
inline constexpr QLatin1String sendButton_Clicked("sendButton_Clicked");
inline constexpr QLatin1String receiveButton_Clicked("receiveButton_Clicked");
inline constexpr QLatin1String setupButton_Clicked("setupButton_Clicked");
inline constexpr QLatin1String historyButton_Clicked("historyButton_Clicked");
inline constexpr QLatin1String showViewButton_Clicked("showViewButton_Clicked");
inline constexpr QLatin1String dockButton_Clicked("dockButton_Clicked"); ///< by an undocked window with its index

// Posted by the setup form and the child windows
inline constexpr QLatin1String setupSaveButton_Click("setupSaveButton_Click");       ///< with the machine's index
inline constexpr QLatin1String childGotFocus_Event("childGotFocus_Event");           ///< with the machine's index
inline constexpr QLatin1String dockedChildLeaving_Event("dockedChildLeaving_Event"); ///< with the machine's index

// Posted by a transfer view, with what the history keeps of the transfer
inline constexpr QLatin1String transferRecorded_Event("transferRecorded_Event");
/// The key of that entry in a notification's values.
inline constexpr QLatin1String transferEntry("entry");

// Posted by a receive view
inline constexpr QLatin1String toFilesChanged_Event("toFilesChanged_Event"); ///< it saves by itself now, or no longer

/// The key of the machine's index in a notification's values.
inline constexpr QLatin1String machineIndex("MC");
} // namespace Notifications
