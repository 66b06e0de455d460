// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/NewName.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

int NewName::give(int folder, const char* from, const char* to)
{
    if (::renameatx_np(folder, from, folder, to, RENAME_EXCL) == 0) return 0;
    if (errno != EINVAL && errno != ENOTSUP) return errno;
    if (::linkat(folder, from, folder, to, 0) != 0) return errno;
    ::unlinkat(folder, from, 0);
    return 0;
}
