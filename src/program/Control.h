// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// Whose words a program is written in: the same G code means different things to different controls. A lathe of the
/// Fanuc type is taken for one with G code system A, where G90, G92 and G94 are turning cycles.
enum class Control { FanucMill, FanucLathe, OkumaMill, OkumaLathe };

enum class MachineKind { Mill, Lathe };

inline bool isOkuma(Control control)
{
    return control == Control::OkumaMill || control == Control::OkumaLathe;
}

inline bool isLathe(Control control)
{
    return control == Control::FanucLathe || control == Control::OkumaLathe;
}

/// From the machine's mode name, whatever its case. Every mode but Okuma's is read in Fanuc's words: show the operator
/// which words were taken and let him choose others.
inline Control controlFor(const QString& mode, MachineKind kind)
{
    const bool okuma = mode.compare(QLatin1String("Okuma"), Qt::CaseInsensitive) == 0;
    if (kind == MachineKind::Lathe) return okuma ? Control::OkumaLathe : Control::FanucLathe;
    return okuma ? Control::OkumaMill : Control::FanucMill;
}
