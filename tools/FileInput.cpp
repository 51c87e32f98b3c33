#include "FileInput.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

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

// Reads the next chunk into the get area; false at the end or on a failed read.
bool FileInput::fill() {
    ssize_t n;
    do {
        n = ::read(fd_, buffer_.data(), buffer_.size());
    } while (n < 0 && errno == EINTR);
    if (n < 0) error_ = errno;
    const std::size_t got = n > 0 ? static_cast<std::size_t>(n) : 0;
    setg(buffer_.data(), buffer_.data(), buffer_.data() + got);
    count(buffer_.data(), buffer_.data() + got);
    return n >= 0;
}

FileInput::int_type FileInput::underflow() {
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    // A failed read must not pass for the end of the input: the stream reports it.
    if (!fill()) throw std::runtime_error(std::strerror(error_));
    return gptr() < egptr() ? traits_type::to_int_type(*gptr()) : traits_type::eof();
}

void FileInput::count(const char* first, const char* last) {
    const char* lineStart = first;
    for (const char* p = first;
         (p = static_cast<const char*>(std::memchr(p, '\n', last - p))) != nullptr;
         lineStart = ++p) {
        ++lines_;
        column_ = 1;
    }
    column_ += static_cast<std::uint64_t>(last - lineStart);
}

std::string FileInput::endPosition() const {
    return std::to_string(lines_) + ':' + std::to_string(column_);
}
