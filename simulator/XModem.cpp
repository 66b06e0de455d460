// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulator/XModem.h"

namespace cncsim::xmodem
{
unsigned char numberOf(std::size_t block, bool standardNumbers)
{
    return static_cast<unsigned char>(standardNumbers ? block & 0xFF : (block - 1) % 255 + 1);
}

char checksum(const std::string& data)
{
    unsigned sum = 0;
    for (const char byte : data)
        sum += static_cast<unsigned char>(byte);
    return static_cast<char>(sum & 0xFF);
}

std::string block(unsigned char number, std::string data, char padding)
{
    data.resize(dataSize, padding);
    return std::string{soh, static_cast<char>(number), static_cast<char>(255 - number)} + data + checksum(data);
}
} // namespace cncsim::xmodem
