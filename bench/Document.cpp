#include "Document.h"

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
}
