// Replaces the allocator's entry points with counting ones that call glibc's own. glibc lets
// a program replace malloc for every library it loads, so the peers are counted too.

#include "MallocCounter.h"

#include <malloc.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

std::int64_t liveBytes = 0;
std::int64_t peakBytes = 0;

void* counted(void* block) {
    if (block != nullptr) {
        liveBytes += static_cast<std::int64_t>(malloc_usable_size(block));
        if (liveBytes > peakBytes) peakBytes = liveBytes;
    }
    return block;
}

void uncount(void* block) {
    if (block != nullptr) liveBytes -= static_cast<std::int64_t>(malloc_usable_size(block));
}

}  // namespace

std::int64_t MallocCounter::live() {
    return liveBytes;
}

std::int64_t MallocCounter::peak() {
    return peakBytes;
}

void MallocCounter::resetPeak() {
    peakBytes = liveBytes;
}

extern "C" {

void* malloc(std::size_t size) noexcept {
    return counted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    return counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) noexcept {
    const std::size_t before = block ? malloc_usable_size(block) : 0;
    void* moved = __libc_realloc(block, size);
    if (moved == nullptr && size != 0) return nullptr;  // the old block is still there
    liveBytes -= static_cast<std::int64_t>(before);
    return counted(moved);
}

void* reallocarray(void* block, std::size_t count, std::size_t size) noexcept {
    std::size_t total = 0;
    if (__builtin_mul_overflow(count, size, &total)) {
        errno = ENOMEM;
        return nullptr;
    }
    return realloc(block, total);
}

void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return memalign(alignment, size);
}

int posix_memalign(void** result, std::size_t alignment, std::size_t size) noexcept {
    void* block = memalign(alignment, size);
    if (block == nullptr) return ENOMEM;
    *result = block;
    return 0;
}

void* valloc(std::size_t size) noexcept {
    return memalign(static_cast<std::size_t>(getpagesize()), size);
}

void free(void* block) noexcept {
    uncount(block);
    __libc_free(block);
}

}  // extern "C"
