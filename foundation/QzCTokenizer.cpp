#include "QzCTokenizer.h"

#include <cstring>

QzCString QzCTokenizer::operator()(const char* delims) {
    return (*this)(delims, std::strlen(delims));
}

QzCString QzCTokenizer::operator()(const char* delims, QzSize_T n) {
    bool isDelim[256] = {};
    for (QzSize_T i = 0; i < n; ++i)
        isDelim[static_cast<unsigned char>(delims[i])] = true;
    const char* s = text_.data();
    const QzSize_T len = text_.length();
    while (pos_ < len && isDelim[static_cast<unsigned char>(s[pos_])])
        ++pos_;
    const QzSize_T start = pos_;
    while (pos_ < len && !isDelim[static_cast<unsigned char>(s[pos_])])
        ++pos_;
    const QzSize_T tokenEnd = pos_;
    // Like strtok, the delimiter that ends a token is consumed with it.
    if (pos_ < len) ++pos_;
    return QzCString(s + start, tokenEnd - start);
}
