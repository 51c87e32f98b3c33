#include "QzXmlStringWriter.h"

#include <algorithm>
#include <cstring>

namespace {

// The first growth allocates at least this much, so that small documents grow once at most.
constexpr unsigned long MinimumGrowth = 4096;

}  // namespace

QzXmlStringWriter::QzXmlStringWriter(unsigned long initialCapacity)
    : buffer_(initialCapacity > 0 ? new char[initialCapacity] : nullptr),
      length_(0),
      capacity_(initialCapacity) {}

QzXmlStringWriter::~QzXmlStringWriter() = default;

void QzXmlStringWriter::writeToSink(const QzCString& text) {
    writeToSink(text.data(), static_cast<unsigned long>(text.length()));
}

void QzXmlStringWriter::writeToSink(const char* bytes, unsigned long n) {
    if (bytes == nullptr || n == 0) return;
    if (length_ + n > capacity_) grow(std::max(2 * (capacity_ + n), MinimumGrowth));
    std::memcpy(buffer_.get() + length_, bytes, n);
    length_ += n;
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
