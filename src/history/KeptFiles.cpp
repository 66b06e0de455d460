// SPDX-License-Identifier: GPL-3.0-or-later
#include "history/KeptFiles.h"

#include "platform/NewName.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace
{
constexpr mode_t asUsual = 0666; // less what the user's mask takes away

// Thrown and caught in this file only: each step needs the one before it.
[[noreturn]] void fail(int code)
{
    throw std::system_error(code, std::generic_category());
}

class Descriptor
{
public:
    explicit Descriptor(int fd) : fd_(fd)
    {
        if (fd_ < 0) fail(errno);
    }
    ~Descriptor() { ::close(fd_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    operator int() const { return fd_; }

private:
    const int fd_;
};

QByteArray keptName(const QByteArray& name, qint64 number)
{
    return name + ".~" + QByteArray::number(number) + '~';
}

QByteArray readAll(int file, qint64 size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    qint64 read = 0;
    while (read < size) {
        const auto count = ::read(file, bytes.data() + read, static_cast<std::size_t>(size - read));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) fail(errno);
        if (count == 0) break; // it has become shorter
        read += count;
    }
    return bytes.first(read);
}

void writeAll(int file, const QByteArray& bytes)
{
    for (qsizetype at = 0; at < bytes.size();) {
        const auto count = ::write(file, bytes.constData() + at, static_cast<std::size_t>(bytes.size() - at));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) fail(errno);
        at += count;
    }
    if (::fsync(file) != 0) fail(errno); // some disks say only now that they are full
}

struct Old {
    struct stat status = {};
    QByteArray bytes;
};

// A file under a name that nobody else has, until it gets its own. Without that it goes again.
class Hidden
{
public:
    // Gets the rights that the old one has.
    Hidden(int folder, const QByteArray& name, const QByteArray& bytes, const std::optional<Old>& old)
        : folder_(folder), name_(nameFor(name)),
          file_(::openat(folder, name_.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, asUsual))
    {
        try {
            writeAll(file_, bytes);
        } catch (...) {
            ::unlinkat(folder_, name_.constData(), 0);
            throw;
        }
        if (old) ::fchmod(file_, old->status.st_mode & 0777); // not every file system has rights
    }
    ~Hidden() { ::unlinkat(folder_, name_.constData(), 0); }
    Hidden(const Hidden&) = delete;
    Hidden& operator=(const Hidden&) = delete;

    void becomes(const QByteArray& name) const
    {
        if (const int error = NewName::give(folder_, name_.constData(), name.constData())) fail(error);
    }
    void replaces(const QByteArray& name) const
    {
        if (::renameat(folder_, name_.constData(), folder_, name.constData()) != 0) fail(errno);
    }

    static bool isNameFor(const QByteArray& name, const QByteArray& hidden)
    {
        return hidden.startsWith('.' + name + '.') && hidden.endsWith(ending);
    }

private:
    static constexpr char ending[] = ".new";
    static QByteArray nameFor(const QByteArray& name)
    {
        static std::atomic<int> count = 0;
        return '.' + name + '.' + QByteArray::number(::getpid()) + '-' + QByteArray::number(++count) + ending;
    }

    const int folder_;
    const QByteArray name_;
    const Descriptor file_;
};

// The lock of that folder in this program. On a network the file system has none for folders.
std::shared_ptr<std::mutex> lockOf(int folder)
{
    struct stat status = {};
    if (::fstat(folder, &status) != 0) fail(errno);
    static std::mutex guard;
    static std::map<std::pair<dev_t, ino_t>, std::shared_ptr<std::mutex>> locks;
    const std::lock_guard lock(guard);
    auto& found = locks[{status.st_dev, status.st_ino}];
    if (!found) found = std::make_shared<std::mutex>();
    return found;
}

// One folder, held for one order: two machines may save a program of the same name at the same time.
class Folder
{
public:
    explicit Folder(const QString& path)
        : fd_(::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)), path_(path),
          mutex_(lockOf(fd_)), lock_(*mutex_)
    {
        ::flock(fd_, LOCK_EX); // against another user's program, where there are such locks
    }

    // The file of that name, if there is one.
    std::optional<Old> read(const QByteArray& name) const
    {
        // Does not wait for the writer of a pipe.
        const int opened = ::openat(fd_, name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (opened < 0 && errno == ENOENT) return {};
        const Descriptor file(opened);
        Old old;
        if (::fstat(file, &old.status) != 0) fail(errno);
        if (!S_ISREG(old.status.st_mode)) fail(S_ISDIR(old.status.st_mode) ? EISDIR : EEXIST);
        old.bytes = readAll(file, old.status.st_size);
        return old;
    }

    void writeNew(const QByteArray& name, const QByteArray& bytes, const std::optional<Old>& old = {}) const
    {
        Hidden(fd_, name, bytes, old).becomes(name);
    }

    // Returns the number under which the old one is kept.
    qint64 replace(const QByteArray& name, const QByteArray& bytes, const Old& old) const
    {
        const Hidden hidden(fd_, name, bytes, old);
        const qint64 number = keep(name, old);
        hidden.replaces(name);
        return number;
    }

    void dropOldest(const QByteArray& name, int copies) const
    {
        const auto numbers = copiesOf(name);
        for (qsizetype index = 0; index < numbers.size() - copies; ++index)
            ::unlinkat(fd_, keptName(name, numbers[index]).constData(), 0);
    }

    // What a program that was killed has left: nothing takes this long to write.
    void dropLeftovers(const QByteArray& name) const
    {
        const auto old = QDateTime::currentDateTime().addSecs(-24 * 60 * 60);
        for (const auto& file : files())
            if (Hidden::isNameFor(name, QFile::encodeName(file.fileName())) && file.lastModified() < old)
                ::unlinkat(fd_, QFile::encodeName(file.fileName()).constData(), 0);
    }

    void flush() const { ::fsync(fd_); } // not every file system can

private:
    QFileInfoList files() const { return QDir(path_).entryInfoList(QDir::Files | QDir::Hidden | QDir::System); }

    // The numbers of the older copies, the oldest first.
    QList<qint64> copiesOf(const QByteArray& name) const
    {
        QList<qint64> numbers;
        for (const auto& file : files()) {
            const QByteArray encoded = QFile::encodeName(file.fileName());
            const qint64 number = encoded.mid(name.size() + 2).replace('~', "").toLongLong();
            if (number > 0 && encoded == keptName(name, number)) numbers << number;
        }
        std::sort(numbers.begin(), numbers.end());
        return numbers;
    }

    // Gives the old file a second name, or copies it where files have only one.
    qint64 keep(const QByteArray& name, const Old& old) const
    {
        const auto numbers = copiesOf(name);
        if (!numbers.isEmpty() && isSame(keptName(name, numbers.last()), old)) return numbers.last();
        for (qint64 number = numbers.isEmpty() ? 1 : numbers.last() + 1;; ++number) {
            const QByteArray kept = keptName(name, number);
            if (::linkat(fd_, name.constData(), fd_, kept.constData(), 0) == 0) return number;
            if (errno == EEXIST) continue;
            if (errno == ENOENT) fail(errno); // taken away just now
            writeNew(kept, old.bytes, old);
            return number;
        }
    }

    // It has that name already: the program was killed before the new one came into its place.
    bool isSame(const QByteArray& kept, const Old& old) const
    {
        struct stat status = {};
        return ::fstatat(fd_, kept.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
               status.st_ino == old.status.st_ino && status.st_dev == old.status.st_dev;
    }

    const Descriptor fd_;
    const QString path_;
    const std::shared_ptr<std::mutex> mutex_;
    const std::lock_guard<std::mutex> lock_;
};

QString inWords(int error)
{
    if (error == EISDIR) return QStringLiteral("a folder has this name");
    if (error == ELOOP) return QStringLiteral("a link has this name");
    if (error == EEXIST) return QStringLiteral("something else has this name");
    if (error == ENOENT || error == ENOTDIR) return QStringLiteral("the folder is not there");
    return qt_error_string(error);
}
} // namespace

QString KeptFiles::keptPath(const QString& path, qint64 number)
{
    return QFile::decodeName(keptName(QFile::encodeName(path), number));
}

KeptFiles::Result KeptFiles::save(const Order& order)
{
    Result result;
    result.path = QDir(order.folder).filePath(order.name);
    try {
        const QByteArray name = QFile::encodeName(order.name);
        if (name.isEmpty() || name.startsWith('.') || name.contains('/') || name.contains('\0')) fail(EINVAL);
        const Folder folder(order.folder);
        const auto old = folder.read(name);
        if (old && old->bytes == order.bytes) {
            result.outcome = Result::Outcome::Same;
            return result;
        }
        if (old)
            result.kept = folder.replace(name, order.bytes, *old);
        else
            folder.writeNew(name, order.bytes);
        folder.flush();
        folder.dropOldest(name, std::max(order.copies, 1));
        folder.dropLeftovers(name);
    } catch (const std::system_error& error) {
        result.outcome = Result::Outcome::Failed;
        result.error = inWords(error.code().value());
    }
    return result;
}
