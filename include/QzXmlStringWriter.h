#ifndef QZXMLSTRINGWRITER_H
#define QZXMLSTRINGWRITER_H

#include "QzXmlExport.h"

#include <memory>

#include "QzCString.h"
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
    void grow(unsigned long capacity);

    std::unique_ptr<char[]> buffer_;
    unsigned long length_;
    unsigned long capacity_;
};

#endif
