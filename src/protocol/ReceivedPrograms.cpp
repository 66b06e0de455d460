// SPDX-License-Identifier: GPL-3.0-or-later
#include "protocol/ReceivedPrograms.h"

#include "protocol/Framing.h"

void ReceivedPrograms::take(const QByteArray& bytes)
{
    for (const char c : bytes) {
        if (c == Framing::tapeStop) end();
        if (c == '\n' || c == '\r') {
            if (at_ == At::AfterO) open();
            at_ = At::LineStart;
        } else if (at_ == At::AfterO) {
            c >= '0' && c <= '9' ? openNumbered() : open();
            at_ = At::Inside;
        } else if (at_ == At::LineStart && c > ' ' && c != 127) { // neither blank nor leader
            takeFirst(c);
        }
    }
}

void ReceivedPrograms::takeFirst(char c)
{
    at_ = c == 'O' || c == 'o' || c == ':' ? At::AfterO : At::Inside;
    if (at_ == At::AfterO) return;
    if (c == '%' || c == '$') end();
    if (c != '%') open();
}

void ReceivedPrograms::open()
{
    if (isOpen_) return;
    isOpen_ = true;
    isNumbered_ = false;
    ++count_;
}

void ReceivedPrograms::openNumbered()
{
    if (isNumbered_) end();
    open();
    isNumbered_ = true;
}
