#include "StreamWriter.h"

#include <ostream>

void StreamWriter::writeToSink(const QzCString& text) {
    out_.write(text.data(), static_cast<std::streamsize>(text.length()));
}

void StreamWriter::writeToSink(const char* bytes, unsigned long n) {
    out_.write(bytes, static_cast<std::streamsize>(n));
}

void StreamWriter::writeToSink(char c) {
    out_.put(c);
}

void StreamWriter::flush() {
    out_.flush();
}
