#ifndef QZXML_TOOL_STREAMWRITER_H
#define QZXML_TOOL_STREAMWRITER_H

#include <iosfwd>

#include "QzXmlWriter.h"

/// A writer whose output goes to a standard stream as it is written.
class StreamWriter : public QzXmlWriter {
public:
    explicit StreamWriter(std::ostream& out) : out_(out) {}

    using QzXmlWriter::writeToSink;
    void writeToSink(const QzCString& text) override;
    void writeToSink(const char* bytes, unsigned long n) override;
    void writeToSink(char c) override;
    void flush() override;

private:
    std::ostream& out_;
};

#endif
