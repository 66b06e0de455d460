// SPDX-License-Identifier: GPL-3.0-or-later
#include "serial/SerialLine.h"

#include "serial/SerialPlatform.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace
{
struct Rate {
    unsigned long baud;
    speed_t code;
};
constexpr std::array rates{
    Rate{50, B50},       Rate{75, B75},         Rate{110, B110},       Rate{134, B134},     Rate{150, B150},
    Rate{200, B200},     Rate{300, B300},       Rate{600, B600},       Rate{1200, B1200},   Rate{1800, B1800},
    Rate{2400, B2400},   Rate{4800, B4800},     Rate{9600, B9600},     Rate{19200, B19200}, Rate{38400, B38400},
    Rate{57600, B57600}, Rate{115200, B115200}, Rate{230400, B230400},
};

constexpr int releaseTime = 500; // ms that opening waits for this program to finish closing

// XOFF (DC3, ISO 646), and as it arrives from a control that marks its bytes with even parity.
constexpr cc_t stopCharacter = 0x13;
constexpr cc_t markedStopCharacter = 0x93;

constexpr tcflag_t flowInputFlags = IXON | IXOFF | IXANY;

void set(tcflag_t& flags, tcflag_t mask, bool on)
{
    flags = on ? flags | mask : flags & ~mask;
}

void setFlowFlags(termios& line, int flow)
{
    line.c_iflag &= ~flowInputFlags;
    // Never IXON: on many USB adapters the driver swallows XOFF and goes on. Our writes obey it themselves.
    set(line.c_iflag, IXOFF, flow == 1);
    set(line.c_cflag, CRTSCTS, flow == 2);
}

bool setSpeed(termios& line, unsigned long baud)
{
    const auto* rate = std::find_if(rates.begin(), rates.end(), [baud](const Rate& r) { return r.baud == baud; });
    return rate != rates.end() && ::cfsetospeed(&line, rate->code) == 0 && ::cfsetispeed(&line, rate->code) == 0;
}

// A new tty turns each received CR into LF (ICRNL): a program would lose its carriage returns and gain blank lines.
constexpr tcflag_t inputTranslations = ICRNL | INLCR | IGNCR | PARMRK | INPCK | BRKINT;

// Input flags that are not named here stay as the device had them.
void setInput(termios& line, const SerialLine::Settings& settings)
{
    set(line.c_iflag, ISTRIP, !SerialLine::readerStripsParity(settings.evenParity));
    line.c_iflag &= ~static_cast<tcflag_t>(IGNBRK | IGNPAR);
    line.c_iflag &= ~(inputTranslations | SerialPlatform::extraInputTranslations());
}

void setControl(termios& line, const SerialLine::Settings& settings)
{
    // Always 8 data bits without hardware parity, because even parity is made in software.
    line.c_cflag |= CS8 | CREAD | CLOCAL;
    set(line.c_cflag, PARENB, false);
    set(line.c_cflag, CSTOPB, settings.stopBits == 2);
    line.c_cc[VSTOP] = settings.evenParity ? markedStopCharacter : stopCharacter;
}

bool isSame(const termios& a, const termios& b)
{
    return a.c_iflag == b.c_iflag && a.c_oflag == b.c_oflag && a.c_cflag == b.c_cflag && a.c_lflag == b.c_lflag &&
           a.c_cc[VSTOP] == b.c_cc[VSTOP] && ::cfgetospeed(&a) == ::cfgetospeed(&b) &&
           ::cfgetispeed(&a) == ::cfgetispeed(&b);
}

// Where the code of a rate is the rate itself, a driver may report what its clock makes of it: 9615 for 9600.
bool isSameSpeed(speed_t asked, speed_t taken)
{
    constexpr bool codesAreRates = B9600 == 9600;
    const speed_t apart = std::max(asked, taken) - std::min(asked, taken);
    return apart == 0 || (codesAreRates && apart <= asked / 50); // 2 %
}

PortError errorOf(int systemError)
{
    switch (systemError) {
    case ENOENT:
    case ENODEV:
    case ENXIO:
    case ENOTDIR:
        return PortError::Missing;
    case EACCES:
    case EPERM:
        return PortError::NoPermission;
    case EBUSY:
        return PortError::InUse;
    case ENOTTY:
    case EISDIR:
        return PortError::NotASerialPort;
    case EINVAL:
        return PortError::SettingsRefused;
    default:
        return PortError::Other;
    }
}

// Why the system call just before failed.
PortFailure systemFailure()
{
    const int systemError = errno;
    const auto error = errorOf(systemError);
    return {error, error == PortError::Other ? QString::fromLocal8Bit(std::strerror(systemError)) : QString()};
}
} // namespace

bool SerialLine::hasSpeed(unsigned long baud)
{
    return std::any_of(rates.begin(), rates.end(), [baud](const Rate& r) { return r.baud == baud; });
}

bool SerialLine::readerStripsParity(bool evenParity)
{
    return evenParity && SerialPlatform::stripHidesMarkedStop();
}

std::variant<std::shared_ptr<Descriptor>, PortFailure> SerialLine::openExclusive(const QString& path)
{
    const QByteArray name = path.toUtf8();
    struct stat device {
    };
    if (::stat(name.constData(), &device) != 0) return systemFailure();
    // Opening a device that is being closed would hang in the driver until the close is over.
    if (!Descriptor::waitUntilReleased(device.st_rdev, releaseTime)) return PortFailure{PortError::Closing};

    const int fd = ::open(name.constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return systemFailure();
    // The lock keeps out programs that lock too, even the superuser's; TIOCEXCL keeps out the others.
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return PortFailure{PortError::InUse};
    }
    ::ioctl(fd, TIOCEXCL);
    return std::make_shared<Descriptor>(fd, device.st_rdev);
}

PortFailure SerialLine::setUp(int descriptor, const Settings& settings)
{
    termios before{};
    if (::tcgetattr(descriptor, &before) != 0) return systemFailure();
    termios line = before;
    if (!setSpeed(line, settings.speed)) return {PortError::NoSuchSpeed};
    setInput(line, settings);
    line.c_oflag = 0; // no output processing
    line.c_lflag = 0; // no canonical mode, echo or signals
    setControl(line, settings);
    setFlowFlags(line, settings.flowType);
    if (isSame(line, before)) return {};
    termios taken{};
    if (::tcsetattr(descriptor, TCSANOW, &line) != 0 || ::tcgetattr(descriptor, &taken) != 0) return systemFailure();
    SerialPlatform::askForLowLatency(descriptor);
    return {notTaken(line, taken)};
}

PortError SerialLine::notTaken(const termios& asked, const termios& taken)
{
    const auto differs = [&](tcflag_t flag) { return ((asked.c_cflag ^ taken.c_cflag) & flag) != 0; };
    if (!isSameSpeed(::cfgetospeed(&asked), ::cfgetospeed(&taken)) ||
        !isSameSpeed(::cfgetispeed(&asked), ::cfgetispeed(&taken)))
        return PortError::SpeedNotTaken;
    if (differs(CSTOPB)) return PortError::StopBitsNotTaken;
    return differs(CRTSCTS) ? PortError::RtsCtsNotTaken : PortError::None;
}

PortFailure SerialLine::setFlow(int descriptor, int flow)
{
    termios line{};
    if (::tcgetattr(descriptor, &line) != 0) return systemFailure();
    setFlowFlags(line, flow);
    termios taken{};
    if (::tcsetattr(descriptor, TCSANOW, &line) != 0 || ::tcgetattr(descriptor, &taken) != 0) return systemFailure();
    return {notTaken(line, taken)};
}
