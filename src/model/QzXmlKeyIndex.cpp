#include "QzXmlKeyIndex.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>

namespace {

constexpr std::size_t InitialSlots = 64;
constexpr std::uint64_t Multiplier = 0x9E3779B97F4A7C15ull;

std::uint64_t mix(std::uint64_t hash, std::uint64_t word) {
    hash = (hash ^ word) * Multiplier;
    return hash ^ (hash >> 29);
}

std::uint64_t load64(const char* at) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

std::uint64_t load32(const char* at) {
    std::uint32_t word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

// The last left bytes (1 to 7) before end, read in whole words, not byte by byte through
// memory (which would stall the load that follows). Which bytes overlap is fixed by the
// length, which the hash mixes in as well.
std::uint64_t tail(const char* begin, const char* end, std::size_t left) {
    if (end - begin >= 8) return load64(end - 8) >> (8 * (8 - left));
    if (left >= 4) return load32(end - left) | load32(end - 4) << 32;
    const auto byte = [](const char* at) { return std::uint64_t{static_cast<unsigned char>(*at)}; };
    return byte(end - left) | byte(end - 1 - left / 2) << 8 | byte(end - 1) << 16;
}

// Drawn once per process: keys are read from documents, and a fixed hash would let a
// document bring every key into one probe run, making each lookup walk them all.
std::uint64_t drawSeed() {
    try {
        std::random_device device;
        return std::uint64_t{device()} << 32 ^ device();
    } catch (const std::exception&) {
        return static_cast<std::uint64_t>(
            std::chrono::steady_clock::now().time_since_epoch().count());
    }
}

std::uint64_t seed() {
    static const std::uint64_t drawn = drawSeed();
    return drawn;
}

// Whether home lies in the cyclic range (from, to].
bool between(std::size_t home, std::size_t from, std::size_t to) {
    return from <= to ? from < home && home <= to : from < home || home <= to;
}

}  // namespace

QzXmlKeyIndex::QzXmlKeyIndex() : slots_(InitialSlots, Slot{0, None}) {}

// The whole key, sixteen bytes a round in two independent lanes: keys are mostly short, and
// a hash that skipped bytes would let keys that differ only in the middle (URIs, dates)
// pile up in one probe run.
std::size_t QzXmlKeyIndex::hashOf(const QzCString& key) {
    const char* const begin = key.data();
    const char* at = begin;
    std::size_t left = key.length();
    std::uint64_t first = mix(Multiplier ^ seed(), left);
    std::uint64_t second = ~Multiplier;
    for (; left >= 16; at += 16, left -= 16) {
        first = mix(first, load64(at));
        second = mix(second, load64(at + 8));
    }
    if (left >= 8) {
        first = mix(first, load64(at));
        at += 8;
        left -= 8;
    }
    if (left > 0) second = mix(second, tail(begin, at + left, left));
    return static_cast<std::size_t>(mix(first, second));
}

std::size_t QzXmlKeyIndex::slotHolding(std::size_t hash, std::int32_t entry) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].entry != entry)
        at = (at + 1) & mask;
    return at;
}

void QzXmlKeyIndex::put(std::size_t slot, std::size_t hash, std::int32_t entry) {
    if (slots_[slot].entry == None) ++used_;
    slots_[slot] = Slot{Hash(hash), entry};
    if (2 * used_ > slots_.size()) rehash(2 * slots_.size());
}

// Backward-shift deletion: later entries of the probe run move up, so no tombstones are left.
void QzXmlKeyIndex::vacate(std::size_t slot) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t hole = slot;
    for (std::size_t next = (hole + 1) & mask; slots_[next].entry != None;
         next = (next + 1) & mask) {
        if (!between(slots_[next].hash & mask, hole, next)) {
            slots_[hole] = slots_[next];
            hole = next;
        }
    }
    slots_[hole].entry = None;
    --used_;
}

void QzXmlKeyIndex::clear() {
    std::fill(slots_.begin(), slots_.end(), Slot{0, None});
    used_ = 0;
}

std::size_t QzXmlKeyIndex::freeSlot(std::size_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].entry != None)
        at = (at + 1) & mask;
    return at;
}

void QzXmlKeyIndex::reserve(std::size_t more) {
    std::size_t size = slots_.size();
    while (2 * (used_ + more) > size)
        size *= 2;
    if (size != slots_.size()) rehash(size);
}

void QzXmlKeyIndex::rehash(std::size_t size) {
    std::vector<Slot> old(size, Slot{0, None});
    old.swap(slots_);
    for (const Slot& slot : old) {
        if (slot.entry != None) slots_[freeSlot(slot.hash)] = slot;
    }
}
