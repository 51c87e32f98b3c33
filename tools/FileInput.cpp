#include "FileInput.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "QzXmlLineFeeds.h"

FileInput::~FileInput() {
    if (reader_.joinable()) {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            stopping_ = true;
        }
        changed_.notify_all();
        // Wakes the thread should it wait for input that may never come, as from a terminal.
        const std::uint64_t one = 1;
        while (::write(stopFd_, &one, sizeof one) < 0 && errno == EINTR) {
        }
        reader_.join();
    }
    if (stopFd_ >= 0) ::close(stopFd_);
    if (ownsFd_) ::close(fd_);
}

bool FileInput::open(const std::string& path, std::string& reason) {
    fd_ = path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    ownsFd_ = path != "-" && fd_ >= 0;
    if (fd_ < 0) {
        reason = std::strerror(errno);
        return false;
    }
    Chunk& first = chunks_[0];
    first.size = readSome(first.bytes.data(), kChunk, first.error);
    if (first.error != 0) {
        reason = std::strerror(first.error);
        return false;
    }
    taken_ = filled_ = 1;
    count(first.bytes.data(), first.bytes.data() + first.size);
    setg(first.bytes.data(), first.bytes.data(), first.bytes.data() + first.size);
    ended_ = first.size == 0;
    if (ended_) return true;
    stopFd_ = ::eventfd(0, EFD_CLOEXEC);
    if (stopFd_ < 0) {
        reason = std::strerror(errno);
        return false;
    }
    reader_ = std::thread(&FileInput::readAhead, this);
    return true;
}

// One read of at most n bytes into `into`; 0 at the end, and on a failure, which error then
// names.
std::size_t FileInput::readSome(char* into, std::size_t n, int& error) const {
    ssize_t got;
    do {
        got = ::read(fd_, into, n);
    } while (got < 0 && errno == EINTR);
    if (got < 0) {
        error = errno;
        return 0;
    }
    return static_cast<std::size_t>(got);
}

// The reading thread: fills each chunk the caller has let go of, until the end, a failure,
// or the caller stops it.
void FileInput::readAhead() {
    for (bool more = true; more;) {
        std::size_t next;
        {
            std::unique_lock<std::mutex> lock(mutex_);
            changed_.wait(lock, [this] { return stopping_ || filled_ < taken_ - 1 + kChunks; });
            if (stopping_) break;
            next = filled_;
        }
        pollfd ready[2] = {{fd_, POLLIN, 0}, {stopFd_, POLLIN, 0}};
        while (::poll(ready, 2, -1) < 0 && errno == EINTR) {
        }
        if ((ready[1].revents & POLLIN) != 0) break;
        Chunk& chunk = chunks_[next % kChunks];
        chunk.error = 0;
        chunk.size = readSome(chunk.bytes.data(), kChunk, chunk.error);
        more = chunk.size > 0;
        const std::lock_guard<std::mutex> lock(mutex_);
        ++filled_;
        changed_.notify_all();
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    ended_ = true;
    changed_.notify_all();
}

// Lets go of the chunk read out and makes the next one the get area; false at the end. A
// failed read must not pass for the end of the input: the stream reports it.
bool FileInput::nextChunk() {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return filled_ > taken_ || ended_; });
    if (filled_ == taken_) return false;
    Chunk& chunk = chunks_[taken_++ % kChunks];
    lock.unlock();
    changed_.notify_all();
    if (chunk.error != 0) throw std::runtime_error(std::strerror(chunk.error));
    count(chunk.bytes.data(), chunk.bytes.data() + chunk.size);
    setg(chunk.bytes.data(), chunk.bytes.data(), chunk.bytes.data() + chunk.size);
    return chunk.size > 0;
}

std::streamsize FileInput::xsgetn(char* s, std::streamsize n) {
    std::streamsize done = 0;
    while (done < n && (gptr() < egptr() || nextChunk())) {
        const std::streamsize some = std::min<std::streamsize>(n - done, egptr() - gptr());
        std::memcpy(s + done, gptr(), static_cast<std::size_t>(some));
        gbump(static_cast<int>(some));
        done += some;
    }
    return done;
}

FileInput::int_type FileInput::underflow() {
    if (gptr() < egptr() || nextChunk()) return traits_type::to_int_type(*gptr());
    return traits_type::eof();
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
