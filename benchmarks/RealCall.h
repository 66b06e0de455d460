// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <dlfcn.h>
#include <sys/types.h>

/// The system's own function where the paced line has one of the same name.
template <typename Function> Function realCall(const char* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

inline ssize_t realWrite(int fd, const void* bytes, std::size_t count)
{
    static const auto function = realCall<ssize_t (*)(int, const void*, std::size_t)>("write");
    return function(fd, bytes, count);
}

inline ssize_t realRead(int fd, void* bytes, std::size_t count)
{
    static const auto function = realCall<ssize_t (*)(int, void*, std::size_t)>("read");
    return function(fd, bytes, count);
}
