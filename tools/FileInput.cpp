#include "FileInput.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "QzXmlLineFeeds.h"

FileInput::~FileInput() {
    if (ownsFd_) ::close(fd_);
}

bool FileInput::open(const std::string& path, std::string& reason) {
    fd_ = path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ownsFd_ = path != "-" && fd_ >= 0;
    if (fd_ < 0 || !fill()) {
        reason = std::strerror(fd_ < 0 ? errno : error_);
        return false;
    }
    return true;
}

// One read of at most n bytes into `into`, counted; 0 at the end, and on a failure, which
// error_ then names.
std::size_t FileInput::readSome(char* into, std::size_t n) {
    ssize_t got;
    do {
        got = ::read(fd_, into, n);
    } while (got < 0 && errno == EINTR);
    if (got < 0) {
        error_ = errno;
        return 0;
    }
    count(into, into + got);
    return static_cast<std::size_t>(got);
}

// Reads the next chunk into the get area; false on a failed read.
bool FileInput::fill() {
    const std::size_t got = readSome(buffer_.data(), buffer_.size());
    setg(buffer_.data(), buffer_.data(), buffer_.data() + got);
    return error_ == 0;
}

// A large read takes what the get area holds, then reads straight into the caller's bytes.
std::streamsize FileInput::xsgetn(char* s, std::streamsize n) {
    std::streamsize done = std::min<std::streamsize>(n, egptr() - gptr());
    std::memcpy(s, gptr(), static_cast<std::size_t>(done));
    gbump(static_cast<int>(done));
    while (done < n) {
        const std::size_t got = readSome(s + done, static_cast<std::size_t>(n - done));
        if (error_ != 0) throw std::runtime_error(std::strerror(error_));
        if (got == 0) break;
        done += static_cast<std::streamsize>(got);
    }
    return done;
}

FileInput::int_type FileInput::underflow() {
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    // A failed read must not pass for the end of the input: the stream reports it.
    if (!fill()) throw std::runtime_error(std::strerror(error_));
    return gptr() < egptr() ? traits_type::to_int_type(*gptr()) : traits_type::eof();
}

void FileInput::count(const char* first, const char* last) {
    lines_ += QzXmlLineFeeds::count(first, last);
    const auto* lastFeed = static_cast<const char*>(memrchr(first, '\n', last - first));
    column_ = lastFeed != nullptr ? static_cast<std::uint64_t>(last - lastFeed)
                                  : column_ + static_cast<std::uint64_t>(last - first);
}

std::string FileInput::endPosition() const {
    return std::to_string(lines_) + ':' + std::to_string(column_);
}
