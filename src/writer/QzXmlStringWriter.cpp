#include "QzXmlStringWriter.h"

#include <algorithm>
#include <cstring>

QzXmlStringWriter::QzXmlStringWriter(unsigned long initialCapacity)
    : buffer_(initialCapacity > 0 ? new char[initialCapacity] : nullptr),
      length_(0),
      capacity_(initialCapacity) {}

QzXmlStringWriter::~QzXmlStringWriter() = default;

void QzXmlStringWriter::writeToSink(const QzCString& text) {
    writeToSink(text.data(), static_cast<unsigned long>(text.length()));
}

void QzXmlStringWriter::writeToSink(const char* bytes, unsigned long n) {
    append(bytes, n);
}

void QzXmlStringWriter::writeToSink(char c) {
    if (length_ + 1 > capacity_) grow(std::max(2 * capacity_, MinimumGrowth));
    buffer_[length_++] = c;
}

void QzXmlStringWriter::grow(unsigned long capacity) {
    std::unique_ptr<char[]> grown(new char[capacity]);
    std::copy_n(buffer_.get(), length_, grown.get());
    buffer_ = std::move(grown);
    capacity_ = capacity;
}
