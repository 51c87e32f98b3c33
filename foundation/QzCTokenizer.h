#ifndef QZCTOKENIZER_H
#define QZCTOKENIZER_H

#include "QzXmlExport.h"

#include "QzCString.h"

/// Splits a byte string into tokens: runs of bytes that hold none of the delimiters.
/// Callers loop until the empty token.
class QZXML_API QzCTokenizer {
public:
    /// A tokenizer over a copy of text, positioned at its start.
    explicit QzCTokenizer(const QzCString& text) : text_(text) {}

    /// The next token, leading delimiters (the bytes of the NUL-terminated delims) skipped and
    /// the delimiter that ends it consumed; the empty string when no token is left.
    QzCString operator()(const char* delims);
    /// The same with n delimiter bytes, which may include NUL.
    QzCString operator()(const char* delims, QzSize_T n);

private:
    QzCString text_;
    QzSize_T pos_ = 0;
};

#endif
