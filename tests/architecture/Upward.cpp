// SPDX-License-Identifier: GPL-3.0-or-later
// An include against the arrows: must not compile as a part of protocol.
#include "transfer/viewTX.h"
