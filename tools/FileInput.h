#ifndef QZXML_TOOL_FILEINPUT_H
#define QZXML_TOOL_FILEINPUT_H

#include <cstdint>
#include <streambuf>
#include <string>
#include <vector>

/// A file, or standard input for "-", as a stream buffer over plain reads, so that the
/// streaming reader takes it a chunk at a time. The first chunk is read on opening, which
/// is where an unreadable input (a directory, say) shows. It counts the lines of what it has
/// handed out, for the place where the input ended.
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
    bool fill();
    std::size_t readSome(char* into, std::size_t n);
    void count(const char* first, const char* last);

    int fd_ = -1;
    bool ownsFd_ = false;
    std::vector<char> buffer_ = std::vector<char>(1 << 16);
    std::uint64_t lines_ = 1;
    std::uint64_t column_ = 1;
    int error_ = 0;  ///< errno of a failed read
};

#endif
