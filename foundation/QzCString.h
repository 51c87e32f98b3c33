#ifndef QZCSTRING_H
#define QZCSTRING_H

/// @file
/// QzCString, its operators and the byte-string helpers it is built on.

#include "QzXmlExport.h"

#include <cstddef>
#include <iosfwd>
#include <string>

/// The size and position type of the byte strings.
using QzSize_T = std::size_t;

/// A byte string with value semantics over one std::string. It may hold any byte, 0x00
/// included; its length is the byte count. Indexing is bounds-checked (QzBoundsErr).
class QZXML_API QzCString {
public:
    /// How compareTo compares letters: exactly, or with case folded.
    enum caseCompare { exact, ignoreCase };
    /// Which ends a strip operation works on (a bit set: leading 1, trailing 2).
    enum stripType { leading = 1, trailing = 2, both = 3 };

    /// The "not found" position returned by the find operations.
    static constexpr QzSize_T npos = std::string::npos;

    /// The empty string.
    QzCString() = default;
    /// A copy of the NUL-terminated string s.
    QzCString(const char* s) : str_(s) {}
    /// A copy of the n bytes at s.
    QzCString(const char* s, QzSize_T n) : str_(s, n) {}
    /// A copy of s.
    QzCString(const std::string& s) : str_(s) {}
    /// Takes over s.
    QzCString(std::string&& s) noexcept : str_(std::move(s)) {}
    /// The empty string with room for capacity bytes reserved.
    explicit QzCString(QzSize_T capacity) { str_.reserve(capacity); }

    /// Byte count.
    QzSize_T length() const noexcept { return str_.size(); }
    /// True when the length is 0.
    bool empty() const noexcept { return str_.empty(); }
    /// The bytes in order (NUL-terminated after length() bytes).
    const char* data() const noexcept { return str_.data(); }
    /// Writable access to the bytes.
    char* data() noexcept { return str_.data(); }
    /// The bytes as a NUL-terminated string.
    const char* c_str() const noexcept { return str_.c_str(); }
    /// The held standard string.
    const std::string& std() const noexcept { return str_; }
    /// Bytes reserved.
    QzSize_T capacity() const noexcept { return str_.capacity(); }

    /// The byte at i; throws QzBoundsErr when i >= length().
    char operator[](QzSize_T i) const;
    /// A reference to the byte at i; throws QzBoundsErr when i >= length().
    char& operator[](QzSize_T i);

    /// Appends n bytes from s.
    QzCString& append(const char* s, QzSize_T n) {
        str_.append(s, n);
        return *this;
    }
    /// Appends another string.
    QzCString& append(const QzCString& s) {
        str_.append(s.str_);
        return *this;
    }
    /// Appends count copies of c.
    QzCString& append(char c, QzSize_T count) {
        str_.append(count, c);
        return *this;
    }
    /// Appends s.
    QzCString& operator+=(const QzCString& s) { return append(s); }
    /// Appends the NUL-terminated s.
    QzCString& operator+=(const char* s) {
        str_ += s;
        return *this;
    }
    /// Appends the byte c.
    QzCString& operator+=(char c) {
        str_ += c;
        return *this;
    }

    /// Replaces the contents with n bytes from s.
    QzCString& assign(const char* s, QzSize_T n) {
        str_.assign(s, n);
        return *this;
    }
    /// Replaces the contents with a copy of s.
    QzCString& assign(const QzCString& s) {
        str_.assign(s.str_);
        return *this;
    }

    /// Truncates to n bytes, or pads with 0x00 up to n bytes.
    void resize(QzSize_T n) { str_.resize(n); }

    /// Negative, 0 or positive as this string sorts before, equal to or after other:
    /// byte-wise unsigned (exact), or through tolower on each byte (ignoreCase).
    int compareTo(const QzCString& other, caseCompare cmp = exact) const;

    /// Replaces the contents with every remaining byte of the stream.
    std::istream& readFile(std::istream& in);

    /// At most n bytes from pos; throws QzBoundsErr when pos > length().
    QzCString substr(QzSize_T pos, QzSize_T n = npos) const;
    /// Position of the first byte c at or after pos, or npos.
    QzSize_T find(char c, QzSize_T pos = 0) const noexcept { return str_.find(c, pos); }
    /// Position of the first byte at or after pos that is in the NUL-terminated set, or npos.
    QzSize_T findFirstOf(const char* set, QzSize_T pos = 0) const noexcept;

private:
    std::string str_;
};

/// Byte-wise equality.
inline bool operator==(const QzCString& a, const QzCString& b) noexcept {
    return a.std() == b.std();
}
/// Byte-wise inequality.
inline bool operator!=(const QzCString& a, const QzCString& b) noexcept {
    return a.std() != b.std();
}
/// Byte-wise order, bytes compared unsigned.
inline bool operator<(const QzCString& a, const QzCString& b) noexcept {
    return a.std() < b.std();
}
/// Concatenation.
QZXML_API QzCString operator+(const QzCString& a, const QzCString& b);
/// Writes the bytes unchanged.
QZXML_API std::ostream& operator<<(std::ostream& out, const QzCString& s);

/// First position at or after start whose byte is one of the setlen bytes of set;
/// npos when either string is empty, start is past the end, or nothing matches.
QZXML_API QzSize_T qzCStrFindFirstOf(const char* s, QzSize_T slen, const char* set, QzSize_T setlen,
                                     QzSize_T start);

/// Case-insensitive compare that folds two bytes only when both are letters (isalpha);
/// negative, 0 or positive, with a shorter equal prefix sorting first.
QZXML_API int qzCStrCompareIgnoreCaseStrict(const char* a, QzSize_T alen, const char* b,
                                            QzSize_T blen);

#endif
