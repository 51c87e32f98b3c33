#include "Document.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

std::string stem(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    const std::size_t dot = base.find_last_of('.');
    return dot == std::string::npos ? base : base.substr(0, dot);
}

}  // namespace

Document::Document(const std::string& path) : name_(stem(path)) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path);
    bytes_.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    const bool messages = path.size() > 5 && path.compare(path.size() - 5, 5, ".xmls") == 0;
    if (!messages) {
        parts_.push_back({0, bytes_.size()});
        return;
    }
    for (std::size_t at = 0; at < bytes_.size();) {
        const void* nul = std::memchr(bytes_.data() + at, '\0', bytes_.size() - at);
        const std::size_t end = nul ? static_cast<const char*>(nul) - bytes_.data() : bytes_.size();
        if (end > at) parts_.push_back({at, end - at});
        at = end + 1;
    }
}
