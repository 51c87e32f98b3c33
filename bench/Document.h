#ifndef QZXML_BENCH_DOCUMENT_H
#define QZXML_BENCH_DOCUMENT_H

#include <cstring>
#include <string>
#include <vector>

/// A corpus file held in memory, named after its file without directory and extension. A
/// file named *.xmls is a set of messages, each a document of its own, separated by NUL
/// bytes; any other file is one document.
class Document {
public:
    /// One document of the file: its offset and its length.
    struct Part {
        std::size_t offset;
        std::size_t size;
    };

    /// Reads the whole file; throws std::runtime_error when it cannot be read.
    explicit Document(const std::string& path);

    const std::string& name() const noexcept { return name_; }
    const char* data() const noexcept { return bytes_.data(); }
    std::size_t size() const noexcept { return bytes_.size(); }
    /// The documents of the file, in order; one for a file that is not a set of messages.
    const std::vector<Part>& parts() const noexcept { return parts_; }

private:
    std::string name_;
    std::vector<char> bytes_;
    std::vector<Part> parts_;
};

/// A private copy of a document for parsers that rewrite their input in place; restore puts
/// the original bytes back into the same memory, so passes never touch fresh pages.
class InputCopy {
public:
    void assign(const Document& document) {
        source_ = &document;
        bytes_.assign(document.data(), document.data() + document.size());
    }
    void restore() { std::memcpy(bytes_.data(), source_->data(), bytes_.size()); }
    const std::vector<Document::Part>& parts() const noexcept { return source_->parts(); }

    char* data() noexcept { return bytes_.data(); }
    unsigned char* bytes() noexcept { return reinterpret_cast<unsigned char*>(bytes_.data()); }
    std::size_t size() const noexcept { return bytes_.size(); }

private:
    const Document* source_ = nullptr;
    std::vector<char> bytes_;
};

#endif
