#ifndef QZXML_TOOL_FILEINPUT_H
#define QZXML_TOOL_FILEINPUT_H

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <streambuf>
#include <string>
#include <thread>
#include <vector>

/// A file, or standard input for "-", as a stream buffer over plain reads, so that the
/// streaming reader takes it a chunk at a time. The first chunk is read on opening, which
/// is where an unreadable input (a directory, say) shows; after it, a thread of its own reads
/// the next chunks while the caller works on the last, so that the copies out of the kernel
/// take the other core. It counts the lines of what it has handed out, for the place where
/// the input ended.
class FileInput : public std::streambuf {
public:
    FileInput() = default;
    ~FileInput() override;
    FileInput(const FileInput&) = delete;
    FileInput& operator=(const FileInput&) = delete;

    /// Opens path and reads its first chunk; false, with reason, when that fails.
    bool open(const std::string& path, std::string& reason);
    /// "LINE:COLUMN" just after the last byte handed out (columns count bytes).
    std::string endPosition() const;

protected:
    int_type underflow() override;
    std::streamsize xsgetn(char* s, std::streamsize n) override;

private:
    // A chunk as the reading thread leaves it: its bytes, and how the read after them ended.
    struct Chunk {
        std::vector<char> bytes = std::vector<char>(kChunk);
        std::size_t size = 0;
        int error = 0;  ///< errno of a failed read
    };
    static constexpr std::size_t kChunk = 1 << 18;
    static constexpr std::size_t kChunks = 4;

    std::size_t readSome(char* into, std::size_t n, int& error) const;
    void readAhead();
    bool nextChunk();
    void count(const char* first, const char* last);

    int fd_ = -1;
    bool ownsFd_ = false;
    int stopFd_ = -1;  ///< written to when the reading thread is to stop
    std::vector<Chunk> chunks_ = std::vector<Chunk>(kChunks);
    std::size_t taken_ = 0;   ///< chunks the caller has taken, the current one included
    std::size_t filled_ = 0;  ///< chunks the thread has filled
    bool ended_ = false;      ///< the thread has met the end or a failure and stopped
    bool stopping_ = false;   ///< the caller is done: the thread is to stop
    std::mutex mutex_;
    std::condition_variable changed_;
    std::thread reader_;
    std::uint64_t lines_ = 1;
    std::uint64_t column_ = 1;
};

#endif
