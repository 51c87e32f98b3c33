#ifndef QZXMLKEYINDEX_H
#define QZXMLKEYINDEX_H

#include <cstdint>
#include <vector>

#include "QzCString.h"

/// Open addressing with linear probing from a key (a namespace prefix or URI) to the number
/// of the entry that answers for it. Keys are not copied: a slot compares against its
/// entry's own key, which the caller names through keyOf. At most half the slots are used
/// and vacated slots are refilled by backward shifts, so probe runs stay short.
class QzXmlKeyIndex {
public:
    static constexpr std::int32_t None = -1;  ///< no entry

    QzXmlKeyIndex();

    /// The key's hash, under a seed drawn once per process, so that no document can be made
    /// to pile its keys into one probe run.
    static std::size_t hashOf(const QzCString& key);

    /// The slot of key: the one holding it, or the free one where it would go. keyOf(entry)
    /// gives an entry's key.
    template <typename KeyOf>
    std::size_t slotOf(const QzCString& key, std::size_t hash, KeyOf keyOf) const {
        const std::size_t mask = slots_.size() - 1;
        for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
            const Slot& slot = slots_[at];
            if (slot.entry == None || (slot.hash == Hash(hash) && keyOf(slot.entry) == key))
                return at;
        }
    }
    /// The slot that holds entry under hash (it must be there); no key is compared.
    std::size_t slotHolding(std::size_t hash, std::int32_t entry) const;
    /// The entry in a slot, None when the slot is free.
    std::int32_t at(std::size_t slot) const { return slots_[slot].entry; }
    /// Puts entry into a slot found by slotOf (slots found before are void then).
    void put(std::size_t slot, std::size_t hash, std::int32_t entry);
    /// Frees a slot found by slotOf or slotHolding.
    void vacate(std::size_t slot);
    /// Puts entry under a key that has no slot yet; no key is compared.
    void insert(std::size_t hash, std::int32_t entry) { put(freeSlot(hash), hash, entry); }
    /// Frees every slot, keeping the room.
    void clear();
    /// Makes room for more keys at once, so that adding them rehashes nothing.
    void reserve(std::size_t more);
    /// Starts loading the slot where a key of hash is first looked for.
    void prefetch(std::size_t hash) const {
        __builtin_prefetch(&slots_[hash & (slots_.size() - 1)]);
    }

private:
    // Slots hold the hash's low half only, which places them and settles most compares, so
    // that twice as many fit in a cache line.
    using Hash = std::uint32_t;
    struct Slot {
        Hash hash;
        std::int32_t entry;  ///< None for a free slot
    };
    std::size_t freeSlot(std::size_t hash) const;
    void rehash(std::size_t size);

    std::vector<Slot> slots_;
    std::size_t used_ = 0;
};

#endif
