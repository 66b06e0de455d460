// SPDX-License-Identifier: GPL-3.0-or-later
// An include from one folder in the braces to another: must not compile as a part of history.
#include "serial/serialPort.h"
