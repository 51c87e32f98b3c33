#ifndef QZXMLSHORTCOPY_H
#define QZXMLSHORTCOPY_H

#include <cstddef>
#include <cstring>

/// Copies of a few bytes, as names, prefixes and most values are: two overlapping moves of a
/// fixed size copy them in line, where a call to memcpy costs more than the copy. The reader's
/// owned strings and the writer's output share it.
class QzXmlShortCopy {
public:
    /// Copies n bytes from bytes to out (which may be bytes itself, but may not overlap it
    /// otherwise); returns out + n.
    [[gnu::always_inline]] static char* copy(char* out, const char* bytes, std::size_t n) {
        if (n >= 8) {
            if (n > 16) {
                std::memmove(out, bytes, n);
            } else {
                fixed<8>(out, bytes);
                fixed<8>(out + n - 8, bytes + n - 8);
            }
        } else if (n >= 4) {
            fixed<4>(out, bytes);
            fixed<4>(out + n - 4, bytes + n - 4);
        } else if (n != 0) {
            out[0] = bytes[0];
            out[n / 2] = bytes[n / 2];
            out[n - 1] = bytes[n - 1];
        }
        return out + n;
    }

private:
    // The whole block is loaded before any of it is stored.
    template <std::size_t N>
    [[gnu::always_inline]] static void fixed(char* out, const char* bytes) {
        char block[N];
        std::memcpy(block, bytes, N);
        std::memcpy(out, block, N);
    }
};

#endif
