#include "QzCString.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <istream>
#include <iterator>
#include <ostream>

#include "QzBoundsErr.h"

namespace {

// Result for two strings whose first min(alen, blen) bytes compare equal.
int compareLengths(QzSize_T alen, QzSize_T blen) {
    if (alen == blen) return 0;
    return alen < blen ? -1 : 1;
}

}  // namespace

char QzCString::operator[](QzSize_T i) const {
    if (i >= str_.size()) throwBoundsErr(i, str_.size());
    return str_[i];
}

char& QzCString::operator[](QzSize_T i) {
    if (i >= str_.size()) throwBoundsErr(i, str_.size());
    return str_[i];
}

int QzCString::compareTo(const QzCString& other, caseCompare cmp) const {
    const QzSize_T n = std::min(length(), other.length());
    if (cmp == exact) {
        const int r = n == 0 ? 0 : std::memcmp(data(), other.data(), n);
        return r != 0 ? r : compareLengths(length(), other.length());
    }
    for (QzSize_T i = 0; i < n; ++i) {
        const int a = std::tolower(static_cast<unsigned char>(str_[i]));
        const int b = std::tolower(static_cast<unsigned char>(other.str_[i]));
        if (a != b) return a - b;
    }
    return compareLengths(length(), other.length());
}

std::istream& QzCString::readFile(std::istream& in) {
    str_.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return in;
}

QzCString QzCString::substr(QzSize_T pos, QzSize_T n) const {
    if (pos > str_.size()) throwBoundsErr(pos, str_.size());
    return QzCString(str_.substr(pos, n));
}

QzSize_T QzCString::findFirstOf(const char* set, QzSize_T pos) const noexcept {
    return qzCStrFindFirstOf(data(), length(), set, std::strlen(set), pos);
}

QzCString operator+(const QzCString& a, const QzCString& b) {
    QzCString r(a.length() + b.length());
    r.append(a).append(b);
    return r;
}

std::ostream& operator<<(std::ostream& out, const QzCString& s) {
    return out.write(s.data(), static_cast<std::streamsize>(s.length()));
}

QzSize_T qzCStrFindFirstOf(const char* s, QzSize_T slen, const char* set, QzSize_T setlen,
                           QzSize_T start) {
    if (setlen == 0 || slen == 0 || start >= slen) return QzCString::npos;
    bool member[256] = {};
    for (QzSize_T i = 0; i < setlen; ++i)
        member[static_cast<unsigned char>(set[i])] = true;
    for (QzSize_T i = start; i < slen; ++i) {
        if (member[static_cast<unsigned char>(s[i])]) return i;
    }
    return QzCString::npos;
}

int qzCStrCompareIgnoreCaseStrict(const char* a, QzSize_T alen, const char* b, QzSize_T blen) {
    const QzSize_T n = std::min(alen, blen);
    for (QzSize_T i = 0; i < n; ++i) {
        int ca = static_cast<signed char>(a[i]);
        int cb = static_cast<signed char>(b[i]);
        // Bytes at or above 0x80 are negative here and never letters: isalpha must not see them.
        if (ca >= 0 && cb >= 0 && std::isalpha(ca) && std::isalpha(cb)) {
            ca = std::tolower(ca);
            cb = std::tolower(cb);
        }
        if (ca != cb) return ca - cb;
    }
    return compareLengths(alen, blen);
}
