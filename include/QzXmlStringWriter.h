#ifndef QZXMLSTRINGWRITER_H
#define QZXMLSTRINGWRITER_H

#include <algorithm>
#include <cstring>

#include <memory>

#include "QzCString.h"
#include "QzXmlExport.h"
#include "QzXmlWriter.h"

/// A writer that collects its output in memory, in a buffer that at least doubles whenever
/// it grows (to no less than 4096 bytes).
class QZXML_API QzXmlStringWriter : public QzXmlWriter {
public:
    /// An empty output with a buffer of exactly initialCapacity bytes (none for 0).
    explicit QzXmlStringWriter(unsigned long initialCapacity = 0);
    /// Frees the buffer.
    ~QzXmlStringWriter() override;

    /// Appends the string's bytes through writeToSink(const char*, unsigned long).
    void writeToSink(const QzCString& text) override;
    /// Appends n bytes; a null pointer or n of 0 changes nothing.
    void writeToSink(const char* bytes, unsigned long n) override;
    /// Appends one byte.
    void writeToSink(char c) override;
    /// Does nothing: the output is already in memory.
    void flush() override {}

    /// The bytes written so far.
    QzCString getString() const { return QzCString(buffer_.get(), length_); }
    /// The number of bytes written so far.
    unsigned long getLength() const noexcept { return length_; }
    /// The size of the buffer.
    unsigned long getCapacity() const noexcept { return capacity_; }
    /// Forgets the output written so far and keeps the buffer.
    void reset() noexcept { length_ = 0; }

private:
    // The writer appends to the buffer directly when this class's sink operations are the
    // final ones, skipping the virtual calls.
    friend class QzXmlWriter;

    /// writeToSink(const char*, unsigned long) itself.
    void append(const char* bytes, unsigned long n) {
        if (bytes == nullptr || n == 0) return;
        if (length_ + n > capacity_) grow(std::max(2 * (capacity_ + n), MinimumGrowth));
        std::memcpy(buffer_.get() + length_, bytes, n);
        length_ += n;
    }
    /// Where the next n bytes would go when they fit without growing, null otherwise.
    char* room(unsigned long n) noexcept {
        return length_ + n <= capacity_ ? buffer_.get() + length_ : nullptr;
    }
    /// Takes n bytes written into room() as output.
    void advance(unsigned long n) noexcept { length_ += n; }
    void grow(unsigned long capacity);

    /// The first growth allocates at least this much, so that small documents grow once at
    /// most.
    static constexpr unsigned long MinimumGrowth = 4096;

    std::unique_ptr<char[]> buffer_;
    unsigned long length_;
    unsigned long capacity_;
};

#endif
